// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of Progress. The class owns a window with both bars, and finds the tip that lists
// the downloads.

#ifndef TESTS_SERVICES_SHOWNBARS_H
#define TESTS_SERVICES_SHOWNBARS_H

#include <QElapsedTimer>
#include <QObject>
#include <QWidget>

#include <memory>

#include "services/HProgressBar.h"
#include "services/Progress.h"
#include "widgets/GeneralTip.h"

class QLabel;

class ShownBars : public QObject
{
    Q_OBJECT

protected:
    // Progress sends a report only if more than this number of milliseconds has passed since the last report.
    static constexpr int interval = 9;

    static void waitForInterval();
    // Calls act() within one interval. If act() takes longer because other processes delay it, calls
    // prepare() and act() again.
    template <typename Prepare, typename Act> static void withinTheInterval(Prepare prepare, Act act)
    {
        QElapsedTimer timer;
        do {
            prepare();
            timer.start();
            act();
        } while (timer.elapsed() > interval);
    }

    static Progress::ThreadsState downloads(const QVariant& argument);
    static void setState(Progress::Object& progress, unsigned int index, quint32 state);

    void hover();
    static GeneralTip* currentTip();
    static QLabel* cell(const GeneralTip* tip, int row, int column);
    // The rows of the tip in the form "name: state".
    static QStringList tipRows();

    std::unique_ptr<QWidget> window;
    HProgressBar* total = nullptr;
    HProgressBar* item = nullptr;

private Q_SLOTS:
    void init();
    void cleanup();
};

#endif

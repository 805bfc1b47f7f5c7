// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of the log window. Before each test function, the class makes an empty log and a
// hidden window.

#ifndef TESTS_SERVICES_SHOWNLOG_H
#define TESTS_SERVICES_SHOWNLOG_H

#include <memory>

#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTextBlock>

#include "services/LogWindow.h"
#include "tests/support/Buttons.h"
#include "widgets/HTextEdit.h"

class ShownLog : public QObject
{
    Q_OBJECT

protected:
    // Whenever the window connects or disconnects, this log records whether the log is locked.
    class WatchedEntries : public Log::EntryList
    {
    public:
        int listeners() const { return receivers(SIGNAL(appended())); }

        QList<bool> locked;

    protected:
        void connectNotify(const QMetaMethod&) override { note(); }
        void disconnectNotify(const QMetaMethod&) override { note(); }

    private:
        void note();
    };

    void log(Log::Kind kind, unsigned int level, const QString& text);
    void open();
    QStringList lines() const;
    QString topLine() const { return pane->cursorForPosition(QPoint(2, 4)).block().text(); }
    QPushButton* button(const QString& text) const { return buttonOf(window.get(), text); }
    // The text colour of a line; invalid if the line has the pane's own colour.
    QColor colourOf(int line) const;

    std::unique_ptr<WatchedEntries> entries;
    std::unique_ptr<Log::Window> window;
    HTextEdit* pane = nullptr;
    QSpinBox* level = nullptr;

private Q_SLOTS:
    void init();
    void cleanup();
};

#endif

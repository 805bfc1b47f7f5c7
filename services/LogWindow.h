// SPDX-License-Identifier: GPL-2.0-or-later

// The window that shows the log: the entries up to a detail level that the user chooses, coloured by kind.
//
// Graphical thread. The main window makes it on the first request and keeps it until the end of the run.
// While it is hidden, it is disconnected from the log and holds no text.

#ifndef SERVICES_LOGWINDOW_H
#define SERVICES_LOGWINDOW_H

#include <QWidget>

#include "services/Log.h"

class HTextEdit;
class QSpinBox;

namespace Log {

class Window : public QWidget
{
    Q_OBJECT

public:
    // A top-level window: the main window is stored, but is not its parent. The list and the main window are
    // not owned. The list must outlive this window.
    Window(EntryList& entries, QWidget* mainWindow);

    // Escapes a line in place for use as rich text. White space keeps its width; ampersands are not escaped.
    static void htmlProtect(QString& line);

public Q_SLOTS:
    // Showing renders the whole log and scrolls to its newest line; hiding drops the text.
    void setVisible(bool visible) override;
    // Renders the entries that are new since the last call, and paints them at once.
    void appended();
    // Renders the whole log again at the new level.
    void levelChanged(int level);

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    // Renders the entries from index "shown" on. Returns false if no such entry exists.
    bool render();
    QString readable(const QString& color) const;
    QString toHtml(const Entry& entry) const;
    void scrollToEnd();

    QWidget* mainWindow;
    QSpinBox* levelSpinBox;
    EntryList& entries;
    HTextEdit* textEdit;
    quint32 shown;   // index of the first entry not rendered yet
    bool open;       // a notification that was queued before the window was hidden finds it false
    bool painting;   // while appended() processes events to paint
    bool askedAgain; // more entries came during that painting
};

} // namespace Log

#endif

// The window that shows the log: the entries up to a detail level that the user chooses, coloured by kind.
//
// Graphical thread. Made by the main window on the first request and kept until the end of the run. While it
// is hidden it is not connected to the log and holds no text.

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
    // A top-level window of its own: the main window is remembered, but is not its parent. Neither the list
    // nor the main window is owned; the list must outlive this window.
    Window(EntryList& entries, QWidget* mainWindow);

    // Escapes a line in place for use as rich text. White space keeps its width; ampersands are left alone.
    static void htmlProtect(QString& line);

public Q_SLOTS:
    // Opening renders the whole log, scrolled to its newest line; hiding drops the text.
    void setVisible(bool visible) override;
    // Shows what has been logged since the last time, and paints it at once.
    void appended();
    // Renders the whole log again under the new level.
    void levelChanged(int level);

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    // Renders the entries from index "shown" on; false when there are none.
    bool render();
    QString readable(const QString& color) const;
    QString toHtml(const Entry& entry) const;
    void scrollToEnd();

    QWidget* mainWindow;
    QSpinBox* levelSpinBox;
    EntryList& entries;
    HTextEdit* textEdit;
    quint32 shown;   // index of the first entry not examined yet
    bool open;       // a notification that was queued before hiding finds it false
    bool painting;   // inside the event pass of appended()
    bool askedAgain; // more was logged during that pass
};

} // namespace Log

#endif

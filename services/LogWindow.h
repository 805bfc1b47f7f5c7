// SPDX-License-Identifier: GPL-2.0-or-later

// The window that shows the log. The window shows the entries up to the level that the user chooses, coloured
// by kind.
//
// The object lives on the graphical thread. The main window creates it on the first request and keeps it
// until the program ends. A hidden window is disconnected from the log and contains no text.

#ifndef SERVICES_LOGWINDOW_H
#define SERVICES_LOGWINDOW_H

#include <QTextBlock>
#include <QWidget>

#include "services/Log.h"

class HTextEdit;
class QCheckBox;
class QSpinBox;

namespace Log {

class Window : public QWidget
{
    Q_OBJECT

public:
    // Creates a top-level window. `mainWindow` is stored, but does not become the Qt parent. The back end
    // owns `entries`, which must outlive this window.
    Window(EntryList& entries, QWidget* mainWindow);

    // Escapes a line in place for use as rich text. White space keeps its width. Ampersands are not escaped.
    static void htmlProtect(QString& line);

public Q_SLOTS:
    // When the window becomes visible, it renders the whole log and scrolls to the newest line. When it is
    // hidden, it deletes the text.
    void setVisible(bool visible) override;
    // Scrolls to the entry `index` or, if the window does not show it, to the next shown entry. Moves the
    // cursor there.
    void showFrom(int index);
    // Renders the entries that are not rendered yet, and paints them immediately.
    void appended();
    // Renders the whole log again at the new level. The entry at the top stays there, unless the text was
    // scrolled to the end.
    void levelChanged(int level);
    // Shows or hides the times. Renders the whole log again in the same way as levelChanged().
    void timesChanged();
    // Opens a dialog for the file name. When the user has chosen a file, writes the shown entries with their
    // times to this file. Does not wait for the answer, because an operation may end while the dialog is
    // open.
    void save();
    // Writes the shown entries to the file `path`. If this file already exists, asks the user first.
    void saveInto(const QString& path);

private Q_SLOTS:
    void writeFile();

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    // Renders the entries from index `shown` to the end. Returns false if all entries are already rendered.
    bool render();
    QString readable(const QString& color) const;
    bool isShown(const Entry& entry) const;
    QString toHtml(const Entry& entry) const;
    void scrollToEnd();
    // Returns the index of the entry at the top, or -1 if the text is scrolled to the end.
    int topEntry() const;
    // Returns the block of the entry `index` or, if the window does not show it, of the next shown entry. If
    // no shown entry follows, the block is invalid.
    QTextBlock blockOf(int index) const;
    void scrollTo(const QTextBlock& block);

    QWidget* mainWindow;
    QSpinBox* levelSpinBox;
    EntryList& entries;
    HTextEdit* textEdit;
    QCheckBox* timesBox;
    quint32 shown; // the index of the first entry that is not rendered
    int place;     // the index of the entry to which render() scrolls, or -1
    bool open;     // false while the window is hidden; appended() then does nothing
    QString savePath;
    bool painting;   // true while appended() processes paint events
    bool askedAgain; // entries arrived while appended() processed paint events
};

} // namespace Log

#endif

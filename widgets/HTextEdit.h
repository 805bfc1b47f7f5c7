// SPDX-License-Identifier: GPL-2.0-or-later

// A text edit whose size hint fits a number of columns and rows, and which reports the end of the editing.
//
// Graphical thread; owned by its Qt parent.

#ifndef WIDGETS_HTEXTEDIT_H
#define WIDGETS_HTEXTEDIT_H

#include <QTextEdit>

class HTextEdit : public QTextEdit
{
    Q_OBJECT

public:
    explicit HTextEdit(QWidget* parent = nullptr);
    // -1 leaves that direction to the base class.
    HTextEdit(int columns, int rows, QWidget* parent = nullptr);

    QSize sizeHint() const override;

    // Appends a paragraph without space above or below it. Text that looks like rich text is shown as rich
    // text.
    void appendCompact(const QString& text);

Q_SIGNALS:
    // The focus moved to another widget. A pop-up or the edit's own context menu does not count.
    void editingFinished();

protected:
    void focusOutEvent(QFocusEvent* event) override;
    // Ctrl+Home and Ctrl+End go to the ends of a text, even if it has no cursor.
    void keyPressEvent(QKeyEvent* event) override;

private:
    int columns;
    int rows;
};

#endif

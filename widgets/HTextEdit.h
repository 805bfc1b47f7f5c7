// SPDX-License-Identifier: GPL-2.0-or-later

// A text edit whose size hint fits a number of columns and rows. The edit reports when the user has finished
// editing.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_HTEXTEDIT_H
#define WIDGETS_HTEXTEDIT_H

#include <QTextEdit>

class HTextEdit : public QTextEdit
{
    Q_OBJECT

public:
    explicit HTextEdit(QWidget* parent = nullptr);
    // The size hint is in columns and rows of text. If an argument is -1, the base class determines the size
    // in that direction.
    HTextEdit(int columns, int rows, QWidget* parent = nullptr);

    QSize sizeHint() const override;

    // Appends a paragraph without space above or below it. A text that looks like rich text is shown as rich
    // text.
    void appendCompact(const QString& text);

Q_SIGNALS:
    // Emitted when the focus moves to another widget, but not when a pop-up or the edit's own context menu
    // opens.
    void editingFinished();

protected:
    void focusOutEvent(QFocusEvent* event) override;
    // Ctrl+Home and Ctrl+End go to the beginning and the end of the text, even if the edit shows no cursor.
    void keyPressEvent(QKeyEvent* event) override;

private:
    int columns;
    int rows;
};

#endif

// A text edit that asks for room for a number of columns and rows, and says when the user is done with it.
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
    // -1 for either leaves that direction to the base class.
    HTextEdit(int columns, int rows, QWidget* parent = nullptr);

    QSize sizeHint() const override;

    // Appends a paragraph without space above or below it. Text that looks like rich text is taken as such.
    void appendCompact(const QString& text);

Q_SIGNALS:
    // The focus went to another widget; not for a pop-up, nor for the edit's own context menu.
    void editingFinished();

protected:
    void focusOutEvent(QFocusEvent* event) override;
    // Ctrl+Home and Ctrl+End lead to the ends of a text that has no cursor, too.
    void keyPressEvent(QKeyEvent* event) override;

private:
    int columns;
    int rows;
};

#endif

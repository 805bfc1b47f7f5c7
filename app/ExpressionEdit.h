// The edit of the expression that the table is filtered by. It leaves the key of the repository editor, which
// edits use to go to their end, to the menu, and shows in its colours whether the expression is valid.
//
// Graphical thread; owned by the main window.

#ifndef APP_EXPRESSIONEDIT_H
#define APP_EXPRESSIONEDIT_H

#include <QLineEdit>

class ExpressionEdit : public QLineEdit
{
    Q_OBJECT

public:
    using QLineEdit::QLineEdit;

    void showValid(bool valid);

protected:
    bool event(QEvent* event) override;
};

#endif

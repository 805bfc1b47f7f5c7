// SPDX-License-Identifier: GPL-2.0-or-later

// The edit for the expression that filters the table. Its colours show whether the expression is valid.
//
// An edit normally uses Ctrl+E to move the cursor to its end. This one leaves the key to the menu, where it
// opens the repository editor.
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

// SPDX-License-Identifier: GPL-2.0-or-later

// The line edit for the expression that filters a table. Its colours show whether the expression is valid.
//
// Normally, Ctrl+E moves the cursor to the end of a line edit. This class ignores the key, because a menu of
// the main window uses Ctrl+E to open the repository editor.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_EXPRESSIONEDIT_H
#define WIDGETS_EXPRESSIONEDIT_H

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

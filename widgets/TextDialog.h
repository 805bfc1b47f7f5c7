// SPDX-License-Identifier: GPL-2.0-or-later

// A dialog that shows a long text, such as a list of files.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_TEXTDIALOG_H
#define WIDGETS_TEXTDIALOG_H

#include <QDialog>

class HTextEdit;

class TextDialog : public QDialog
{
    Q_OBJECT

public:
    explicit TextDialog(QWidget* parent = nullptr);

    // The text is shown as plain text, even if it looks like rich text.
    void setText(QString text);

private:
    HTextEdit* edit;
};

#endif

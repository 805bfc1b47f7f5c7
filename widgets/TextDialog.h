// SPDX-License-Identifier: GPL-2.0-or-later

// Shows a long plain text, such as a list of files.
//
// Graphical thread; owned by its Qt parent.

#ifndef WIDGETS_TEXTDIALOG_H
#define WIDGETS_TEXTDIALOG_H

#include <QDialog>

class HTextEdit;

class TextDialog : public QDialog
{
    Q_OBJECT

public:
    explicit TextDialog(QWidget* parent = nullptr);

    // Shown as plain text, even if it looks like rich text.
    void setText(QString text);

private:
    HTextEdit* edit;
};

#endif

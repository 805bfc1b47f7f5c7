// SPDX-License-Identifier: GPL-2.0-or-later

// A dialog in which the Return and Enter keys go to the input fields, and do not press the default button.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_HDIALOG_H
#define WIDGETS_HDIALOG_H

#include <QDialog>

class HDialog : public QDialog
{
    Q_OBJECT

public:
    explicit HDialog(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

#endif

// SPDX-License-Identifier: GPL-2.0-or-later

// A message box for texts that come from packages, servers and failures. The text is plain text, never
// markup. The box is wide enough for the longest word, unless the word is wider than the screen. If the box
// would be higher than the screen, its text scrolls. The scroll keys then work wherever the focus is, and
// Ctrl+F finds a text.
//
// The object lives on the graphical thread. Usually, the box is a local variable of the function that shows
// it. If a box is created with `new`, its Qt parent deletes it.

#ifndef WIDGETS_HMESSAGEBOX_H
#define WIDGETS_HMESSAGEBOX_H

#include <QMessageBox>

class HTextEdit;

class HMessageBox : public QMessageBox
{
    Q_OBJECT

public:
    HMessageBox(Icon icon, const QString& title, const QString& text, StandardButtons buttons,
                QWidget* parent);

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void fit();
    void makeScrollable();

    HTextEdit* edit; // shows the text if it scrolls; otherwise null
};

#endif

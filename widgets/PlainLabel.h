// SPDX-License-Identifier: GPL-2.0-or-later

// A label that shows its text unchanged. Texts from packages, repositories, files and servers are never
// markup, so every label of the program is a PlainLabel. If the text of a label can be selected, the label
// passes the scroll keys to the area around it.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_PLAINLABEL_H
#define WIDGETS_PLAINLABEL_H

#include <QLabel>

class PlainLabel : public QLabel
{
    Q_OBJECT

public:
    explicit PlainLabel(QWidget* parent = nullptr);
    explicit PlainLabel(const QString& text, QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    using QLabel::setTextFormat; // the format stays Qt::PlainText
};

#endif

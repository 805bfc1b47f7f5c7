// SPDX-License-Identifier: GPL-2.0-or-later

// A label for a text with thousands of lines. QLabel lays out all lines before it knows its size, and draws
// all lines in each paint event. A LongLabel needs neither: it lays out a line when it paints this line, or
// when the user selects text in it. Everything else is the same as in a QLabel.
//
// The label never wraps its lines. All lines must have the same height, so the text must be suitable(). The
// user can select the text with the mouse and the keyboard.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_LONGLABEL_H
#define WIDGETS_LONGLABEL_H

#include <QRect>

#include "widgets/PlainLabel.h"

class LongLabel : public PlainLabel
{
    Q_OBJECT

public:
    // The text must be suitable, and must not change.
    explicit LongLabel(const QString& text, QWidget* parent = nullptr);

    // Returns whether the font contains all characters of the text, and the look of each character does not
    // depend on its neighbours. So the text may have letters of western languages, line feeds, and tabs at
    // the beginning of lines.
    static bool isSuitable(const QString& text, const QFont& font);

    // The number of lines that have been laid out since the label was created. Only tests read it.
    int layoutCount() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    class Layout;

    QRect painted; // the area that the current paint event paints
    Layout* lines; // null if this version of Qt has no document in a label; the document owns it
};

#endif

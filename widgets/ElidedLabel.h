// SPDX-License-Identifier: GPL-2.0-or-later

// A label of one line that shortens its text to the width of the label. If the text is shortened, the tool
// tip shows the whole text. Assistive programs always read the whole text. If the label has details, the tool
// tip always shows these details, and assistive programs read them as the description.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_ELIDEDLABEL_H
#define WIDGETS_ELIDEDLABEL_H

#include "widgets/PlainLabel.h"

class ElidedLabel : public PlainLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    // details: a longer text, which includes `text`; or an empty string.
    void showText(const QString& text, const QString& details = QString());
    // Returns the whole text, even if the label shows a shortened text.
    QString wholeText() const { return whole; }

    // Returns a size that fits the whole text.
    QSize sizeHint() const override;
    // Returns a size that fits a few letters.
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    using PlainLabel::setText;
    int margins() const;
    void fit();

    QString whole;
    QString details;
};

#endif

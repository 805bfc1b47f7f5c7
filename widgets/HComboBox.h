// SPDX-License-Identifier: GPL-2.0-or-later

// A combo box that is wide enough for its longest item. On a screen of high density, the size hint of
// some styles is too narrow for the text.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_HCOMBOBOX_H
#define WIDGETS_HCOMBOBOX_H

#include <QComboBox>

class HComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit HComboBox(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    QSize widened(QSize size) const;
};

#endif

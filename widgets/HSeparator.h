// SPDX-License-Identifier: GPL-2.0-or-later

// A horizontal rule between the parts of a window.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_HSEPARATOR_H
#define WIDGETS_HSEPARATOR_H

#include <QFrame>

class HSeparator : public QFrame
{
    Q_OBJECT

public:
    explicit HSeparator(QWidget* parent = nullptr);
};

#endif

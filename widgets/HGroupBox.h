// SPDX-License-Identifier: GPL-2.0-or-later

// A group box that shows its whole title. Some styles reserve a pixel or two less than the title needs, and
// the difference grows with its length.
//
// Graphical thread; owned by its Qt parent.

#ifndef WIDGETS_HGROUPBOX_H
#define WIDGETS_HGROUPBOX_H

#include <QGroupBox>

class HGroupBox : public QGroupBox
{
    Q_OBJECT

public:
    explicit HGroupBox(const QString& title, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

#endif

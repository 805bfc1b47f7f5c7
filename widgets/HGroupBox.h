// SPDX-License-Identifier: GPL-2.0-or-later

// A group box that shows its whole title. Some styles reserve a few pixels less than the title needs. The
// difference grows with the length of the title.
//
// The object lives on the graphical thread; its Qt parent owns it.

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

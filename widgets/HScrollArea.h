// SPDX-License-Identifier: GPL-2.0-or-later

// A scroll area whose size hint fits its inner widget, up to a maximum size.
//
// Graphical thread; owned by its Qt parent, and owns its inner widget.

#ifndef WIDGETS_HSCROLLAREA_H
#define WIDGETS_HSCROLLAREA_H

#include <QScrollArea>

class HScrollArea : public QScrollArea
{
    Q_OBJECT

public:
    // Only the screen limits the size hint.
    explicit HScrollArea(QWidget* parent = nullptr);
    // The maximum size is in pixels.
    explicit HScrollArea(QSize maxSize, QWidget* parent = nullptr);
    // The maximum size is in letters of the area's font at construction; -1 means no limit in that direction.
    HScrollArea(int columns, int rows, QWidget* parent = nullptr);

    QSize sizeHint() const override;

    // Gives the inner widget the size that its changed contents need.
    void forceResize();

    // The pixels that the frame needs in addition, if the style draws it around the contents but not around
    // the scroll bars; otherwise 0.
    int frameOnlyAroundContentsPixels() const;

private:
    QSize maxSize;
};

#endif

// A scroll area that asks for the room its inner widget needs, up to a largest size.
//
// Graphical thread; owned by its Qt parent, and owns its inner widget.

#ifndef WIDGETS_HSCROLLAREA_H
#define WIDGETS_HSCROLLAREA_H

#include <QScrollArea>

class HScrollArea : public QScrollArea
{
    Q_OBJECT

public:
    // The size hint is bounded by the screen alone.
    explicit HScrollArea(QWidget* parent = nullptr);
    // In pixels.
    explicit HScrollArea(QSize maxSize, QWidget* parent = nullptr);
    // In letters of the area's font at construction; -1 for either leaves that direction unbounded.
    HScrollArea(int columns, int rows, QWidget* parent = nullptr);

    QSize sizeHint() const override;

    // Gives the inner widget, whose contents were changed, the size it asks for.
    void forceResize();

    // The pixels that a style takes which draws the frame around the contents but not around the scroll bars.
    int frameOnlyAroundContentsPixels() const;

private:
    QSize maxSize;
};

#endif

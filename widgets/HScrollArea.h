// SPDX-License-Identifier: GPL-2.0-or-later

// A scroll area whose size hint fits its inner widget, up to a maximum size. The Home and End keys, also with
// Ctrl, scroll to the ends of the area.
//
// The object lives on the graphical thread; its Qt parent owns it. The object owns its inner widget.

#ifndef WIDGETS_HSCROLLAREA_H
#define WIDGETS_HSCROLLAREA_H

#include <QScrollArea>

class HScrollArea : public QScrollArea
{
    Q_OBJECT

public:
    // Creates an area whose size hint is limited only by the screen.
    explicit HScrollArea(QWidget* parent = nullptr);
    // The maximum size is in pixels.
    explicit HScrollArea(QSize maxSize, QWidget* parent = nullptr);
    // The maximum size is in columns and rows of text, in the area's present font. If an argument is -1, that
    // direction has no limit.
    HScrollArea(int columns, int rows, QWidget* parent = nullptr);

    QSize sizeHint() const override;

    // Resizes the inner widget after a change to its contents. Part of the interface of the area; no window
    // needs it now.
    void forceResize();

    // Handles the keys that scroll an area to an end or by a page. Returns true if it has scrolled.
    static bool scrollByKey(QAbstractScrollArea* area, const QKeyEvent* event);

    // Some styles draw the frame around the contents, but not around the scroll bars. Returns the additional
    // pixels that this frame needs, or 0 for other styles.
    int frameOnlyAroundContentsPixels() const;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QSize maxSize;
};

#endif

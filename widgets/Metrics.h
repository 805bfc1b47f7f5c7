// Measures that the widgets share.
//
// Graphical thread; no state.

#ifndef WIDGETS_METRICS_H
#define WIDGETS_METRICS_H

#include <QSize>

class QAbstractScrollArea;
class QFontMetrics;

namespace Metrics {

// Nine tenths, in pixels, of the width and height of the screen that the program runs on, so that the window
// manager's frame and panels keep some room.
QSize maxWindowSize();

// The width in pixels of the letter that stands for a column of text.
int columnWidth(const QFontMetrics& metrics);

// The pixels of width, and as many of height, that a style takes which draws the frame around the contents
// but not around the scroll bars; else 0.
int frameOnlyAroundContentsPixels(const QAbstractScrollArea* area);

} // namespace Metrics

#endif

// Sizes that several widgets use.
//
// Graphical thread; no state.

#ifndef WIDGETS_METRICS_H
#define WIDGETS_METRICS_H

#include <QSize>

class QAbstractScrollArea;
class QFontMetrics;

namespace Metrics {

// Nine tenths, in pixels, of the width and height of the screen that the program uses. The rest is for the
// window manager's frame and panels.
QSize maxWindowSize();

// The width in pixels of the letter that measures columns of text.
int columnWidth(const QFontMetrics& metrics);

// The additional pixels, in width and in height, in a style that draws the frame around the contents but not
// around the scroll bars; in other styles 0.
int frameOnlyAroundContentsPixels(const QAbstractScrollArea* area);

} // namespace Metrics

#endif

// SPDX-License-Identifier: GPL-2.0-or-later

// Sizes that several widgets use.
//
// Only the graphical thread uses it. It has no state.

#ifndef WIDGETS_METRICS_H
#define WIDGETS_METRICS_H

#include <QSize>

class QAbstractScrollArea;
class QFontMetrics;

namespace Metrics {

// Returns nine tenths of the screen's width and height, in pixels. The rest is for the window manager's
// frames and panels.
QSize maxWindowSize();

// Returns the width of one text column, in pixels: the width of a certain letter.
int columnWidth(const QFontMetrics& metrics);

// Returns the additional pixels, in each direction, for the frame of the area, if the style draws the frame
// around the contents but not around the scroll bars. Otherwise returns 0.
int frameOnlyAroundContentsPixels(const QAbstractScrollArea* area);

} // namespace Metrics

#endif

// SPDX-License-Identifier: GPL-2.0-or-later

// Sizes that several widgets use.
//
// Only the graphical thread calls these functions. They have no state.

#ifndef WIDGETS_METRICS_H
#define WIDGETS_METRICS_H

#include <QSize>

class QAbstractScrollArea;
class QFontMetrics;

namespace Metrics {

// Returns nine tenths of the screen's width and height, in pixels. The rest is for the window manager's
// frames and panels.
QSize maxWindowSize();

// Returns the width of one column of text, in pixels.
int columnWidth(const QFontMetrics& metrics);

// Some styles draw the frame of a scroll area around the contents, but not around the scroll bars. Returns
// the additional pixels that this frame needs in each direction, or 0 for other styles.
int frameOnlyAroundContentsPixels(const QAbstractScrollArea* area);

} // namespace Metrics

#endif

// SPDX-License-Identifier: GPL-2.0-or-later

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

// The pixels, in width and in height, that the frame of the area needs in addition, if the style draws it
// around the contents but not around the scroll bars; otherwise 0.
int frameOnlyAroundContentsPixels(const QAbstractScrollArea* area);

} // namespace Metrics

#endif

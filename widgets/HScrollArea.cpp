// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HScrollArea.h"

#include <QFontMetrics>
#include <QScrollBar>

#include <limits>

#include "widgets/Metrics.h"

namespace {

const int unbounded = std::numeric_limits<int>::max();

} // namespace

HScrollArea::HScrollArea(QWidget* parent) : HScrollArea(QSize(unbounded, unbounded), parent) {}

HScrollArea::HScrollArea(QSize max, QWidget* parent) : QScrollArea(parent), maxSize(max) {}

HScrollArea::HScrollArea(int columns, int rows, QWidget* parent) : HScrollArea(parent)
{
    const QFontMetrics metrics = fontMetrics();
    if (columns != -1) {
        maxSize.setWidth(columns * Metrics::columnWidth(metrics));
    }
    if (rows != -1) {
        maxSize.setHeight(rows * metrics.height());
    }
}

QSize HScrollArea::sizeHint() const
{
    if (widget() == nullptr) {
        return QScrollArea::sizeHint();
    }
    const int extra = 2 * frameWidth() + frameOnlyAroundContentsPixels();
    const QSize scrollBars(verticalScrollBar()->sizeHint().width(),
                           horizontalScrollBar()->sizeHint().height());
    const QSize wanted = widget()->sizeHint() + scrollBars + QSize(extra, extra);
    return wanted.boundedTo(maxSize).boundedTo(Metrics::maxWindowSize());
}

void HScrollArea::forceResize()
{
    if (widget() == nullptr) {
        return;
    }
    widget()->resize(widget()->sizeHint());
    updateGeometry();
    // The first resize may have changed the size hint of the inner widget, so a second resize follows.
    widget()->resize(widget()->sizeHint());
}

int HScrollArea::frameOnlyAroundContentsPixels() const
{
    return Metrics::frameOnlyAroundContentsPixels(this);
}

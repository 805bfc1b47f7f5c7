// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HScrollArea.h"

#include <QFontMetrics>
#include <QKeyEvent>
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
    // Resize a second time: the first resize may have changed the size hint of a widget with wrapped text.
    widget()->resize(widget()->sizeHint());
}

bool HScrollArea::scrollByKey(QAbstractScrollArea* area, const QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const bool plain = modifiers == Qt::NoModifier;
    if (!plain && modifiers != Qt::ControlModifier) {
        return false;
    }
    switch (event->key()) {
    case Qt::Key_Home:
        area->verticalScrollBar()->triggerAction(QScrollBar::SliderToMinimum);
        area->horizontalScrollBar()->triggerAction(QScrollBar::SliderToMinimum);
        return true;
    case Qt::Key_End:
        area->verticalScrollBar()->triggerAction(QScrollBar::SliderToMaximum);
        return true;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        if (plain) {
            area->verticalScrollBar()->triggerAction(event->key() == Qt::Key_PageUp
                                                         ? QScrollBar::SliderPageStepSub
                                                         : QScrollBar::SliderPageStepAdd);
        }
        return plain;
    default:
        return false;
    }
}

void HScrollArea::keyPressEvent(QKeyEvent* event)
{
    if (!scrollByKey(this, event)) {
        QScrollArea::keyPressEvent(event);
    }
}

int HScrollArea::frameOnlyAroundContentsPixels() const
{
    return Metrics::frameOnlyAroundContentsPixels(this);
}

// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/ElidedLabel.h"

#include <QEvent>
#include <QFontMetrics>

#include "widgets/Literal.h"
#include "widgets/Metrics.h"

namespace {

// The label is always wide enough for this number of letters.
const int fewestLetters = 8;

} // namespace

ElidedLabel::ElidedLabel(QWidget* parent) : PlainLabel(parent)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedLabel::showText(const QString& text, const QString& newDetails)
{
    if (whole != text || details != newDetails) {
        whole = text;
        details = newDetails;
        setAccessibleName(whole);
        setAccessibleDescription(details);
        updateGeometry();
        fit();
    }
}

int ElidedLabel::margins() const
{
    return 2 * (margin() + frameWidth()) + contentsMargins().left() + contentsMargins().right();
}

QSize ElidedLabel::sizeHint() const
{
    const QSize text = fontMetrics().size(Qt::TextSingleLine, whole);
    // With some fonts, a label without text has a smaller height than a label with text. Use one height for
    // both, so that the first text does not move the widgets below the label.
    const int letter = fontMetrics().size(Qt::TextSingleLine, QStringLiteral("X")).height() + margins();
    return {text.width() + margins(), qMax(PlainLabel::sizeHint().height(), letter)};
}

QSize ElidedLabel::minimumSizeHint() const
{
    const int few = fewestLetters * Metrics::columnWidth(fontMetrics());
    return {qMin(sizeHint().width(), few), sizeHint().height()};
}

void ElidedLabel::resizeEvent(QResizeEvent* event)
{
    PlainLabel::resizeEvent(event);
    fit();
}

void ElidedLabel::changeEvent(QEvent* event)
{
    PlainLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        fit();
    }
}

void ElidedLabel::fit()
{
    const QString visible = fontMetrics().elidedText(whole, Qt::ElideRight, width() - margins());
    setText(visible);
    if (!details.isEmpty()) {
        setToolTip(Literal::toolTip(details));
    } else if (visible == whole) {
        setToolTip(QString());
    } else {
        setToolTip(Literal::toolTip(whole));
    }
}

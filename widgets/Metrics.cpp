// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Metrics.h"

#include <QAbstractScrollArea>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QScreen>
#include <QStyle>
#include <QX11Info>

namespace Metrics {

QSize maxWindowSize()
{
    const int number = QX11Info::isPlatformX11() ? QX11Info::appScreen() : 0;
    const QScreen* screen = QGuiApplication::screens().value(number, QGuiApplication::primaryScreen());
    if (screen == nullptr) {
        return QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    }
    const QSize size = screen->geometry().size();
    return QSize(size.width() * 9 / 10, size.height() * 9 / 10);
}

int columnWidth(const QFontMetrics& metrics)
{
#if QT_VERSION >= QT_VERSION_CHECK(5, 11, 0)
    return metrics.horizontalAdvance(QLatin1Char('n'));
#else
    return metrics.width(QLatin1Char('n'));
#endif
}

int frameOnlyAroundContentsPixels(const QAbstractScrollArea* area)
{
    const QStyle* style = area->style();
    if (style->styleHint(QStyle::SH_ScrollView_FrameOnlyAroundContents, nullptr, area) == 0) {
        return 0;
    }
    return 2 * style->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, area);
}

} // namespace Metrics

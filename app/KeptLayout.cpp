// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/KeptLayout.h"

#include <QSize>
#include <QVariant>

#include "app/Settings.h"
#include "packagetable/View.h"
#include "widgets/Metrics.h"

void KeptLayout::save(const QWidget& window, const PackageTable::View& view)
{
    const auto toVariants = [](const QList<int>& numbers) {
        QVariantList variants;
        for (int number : numbers) {
            variants.append(number);
        }
        return variants;
    };
    Settings settings;
    const PackageTable::View::Layout layout = view.layoutByHand();
    settings.setValue(QStringLiteral("MainWindow/columnWidths"), toVariants(layout.widths));
    settings.setValue(QStringLiteral("MainWindow/columnPlaces"), toVariants(layout.places));
    settings.setValue(QStringLiteral("MainWindow/maximized"), window.isMaximized());
    if (!window.isMaximized() && !window.isFullScreen()) {
        settings.setValue(QStringLiteral("MainWindow/size"), window.size());
    }
}

void KeptLayout::restore(QWidget& window, PackageTable::View& view)
{
    const auto toNumbers = [](const QVariant& value) {
        QList<int> numbers;
        const QVariantList list = value.toList();
        for (const QVariant& number : list) {
            numbers.append(number.toInt());
        }
        return numbers;
    };
    const Settings settings;
    view.restoreLayout({toNumbers(settings.value(QStringLiteral("MainWindow/columnWidths"))),
                        toNumbers(settings.value(QStringLiteral("MainWindow/columnPlaces")))});
    const QSize remembered = settings.value(QStringLiteral("MainWindow/size")).toSize();
    if (!remembered.isEmpty()) {
        window.resize(remembered.boundedTo(Metrics::maxWindowSize()));
    }
    if (settings.value(QStringLiteral("MainWindow/maximized")).toBool()) {
        window.setWindowState(window.windowState() | Qt::WindowMaximized);
    }
}

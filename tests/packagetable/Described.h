// SPDX-License-Identifier: GPL-2.0-or-later

// Functions that read, click and type in the windows that describe a package.

#ifndef TESTS_PACKAGETABLE_DESCRIBED_H
#define TESTS_PACKAGETABLE_DESCRIBED_H

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

#include <algorithm>
#include <functional>

#include "packagetable/DescribeDialog.h"
#include "packagetable/DescribeRepoDialog.h"
#include "tests/support/Dialogs.h"
#include "widgets/HScrollArea.h"
#include "widgets/TextDialog.h"

// The areas of a description from top to bottom. The first area describes the record itself, and each other
// area describes an installed version.
inline QList<HScrollArea*> areasOf(const QWidget& dialog)
{
    QList<HScrollArea*> found;
    for (HScrollArea* area : dialog.findChildren<HScrollArea*>()) {
        if (area->widget() != nullptr && qobject_cast<QGridLayout*>(area->widget()->layout()) != nullptr) {
            found.append(area);
        }
    }
    std::sort(found.begin(), found.end(), [&dialog](const QWidget* one, const QWidget* other) {
        return one->mapTo(&dialog, QPoint()).y() < other->mapTo(&dialog, QPoint()).y();
    });
    return found;
}

// The visible lines of an area. In each line, "|" separates the texts, from left to right, and brackets mark
// a button.
inline QStringList linesOf(const HScrollArea* area)
{
    QStringList lines;
    const auto* grid = qobject_cast<QGridLayout*>(area->widget()->layout());
    for (int row = 0; row < grid->rowCount(); ++row) {
        QList<QWidget*> widgets;
        const std::function<void(QLayoutItem*)> collect = [&widgets, &collect](QLayoutItem* item) {
            if (item->widget() != nullptr && !widgets.contains(item->widget())) {
                widgets.append(item->widget());
            }
            for (int i = 0; item->layout() != nullptr && i < item->layout()->count(); ++i) {
                collect(item->layout()->itemAt(i));
            }
        };
        for (int column = 0; column < grid->columnCount(); ++column) {
            if (grid->itemAtPosition(row, column) != nullptr) {
                collect(grid->itemAtPosition(row, column));
            }
        }
        QStringList texts;
        for (const QWidget* widget : qAsConst(widgets)) {
            if (const auto* label = qobject_cast<const QLabel*>(widget)) {
                texts << label->text();
            } else if (const auto* button = qobject_cast<const QPushButton*>(widget)) {
                texts << QLatin1Char('[') + button->text() + QLatin1Char(']');
            }
        }
        if (!texts.isEmpty()) {
            lines << texts.join(QLatin1Char('|'));
        }
    }
    return lines;
}

// The label that shows the value of this field; null if the area does not show the field.
inline QLabel* valueOf(const HScrollArea* area, const QString& label)
{
    const QList<QLabel*> labels = area->widget()->findChildren<QLabel*>();
    for (int i = 0; i + 1 < labels.count(); ++i) {
        if (labels.at(i)->text() == label) {
            return labels.at(i + 1);
        }
    }
    return nullptr;
}

// The button in the line of this field; null if the line has no button.
inline QPushButton* buttonBeside(const QWidget& dialog, const QString& label)
{
    for (QPushButton* button : dialog.findChildren<QPushButton*>()) {
        if (button->accessibleDescription() == label) {
            return button;
        }
    }
    return nullptr;
}

// Scrolls to the button and clicks on it, as a user does.
inline void press(QPushButton* button)
{
    for (QWidget* widget = button->parentWidget(); widget != nullptr; widget = widget->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(widget)) {
            area->ensureWidgetVisible(button);
        }
    }
    QTest::mouseClick(button->window()->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      button->mapTo(button->window(), button->rect().center()));
}

#endif

// SPDX-License-Identifier: GPL-2.0-or-later

// What tests see of the windows that describe a package.

#ifndef TESTS_PACKAGETABLE_DESCRIBED_H
#define TESTS_PACKAGETABLE_DESCRIBED_H

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <functional>

#include "packagetable/DescribeDialog.h"
#include "packagetable/DescribeRepoDialog.h"
#include "widgets/HScrollArea.h"
#include "widgets/TextDialog.h"

// The areas of a description, from the top; the first is that of the record itself.
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

// The lines of an area as they are seen: the texts from left to right with "|" between them, a button in
// brackets.
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

// The value beside a label; null when there is none.
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

// The button in the line of a label; null when there is none.
inline QPushButton* buttonBeside(const QWidget& dialog, const QString& label)
{
    for (QPushButton* button : dialog.findChildren<QPushButton*>()) {
        if (button->accessibleDescription() == label) {
            return button;
        }
    }
    return nullptr;
}

inline QPushButton* buttonNamed(const QWidget& dialog, const QString& text)
{
    for (QPushButton* button : dialog.findChildren<QPushButton*>()) {
        if (button->text() == text) {
            return button;
        }
    }
    return nullptr;
}

// A click as the user makes it, who scrolls to the button first.
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

// Does something that opens a modal dialog of a class, and something with the dialog once it is active;
// closes it unless it has been by then. Returns whether one was opened.
template <typename Dialog>
bool withDialog(const std::function<void()>& open, const std::function<void(Dialog&)>& use)
{
    bool opened = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (dialog != nullptr && dialog->isVisible() && dialog->windowHandle()->isExposed()) {
            timer.stop();
            opened = true;
            use(*dialog);
            if (dialog->isVisible()) {
                dialog->close();
            }
        }
    });
    timer.start(5);
    open(); // returns when the dialog has been closed
    return opened;
}

#endif

// SPDX-License-Identifier: GPL-2.0-or-later

// Records the texts that Qt sends to assistive programs, and collects the texts that users can read.

#ifndef TESTS_REPO_ASSISTIVE_H
#define TESTS_REPO_ASSISTIVE_H

#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <QTextEdit>

// recordReport() appends the text of each accessibility event to this list.
inline QStringList reportedTexts;

inline void recordReport(QAccessibleEvent* event)
{
    // Assistive programs get texts only from widgets with a text interface.
    QAccessibleInterface* interface = event->accessibleInterface();
    if (interface == nullptr || interface->textInterface() == nullptr) {
        return;
    }
    switch (event->type()) {
    case QAccessible::TextInserted:
        reportedTexts << static_cast<QAccessibleTextInsertEvent*>(event)->textInserted();
        break;
    case QAccessible::TextRemoved:
        reportedTexts << static_cast<QAccessibleTextRemoveEvent*>(event)->textRemoved();
        break;
    case QAccessible::TextUpdated:
        reportedTexts << static_cast<QAccessibleTextUpdateEvent*>(event)->textInserted()
                      << static_cast<QAccessibleTextUpdateEvent*>(event)->textRemoved();
        break;
    default:
        break;
    }
}

// Checks the recorded texts. If an accessibility bus runs, assistive programs must have received texts.
// Otherwise they must not have received any.
inline bool reportsAsExpected()
{
    const bool expected = qEnvironmentVariableIsSet("QT_LINUX_ACCESSIBILITY_ALWAYS_ON");
    return QAccessible::isActive() == expected && reportedTexts.isEmpty() != expected;
}

// Collects all texts that assistive programs can read in a window.
inline void collectTexts(QAccessibleInterface* interface, QStringList& texts)
{
    for (int kind = QAccessible::Name; kind <= QAccessible::Accelerator; ++kind) {
        texts << interface->text(static_cast<QAccessible::Text>(kind));
    }
    if (QAccessibleTextInterface* text = interface->textInterface()) {
        texts << text->text(0, text->characterCount());
    }
    if (QAccessibleValueInterface* value = interface->valueInterface()) {
        texts << value->currentValue().toString();
    }
    for (int i = 0; i < interface->childCount(); ++i) {
        collectTexts(interface->child(i), texts);
    }
}

// All texts in the window and in its tool tips that the user or an assistive program can read.
inline QStringList readableTexts(QWidget* window)
{
    QStringList texts;
    collectTexts(QAccessible::queryAccessibleInterface(window), texts);
    QList<QWidget*> widgets = window->findChildren<QWidget*>();
    widgets.append(window);
    for (const QWidget* each : qAsConst(widgets)) {
        texts << each->windowTitle() << each->windowIconText() << each->toolTip() << each->statusTip()
              << each->whatsThis() << each->accessibleName() << each->accessibleDescription()
              << each->objectName();
        if (const auto* label = qobject_cast<const QLabel*>(each)) {
            texts << label->text();
        } else if (const auto* button = qobject_cast<const QAbstractButton*>(each)) {
            texts << button->text();
        } else if (const auto* line = qobject_cast<const QLineEdit*>(each)) {
            texts << (line->isVisible() ? line->displayText() : QString());
        } else if (const auto* edit = qobject_cast<const QTextEdit*>(each)) {
            texts << (edit->isVisible() ? edit->toPlainText() : QString());
        }
    }
    return texts;
}

#endif

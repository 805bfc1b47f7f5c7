// What assistive programs are told, and what they and the user find.

#ifndef TESTS_REPO_ASSISTIVE_H
#define TESTS_REPO_ASSISTIVE_H

#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <QTextEdit>

// To be installed as update handler: notes every text that assistive programs are told.
inline QStringList told;

inline void noteTold(QAccessibleEvent* event)
{
    // Only of what has a text are they told texts.
    QAccessibleInterface* interface = event->accessibleInterface();
    if (interface == nullptr || interface->textInterface() == nullptr) {
        return;
    }
    switch (event->type()) {
    case QAccessible::TextInserted:
        told << static_cast<QAccessibleTextInsertEvent*>(event)->textInserted();
        break;
    case QAccessible::TextRemoved:
        told << static_cast<QAccessibleTextRemoveEvent*>(event)->textRemoved();
        break;
    case QAccessible::TextUpdated:
        told << static_cast<QAccessibleTextUpdateEvent*>(event)->textInserted()
             << static_cast<QAccessibleTextUpdateEvent*>(event)->textRemoved();
        break;
    default:
        break;
    }
}

// Whether they are told anything: a test program with an accessibility bus must be.
inline bool toldAsExpected()
{
    const bool expected = qEnvironmentVariableIsSet("QT_LINUX_ACCESSIBILITY_ALWAYS_ON");
    return QAccessible::isActive() == expected && told.isEmpty() != expected;
}

// Everything that assistive programs find in a window.
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

// All of that, and everything that can be read in the window by whoever looks at it or points to it.
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

// What assistive programs are told, and what they find.

#ifndef TESTS_REPO_ASSISTIVE_H
#define TESTS_REPO_ASSISTIVE_H

#include <QAccessible>
#include <QStringList>

// To be installed as update handler: notes every text that assistive programs are told.
inline QStringList told;

inline void noteTold(QAccessibleEvent* event)
{
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

#endif

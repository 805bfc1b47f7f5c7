// SPDX-License-Identifier: GPL-2.0-or-later

// The log of the whole run: every message of the package back end, one entry for each line.
//
// The back end owns its EntryList. Worker threads append to it and the graphical thread reads it, both under
// the list's own mutex.

#ifndef SERVICES_LOG_H
#define SERVICES_LOG_H

#include <QList>
#include <QMutex>
#include <QObject>
#include <QString>

namespace Log {

enum Kind : quint32 {
    Info = 0,
    OK = 1,
    Warning = 2,
    Error = 3,
    Action = 4 // a heading that opens a phase
};

// The message with the passwords in its URLs hidden. Messages of failed downloads contain URLs, so every
// place that shows such a message calls it. Any thread.
QString withoutPasswords(QString message);

// One line of plain text, without a line feed. Level 0 is the most important; higher levels are details.
struct Entry
{
    Entry(Kind entryKind, unsigned int entryLevel, QString entryText);

    Kind kind;
    unsigned int level;
    QString text;
};

// A writer locks the list, appends one entry for each line of the message, unlocks the list and then calls
// emitAppended(). A reader holds the lock while it indexes the list. Entries are never changed or removed.
class EntryList : public QObject, public QList<Entry>, public QMutex
{
    Q_OBJECT

public:
    EntryList() = default;

    // Appends a message, one entry for each of its lines that is not empty, and notifies the readers.
    // Passwords in URLs are hidden. Any thread; the caller must not hold the lock of the list.
    void appendMessage(Kind kind, unsigned int level, const QString& message);

    // Notifies the readers of new entries. Any thread; the caller must not hold the lock of the list.
    void emitAppended();

Q_SIGNALS:
    void appended();
};

} // namespace Log

#endif

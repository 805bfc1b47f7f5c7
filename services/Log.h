// SPDX-License-Identifier: GPL-2.0-or-later

// The log of the whole run. It contains every message of the package back end, with one entry for each line.
//
// The back end owns its EntryList. Worker threads append entries and the graphical thread reads them. All
// these threads lock the list, which is also a mutex.

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
    Action = 4 // a heading, for example at the start of an operation
};

// Hides the passwords in the URLs of a message. Messages about failed downloads contain URLs, so all code
// that shows these messages must call this function. Any thread may call withoutPasswords().
QString withoutPasswords(QString message);

// One line of plain text, without a line feed. Entries of level 0 are the most important; entries of higher
// levels are details.
struct Entry
{
    Entry(Kind entryKind, unsigned int entryLevel, QString entryText);

    Kind kind;
    unsigned int level;
    QString text;
    qint64 time; // the time of the construction, in milliseconds since the epoch
};

// A writer locks the list, appends one entry for each line of the message, unlocks the list and then calls
// emitAppended(). A reader holds the lock while it reads entries of the list. Entries never change and are
// never removed.
class EntryList : public QObject, public QList<Entry>, public QMutex
{
    Q_OBJECT

public:
    EntryList() = default;

    // Hides the passwords in the URLs of the message, appends one entry for each non-empty line, and notifies
    // the readers. Any thread may call this function, but the caller must not hold the lock of the list.
    void appendMessage(Kind kind, unsigned int level, const QString& message);

    // Notifies the readers of new entries. Any thread may call this function, but the caller must not hold
    // the lock of the list.
    void emitAppended();

Q_SIGNALS:
    void appended();
};

} // namespace Log

#endif

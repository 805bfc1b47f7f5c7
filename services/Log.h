// The log of the whole run: every message of the package back end, one entry a line.
//
// An EntryList is owned by the back end and lives as long as it. Worker threads append to it and the
// graphical thread reads it, both under the list's own mutex.

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

// The message with the passwords in its URLs hidden: what fetches files tells the URLs that failed. For every
// place where such a message is shown. Any thread.
QString withoutPasswords(QString message);

// One line of plain text, without a line feed. Level 0 is the most important one; higher levels are details.
struct Entry
{
    Entry(Kind entryKind, unsigned int entryLevel, QString entryText);

    Kind kind;
    unsigned int level;
    QString text;
};

// Whoever appends locks the list, appends one entry for every line of the message, unlocks it and then calls
// emitAppended(). Whoever reads locks the list for as long as it indexes it. Entries are never changed or
// removed.
class EntryList : public QObject, public QList<Entry>, public QMutex
{
    Q_OBJECT

public:
    EntryList() = default;

    // Appends a message, one entry for every line of it that is not empty, and tells the readers. Passwords
    // in URLs are hidden. Any thread; the list must not be locked.
    void appendMessage(Kind kind, unsigned int level, const QString& message);

    // Tells the readers that there are new entries. Any thread; the list must not be locked.
    void emitAppended();

Q_SIGNALS:
    void appended();
};

} // namespace Log

#endif

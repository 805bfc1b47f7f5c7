#include "services/Log.h"

#include <utility>

#include <QMutexLocker>
#include <QStringList>

namespace Log {

Entry::Entry(Kind entryKind, unsigned int entryLevel, QString entryText)
    : kind(entryKind), level(entryLevel), text(std::move(entryText))
{
}

void EntryList::appendMessage(Kind kind, unsigned int level, const QString& message)
{
    {
        QMutexLocker locker(this);
        for (const QString& line : message.split(QLatin1Char('\n'))) {
            if (!line.isEmpty()) {
                append(Entry(kind, level, line));
            }
        }
    }
    emitAppended();
}

void EntryList::emitAppended()
{
    Q_EMIT appended();
}

} // namespace Log

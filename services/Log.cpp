#include "services/Log.h"

#include <utility>

#include <QMutexLocker>
#include <QStringList>

#include "app/base/Credentials.h"

namespace Log {

QString withoutPasswords(QString message)
{
    return Credentials::hidden(message);
}

Entry::Entry(Kind entryKind, unsigned int entryLevel, QString entryText)
    : kind(entryKind), level(entryLevel), text(std::move(entryText))
{
}

void EntryList::appendMessage(Kind kind, unsigned int level, const QString& message)
{
    {
        const QStringList lines = withoutPasswords(message).split(QLatin1Char('\n'));
        QMutexLocker locker(this);
        for (const QString& line : lines) {
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

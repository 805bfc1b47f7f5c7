#include "services/Log.h"

#include <utility>

#include <QMutexLocker>
#include <QRegularExpression>
#include <QStringList>

namespace Log {

// They are in a query of the vantor scheme, of which the path may have been put before the query, or before
// the host.
QString withoutPasswords(QString message)
{
    if (!message.contains(QLatin1String("://"))) {
        return message;
    }
    static const QRegularExpression inQuery(
        QStringLiteral("(/vantor[^\\s?]*\\?[^\\s&]*&[^\\s&=]*=)[^\\s&]+(?=&path=)"));
    static const QRegularExpression beforeHost(QStringLiteral("(://[^/\\s:@]*:)[^/\\s]+(?=@)"));
    // Of any password the same: not even its length is anyone's business.
    const QString hidden = QStringLiteral("\\1") + QString(3, QChar(0x25cf));
    return message.replace(inQuery, hidden).replace(beforeHost, hidden);
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

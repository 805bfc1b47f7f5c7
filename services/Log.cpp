// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/Log.h"

#include <utility>

#include <QDateTime>
#include <QMutexLocker>
#include <QStringList>

#include "app/base/Credentials.h"
#include "services/Unattended.h"

namespace Log {

namespace {

// While the program is unattended, entries up to this level also go to the terminal and to the system's log.
const unsigned int shownLevel = 2;

} // namespace

QString withoutPasswords(QString message)
{
    return Credentials::hidden(message);
}

Entry::Entry(Kind entryKind, unsigned int entryLevel, QString entryText)
    : kind(entryKind), level(entryLevel), text(std::move(entryText)),
      time(QDateTime::currentMSecsSinceEpoch())
{
}

void EntryList::appendMessage(Kind kind, unsigned int level, const QString& message)
{
    QStringList lines = withoutPasswords(message).split(QLatin1Char('\n'));
    lines.removeAll(QString());
    {
        QMutexLocker locker(this);
        for (const QString& line : qAsConst(lines)) {
            append(Entry(kind, level, line));
        }
    }
    const bool fault = kind == Error || kind == Warning;
    if (level <= shownLevel && (Unattended::reportsEverything() || (fault && Unattended::is()))) {
        for (const QString& line : qAsConst(lines)) {
            Unattended::report(line);
        }
    }
    emitAppended();
}

void EntryList::emitAppended()
{
    // While the program is unattended, do not emit the signal: the log window is not visible, and the
    // graphical thread does not return to its event loop.
    if (!Unattended::is()) {
        Q_EMIT appended();
    }
}

} // namespace Log

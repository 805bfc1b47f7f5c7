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

// While the program is unattended, entries up to this level are reported.
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
    // An unattended program has no visible windows, and its graphical thread no longer returns to its event
    // loop.
    if (!Unattended::is()) {
        Q_EMIT appended();
    }
}

} // namespace Log

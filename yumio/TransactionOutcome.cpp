// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/TransactionOutcome.h"

namespace {

// A line of the details has about this number of letters.
constexpr int lineLength = 72;
// The details contain at most this number of names, because a screen has no room for more names.
constexpr int mostNames = 100;

} // namespace

const char* TransactionOutcome::nameOf(Count count)
{
    static const char* const names[] = {"installed", "updated",         "downgraded",    "reinstalled",
                                        "removed",   "groupsInstalled", "groupsUpdated", "groupsRemoved",
                                        "modules",   "reasonsChanged",  "failed"};
    static_assert(sizeof names / sizeof *names == CountCount, "each count has its name");
    return names[count];
}

QString TransactionOutcome::changes() const
{
    const QString texts[] = {
        tr("%1 installed"),
        tr("%1 updated"),
        tr("%1 downgraded"),
        tr("%1 reinstalled"),
        tr("%1 removed"),
        counts[GroupsInstalled] == 1 ? tr("1 group installed") : tr("%1 groups installed"),
        counts[GroupsUpdated] == 1 ? tr("1 group updated") : tr("%1 groups updated"),
        counts[GroupsRemoved] == 1 ? tr("1 group removed") : tr("%1 groups removed"),
        counts[Modules] == 1 ? tr("1 module changed") : tr("%1 modules changed"),
        counts[ReasonsChanged] == 1 ? tr("1 reason changed") : tr("%1 reasons changed"),
    };
    static_assert(sizeof texts / sizeof *texts == Failed, "each kind of change has a text");
    QStringList parts;
    for (int i = 0; i < Failed; ++i) {
        if (counts[i] != 0) {
            QString text = texts[i];
            parts.append(text.replace(QLatin1String("%1"), QString::number(counts[i])));
        }
    }
    return parts.join(QLatin1String(", "));
}

QString TransactionOutcome::text() const
{
    QStringList numbers;
    const QString done = changes();
    if (!done.isEmpty()) {
        numbers.append(done);
    }
    if (counts[Failed] != 0) {
        numbers.append(tr("%1 failed").arg(counts[Failed]));
    }
    if (numbers.isEmpty()) {
        numbers.append(unchanged());
    }
    if (leftOut != 0) {
        numbers.append(tr("%1 left out").arg(leftOut));
    }
    QStringList parts{numbers.join(QLatin1String(", "))};
    // The names come last: they may be long, and a narrow window cuts off the end of the line.
    if (restartNeeded) {
        parts.append(tr("a restart is needed"));
    }
    if (failedScriptlets.count() == 1) {
        parts.append(tr("the scriptlet of %1 failed").arg(failedScriptlets.first()));
    } else if (!failedScriptlets.isEmpty()) {
        parts.append(tr("the scriptlets of %1 and %2 more failed")
                         .arg(failedScriptlets.first(), QString::number(failedScriptlets.count() - 1)));
    }
    return parts.join(QLatin1String("; "));
}

QString TransactionOutcome::unchanged() const
{
    if (stopped) {
        return keysImported ? tr("Stopped: no packages were changed, but signing keys were imported")
                            : tr("Stopped: nothing was changed");
    }
    return keysImported ? tr("No packages were changed, but signing keys were imported")
                        : tr("Nothing was changed");
}

QString TransactionOutcome::details() const
{
    if (failedScriptlets.count() < 2) {
        return QString();
    }
    QStringList lines{text(), tr("The scriptlets of these packages failed:")};
    const QString indent(4, QLatin1Char(' '));
    QString line;
    for (const QString& name : failedScriptlets.mid(0, mostNames)) {
        if (!line.isEmpty() && line.length() + name.length() + 2 > lineLength) {
            lines.append(indent + line + QLatin1Char(','));
            line.clear();
        }
        line += line.isEmpty() ? name : QStringLiteral(", ") + name;
    }
    lines.append(indent + line);
    if (failedScriptlets.count() > mostNames) {
        lines.append(tr("The log names %1 more.").arg(failedScriptlets.count() - mostNames));
    }
    return lines.join(QLatin1Char('\n'));
}

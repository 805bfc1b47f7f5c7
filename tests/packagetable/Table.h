// SPDX-License-Identifier: GPL-2.0-or-later

// The records of a package table, and functions that read a table. The back end makes the records with a
// stand-in script.

#ifndef TESTS_PACKAGETABLE_TABLE_H
#define TESTS_PACKAGETABLE_TABLE_H

#include <QAbstractItemModel>
#include <QJsonArray>
#include <QSignalSpy>
#include <QWidget>

#include "packagetable/Columns.h"
#include "packagetable/Model.h"
#include "services/HProgressBar.h"
#include "tests/support/StandIn.h"
#include "yumio/YumIO.h"

// A process has only one Python interpreter, so a test program can have only one Table.
class Table
{
public:
    Table()
    {
        yumIO.setup(&window, &totalBar, &itemBar);
        if (!yumIO.initialize()) {
            qFatal("the stand-in does not start");
        }
    }
    ~Table() { yumIO.clearEntriesBeforeQuit(); }

    // Replaces all records by records of these packages and groups.
    void collect(const QJsonArray& updates, const QJsonArray& installed, const QJsonArray& available,
                 const QJsonArray& groups = QJsonArray(), RecordTexts::Reader* reader = nullptr)
    {
        standIn.setPackages(updates, installed, available, groups);
        yumIO.clearEntries();
        if (!yumIO.collect({}, YumIO::Source::Repositories, reader)) {
            qFatal("the stand-in does not collect");
        }
    }

    // Makes records of all kinds. "tool" and "many" are out of date; "tool" has one installed version, and
    // "many" has two. "shell" and "kernel" are up to date; "shell" has one installed version, and "kernel"
    // has two. "editor", "lib" and the suite "office" are not installed; "lib" is available for two
    // architectures. The group "Editors" is installed, "Tools" is out of date, and "Games" is not installed.
    void collectUsual(RecordTexts::Reader* reader = nullptr)
    {
        using S = StandIn;
        const QJsonObject old{{"version", "1"}, {"repoid", "@System"}};
        const QJsonObject older{{"version", "0.5"}, {"repoid", "@System"}};
        const QJsonObject next{{"version", "2"}, {"repoid", "updates"}};
        collect({S::package("tool", next), S::package("many", next)},
                {S::package("tool", old), S::package("many", older), S::package("many", old),
                 S::package("shell", old), S::package("kernel", older), S::package("kernel", old)},
                {S::package("editor", {{"arch", "noarch"},
                                       {"epoch", 3},
                                       {"version", "9"},
                                       {"release", "4"},
                                       {"size", 5000},
                                       {"buildtime", 86400}}),
                 S::package("lib"), S::package("lib", {{"arch", "i686"}}),
                 S::package("office", {{"group", "Suite"}})},
                {S::group("Games"), S::group("Editors", {{"installed", true}}),
                 S::group("Tools", {{"mandatory_packages", QJsonArray{"tool"}}})},
                reader);
    }

    // The row number of a package, or -1 if the package is missing.
    int row(const QString& name, const QString& arch = QString()) const
    {
        for (int i = 0; i < yumIO.count(); ++i) {
            if (yumIO[i]->name == name && (arch.isEmpty() || yumIO[i]->arch == arch)) {
                return i;
            }
        }
        return -1;
    }

    Package::Entry& entry(const QString& name, const QString& arch = QString())
    {
        const int found = row(name, arch);
        if (found < 0) {
            qFatal("the record %s is missing", qPrintable(name));
        }
        return *yumIO[found];
    }

    StandIn standIn;
    QWidget window;
    HProgressBar totalBar;
    HProgressBar itemBar;
    YumIO yumIO;
};

// The numbers of all columns whose row in `Columns` satisfies the condition.
template <typename Condition> QVector<int> columns(Condition condition)
{
    QVector<int> found;
    for (int column = 0; column < PackageTable::ColumnCount; ++column) {
        if (condition(PackageTable::Columns::row(column))) {
            found << column;
        }
    }
    return found;
}

// The names in the table, from top to bottom.
inline QStringList names(const QAbstractItemModel& model)
{
    QStringList found;
    for (int row = 0; row < model.rowCount(); ++row) {
        found << model.index(row, PackageTable::NameColumn).data().toString();
    }
    return found;
}

inline QStringList sortedNames(const QAbstractItemModel& model)
{
    QStringList found = names(model);
    found.sort();
    return found;
}

// Returns the names of the rows in the recorded dataChanged() signals, in the order of the signals, and
// removes these signals. A signal must cover only one Action cell. For any other signal, the list contains a
// text that is no name, so the comparison fails.
inline QStringList changed(QSignalSpy& dataChanged)
{
    QStringList found;
    for (const QList<QVariant>& signal : qAsConst(dataChanged)) {
        const QModelIndex first = signal.at(0).toModelIndex();
        const QModelIndex last = signal.at(1).toModelIndex();
        found << (first == last && first.column() == PackageTable::ActionColumn
                      ? first.sibling(first.row(), PackageTable::NameColumn).data().toString()
                      : QStringLiteral("more than an Action cell"));
    }
    dataChanged.clear();
    return found;
}

#endif

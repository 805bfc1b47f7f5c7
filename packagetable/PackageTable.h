// SPDX-License-Identifier: GPL-2.0-or-later

// The options of the package table. The combo boxes in the main window and the command line use the same
// numbers for modes and state filters.

#ifndef PACKAGETABLE_PACKAGETABLE_H
#define PACKAGETABLE_PACKAGETABLE_H

#include <QtGlobal>

namespace PackageTable {

enum Mode : qint32 {
    Filter = 0, // an expression matches the visible text columns
    Search = 1  // an expression matches each field of a package separately
};

enum StateFilter : qint32 { ViewUpdatable = 0, ViewInstallable = 1, ViewRemovable = 2, ViewAll = 3 };

// The columns, in the order of the rows in Columns. A saved table layout uses these numbers too. If VYRE now
// has more or fewer columns than when the layout was saved, VYRE discards the layout.
enum Column : int {
    ActionColumn = 0,
    StateColumn,
    KindColumn,
    NameColumn,
    VersionColumn,
    RepositoryColumn,
    ArchitectureColumn,
    SizeColumn,
    BuildTimeColumn,
    ColumnCount
};

// The text that the Repository column shows for installed packages. This name stands for the local package
// database.
constexpr char localRepository[] = "@System";

} // namespace PackageTable

#endif

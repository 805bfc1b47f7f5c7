// What the package table can show. The numbers of modes and of state filters are those of the main window's
// boxes and of the command line.

#ifndef PACKAGETABLE_PACKAGETABLE_H
#define PACKAGETABLE_PACKAGETABLE_H

#include <QtGlobal>

namespace PackageTable {

enum Mode : qint32 {
    Filter = 0, // an expression matches the visible text columns
    Search = 1  // an expression matches every field of a package, each for itself
};

enum StateFilter : qint32 { ViewUpdatable = 0, ViewInstallable = 1, ViewRemovable = 2, ViewAll = 3 };

// In the order of their rows in Columns. Remembered layouts of the table go by the numbers too: with another
// number of columns they are forgotten.
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

// What stands in place of a repository's identifier for what is installed: the local database of packages.
constexpr char localRepository[] = "@System";

} // namespace PackageTable

#endif

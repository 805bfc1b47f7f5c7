// SPDX-License-Identifier: GPL-2.0-or-later

// Saves and restores the size of the main window, and the widths and positions of the table's columns.
//
// Only the graphical thread calls these functions.

#ifndef APP_KEPTLAYOUT_H
#define APP_KEPTLAYOUT_H

class QWidget;
namespace PackageTable {
class View;
} // namespace PackageTable

namespace KeptLayout {

void save(const QWidget& window, const PackageTable::View& view);
// Restores the saved sizes and positions. A size or position that was never saved stays unchanged.
void restore(QWidget& window, PackageTable::View& view);

} // namespace KeptLayout

#endif

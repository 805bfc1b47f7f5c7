// SPDX-License-Identifier: GPL-2.0-or-later

// Loads icons from the share directory.
//
// Only the graphical thread calls these functions. They have no state.

#ifndef WIDGETS_ICONS_H
#define WIDGETS_ICONS_H

#include <QIcon>
#include <QString>

namespace Icons {

// Returns the icon "icons/NAME.png". The icon includes a large drawing for high resolutions and large fonts.
// In a selected row the icon is not tinted, because a tinted icon would hardly be visible.
QIcon shared(const QString& name);

} // namespace Icons

#endif

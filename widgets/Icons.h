// SPDX-License-Identifier: GPL-2.0-or-later

// The icons of the share directory.
//
// Graphical thread; no state.

#ifndef WIDGETS_ICONS_H
#define WIDGETS_ICONS_H

#include <QIcon>
#include <QString>

namespace Icons {

// The icon "icons/NAME.png", with its drawing in a large size for high resolutions and large fonts. It looks
// the same in a selected row, because a tinted icon would hardly be visible there.
QIcon shared(const QString& name);

} // namespace Icons

#endif

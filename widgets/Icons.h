// The icons of the share directory.
//
// Graphical thread; no state.

#ifndef WIDGETS_ICONS_H
#define WIDGETS_ICONS_H

#include <QIcon>
#include <QString>

namespace Icons {

// The icon "icons/NAME.png", with its drawing in a large size for displays and fonts that need one. It looks
// the same in a selected row: tinted in the selection's colour it would hardly be seen.
QIcon shared(const QString& name);

} // namespace Icons

#endif

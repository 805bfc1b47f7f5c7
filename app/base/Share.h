// SPDX-License-Identifier: GPL-2.0-or-later

// Finds the files of the share directory: the script, the icons, the helper programs.
//
// Any thread; no state.

#ifndef APP_BASE_SHARE_H
#define APP_BASE_SHARE_H

#include <QString>

namespace Share {

// The path of a file in the share directory. The argument is relative to that directory, which is the value
// of the environment variable VYRESHARE, or "/usr/share/vyre" if it is unset. With an empty value the path
// begins with "/". The file need not exist.
QString absolute(QString relative);

} // namespace Share

#endif

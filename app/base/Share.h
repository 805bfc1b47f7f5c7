// SPDX-License-Identifier: GPL-2.0-or-later

// Finds the files of the share directory: the script, the icons, the helper programs.
//
// Any thread may call these functions. They have no state.

#ifndef APP_BASE_SHARE_H
#define APP_BASE_SHARE_H

#include <QString>

namespace Share {

// Returns the absolute path of a file in the share directory. The argument is relative to that directory. The
// environment variable VYRESHARE sets the directory; if it is unset, the directory is "/usr/share/vyre". If
// the variable is empty, the path begins with "/". The file need not exist.
QString absolute(QString relative);

} // namespace Share

#endif

// Finds the files of the share directory: the script, the icons, the helper programs.
//
// Any thread; no state.

#ifndef APP_BASE_SHARE_H
#define APP_BASE_SHARE_H

#include <QString>

namespace Share {

// The path of a file of the share directory, given relative to it. The directory is the environment variable
// VYRESHARE when it is set (an empty value counts as set, so the path then begins with "/"), else
// "/usr/share/vyre". Nothing is checked: the file need not exist.
QString absolute(QString relative);

} // namespace Share

#endif

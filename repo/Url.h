// Takes URLs apart.
//
// Any thread; no state.

#ifndef REPO_URL_H
#define REPO_URL_H

#include <QString>

namespace URL {

// What stands between "://" and the next slash, a port included; empty when the text has no host.
QString getHost(QString url);

} // namespace URL

#endif

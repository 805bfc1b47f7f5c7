// SPDX-License-Identifier: GPL-2.0-or-later

// Extracts parts of URLs.
//
// Any thread may call these functions. They have no state.

#ifndef REPO_URL_H
#define REPO_URL_H

#include <QString>

namespace URL {

// Returns the text between "://" and the next slash, including a port. The result is empty if the URL has no
// host.
QString getHost(QString url);

} // namespace URL

#endif

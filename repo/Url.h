// SPDX-License-Identifier: GPL-2.0-or-later

// Extracts parts of URLs.
//
// Any thread; no state.

#ifndef REPO_URL_H
#define REPO_URL_H

#include <QString>

namespace URL {

// The text between "://" and the next slash, including a port; empty if the text has no host.
QString getHost(QString url);

} // namespace URL

#endif

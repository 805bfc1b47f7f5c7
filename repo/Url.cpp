// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/Url.h"

namespace URL {

QString getHost(QString url)
{
    const int colon = url.indexOf(QLatin1Char(':'));
    if (colon < 0 || url.midRef(colon + 1, 2) != QLatin1String("//")) {
        return QString();
    }
    const int begin = colon + 3;
    const int end = url.indexOf(QLatin1Char('/'), begin);
    return url.mid(begin, end < 0 ? -1 : end - begin);
}

} // namespace URL

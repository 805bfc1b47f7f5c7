// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/base/Share.h"

#include <QFile>

namespace Share {

QString absolute(QString relative)
{
    // An empty VYRESHARE is valid: it selects the root of the file system.
    const QString directory = qEnvironmentVariableIsSet("VYRESHARE") ? QFile::decodeName(qgetenv("VYRESHARE"))
                                                                     : QStringLiteral("/usr/share/vyre");
    return QString(QStringLiteral("%1/%2")).arg(directory, relative);
}

} // namespace Share

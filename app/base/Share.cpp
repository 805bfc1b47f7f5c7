#include "app/base/Share.h"

#include <QFile>

namespace Share {

QString absolute(QString relative)
{
    // Presence alone decides: an administrator can point the program at the root of a tree with "".
    const QString directory = qEnvironmentVariableIsSet("VYRESHARE") ? QFile::decodeName(qgetenv("VYRESHARE"))
                                                                     : QStringLiteral("/usr/share/vyre");
    return QString(QStringLiteral("%1/%2")).arg(directory, relative);
}

} // namespace Share

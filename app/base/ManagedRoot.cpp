#include "app/base/ManagedRoot.h"

#include <QDir>
#include <QFile>

namespace ManagedRoot {

QString path()
{
    const QString given = QFile::decodeName(qgetenv("VYREROOT"));
    if (given.isEmpty()) {
        return QString();
    }
    const QString clean = QDir::cleanPath(QDir(given).absolutePath());
    return clean == QLatin1String("/") ? QString() : clean;
}

QString absolute(const QString& pathInRoot)
{
    return path() + pathInRoot;
}

} // namespace ManagedRoot

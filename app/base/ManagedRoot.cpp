// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/base/ManagedRoot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

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

QString namedDirectory(const QString& directory)
{
    const QString root = path();
    const bool inside = directory == root || directory.startsWith(root + QLatin1Char('/'));
    return directory.startsWith(QLatin1Char('/')) && !inside ? root + directory : directory;
}

QString namedDirectoryOfFiles(const QString& directory)
{
    const QString inside = namedDirectory(directory);
    return QFileInfo(inside).isDir() ? inside : directory;
}

} // namespace ManagedRoot

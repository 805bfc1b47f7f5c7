// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Icons.h"

#include "app/base/Share.h"

namespace Icons {

QIcon shared(const QString& name)
{
    QIcon icon;
    for (const QString& path : {QStringLiteral("icons/%1.png"), QStringLiteral("icons/large/%1.png")}) {
        for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Selected}) {
            icon.addFile(Share::absolute(path.arg(name)), QSize(), mode);
        }
    }
    return icon;
}

} // namespace Icons

// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/Manuals.h"

#include <QFile>
#include <QStringList>
#include <QVector>

#include "app/base/Share.h"
#include "repo/Execute.h"

namespace {

constexpr char documentation[] = "/usr/share/doc/vyre";

// Starts a command, which consists of a program in the share directory and its arguments.
void openExternally(QWidget* window, QStringList command)
{
    command.first() = Share::absolute(command.first());
    QList<QByteArray> arguments;
    for (const QString& argument : qAsConst(command)) {
        arguments.append(QFile::encodeName(argument));
    }
    QVector<char*> argv;
    for (QByteArray& argument : arguments) {
        argv.append(argument.data());
    }
    argv.append(nullptr);
    Execute::execute(window, argv.constData());
}

} // namespace

QString Manuals::openHtml(QWidget* window)
{
    const QString file = QStringLiteral("%1/html/index.html").arg(QLatin1String(documentation));
    openExternally(window, {QStringLiteral("webbrowser"), file});
    return faultOf(file);
}

QString Manuals::openPdf(QWidget* window)
{
    const QString file = QStringLiteral("%1/manual.pdf").arg(QLatin1String(documentation));
    openExternally(window, {QStringLiteral("mimeviewer"), QStringLiteral("application/pdf"), file});
    return faultOf(file);
}

void Manuals::openPage(QWidget* window, const QString& address)
{
    openExternally(window, {QStringLiteral("webbrowser"), address});
}

QString Manuals::faultOf(const QString& file)
{
    return QFile::exists(file) ? QString() : tr("The manual is not installed: there is no file %1").arg(file);
}

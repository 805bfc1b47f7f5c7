// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/Manuals.h"

#include <QFile>
#include <QStringList>
#include <QVector>

#include "app/base/Share.h"
#include "repo/Execute.h"

namespace {

// Starts a helper program from the share directory. The first element of `command` is the program, the others
// are its arguments.
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
    const QString file = QStringLiteral("%1/html/index.html").arg(directory);
    return openFile(window, {QStringLiteral("webbrowser"), file});
}

QString Manuals::openPdf(QWidget* window)
{
    const QString file = QStringLiteral("%1/manual.pdf").arg(directory);
    return openFile(window, {QStringLiteral("mimeviewer"), QStringLiteral("application/pdf"), file});
}

void Manuals::openPage(QWidget* window, const QString& address)
{
    openExternally(window, {QStringLiteral("webbrowser"), address});
}

QString Manuals::openFile(QWidget* window, const QStringList& command)
{
    const QString& file = command.last();
    if (!QFile::exists(file)) {
        // Check whether the file exists, because the helper program would report a missing file in a bare
        // window of its own.
        return tr("The manual is not installed: %1 is missing").arg(file);
    }
    openExternally(window, command);
    return QString();
}

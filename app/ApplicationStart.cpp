// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/ApplicationStart.h"

#include <QByteArray>
#include <QMessageLogContext>
#include <QString>
#include <QStringList>

#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "app/CommandLine.h"
#include "app/base/Program.h"

namespace {

ApplicationStart* current = nullptr;

// Searches Qt's messages for the name of the display that cannot be opened. Returns a null string if the
// messages report another problem.
QString missingDisplay(const QStringList& texts)
{
    const QString complaint = QStringLiteral("could not connect to display");
    for (const QString& text : texts) {
        const int at = text.indexOf(complaint, 0, Qt::CaseInsensitive);
        if (at >= 0) {
            const QString name = text.mid(at + complaint.size()).trimmed();
            return name.isNull() ? QLatin1String("") : name;
        }
    }
    return {};
}

// Returns whether the arguments ask for help. Reads the array up to its null pointer, because Qt may have
// removed arguments, so their number is unknown.
bool asksForHelp(char** argument)
{
    for (; *argument != nullptr; ++argument) {
        if (std::strcmp(*argument, "-h") == 0 || std::strcmp(*argument, "-H") == 0 ||
            std::strcmp(*argument, "--help") == 0) {
            return true;
        }
    }
    return false;
}

} // namespace

ApplicationStart::ApplicationStart(char** argv) : arguments(argv)
{
    current = this;
    handlerBefore = qInstallMessageHandler(hold);
}

ApplicationStart::~ApplicationStart()
{
    qInstallMessageHandler(handlerBefore);
    current = nullptr;
    for (const std::pair<QtMsgType, QString>& message : held) {
        handlerBefore(message.first, QMessageLogContext(), message.second);
    }
}

void ApplicationStart::hold(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    const std::lock_guard<std::mutex> lock(current->mutex);
    if (type == QtFatalMsg) {
        current->fail(text);
    }
    current->held.emplace_back(type, text);
}

void ApplicationStart::fail(const QString& text) const
{
    QStringList texts;
    for (const std::pair<QtMsgType, QString>& message : held) {
        texts << message.second;
    }
    texts << text;
    const QString display = missingDisplay(texts);
    if (display.isNull()) {
        for (const QString& line : qAsConst(texts)) {
            std::fprintf(stderr, "%s: %s\n", program, line.toLocal8Bit().constData());
        }
    } else if (display.isEmpty()) {
        std::fprintf(stderr, "%s: there is no X display: DISPLAY is not set\n", program);
    } else {
        std::fprintf(stderr,
                     "%s: the X display %s cannot be opened: no server answers there, or it does not let "
                     "this user in\n",
                     program, display.toLocal8Bit().constData());
    }
    if (asksForHelp(arguments)) {
        printUsage();
        std::fflush(stdout);
    }
    // No destructor may run, because the construction of the application object has not finished.
    _exit(1);
}

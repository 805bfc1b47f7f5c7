// SPDX-License-Identifier: GPL-2.0-or-later

// Ends the process with a single message if Qt finds no display. Without this class, Qt would print several
// messages and abort.
//
// During the construction of the application object, an ApplicationStart stores Qt's messages. If the
// construction fails because the display cannot be opened, the ApplicationStart prints one message. After any
// other failure, it prints the stored messages. If the arguments ask for help, it also prints the usage text.
// Then it ends the process with exit status 1. If the construction succeeds, the ApplicationStart passes the
// stored messages to the previous message handler.
//
// main() creates this object on the graphical thread, immediately before the application object, and destroys
// this object immediately after the application object has been created. Only one ApplicationStart may exist
// at a time.

#ifndef APP_APPLICATIONSTART_H
#define APP_APPLICATIONSTART_H

#include <QtGlobal>

#include <mutex>
#include <utility>
#include <vector>

class QString;

class ApplicationStart
{
public:
    // argv: the arguments of main(), which end with a null pointer. The arguments must outlive this object,
    // because it reads them if the start fails.
    explicit ApplicationStart(char** argv);
    ~ApplicationStart();
    ApplicationStart(const ApplicationStart&) = delete;
    ApplicationStart& operator=(const ApplicationStart&) = delete;

private:
    static void hold(QtMsgType type, const QMessageLogContext& context, const QString& text);
    [[noreturn]] void fail(const QString& text) const;

    char** arguments;
    QtMessageHandler handlerBefore;
    std::mutex mutex; // Qt's own threads may also send messages
    std::vector<std::pair<QtMsgType, QString>> held;
};

#endif

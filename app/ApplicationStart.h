// SPDX-License-Identifier: GPL-2.0-or-later

// Ends the process with a single message if Qt finds no display. Without this class, Qt would print several
// messages and abort.
//
// While the application object is created, an object of this class stores Qt's messages. If the start fails,
// the object prints one message, and also the usage text if the arguments ask for help. Then it ends the
// process with exit status 1. If the start succeeds, the object passes the stored messages to the previous
// message handler.
//
// main() creates this object on the graphical thread, immediately before the application object, and destroys
// this object immediately after the application object has been created. Only one object may exist at a time.

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
    // The arguments are those of main(), which must outlive this object. A null pointer ends the arguments.
    // This object reads the arguments only if the start fails.
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

// SPDX-License-Identifier: GPL-2.0-or-later

// Ends the process with a single message if Qt finds no display.
//
// If Qt finds no display, it prints several messages and aborts. An object of this class stores Qt's messages
// instead. If the start fails, it prints one message and ends the process with exit status 1. If the
// arguments ask for help, it also prints the usage text. If the start succeeds, it passes the messages to the
// previous handler.
//
// main() creates it on the graphical thread, immediately before the application object, and destroys it
// immediately after that object has been created. Only one object may exist at a time.

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
    // The arguments are the arguments of main(). They end with a null pointer and must outlive this object.
    // The object reads them only if the start fails.
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

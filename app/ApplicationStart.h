// SPDX-License-Identifier: GPL-2.0-or-later

// Ends the process in good order if the toolkit finds no display.
//
// Without a display, Qt prints several messages and aborts. An object of this class holds Qt's messages back.
// If the start fails, it prints one message and ends the process with exit status 1. If the arguments ask for
// help, it prints the usage text too. If the start succeeds, it passes the messages on to the previous
// handler.
//
// main() makes it on the graphical thread, directly before the application object, and destroys it directly
// after; one at a time.

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
    // The arguments are those of main(). They end with a null pointer and must outlive this object, which
    // reads them only if the start fails.
    explicit ApplicationStart(char** argv);
    ~ApplicationStart();
    ApplicationStart(const ApplicationStart&) = delete;
    ApplicationStart& operator=(const ApplicationStart&) = delete;

private:
    static void hold(QtMsgType type, const QMessageLogContext& context, const QString& text);
    [[noreturn]] void fail(const QString& text) const;

    char** arguments;
    QtMessageHandler handlerBefore;
    std::mutex mutex; // Qt has threads of its own
    std::vector<std::pair<QtMsgType, QString>> held;
};

#endif

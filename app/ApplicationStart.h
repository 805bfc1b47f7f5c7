// Makes the process end in good order when the toolkit finds no display.
//
// Qt tells of it in several messages and aborts. While one of these is there, Qt's messages are held back: a
// start that fails becomes one message and exit status 1, after the usage text if that was asked for; after
// one that succeeds they are passed on to the handler there was before.
//
// Made by main() on the graphical thread, just around the making of the application object; one at a time.

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
    // Keeps the arguments of main(), which end with a null pointer and have to outlive it, and looks at them
    // only when the start has failed.
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

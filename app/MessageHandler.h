// Where Qt's own messages go: to the terminal that the program was started from.
//
// Installed once by main(), before any other thread exists; Qt calls it on any thread. Standard error itself
// will not do: while an operation captures it, it is a pipe that the graphical thread empties, and that
// thread would wait for ever when it filled the pipe with a message of its own.

#ifndef APP_MESSAGEHANDLER_H
#define APP_MESSAGEHANDLER_H

class QString;

namespace MessageHandler {

void install();

// Writes one message of the program's own. The toolkit's functions for that do nothing of the kind while it
// passes one of its messages on.
void say(const QString& text);

// Has the function called after each message, with whether the toolkit is about to abort the process; null:
// none.
void watch(void (*watcher)(bool fatal));

} // namespace MessageHandler

#endif

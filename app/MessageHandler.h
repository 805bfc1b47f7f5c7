// Where Qt's own messages go: to the terminal that the program was started from.
//
// Installed once by main(), before any other thread exists; Qt calls it on any thread. Standard error itself
// will not do: while an operation captures it, it is a pipe that the graphical thread empties, and that
// thread would wait for ever when it filled the pipe with a message of its own.

#ifndef APP_MESSAGEHANDLER_H
#define APP_MESSAGEHANDLER_H

namespace MessageHandler {

void install();

} // namespace MessageHandler

#endif

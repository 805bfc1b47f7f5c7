// SPDX-License-Identifier: GPL-2.0-or-later

// Writes Qt's own messages to the terminal that the program was started from.
//
// main() installs it once, before any other thread exists; Qt calls it on any thread. It does not write to
// standard error, because that can be a pipe: an operation captures it, and the graphical thread empties the
// pipe. If that thread filled the pipe with a message of its own, it would wait forever.

#ifndef APP_MESSAGEHANDLER_H
#define APP_MESSAGEHANDLER_H

class QString;

namespace MessageHandler {

void install();

// Writes one message of VYRE itself. While Qt calls the handler, Qt's own functions for messages do not call
// it again.
void say(const QString& text);

// Sets a function to be called after each message. The argument is true if the toolkit is about to abort the
// process. Null removes the function.
void watch(void (*watcher)(bool fatal));

} // namespace MessageHandler

#endif

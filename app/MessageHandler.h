// SPDX-License-Identifier: GPL-2.0-or-later

// Writes Qt's own messages to the terminal from which the program was started.
//
// main() installs it once, before any other thread exists. Qt calls it on any thread. It does not write to
// standard error, because an operation can replace standard error by a pipe. The graphical thread reads that
// pipe. If this thread wrote a message to the full pipe, it would wait for ever for itself.

#ifndef APP_MESSAGEHANDLER_H
#define APP_MESSAGEHANDLER_H

class QString;

namespace MessageHandler {

void install();

// Writes a message of VYRE. Use this function in code that Qt's message handler calls: while the handler
// runs, Qt does not call it again.
void say(const QString& text);

// Sets a function that is called after each message. The argument is true if Qt is about to abort the
// process. Null removes the function.
void watch(void (*watcher)(bool fatal));

} // namespace MessageHandler

#endif

// SPDX-License-Identifier: GPL-2.0-or-later

// Writes Qt's own messages to the terminal from which the program was started.
//
// main() installs this message handler once, before any other thread exists. Qt calls the handler on any
// thread. The handler does not write to descriptor 2, because an operation may replace this descriptor by a
// pipe that the graphical thread reads. If the graphical thread wrote a message to a full pipe, this thread
// would wait for itself for ever.

#ifndef APP_MESSAGEHANDLER_H
#define APP_MESSAGEHANDLER_H

class QString;

namespace MessageHandler {

void install();

// Writes a message of VYRE to the same terminal. Code that runs inside the message handler must use this
// function: while the handler runs, Qt does not pass further messages to it.
void say(const QString& text);

// Sets a function that is called after each message. The argument is true if Qt is about to abort the
// process. Null removes the function.
void watch(void (*watcher)(bool fatal));

} // namespace MessageHandler

#endif

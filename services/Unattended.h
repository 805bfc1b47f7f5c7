// SPDX-License-Identifier: GPL-2.0-or-later

// Stores whether a user can see windows and answer questions. When the display is lost, or a signal asks the
// program to end, the program becomes unattended and remains unattended.
//
// The state belongs to the whole process. Any thread may call a function of this namespace, unless the
// comment of the function names a thread.

#ifndef SERVICES_UNATTENDED_H
#define SERVICES_UNATTENDED_H

class QString;

namespace Unattended {

// The interface of an object that waits for an answer, and gives up when the program becomes unattended.
class Waiter
{
public:
    // Called at most once, on the thread that calls begin(). An implementation must not call add() or
    // remove(), because begin() holds a lock during the call.
    virtual void giveUpWaiting() = 0;

protected:
    ~Waiter() = default;
};

bool is();

// Makes the program unattended: all waiters give up, and the function is() returns true from now on. Only the
// graphical thread may call begin(). If the display is lost, the caller requests reports of all log entries.
// If a signal has asked the program to end, the caller requests reports of errors and warnings only.
enum class Reported { Everything, Faults };
void begin(Reported what = Reported::Everything);

// Returns whether all log entries must be reported.
bool reportsEverything();

// Registers a waiter until remove() is called. If the program is already unattended, does not register the
// waiter, and returns false.
bool add(Waiter* waiter);
void remove(Waiter* waiter);

// Writes a text to the system's log and to the program's messages, because no window can show it.
// reportThrough() sets the function that writes the messages. That function must work on any thread.
void report(const QString& text);
void reportThrough(void (*function)(const QString& text));

} // namespace Unattended

#endif

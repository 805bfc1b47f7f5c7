// SPDX-License-Identifier: GPL-2.0-or-later

// Whether a user is present to see windows and to answer questions. When the display is lost, or a signal
// asks the program to end, the program becomes unattended, and stays so.
//
// State of the process; any thread, unless a comment says otherwise.

#ifndef SERVICES_UNATTENDED_H
#define SERVICES_UNATTENDED_H

class QString;

namespace Unattended {

// Waits for an answer, and gives up when the program becomes unattended.
class Waiter
{
public:
    // Called once, on the thread that calls begin(). The waiter holds none of its locks.
    virtual void giveUpWaiting() = 0;

protected:
    ~Waiter() = default;
};

bool is();

// From now on is() returns true, and all waiters give up. Graphical thread. If the display is lost, report
// everything that is logged; if a signal has asked the program to end, report only faults.
enum class Reported { Everything, Faults };
void begin(Reported what = Reported::Everything);

// Returns whether everything that is logged must be reported.
bool reportsEverything();

// Registers a waiter until remove() is called. Returns false, and does not register it, if the program is
// already unattended.
bool add(Waiter* waiter);
void remove(Waiter* waiter);

// Sends a text that no window can show to the system's log and to the program's messages. The messages go
// through the function that reportThrough() sets, which is called on any thread.
void report(const QString& text);
void reportThrough(void (*function)(const QString& text));

} // namespace Unattended

#endif

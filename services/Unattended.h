// Whether anyone is there to see windows and to answer questions. Nobody is from the moment on at which the
// display is lost or a signal asks the program to end; there is no way back.
//
// State of the process; any thread, except where it is said otherwise.

#ifndef SERVICES_UNATTENDED_H
#define SERVICES_UNATTENDED_H

class QString;

namespace Unattended {

// Waits for an answer that nobody can give any more once the program is unattended.
class Waiter
{
public:
    // Called once, with no lock of the waiter's held, on the thread that calls begin().
    virtual void giveUpWaiting() = 0;

protected:
    ~Waiter() = default;
};

bool is();

// From now on is() is true, and everyone who waits gives up. Graphical thread. Without the display everything
// that is logged is to be reported; for who has asked for the end of the program, only what is wrong.
enum class Reported { Everything, Faults };
void begin(Reported what = Reported::Everything);

// Whether everything that is logged is to be reported.
bool reportsEverything();

// Registers a waiter until the matching remove(). False, and not registered: the program is unattended
// already.
bool add(Waiter* waiter);
void remove(Waiter* waiter);

// What would have been shown goes to the system's log, and to the program's messages: through the function,
// which is called on any thread, once there is one.
void report(const QString& text);
void reportThrough(void (*function)(const QString& text));

} // namespace Unattended

#endif

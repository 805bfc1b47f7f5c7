// SPDX-License-Identifier: GPL-2.0-or-later

// The request of the user to stop the running operation. The graphical thread makes the request; the worker
// asks for it between its steps, and ends. Downloads end at once.
//
// The back end owns the object, which lives on the graphical thread. begin(), end() and request() belong to
// that thread, the other functions to every thread.

#ifndef YUMIO_STOPREQUEST_H
#define YUMIO_STOPREQUEST_H

#include <QMutex>
#include <QObject>
#include <QTimer>

#include <atomic>

class StopRequest : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Idle,     // no operation runs
        Possible, // a request ends the operation soon
        Useless,  // the operation ends by itself before a request has an effect
        Requested,
        Refused // rpm changes the system, which must not be interrupted
    };

    StopRequest();

    State state() const;
    // A worker begins.
    void begin(bool stoppable);
    void end();
    // Returns false if there is no operation, and if the operation cannot be stopped any more.
    bool request();
    // Remains true until the next begin().
    bool isRequested() const { return requested; }
    // Whether a request has an effect from now on.
    void setStoppable(bool stoppable);
    // Whether the operation waits for another program now, which a request ends.
    void setWaiting(bool waits);
    // From now on, no request is possible. Returns false if there was a request before.
    bool refuse();

    // The download library abandons all downloads within a second. Any thread.
    static void interruptDownloads();

Q_SIGNALS:
    // The state has changed; from any thread.
    void changed();

private Q_SLOTS:
    void interruptAgain();

private:
    State stateNow() const;
    // Calls the function, which changes the members below, and reports a change of the state.
    template <typename Change> void change(const Change& function);

    mutable QMutex mutex; // guards the other members
    bool running = false;
    bool possible = false;
    bool waiting = false;
    bool refused = false;
    std::atomic<bool> requested{false}; // written under the mutex
    QTimer repetition;                  // only for the graphical thread
};

#endif

// SPDX-License-Identifier: GPL-2.0-or-later

// The user's request to stop the running operation. The graphical thread makes the request. The worker checks
// between its steps whether a request exists. If a request exists, the worker ends. Downloads end at once.
//
// The back end owns the only StopRequest, which lives on the graphical thread. Only that thread calls
// begin(), end(), request() and wasRequested(). Any thread may call all other functions.

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
        Possible, // a request would end the operation soon
        Useless,  // the operation would end by itself before a request has an effect
        Requested,
        Refused // rpm changes the system; nothing may interrupt rpm
    };

    StopRequest();

    State state() const;
    // Called when a worker starts. If `stoppable` is true, a request has an effect from the start.
    void begin(bool stoppable);
    void end();
    // Returns false if no operation runs, or if the operation can no longer be stopped.
    bool request();
    // Returns whether the running operation must stop.
    bool isRequested() const { return requested; }
    // Returns whether the user requested a stop of the most recently ended operation. Only the graphical
    // thread may call this function.
    bool wasRequested() const { return requestedBefore; }
    // Sets whether a request is Possible or Useless from now on.
    void setStoppable(bool stoppable);
    // Sets whether the operation is waiting for another program. The user's request ends this wait.
    void setWaiting(bool waits);
    // Makes all further requests impossible. Returns false if the user has already made a request.
    bool refuse();

    // Makes librepo abandon all downloads within a second. Any thread may call this function.
    static void interruptDownloads();

Q_SIGNALS:
    // Emitted, on any thread, when the state has changed.
    void changed();

private Q_SLOTS:
    void interruptAgain();

private:
    State stateNow() const;
    // Calls the function, which changes the members below. Then emits changed() if the function has changed
    // the state.
    template <typename Change> void change(const Change& function);

    mutable QMutex mutex; // guards the other members
    bool running = false;
    bool possible = false;
    bool waiting = false;
    bool refused = false;
    std::atomic<bool> requested{false}; // any thread reads it; writers hold the mutex
    bool requestedBefore = false;       // only the graphical thread uses it
    QTimer repetition;                  // only the graphical thread uses it
};

#endif

// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/StopRequest.h"

#include <csignal>

#include <dlfcn.h>

#include <QMutexLocker>

namespace {

// The interval in milliseconds at which librepo's `lr_interrupt` is set again.
constexpr int interval = 50;

} // namespace

StopRequest::StopRequest()
{
    repetition.setInterval(interval);
    connect(&repetition, SIGNAL(timeout()), this, SLOT(interruptAgain()));
}

StopRequest::State StopRequest::stateNow() const
{
    if (!running) {
        return State::Idle;
    }
    if (refused) {
        return State::Refused;
    }
    if (requested) {
        return State::Requested;
    }
    return possible || waiting ? State::Possible : State::Useless;
}

template <typename Change> void StopRequest::change(const Change& function)
{
    bool different = false;
    {
        const QMutexLocker locker(&mutex);
        const State before = stateNow();
        function();
        different = stateNow() != before;
    }
    if (different) {
        Q_EMIT changed();
    }
}

StopRequest::State StopRequest::state() const
{
    const QMutexLocker locker(&mutex);
    return stateNow();
}

void StopRequest::begin(bool stoppable)
{
    change([this, stoppable] {
        running = true;
        possible = stoppable;
        waiting = false;
        refused = false;
        requested = false;
    });
}

void StopRequest::end()
{
    repetition.stop();
    requestedBefore = requested;
    change([this] {
        running = false;
        requested = false;
    });
}

bool StopRequest::request()
{
    bool accepted = false;
    change([this, &accepted] {
        accepted = running && !refused;
        requested = requested || accepted;
    });
    if (accepted) {
        interruptDownloads();
        // Repeat interruptDownloads(), because librepo clears `lr_interrupt` when it begins a download.
        repetition.start();
    }
    return accepted;
}

void StopRequest::setStoppable(bool stoppable)
{
    change([this, stoppable] { possible = stoppable; });
}

void StopRequest::setWaiting(bool waits)
{
    change([this, waits] { waiting = waits; });
}

bool StopRequest::refuse()
{
    bool accepted = false;
    change([this, &accepted] {
        accepted = !requested;
        refused = accepted;
    });
    return accepted;
}

void StopRequest::interruptAgain()
{
    interruptDownloads();
}

void StopRequest::interruptDownloads()
{
    static volatile std::sig_atomic_t* const flag = [] {
        // Null if the package manager has not loaded librepo yet.
        void* const library = dlopen("librepo.so.0", RTLD_LAZY | RTLD_NOLOAD);
        return library != nullptr ? static_cast<volatile std::sig_atomic_t*>(dlsym(library, "lr_interrupt"))
                                  : nullptr;
    }();
    if (flag != nullptr) {
        *flag = 1;
    }
}

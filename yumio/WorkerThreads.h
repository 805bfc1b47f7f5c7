// SPDX-License-Identifier: GPL-2.0-or-later

// The class template of the worker threads. A worker thread runs one long operation of the back end: a member
// function whose name ends in Real.
//
// Each WorkerThread lives on the stack of the graphical thread, which waits in `eventLoop`. When the
// operation is over, the worker ends that loop. From then on, `result` is valid. If an argument of the
// operation is a reference, its target must exist until the worker has ended. YumIO.h names the class for
// each operation, for example CollectThread.

#ifndef YUMIO_WORKERTHREADS_H
#define YUMIO_WORKERTHREADS_H

#include <tuple>
#include <type_traits>

#include <QEventLoop>
#include <QThread>

template <auto operation> class WorkerThread;

template <typename Owner, typename Result, typename... Arguments, Result (Owner::*operation)(Arguments...)>
class WorkerThread<operation> : public QThread
{
public:
    WorkerThread(Owner* theOwner, QEventLoop& eventLoop, Arguments... theArguments)
        : owner(theOwner), loop(eventLoop), arguments(theArguments...)
    {
    }

    // Unused if the operation returns no result.
    std::conditional_t<std::is_void_v<Result>, bool, Result> result{};

protected:
    void run() override
    {
        std::apply(
            [this](Arguments... each) {
                if constexpr (std::is_void_v<Result>) {
                    (owner->*operation)(each...);
                } else {
                    result = (owner->*operation)(each...);
                }
            },
            arguments);
        loop.exit(0);
    }

private:
    Owner* owner;
    QEventLoop& loop;
    std::tuple<Arguments...> arguments;
};

#endif

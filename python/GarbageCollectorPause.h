// SPDX-License-Identifier: GPL-2.0-or-later

// While a GarbageCollectorPause exists, Python does not look for unreachable cycles of objects. Code that
// makes many thousands of objects and keeps them all uses this guard. Otherwise Python would examine these
// objects repeatedly. Objects without cycles are released as usual.
//
// Any thread may use this guard. The thread must hold the interpreter lock in the constructor and in the
// destructor. If the collector cannot be disabled, the guard does nothing.

#ifndef PYTHON_GARBAGECOLLECTORPAUSE_H
#define PYTHON_GARBAGECOLLECTORPAUSE_H

#include "python/PyRef.h"

class GarbageCollectorPause
{
public:
    GarbageCollectorPause();
    // Enables the collector again if the constructor has disabled it. A pending exception stays pending.
    ~GarbageCollectorPause();
    GarbageCollectorPause(const GarbageCollectorPause&) = delete;
    GarbageCollectorPause& operator=(const GarbageCollectorPause&) = delete;

private:
    PyRef collector; // Python's module "gc", or empty if the guard does nothing
};

#endif

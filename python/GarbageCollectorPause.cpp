// SPDX-License-Identifier: GPL-2.0-or-later

#include "python/GarbageCollectorPause.h"

#include "python/CPython.h"

namespace {

// Returns whether the call succeeded. Clears the exception of a failed call.
bool call(const PyRef& collector, const char* function)
{
    const PyRef result(PyObject_CallMethod(collector.get(), function, nullptr));
    if (!result) {
        PyErr_Clear();
    }
    return bool(result);
}

} // namespace

GarbageCollectorPause::GarbageCollectorPause() : collector(PyImport_ImportModule("gc"))
{
    const PyRef enabled(collector ? PyObject_CallMethod(collector.get(), "isenabled", nullptr) : nullptr);
    if (!enabled || PyObject_IsTrue(enabled.get()) != 1 || !call(collector, "disable")) {
        PyRef().swap(collector);
        PyErr_Clear();
    }
}

GarbageCollectorPause::~GarbageCollectorPause()
{
    if (!collector) {
        return;
    }
    PyObject* type = nullptr;
    PyObject* value = nullptr;
    PyObject* traceback = nullptr;
    PyErr_Fetch(&type, &value, &traceback);
    // The following two calls move all objects to the oldest generation without examining them. Without these
    // calls, Python would examine all objects from the pause as soon as any thread creates the next object.
    // If the graphical thread creates that object, the windows would freeze meanwhile.
    if (call(collector, "freeze")) {
        call(collector, "unfreeze");
    }
    call(collector, "enable");
    PyErr_Restore(type, value, traceback);
}

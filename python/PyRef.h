// SPDX-License-Identifier: GPL-2.0-or-later

// Owns one reference to a Python object and drops it at the end of its scope.
//
// Any thread. The thread must hold the interpreter lock, also when the object is destroyed.

#ifndef PYTHON_PYREF_H
#define PYTHON_PYREF_H

#include <utility>

#include "python/PyObject.h"

class PyRef
{
public:
    PyRef() = default;
    // Takes over a new reference, as the call helpers return it; NULL is allowed.
    explicit PyRef(PyObject* owned) : object(owned) {}
    PyRef(PyRef&& other) noexcept : object(other.release()) {}
    PyRef& operator=(PyRef&& other) noexcept
    {
        PyRef(std::move(other)).swap(*this);
        return *this;
    }
    PyRef(const PyRef&) = delete;
    PyRef& operator=(const PyRef&) = delete;
    ~PyRef()
    {
        if (object != nullptr) {
            drop(object);
        }
    }

    // Takes an additional reference to an object that somebody else owns; NULL is allowed.
    static PyRef borrow(PyObject* borrowed);

    // The object, still owned here; NULL if it holds none.
    PyObject* get() const { return object; }
    explicit operator bool() const { return object != nullptr; }

    // Hands the reference over to the caller, who must drop it.
    PyObject* release() { return std::exchange(object, nullptr); }

    void swap(PyRef& other) noexcept { std::swap(object, other.object); }

private:
    static void drop(PyObject* owned);

    PyObject* object = nullptr;
};

#endif

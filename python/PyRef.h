// SPDX-License-Identifier: GPL-2.0-or-later

// Owns one reference to a Python object and releases it at the end of the scope.
//
// Any thread that holds the interpreter lock may use a PyRef. The destructor needs this lock too.

#ifndef PYTHON_PYREF_H
#define PYTHON_PYREF_H

#include <utility>

#include "python/PyObject.h"

class PyRef
{
public:
    PyRef() = default;
    // Takes over a new reference, such as the result of Python::pyCall(). NULL is allowed.
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

    // Adds a reference to an object that other code owns. NULL is allowed.
    static PyRef borrow(PyObject* borrowed);

    // Returns the object or NULL. The PyRef still owns the object.
    PyObject* get() const { return object; }
    explicit operator bool() const { return object != nullptr; }

    // Passes the reference to the caller, who must release it.
    PyObject* release() { return std::exchange(object, nullptr); }

    void swap(PyRef& other) noexcept { std::swap(object, other.object); }

private:
    static void drop(PyObject* owned);

    PyObject* object = nullptr;
};

#endif

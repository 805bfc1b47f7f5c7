// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <memory>

#include "python/PyRef.h"
#include "tests/python/RecordingPython.h"

class PyRefTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<RecordingPython> python;
    PyObject* object = nullptr; // owned by the test
    Py_ssize_t before = 0;

    Py_ssize_t added() const { return Py_REFCNT(object) - before; }

private Q_SLOTS:
    void initTestCase()
    {
        python = std::make_unique<RecordingPython>();
        QVERIFY(python->initialize());
    }

    void cleanupTestCase() { python.reset(); }

    void init()
    {
        object = PyList_New(0);
        QVERIFY(object != nullptr);
        before = Py_REFCNT(object);
    }

    void cleanup()
    {
        QCOMPARE(added(), Py_ssize_t(0));
        Py_CLEAR(object);
    }

    void aPyRefWithoutAnObjectIsEmpty()
    {
        QVERIFY(!PyRef());
        QVERIFY(PyRef().get() == nullptr);
        QVERIFY(!PyRef(nullptr));
        QVERIFY(!PyRef::borrow(nullptr));
    }

    void theConstructorTakesOverANewReference()
    {
        Py_INCREF(object);
        {
            const PyRef ref(object);
            QVERIFY(ref);
            QVERIFY(ref.get() == object);
            QCOMPARE(added(), Py_ssize_t(1));
        }
        QCOMPARE(added(), Py_ssize_t(0));
    }

    void borrowingAnObjectAddsAReference()
    {
        const PyRef ref = PyRef::borrow(object);
        QVERIFY(ref.get() == object);
        QCOMPARE(added(), Py_ssize_t(1));
        // cleanup() checks that the destructor of `ref` has released the reference.
    }

    void releasingAPyRefPassesItsReferenceToTheCaller()
    {
        PyObject* released = nullptr;
        {
            PyRef ref = PyRef::borrow(object);
            released = ref.release();
            QVERIFY(!ref);
        }
        QVERIFY(released == object);
        QCOMPARE(added(), Py_ssize_t(1));
        Py_DECREF(released);
    }

    void movingAPyRefLeavesTheSourceEmpty()
    {
        PyRef first = PyRef::borrow(object);
        const PyRef second(std::move(first));
        // PyRef guarantees that the source of a move is empty afterwards.
        // NOLINTNEXTLINE(bugprone-use-after-move)
        QVERIFY(!first);
        QVERIFY(second.get() == object);
        QCOMPARE(added(), Py_ssize_t(1));
    }

    void assigningToAPyRefReleasesItsFormerObject()
    {
        PyRef ref = PyRef::borrow(object);
        ref = PyRef(PyList_New(0));
        QVERIFY(ref.get() != object);
        QCOMPARE(added(), Py_ssize_t(0));
    }
};

QTEST_GUILESS_MAIN(PyRefTest)
#include "PyRefTest.moc"

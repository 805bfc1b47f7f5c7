// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <memory>

#include "python/GarbageCollectorPause.h"
#include "tests/python/RecordingPython.h"

class GarbageCollectorPauseTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<RecordingPython> python;

    static bool call(const char* function)
    {
        const PyRef collector(PyImport_ImportModule("gc"));
        const PyRef result(collector ? PyObject_CallMethod(collector.get(), function, nullptr) : nullptr);
        return result && PyObject_IsTrue(result.get()) == 1;
    }

    static bool enabled() { return call("isenabled"); }

private Q_SLOTS:
    void initTestCase()
    {
        python = std::make_unique<RecordingPython>();
        QVERIFY(python->initialize());
    }

    void cleanupTestCase() { python.reset(); }

    void init() { call("enable"); }

    void theCollectorIsDisabledWhileTheGuardExists()
    {
        QVERIFY(enabled());
        {
            const GarbageCollectorPause pause;
            QVERIFY(!enabled());
        }
        QVERIFY(enabled());
    }

    void anInnerGuardDoesNotEnableTheCollector()
    {
        const GarbageCollectorPause outer;
        {
            const GarbageCollectorPause inner;
            QVERIFY(!enabled());
        }
        QVERIFY(!enabled());
    }

    void theGuardDoesNotEnableACollectorThatWasDisabledBefore()
    {
        call("disable");
        {
            const GarbageCollectorPause pause;
        }
        QVERIFY(!enabled());
    }

    void aPendingExceptionStaysPendingWhenTheGuardEnds()
    {
        {
            const GarbageCollectorPause pause;
            PyErr_SetString(PyExc_KeyError, "missing");
        }
        QVERIFY(PyErr_ExceptionMatches(PyExc_KeyError));
        PyErr_Clear();
        QVERIFY(enabled());
    }

    void afterThePauseAllObjectsAreInTheOldestGeneration()
    {
        const PyRef collector(PyImport_ImportModule("gc"));
        QVERIFY(collector);
        PyRef kept;
        {
            const GarbageCollectorPause pause;
            PyRef(PyList_New(0)).swap(kept);
        }
        const PyRef oldest(PyObject_CallMethod(collector.get(), "get_objects", "(i)", 2));
        QVERIFY(oldest);
        // The loop compares addresses. PySequence_Contains() compares values, and would take another empty
        // list for this list.
        bool found = false;
        for (Py_ssize_t i = 0; i < PyList_Size(oldest.get()) && !found; ++i) {
            found = PyList_GetItem(oldest.get(), i) == kept.get();
        }
        QVERIFY(found);
    }

    void objectsWithoutCyclesAreReleasedDuringThePause()
    {
        const GarbageCollectorPause pause;
        PyObject* inner = PyList_New(0);
        QVERIFY(inner != nullptr);
        const Py_ssize_t before = Py_REFCNT(inner);
        {
            const PyRef outer(PyList_New(0));
            QCOMPARE(PyList_Append(outer.get(), inner), 0);
            QCOMPARE(Py_REFCNT(inner), before + 1);
        }
        QCOMPARE(Py_REFCNT(inner), before);
        Py_DECREF(inner);
    }
};

QTEST_GUILESS_MAIN(GarbageCollectorPauseTest)
#include "GarbageCollectorPauseTest.moc"

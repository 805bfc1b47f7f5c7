// SPDX-License-Identifier: GPL-2.0-or-later

#include <QTimer>
#include <QtTest>

#include "yumio/WorkerThreads.h"

namespace {

// An object whose operations record the thread on which they run.
class Owner
{
public:
    bool succeedReal()
    {
        ranOn = QThread::currentThread();
        return true;
    }
    bool failReal() { return false; }
    void appendReal(QStringList& list, const QString& text)
    {
        ranOn = QThread::currentThread();
        list.append(text);
    }

    QThread* ranOn = nullptr;
};

using SucceedThread = WorkerThread<&Owner::succeedReal>;
using FailThread = WorkerThread<&Owner::failReal>;
using AppendThread = WorkerThread<&Owner::appendReal>;

// Starts the thread only after the loop has begun, because the thread ends the loop.
int exec(QEventLoop& loop, QThread& thread)
{
    QTimer::singleShot(0, &thread, [&thread] { thread.start(); });
    const int status = loop.exec();
    thread.wait();
    return status;
}

} // namespace

class WorkerThreadsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theOperationRunsOnTheThreadAndThenEndsTheLoop()
    {
        Owner owner;
        QEventLoop loop;
        SucceedThread thread(&owner, loop);
        QVERIFY(!thread.result);
        QCOMPARE(exec(loop, thread), 0);
        QVERIFY(owner.ranOn == &thread);
        QVERIFY(thread.result);
    }

    void theResultIsFalseIfTheOperationFails()
    {
        Owner owner;
        QEventLoop loop;
        FailThread thread(&owner, loop);
        thread.result = true;
        QCOMPARE(exec(loop, thread), 0);
        QVERIFY(!thread.result);
    }

    void theOperationGetsReferencesToItsArguments()
    {
        Owner owner;
        QEventLoop loop;
        QStringList list;
        QString text("before");
        AppendThread thread(&owner, loop, list, text);
        text = "after";
        QCOMPARE(exec(loop, thread), 0);
        QVERIFY(owner.ranOn == &thread);
        QCOMPARE(list, QStringList("after"));
    }
};

QTEST_GUILESS_MAIN(WorkerThreadsTest)
#include "WorkerThreadsTest.moc"

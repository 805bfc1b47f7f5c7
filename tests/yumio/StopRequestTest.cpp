// SPDX-License-Identifier: GPL-2.0-or-later

#include <QSignalSpy>
#include <QtTest>

#include "yumio/StopRequest.h"

using State = StopRequest::State;

class StopRequestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noStopRequestIsAcceptedIfNoOperationRuns()
    {
        StopRequest stop;
        QCOMPARE(stop.state(), State::Idle);
        QVERIFY(!stop.request());
        QVERIFY(!stop.isRequested());
    }

    void theEndOfAnOperationEndsItsStopRequest()
    {
        StopRequest stop;
        QSignalSpy changes(&stop, SIGNAL(changed()));
        stop.begin(true);
        QCOMPARE(stop.state(), State::Possible);
        QVERIFY(stop.request());
        QVERIFY(stop.request());
        QCOMPARE(stop.state(), State::Requested);
        QVERIFY(stop.isRequested());
        QVERIFY(!stop.wasRequested());
        stop.end();
        QCOMPARE(stop.state(), State::Idle);
        QVERIFY(!stop.isRequested());
        QVERIFY(stop.wasRequested());
        stop.begin(true);
        QVERIFY(!stop.isRequested());
        QCOMPARE(stop.state(), State::Possible);
        QCOMPARE(changes.count(), 4);
        stop.end();
        QVERIFY(!stop.wasRequested());
    }

    void aStopRequestIsAcceptedEvenIfTheCurrentStepCannotBeStopped()
    {
        StopRequest stop;
        stop.begin(false);
        QCOMPARE(stop.state(), State::Useless);
        stop.setStoppable(true);
        QCOMPARE(stop.state(), State::Possible);
        stop.setStoppable(false);
        QCOMPARE(stop.state(), State::Useless);
        QVERIFY(stop.request());
        QCOMPARE(stop.state(), State::Requested);
    }

    void aStopIsPossibleWhileAnOperationWaits()
    {
        StopRequest stop;
        stop.begin(false);
        stop.setWaiting(true);
        QCOMPARE(stop.state(), State::Possible);
        stop.setWaiting(false);
        QCOMPARE(stop.state(), State::Useless);
    }

    void noStopRequestIsAcceptedIfTheOperationRefusesStopRequests()
    {
        StopRequest stop;
        stop.begin(true);
        QVERIFY(stop.refuse());
        QCOMPARE(stop.state(), State::Refused);
        QVERIFY(!stop.request());
        QVERIFY(!stop.isRequested());
        stop.setWaiting(true);
        QCOMPARE(stop.state(), State::Refused);
    }

    void refusingStopRequestsFailsIfOneWasAlreadyMade()
    {
        StopRequest stop;
        stop.begin(true);
        QVERIFY(stop.request());
        QVERIFY(!stop.refuse());
        QCOMPARE(stop.state(), State::Requested);
    }
};

QTEST_MAIN(StopRequestTest)
#include "StopRequestTest.moc"

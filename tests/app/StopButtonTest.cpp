// SPDX-License-Identifier: GPL-2.0-or-later

#include <QVBoxLayout>
#include <QtTest>

#include "app/StopButton.h"

using State = StopRequest::State;

class StopButtonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTextAndTheToolTipShowWhetherAStopIsPossible_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("idle") << int(State::Idle) << "Stop"
                              << "No operation is running now" << false;
        QTest::newRow("possible") << int(State::Possible) << "&Stop"
                                  << "Stops the current operation (Esc)" << true;
        QTest::newRow("useless") << int(State::Useless) << "Stop"
                                 << "The current step cannot be stopped" << false;
        QTest::newRow("requested") << int(State::Requested) << "Stopping..."
                                   << "as soon as the current step allows it" << false;
        QTest::newRow("refused") << int(State::Refused) << "Stop"
                                 << "After a stop, the system would have only some of these changes" << false;
    }

    void theTextAndTheToolTipShowWhetherAStopIsPossible()
    {
        QFETCH(int, state);
        QFETCH(QString, text);
        QFETCH(QString, reason);
        QFETCH(bool, enabled);
        StopButton button(nullptr);
        const QSize size = button.sizeHint();
        button.showState(static_cast<State>(state));
        QCOMPARE(button.text(), text);
        QVERIFY2(button.toolTip().contains(reason), qPrintable(button.toolTip()));
        QVERIFY2(button.accessibleDescription().contains(reason), qPrintable(button.accessibleDescription()));
        QCOMPARE(button.isEnabled(), enabled);
        QCOMPARE(button.sizeHint(), size);
    }

    void theToolTipShowsWhichPackagesAreListedAfterAStop()
    {
        using Result = StopButton::Result;
        StopButton button(nullptr);
        const auto tip = [&button] {
            button.showState(State::Possible);
            return button.accessibleDescription();
        };
        QVERIFY(tip().contains("VYRE then lists the installed packages, and the packages"));
        button.setResult(Result::SameTable);
        QVERIFY(tip().contains("VYRE keeps the listed packages and all marks, unless"));
        button.setResult(Result::Remains);
        QVERIFY(tip().contains("VYRE has deleted the metadata."));
        button.setResult(Result::SameTable);
        QVERIFY(!tip().contains("deleted"));
    }

    void escapePressesTheStopButtonIfTheButtonIsEnabled()
    {
        QWidget window;
        auto* button = new StopButton(&window);
        (new QVBoxLayout(&window))->addWidget(button);
        QSignalSpy clicks(button, SIGNAL(clicked()));
        window.show();
        QApplication::setActiveWindow(&window);
        QVERIFY(QTest::qWaitForWindowActive(&window));
        for (const State state : {State::Idle, State::Useless, State::Requested, State::Refused}) {
            button->showState(state);
            QTest::keyClick(window.windowHandle(), Qt::Key_Escape);
        }
        QCOMPARE(clicks.count(), 0);
        button->showState(State::Possible);
        QTest::keyClick(window.windowHandle(), Qt::Key_Escape);
        QCOMPARE(clicks.count(), 1);
        QTest::keyClick(window.windowHandle(), Qt::Key_S, Qt::AltModifier);
        QTRY_COMPARE(clicks.count(), 2);
    }
};

QTEST_MAIN(StopButtonTest)
#include "StopButtonTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include <QHBoxLayout>
#include <QPushButton>
#include <QtTest>

#include "app/OutcomeLine.h"
#include "widgets/ElidedLabel.h"
#include "yumio/TransactionOutcome.h"

// Tests of the line that shows the outcome of a transaction.
class OutcomeLineTest : public QObject
{
    Q_OBJECT

private:
    static TransactionOutcome outcome(int installed, const QStringList& scriptlets = {})
    {
        TransactionOutcome made;
        made.known = true;
        made.counts[TransactionOutcome::Installed] = installed;
        made.failedScriptlets = scriptlets;
        return made;
    }

private Q_SLOTS:
    void theLineIsVisibleUntilItIsCleared()
    {
        QWidget window;
        auto* line = new OutcomeLine(&window);
        (new QHBoxLayout(&window))->addWidget(line);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(!line->isVisible());
        line->showOutcome(outcome(18), 4);
        QVERIFY(line->isVisible());
        const auto* label = line->findChild<ElidedLabel*>();
        QCOMPARE(label->wholeText(), QString("18 installed"));
        QVERIFY(!label->autoFillBackground());
        line->showOutcome(outcome(2, {"limpgate"}), 4);
        QCOMPARE(label->wholeText(), QString("2 installed; the scriptlet of limpgate failed"));
        QVERIFY(label->autoFillBackground()); // the colour of a failure differs from the colour of a success
        line->clear();
        QVERIFY(!line->isVisible());
        line->showOutcome(outcome(1), 4);
        QVERIFY(!label->autoFillBackground());
    }

    void aTooLongTextIsShortenedAndShownCompletelyInTheToolTip()
    {
        QWidget window;
        auto* line = new OutcomeLine(&window);
        (new QHBoxLayout(&window))->addWidget(line);
        line->showOutcome(outcome(1, {QString(300, 'x')}), 0);
        window.resize(300, 40);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(window.width() < 1000);
        const auto* label = line->findChild<ElidedLabel*>();
        QVERIFY(label->text().size() < label->wholeText().size());
        QVERIFY(label->toolTip().contains("failed"));
        QCOMPARE(label->accessibleName(), label->wholeText());
        // The button is never shortened.
        const auto* button = line->findChild<QPushButton*>();
        QVERIFY(button->width() >= button->sizeHint().width());
    }

    void allPackagesWithFailedScriptletsAreInTheToolTipAndTheDescription()
    {
        QWidget window;
        auto* line = new OutcomeLine(&window);
        (new QHBoxLayout(&window))->addWidget(line);
        window.resize(1500, 40);
        window.show();
        const auto* label = line->findChild<ElidedLabel*>();
        line->showOutcome(outcome(3, {"<b>limpgate</b>", "brokenlatch", "loudhailer"}), 0);
        QTRY_COMPARE(label->text(), label->wholeText()); // the window has room for the whole text
        const QString whole = "3 installed; the scriptlets of <b>limpgate</b> and 2 more failed";
        QCOMPARE(label->accessibleName(), whole);
        QCOMPARE(label->accessibleDescription(), whole + "\nThe scriptlets of these packages failed:\n"
                                                         "    <b>limpgate</b>, brokenlatch, loudhailer");
        QVERIFY2(label->toolTip().contains("&lt;b&gt;limpgate&lt;/b&gt;, brokenlatch, loudhailer"),
                 qPrintable(label->toolTip()));
        // The next outcome has no failures.
        line->showOutcome(outcome(3), 0);
        QCOMPARE(label->toolTip(), QString());
        QCOMPARE(label->accessibleDescription(), QString());
    }

    void theButtonEmitsASignalWithTheLogEntryOfTheTransaction()
    {
        QWidget window;
        auto* line = new OutcomeLine(&window);
        (new QHBoxLayout(&window))->addWidget(line);
        QSignalSpy wanted(line, SIGNAL(logWanted(int)));
        line->showOutcome(outcome(1), 17);
        window.show();
        QApplication::setActiveWindow(&window);
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(window.windowHandle(), Qt::Key_L, Qt::AltModifier);
        // After Alt+L, the button looks pressed for a moment, and then emits its signal.
        QTRY_COMPARE(wanted.count(), 1);
        QCOMPARE(wanted.takeFirst().first().toInt(), 17);
        line->clear();
        QTest::keyClick(window.windowHandle(), Qt::Key_L, Qt::AltModifier);
        QTest::qWait(300);
        QCOMPARE(wanted.count(), 0);
    }
};

QTEST_MAIN(OutcomeLineTest)
#include "OutcomeLineTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include <QHBoxLayout>
#include <QtTest>

#include "app/Notice.h"

// Tests of the messages next to the menus.
class NoticeTest : public QObject
{
    Q_OBJECT

private:
    QWidget window;
    Notice* notice = nullptr;

    // The whole visible text; empty while the notice is hidden.
    QString text() const { return notice->isVisible() ? notice->wholeText() : QString(); }
    // Ends the display time of the visible text, and returns the text that is visible after that.
    QString textAfterwards()
    {
        return QMetaObject::invokeMethod(notice, "showNext") ? text() : QStringLiteral("(no such slot)");
    }

private Q_SLOTS:
    void init()
    {
        delete notice;
        delete window.layout();
        notice = new Notice(&window);
        (new QHBoxLayout(&window))->addWidget(notice);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(text(), QString());
    }

    void openingTheLogRemovesATextAboutTheLog()
    {
        Notice brief(&window, 1);
        brief.showTextAboutLog("errors");
        QTest::qWait(50);
        QVERIFY(brief.isVisible());
        // A second text replaces the notice about the log only for a while.
        brief.showText("stopped");
        QCOMPARE(brief.wholeText(), QString("stopped"));
        QTRY_COMPARE(brief.wholeText(), QString("errors"));
        QTest::qWait(50);
        QVERIFY(brief.isVisible());
        brief.logOpened();
        QVERIFY(!brief.isVisible());
    }

    void openingTheLogDoesNotRemoveTextsAboutOtherSubjects()
    {
        notice->showTextAboutLog("errors");
        notice->showText("other");
        notice->logOpened();
        QCOMPARE(text(), QString("other"));
        QCOMPARE(textAfterwards(), QString());
        notice->showText("other");
        notice->showTextAboutLog("errors");
        notice->showTextAboutLog("failures");
        notice->logOpened();
        QCOMPARE(text(), QString("other"));
    }

    void theStartOfAnOperationRemovesATextAboutTheLog()
    {
        notice->showTextAboutLog("errors");
        notice->beginOperation();
        QCOMPARE(text(), QString());
    }

    void aNoticeDisappearsAfterTheGivenTime()
    {
        Notice brief(&window, 1);
        brief.showText("a");
        QVERIFY(brief.isVisible());
        QTRY_VERIFY(!brief.isVisible());
    }

    void aReplacedTextIsShownAgainWhenTheNewTextDisappears()
    {
        notice->showText("a");
        notice->showText("b");
        notice->showText("c");
        QCOMPARE(text(), QString("c"));
        QCOMPARE(textAfterwards(), QString("b"));
        QCOMPARE(textAfterwards(), QString("a"));
        QCOMPARE(textAfterwards(), QString());
    }

    void aRepeatedTextIsStoredOnlyOnce()
    {
        notice->showText("a");
        notice->showText("b");
        notice->showText("a");
        QCOMPARE(text(), QString("a"));
        notice->showText("a");
        QCOMPARE(textAfterwards(), QString("b"));
        QCOMPARE(textAfterwards(), QString());
    }

    void aWithdrawnTextDisappearsAndIsNotShownAgain()
    {
        notice->showText("a");
        notice->showText("b");
        notice->showText("c");
        notice->withdraw("b");
        QCOMPARE(text(), QString("c"));
        notice->withdraw("c");
        QCOMPARE(text(), QString("a"));
        notice->withdraw("other");
        QCOMPARE(text(), QString("a"));
        notice->withdraw("a");
        QCOMPARE(text(), QString());
    }

    void aTooLongTextIsShortenedAndShownCompletelyInTheToolTip()
    {
        const QString longText = QString("a long text about the log ").repeated(20).trimmed();
        window.resize(400, 40);
        notice->showText(longText);
        QTRY_VERIFY(notice->text().endsWith(QChar(0x2026)));
        QVERIFY(longText.startsWith(notice->text().chopped(1)));
        QCOMPARE(text(), longText);
        QVERIFY(window.width() <= 400);
        QVERIFY2(notice->toolTip().contains(longText), qPrintable(notice->toolTip()));
        QCOMPARE(notice->accessibleName(), longText);
        notice->showText("short");
        QTRY_COMPARE(notice->text(), QString("short"));
        QCOMPARE(notice->toolTip(), QString());
        QCOMPARE(notice->accessibleName(), QString("short"));
        // The notice is only as wide as its text.
        QTRY_VERIFY(notice->width() < 200);
    }

    void theVisibleTextDisappearsWhenAnOperationBegins()
    {
        notice->beginOperation();
        QCOMPARE(text(), QString());
        notice->showText("There are errors");
        notice->showText("Stopped. Nothing was changed.");
        notice->beginOperation();
        QCOMPARE(text(), QString("There are errors")); // the user has not had time to read this text
        notice->showText("Stopped.");
        QCOMPARE(textAfterwards(), QString("There are errors"));
        notice->beginOperation();
        QCOMPARE(text(), QString());
    }
};

QTEST_MAIN(NoticeTest)
#include "NoticeTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include <QCheckBox>
#include <QDateTime>

#include "tests/services/ShownLog.h"
#include "widgets/Colors.h"

// Tests of the shown lines: which entries they show, and how they look.
class LogWindowLinesTest : public ShownLog
{
    Q_OBJECT

private Q_SLOTS:
    void entriesAboveTheDetailLevelAreNotShown();
    void theDetailLevelAlsoAppliesToErrors();
    void detailLevelsAreComparedAsUnsignedNumbers();
    void infoEntriesOfDetailLevelTenOrHigherHaveTheMinorColour();
    void eachKindOfEntryHasTheExpectedColour_data();
    void eachKindOfEntryHasTheExpectedColour();
    void theColoursAreReadableOnADarkBackground();
    void anActionEntryIsShownAsAHeading();
    void linesHaveNoSpaceBetweenThem();
    void markupIsShownAsPlainText();
    void blanksAndTabsInALineAreShownUnchanged();
    void markupCharactersExceptAmpersandsAreEscaped();
    void theTimesBoxShowsTheTimeOfEachEntry();
};

void LogWindowLinesTest::entriesAboveTheDetailLevelAreNotShown()
{
    log(Log::Info, 3, "detail");
    log(Log::Info, 2, "rough");
    open();
    QCOMPARE(lines(), QStringList({"rough"}));

    level->setFocus();
    QTest::keyClick(level, Qt::Key_Up);
    QCOMPARE(level->value(), 3);
    QCOMPARE(lines(), QStringList({"detail", "rough"}));

    QTest::keyClick(level, Qt::Key_Down);
    QCOMPARE(lines(), QStringList({"rough"}));
}

void LogWindowLinesTest::theDetailLevelAlsoAppliesToErrors()
{
    log(Log::Error, 2, "error");
    log(Log::Error, 3, "error in detail");
    log(Log::Info, 1, "report");
    log(Log::Error, 0, "another error");
    level->setValue(0);
    open();
    QCOMPARE(lines(), QStringList({"error", "another error"}));
    level->setValue(3);
    QCOMPARE(lines(), QStringList({"error", "error in detail", "report", "another error"}));
}

void LogWindowLinesTest::detailLevelsAreComparedAsUnsignedNumbers()
{
    log(Log::Info, 4294967295u, "far beyond");
    log(Log::Info, 0, "near");
    level->setValue(10);
    open();
    QCOMPARE(lines(), QStringList({"near"}));
}

void LogWindowLinesTest::infoEntriesOfDetailLevelTenOrHigherHaveTheMinorColour()
{
    log(Log::Info, 9, "nine");
    log(Log::Info, 10, "ten");
    open();
    QCOMPARE(lines(), QStringList());
    level->setValue(10);
    QCOMPARE(lines(), QStringList({"nine", "ten"}));
    QVERIFY(!colourOf(0).isValid());
    QCOMPARE(colourOf(1), QColor(Colors::minor()));
}

void LogWindowLinesTest::eachKindOfEntryHasTheExpectedColour_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("colour");
    QTest::newRow("info") << 0 << QString();
    QTest::newRow("ok") << 1 << Colors::ok();
    QTest::newRow("warning") << 2 << Colors::warning();
    QTest::newRow("error") << 3 << Colors::error();
    QTest::newRow("action") << 4 << Colors::action();
    QTest::newRow("unknown kind") << 17 << Colors::error();
}

void LogWindowLinesTest::eachKindOfEntryHasTheExpectedColour()
{
    QFETCH(int, kind);
    QFETCH(QString, colour);
    log(static_cast<Log::Kind>(kind), 0, "some text");
    open();
    QCOMPARE(lines(), QStringList({"some text"}));
    QCOMPARE(colourOf(0), colour.isEmpty() ? QColor() : QColor(colour));
}

void LogWindowLinesTest::theColoursAreReadableOnADarkBackground()
{
    log(Log::Action, 0, "some text");
    open();
    QCOMPARE(colourOf(0), QColor(Colors::action()));
    QPalette dark(QColor(53, 53, 53), QColor(42, 42, 42));
    dark.setColor(QPalette::Base, QColor(35, 35, 35));
    window->setPalette(dark);
    QCOMPARE(lines(), QStringList({"some text"}));
    QCOMPARE(colourOf(0), QColor(Colors::readable(Colors::action(), QColor(35, 35, 35))));
    QVERIFY(colourOf(0) != QColor(Colors::action()));
}

void LogWindowLinesTest::anActionEntryIsShownAsAHeading()
{
    log(Log::Action, 0, "Applying");
    log(Log::Info, 0, "text");
    log(Log::Action, 0, "Cleaning");
    open();
    QCOMPARE(lines(), QStringList({"Applying", "text", "Cleaning"}));
    const auto format = [this](int line) {
        return pane->document()->findBlockByNumber(line).begin().fragment().charFormat();
    };
    QCOMPARE(pane->document()->findBlockByNumber(0).blockFormat().headingLevel(), 2);
    for (int line : {0, 2}) {
        QCOMPARE(format(line).fontWeight(), static_cast<int>(QFont::Bold));
        QVERIFY(format(line).intProperty(QTextFormat::FontSizeAdjustment) > 0);
    }
    // The line below a heading does not have the heading's format.
    QVERIFY(format(1).fontWeight() != QFont::Bold);
    QCOMPARE(format(1).intProperty(QTextFormat::FontSizeAdjustment), 0);
    QVERIFY(!colourOf(1).isValid());
}

void LogWindowLinesTest::linesHaveNoSpaceBetweenThem()
{
    log(Log::Action, 0, "Applying");
    log(Log::OK, 0, "text");
    log(Log::Info, 0, "text");
    open();
    for (int i = 0; i < 3; ++i) {
        const QTextBlockFormat format = pane->document()->findBlockByNumber(i).blockFormat();
        QCOMPARE(format.topMargin(), 0.0);
        QCOMPARE(format.bottomMargin(), 0.0);
    }
}

void LogWindowLinesTest::markupIsShownAsPlainText()
{
    log(Log::Info, 0, "a <b>bold</b> <img src=\"x\"> </font> line");
    open();
    QCOMPARE(lines(), QStringList({"a <b>bold</b> <img src=\"x\"> </font> line"}));
}

void LogWindowLinesTest::blanksAndTabsInALineAreShownUnchanged()
{
    log(Log::Info, 0, "  two  blanks\tand\t\ttabs ");
    open();
    QCOMPARE(lines(), QStringList({"  two  blanks\tand\t\ttabs "}));
}

void LogWindowLinesTest::markupCharactersExceptAmpersandsAreEscaped()
{
    QString line("<a> &lt;\t& <");
    Log::Window::htmlProtect(line);
    QCOMPARE(line, QString("&lt;a&gt;&#x0020;&lt;&#x0009;&&#x0020;&lt;"));
}

void LogWindowLinesTest::theTimesBoxShowsTheTimeOfEachEntry()
{
    const QDateTime before = QDateTime::currentDateTime();
    log(Log::Info, 0, "first");
    log(Log::Action, 0, "Applying");
    open();
    QCOMPARE(lines(), (QStringList{"first", "Applying"}));
    auto* box = window->findChild<QCheckBox*>();
    QVERIFY(!box->isChecked());
    QCOMPARE(box->text(), QString("&Times"));
    box->click();
    const QStringList shown = lines();
    QCOMPARE(shown.size(), 2);
    for (const QString& line : shown) {
        const QTime time = QTime::fromString(line.left(8), "HH:mm:ss");
        QVERIFY2(time.isValid(), qPrintable(line));
        const int late = before.time().secsTo(time);
        QVERIFY2(late >= -1 && late < 600, qPrintable(line));
    }
    QCOMPARE(shown.first().mid(8), QString("  first"));
    QCOMPARE(shown.last().mid(8), QString("  Applying"));
    log(Log::Error, 0, "third");
    QTRY_COMPARE(lines().size(), 3);
    QCOMPARE(lines().last().mid(8), QString("  third"));
    box->click();
    QCOMPARE(lines(), (QStringList{"first", "Applying", "third"}));
}

QTEST_MAIN(LogWindowLinesTest)
#include "LogWindowLinesTest.moc"

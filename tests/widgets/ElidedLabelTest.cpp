// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/ElidedLabel.h"

#include <QHBoxLayout>
#include <QTextDocument>
#include <QtTest>

// Tests of a label that shortens too long texts.
class ElidedLabelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTextThatFitsIsShownWithoutAToolTip();
    void aTooLongTextIsShortenedAndShownCompletelyInTheToolTip();
    void theShownTextDependsOnTheWidthOfTheLabel();
    void aLongTextDoesNotWidenTheWindow();
    void markupInTheTextIsShownAsPlainText();
    void theToolTipShowsTheDetailsEvenIfTheWholeTextIsVisible();
};

namespace {

const QString longText = QStringLiteral("a text of many words that does not fit into a narrow label");

} // namespace

void ElidedLabelTest::aTextThatFitsIsShownWithoutAToolTip()
{
    ElidedLabel label;
    label.showText("short");
    label.resize(label.sizeHint());
    QCOMPARE(label.text(), QString("short"));
    QCOMPARE(label.wholeText(), QString("short"));
    QCOMPARE(label.accessibleName(), QString("short"));
    QCOMPARE(label.toolTip(), QString());
}

void ElidedLabelTest::aTooLongTextIsShortenedAndShownCompletelyInTheToolTip()
{
    ElidedLabel label;
    label.resize(100, 20);
    label.showText(longText);
    QVERIFY(label.text().startsWith("a text"));
    QVERIFY(label.text().size() < longText.size());
    QVERIFY(label.toolTip().contains(longText));
    QCOMPARE(label.wholeText(), longText);
    QCOMPARE(label.accessibleName(), longText);
}

void ElidedLabelTest::theShownTextDependsOnTheWidthOfTheLabel()
{
    QWidget window;
    auto* layout = new QHBoxLayout(&window);
    auto* label = new ElidedLabel;
    layout->addWidget(label);
    label->showText(longText);
    window.resize(120, 40);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(label->text() != longText);
    window.resize(label->sizeHint().width() + 60, 40);
    QTRY_COMPARE(label->text(), longText);
    QCOMPARE(label->toolTip(), QString());
}

void ElidedLabelTest::aLongTextDoesNotWidenTheWindow()
{
    ElidedLabel label;
    const QSize before = label.minimumSizeHint();
    label.showText(longText);
    QVERIFY(label.minimumSizeHint().width() < label.sizeHint().width() / 3);
    QCOMPARE(label.minimumSizeHint().height(), before.height());
}

void ElidedLabelTest::markupInTheTextIsShownAsPlainText()
{
    ElidedLabel label;
    label.resize(40, 20);
    label.showText("<b>a bold text that is too long</b>");
    QCOMPARE(label.textFormat(), Qt::PlainText);
    QVERIFY(!label.toolTip().contains("<b>"));
}

void ElidedLabelTest::theToolTipShowsTheDetailsEvenIfTheWholeTextIsVisible()
{
    ElidedLabel label;
    label.resize(1000, 20);
    label.showText("short");
    QCOMPARE(label.toolTip(), QString());
    label.showText("short", "short\n<b>details</b>");
    QCOMPARE(label.text(), QString("short"));
    QCOMPARE(label.toolTip(), QString("short\n<b>details</b>")); // Qt shows this text as plain text
    QVERIFY(!Qt::mightBeRichText(label.toolTip()));
    QCOMPARE(label.accessibleName(), QString("short"));
    QCOMPARE(label.accessibleDescription(), QString("short\n<b>details</b>"));
    label.showText("short", "<b>short</b>\ndetails");
    QVERIFY2(label.toolTip().contains("&lt;b&gt;short"), qPrintable(label.toolTip()));
    label.showText("short");
    QCOMPARE(label.toolTip(), QString());
    QCOMPARE(label.accessibleDescription(), QString());
}

QTEST_MAIN(ElidedLabelTest)
#include "ElidedLabelTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/ElidedLabel.h"

#include <QHBoxLayout>
#include <QtTest>

// Tests of a label that shortens a text that is too long for it.
class ElidedLabelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTextThatFitsIsShownWithoutAToolTip();
    void aTextThatIsTooLongIsShortenedAndShownInTheToolTip();
    void theShownTextDependsOnTheWidthOfTheLabel();
    void aLongTextDoesNotWidenTheWindow();
    void markupInTheTextIsShownAsPlainText();
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

void ElidedLabelTest::aTextThatIsTooLongIsShortenedAndShownInTheToolTip()
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

QTEST_MAIN(ElidedLabelTest)
#include "ElidedLabelTest.moc"

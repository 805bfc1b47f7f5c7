// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HSeparator.h"

#include <QtTest>
#include <QtWidgets>

class HSeparatorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSeparatorIsASunkenLineAcrossItsParent();
};

void HSeparatorTest::theSeparatorIsASunkenLineAcrossItsParent()
{
    QWidget window;
    QVBoxLayout* column = new QVBoxLayout(&window);
    column->setContentsMargins(0, 0, 0, 0);
    HSeparator* separator = new HSeparator(&window);
    column->addWidget(separator);
    window.resize(200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(separator->frameShape(), QFrame::HLine);
    QCOMPARE(separator->frameShadow(), QFrame::Sunken);
    QCOMPARE(separator->width(), window.width());
    QVERIFY(separator->sizeHint().height() < 10);
}

QTEST_MAIN(HSeparatorTest)
#include "HSeparatorTest.moc"

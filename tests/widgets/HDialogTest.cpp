// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HDialog.h"

#include <QtTest>
#include <QtWidgets>

class HDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theReturnAndEnterKeysDoNotPressTheDefaultButton_data();
    void theReturnAndEnterKeysDoNotPressTheDefaultButton();
    void theDialogIgnoresTheKeyEventsOfReturnAndEnter_data();
    void theDialogIgnoresTheKeyEventsOfReturnAndEnter();
    void anInputFieldInTheDialogReceivesTheReturnKey();
    void theEscapeKeyCancelsTheDialog();
};

void HDialogTest::theReturnAndEnterKeysDoNotPressTheDefaultButton_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Return") << Qt::Key_Return;
    QTest::newRow("Enter") << Qt::Key_Enter;
}

void HDialogTest::theReturnAndEnterKeysDoNotPressTheDefaultButton()
{
    QFETCH(Qt::Key, key);
    // In a QDialog with the same widgets, the key presses the default button.
    HDialog dialog;
    QDialog plain;
    const QVector<QPair<QDialog*, int>> expected = {{&dialog, 0}, {&plain, 1}};
    for (const auto& pair : expected) {
        QVBoxLayout* column = new QVBoxLayout(pair.first);
        QLineEdit* edit = new QLineEdit;
        QPushButton* button = new QPushButton(QStringLiteral("OK"));
        column->addWidget(edit);
        column->addWidget(button);
        button->setDefault(true);
        QSignalSpy clicks(button, &QPushButton::clicked);
        pair.first->show();
        QVERIFY(QTest::qWaitForWindowActive(pair.first));
        edit->setFocus();
        QTest::keyClick(edit, key);
        QTest::qWait(0);
        QCOMPARE(clicks.count(), pair.second);
        pair.first->hide();
    }
}

void HDialogTest::theDialogIgnoresTheKeyEventsOfReturnAndEnter_data()
{
    theReturnAndEnterKeysDoNotPressTheDefaultButton_data();
}

void HDialogTest::theDialogIgnoresTheKeyEventsOfReturnAndEnter()
{
    QFETCH(Qt::Key, key);
    HDialog dialog;
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    event.accept();
    QApplication::sendEvent(&dialog, &event);
    QVERIFY(!event.isAccepted());
}

void HDialogTest::anInputFieldInTheDialogReceivesTheReturnKey()
{
    HDialog dialog;
    QVBoxLayout* column = new QVBoxLayout(&dialog);
    QLineEdit* edit = new QLineEdit;
    column->addWidget(edit);
    QSignalSpy returns(edit, &QLineEdit::returnPressed);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClick(edit, Qt::Key_Return);
    QCOMPARE(returns.count(), 1);
    QVERIFY(dialog.isVisible());
}

void HDialogTest::theEscapeKeyCancelsTheDialog()
{
    HDialog dialog;
    QSignalSpy rejections(&dialog, &QDialog::rejected);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QCOMPARE(rejections.count(), 1);
    QVERIFY(!dialog.isVisible());
}

QTEST_MAIN(HDialogTest)
#include "HDialogTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/YumIODialogs.h"

#include <functional>
#include <memory>

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTest>
#include <QTextEdit>
#include <QThread>
#include <QTimer>

#include "services/ScrollableDialogs.h"
#include "tests/support/Buttons.h"
#include "tests/support/Question.h"
#include "widgets/Metrics.h"

namespace {

// A worker that asks one question and then ends.
class Asker : public QThread
{
public:
    Asker(QWidget* dialogParent, std::function<int(YumIODialogs&)> request)
        : parent(dialogParent), ask(std::move(request))
    {
    }
    ~Asker() override { wait(); }

    int answer = -1000;

protected:
    void run() override
    {
        YumIODialogs dialogs(parent);
        answer = ask(dialogs);
    }

private:
    QWidget* parent;
    std::function<int(YumIODialogs&)> ask;
};

QDialog* openDialog()
{
    QDialog* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    return dialog != nullptr && dialog->isVisible() && dialog->isActiveWindow() && takesInput(dialog)
               ? dialog
               : nullptr;
}

// The visible properties of a message box.
QStringList describe(const QMessageBox* box)
{
    QStringList description{
        box->windowTitle(),
        box->text(),
        QString::number(box->icon()),
        QString::number(box->isModal()),
        box->defaultButton() != nullptr ? box->defaultButton()->text() : QString("no default"),
        box->escapeButton() != nullptr ? box->escapeButton()->text() : QString("no escape")};
    for (const QAbstractButton* each : box->buttons()) {
        description.append(each->text());
        description.append(QString::number(box->buttonRole(const_cast<QAbstractButton*>(each))));
    }
    return description;
}

} // namespace

class YumIODialogsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void aConfirmationReturnsTheAnswerOfThePressedButton_data();
    void aConfirmationReturnsTheAnswerOfThePressedButton();
    void theReturnKeyGivesTheDefaultAnswerOfAConfirmation_data();
    void theReturnKeyGivesTheDefaultAnswerOfAConfirmation();
    void closingTheWindowOfAConfirmationRejectsTheConfirmation();
    void aMessageBoxReturnsTheNumberOfThePressedButton_data();
    void aMessageBoxReturnsTheNumberOfThePressedButton();
    void enterPressesTheDefaultButton();
    void escapePressesTheEscapeButton();
    void escapeDoesNothingIfThereIsNoEscapeButton();
    void quittingTheProgramGivesTheAnswerOfTheEscapeButton_data();
    void quittingTheProgramGivesTheAnswerOfTheEscapeButton();
    void aBoxWithoutButtonTextsHasAnOkButton();
    void theBoxLooksAndAnswersLikeAStandardQMessageBox_data();
    void theBoxLooksAndAnswersLikeAStandardQMessageBox();
    void messageTextsAreShownAsPlainText();
    void aWarningThatIsHigherThanTheScreenScrollsAndTakesTheKeysOfAMessage();
    void theScrollableDialogIsOpenUntilTheUserPressesClose();
    void aQuestionOfTheGraphicalThreadIsAnsweredWithoutASecondEventLoop();
    void aWarningWithADefaultButtonIgnoresKeysAtFirst();
    void oneYumIODialogsObjectServesSeveralRequests();
    void theMainWindowRespondsWhileAWorkerWaitsForADialog();
    void deletingANestedUserObjectRestoresThePointerToTheOuterDialogs();

private:
    // Runs the request on a worker, lets act() handle the dialog, and returns the answer.
    int run(std::function<int(YumIODialogs&)> request, std::function<void(QDialog*)> act);

    std::unique_ptr<QWidget> mainWindow;
};

void YumIODialogsTest::initTestCase()
{
    QuestionGuard::pause = 1;
}

void YumIODialogsTest::init()
{
    mainWindow = std::make_unique<QWidget>();
    mainWindow->resize(500, 300);
    mainWindow->show();
    QVERIFY(QTest::qWaitForWindowActive(mainWindow.get(), 30000));
}

void YumIODialogsTest::cleanup()
{
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    mainWindow.reset();
}

int YumIODialogsTest::run(std::function<int(YumIODialogs&)> request, std::function<void(QDialog*)> act)
{
    Asker asker(mainWindow.get(), std::move(request));
    // The graphical thread waits in its own event loop, as in every operation.
    QEventLoop loop;
    connect(&asker, SIGNAL(finished()), &loop, SLOT(quit()));
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        QDialog* dialog = openDialog();
        if (dialog != nullptr) {
            timer.stop();
            act(dialog);
        }
    });
    timer.start(10);
    asker.start();
    loop.exec();
    return asker.answer;
}

void YumIODialogsTest::aConfirmationReturnsTheAnswerOfThePressedButton_data()
{
    QTest::addColumn<QString>("press");
    QTest::addColumn<int>("answer");
    QTest::newRow("accept") << "Go on" << 1;
    QTest::newRow("reject") << "Stop" << 0;
}

void YumIODialogsTest::aConfirmationReturnsTheAnswerOfThePressedButton()
{
    QFETCH(QString, press);
    QFETCH(int, answer);
    QString title;
    QString text;
    const int result = run(
        [](YumIODialogs& dialogs) {
            return dialogs.confirm("Confirm", "Install <3> packages", "Go on", "Stop");
        },
        [&](QDialog* dialog) {
            title = dialog->windowTitle();
            for (const QLabel* label : dialog->findChildren<QLabel*>()) {
                text += label->text();
            }
            QTest::mouseClick(buttonOf(dialog, press), Qt::LeftButton);
        });
    QCOMPARE(result, answer);
    QCOMPARE(title, QString("Confirm"));
    QCOMPARE(text, QString("Install <3> packages"));
}

void YumIODialogsTest::theReturnKeyGivesTheDefaultAnswerOfAConfirmation_data()
{
    QTest::addColumn<bool>("rejectIsDefault");
    QTest::newRow("reject") << true;
    QTest::newRow("accept") << false;
}

void YumIODialogsTest::theReturnKeyGivesTheDefaultAnswerOfAConfirmation()
{
    QFETCH(bool, rejectIsDefault);
    const int result = run(
        [&](YumIODialogs& dialogs) {
            return dialogs.confirm("Confirm", "Install", "Yes", "No", rejectIsDefault);
        },
        [](QDialog* dialog) { QTest::keyClick(dialog, Qt::Key_Return); });
    QCOMPARE(result, rejectIsDefault ? 0 : 1);
}

void YumIODialogsTest::closingTheWindowOfAConfirmationRejectsTheConfirmation()
{
    const int result =
        run([](YumIODialogs& dialogs) { return dialogs.confirm("Confirm", "Install", "Yes", "No"); },
            [](QDialog* dialog) { dialog->close(); });
    QCOMPARE(result, 0);
}

void YumIODialogsTest::aMessageBoxReturnsTheNumberOfThePressedButton_data()
{
    QTest::addColumn<bool>("critical");
    QTest::addColumn<QString>("press");
    QTest::addColumn<int>("answer");
    QTest::newRow("warning, button 0") << false << "Zero" << 0;
    QTest::newRow("warning, button 1") << false << "One" << 1;
    QTest::newRow("warning, button 2") << false << "Two" << 2;
    QTest::newRow("critical, button 0") << true << "Zero" << 0;
    QTest::newRow("critical, button 1") << true << "One" << 1;
    QTest::newRow("critical, button 2") << true << "Two" << 2;
}

void YumIODialogsTest::aMessageBoxReturnsTheNumberOfThePressedButton()
{
    QFETCH(bool, critical);
    QFETCH(QString, press);
    QFETCH(int, answer);
    QStringList seen;
    const int result = run(
        [critical](YumIODialogs& dialogs) {
            return critical ? dialogs.critical("Caption", "Text", "Zero", "One", "Two", 0, -1)
                            : dialogs.warning("Caption", "Text", "Zero", "One", "Two", 0, -1);
        },
        [&](QDialog* dialog) {
            QMessageBox* box = qobject_cast<QMessageBox*>(dialog);
            seen = QStringList{box->windowTitle(), box->text(), QString::number(box->icon())};
            QTest::mouseClick(buttonOf(dialog, press), Qt::LeftButton);
        });
    QCOMPARE(result, answer);
    const int icon = critical ? QMessageBox::Critical : QMessageBox::Warning;
    QCOMPARE(seen, (QStringList{"Caption", "Text", QString::number(icon)}));
}

void YumIODialogsTest::enterPressesTheDefaultButton()
{
    const int result = run(
        [](YumIODialogs& dialogs) { return dialogs.warning("Caption", "Text", "Zero", "One", "Two", 1, 2); },
        [](QDialog* dialog) { QTest::keyClick(dialog->windowHandle(), Qt::Key_Return); });
    QCOMPARE(result, 1);
}

void YumIODialogsTest::escapePressesTheEscapeButton()
{
    const int result = run(
        [](YumIODialogs& dialogs) { return dialogs.critical("Caption", "Text", "Zero", "One", "Two", 0, 2); },
        [](QDialog* dialog) { QTest::keyClick(dialog->windowHandle(), Qt::Key_Escape); });
    QCOMPARE(result, 2);
}

void YumIODialogsTest::escapeDoesNothingIfThereIsNoEscapeButton()
{
    bool stillOpen = false;
    const int result = run(
        [](YumIODialogs& dialogs) { return dialogs.warning("Caption", "Text", "Zero", "One", "", 0, -1); },
        [&](QDialog* dialog) {
            QTest::keyClick(dialog->windowHandle(), Qt::Key_Escape);
            stillOpen = dialog->isVisible();
            if (stillOpen) {
                QTest::mouseClick(buttonOf(dialog, "One"), Qt::LeftButton);
            }
        });
    QVERIFY(stillOpen);
    QCOMPARE(result, 1);
}

void YumIODialogsTest::quittingTheProgramGivesTheAnswerOfTheEscapeButton_data()
{
    QTest::addColumn<bool>("shown");
    QTest::newRow("while the box is shown") << true;
    QTest::newRow("before the box is shown") << false;
}

void YumIODialogsTest::quittingTheProgramGivesTheAnswerOfTheEscapeButton()
{
    QFETCH(bool, shown);
    int answer = -1000;
    QTimer::singleShot(0, qApp, [&] {
        Asker asker(mainWindow.get(), [](YumIODialogs& dialogs) {
            return dialogs.critical("Caption", "Text", "Yes", "No", "", 1, 1);
        });
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (openDialog() != nullptr) {
                qApp->quit();
            }
        });
        timer.start(10);
        if (!shown) {
            qApp->quit();
        }
        asker.start();
        while (!asker.wait(5)) {
            QCoreApplication::processEvents();
        }
        answer = asker.answer;
        qApp->quit();
    });
    qApp->exec();
    QCOMPARE(answer, 1);
}

void YumIODialogsTest::aBoxWithoutButtonTextsHasAnOkButton()
{
    QStringList buttons;
    const auto request = [](YumIODialogs& dialogs) {
        return dialogs.critical("Caption", "Text", "", "", "", 0, -1);
    };
    int result = run(request, [&](QDialog* dialog) {
        for (const QAbstractButton* each : qobject_cast<QMessageBox*>(dialog)->buttons()) {
            buttons.append(each->text());
        }
        QTest::mouseClick(dialog->findChild<QPushButton*>(), Qt::LeftButton);
    });
    QCOMPARE(result, 0);
    QCOMPARE(buttons, QStringList({"OK"}));

    // Escape and the window's close button have the same effect as the only button.
    result = run(request, [](QDialog* dialog) { QTest::keyClick(dialog->windowHandle(), Qt::Key_Escape); });
    QCOMPARE(result, 0);
    result = run(request, [](QDialog* dialog) { dialog->close(); });
    QCOMPARE(result, 0);
}

void YumIODialogsTest::theBoxLooksAndAnswersLikeAStandardQMessageBox_data()
{
    QTest::addColumn<bool>("critical");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<int>("defaultButton");
    QTest::addColumn<int>("escapeButton");
    for (const bool critical : {false, true}) {
        const QByteArray icon = critical ? "critical, " : "warning, ";
        QTest::newRow(icon + "no button texts") << critical << QStringList{"", "", ""} << 0 << -1;
        QTest::newRow(icon + "one button") << critical << QStringList{"&Quit", "", ""} << 0 << -1;
        QTest::newRow(icon + "two buttons") << critical << QStringList{"&Yes", "&No", ""} << 1 << 1;
        QTest::newRow(icon + "three buttons") << critical << QStringList{"A", "B", "C"} << 2 << 0;
        QTest::newRow(icon + "first button missing") << critical << QStringList{"", "B", "C"} << 1 << 0;
        QTest::newRow(icon + "second button missing") << critical << QStringList{"A", "", "C"} << 1 << -1;
        QTest::newRow(icon + "button numbers out of range")
            << critical << QStringList{"A", "B", ""} << 7 << 9;
    }
}

void YumIODialogsTest::theBoxLooksAndAnswersLikeAStandardQMessageBox()
{
    QFETCH(bool, critical);
    QFETCH(QStringList, texts);
    QFETCH(int, defaultButton);
    QFETCH(int, escapeButton);

    // Presses the last button. If an earlier button is missing, the last button's number differs from its
    // position.
    QStringList description;
    const auto act = [&description](QDialog* dialog) {
        QMessageBox* box = qobject_cast<QMessageBox*>(dialog);
        description = describe(box);
        QTest::mouseClick(box->buttons().constLast(), Qt::LeftButton);
    };
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        QDialog* dialog = openDialog();
        if (dialog != nullptr) {
            timer.stop();
            act(dialog);
        }
    });
    timer.start(10);
    const auto standard =
        critical ? static_cast<int (*)(QWidget*, const QString&, const QString&, const QString&,
                                       const QString&, const QString&, int, int)>(&QMessageBox::critical)
                 : static_cast<int (*)(QWidget*, const QString&, const QString&, const QString&,
                                       const QString&, const QString&, int, int)>(&QMessageBox::warning);
    const int expected = standard(mainWindow.get(), "Caption", "A text.", texts.at(0), texts.at(1),
                                  texts.at(2), defaultButton, escapeButton);
    const QStringList expectedDescription = description;
    description.clear();

    const int result = run(
        [&](YumIODialogs& dialogs) {
            return critical ? dialogs.critical("Caption", "A text.", texts.at(0), texts.at(1), texts.at(2),
                                               defaultButton, escapeButton)
                            : dialogs.warning("Caption", "A text.", texts.at(0), texts.at(1), texts.at(2),
                                              defaultButton, escapeButton);
        },
        act);
    QCOMPARE(result, expected);
    QCOMPARE(description, expectedDescription);
}

void YumIODialogsTest::messageTextsAreShownAsPlainText()
{
    const QString text("<h1>Large</h1> <a href=\"http://example.com\">package</a>");
    Qt::TextFormat format = Qt::AutoText;
    QString shown;
    run([&](YumIODialogs& dialogs) { return dialogs.critical("Caption", text, "", "", "", 0, -1); },
        [&](QDialog* dialog) {
            const QLabel* label = dialog->findChild<QLabel*>("qt_msgbox_label");
            format = label->textFormat();
            shown = label->text();
            QTest::mouseClick(dialog->findChild<QPushButton*>(), Qt::LeftButton);
        });
    QCOMPARE(format, Qt::PlainText);
    QCOMPARE(shown, text);
}

void YumIODialogsTest::aWarningThatIsHigherThanTheScreenScrollsAndTakesTheKeysOfAMessage()
{
    const QString text = QString("<b>the scriptlet of a package has failed</b>\n").repeated(500) + "last";
    int height = 0;
    QString shown;
    bool buttonHasFocus = false;
    int scrolled = 0;
    int end = 0;
    const int result = run(
        [&](YumIODialogs& dialogs) { return dialogs.warning("Caption", text, "Zero", "One", "Two", 1, 2); },
        [&](QDialog* dialog) {
            height = dialog->height();
            const auto* edit = dialog->findChild<QTextEdit*>();
            if (edit != nullptr) {
                shown = edit->toPlainText();
                buttonHasFocus = buttonOf(dialog, "One")->hasFocus();
                QTest::keyClick(dialog->windowHandle(), Qt::Key_End);
                scrolled = edit->verticalScrollBar()->value();
                end = edit->verticalScrollBar()->maximum();
            }
            QTest::keyClick(dialog->windowHandle(), Qt::Key_Return);
        });
    QCOMPARE(result, 1);
    QCOMPARE(shown, text);
    QVERIFY(height <= Metrics::maxWindowSize().height());
    QVERIFY(buttonHasFocus);
    QVERIFY(scrolled > 0);
    QCOMPARE(scrolled, end);
}

void YumIODialogsTest::theScrollableDialogIsOpenUntilTheUserPressesClose()
{
    QString title;
    bool rightClass = false;
    const int result = run([](YumIODialogs& dialogs) { return dialogs.scrollable("Failure", "Traceback"); },
                           [&](QDialog* dialog) {
                               title = dialog->windowTitle();
                               rightClass = qobject_cast<ScrollableErrorDialog*>(dialog) != nullptr;
                               QTest::mouseClick(buttonOf(dialog, "Close"), Qt::LeftButton);
                           });
    QCOMPARE(result, 0);
    QCOMPARE(title, QString("Failure"));
    QVERIFY(rightClass);
}

void YumIODialogsTest::aQuestionOfTheGraphicalThreadIsAnsweredWithoutASecondEventLoop()
{
    YumIODialogs dialogs(mainWindow.get());
    // Becomes true when an event is processed after the user has answered the dialog. A second event loop
    // would process this event.
    bool eventsProcessed = false;
    connect(&dialogs, &YumIODialogs::confirmSig, this,
            [&] { QTimer::singleShot(0, this, [&] { eventsProcessed = true; }); });
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        QDialog* dialog = openDialog();
        if (dialog != nullptr) {
            timer.stop();
            QTest::mouseClick(buttonOf(dialog, "Yes"), Qt::LeftButton);
        }
    });
    timer.start(10);
    QCOMPARE(dialogs.confirm("Confirm", "Install", "Yes", "No"), 1);
    QVERIFY(!eventsProcessed);
    QTRY_VERIFY(eventsProcessed);
}

void YumIODialogsTest::aWarningWithADefaultButtonIgnoresKeysAtFirst()
{
    const QScopedValueRollback<int> pause(QuestionGuard::pause, 300);
    bool pressed = false;
    QTimer early;
    connect(&early, &QTimer::timeout, this, [&early, &pressed] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (dialog != nullptr && dialog->isVisible() && !takesInput(dialog)) {
            early.stop();
            pressed = true;
            QTest::keyClick(dialog, Qt::Key_Return);
        }
    });
    early.start(1);
    const int result = run(
        [](YumIODialogs& dialogs) {
            return dialogs.warning("Repositories", "Go on?", "Yes", "No", QString(), 0, 1);
        },
        [](QDialog* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    QVERIFY(pressed);
    QCOMPARE(result, 1);
}

void YumIODialogsTest::oneYumIODialogsObjectServesSeveralRequests()
{
    QList<int> answers;
    Asker asker(mainWindow.get(), [&answers](YumIODialogs& dialogs) {
        answers.append(dialogs.confirm("1", "Install", "Yes", "No"));
        answers.append(dialogs.warning("2", "Text", "A", "B", "C", 0, -1));
        answers.append(dialogs.confirm("3", "Install", "Yes", "No"));
        return 0;
    });
    QEventLoop loop;
    connect(&asker, SIGNAL(finished()), &loop, SLOT(quit()));
    const QHash<QString, QString> press{{"1", "Yes"}, {"2", "C"}, {"3", "No"}};
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        QDialog* dialog = openDialog();
        if (dialog != nullptr) {
            QTest::mouseClick(buttonOf(dialog, press.value(dialog->windowTitle())), Qt::LeftButton);
        }
    });
    timer.start(10);
    asker.start();
    loop.exec();
    QCOMPARE(answers, (QList<int>{1, 2, 0}));
}

void YumIODialogsTest::theMainWindowRespondsWhileAWorkerWaitsForADialog()
{
    QWidget* parent = nullptr;
    int ticks = 0;
    QTimer ticker;
    connect(&ticker, &QTimer::timeout, this, [&] { ++ticks; });
    bool modal = false;
    run([](YumIODialogs& dialogs) { return dialogs.confirm("Confirm", "Install", "Yes", "No"); },
        [&](QDialog* dialog) {
            parent = dialog->parentWidget();
            modal = dialog->isModal();
            // Answers the dialog only after the graphical thread has processed other events.
            connect(&ticker, &QTimer::timeout, dialog, [&ticks, dialog] {
                if (ticks >= 5) {
                    QTest::mouseClick(buttonOf(dialog, "Yes"), Qt::LeftButton);
                }
            });
            ticker.start(5);
        });
    QCOMPARE(parent, mainWindow.get());
    QVERIFY(modal);
    QVERIFY(ticks >= 5);
}

void YumIODialogsTest::deletingANestedUserObjectRestoresThePointerToTheOuterDialogs()
{
    YumIODialogs base(mainWindow.get());
    YumIODialogs* slot = &base;
    {
        YumIODialogsUser outer(slot, mainWindow.get());
        YumIODialogs* const outerObject = slot;
        QVERIFY(outerObject != nullptr);
        QVERIFY(outerObject != &base);
        QPointer<YumIODialogs> innerObject;
        {
            YumIODialogsUser inner(slot, mainWindow.get());
            innerObject = slot;
            QVERIFY(slot != outerObject);
        }
        QVERIFY(innerObject.isNull());
        QCOMPARE(slot, outerObject);
    }
    QCOMPARE(slot, &base);

    YumIODialogs* empty = nullptr;
    {
        YumIODialogsUser user(empty, mainWindow.get());
        QVERIFY(empty != nullptr);
    }
    QVERIFY(empty == nullptr);
}

QTEST_MAIN(YumIODialogsTest)
#include "YumIODialogsTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include <unistd.h>

#include <QtTest>
#include <QtWidgets>

#include <functional>

#include "app/Manuals.h"
#include "app/Notice.h"
#include "app/OutcomeLine.h"
#include "app/base/Share.h"
#include "services/LogWindow.h"
#include "tests/app/EachAlone.h"
#include "tests/app/StandInWindow.h"
#include "tests/packagetable/Described.h"
#include "widgets/ElidedLabel.h"

using namespace PackageTable;

// Tests of the commands that open the descriptions, the log, the manuals and the About window, tests of the
// notices and the outcome line, and tests of quitting.
class MainWindowOtherWindowsTest : public StandInWindow
{
    Q_OBJECT

private:
    void compareManuals();
    QString noticeText() const;
    // Applies an update of "tool", for which the script reports this outcome.
    void applyWithOutcome(const QJsonObject& outcome);
    // The text of the outcome line next to the menus; empty while the line is hidden.
    QString outcomeText() const;

private Q_SLOTS:
    void theDescribeCommandDescribesTheCurrentPackage();
    void theDescribeCommandIsDisabledIfNoRowIsCurrent();
    void aNoticeIsShownIfAnOperationLogsErrors();
    void openingTheLogRemovesTheNoticeAboutErrors();
    void aNoticeIsShownIfRepositoriesAreLeftOut();
    void aNoticeSaysWhetherErrorsOccurredDuringATransaction();
    void theNoticeAboutMissingRightsComesBackAfterARefusedTransaction();
    void theNoticeAboutARestrictionOfRootComesBackAfterAFailedTransaction();
    void theOutcomeOfATransactionIsShownUntilTheNextOperation();
    void theButtonOfTheOutcomeLineOpensTheLogAtTheTransaction();
    void aClickShowsTheReasonWhyARowCannotBeMarked();
    void theHelpMenuOpensTheManualsInOtherPrograms();
    void manualsCanBeOpenedWhileAWorkerRuns();
    void aMissingManualCausesANoticeAndNoMessageBox();
    void theLogKeyOpensTheLogWindow();
    void theMenuEntryOpensTheLogWindow();
    void theAboutWindowShowsTheVersion();
    void aClickOnTheLinkInTheAboutWindowOpensTheBrowserOfTheUser();
    void theQuitKeyQuitsTheProgram();
    void theMenuEntryQuitsTheProgram();
    void closingTheMainWindowQuitsTheProgram();
};

void MainWindowOtherWindowsTest::theDescribeCommandDescribesTheCurrentPackage()
{
    shown->start();
    listEverything();
    QVERIFY(!shown->button("&Describe")->isEnabled());
    for (const char* name : {"shell", "Games"}) {
        shown->click(name, NameColumn);
        QVERIFY(shown->button("&Describe")->isEnabled());
        QString described;
        QVERIFY(withDialog<Describe::Dialog>(
            [this] { shown->press("&Describe"); },
            [&described](Describe::Dialog& dialog) { described = dialog.findChild<QLabel*>()->text(); }));
        QCOMPARE(described, QString(name));
    }
}

void MainWindowOtherWindowsTest::theDescribeCommandIsDisabledIfNoRowIsCurrent()
{
    shown->start();
    shown->click("tool", NameColumn);
    QVERIFY(shown->button("&Describe")->isEnabled());
    shown->filter("no such package");
    QVERIFY(!shown->button("&Describe")->isEnabled());
    shown->filter("");
    shown->click("tool", NameColumn);
    QVERIFY(shown->button("&Describe")->isEnabled());
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QVERIFY(!shown->button("&Describe")->isEnabled());
}

void MainWindowOtherWindowsTest::compareManuals()
{
    QCOMPARE(Manuals::directory, QString("/usr/share/doc/vyre"));
    const QTemporaryDir documentation;
    Manuals::directory = documentation.path();
    QVERIFY(QDir(documentation.path()).mkdir("html"));
    for (const char* name : {"/html/index.html", "/manual.pdf"}) {
        QVERIFY(QFile(documentation.path() + name).open(QIODevice::WriteOnly));
    }
    for (const char* name : {"webbrowser", "mimeviewer"}) {
        QFile program(Share::absolute(name));
        QVERIFY(program.open(QIODevice::WriteOnly));
        program.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.part\" && mv \"$0.part\" \"$0.called\"\n");
        program.close();
        QVERIFY(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    }
    const auto called = [](const char* name) {
        QFile file(Share::absolute(name) + ".called");
        return QTest::qWaitFor([&file] { return file.exists(); }) && file.open(QIODevice::ReadOnly)
                   ? file.readAll()
                   : QByteArray("(not started)");
    };
    shown->choose("&Help", "Manual (html)");
    QCOMPARE(called("webbrowser"), documentation.path().toUtf8() + "/html/index.html\n");
    QVERIFY(!QFile::exists(Share::absolute("mimeviewer.called")));
    shown->choose("&Help", "Manual (PDF)");
    QCOMPARE(called("mimeviewer"), "application/pdf\n" + documentation.path().toUtf8() + "/manual.pdf\n");
}

void MainWindowOtherWindowsTest::aMissingManualCausesANoticeAndNoMessageBox()
{
    shown->start();
    const QTemporaryDir documentation; // a directory without the manual
    Manuals::directory = documentation.path();
    for (const char* name : {"webbrowser", "mimeviewer"}) {
        QFile program(Share::absolute(name));
        QVERIFY(program.open(QIODevice::WriteOnly));
        program.write("#!/bin/sh\ntouch \"$0.called\"\n");
        program.close();
        QVERIFY(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    }
    const QPair<QString, QString> manuals[] = {{"Manual (PDF)", "/manual.pdf"},
                                               {"Manual (html)", "/html/index.html"}};
    for (const auto& manual : manuals) {
        shown->choose("&Help", manual.first);
        QCOMPARE(noticeText(),
                 "The manual is not installed: " + documentation.path() + manual.second + " is missing");
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        // The message about the second manual is longer than the first message, and must not be cut off.
        const auto* notice = shown->window->findChild<Notice*>();
        QTRY_VERIFY(notice->width() >= notice->sizeHint().width());
    }
    QTest::qWait(200); // in this time, a wrongly started program would create its file
    QVERIFY(!QFile::exists(Share::absolute("webbrowser.called")));
    QVERIFY(!QFile::exists(Share::absolute("mimeviewer.called")));
}

// The text of the notice next to the menus; empty while the notice is hidden.
QString MainWindowOtherWindowsTest::noticeText() const
{
    const auto* label = shown->window->findChild<Notice*>();
    return label != nullptr && label->isVisible() ? label->wholeText() : QString();
}

void MainWindowOtherWindowsTest::aNoticeIsShownIfAnOperationLogsErrors()
{
    shown->start();
    const auto notices = [this] {
        int count = 0;
        for (const Notice* label : shown->window->findChildren<Notice*>()) {
            count += label->isVisible() && label->wholeText() == "There are errors in the log (Ctrl+L)";
        }
        return count;
    };
    QCOMPARE(notices(), 0);
    standIn->setComplaining(true);
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(notices(), 1);
}

void MainWindowOtherWindowsTest::openingTheLogRemovesTheNoticeAboutErrors()
{
    shown->start();
    standIn->setComplaining(true);
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(noticeText(), QString("There are errors in the log (Ctrl+L)"));
    shown->key(Qt::Key_L, Qt::ControlModifier);
    QTRY_COMPARE(noticeText(), QString());
}

void MainWindowOtherWindowsTest::aNoticeIsShownIfRepositoriesAreLeftOut()
{
    standIn->setSkipped({"extras"});
    shown->start();
    QCOMPARE(noticeText(), QString("The repository extras is left out: see the log (Ctrl+L)"));
    // Other operations that read the packages again show the notice again.
    shown->choose("&Cache", "Clean dbcache");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(noticeText(), QString("The repository extras is left out: see the log (Ctrl+L)"));
    QVERIFY(
        QMetaObject::invokeMethod(shown->window, "reposChanged")); // the user has closed the editor with OK
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(noticeText(), QString("The repository extras is left out: see the log (Ctrl+L)"));
    // A transaction does not repeat the notice, because the outcome of the transaction needs the space.
    applyWithOutcome({{"updated", 1}});
    QCOMPARE(noticeText(), QString());
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(noticeText(), QString("The repository extras is left out: see the log (Ctrl+L)"));
    standIn->setSkipped({"extras", "base"});
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(noticeText(), QString("2 repositories are left out: see the log (Ctrl+L)"));
    standIn->setSkipped({QString(60, 'x')});
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(noticeText(),
             QString("The repository %1\u2026 is left out: see the log (Ctrl+L)").arg(QString(39, 'x')));
    standIn->setSkipped({});
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(noticeText(), QString());
}

void MainWindowOtherWindowsTest::aNoticeSaysWhetherErrorsOccurredDuringATransaction()
{
    shown->start();
    standIn->setComplaining(true); // from now on, each collection logs an error
    const auto applyAndRead = [this] {
        shown->click("tool", ActionColumn);
        const Answers answers("OK");
        shown->press("&Apply Actions");
        QTRY_VERIFY(shown->isReady());
    };
    applyAndRead();
    QTRY_COMPARE(noticeText(), QString("There are errors in the log (Ctrl+L)"));
    standIn->setBreaking(true);
    applyAndRead();
    QCOMPARE(noticeText(), QString("The transaction has reported errors: see the log (Ctrl+L)"));
    standIn->setBreaking(false);
    applyAndRead();
    QCOMPARE(noticeText(), QString("There are errors in the log (Ctrl+L)"));
}

void MainWindowOtherWindowsTest::theNoticeAboutMissingRightsComesBackAfterARefusedTransaction()
{
    const QString missingRights("VYRE cannot change packages, because it does not run as root");
    constexpr char nobody[] = "65534";
    shown->start();
    shown->click("tool", ActionColumn);
    QCOMPARE(QProcess::execute("chown", {"--recursive", nobody, QFile::decodeName(qgetenv("VYRESHARE"))}), 0);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(seteuid(QByteArray(nobody).toUInt()), 0);
        const Answers answers("OK");
        shown->press("&Apply Actions");
        const bool ready = QTest::qWaitFor([this] { return shown->isReady(); }, 20000);
        QCOMPARE(seteuid(0), 0);
        QVERIFY(ready);
        QCOMPARE(noticeText(), missingRights);
    }
    // A dialog has shown the only error of the transaction, so no other notice waits for this notice.
    QVERIFY(QMetaObject::invokeMethod(shown->window->findChild<Notice*>(), "showNext"));
    QCOMPARE(noticeText(), QString());
}

void MainWindowOtherWindowsTest::theNoticeAboutARestrictionOfRootComesBackAfterAFailedTransaction()
{
    const QString restriction("VYRE cannot change packages while the file system of /db is read-only");
    const QString logged("The transaction has reported errors: see the log (Ctrl+L)");
    standIn->setRestricted(true);
    shown->start();
    shown->click("tool", ActionColumn); // the failed transaction keeps this mark
    const auto apply = [this] {
        const Answers answers("OK");
        shown->press("&Apply Actions");
        QTRY_VERIFY(shown->isReady());
    };
    standIn->setFailing(true);
    apply();
    QCOMPARE(noticeText(), logged);
    shown->window->findChild<Notice*>()->logOpened();
    QCOMPARE(noticeText(), restriction);
    // If the transaction has changed the system, the restriction is not the reason for the errors.
    standIn->setFailing(false);
    standIn->setBreaking(true);
    apply();
    QCOMPARE(noticeText(), logged);
    shown->window->findChild<Notice*>()->logOpened();
    QCOMPARE(noticeText(), QString());
}

void MainWindowOtherWindowsTest::applyWithOutcome(const QJsonObject& outcome)
{
    standIn->setOutcome(outcome);
    shown->click("tool", PackageTable::ActionColumn);
    const Answers answers("OK");
    shown->press("&Apply Actions");
    QTRY_VERIFY(shown->isReady());
}

QString MainWindowOtherWindowsTest::outcomeText() const
{
    const auto* line = shown->window->findChild<OutcomeLine*>();
    return line->isVisible() ? line->findChild<ElidedLabel*>()->wholeText() : QString();
}

void MainWindowOtherWindowsTest::theOutcomeOfATransactionIsShownUntilTheNextOperation()
{
    shown->start();
    QCOMPARE(outcomeText(), QString());
    const QString text("1 updated; a restart is needed");
    const QJsonObject outcome{{"updated", 1}, {"restartNeeded", true}};
    const auto apply = [&] {
        applyWithOutcome(outcome);
        QCOMPARE(outcomeText(), text); // still shown after the packages are read
    };
    apply();
    // A filter or a search is not an operation, so the window still shows the outcome.
    shown->filter("too");
    shown->choose(shown->modeBox, PackageTable::Search);
    shown->filter(".*");
    QTRY_VERIFY(shown->isReady());
    shown->choose(shown->modeBox, PackageTable::Filter);
    QCOMPARE(outcomeText(), text);
    shown->press("Re&fresh");
    QCOMPARE(outcomeText(), QString());
    QTRY_VERIFY(shown->isReady());
    apply();
    shown->choose("&Cache", "Clean Packages");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(outcomeText(), QString());
    apply();
    shown->choose("&Cache", "Clean Metadata");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(outcomeText(), QString());
    apply();
    shown->window->reposChanged();
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(outcomeText(), QString());
    apply();
    // If the user cancels the next transaction, the window does not show the previous outcome any more.
    shown->click("tool", PackageTable::ActionColumn);
    const Answers answers("Cancel");
    shown->press("&Apply Actions");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(outcomeText(), QString());
}

void MainWindowOtherWindowsTest::theButtonOfTheOutcomeLineOpensTheLogAtTheTransaction()
{
    shown->start();
    applyWithOutcome({{"updated", 1}});
    for (int i = 0; i < 5; ++i) {
        shown->press("Re&fresh");
        QTRY_VERIFY(shown->isReady());
    }
    standIn->setBreaking(true);
    applyWithOutcome({{"failed", 1}, {"failedScriptlets", QJsonArray{"tool"}}});
    QCOMPARE(outcomeText(), QString("1 failed; the scriptlet of tool failed"));
    // The outcome line already reports the failure, so no notice is shown.
    QCOMPARE(noticeText(), QString());
    shown->window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(shown->window));
    shown->key(Qt::Key_L, Qt::AltModifier);
    QTRY_VERIFY(logIsVisible());
    const QTextCursor cursor = logWindow()->findChild<QTextEdit*>()->textCursor();
    QCOMPARE(cursor.block().text(), QString("Applying"));
    QStringList after;
    for (QTextBlock block = cursor.block().next(); block.isValid(); block = block.next()) {
        after << block.text();
    }
    QVERIFY(!after.contains("Applying")); // the log opened at the newest transaction
    QVERIFY(after.contains("Applying: OK"));
}

void MainWindowOtherWindowsTest::aClickShowsTheReasonWhyARowCannotBeMarked()
{
    shown->start();
    shown->choose(shown->stateBox, PackageTable::ViewAll);
    QString name;
    for (int row = 0; row < shown->model->rowCount() && name.isEmpty(); ++row) {
        Package::Entry* entry = shown->model->entry(row);
        if (entry->state == Package::Installed && entry->kind == Package::Ordinary &&
            entry->next == nullptr) {
            entry->excluded = true;
            name = entry->name;
        }
    }
    QVERIFY(!name.isEmpty());
    const QString reason =
        name + " cannot be marked: the configuration excludes it from updates and removals";
    const auto notices = [this, &reason] {
        int count = 0;
        for (const Notice* label : shown->window->findChildren<Notice*>()) {
            count += label->isVisible() && label->wholeText() == reason;
        }
        return count;
    };
    QCOMPARE(notices(), 0);
    shown->click(name, PackageTable::ActionColumn);
    QCOMPARE(notices(), 1);
    QVERIFY(!shown->button("&Apply Actions")->isEnabled());
    shown->choose("&Windows", "&Log");
    QVERIFY(logIsVisible());
    QVERIFY(logWindow()->findChild<QTextEdit*>()->toPlainText().contains(reason));
}

void MainWindowOtherWindowsTest::theHelpMenuOpensTheManualsInOtherPrograms()
{
    shown->start();
    compareManuals();
}

void MainWindowOtherWindowsTest::manualsCanBeOpenedWhileAWorkerRuns()
{
    shown->start();
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); }, [this] { compareManuals(); }));
    QTRY_VERIFY(shown->isReady());
}

void MainWindowOtherWindowsTest::theLogKeyOpensTheLogWindow()
{
    shown->start();
    shown->key(Qt::Key_L, Qt::ControlModifier);
    QVERIFY(logIsVisible());
    QVERIFY(QTest::qWaitForWindowActive(logWindow()));
    QVERIFY(logWindow()->findChild<QTextEdit*>()->toPlainText().contains("Initialization"));
    // After the window is closed, the shortcut opens it again.
    const Log::Window* first = logWindow();
    const QSize size = first->size() - QSize(20, 30);
    logWindow()->resize(size);
    logWindow()->close();
    QCOMPARE(settings(this)->value("LogWindow/size").toSize(), size);
    QVERIFY(QTest::qWaitForWindowActive(shown->window));
    shown->key(Qt::Key_L, Qt::ControlModifier);
    QVERIFY(logIsVisible());
    QCOMPARE(static_cast<const Log::Window*>(logWindow()), first);
}

void MainWindowOtherWindowsTest::theMenuEntryOpensTheLogWindow()
{
    shown->start();
    shown->choose("&Windows", "&Log");
    QTRY_VERIFY(logIsVisible());
}

void MainWindowOtherWindowsTest::theAboutWindowShowsTheVersion()
{
    shown->start();
    shown->key(Qt::Key_F1);
    QTRY_VERIFY(aboutBox() != nullptr);
    const QString text = aboutBox()->text();
    const QString expected =
        "<h3>VYRE 2.1.2</h3><hr><p>VYRE, Vyrecraft, is a graphical user interface which allows a user to "
        "make "
        "modifications to the installed rpm packages on a system.</p><p>Capabilities:<p><ul><li>Install new "
        "packages or update existing packages by downloading them from a yum package repository</li>"
        "<li>Remove existing packages.</li><li>Configure sets of repositories from which to obtain new and "
        "updated packages.</li><li>Examine installed packages or packages available for installation or "
        "update</li><li>Install, update, or remove groups of packages</li><li>Install or update suites of "
        "packages</li></ul>";
    QCOMPARE(text.left(expected.length()), expected);
    // The text ends with a link to further information.
    const QRegularExpression rest("^<p>[^<]*<a href=\"(https://[^\"]+)\">\\1</a>[^<]*</p>$");
    QVERIFY2(rest.match(text.mid(expected.length())).hasMatch(), qPrintable(text.mid(expected.length())));
}

void MainWindowOtherWindowsTest::aClickOnTheLinkInTheAboutWindowOpensTheBrowserOfTheUser()
{
    shown->start();
    shown->choose("&Help", "&About");
    QTRY_VERIFY(aboutBox() != nullptr);
    QLabel* link = nullptr;
    for (QLabel* label : aboutBox()->findChildren<QLabel*>()) {
        QVERIFY(!label->openExternalLinks());
        if (label->text().contains("https://vyre.example/")) {
            link = label;
        }
    }
    QVERIFY(link != nullptr);
    QFile program(Share::absolute("webbrowser"));
    QVERIFY(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.part\" && mv \"$0.part\" \"$0.page\"\n");
    program.close();
    QVERIFY(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    const QSignalSpy clicked(link, SIGNAL(linkActivated(const QString&)));
    for (int y = link->height() - 1; y >= 0 && clicked.isEmpty(); y -= 6) {
        for (int x = 0; x < link->width() && clicked.isEmpty(); x += 20) {
            QTest::mouseClick(link, Qt::LeftButton, {}, QPoint(x, y));
        }
    }
    QFile page(Share::absolute("webbrowser.page"));
    QTRY_VERIFY(page.exists());
    QVERIFY(page.open(QIODevice::ReadOnly));
    QCOMPARE(page.readAll(), QByteArray("https://vyre.example/\n"));
}

void MainWindowOtherWindowsTest::theQuitKeyQuitsTheProgram()
{
    compareQuit([this] { shown->key(Qt::Key_Q, Qt::ControlModifier); });
}

void MainWindowOtherWindowsTest::theMenuEntryQuitsTheProgram()
{
    compareQuit([this] { shown->choose("&Program", "&Quit"); });
}

void MainWindowOtherWindowsTest::closingTheMainWindowQuitsTheProgram()
{
    // The window manager handles Alt+F4, and asks the window to close.
    compareQuit([] { QCOMPARE(QProcess::execute("xdotool", {"key", "alt+F4"}), 0); });
}

int main(int argc, char** argv)
{
    return EachAlone::run<MainWindowOtherWindowsTest>(argc, argv);
}

#include "MainWindowOtherWindowsTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "tests/repo/ShownEditor.h"

using namespace RepoEditor;

// Tests of Reset All, of Cancel and of closing the window: each discards the changes that were not applied.
class RepoEditorDialogClosingTest : public ShownEditor
{
    Q_OBJECT

private Q_SLOTS:
    void theResetAllButtonRestoresTheContentsOfTheFiles();
    void theResetAllButtonKeepsTheCurrentRepository();
    void theListShowsTheRepositoriesReadBeforeTheErrorIfResetAllFails();
    void nothingIsWrittenIfSomeFilesCouldNotBeReadCompletely();
    void theCancelButtonDiscardsAllChangesAndClosesTheEditor();
    void theCancelButtonEmitsReposChangedIfAChangeWasAppliedBefore();
    void closingTheWindowKeepsChangesOfTheSessionBoxes();
    void closingTheWindowDiscardsUnappliedChanges();
    void closingTheWindowAsksWhetherToDiscardUnappliedChanges_data();
    void closingTheWindowAsksWhetherToDiscardUnappliedChanges();
    void closingTheWindowDiscardsEditsButKeepsChangesOfTheSessionBoxes();
    void closingAnUnchangedEditorEmitsNoSignal();
    void theCancelButtonEmitsReposChangedWithoutAChangeIfTheCallerDemandsThis();
    void theFunctionResetKeepsUnappliedChanges();
};

void RepoEditorDialogClosingTest::theResetAllButtonRestoresTheContentsOfTheFiles()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), SessionColumn);
                click(QStringLiteral("os"), PermanentColumn);
                QVERIFY(withForm([this] { click("Add"); },
                                 [this] {
                                     Form::type(fields->id, QStringLiteral("new"));
                                     clickForm("OK");
                                 }));
                click("Reset All");
                QVERIFY(isClean());
                QVERIFY(dialog->isVisible());
                QCOMPARE(listed(), (QStringList{"extras", "os", "updates"}));
                QCOMPARE(session.value(QStringLiteral("extras")), false);
                QVERIFY(!session.contains(QStringLiteral("new")));
                QCOMPARE(entry(QStringLiteral("os")).enabled, 1);
                click("OK");
            }) == int(QDialog::Accepted));
    QCOMPARE(reposChangedSpy->size(), 0);
}

void RepoEditorDialogClosingTest::theResetAllButtonKeepsTheCurrentRepository()
{
    QVERIFY(run([this] {
                click(QStringLiteral("updates"), PermanentColumn);
                click("Reset All");
                QCOMPARE(current(), QStringLiteral("updates"));
                QVERIFY(button("Edit")->isEnabled());
                click(QStringLiteral("updates"), PermanentColumn);
                view->setCurrentIndex(QModelIndex());
                click("Reset All");
                QCOMPARE(current(), QStringLiteral("(none)"));
                QVERIFY(!button("Edit")->isEnabled());
            }) >= 0);
    // If several repositories have the same identifier, the last one becomes the current row again.
    backEnd->putRepo("x.repo", "[same]\nname=1\n[same]\nname=2\n");
    QVERIFY(run([this] {
                click(QStringLiteral("same"), PermanentColumn);
                click("Reset All");
                QCOMPARE(view->currentRow(), ids().lastIndexOf(QStringLiteral("same")));
            }) >= 0);
}

void RepoEditorDialogClosingTest::theListShowsTheRepositoriesReadBeforeTheErrorIfResetAllFails()
{
    QVERIFY(run([this] {
                click(QStringLiteral("updates"), PermanentColumn);
                backEnd->removeRepos();
                backEnd->putRepo("x.repo", "[good]\n[other]\n[bad\n");
                const QList<ShownBox> boxes = withBoxes([this] { click("Reset All"); });
                QCOMPARE(boxes.size(), 1);
                QCOMPARE(boxes.at(0).parent, dialog.get());
                QCOMPARE(listed(), QStringList{QStringLiteral("good")});
                QVERIFY(dialog->isVisible());
                QVERIFY(isClean());
            }) >= 0);
}

void RepoEditorDialogClosingTest::nothingIsWrittenIfSomeFilesCouldNotBeReadCompletely()
{
    QVERIFY(run([this] {
                click(QStringLiteral("updates"), PermanentColumn);
                for (const char* name : {"a.repo", "updates.repo", "os.repo"}) {
                    backEnd->putRepo(name, "[good" + QByteArray(name, 1) + "]\n[x]\n[bad\n");
                }
                QCOMPARE(withBoxes([this] { click("Reset All"); }).size(), 1);
                QCOMPARE(listed().size(), 1);
                for (const char* text : {"Apply", "OK"}) {
                    click(listed().first(), PermanentColumn);
                    QCOMPARE(withBoxes([this, text] { click(text); }).size(), 1);
                    QVERIFY(dialog->isVisible());
                }
                QCOMPARE(backEnd->getRepo("updates.repo"), QByteArray("[goodu]\n[x]\n[bad\n"));
                QCOMPARE(backEnd->getRepo("a.repo"), QByteArray("[gooda]\n[x]\n[bad\n"));
                for (const char* name : {"a.repo", "updates.repo", "os.repo"}) {
                    backEnd->putRepo(name, "[good" + QByteArray(name, 1) + "]\n");
                }
                click(listed().first(), PermanentColumn);
                click("Apply");
                QCOMPARE(listed(), (QStringList{"gooda", "goodo", "goodu"}));
                QVERIFY(isClean());
                click(QStringLiteral("goodo"), PermanentColumn);
                click("Apply");
                QCOMPARE(backEnd->getRepo("os.repo"), QByteArray("[goodo]\nenabled=0\n"));
            }) >= 0);
    QCOMPARE(backEnd->getRepo("updates.repo"), QByteArray("[goodu]\n"));
}

void RepoEditorDialogClosingTest::theCancelButtonDiscardsAllChangesAndClosesTheEditor()
{
    const QByteArray before = backEnd->getRepo("os.repo");
    QCOMPARE(run([this] {
                 click(QStringLiteral("extras"), SessionColumn);
                 click(QStringLiteral("os"), PermanentColumn);
                 click("Cancel");
                 QVERIFY(!dialog->isVisible());
             }),
             int(QDialog::Rejected));
    QCOMPARE(session.value(QStringLiteral("extras")), false);
    QCOMPARE(entry(QStringLiteral("os")).enabled, 1);
    QCOMPARE(backEnd->getRepo("os.repo"), before);
    QCOMPARE(reposChangedSpy->size(), 0);
}

void RepoEditorDialogClosingTest::theCancelButtonEmitsReposChangedIfAChangeWasAppliedBefore()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), PermanentColumn);
                click("Apply");
                click(QStringLiteral("os"), PermanentColumn);
                click("Cancel");
            }) == int(QDialog::Rejected));
    QCOMPARE(reposChangedSpy->size(), 1);
    QCOMPARE(entry(QStringLiteral("extras")).enabled, 2);
    QCOMPARE(entry(QStringLiteral("os")).enabled, 1);
}

void RepoEditorDialogClosingTest::closingTheWindowKeepsChangesOfTheSessionBoxes()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), SessionColumn);
                QTest::keyClick(view, Qt::Key_Escape);
                QVERIFY(!dialog->isVisible());
            }) == int(QDialog::Rejected));
    QCOMPARE(session.value(QStringLiteral("extras")), true);
    QCOMPARE(reposChangedSpy->size(), 1);
}

void RepoEditorDialogClosingTest::closingTheWindowDiscardsUnappliedChanges()
{
    const QByteArray before = backEnd->getRepo("os.repo");
    QVERIFY(run([this] {
                click(QStringLiteral("os"), PermanentColumn);
                click(QStringLiteral("extras"));
                QVERIFY(withForm([this] { click("Edit"); },
                                 [this] {
                                     Form::type(fields->urls, QStringLiteral("http://h/other"));
                                     fields->enabled->setFocus();
                                     QTest::keyClick(fields->enabled, Qt::Key_End);
                                     clickForm("OK");
                                 }));
                QCOMPARE(session.value(QStringLiteral("extras")), true);
                QCOMPARE(withBoxes([this] { QTest::keyClick(view, Qt::Key_Escape); }, "Yes").size(), 1);
                QVERIFY(!dialog->isVisible());
            }) == int(QDialog::Rejected));
    QCOMPARE(backEnd->getRepo("os.repo"), before);
    // The list has the values from the files again. The session states are the same as when the editor
    // opened.
    QCOMPARE(entry(QStringLiteral("os")).enabled, 1);
    QCOMPARE(entry(QStringLiteral("extras")).baseurl, QStringLiteral("http://h/extras"));
    QCOMPARE(session.value(QStringLiteral("extras")), false);
    QCOMPARE(reposChangedSpy->size(), 0);
}

void RepoEditorDialogClosingTest::closingTheWindowAsksWhetherToDiscardUnappliedChanges_data()
{
    QTest::addColumn<bool>("byEscape");
    QTest::newRow("Escape") << true;
    QTest::newRow("window closed by the window manager") << false;
}

void RepoEditorDialogClosingTest::closingTheWindowAsksWhetherToDiscardUnappliedChanges()
{
    QFETCH(bool, byEscape);
    const auto closeIt = [this, byEscape] {
        if (byEscape) {
            QTest::keyClick(view, Qt::Key_Escape);
        } else {
            dialog->close();
        }
    };
    QVERIFY(run([&] {
                click(QStringLiteral("os"), PermanentColumn);
                const bool enabled = entry(QStringLiteral("os")).enabled != 0;
                for (const char* answer : {"No", "Return", "Escape"}) {
                    AnsweringUser user(AnsweringUser::clickIfThere(QLatin1String(answer)));
                    if (qstrcmp(answer, "Escape") == 0) {
                        user.answer = AnsweringUser::key(Qt::Key_Escape);
                    }
                    closeIt();
                    QCOMPARE(user.seen.size(), 1);
                    QCOMPARE(user.seen.at(0).title, QStringLiteral("Repository Editor"));
                    QCOMPARE(user.seen.at(0).text,
                             QStringLiteral("The changes to the repositories are not applied. Close the "
                                            "window and drop the changes?"));
                    QCOMPARE(user.seen.at(0).defaultButton, QMessageBox::No);
                    QCOMPARE(user.seen.at(0).parent, dialog.get());
                    QVERIFY(dialog->isVisible());
                    QVERIFY(isUnapplied());
                    QCOMPARE(entry(QStringLiteral("os")).enabled != 0, enabled);
                }
                click("Apply");
                QCOMPARE(withBoxes(closeIt).size(), 0);
                QVERIFY(!dialog->isVisible());
            }) == int(QDialog::Rejected));
}

void RepoEditorDialogClosingTest::closingTheWindowDiscardsEditsButKeepsChangesOfTheSessionBoxes()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), SessionColumn);
                click(QStringLiteral("os"), PermanentColumn);
                QCOMPARE(withBoxes([this] { dialog->close(); }, "Yes").size(), 1);
            }) == int(QDialog::Rejected));
    QCOMPARE(session.value(QStringLiteral("extras")), true);
    QCOMPARE(entry(QStringLiteral("os")).enabled, 1);
    QCOMPARE(reposChangedSpy->size(), 1);
}

void RepoEditorDialogClosingTest::closingAnUnchangedEditorEmitsNoSignal()
{
    QVERIFY(run([this] { dialog->close(); }) == int(QDialog::Rejected));
    QVERIFY(run([this] { click("Cancel"); }) == int(QDialog::Rejected));
    QCOMPARE(reposChangedSpy->size(), 0);
}

void RepoEditorDialogClosingTest::theCancelButtonEmitsReposChangedWithoutAChangeIfTheCallerDemandsThis()
{
    dialog->reposChangedForced = true;
    bool hidden = false;
    const QMetaObject::Connection connection = connect(dialog.get(), &Dialog::reposChanged, dialog.get(),
                                                       [this, &hidden] { hidden = !dialog->isVisible(); });
    QVERIFY(run([this] { click("Cancel"); }) == int(QDialog::Rejected));
    QVERIFY(hidden);
    disconnect(connection);
    QCOMPARE(reposChangedSpy->size(), 1);
    dialog->reposChangedForced = false;
    QVERIFY(run([this] { click("OK"); }) == int(QDialog::Accepted));
    QCOMPARE(reposChangedSpy->size(), 1);
}

void RepoEditorDialogClosingTest::theFunctionResetKeepsUnappliedChanges()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), PermanentColumn);
                dialog->reset();
                QVERIFY(isUnapplied());
                QCOMPARE(current(), QStringLiteral("extras"));
            }) >= 0);
}

QTEST_MAIN(RepoEditorDialogClosingTest)
#include "RepoEditorDialogClosingTest.moc"

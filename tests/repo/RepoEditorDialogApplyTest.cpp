// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "tests/repo/ShownEditor.h"
#include "widgets/HFrameLabel.h"

using namespace RepoEditor;

// Tests of the OK and Apply buttons, which write the list.
class RepoEditorDialogApplyTest : public ShownEditor
{
    Q_OBJECT

private Q_SLOTS:
    void okWritesNoFileIfNothingHasChanged();
    void okWritesTheChangesAndClosesTheEditor();
    void okDoesNotCloseTheEditorIfTheUserDeclinesToWrite();
    void theApplyButtonWritesTheChangesAndKeepsTheEditorOpen();
    void theApplyButtonKeepsAllEditsIfTheUserDeclinesToWrite();
    void theApplyButtonKeepsAllEditsIfAFileCannotBeWritten();
    void theListShowsTheRemainingRepositoriesIfApplyFailsAfterARemoval();
    void okDoesNotOverwriteAFileThatAnotherProgramHasChanged();
    void theUserCanReadTheFilesAgainIfAnotherProgramHasChangedAFile();
    void theListShowsChangesByOtherProgramsAfterTheApplyButtonWasPressed();
};

void RepoEditorDialogApplyTest::okWritesNoFileIfNothingHasChanged()
{
    // VYRE itself writes no blanks around "=". So the blanks in this file would disappear if VYRE wrote the
    // file.
    backEnd->putRepo("os.repo", "# comment\n[os]\nenabled = 1\n");
    QCOMPARE(run([this] { click("OK"); }), int(QDialog::Accepted));
    QCOMPARE(backEnd->getRepo("os.repo"), QByteArray("# comment\n[os]\nenabled = 1\n"));
    QCOMPARE(reposChangedSpy->size(), 0);
}

void RepoEditorDialogApplyTest::okWritesTheChangesAndClosesTheEditor()
{
    QCOMPARE(run([this] {
                 click(QStringLiteral("extras"), PermanentColumn);
                 click("OK");
             }),
             int(QDialog::Accepted));
    QVERIFY(
        backEnd->getRepo("os.repo").contains("[extras]\nname=Extras\nbaseurl=http://h/extras\nenabled=1\n"));
    QCOMPARE(reposChangedSpy->size(), 1);
}

void RepoEditorDialogApplyTest::okDoesNotCloseTheEditorIfTheUserDeclinesToWrite()
{
    backEnd->putRepo("double.repo", "[os]\nname=Second\n");
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), PermanentColumn);
                QCOMPARE(withBoxes([this] { click("OK"); }, "&No").size(), 1);
                QVERIFY(dialog->isVisible());
                QVERIFY(button("Apply")->isEnabled());
                QCOMPARE(entry(QStringLiteral("extras")).enabled, 2);
            }) == int(QDialog::Rejected));
    QVERIFY(backEnd->getRepo("os.repo").contains("enabled=0"));
    QCOMPARE(reposChangedSpy->size(), 0);
}

void RepoEditorDialogApplyTest::theApplyButtonWritesTheChangesAndKeepsTheEditorOpen()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), PermanentColumn);
                click("Apply");
                QVERIFY(dialog->isVisible());
                QVERIFY(isClean());
                QCOMPARE(current(), QStringLiteral("(none)"));
                QVERIFY(!button("Edit")->isEnabled());
                QVERIFY(backEnd->getRepo("os.repo").contains("enabled=1"));
                QVERIFY(reposChangedSpy->isEmpty());
            }) >= 0);
    QCOMPARE(reposChangedSpy->size(), 1);
    // The editor opens a second time, and closes without a change, so it does not emit reposChanged() a
    // second time.
    QVERIFY(run([] {}) >= 0);
    QCOMPARE(reposChangedSpy->size(), 1);
}

void RepoEditorDialogApplyTest::theApplyButtonKeepsAllEditsIfTheUserDeclinesToWrite()
{
    backEnd->putRepo("double.repo", "[os]\nname=Second\n");
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), PermanentColumn);
                QCOMPARE(withBoxes([this] { click("Apply"); }, "&No").size(), 1);
                QVERIFY(button("Apply")->isEnabled());
                QCOMPARE(ids().count(QStringLiteral("os")), 2);
                QCOMPARE(current(), QStringLiteral("extras"));
                QCOMPARE(entry(QStringLiteral("extras")).enabled, 2);
            }) >= 0);
    QVERIFY(backEnd->getRepo("os.repo").contains("enabled=0"));
    QCOMPARE(reposChangedSpy->size(), 0);
}

void RepoEditorDialogApplyTest::theApplyButtonKeepsAllEditsIfAFileCannotBeWritten()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"));
                QVERIFY(withForm([this] { click("Edit"); },
                                 [this] {
                                     Form::type(fields->file, QStringLiteral("/nowhere/at/all.repo"));
                                     QCOMPARE(form->findChild<HFrameLabel*>()->text(),
                                              QStringLiteral("File is not in any reposdir directory"));
                                     clickForm("OK");
                                 }));
                const QList<ShownBox> boxes = withBoxes([this] { click("Apply"); });
                QCOMPARE(boxes.size(), 1);
                QCOMPARE(boxes.at(0).title, QStringLiteral("VYRE Repository Editor Error"));
                QVERIFY(isUnapplied());
                QCOMPARE(current(), QStringLiteral("extras"));
            }) >= 0);
    QCOMPARE(reposChangedSpy->size(), 0);
}

void RepoEditorDialogApplyTest::theListShowsTheRemainingRepositoriesIfApplyFailsAfterARemoval()
{
    backEnd->putRepo("double.repo", "[os]\nname=Second\n[zero]\n");
    QVERIFY(run([this] {
                click(QStringLiteral("zero"));
                QVERIFY(withForm([this] { click("Edit"); },
                                 [this] {
                                     Form::type(fields->file, QStringLiteral("/nowhere/at/all.repo"));
                                     clickForm("OK");
                                 }));
                QCOMPARE(listed().size(), 5);
                QCOMPARE(withBoxes([this] { click("Apply"); }).size(), 2);
                QCOMPARE(ids().size(), 4);
                QCOMPARE(listed(), (QStringList{"extras", "os", "updates", "zero"}));
                QVERIFY(isUnapplied());
            }) >= 0);
}

void RepoEditorDialogApplyTest::okDoesNotOverwriteAFileThatAnotherProgramHasChanged()
{
    const QByteArray theirs("[os]\nname=Theirs\n");
    QVERIFY(run([this, &theirs] {
                click(QStringLiteral("extras"), PermanentColumn);
                backEnd->putRepo("os.repo", theirs);
                backEnd->putRepo("made.repo", theirs);
                const QList<ShownBox> boxes = withBoxes([this] { click("OK"); }, "&No");
                QCOMPARE(boxes.size(), 1);
                QCOMPARE(boxes.at(0).parent, dialog.get());
                QVERIFY(boxes.at(0).text.contains(QLatin1Char('\n') + backEnd->repoPath("os.repo") +
                                                  QLatin1Char('\n')));
                QVERIFY(!boxes.at(0).text.contains(QStringLiteral("made.repo")));
                // The list still contains the user's changes.
                QVERIFY(dialog->isVisible());
                QVERIFY(isUnapplied());
                QCOMPARE(entry(QStringLiteral("extras")).enabled, 2);
                QCOMPARE(current(), QStringLiteral("extras"));
            }) >= 0);
    QCOMPARE(backEnd->getRepo("os.repo"), theirs);
    QCOMPARE(backEnd->getRepo("made.repo"), theirs);
    QCOMPARE(reposChangedSpy->size(), 0);
}

void RepoEditorDialogApplyTest::theUserCanReadTheFilesAgainIfAnotherProgramHasChangedAFile()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), PermanentColumn);
                backEnd->putRepo("os.repo", "[os]\nname=Theirs\n[extras]\nname=Theirs too\nenabled=0\n");
                QCOMPARE(withBoxes([this] { click("OK"); }, "&Yes").size(), 1);
                QVERIFY(dialog->isVisible());
                QVERIFY(isClean());
                QCOMPARE(entry(QStringLiteral("extras")).enabled, 0);
                QVERIFY(listed(NameColumn).contains(QStringLiteral("Theirs too")));
                QCOMPARE(current(), QStringLiteral("extras"));
                // The user can edit and write the list after VYRE has read the files again.
                click(QStringLiteral("extras"), PermanentColumn);
                click("Apply");
                QVERIFY(isClean());
            }) >= 0);
    QCOMPARE(backEnd->getRepo("os.repo"),
             QByteArray("[os]\nname=Theirs\n\n[extras]\nname=Theirs too\nenabled=1\n"));
}

void RepoEditorDialogApplyTest::theListShowsChangesByOtherProgramsAfterTheApplyButtonWasPressed()
{
    backEnd->putRepo("other.repo", "[other]\nname=Before\n");
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), PermanentColumn);
                backEnd->putRepo("other.repo", "[other]\nname=Theirs\n");
                const QList<ShownBox> boxes = withBoxes([this] { click("Apply"); }, "&OK");
                QCOMPARE(boxes.size(), 1);
                QVERIFY(boxes.at(0).text.endsWith(QLatin1Char('\n') + backEnd->repoPath("other.repo")));
                QVERIFY(isClean());
                QVERIFY(listed(NameColumn).contains(QStringLiteral("Theirs")));
            }) >= 0);
    QVERIFY(
        backEnd->getRepo("os.repo").contains("[extras]\nname=Extras\nbaseurl=http://h/extras\nenabled=1\n"));
    QCOMPARE(backEnd->getRepo("other.repo"), QByteArray("[other]\nname=Theirs\n"));
    QCOMPARE(reposChangedSpy->size(), 1);
}

QTEST_MAIN(RepoEditorDialogApplyTest)
#include "RepoEditorDialogApplyTest.moc"

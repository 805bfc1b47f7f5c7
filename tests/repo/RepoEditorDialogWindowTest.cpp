// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "app/base/RepositoryFileLimit.h"
#include "tests/repo/Assistive.h"
#include "tests/repo/ShownEditor.h"
#include "widgets/Colors.h"
#include "widgets/HFrameLabel.h"
#include "widgets/HSeparator.h"

using namespace RepoEditor;

// Tests of the contents and the layout of the editor.
class RepoEditorDialogWindowTest : public ShownEditor
{
    Q_OBJECT

private Q_SLOTS:
    void theWindowHasTheExpectedContents();
    void theButtonsHaveTheExpectedToolTips();
    void theEditorFitsASmallScreen();
    void aLongIdentifierDoesNotWidenTheWindow();
    void theStatusTextIsNotCutOff();
    void noVisibleTextOrToolTipContainsThePassword();
    void theListIsSortedByIdentifierAtFirst();
    void numbersInIdentifiersAreSortedByValue();
    void theEditorOpensWithoutChangesAndWithoutACurrentRow();
    void theEditorReadsTheFilesEachTimeItOpens();
    void theEditorDoesNotOpenIfTheFilesCannotBeRead();
    void theEditorEmitsNoSignalIfTheFilesCannotBeRead();
    void theReturnKeyDoesNotPressApply();
    void theButtonsForOneRowAreEnabledOnlyIfARowIsCurrent();
    void theBrowseButtonOpensTheUrlOfTheCurrentRepository();
    void theBrowseButtonShowsAMessageIfTheRepositoryHasNoUrl();
    void theStatusLineReportsChangesAndErrors();
    void theStatusNamesTheFirstOfSeveralDuplicateIdentifiers();
    void tenThousandRepositoriesAreShownAndRemoved();
    void aVeryLongTextCanBeEdited_data();
    void aVeryLongTextCanBeEdited();
};

void RepoEditorDialogWindowTest::theWindowHasTheExpectedContents()
{
    QVERIFY(run([this] {
                QCOMPARE(dialog->windowTitle(), QStringLiteral("VYRE Repository Configuration Editor"));
                QVERIFY(dialog->isModal());
                const HFrameLabel* label =
                    dialog->findChild<HFrameLabel*>(QString(), Qt::FindDirectChildrenOnly);
                QList<QList<QWidget*>> rows{
                    {view},
                    {button("Browse Repository"), button("Edit"), button("Add"), button("Copy"),
                     button("Remove")},
                    {dialog->findChild<HSeparator*>()},
                    {button("Reset All"), button("Cancel"), button("Apply"), button("OK")}};
                int bottom = 0;
                for (const QList<QWidget*>& row : rows) {
                    int right = 0;
                    for (const QWidget* widget : row) {
                        QVERIFY(widget->isVisible());
                        QVERIFY(widget->x() > right);
                        right = widget->geometry().right();
                        QVERIFY(widget->y() > bottom);
                    }
                    bottom = row.last()->geometry().bottom();
                }
                QVERIFY(label->geometry().right() < button("Reset All")->x());
                QVERIFY(button("Apply")->isDefault());
                QVERIFY(!button("Add")->isDefault());
                QVERIFY(!button("Add")->autoDefault());
            }) >= 0);
}

void RepoEditorDialogWindowTest::theButtonsHaveTheExpectedToolTips()
{
    const QList<QPair<const char*, const char*>> toolTips{
        {"Browse Repository",
         "Browse the first URL specified for the selected repository using an external web browser"},
        {"Edit", "Edit the selected repository configuration"},
        {"Add", "Create a new repository configuration from scratch"},
        {"Copy", "Create a new repository configuration based on the selected repository"},
        {"Remove", "Remove the selected repository configuration"},
        {"Reset All",
         "Undo changes to all repository configurations since the last Apply or opening of the dialog"},
        {"Cancel", "Undo changes to all repository configurations since the last Apply or opening of the "
                   "dialog, and close the window"},
        {"Apply", "Apply changes to all repository configurations, but do not close the window"},
        {"OK", "Apply changes to all repository configurations, and close the window"}};
    for (const auto& each : toolTips) {
        QCOMPARE(button(each.first)->toolTip(), QLatin1String(each.second));
    }
}

void RepoEditorDialogWindowTest::theEditorFitsASmallScreen()
{
    QByteArray many;
    for (int i = 0; i < 200; ++i) {
        many += "[repo" + QByteArray::number(i) + "]\nname=" + QByteArray(300, 'n') + "\nbaseurl=http://h/\n";
    }
    backEnd->putRepo("many.repo", many);
    QVERIFY(run([this] {
                const QSize screen = QGuiApplication::primaryScreen()->size();
                QVERIFY(dialog->width() <= screen.width() * 9 / 10);
                QVERIFY(dialog->height() <= 691);
                QVERIFY(dialog->minimumSizeHint().width() <= 921);
            }) >= 0);
}

void RepoEditorDialogWindowTest::aLongIdentifierDoesNotWidenTheWindow()
{
    const QByteArray id(800, 'i');
    backEnd->putRepo("a.repo", '[' + id + "]\nbaseurl=http://h/a\n");
    backEnd->putRepo("b.repo", '[' + id + "]\nbaseurl=http://h/b\n");
    QVERIFY(run([this, id] {
                QCOMPARE(status(), QStringLiteral("Two or more repositories have the Identifier, ") +
                                       QString::fromLatin1(id));
                QVERIFY(dialog->minimumSizeHint().width() <= 921);
            }) >= 0);
}

void RepoEditorDialogWindowTest::theStatusTextIsNotCutOff()
{
    backEnd->putRepo("double.repo", "[sixteen-letters-]\n[sixteen-letters-]\n");
    QVERIFY(run([this] {
                const QLabel* text = dialog->findChild<HFrameLabel*>()->findChild<QLabel*>();
                QCOMPARE(text->text(),
                         QStringLiteral("Two or more repositories have the Identifier, sixteen-letters-"));
                QVERIFY(text->width() >= text->fontMetrics().horizontalAdvance(text->text()));
            }) >= 0);
}

void RepoEditorDialogWindowTest::noVisibleTextOrToolTipContainsThePassword()
{
    backEnd->putRepo("v.repo", "[v]\nname=V\nbaseurl=http://h/vantor?u=bob&p=hidden&path=/x\n"
                               "  http://k/vantor?u=bob&p=hidden&path=y\n"
                               "mirrorlist=http://m/vantor?u=bob&p=hidden&path=/l\n");
    const auto check = [this] {
        for (const QString& text : readableTexts(dialog.get())) {
            QVERIFY2(!text.contains(QStringLiteral("hidden")), qPrintable(text));
        }
        for (int row = 0; row < conf->entries.size(); ++row) {
            for (int column = 0; column < ColumnCount; ++column) {
                const QModelIndex cell = view->QTableView::model()->index(row, column);
                for (int role = 0; role <= Qt::AccessibleDescriptionRole; ++role) {
                    QVERIFY(!cell.data(role).toString().contains(QStringLiteral("hidden")));
                }
            }
        }
    };
    QVERIFY(run([this, check] {
                click(QStringLiteral("v"));
                check();
                QVERIFY(withForm([this] { click("Copy"); },
                                 [this, check] {
                                     QCOMPARE(fields->password->text(), QStringLiteral("hidden"));
                                     check();
                                     Form::type(fields->name, QStringLiteral("W"));
                                     clickForm("OK");
                                 }));
                QCOMPARE(status(), QStringLiteral("Two or more repositories have the Identifier, v"));
                check();
            }) >= 0);
}

void RepoEditorDialogWindowTest::theListIsSortedByIdentifierAtFirst()
{
    QVERIFY(run([this] {
                QCOMPARE(listed(), (QStringList{"extras", "os", "updates"}));
                const QHeaderView* header = view->horizontalHeader();
                QCOMPARE(header->sortIndicatorSection(), int(IdentifierColumn));
                QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
                for (int column = 0; column < NameColumn; ++column) {
                    QCOMPARE(view->columnWidth(column),
                             qMax(view->sizeHintForColumn(column), header->sectionSizeHint(column)));
                }
                view->HTableView::sortByColumn(NameColumn, Qt::DescendingOrder);
            }) >= 0);
    QVERIFY(run([this] { QCOMPARE(listed(), (QStringList{"extras", "os", "updates"})); }) >= 0);
}

void RepoEditorDialogWindowTest::numbersInIdentifiersAreSortedByValue()
{
    backEnd->removeRepos();
    backEnd->putRepo("x.repo", "[repo10]\n[repo9]\n[Repo2]\n");
    QVERIFY(run([this] { QCOMPARE(listed(), (QStringList{"Repo2", "repo9", "repo10"})); }) >= 0);
}

void RepoEditorDialogWindowTest::theEditorOpensWithoutChangesAndWithoutACurrentRow()
{
    for (int time = 0; time < 2; ++time) {
        QVERIFY(run([this] {
                    QVERIFY(isClean());
                    QCOMPARE(current(), QStringLiteral("(none)"));
                    QCOMPARE(QApplication::focusWidget(), view);
                    for (const char* text : {"Browse Repository", "Edit", "Copy", "Remove"}) {
                        QVERIFY(!button(text)->isEnabled());
                    }
                    for (const char* text : {"Add", "Cancel", "OK"}) {
                        QVERIFY(button(text)->isEnabled());
                    }
                    click(QStringLiteral("os"), PermanentColumn);
                    QVERIFY(isUnapplied());
                }) >= 0);
    }
}

void RepoEditorDialogWindowTest::theEditorReadsTheFilesEachTimeItOpens()
{
    QVERIFY(run([this] { QCOMPARE(listed().size(), 3); }) >= 0);
    backEnd->putRepo("new.repo", "[another]\nbaseurl=http://h/another\n");
    QVERIFY(run([this] { QCOMPARE(listed(), (QStringList{"another", "extras", "os", "updates"})); }) >= 0);
}

void RepoEditorDialogWindowTest::theEditorDoesNotOpenIfTheFilesCannotBeRead()
{
    backEnd->putRepo("updates.repo", "[updates\n");
    for (int time = 0; time < 2; ++time) {
        const QList<ShownBox> boxes = withBoxes([this] {
            QCOMPARE(dialog->exec(), int(QDialog::Rejected));
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.at(0).title, QStringLiteral("VYRE Repository Editor Error"));
        QVERIFY(boxes.at(0).text.startsWith(QStringLiteral("Malformed section name in line: [updates")));
        QCOMPARE(boxes.at(0).parent, window.get());
    }
    backEnd->putRepo("updates.repo", "[updates]\n");
    QVERIFY(run([this] { QVERIFY(listed().contains(QStringLiteral("updates"))); }) >= 0);
}

void RepoEditorDialogWindowTest::theEditorEmitsNoSignalIfTheFilesCannotBeRead()
{
    QVERIFY(run([this] { click(QStringLiteral("os"), SessionColumn); }) >= 0);
    QCOMPARE(reposChangedSpy->size(), 1);
    backEnd->putRepo("updates.repo", "[updates\n");
    dialog->reposChangedForced = true;
    QCOMPARE(withBoxes([this] { dialog->exec(); }).size(), 1);
    QCOMPARE(reposChangedSpy->size(), 1);
}

void RepoEditorDialogWindowTest::theReturnKeyDoesNotPressApply()
{
    const QByteArray before = backEnd->getRepo("os.repo");
    QVERIFY(run([this] {
                click(QStringLiteral("os"), PermanentColumn);
                QTest::keyClick(view, Qt::Key_Return);
                QTest::keyClick(dialog.get(), Qt::Key_Enter);
                QVERIFY(isUnapplied());
                QVERIFY(!form->isVisible());
            }) >= 0);
    QCOMPARE(backEnd->getRepo("os.repo"), before);
}

void RepoEditorDialogWindowTest::theButtonsForOneRowAreEnabledOnlyIfARowIsCurrent()
{
    QVERIFY(run([this] {
                click(QStringLiteral("os"));
                for (const char* text : {"Browse Repository", "Edit", "Copy", "Remove"}) {
                    QVERIFY(button(text)->isEnabled());
                }
                view->setCurrentIndex(QModelIndex());
                for (const char* text : {"Browse Repository", "Edit", "Copy", "Remove"}) {
                    QVERIFY(!button(text)->isEnabled());
                }
            }) >= 0);
}

void RepoEditorDialogWindowTest::theBrowseButtonOpensTheUrlOfTheCurrentRepository()
{
    backEnd->installBrowser();
    QVERIFY(run([this] {
                click(QStringLiteral("updates"));
                click("Browse Repository");
                QCOMPARE(BackEnd::browsed(), QStringList{QStringLiteral("http://h/updates")});
            }) >= 0);
}

void RepoEditorDialogWindowTest::theBrowseButtonShowsAMessageIfTheRepositoryHasNoUrl()
{
    backEnd->putRepo("none.repo", "[none]\n");
    QVERIFY(run([this] {
                click(QStringLiteral("none"));
                const QList<ShownBox> boxes = withBoxes([this] { click("Browse Repository"); });
                QCOMPARE(boxes.size(), 1);
                QCOMPARE(boxes.at(0).text, QStringLiteral("Repository configuration has no URL"));
                QCOMPARE(boxes.at(0).parent, dialog.get());
            }) >= 0);
}

void RepoEditorDialogWindowTest::theStatusLineReportsChangesAndErrors()
{
    QVERIFY(run([this] {
                QCOMPARE(status(), QString());
                click(QStringLiteral("os"), PermanentColumn);
                QCOMPARE(status(), QStringLiteral("Unapplied Configuration Changes"));
                QCOMPARE(statusColor(), QColor(Colors::okBg()));
                conf->entries[0].id = conf->entries.at(1).id;
                dialog->configChanged();
                QCOMPARE(status(), QStringLiteral("Two or more repositories have the Identifier, ") +
                                       conf->entries.at(1).id);
                QCOMPARE(statusColor(), QColor(Colors::errorBg()));
                conf->entries[2].id.clear();
                dialog->configChanged();
                QCOMPARE(status(), QStringLiteral("A repository has no Identifier"));
                QCOMPARE(statusColor(), QColor(Colors::errorBg()));
            }) >= 0);
}

void RepoEditorDialogWindowTest::theStatusNamesTheFirstOfSeveralDuplicateIdentifiers()
{
    backEnd->removeRepos();
    backEnd->putRepo("x.repo", "[a]\n[c]\n[b]\n[b]\n[c]\n");
    QVERIFY(run([this] {
                QCOMPARE(status(), QStringLiteral("Two or more repositories have the Identifier, c"));
                QVERIFY(!button("Apply")->isEnabled());
            }) >= 0);
}

void RepoEditorDialogWindowTest::tenThousandRepositoriesAreShownAndRemoved()
{
    QByteArray text;
    for (int i = 0; i < 10000; ++i) {
        text += "[r" + QByteArray::number(i) + "]\nname=R " + QByteArray::number(i) + '\n';
    }
    backEnd->putRepo("many.repo", text);
    QElapsedTimer time;
    time.start();
    QVERIFY(run([this] {
                click(QStringLiteral("extras"));
                QTest::keyClick(view, Qt::Key_A, Qt::ControlModifier);
                click("Remove");
                QCOMPARE(ids(), QStringList());
                QVERIFY(isUnapplied());
                click("Apply");
                QVERIFY(isClean());
            }) >= 0);
    QVERIFY2(time.elapsed() < 30000, QByteArray::number(time.elapsed()));
    QCOMPARE(backEnd->getRepo("many.repo"), QByteArray("(cannot be read)"));
}

void RepoEditorDialogWindowTest::aVeryLongTextCanBeEdited_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("name") << QByteArray("name=");
    QTest::newRow("URL") << QByteArray("baseurl=http://h/");
    QTest::newRow("credentials") << QByteArray("baseurl=http://h/vantor?u=n&p=");
    QTest::newRow("mirror list") << QByteArray("mirrorlist=http://h/");
    QTest::newRow("option") << QByteArray("exclude=");
}

void RepoEditorDialogWindowTest::aVeryLongTextCanBeEdited()
{
    const int size = repositorySectionLimit - 100;
    const QByteArray endless(size, 'x');
    QFETCH(QByteArray, before);
    backEnd->putRepo("endless.repo", "[zz]\n" + before + endless + '\n');
    QElapsedTimer time;
    time.start();
    QVERIFY(run([this] {
                click(QStringLiteral("zz"));
                QVERIFY(withForm([this] { click("Edit"); },
                                 [this] {
                                     Form::type(fields->file, backEnd->repoPath("other.repo"));
                                     clickForm("OK");
                                 }));
                click("Apply");
                QVERIFY(isClean());
            }) >= 0);
    qInfo("%lld ms", time.elapsed());
    QVERIFY2(time.elapsed() < 30000, QByteArray::number(time.elapsed()));
    QCOMPARE(backEnd->getRepo("other.repo"), "[zz]\n" + before + endless + '\n');
}

QTEST_MAIN(RepoEditorDialogWindowTest)
#include "RepoEditorDialogWindowTest.moc"

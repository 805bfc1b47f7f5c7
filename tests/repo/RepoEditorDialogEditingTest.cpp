// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "repo/RepoEditorContextMenu.h"
#include "repo/RepoEditorModel.h"
#include "tests/repo/ShownEditor.h"
#include "tests/support/Menus.h"
#include "widgets/Colors.h"

using namespace RepoEditor;

// Tests of the list in which the user switches, edits, adds, copies and removes repositories.
class RepoEditorDialogEditingTest : public ShownEditor
{
    Q_OBJECT

private Q_SLOTS:
    void twoClicksOnASessionBoxCountAsAChangeAlthoughTheStateIsRestored();
    void aClickOnASessionBoxTakesEffectWithoutApply();
    void clicksOnThePermanentBoxAlternatelyEnableAndDisableTheRepository();
    void theEditButtonEditsTheCurrentRepository();
    void aDoubleClickEditsTheRepository();
    void aDoubleClickOnABoxTogglesTheBoxOnce();
    void theEditEntryOfTheMenuEditsTheClickedRepository();
    void theEditEntryOpensNoFormIfTheUserClicksBelowTheLastRow();
    void cancellingTheFormKeepsTheRepositoryUnchanged();
    void anEditedIdentifierMovesTheRepositoryToItsSortedPlace();
    void theAddButtonListsANewRepository();
    void anAddedRepositoryWithoutAnIdentifierIsShownAsNew();
    void cancellingTheFormOfTheAddButtonAddsNoRepository();
    void anAcceptedTextIsUnchangedAfterItWasWrittenAndReadBack_data();
    void anAcceptedTextIsUnchangedAfterItWasWrittenAndReadBack();
    void theNextSectionBeginsOnItsOwnLineIfTheOptionsHaveNoFinalLineFeed();
    void theCopyButtonListsACopyOfTheCurrentRepository();
    void theStatusReportsADuplicateIfACopyKeepsTheIdentifier();
    void theStatusReportsADuplicateIfACopyIsUnchanged();
    void theEnterKeyAfterAButtonClickDoesNotDiscardEdits_data();
    void theEnterKeyAfterAButtonClickDoesNotDiscardEdits();
    void theRemoveButtonRemovesAllSelectedRows();
    void onlyOneRowIsRemovedIfSeveralOfItsCellsAreSelected();
    void theRemoveButtonChangesNothingIfNoRowIsSelected();
};

void RepoEditorDialogEditingTest::twoClicksOnASessionBoxCountAsAChangeAlthoughTheStateIsRestored()
{
    QCOMPARE(run([this] {
                 QCOMPARE(session.value(QStringLiteral("os")), true);
                 click(QStringLiteral("os"), SessionColumn);
                 QCOMPARE(session.value(QStringLiteral("os")), false);
                 QTest::qWait(QApplication::doubleClickInterval() + 50);
                 click(QStringLiteral("os"), SessionColumn);
                 QCOMPARE(session.value(QStringLiteral("os")), true);
                 QVERIFY(isClean());
                 QVERIFY(reposChangedSpy->isEmpty());
                 click("OK");
                 QVERIFY(!dialog->isVisible());
             }),
             int(QDialog::Accepted));
    QCOMPARE(reposChangedSpy->size(), 1);
}

void RepoEditorDialogEditingTest::aClickOnASessionBoxTakesEffectWithoutApply()
{
    const QByteArray before = backEnd->getRepo("os.repo");
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), SessionColumn);
                click("OK");
            }) >= 0);
    QCOMPARE(session.value(QStringLiteral("extras")), true);
    QCOMPARE(backEnd->getRepo("os.repo"), before);
    QVERIFY(run([this] { QCOMPARE(session.value(QStringLiteral("extras")), true); }) >= 0);
}

void RepoEditorDialogEditingTest::clicksOnThePermanentBoxAlternatelyEnableAndDisableTheRepository()
{
    QVERIFY(run([this] {
                QCOMPARE(entry(QStringLiteral("os")).enabled, 1);
                for (const int expected : {0, 2, 0, 2}) {
                    click(QStringLiteral("os"), PermanentColumn);
                    QCOMPARE(entry(QStringLiteral("os")).enabled, expected);
                    QVERIFY(isUnapplied());
                    click("Apply");
                    QVERIFY(backEnd->getRepo("os.repo").startsWith(
                        "[os]\nname=System\nbaseurl=http://h/os\nenabled=" +
                        QByteArray(expected == 2 ? "1\n" : "0\n")));
                    QTest::qWait(QApplication::doubleClickInterval() + 50);
                }
            }) >= 0);
    QCOMPARE(session.value(QStringLiteral("os")), true);
}

void RepoEditorDialogEditingTest::theEditButtonEditsTheCurrentRepository()
{
    QVERIFY(run([this] {
                click(QStringLiteral("updates"));
                QVERIFY(withForm([this] { click("Edit"); },
                                 [this] {
                                     QCOMPARE(fields->id->text(), QStringLiteral("updates"));
                                     QCOMPARE(fields->enabled->itemText(1), QStringLiteral("Default (Yes)"));
                                     Form::type(fields->name, QStringLiteral("Better"));
                                     clickForm("OK");
                                 }));
                QCOMPARE(entry(QStringLiteral("updates")).name, QStringLiteral("Better"));
                QCOMPARE(listed(NameColumn), (QStringList{"Extras", "System", "Better"}));
                QVERIFY(isUnapplied());
                QCOMPARE(current(), QStringLiteral("updates"));
            }) >= 0);
}

void RepoEditorDialogEditingTest::aDoubleClickEditsTheRepository()
{
    QVERIFY(run([this] {
                QVERIFY(withForm(
                    [this] {
                        QTest::mouseDClick(dialog->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                                           view->viewport()->mapTo(
                                               dialog.get(), place(QStringLiteral("extras"), NameColumn)));
                        // The view receives the two clicks as separate events, so the form may open only
                        // after mouseDClick().
                        QTRY_VERIFY(!form->isVisible());
                    },
                    [this] {
                        QCOMPARE(fields->id->text(), QStringLiteral("extras"));
                        Form::type(fields->name, QStringLiteral("More"));
                        clickForm("OK");
                    }));
                QCOMPARE(entry(QStringLiteral("extras")).name, QStringLiteral("More"));
            }) >= 0);
}

void RepoEditorDialogEditingTest::aDoubleClickOnABoxTogglesTheBoxOnce()
{
    QVERIFY(run([this] {
                QSignalSpy uses(dialog->findChild<Model*>(), SIGNAL(useChanged()));
                QVERIFY(withForm(
                    [this] {
                        QTest::mouseDClick(dialog->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                                           view->viewport()->mapTo(
                                               dialog.get(), place(QStringLiteral("extras"), SessionColumn)));
                        QTRY_VERIFY(!form->isVisible());
                    },
                    [this] { clickForm("Cancel"); }));
                QCOMPARE(uses.size(), 1);
                QCOMPARE(session.value(QStringLiteral("extras")), true);
            }) >= 0);
}

void RepoEditorDialogEditingTest::theEditEntryOfTheMenuEditsTheClickedRepository()
{
    QVERIFY(run([this] {
                QVERIFY(withForm(
                    [this] {
                        const QPoint where = view->viewport()->mapTo(
                            dialog.get(), place(QStringLiteral("extras"), IdentifierColumn));
                        withMenu(
                            [this, where] {
                                QTest::mouseClick(dialog->windowHandle(), Qt::RightButton, Qt::NoModifier,
                                                  where);
                            },
                            [](QMenu& menu) { choose(menu, QStringLiteral("Edit")); });
                    },
                    [this] {
                        QCOMPARE(fields->id->text(), QStringLiteral("extras"));
                        Form::type(fields->id, QStringLiteral("zextras"));
                        clickForm("OK");
                    }));
                QCOMPARE(listed(), (QStringList{"os", "updates", "zextras"}));
            }) >= 0);
}

void RepoEditorDialogEditingTest::theEditEntryOpensNoFormIfTheUserClicksBelowTheLastRow()
{
    QVERIFY(run([this] {
                const QPoint empty(60, view->viewport()->height() - 5);
                QVERIFY(!view->indexAt(empty).isValid());
                QVERIFY(withMenu(
                    [this, empty] {
                        QTest::mouseClick(dialog->windowHandle(), Qt::RightButton, Qt::NoModifier,
                                          view->viewport()->mapTo(dialog.get(), empty));
                    },
                    [](QMenu& menu) { choose(menu, QStringLiteral("Edit")); }));
                QVERIFY(!form->isVisible());
                // Even if the menu signalled an invalid index, no form would open.
                Q_EMIT view->getContextMenu()->edit(QModelIndex());
                QVERIFY(!form->isVisible());
                QVERIFY(isClean());
            }) >= 0);
}

void RepoEditorDialogEditingTest::cancellingTheFormKeepsTheRepositoryUnchanged()
{
    QVERIFY(run([this] {
                click(QStringLiteral("os"));
                for (const char* end : {"Cancel", "OK"}) {
                    QVERIFY(withForm([this] { click("Edit"); },
                                     [this, end] {
                                         if (qstrcmp(end, "Cancel") == 0) {
                                             Form::type(fields->id, QStringLiteral("other"));
                                         }
                                         clickForm(end);
                                     }));
                    QVERIFY(isClean());
                    QCOMPARE(listed(), (QStringList{"extras", "os", "updates"}));
                }
            }) >= 0);
    QVERIFY(!session.contains(QStringLiteral("other")));
}

void RepoEditorDialogEditingTest::anEditedIdentifierMovesTheRepositoryToItsSortedPlace()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"));
                QVERIFY(withForm([this] { click("Edit"); },
                                 [this] {
                                     Form::type(fields->id, QStringLiteral("zebra"));
                                     clickForm("OK");
                                 }));
                QCOMPARE(listed(), (QStringList{"os", "updates", "zebra"}));
                QCOMPARE(current(), QStringLiteral("zebra"));
                QCOMPARE(session.value(QStringLiteral("zebra"), true), false);
            }) >= 0);
}

void RepoEditorDialogEditingTest::theAddButtonListsANewRepository()
{
    QVERIFY(run([this] {
                click(QStringLiteral("os"));
                QVERIFY(withForm([this] { click("Add"); },
                                 [this] {
                                     QCOMPARE(fields->id->text(), QString());
                                     QCOMPARE(fields->enabled->currentIndex(), 1);
                                     QCOMPARE(fields->position->value(), 0.0);
                                     Form::type(fields->id, QStringLiteral("new"));
                                     Form::type(fields->urls, QStringLiteral("http://h/new"));
                                     clickForm("OK");
                                 }));
                QCOMPARE(ids().last(), QStringLiteral("new"));
                QCOMPARE(ids().size(), 4);
                QCOMPARE(current(), QStringLiteral("new"));
                QCOMPARE(view->selectedRows().size(), 1);
                QVERIFY(isUnapplied());
                QCOMPARE(session.value(QStringLiteral("new")), true);
                click("OK");
            }) == int(QDialog::Accepted));
    QCOMPARE(backEnd->getRepo("new.repo"), QByteArray("[new]\nbaseurl=http://h/new\n"));
    QCOMPARE(reposChangedSpy->size(), 1);
}

void RepoEditorDialogEditingTest::anAddedRepositoryWithoutAnIdentifierIsShownAsNew()
{
    QVERIFY(run([this] {
                QVERIFY(withForm([this] { click("Add"); },
                                 [this] {
                                     Form::type(fields->name, QStringLiteral("No identifier"));
                                     clickForm("OK");
                                 }));
                const int row = listedRow(QStringLiteral("(new)"));
                const QModelIndex cell = view->QTableView::model()->index(row, IdentifierColumn);
                QVERIFY(cell.data(Qt::FontRole).value<QFont>().italic());
                QCOMPARE(cell.data(Qt::FontRole).value<QFont>().family(), view->font().family());
                QCOMPARE(status(), QStringLiteral("A repository has no Identifier"));
                QVERIFY(withForm([this] { click("Edit"); },
                                 [this] {
                                     Form::type(fields->id, QStringLiteral("named"));
                                     clickForm("OK");
                                 }));
                QVERIFY(listed().contains(QStringLiteral("named")));
                QVERIFY(!listed().contains(QStringLiteral("(new)")));
                QVERIFY(isUnapplied());
            }) >= 0);
}

void RepoEditorDialogEditingTest::cancellingTheFormOfTheAddButtonAddsNoRepository()
{
    QVERIFY(run([this] {
                click(QStringLiteral("os"));
                QVERIFY(withForm([this] { click("Add"); },
                                 [this] {
                                     Form::type(fields->id, QStringLiteral("new"));
                                     clickForm("Cancel");
                                 }));
                QVERIFY(isClean());
                QCOMPARE(ids().size(), 3);
                QCOMPARE(current(), QStringLiteral("os"));
            }) >= 0);
}

void RepoEditorDialogEditingTest::anAcceptedTextIsUnchangedAfterItWasWrittenAndReadBack_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("urls");
    QTest::addColumn<QString>("options");
    QTest::newRow("usual") << "new"
                           << "http://h/new"
                           << "priority=1\n";
    QTest::newRow("unusual characters") << "Main-$basearch_1.2:3-${releasever}"
                                        << "http://h/new"
                                        << "";
    QTest::newRow("no URLs at all") << "new"
                                    << "[x]\nenabled=0\n#"
                                    << "";
    QTest::newRow("options over several lines") << "new"
                                                << "http://h/new"
                                                << "a=b\n [c]\n\td\n#[e]\n";
}

void RepoEditorDialogEditingTest::anAcceptedTextIsUnchangedAfterItWasWrittenAndReadBack()
{
    QFETCH(QString, id);
    QFETCH(QString, urls);
    QFETCH(QString, options);
    QVERIFY(run([this, id, urls, options] {
                QVERIFY(withForm([this] { click("Add"); },
                                 [this, id, urls, options] {
                                     Form::type(fields->id, id);
                                     Form::type(fields->urls, urls);
                                     fields->options->setPlainText(options);
                                     Form::type(fields->file, QStringLiteral("new.repo"));
                                     clickForm("OK");
                                 }));
                click("OK");
            }) == int(QDialog::Accepted));
    QVERIFY(run([this, id, urls, options] {
                QCOMPARE(ids().size(), 4);
                QCOMPARE(entry(id).baseurl, urls);
                QCOMPARE(entry(id).options, options);
                QCOMPARE(entry(id).enabled, 1);
                QCOMPARE(entry(id).file, backEnd->repoPath("new.repo"));
            }) >= 0);
}

void RepoEditorDialogEditingTest::theNextSectionBeginsOnItsOwnLineIfTheOptionsHaveNoFinalLineFeed()
{
    QVERIFY(run([this] {
                click(QStringLiteral("os"));
                QVERIFY(withForm([this] { click("Edit"); },
                                 [this] {
                                     Form::type(fields->options, QStringLiteral("a=b\nc=d"));
                                     clickForm("OK");
                                 }));
                QCOMPARE(entry(QStringLiteral("os")).options, QStringLiteral("a=b\nc=d"));
                click("Apply");
                QCOMPARE(backEnd->getRepo("os.repo"),
                         QByteArray("[os]\nname=System\nbaseurl=http://h/os\na=b\nc=d\n"
                                    "[extras]\nname=Extras\nbaseurl=http://h/extras\nenabled=0\n"));
            }) >= 0);
}

void RepoEditorDialogEditingTest::theCopyButtonListsACopyOfTheCurrentRepository()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"));
                QVERIFY(withForm([this] { click("Copy"); },
                                 [this] {
                                     QCOMPARE(fields->id->text(), QStringLiteral("extras"));
                                     QCOMPARE(fields->enabled->currentIndex(), 0);
                                     QCOMPARE(fields->position->value(), 2.0);
                                     Form::type(fields->id, QStringLiteral("extras2"));
                                     clickForm("OK");
                                 }));
                const Repo::Entry& copy = entry(QStringLiteral("extras2"));
                QCOMPARE(copy.file, entry(QStringLiteral("extras")).file);
                QCOMPARE(copy.position, 2.0);
                QCOMPARE(copy.baseurl, QStringLiteral("http://h/extras"));
                QCOMPARE(copy.name, QStringLiteral("Extras"));
                QCOMPARE(current(), QStringLiteral("extras2"));
                QVERIFY(isUnapplied());
                QCOMPARE(entry(QStringLiteral("extras")).id, QStringLiteral("extras"));
            }) >= 0);
}

void RepoEditorDialogEditingTest::theStatusReportsADuplicateIfACopyKeepsTheIdentifier()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"));
                QVERIFY(withForm([this] { click("Copy"); },
                                 [this] {
                                     Form::type(fields->name, QStringLiteral("Copied"));
                                     clickForm("OK");
                                 }));
                QCOMPARE(status(), QStringLiteral("Two or more repositories have the Identifier, extras"));
                QCOMPARE(statusColor(), QColor(Colors::errorBg()));
                QCOMPARE(ids().count(QStringLiteral("extras")), 2);
                const QList<ShownBox> boxes = withBoxes([this] { click("Apply"); });
                QCOMPARE(boxes.size(), 1);
                QCOMPARE(boxes.at(0).text,
                         QStringLiteral("Two or more repositories have the same Identifier(s), extras.  Only "
                                        "one repository will be applied for each Identifier.  Proceed?"));
                QCOMPARE(boxes.at(0).parent, dialog.get());
                QCOMPARE(ids().count(QStringLiteral("extras")), 1);
                QCOMPARE(entry(QStringLiteral("extras")).name, QStringLiteral("Extras"));
                QCOMPARE(listed(), (QStringList{"extras", "os", "updates"}));
                QVERIFY(isClean());
            }) >= 0);
    QCOMPARE(backEnd->getRepo("os.repo").count("[extras]"), 1);
}

void RepoEditorDialogEditingTest::theStatusReportsADuplicateIfACopyIsUnchanged()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"));
                QVERIFY(withForm([this] { click("Copy"); }, [this] { clickForm("OK"); }));
                QCOMPARE(status(), QStringLiteral("Two or more repositories have the Identifier, extras"));
                QCOMPARE(ids().count(QStringLiteral("extras")), 2);
                // After the copy, "Edit" edits the current repository, and copies nothing.
                click(QStringLiteral("os"));
                QVERIFY(withForm([this] { click("Edit"); }, [this] { clickForm("OK"); }));
                click("Reset All");
                QVERIFY(withForm([this] { click("Edit"); }, [this] { clickForm("OK"); }));
                QVERIFY(isClean());
            }) >= 0);
}

void RepoEditorDialogEditingTest::theEnterKeyAfterAButtonClickDoesNotDiscardEdits_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char* command : {"Remove", "Copy", "Add"}) {
        QTest::newRow(command) << QByteArray(command);
    }
}

void RepoEditorDialogEditingTest::theEnterKeyAfterAButtonClickDoesNotDiscardEdits()
{
    QFETCH(QByteArray, command);
    QVERIFY(run([this, command] {
                click(QStringLiteral("extras"));
                if (command == "Remove") {
                    click("Remove");
                } else {
                    QVERIFY(withForm([this, command] { click(command.constData()); },
                                     [this] {
                                         Form::type(fields->id, QStringLiteral("new"));
                                         Form::type(fields->urls, QStringLiteral("http://h/new"));
                                         clickForm("OK");
                                     }));
                }
                const QStringList before = ids();
                // If Enter opens a form, the timer cancels this form.
                const auto enter = [] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return); };
                QTimer escape;
                connect(&escape, &QTimer::timeout, &escape, [this] {
                    if (form->isVisible()) {
                        form->reject();
                    }
                });
                escape.start(10);
                enter();
                QVERIFY(dialog->isVisible());
                QCOMPARE(ids(), before);
                QVERIFY(isUnapplied());
            }) >= 0);
}

void RepoEditorDialogEditingTest::theRemoveButtonRemovesAllSelectedRows()
{
    backEnd->putRepo("more.repo", "[a]\n[b]\n[c]\n[d]\n");
    QVERIFY(run([this] {
                click(QStringLiteral("d"));
                click(QStringLiteral("a"), NameColumn, Qt::ControlModifier);
                click(QStringLiteral("extras"), IdentifierColumn, Qt::ControlModifier);
                click("Remove");
                QCOMPARE(listed(), (QStringList{"b", "c", "os", "updates"}));
                QStringList left = ids();
                left.sort();
                QCOMPARE(left, (QStringList{"b", "c", "os", "updates"}));
                QVERIFY(isUnapplied());
                QCOMPARE(current(), QStringLiteral("(none)"));
                QVERIFY(!button("Remove")->isEnabled());
                click("OK");
            }) == int(QDialog::Accepted));
    QCOMPARE(backEnd->getRepo("more.repo"), QByteArray("[b]\n\n[c]\n"));
}

void RepoEditorDialogEditingTest::onlyOneRowIsRemovedIfSeveralOfItsCellsAreSelected()
{
    QVERIFY(run([this] {
                view->setSelectionBehavior(QAbstractItemView::SelectItems);
                click(QStringLiteral("os"), IdentifierColumn);
                click(QStringLiteral("os"), NameColumn, Qt::ControlModifier);
                click("Remove");
                QCOMPARE(listed(), (QStringList{"extras", "updates"}));
            }) >= 0);
}

void RepoEditorDialogEditingTest::theRemoveButtonChangesNothingIfNoRowIsSelected()
{
    QVERIFY(run([this] {
                click(QStringLiteral("os"));
                click(QStringLiteral("os"), IdentifierColumn, Qt::ControlModifier);
                QVERIFY(view->selectedRows().isEmpty());
                QVERIFY(button("Remove")->isEnabled());
                click("Remove");
                QCOMPARE(ids().size(), 3);
                QVERIFY(isClean());
            }) >= 0);
}

QTEST_MAIN(RepoEditorDialogEditingTest)
#include "RepoEditorDialogEditingTest.moc"

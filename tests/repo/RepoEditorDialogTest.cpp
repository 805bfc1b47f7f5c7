#include "repo/RepoEditorDialog.h"

#include <QtTest>
#include <QtWidgets>

#include <functional>
#include <memory>

#include "app/base/RepositoryFileLimit.h"
#include "repo/RepoEditorConfigDialog.h"
#include "repo/RepoEditorContextMenu.h"
#include "repo/RepoEditorModel.h"
#include "repo/RepoEditorView.h"
#include "tests/repo/Assistive.h"
#include "tests/repo/Editor.h"
#include "tests/repo/Form.h"
#include "widgets/Colors.h"
#include "widgets/HFrameLabel.h"
#include "widgets/HSeparator.h"

using namespace RepoEditor;

namespace {

struct ShownBox
{
    QString title;
    QString text;
    QWidget* parent;
};

} // namespace

class RepoEditorDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void theWindowIsAsDescribed();
    void theButtonsHaveTheirToolTips();
    void itFitsASmallScreen();
    void aLongIdentifierDoesNotWidenTheWindow();
    void theStatusIsNotCutOff();
    void thePasswordStandsNowhereInClear();
    void itOpensSortedByIdentifier();
    void identifiersAreSortedAsPeopleCount();
    void itOpensCleanWithoutACurrentRow();
    void everyShowingReadsAgain();
    void aFailedReadShowsNothing();
    void aFailedReadTellsNothing();
    void returnDoesNotApply();

    void theButtonsFollowTheCurrentRow();
    void browseOpensTheCurrentRepository();
    void browseTellsWhenThereIsNoUrl();

    void twoClicksOnTheSessionBoxAreStillAChange();
    void sessionTogglesNeedNoApply();
    void thePermanentStateIsNeverUnspecifiedAgain();

    void editingTheCurrentRepository();
    void editingByDoubleClick();
    void aDoubleClickOnABoxTogglesOnce();
    void editingFromTheMenu();
    void theMenuBelowTheLastRowEditsNothing();
    void editingThatIsCancelledChangesNothing();
    void anEditedRepositoryStaysSorted();
    void addingARepository();
    void addingWithoutAnIdentifierShowsNew();
    void addingThatIsCancelledChangesNothing();
    void whatTheFormAcceptsIsReadBack_data();
    void whatTheFormAcceptsIsReadBack();
    void optionsWithoutALineFeedAreEndedByTheSeparator();
    void copyingARepository();
    void copyingWithoutANewIdentifier();
    void copyingWithoutAnyChange();
    void enterAfterACommandDropsNothing_data();
    void enterAfterACommandDropsNothing();
    void removingThreeSelectedRows();
    void removingCellsOfOneRow();
    void removingWithoutASelectionChangesNothing();

    void theStatus();
    void theFirstDuplicateIsNamed();

    void okWithoutChangesWritesNothing();
    void okWritesAndCloses();
    void okStaysOpenWhenNothingWasWritten();
    void applyWritesAndStaysOpen();
    void applyThatIsDeclinedKeepsEverything();
    void applyThatFailsKeepsEverything();
    void applyThatFailsAfterRemovalShowsWhatIsLeft();
    void whatOthersChangeMeanwhileStays();
    void whatOthersChangeMeanwhileCanBeReadAgain();
    void afterApplyOthersChangesAreShown();
    void tenThousandRepositoriesAreShownAndRemoved();
    void anEndlessTextIsNoObstacle_data();
    void anEndlessTextIsNoObstacle();
    void resetAllBringsEverythingBack();
    void resetAllKeepsTheCurrentRepository();
    void resetAllThatFailsShowsWhatWasRead();
    void whatWasReadInPartIsNotWritten();
    void cancelUndoesAndCloses();
    void cancelAfterApplyStillTells();
    void closingTheWindowKeepsTheSession();
    void closingTheWindowDropsWhatIsNotApplied();
    void closingTheWindowKeepsWhatWasSwitched();
    void closingWithoutChangesTellsNothing();
    void closingTellsWhenForced();
    void theSlotForResettingDoesNothing();

private:
    using Use = std::function<void()>;

    // Runs the dialog and has the user do something; a dialog that is still open then is closed.
    int run(const Use& use)
    {
        bool used = false;
        QTimer::singleShot(0, dialog.get(), [this, &use, &used] {
            used = waitForFocus(dialog.get());
            use();
            if (dialog->isVisible()) {
                dialog->close();
            }
        });
        const int result = dialog->exec();
        used = waitForFocus(window.get()) && used;
        return used ? result : -1;
    }
    // Does something that opens the form, and has the user do something there; cancels it if it is still open
    // then.
    bool withForm(const Use& open, const Use& use)
    {
        bool used = false;
        QTimer timer;
        connect(&timer, &QTimer::timeout, &timer, [this, &timer, &use, &used] {
            if (form->isVisible()) {
                timer.stop();
                used = waitForFocus(form);
                use();
                if (form->isVisible()) {
                    form->reject();
                }
            }
        });
        timer.start(5);
        open(); // returns when the form has been closed
        return used && waitForFocus(dialog.get());
    }
    // Answers the message boxes that something opens.
    QList<ShownBox> withBoxes(const Use& open, const char* button = "&Yes")
    {
        QList<ShownBox> seen;
        QTimer timer;
        QPointer<QMessageBox> last;
        bool answering = false;
        connect(&timer, &QTimer::timeout, &timer, [&seen, &last, &answering, button] {
            // A click lets the time pass, and may be lost.
            if (answering) {
                return;
            }
            const QScopedValueRollback<bool> guard(answering, true);
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr || QApplication::activeWindow() != box) {
                return;
            }
            if (last != box) {
                last = box;
                seen.append({box->windowTitle(), box->text(), box->parentWidget()});
                qInfo("%s", qPrintable(box->text())); // a failure tells numbers only
            }
            for (QAbstractButton* each : box->buttons()) {
                if (each->text() == QLatin1String(button)) {
                    QTest::mouseClick(each, Qt::LeftButton);
                    return;
                }
            }
            QTest::keyClick(box, Qt::Key_Return);
        });
        timer.start(5);
        open();
        if (dialog->isVisible() && !seen.isEmpty() && !waitForFocus(dialog.get())) {
            seen.append({QStringLiteral("the focus does not come back"), QString(), nullptr});
        }
        return seen;
    }
    QPushButton* button(const char* text) const
    {
        for (QPushButton* each : dialog->findChildren<QPushButton*>(QString(), Qt::FindDirectChildrenOnly)) {
            if (each->text() == QLatin1String(text)) {
                return each;
            }
        }
        qFatal("no button %s", text);
    }
    void click(const char* text) const { QTest::mouseClick(button(text), Qt::LeftButton); }
    void clickForm(const char* text) const { QTest::mouseClick(Form::button(form, text), Qt::LeftButton); }
    int listedRow(const QString& id) const
    {
        const int row = listed().indexOf(id);
        if (row < 0) {
            qFatal("no repository %s", qPrintable(id));
        }
        return row;
    }
    QPoint place(const QString& id, int column) const
    {
        const QRect cell = view->visualRect(view->QTableView::model()->index(listedRow(id), column));
        return QPoint(cell.left() + 10, cell.center().y());
    }
    void click(const QString& id, int column = IdentifierColumn,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::mouseClick(dialog->windowHandle(), Qt::LeftButton, modifiers,
                          view->viewport()->mapTo(dialog.get(), place(id, column)));
    }
    QStringList listed(int column = IdentifierColumn) const
    {
        QStringList ids;
        const QAbstractItemModel* rows = view->QTableView::model();
        for (int row = 0; row < rows->rowCount(); ++row) {
            ids << rows->index(row, column).data().toString();
        }
        return ids;
    }
    QStringList ids() const
    {
        QStringList result;
        for (const Repo::Entry& entry : qAsConst(conf->entries)) {
            result << entry.id;
        }
        return result;
    }
    const Repo::Entry& entry(const QString& id) const
    {
        const int row = ids().lastIndexOf(id);
        if (row < 0) {
            qFatal("no repository %s", qPrintable(id));
        }
        return conf->entries.at(row);
    }
    QString current() const
    {
        const int row = view->currentRow();
        return row < 0 ? QStringLiteral("(none)") : conf->entries.at(row).id;
    }
    QString status() const
    {
        return dialog->findChild<HFrameLabel*>(QString(), Qt::FindDirectChildrenOnly)->text();
    }
    QColor statusColor() const
    {
        return dialog->findChild<HFrameLabel*>(QString(), Qt::FindDirectChildrenOnly)
            ->palette()
            .color(QPalette::Window);
    }
    bool isClean() const
    {
        return status().isEmpty() && !button("Apply")->isEnabled() && !button("Reset All")->isEnabled();
    }
    bool isUnapplied() const
    {
        return status() == QStringLiteral("Unapplied Configuration Changes") &&
               button("Apply")->isEnabled() && button("Reset All")->isEnabled();
    }

    std::unique_ptr<BackEnd> backEnd;
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;
    std::unique_ptr<QWidget> window;
    std::unique_ptr<Dialog> dialog;
    View* view = nullptr;
    ConfigDialog* form = nullptr;
    std::unique_ptr<Form> fields;
    std::unique_ptr<QSignalSpy> told;
};

void RepoEditorDialogTest::initTestCase()
{
    backEnd = std::make_unique<BackEnd>();
    backEnd->collect(10);
}

void RepoEditorDialogTest::init()
{
    backEnd->removeRepos();
    backEnd->putMain("[main]\nkeepcache=1\n");
    backEnd->putRepo("os.repo", "[os]\nname=System\nbaseurl=http://h/os\n\n"
                                "[extras]\nname=Extras\nbaseurl=http://h/extras\nenabled=0\n");
    backEnd->putRepo("updates.repo", "[updates]\nname=Updates\nbaseurl=http://h/updates\nenabled=1\n");
    session.clear();
    conf = std::make_unique<YumConfIO>(requests, session);
    window = std::make_unique<QWidget>();
    window->resize(200, 100);
    window->show();
    QVERIFY(waitForFocus(window.get()));
    dialog = std::make_unique<Dialog>(&backEnd->yumIO, conf.get(), window.get());
    view = dialog->findChild<View*>();
    form = dialog->findChild<ConfigDialog*>();
    fields = std::make_unique<Form>(form);
    told = std::make_unique<QSignalSpy>(dialog.get(), SIGNAL(reposChanged()));
}

void RepoEditorDialogTest::cleanup()
{
    told.reset();
    fields.reset();
    dialog.reset();
    window.reset();
    conf.reset();
}

void RepoEditorDialogTest::cleanupTestCase()
{
    backEnd.reset();
}

void RepoEditorDialogTest::theWindowIsAsDescribed()
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

void RepoEditorDialogTest::theButtonsHaveTheirToolTips()
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

void RepoEditorDialogTest::itFitsASmallScreen()
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

void RepoEditorDialogTest::aLongIdentifierDoesNotWidenTheWindow()
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

void RepoEditorDialogTest::theStatusIsNotCutOff()
{
    backEnd->putRepo("double.repo", "[sixteen-letters-]\n[sixteen-letters-]\n");
    QVERIFY(run([this] {
                const QLabel* text = dialog->findChild<HFrameLabel*>()->findChild<QLabel*>();
                QCOMPARE(text->text(),
                         QStringLiteral("Two or more repositories have the Identifier, sixteen-letters-"));
                QVERIFY(text->width() >= text->fontMetrics().horizontalAdvance(text->text()));
            }) >= 0);
}

void RepoEditorDialogTest::thePasswordStandsNowhereInClear()
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

void RepoEditorDialogTest::itOpensSortedByIdentifier()
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

void RepoEditorDialogTest::identifiersAreSortedAsPeopleCount()
{
    backEnd->removeRepos();
    backEnd->putRepo("x.repo", "[repo10]\n[repo9]\n[Repo2]\n");
    QVERIFY(run([this] { QCOMPARE(listed(), (QStringList{"Repo2", "repo9", "repo10"})); }) >= 0);
}

void RepoEditorDialogTest::itOpensCleanWithoutACurrentRow()
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

void RepoEditorDialogTest::everyShowingReadsAgain()
{
    QVERIFY(run([this] { QCOMPARE(listed().size(), 3); }) >= 0);
    backEnd->putRepo("new.repo", "[another]\nbaseurl=http://h/another\n");
    QVERIFY(run([this] { QCOMPARE(listed(), (QStringList{"another", "extras", "os", "updates"})); }) >= 0);
}

void RepoEditorDialogTest::aFailedReadShowsNothing()
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

void RepoEditorDialogTest::aFailedReadTellsNothing()
{
    QVERIFY(run([this] { click(QStringLiteral("os"), SessionColumn); }) >= 0);
    QCOMPARE(told->size(), 1);
    backEnd->putRepo("updates.repo", "[updates\n");
    dialog->reposChangedForced = true;
    QCOMPARE(withBoxes([this] { dialog->exec(); }).size(), 1);
    QCOMPARE(told->size(), 1);
}

void RepoEditorDialogTest::returnDoesNotApply()
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

void RepoEditorDialogTest::theButtonsFollowTheCurrentRow()
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

void RepoEditorDialogTest::browseOpensTheCurrentRepository()
{
    backEnd->installBrowser();
    QVERIFY(run([this] {
                click(QStringLiteral("updates"));
                click("Browse Repository");
                QCOMPARE(BackEnd::browsed(), QStringList{QStringLiteral("http://h/updates")});
            }) >= 0);
}

void RepoEditorDialogTest::browseTellsWhenThereIsNoUrl()
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

void RepoEditorDialogTest::twoClicksOnTheSessionBoxAreStillAChange()
{
    QCOMPARE(run([this] {
                 QCOMPARE(session.value(QStringLiteral("os")), true);
                 click(QStringLiteral("os"), SessionColumn);
                 QCOMPARE(session.value(QStringLiteral("os")), false);
                 QTest::qWait(QApplication::doubleClickInterval() + 50);
                 click(QStringLiteral("os"), SessionColumn);
                 QCOMPARE(session.value(QStringLiteral("os")), true);
                 QVERIFY(isClean());
                 QVERIFY(told->isEmpty());
                 click("OK");
                 QVERIFY(!dialog->isVisible());
             }),
             int(QDialog::Accepted));
    QCOMPARE(told->size(), 1);
}

void RepoEditorDialogTest::sessionTogglesNeedNoApply()
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

void RepoEditorDialogTest::thePermanentStateIsNeverUnspecifiedAgain()
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

void RepoEditorDialogTest::editingTheCurrentRepository()
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

void RepoEditorDialogTest::editingByDoubleClick()
{
    QVERIFY(run([this] {
                QVERIFY(withForm(
                    [this] {
                        QTest::mouseDClick(dialog->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                                           view->viewport()->mapTo(
                                               dialog.get(), place(QStringLiteral("extras"), NameColumn)));
                        // The window system sends the clicks one by one.
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

void RepoEditorDialogTest::aDoubleClickOnABoxTogglesOnce()
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

void RepoEditorDialogTest::editingFromTheMenu()
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

void RepoEditorDialogTest::theMenuBelowTheLastRowEditsNothing()
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
                // Nor does the signal, should it come.
                Q_EMIT view->getContextMenu()->edit(QModelIndex());
                QVERIFY(!form->isVisible());
                QVERIFY(isClean());
            }) >= 0);
}

void RepoEditorDialogTest::editingThatIsCancelledChangesNothing()
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

void RepoEditorDialogTest::anEditedRepositoryStaysSorted()
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

void RepoEditorDialogTest::addingARepository()
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
    QCOMPARE(told->size(), 1);
}

void RepoEditorDialogTest::addingWithoutAnIdentifierShowsNew()
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

void RepoEditorDialogTest::addingThatIsCancelledChangesNothing()
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

void RepoEditorDialogTest::whatTheFormAcceptsIsReadBack_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("urls");
    QTest::addColumn<QString>("options");
    QTest::newRow("usual") << "new"
                           << "http://h/new"
                           << "priority=1\n";
    QTest::newRow("other signs") << "Main-$basearch_1.2:3-${releasever}"
                                 << "http://h/new"
                                 << "";
    QTest::newRow("no URLs at all") << "new"
                                    << "[x]\nenabled=0\n#"
                                    << "";
    QTest::newRow("options over several lines") << "new"
                                                << "http://h/new"
                                                << "a=b\n [c]\n\td\n#[e]\n";
}

void RepoEditorDialogTest::whatTheFormAcceptsIsReadBack()
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

void RepoEditorDialogTest::optionsWithoutALineFeedAreEndedByTheSeparator()
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

void RepoEditorDialogTest::copyingARepository()
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

void RepoEditorDialogTest::copyingWithoutANewIdentifier()
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

void RepoEditorDialogTest::copyingWithoutAnyChange()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"));
                QVERIFY(withForm([this] { click("Copy"); }, [this] { clickForm("OK"); }));
                QCOMPARE(status(), QStringLiteral("Two or more repositories have the Identifier, extras"));
                QCOMPARE(ids().count(QStringLiteral("extras")), 2);
                // The next form is not a copy's.
                click(QStringLiteral("os"));
                QVERIFY(withForm([this] { click("Edit"); }, [this] { clickForm("OK"); }));
                click("Reset All");
                QVERIFY(withForm([this] { click("Edit"); }, [this] { clickForm("OK"); }));
                QVERIFY(isClean());
            }) >= 0);
}

void RepoEditorDialogTest::enterAfterACommandDropsNothing_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char* command : {"Remove", "Copy", "Add"}) {
        QTest::newRow(command) << QByteArray(command);
    }
}

void RepoEditorDialogTest::enterAfterACommandDropsNothing()
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
                // Whatever it does, in a form for one, is taken back.
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

void RepoEditorDialogTest::removingThreeSelectedRows()
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

void RepoEditorDialogTest::removingCellsOfOneRow()
{
    QVERIFY(run([this] {
                view->setSelectionBehavior(QAbstractItemView::SelectItems);
                click(QStringLiteral("os"), IdentifierColumn);
                click(QStringLiteral("os"), NameColumn, Qt::ControlModifier);
                click("Remove");
                QCOMPARE(listed(), (QStringList{"extras", "updates"}));
            }) >= 0);
}

void RepoEditorDialogTest::removingWithoutASelectionChangesNothing()
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

void RepoEditorDialogTest::theStatus()
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

void RepoEditorDialogTest::theFirstDuplicateIsNamed()
{
    backEnd->removeRepos();
    backEnd->putRepo("x.repo", "[a]\n[c]\n[b]\n[b]\n[c]\n");
    QVERIFY(run([this] {
                QCOMPARE(status(), QStringLiteral("Two or more repositories have the Identifier, c"));
                QVERIFY(!button("Apply")->isEnabled());
            }) >= 0);
}

void RepoEditorDialogTest::okWithoutChangesWritesNothing()
{
    // A write would put this into another form.
    backEnd->putRepo("os.repo", "# comment\n[os]\nenabled = 1\n");
    QCOMPARE(run([this] { click("OK"); }), int(QDialog::Accepted));
    QCOMPARE(backEnd->getRepo("os.repo"), QByteArray("# comment\n[os]\nenabled = 1\n"));
    QCOMPARE(told->size(), 0);
}

void RepoEditorDialogTest::okWritesAndCloses()
{
    QCOMPARE(run([this] {
                 click(QStringLiteral("extras"), PermanentColumn);
                 click("OK");
             }),
             int(QDialog::Accepted));
    QVERIFY(
        backEnd->getRepo("os.repo").contains("[extras]\nname=Extras\nbaseurl=http://h/extras\nenabled=1\n"));
    QCOMPARE(told->size(), 1);
}

void RepoEditorDialogTest::okStaysOpenWhenNothingWasWritten()
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
    QCOMPARE(told->size(), 0);
}

void RepoEditorDialogTest::applyWritesAndStaysOpen()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), PermanentColumn);
                click("Apply");
                QVERIFY(dialog->isVisible());
                QVERIFY(isClean());
                QCOMPARE(current(), QStringLiteral("(none)"));
                QVERIFY(!button("Edit")->isEnabled());
                QVERIFY(backEnd->getRepo("os.repo").contains("enabled=1"));
                QVERIFY(told->isEmpty());
            }) >= 0);
    QCOMPARE(told->size(), 1);
    // The next showing begins anew.
    QVERIFY(run([] {}) >= 0);
    QCOMPARE(told->size(), 1);
}

void RepoEditorDialogTest::applyThatIsDeclinedKeepsEverything()
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
    QCOMPARE(told->size(), 0);
}

void RepoEditorDialogTest::applyThatFailsKeepsEverything()
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
    QCOMPARE(told->size(), 0);
}

void RepoEditorDialogTest::applyThatFailsAfterRemovalShowsWhatIsLeft()
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

void RepoEditorDialogTest::whatOthersChangeMeanwhileStays()
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
                // The edits stay in the window.
                QVERIFY(dialog->isVisible());
                QVERIFY(isUnapplied());
                QCOMPARE(entry(QStringLiteral("extras")).enabled, 2);
                QCOMPARE(current(), QStringLiteral("extras"));
            }) >= 0);
    QCOMPARE(backEnd->getRepo("os.repo"), theirs);
    QCOMPARE(backEnd->getRepo("made.repo"), theirs);
    QCOMPARE(told->size(), 0);
}

void RepoEditorDialogTest::whatOthersChangeMeanwhileCanBeReadAgain()
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
                // And then it can be edited.
                click(QStringLiteral("extras"), PermanentColumn);
                click("Apply");
                QVERIFY(isClean());
            }) >= 0);
    QCOMPARE(backEnd->getRepo("os.repo"),
             QByteArray("[os]\nname=Theirs\n\n[extras]\nname=Theirs too\nenabled=1\n"));
}

void RepoEditorDialogTest::afterApplyOthersChangesAreShown()
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
    QCOMPARE(told->size(), 1);
}

void RepoEditorDialogTest::tenThousandRepositoriesAreShownAndRemoved()
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

void RepoEditorDialogTest::anEndlessTextIsNoObstacle_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("name") << QByteArray("name=");
    QTest::newRow("URL") << QByteArray("baseurl=http://h/");
    QTest::newRow("credentials") << QByteArray("baseurl=http://h/vantor?u=n&p=");
    QTest::newRow("mirror list") << QByteArray("mirrorlist=http://h/");
    QTest::newRow("option") << QByteArray("exclude=");
}

void RepoEditorDialogTest::anEndlessTextIsNoObstacle()
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

void RepoEditorDialogTest::resetAllBringsEverythingBack()
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
    QCOMPARE(told->size(), 0);
}

void RepoEditorDialogTest::resetAllKeepsTheCurrentRepository()
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
    // The last of those that have the identifier.
    backEnd->putRepo("x.repo", "[same]\nname=1\n[same]\nname=2\n");
    QVERIFY(run([this] {
                click(QStringLiteral("same"), PermanentColumn);
                click("Reset All");
                QCOMPARE(view->currentRow(), ids().lastIndexOf(QStringLiteral("same")));
            }) >= 0);
}

void RepoEditorDialogTest::resetAllThatFailsShowsWhatWasRead()
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

void RepoEditorDialogTest::whatWasReadInPartIsNotWritten()
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

void RepoEditorDialogTest::cancelUndoesAndCloses()
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
    QCOMPARE(told->size(), 0);
}

void RepoEditorDialogTest::cancelAfterApplyStillTells()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), PermanentColumn);
                click("Apply");
                click(QStringLiteral("os"), PermanentColumn);
                click("Cancel");
            }) == int(QDialog::Rejected));
    QCOMPARE(told->size(), 1);
    QCOMPARE(entry(QStringLiteral("extras")).enabled, 2);
    QCOMPARE(entry(QStringLiteral("os")).enabled, 1);
}

void RepoEditorDialogTest::closingTheWindowKeepsTheSession()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), SessionColumn);
                QTest::keyClick(view, Qt::Key_Escape);
                QVERIFY(!dialog->isVisible());
            }) == int(QDialog::Rejected));
    QCOMPARE(session.value(QStringLiteral("extras")), true);
    QCOMPARE(told->size(), 1);
}

void RepoEditorDialogTest::closingTheWindowDropsWhatIsNotApplied()
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
                QTest::keyClick(view, Qt::Key_Escape);
                QVERIFY(!dialog->isVisible());
            }) == int(QDialog::Rejected));
    QCOMPARE(backEnd->getRepo("os.repo"), before);
    // The list says again what the files say, and the session is that which the packages were collected for.
    QCOMPARE(entry(QStringLiteral("os")).enabled, 1);
    QCOMPARE(entry(QStringLiteral("extras")).baseurl, QStringLiteral("http://h/extras"));
    QCOMPARE(session.value(QStringLiteral("extras")), false);
    QCOMPARE(told->size(), 0);
}

void RepoEditorDialogTest::closingTheWindowKeepsWhatWasSwitched()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), SessionColumn);
                click(QStringLiteral("os"), PermanentColumn);
                dialog->close();
            }) == int(QDialog::Rejected));
    QCOMPARE(session.value(QStringLiteral("extras")), true);
    QCOMPARE(entry(QStringLiteral("os")).enabled, 1);
    QCOMPARE(told->size(), 1);
}

void RepoEditorDialogTest::closingWithoutChangesTellsNothing()
{
    QVERIFY(run([this] { dialog->close(); }) == int(QDialog::Rejected));
    QVERIFY(run([this] { click("Cancel"); }) == int(QDialog::Rejected));
    QCOMPARE(told->size(), 0);
}

void RepoEditorDialogTest::closingTellsWhenForced()
{
    dialog->reposChangedForced = true;
    bool hidden = false;
    const QMetaObject::Connection connection = connect(dialog.get(), &Dialog::reposChanged, dialog.get(),
                                                       [this, &hidden] { hidden = !dialog->isVisible(); });
    QVERIFY(run([this] { click("Cancel"); }) == int(QDialog::Rejected));
    QVERIFY(hidden);
    disconnect(connection);
    QCOMPARE(told->size(), 1);
    dialog->reposChangedForced = false;
    QVERIFY(run([this] { click("OK"); }) == int(QDialog::Accepted));
    QCOMPARE(told->size(), 1);
}

void RepoEditorDialogTest::theSlotForResettingDoesNothing()
{
    QVERIFY(run([this] {
                click(QStringLiteral("extras"), PermanentColumn);
                dialog->reset();
                QVERIFY(isUnapplied());
                QCOMPARE(current(), QStringLiteral("extras"));
            }) >= 0);
}

QTEST_MAIN(RepoEditorDialogTest)
#include "RepoEditorDialogTest.moc"

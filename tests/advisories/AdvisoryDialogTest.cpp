// SPDX-License-Identifier: GPL-2.0-or-later

#include "advisories/AdvisoryDialog.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "tests/packagetable/Table.h"
#include "tests/support/Buttons.h"
#include "widgets/FilteredList.h"
#include "widgets/HTableView.h"

class AdvisoryDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { dialog.reset(); }
    void cleanupTestCase() { table.reset(); }
    void theListShowsTheAdvisories();
    void theDetailsPaneDescribesTheCurrentAdvisory();
    void reloadingTheListKeepsTheCurrentAdvisory();
    void anEmptyListSaysThatNoAdvisoryWasFound();
    void aButtonMarksTheUpdatesInTheSelectedAdvisories();
    void altSMarksAllSecurityUpdates();
    void aMessageExplainsWhyAPackageCannotBeMarked();
    void theMarkUpdatesButtonIsDisabledIfTheSelectedAdvisoriesHaveNoMissingUpdate();
    void enterPressesNoButton();
    void escapeClosesTheDialog();
    void theFirstEscapeStopsTheComparisonAndTheSecondEscapeClosesTheDialog();
    void tabMovesTheFocusThroughAllPartsOfTheDialog();

private:
    QPushButton* button(const QString& text) const { return buttonOf(dialog.get(), text); }
    HTableView* view() const { return dialog->findChild<HTableView*>(); }
    QStringList listed() const
    {
        QStringList found;
        for (int row = 0; row < view()->model()->rowCount(); ++row) {
            found << view()->model()->index(row, 0).data().toString();
        }
        return found;
    }
    QString details() const { return dialog->findChild<QTextEdit*>()->toPlainText(); }
    void select(const QStringList& ids) const
    {
        view()->clearSelection();
        for (const QString& id : ids) {
            view()->selectionModel()->select(view()->model()->index(listed().indexOf(id), 0),
                                             QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }
    // Returns the names of the packages that updatesWanted() has emitted since the previous call of this
    // function.
    QStringList wanted()
    {
        QStringList names;
        for (const QList<QVariant>& signal : qAsConst(*updatesWanted)) {
            for (const Package::Entry* entry : signal.at(0).value<QVector<Package::Entry*>>()) {
                names << entry->name;
            }
        }
        updatesWanted->clear();
        return names;
    }
    bool resultIsShown(const QString& text) const
    {
        for (const QLabel* label : dialog->findChildren<QLabel*>()) {
            if (label->isVisible() && label->text() == text) {
                return true;
            }
        }
        return false;
    }

    std::unique_ptr<Table> table;
    std::unique_ptr<AdvisoryDialog> dialog;
    std::unique_ptr<QSignalSpy> updatesWanted;
};

void AdvisoryDialogTest::initTestCase()
{
    qRegisterMetaType<QVector<Package::Entry*>>("QVector<Package::Entry*>");
    table = std::make_unique<Table>();
}

void AdvisoryDialogTest::init()
{
    using S = StandIn;
    table->standIn.setAdvisories({S::advisory("A-1", true, {S::advised("tool", 0)}),
                                  S::advisory("B-2", false, {S::advised("many", 0)}),
                                  S::advisory("C-3", true, {S::advised("shell", 1)}),
                                  S::advisory("D-4", true, {S::advised("shell", 2), S::advised("tool", 0)})});
    table->collectUsual();
    QVERIFY(table->yumIO.collectAdvisories());
    dialog = std::make_unique<AdvisoryDialog>(&table->yumIO, &table->window);
    updatesWanted =
        std::make_unique<QSignalSpy>(dialog.get(), SIGNAL(updatesWanted(const QVector<Package::Entry*>&)));
    dialog->load();
    dialog->show();
    QApplication::setActiveWindow(dialog.get());
    QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
}

void AdvisoryDialogTest::theListShowsTheAdvisories()
{
    QCOMPARE(dialog->windowTitle(), QString("VYRE Advisories"));
    QCOMPARE(listed(), (QStringList{"A-1", "B-2", "C-3", "D-4"}));
    QVERIFY(view()->hasFocus());
    dialog->findChild<FilteredList*>()->setExpression("bugfix");
    QCOMPARE(listed(), QStringList{"B-2"});
}

void AdvisoryDialogTest::theDetailsPaneDescribesTheCurrentAdvisory()
{
    QVERIFY(details().startsWith("A-1: About A-1\n"));
    QVERIFY(details().contains("tool-2-1.x86_64"));
    QTest::keyClick(view(), Qt::Key_Down);
    QVERIFY(details().startsWith("B-2: About B-2\n"));
    dialog->findChild<FilteredList*>()->setExpression("nothing like it");
    QCOMPARE(details(), QString());
}

void AdvisoryDialogTest::reloadingTheListKeepsTheCurrentAdvisory()
{
    QTest::keyClick(view(), Qt::Key_Down);
    table->standIn.setAdvisories({StandIn::advisory("Z-9", true, {StandIn::advised("tool", 0)}),
                                  StandIn::advisory("A-1", true, {StandIn::advised("tool", 0)}),
                                  StandIn::advisory("B-2", false, {StandIn::advised("many", 0)})});
    table->collectUsual();
    QVERIFY(table->yumIO.collectAdvisories());
    dialog->load();
    QCOMPARE(listed(), (QStringList{"Z-9", "A-1", "B-2"}));
    QVERIFY(details().startsWith("B-2: About B-2\n"));
}

void AdvisoryDialogTest::anEmptyListSaysThatNoAdvisoryWasFound()
{
    table->standIn.setAdvisories({});
    table->collectUsual();
    QVERIFY(table->yumIO.collectAdvisories());
    dialog->load();
    QCOMPARE(view()->accessibleDescription(),
             QString("No repository has an advisory about an installed package."));
    QVERIFY(!button("&Mark Updates")->isEnabled());
    QVERIFY(!button("Mark All &Security Updates")->isEnabled());
    QCOMPARE(details(), QString());
}

void AdvisoryDialogTest::aButtonMarksTheUpdatesInTheSelectedAdvisories()
{
    select({"A-1", "B-2"});
    QTest::mouseClick(button("&Mark Updates"), Qt::LeftButton);
    QCOMPARE(wanted(), (QStringList{"tool", "many"}));
    QVERIFY(resultIsShown("Packages marked for an update: 2"));
}

void AdvisoryDialogTest::altSMarksAllSecurityUpdates()
{
    QTimer::singleShot(500, dialog.get(), [] {
        if (QWidget* opened = QApplication::activeModalWidget()) {
            QTest::keyClick(opened, Qt::Key_Escape);
        }
    });
    QTest::keyClick(dialog->windowHandle(), Qt::Key_S, Qt::AltModifier);
    // The key press only pushes the button down. The button comes up a moment later, and only then acts.
    QTRY_COMPARE(updatesWanted->count(), 1);
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    QCOMPARE(wanted(), QStringList{"tool"});
}

void AdvisoryDialogTest::aMessageExplainsWhyAPackageCannotBeMarked()
{
    select({"D-4"});
    QString shown;
    QTimer::singleShot(200, dialog.get(), [&shown] {
        QWidget* opened = QApplication::activeModalWidget();
        QVERIFY(opened != nullptr);
        shown = opened->windowTitle() + '|' + opened->findChild<QTextEdit*>()->toPlainText();
        QTest::keyClick(opened, Qt::Key_Escape);
    });
    QTest::mouseClick(button("&Mark Updates"), Qt::LeftButton);
    QCOMPARE(shown, QString("Mark Updates|Packages marked for an update: 1\n\nThese packages could not be "
                            "marked:\nshell-2-1.x86_64: no repository offers an update"));
    QCOMPARE(wanted(), QStringList{"tool"});
}

void AdvisoryDialogTest::theMarkUpdatesButtonIsDisabledIfTheSelectedAdvisoriesHaveNoMissingUpdate()
{
    select({"C-3"});
    QVERIFY(!button("&Mark Updates")->isEnabled());
    QVERIFY(button("Mark All &Security Updates")->isEnabled());
    select({"C-3", "B-2"});
    QVERIFY(button("&Mark Updates")->isEnabled());
    select({});
    QVERIFY(!button("&Mark Updates")->isEnabled());
}

void AdvisoryDialogTest::enterPressesNoButton()
{
    QTest::keyClick(view(), Qt::Key_Return);
    QVERIFY(dialog->isVisible());
    QCOMPARE(wanted(), QStringList());
}

void AdvisoryDialogTest::escapeClosesTheDialog()
{
    QTest::keyClick(view(), Qt::Key_Escape);
    QVERIFY(!dialog->isVisible());
    QCOMPARE(wanted(), QStringList());
}

void AdvisoryDialogTest::theFirstEscapeStopsTheComparisonAndTheSecondEscapeClosesTheDialog()
{
    const QString longName = QString(300, 'a') + "b";
    table->standIn.setAdvisories({StandIn::advisory("A-1", true, {StandIn::advised("tool", 0)}),
                                  StandIn::advisory(longName, false, {StandIn::advised("many", 0)})});
    table->collectUsual();
    QVERIFY(table->yumIO.collectAdvisories());
    dialog->load();
    auto* const edit = dialog->findChild<QLineEdit*>();
    const auto comparing = [this] { return resultIsShown("Comparing the rows (Esc stops)"); };
    const auto typeDifficult = [edit] {
        edit->selectAll();
        QTest::keyClicks(edit, "(a*)*\\1b");
    };
    typeDifficult();
    QTRY_VERIFY(comparing());
    bool answered = false;
    QTimer::singleShot(0, [&answered] { answered = true; });
    QTRY_VERIFY(answered);
    QVERIFY(comparing());
    // Escape stops the comparison, although different widgets have the focus.
    for (QWidget* focused : {static_cast<QWidget*>(edit), static_cast<QWidget*>(view()),
                             static_cast<QWidget*>(button("&Close"))}) {
        typeDifficult();
        QTRY_VERIFY(comparing());
        focused->setFocus();
        QTest::keyClick(focused, Qt::Key_Escape);
        QVERIFY(!comparing());
        QVERIFY(dialog->isVisible());
        QCOMPARE(listed(), (QStringList{"A-1", longName}));
    }
    QTest::keyClick(view(), Qt::Key_Escape);
    QVERIFY(!dialog->isVisible());
}

void AdvisoryDialogTest::tabMovesTheFocusThroughAllPartsOfTheDialog()
{
    QWidget* const edit = dialog->findChild<QLineEdit*>();
    const QList<QWidget*> order{dialog->findChild<QTextEdit*>(),
                                button("&Mark Updates"),
                                button("Mark All &Security Updates"),
                                button("&Close"),
                                edit,
                                view()};
    for (QWidget* expected : order) {
        QTest::keyClick(dialog->windowHandle(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), expected);
    }
    // Whenever the window opens, the list gets the focus.
    button("&Close")->setFocus();
    dialog->hide();
    dialog->show();
    QCOMPARE(dialog->focusWidget(), view());
}

QTEST_MAIN(AdvisoryDialogTest)
#include "AdvisoryDialogTest.moc"

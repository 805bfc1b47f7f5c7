// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorContextMenu.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "repo/RepoEditorModel.h"
#include "repo/RepoEntry.h"
#include "tests/repo/Editor.h"
#include "tests/support/AnsweringUser.h"
#include "tests/support/Menus.h"

using namespace RepoEditor;

class RepoEditorContextMenuTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void theEditEntryEmitsASignalWithTheClickedRow();
    void theBrowseEntryOpensTheUrlOfTheRepository();
    void anErrorOfTheBrowseEntryIsShownOverTheView();
    void theMenuEntriesAreDisabledIfTheUserClicksBelowTheRows();
    void theEditEntryDoesNothingIfTheRowIsRemovedWhileTheMenuIsOpen();

private:
    // Opens the menu for the index and chooses an entry.
    bool run(const QModelIndex& index, const char* text) const
    {
        return withMenu([this, index] { menu->exec(index, view->mapToGlobal(QPoint(10, 10))); },
                        [text](QMenu& shown) { choose(shown, QLatin1String(text)); });
    }

    std::unique_ptr<BackEnd> backEnd;
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;
    std::unique_ptr<Model> model;
    std::unique_ptr<QWidget> view;
    ContextMenu* menu = nullptr; // the view owns the menu
};

void RepoEditorContextMenuTest::initTestCase()
{
    backEnd = std::make_unique<BackEnd>();
    backEnd->collect(5);
    conf = std::make_unique<YumConfIO>(requests, session);
    model = std::make_unique<Model>(&backEnd->yumIO, conf.get());
    view = std::make_unique<QWidget>();
    view->resize(200, 100);
    view->show();
    QVERIFY(QTest::qWaitForWindowActive(view.get()));
    menu = new ContextMenu(model.get(), view.get());
}

void RepoEditorContextMenuTest::init()
{
    backEnd->installBrowser();
    conf->entries.clear();
    for (const char* id : {"updates", "base"}) {
        Repo::Entry entry;
        entry.id = QLatin1String(id);
        entry.baseurl = QStringLiteral("http://h/") + entry.id;
        conf->entries.append(entry);
    }
    model->reset();
}

void RepoEditorContextMenuTest::cleanupTestCase()
{
    view.reset();
    model.reset();
    conf.reset();
    backEnd.reset();
}

void RepoEditorContextMenuTest::theEditEntryEmitsASignalWithTheClickedRow()
{
    QSignalSpy edits(menu, SIGNAL(edit(QModelIndex)));
    QVERIFY(run(model->index(1, IdentifierColumn), "Edit"));
    QCOMPARE(edits.size(), 1);
    QCOMPARE(edits.at(0).at(0).toModelIndex(), model->index(1, IdentifierColumn));
    QVERIFY(!BackEnd::wasBrowsed());
}

void RepoEditorContextMenuTest::theBrowseEntryOpensTheUrlOfTheRepository()
{
    QSignalSpy edits(menu, SIGNAL(edit(QModelIndex)));
    QVERIFY(run(model->index(1, NameColumn), "Browse Repository"));
    QCOMPARE(BackEnd::browsed(), QStringList{QStringLiteral("http://h/base")});
    QCOMPARE(edits.size(), 0);
}

void RepoEditorContextMenuTest::anErrorOfTheBrowseEntryIsShownOverTheView()
{
    conf->entries[0].baseurl.clear();
    const AnsweringUser user;
    QVERIFY(run(model->index(0, NameColumn), "Browse Repository"));
    QTRY_COMPARE(user.texts(), QStringList{QStringLiteral("Repository configuration has no URL")});
    QCOMPARE(user.seen.first().parent, view.get());
}

void RepoEditorContextMenuTest::theMenuEntriesAreDisabledIfTheUserClicksBelowTheRows()
{
    QSignalSpy edits(menu, SIGNAL(edit(QModelIndex)));
    QVERIFY(run(QModelIndex(), "Edit"));
    QVERIFY(run(QModelIndex(), "Browse Repository"));
    QTest::qWait(200);
    QVERIFY(!BackEnd::wasBrowsed());
    QCOMPARE(edits.size(), 0);
    // The next menu, on a valid row, has enabled entries.
    QVERIFY(run(model->index(0, NameColumn), "Edit"));
    QCOMPARE(edits.size(), 1);
}

void RepoEditorContextMenuTest::theEditEntryDoesNothingIfTheRowIsRemovedWhileTheMenuIsOpen()
{
    QSignalSpy edits(menu, SIGNAL(edit(QModelIndex)));
    const QModelIndex index = model->index(1, IdentifierColumn);
    QVERIFY(withMenu([this, index] { menu->exec(index, view->mapToGlobal(QPoint(10, 10))); },
                     [this](QMenu& shown) {
                         model->removeRow(1);
                         choose(shown, QStringLiteral("Edit"));
                     }));
    QCOMPARE(edits.size(), 0);
}

QTEST_MAIN(RepoEditorContextMenuTest)
#include "RepoEditorContextMenuTest.moc"

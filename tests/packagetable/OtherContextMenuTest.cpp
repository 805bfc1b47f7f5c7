// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/OtherContextMenu.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "app/base/Share.h"
#include "repo/YumConfIO.h"
#include "tests/packagetable/Described.h"
#include "tests/packagetable/ShownTable.h"
#include "tests/support/Menus.h"

using namespace PackageTable;

class OtherContextMenuTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void onlyTheRepositoryColumnHasTheBrowseEntry_data();
    void onlyTheRepositoryColumnHasTheBrowseEntry();
    void theMenuEntriesAreDisabledIfTheUserClicksBelowTheRows();
    void theBrowseEntryIsDisabledIfTheRowHasNoRepository_data();
    void theBrowseEntryIsDisabledIfTheRowHasNoRepository();
    void theDescribeEntryDescribesTheClickedRow();
    void theBrowseEntryOpensTheRepositoryOfTheClickedRow();
    void theBrowseEntryShowsAMessageIfTheRepositoryIsNotConfigured();

private:
    // Opens the menu of a cell, and clicks an entry. If the entry opens a window, this function returns when
    // the window is closed.
    void choose(const QString& name, int column, const QString& text)
    {
        withMenu([this, name, column] { shown->click(name, column, Qt::RightButton); },
                 [text](QMenu& menu) { ::choose(menu, text); });
    }
    QStringList texts(const QPoint& place)
    {
        QStringList found;
        withMenu([this, place] { shown->click(shown->view->viewport(), place, Qt::RightButton); },
                 [&found](QMenu& menu) { found = shownIn(menu); });
        return found;
    }

    std::unique_ptr<Table> table;
    std::unique_ptr<ShownTable> shown;
};

void OtherContextMenuTest::initTestCase()
{
    table = std::make_unique<Table>();
    table->collectUsual();
    shown = std::make_unique<ShownTable>(*table);
}

void OtherContextMenuTest::cleanupTestCase()
{
    shown.reset();
    table.reset();
}

void OtherContextMenuTest::onlyTheRepositoryColumnHasTheBrowseEntry_data()
{
    QTest::addColumn<int>("column");
    for (int column = StateColumn; column < ColumnCount; ++column) {
        QTest::addRow("column %d", column) << column;
    }
}

void OtherContextMenuTest::onlyTheRepositoryColumnHasTheBrowseEntry()
{
    QFETCH(int, column);
    QStringList expected{"&Describe"};
    if (column == RepositoryColumn) {
        expected << "Browse Repository";
    }
    QCOMPARE(texts(shown->place("tool", column)), expected);
}

void OtherContextMenuTest::theMenuEntriesAreDisabledIfTheUserClicksBelowTheRows()
{
    const QPoint below(shown->place("tool", RepositoryColumn).x(), shown->view->viewport()->height() - 10);
    QVERIFY(!shown->view->indexAt(below).isValid());
    QCOMPARE(texts(below), QStringList{"&Describe"});
    QStringList offered;
    withMenu([this, below] { shown->click(shown->view->viewport(), below, Qt::RightButton); },
             [&offered](QMenu& menu) { offered = offeredIn(menu); });
    QCOMPARE(offered, QStringList());
}

void OtherContextMenuTest::theBrowseEntryIsDisabledIfTheRowHasNoRepository_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("hasOne");
    QTest::newRow("group") << "Games" << false;
    QTest::newRow("installed") << "shell" << false;
    QTest::newRow("update") << "tool" << true;
    QTest::newRow("available") << "editor" << true;
}

void OtherContextMenuTest::theBrowseEntryIsDisabledIfTheRowHasNoRepository()
{
    QFETCH(QString, name);
    QFETCH(bool, hasOne);
    QStringList expected{"&Describe"};
    if (hasOne) {
        expected << "Browse Repository";
    }
    QStringList offered;
    withMenu([this, name] { shown->click(name, RepositoryColumn, Qt::RightButton); },
             [&offered](QMenu& menu) { offered = offeredIn(menu); });
    QCOMPARE(offered, expected);
}

void OtherContextMenuTest::theDescribeEntryDescribesTheClickedRow()
{
    // "editor" is the current row, but the pointer is on "shell".
    shown->click("editor", NameColumn);
    QString described;
    QWidget* parent = nullptr;
    QVERIFY(withDialog<Describe::Dialog>([this] { choose("shell", NameColumn, "&Describe"); },
                                         [&described, &parent](Describe::Dialog& dialog) {
                                             described = dialog.findChild<QLabel*>()->text();
                                             parent = dialog.parentWidget();
                                         }));
    QCOMPARE(described, QString("shell"));
    QCOMPARE(parent, static_cast<QWidget*>(shown->view));
}

void OtherContextMenuTest::theBrowseEntryOpensTheRepositoryOfTheClickedRow()
{
    const QString browser = Share::absolute("webbrowser");
    QFile program(browser);
    QVERIFY(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.part\" && mv \"$0.part\" \"$0.called\"\n");
    program.close();
    QVERIFY(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));

    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    YumConfIO conf(requests, session);
    for (const char* id : {"base", "updates"}) {
        Repo::Entry entry;
        entry.id = QLatin1String(id);
        entry.baseurl = QStringLiteral("http://%1/$releasever\nhttp://mirror/").arg(entry.id);
        conf.entries.append(entry);
    }
    shown->model.setYumConfIO(&conf);
    choose("tool", RepositoryColumn, "Browse Repository");
    shown->model.setYumConfIO(nullptr);
    QTRY_VERIFY(QFile::exists(browser + ".called"));
    QFile called(browser + ".called");
    QVERIFY(called.open(QIODevice::ReadOnly));
    QCOMPARE(called.readAll(), QByteArray("http://updates/39\n"));
}

void OtherContextMenuTest::theBrowseEntryShowsAMessageIfTheRepositoryIsNotConfigured()
{
    QString text;
    QWidget* parent = nullptr;
    QVERIFY(withDialog<QMessageBox>([this] { choose("tool", RepositoryColumn, "Browse Repository"); },
                                    [&text, &parent](QMessageBox& box) {
                                        text = box.text();
                                        parent = box.parentWidget();
                                    }));
    QCOMPARE(text, QString("There is no configured repository \"updates\""));
    QCOMPARE(parent, static_cast<QWidget*>(shown->view));
}

QTEST_MAIN(OtherContextMenuTest)
#include "OtherContextMenuTest.moc"

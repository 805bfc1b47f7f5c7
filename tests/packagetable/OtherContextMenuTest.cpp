#include "packagetable/OtherContextMenu.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "tests/packagetable/ShownTable.h"

using namespace PackageTable;

class OtherContextMenuTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void theRepositoryColumnAloneOffersToBrowse_data();
    void theRepositoryColumnAloneOffersToBrowse();
    void withoutACellThereIsNothingToBrowse();

private:
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

void OtherContextMenuTest::theRepositoryColumnAloneOffersToBrowse_data()
{
    QTest::addColumn<int>("column");
    for (int column = StateColumn; column < ColumnCount; ++column) {
        QTest::addRow("column %d", column) << column;
    }
}

void OtherContextMenuTest::theRepositoryColumnAloneOffersToBrowse()
{
    QFETCH(int, column);
    QStringList expected{"&Describe"};
    if (column == RepositoryColumn) {
        expected << "Browse Repository";
    }
    QCOMPARE(texts(shown->place("tool", column)), expected);
}

void OtherContextMenuTest::withoutACellThereIsNothingToBrowse()
{
    const QPoint below(shown->place("tool", RepositoryColumn).x(), shown->view->viewport()->height() - 10);
    QVERIFY(!shown->view->indexAt(below).isValid());
    QCOMPARE(texts(below), QStringList{"&Describe"});
}

QTEST_MAIN(OtherContextMenuTest)
#include "OtherContextMenuTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/Columns.h"

#include <QtTest>

#include "yumio/Package.h"

using namespace PackageTable;

namespace {

// The texts that a column shows for records with each possible action, state and kind.
QStringList words(Column column)
{
    QStringList found;
    for (int number = 0; number < 4; ++number) {
        Package::Entry entry;
        entry.action = static_cast<Package::Action>(number);
        entry.state = static_cast<Package::State>(qMin(number, int(Package::Installed)));
        entry.kind = static_cast<Package::Kind>(qMin(number, int(Package::Ordinary)));
        found << Columns::row(column).text(entry);
    }
    found.removeDuplicates();
    return found;
}

} // namespace

class ColumnsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachColumnHasTheRightNumberAndAToolTipAndItsOwnTitle()
    {
        QSet<QString> titles;
        for (int column = 0; column < ColumnCount; ++column) {
            QCOMPARE(int(Columns::row(column).column), column);
            QVERIFY(!Columns::toolTip(column).isEmpty());
            titles.insert(Columns::title(column));
        }
        QCOMPARE(titles.count(), int(ColumnCount));
    }

    // The value of a cell determines its sort key, and the sort key determines its picture.
    void everyColumnOfPicturesOrNumbersIsSortedByValue()
    {
        for (int column = 0; column < ColumnCount; ++column) {
            const Columns::Row& row = Columns::row(column);
            QCOMPARE(row.value != nullptr, row.sortKey != nullptr);
            QVERIFY(row.sortKey != nullptr || !row.showsPictures());
            if (row.sortKey != nullptr) {
                Package::Entry entry;
                entry.size = 3000000000;
                entry.buildTime = 4294967297;
                QCOMPARE(row.sortKey(entry), row.value(entry).toInt());
            }
        }
    }

    void aColumnOfPicturesHasAWordForEachPictureButShowsNoText()
    {
        QCOMPARE(words(ActionColumn), (QStringList{"Update", "Install", "Remove", "No Action"}));
        QCOMPARE(words(StateColumn), (QStringList{"Out-of-date", "Not Installed", "Up-to-date"}));
        QCOMPARE(words(KindColumn), (QStringList{"Suite", "Group", "Package"}));
        const Package::Entry entry;
        for (int column = 0; column < ColumnCount; ++column) {
            if (Columns::row(column).showsPictures()) {
                QCOMPARE(Columns::text(entry, column), QString());
            }
        }
    }

    void aColumnOfTextsShowsTheTextsOfTheRecord()
    {
        Package::Entry entry;
        entry.name = "tool";
        entry.sizeText = "4.9Kb";
        QCOMPARE(Columns::text(entry, NameColumn), QString("tool"));
        QCOMPARE(Columns::text(entry, SizeColumn), QString("4.9Kb"));
        // The text is not a copy: it has the address of the record's text.
        QVERIFY(Columns::text(entry, NameColumn).constData() == entry.name.constData());
    }
};

QTEST_MAIN(ColumnsTest)
#include "ColumnsTest.moc"

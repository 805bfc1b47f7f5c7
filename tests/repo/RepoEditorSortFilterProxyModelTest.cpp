// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorSortFilterProxyModel.h"

#include <QStandardItemModel>
#include <QtTest>

#include <memory>

#include "repo/RepoEditorModel.h"

using namespace RepoEditor;

class RepoEditorSortFilterProxyModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void identifiersAreSortedInNaturalOrder_data();
    void identifiersAreSortedInNaturalOrder();
    void namesAreSortedInNaturalOrder();
    void textsThatDifferOnlyInZerosKeepTheirOrder();
    void theColumnsWithBoxesAreSortedByTheirTexts();
    void numbersAreSortedByValue();

private:
    static QStringList sorted(const QStringList& texts, int column = IdentifierColumn)
    {
        QStandardItemModel source(texts.size(), ColumnCount);
        for (int row = 0; row < texts.size(); ++row) {
            source.setData(source.index(row, column), texts.at(row));
        }
        SortFilterProxyModel proxy;
        proxy.setSourceModel(&source);
        proxy.sort(column);
        QStringList result;
        for (int row = 0; row < proxy.rowCount(); ++row) {
            result << proxy.index(row, column).data().toString();
        }
        return result;
    }
};

void RepoEditorSortFilterProxyModelTest::identifiersAreSortedInNaturalOrder_data()
{
    QTest::addColumn<QStringList>("expected");
    const QString arabicTwo = QString(QChar(0x662));
    QTest::newRow("numbers and letter case") << QStringList{"Repo2", "repo9", "repo10"};
    QTest::newRow("several numbers") << QStringList{"a1b2", "a1b10", "a2b1"};
    QTest::newRow("text without a number") << QStringList{"repo", "repo1"};
    QTest::newRow("different texts before the numbers") << QStringList{"a10", "aa1", "b"};
    QTest::newRow("numbers alone") << QStringList{"2", "10", "a"};
    QTest::newRow("a shorter text") << QStringList{"a1", "a1b"};
    QTest::newRow("number of 64 bits") << QStringList{"a9", "a18446744073709551614", "a18446744073709551615"};
    QTest::newRow("number of more than 64 bits") << QStringList{"a9", "a99999999999999999999999"};
    QTest::newRow("empty") << QStringList{"", "a"};
    QTest::newRow("digits beyond ASCII") << QStringList{"a1", QStringLiteral("a") + arabicTwo, "a3"};
    QTest::newRow("a superscript is no digit") << QStringList{"a9", QStringLiteral("a") + QChar(0xb2)};
    QTest::newRow("letters beyond ASCII are sorted by code unit") << QStringList{"z", QString(QChar(0xe4))};
}

void RepoEditorSortFilterProxyModelTest::identifiersAreSortedInNaturalOrder()
{
    QFETCH(QStringList, expected);
    QStringList texts = expected;
    QCOMPARE(sorted(texts), expected);
    std::reverse(texts.begin(), texts.end());
    QCOMPARE(sorted(texts), expected);
}

void RepoEditorSortFilterProxyModelTest::namesAreSortedInNaturalOrder()
{
    QCOMPARE(sorted({"repo10", "repo9"}, NameColumn), (QStringList{"repo9", "repo10"}));
}

void RepoEditorSortFilterProxyModelTest::textsThatDifferOnlyInZerosKeepTheirOrder()
{
    QCOMPARE(sorted({"a0", "a", "a00"}), (QStringList{"a0", "a", "a00"}));
    QCOMPARE(sorted({"a01", "a1", "a001"}), (QStringList{"a01", "a1", "a001"}));
}

void RepoEditorSortFilterProxyModelTest::theColumnsWithBoxesAreSortedByTheirTexts()
{
    QCOMPARE(sorted({"repo10", "repo9"}, SessionColumn), (QStringList{"repo10", "repo9"}));
    QCOMPARE(sorted({"repo9", "repo10"}, PermanentColumn), (QStringList{"repo10", "repo9"}));
}

void RepoEditorSortFilterProxyModelTest::numbersAreSortedByValue()
{
    QStandardItemModel source(3, ColumnCount);
    const int numbers[] = {10, 9, -1};
    for (int row = 0; row < 3; ++row) {
        source.setData(source.index(row, IdentifierColumn), numbers[row]);
    }
    SortFilterProxyModel proxy;
    proxy.setSourceModel(&source);
    proxy.sort(IdentifierColumn);
    QCOMPARE(proxy.index(0, IdentifierColumn).data().toInt(), -1);
    QCOMPARE(proxy.index(2, IdentifierColumn).data().toInt(), 10);
}

QTEST_APPLESS_MAIN(RepoEditorSortFilterProxyModelTest)
#include "RepoEditorSortFilterProxyModelTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/SortedTexts.h"

#include <QtTest>

#include <algorithm>
#include <random>

using PackageTable::SortedTexts;

class SortedTextsTest : public QObject
{
    Q_OBJECT

private:
    static std::vector<int> expectedRanks(const QStringList& texts)
    {
        QStringList different = texts;
        different.sort();
        different.removeDuplicates();
        std::vector<int> ranks;
        for (const QString& text : texts) {
            ranks.push_back(static_cast<int>(std::lower_bound(different.cbegin(), different.cend(), text) -
                                             different.cbegin()));
        }
        return ranks;
    }

private Q_SLOTS:
    void noTextsHaveNoRanks()
    {
        SortedTexts none;
        none.sortAdded();
        QVERIFY(none.ranks().empty());
    }

    void theRanksDoNotDependOnTheTimesOfSorting_data()
    {
        QTest::addColumn<int>("texts");
        QTest::addColumn<int>("sortedAfter");
        for (const int texts : {1, 2, 3, 100, 1000}) {
            for (const int sortedAfter : {1, 2, 7, 64, 100000}) {
                QTest::addRow("%d texts, sorted after %d texts", texts, sortedAfter) << texts << sortedAfter;
            }
        }
    }

    void theRanksDoNotDependOnTheTimesOfSorting()
    {
        QFETCH(int, texts);
        QFETCH(int, sortedAfter);
        std::mt19937 random(static_cast<unsigned>(texts + sortedAfter));
        QStringList all;
        for (int i = 0; i < texts; ++i) {
            QString text(static_cast<int>(random() % 20), QLatin1Char('a'));
            for (QChar& character : text) {
                character = QChar(
                    static_cast<ushort>(random() % 50 == 0 ? 0xf8 + random() % 16 : 'a' + random() % 2));
            }
            all << text;
        }
        SortedTexts sorted;
        sorted.reserve(texts / 2);
        for (int i = 0; i < texts; ++i) {
            sorted.add(all.at(i), i);
            if ((i + 1) % sortedAfter == 0) {
                sorted.sortAdded();
            }
        }
        QCOMPARE(sorted.ranks(), expectedRanks(all));
    }

    void rowsInAnyOrderGetTheRanksOfTheirTexts()
    {
        const QStringList texts = {"pear", "apple", "pear", "fig", "apple"};
        SortedTexts sorted;
        for (const int row : {3, 0, 4}) {
            sorted.add(texts.at(row), row);
        }
        sorted.sortAdded();
        for (const int row : {2, 1}) {
            sorted.add(texts.at(row), row);
        }
        QCOMPARE(sorted.ranks(), expectedRanks(texts));
    }
};

QTEST_GUILESS_MAIN(SortedTextsTest)
#include "SortedTextsTest.moc"

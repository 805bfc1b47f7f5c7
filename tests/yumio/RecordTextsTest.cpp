// SPDX-License-Identifier: GPL-2.0-or-later

#include <atomic>
#include <deque>
#include <vector>

#include <QSet>
#include <QThread>
#include <QtTest>

#include "tests/support/TimeZone.h"
#include "yumio/Package.h"
#include "yumio/RecordTexts.h"

class RecordTextsTest : public QObject
{
    Q_OBJECT

private:
    Package::Entry* make(quint64 size, quint64 buildTime)
    {
        records.emplace_back();
        records.back().size = size;
        records.back().buildTime = buildTime;
        return &records.back();
    }

    // Notes the calls of its functions.
    class Reader : public RecordTexts::Reader
    {
    public:
        void begun(int count) override
        {
            expected += count;
            threads.insert(QThread::currentThreadId());
            begunLate = begunLate || !read.empty();
        }
        void rowsAdded(const std::vector<Package::Entry*>& rows) override
        {
            for (const Package::Entry* row : rows) {
                complete = complete && !row->sizeText.isEmpty() && !row->buildTimeText.isEmpty();
                read.push_back(row);
            }
            threads.insert(QThread::currentThreadId());
            readAfterEnd = readAfterEnd || ends > 0;
        }
        void ended() override
        {
            threads.insert(QThread::currentThreadId());
            ++ends;
        }

        std::vector<const Package::Entry*> read;
        int expected = 0;
        bool begunLate = false;
        bool complete = true;
        bool readAfterEnd = false;
        std::atomic<int> ends{0};
        QSet<Qt::HANDLE> threads;
    };

    std::deque<Package::Entry> records; // a deque does not move its elements

private Q_SLOTS:
    void cleanup() { records.clear(); }

    void recordsHaveTheirTextsAfterFinish()
    {
        const TimeZone zone("UTC");
        RecordTexts texts;
        const Package::Entry* first = make(1536, 1700000000);
        const Package::Entry* second = make(0, 0);
        for (Package::Entry& record : records) {
            texts.add(&record);
        }
        texts.finish();
        QCOMPARE(first->sizeText, QString("1.5Kb"));
        QCOMPARE(first->buildTimeText, QString("Tue Nov 14 22:13:20 2023"));
        QCOMPARE(second->sizeText, QString("0b"));
        QCOMPARE(second->buildTimeText, QString("Thu Jan  1 00:00:00 1970"));
    }

    void thousandsOfRecordsHaveTheirTextsAfterFinish()
    {
        RecordTexts texts;
        constexpr quint64 count = 10000;
        for (quint64 i = 0; i < count; ++i) {
            texts.add(make(10 + i % 90, i));
        }
        texts.finish();
        for (const Package::Entry& record : records) {
            QCOMPARE(record.sizeText, QString::number(record.size) + "b");
            QVERIFY(!record.buildTimeText.isEmpty());
        }
    }

    void recordsWithTheSameSizeShareTheMemoryOfTheirText()
    {
        RecordTexts texts;
        const Package::Entry* first = make(5000, 1);
        const Package::Entry* second = make(5000, 2);
        for (Package::Entry& record : records) {
            texts.add(&record);
        }
        texts.finish();
        QCOMPARE(first->sizeText, QString("4.9Kb"));
        QCOMPARE(static_cast<const void*>(first->sizeText.constData()),
                 static_cast<const void*>(second->sizeText.constData()));
    }

    void recordsCanBeAddedAfterFinish()
    {
        RecordTexts texts;
        texts.finish();
        texts.add(make(11, 1));
        texts.finish();
        const Package::Entry* further = make(12, 2);
        texts.add(&records.back());
        texts.finish();
        QCOMPARE(records.front().sizeText, QString("11b"));
        QCOMPARE(further->sizeText, QString("12b"));
    }

    void theReaderGetsEachRowWithItsTextsOnOneOtherThread()
    {
        RecordTexts texts;
        Reader reader;
        texts.add(make(1, 1)); // not a row
        Package::Entry* const first = make(2, 1);
        Package::Entry* const second = make(3, 1);
        texts.add(first);
        texts.add(second);
        texts.beginRows(&reader, {first, second}, 4900);
        constexpr int rows = 5000;
        for (int i = 2; i < rows; ++i) {
            texts.add(make(static_cast<quint64>(i), 1));
        }
        texts.finish();
        QCOMPARE(reader.expected, 4902); // the sum, if begun() was called several times
        QVERIFY(!reader.begunLate);
        QCOMPARE(static_cast<int>(reader.read.size()), rows);
        for (size_t i = 0; i < reader.read.size(); ++i) {
            QVERIFY(reader.read[i] == &records[i + 1]);
        }
        QVERIFY(reader.complete);
        QCOMPARE(reader.threads.size(), 1);
        QVERIFY(!reader.threads.contains(QThread::currentThreadId()));
        QCOMPARE(reader.ends.load(), 1);
        QVERIFY(!reader.readAfterEnd);
    }

    void theReaderGetsTheLastRowsBeforeFinish()
    {
        RecordTexts texts;
        Reader reader;
        texts.add(make(1, 1));
        texts.beginRows(&reader, {&records.front()}, 1);
        texts.add(make(2, 2));
        texts.endRows();
        QTRY_COMPARE(reader.ends.load(), 1);
        texts.add(make(3, 3)); // not a row
        texts.finish();
        QCOMPARE(static_cast<int>(reader.read.size()), 2);
        QCOMPARE(reader.ends.load(), 1);
        QVERIFY(!records.back().sizeText.isEmpty());
    }

    void theReaderCanGetEarlierRowsOnly()
    {
        RecordTexts texts;
        Reader reader;
        texts.add(make(1, 1));
        texts.beginRows(&reader, {&records.front()}, 0);
        texts.endRows();
        texts.finish();
        QCOMPARE(static_cast<int>(reader.read.size()), 1);
        QCOMPARE(reader.ends.load(), 1);
    }

    void theReaderGetsNoRowsAfterFinish()
    {
        RecordTexts texts;
        Reader reader;
        texts.beginRows(&reader, {}, 1);
        texts.add(make(1, 1));
        texts.finish();
        texts.add(make(2, 2));
        texts.finish();
        QCOMPARE(static_cast<int>(reader.read.size()), 1);
        QCOMPARE(reader.ends.load(), 1);
    }

    void rowsNeedNoReader()
    {
        RecordTexts texts;
        texts.beginRows(nullptr, {}, 1);
        texts.add(make(1536, 1));
        texts.finish();
        QCOMPARE(records.front().sizeText, QString("1.5Kb"));
    }

    void theEndOfAScopeFinishesTheTexts()
    {
        RecordTexts texts;
        {
            const RecordTexts::Scope scope(texts);
            texts.add(make(13, 3));
        }
        QCOMPARE(records.front().sizeText, QString("13b"));
    }

    void theDestructorFinishesTheTexts()
    {
        {
            RecordTexts texts;
            texts.add(make(14, 4));
        }
        QCOMPARE(records.front().sizeText, QString("14b"));
    }
};

QTEST_GUILESS_MAIN(RecordTextsTest)
#include "RecordTextsTest.moc"

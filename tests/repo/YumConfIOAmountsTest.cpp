// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <cstring>

#include "app/base/RepositoryFileLimit.h"
#include "tests/repo/ScratchConfiguration.h"

// Tests that VYRE reads and writes very large configurations within a time limit. Code that needs quadratic
// time would exceed this limit.
class YumConfIOAmountsTest : public ScratchConfiguration
{
    Q_OBJECT

private Q_SLOTS:
    void tenThousandRepositoriesAreReadAndWrittenWithinTheTimeLimit_data();
    void tenThousandRepositoriesAreReadAndWrittenWithinTheTimeLimit();
    void hugeFilesAreReadAndWrittenWithinTheTimeLimit_data();
    void hugeFilesAreReadAndWrittenWithinTheTimeLimit();
};

void YumConfIOAmountsTest::tenThousandRepositoriesAreReadAndWrittenWithinTheTimeLimit_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<bool>("alike");
    QTest::newRow("all repositories in one file") << 1 << false;
    QTest::newRow("each repository in its own file") << 10000 << false;
    QTest::newRow("all repositories with one identifier") << 1 << true;
}

void YumConfIOAmountsTest::tenThousandRepositoriesAreReadAndWrittenWithinTheTimeLimit()
{
    QFETCH(int, files);
    QFETCH(bool, alike);
    QByteArray text;
    for (int i = 0; i < 10000; ++i) {
        const QByteArray number = QByteArray::number(alike ? 0 : i);
        text += "[r" + number + "]\nname=R " + number + "\n\nbaseurl=http://h" + number +
                ".example/\nenabled=no\n";
        if ((i + 1) % (10000 / files) == 0) {
            putRepo(QStringLiteral("r%1.repo").arg(i), text);
            text.clear();
        }
    }
    QElapsedTimer time;
    time.start();
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.size(), 10000);
    conf->entries[5000].name = QStringLiteral("new");
    QCOMPARE(conf->write(window.get()), !alike);
    // The limit is generous. Code that compares each pair of identifiers would exceed it.
    QVERIFY2(time.elapsed() < 20000, QByteArray::number(time.elapsed()));
    qInfo("%lld ms", time.elapsed());
    if (alike) {
        QCOMPARE(user->seen.size(), 1);
        const QString question = user->seen.takeFirst().text;
        QVERIFY2(question.size() < 1000, QByteArray::number(question.size()));
        QVERIFY(question.contains(QStringLiteral("r0, r0, ...")));
    }
}

void YumConfIOAmountsTest::hugeFilesAreReadAndWrittenWithinTheTimeLimit_data()
{
    QTest::addColumn<QByteArray>("text");
    const int size = repositorySectionLimit - 100;
    const auto repeated = [size](const char* unit) {
        return QByteArray(unit).repeated(size / int(strlen(unit)));
    };
    QTest::newRow("one line") << "[x]\nname=" + QByteArray(size, 'x');
    QTest::newRow("one line that is no option") << "[x]\n" + QByteArray(size, 'x');
    QTest::newRow("one line of blanks") << "[x]\nbaseurl=" + QByteArray(size, ' ');
    QTest::newRow("one line of URLs") << "[x]\nbaseurl=" + repeated("http://h/ ");
    QTest::newRow("continuation lines") << "[x]\nbaseurl=a" + repeated("\n b");
    QTest::newRow("empty lines") << "[x]\n" + QByteArray(size, '\n');
    QTest::newRow("letters beyond ASCII") << "[x]\n#" + QByteArray(size, '\xE9');
    QTest::newRow("options") << "[x]\n" + repeated("a=b\n");
    QTest::newRow("passwords without an end") << "[x]\nbaseurl=" + repeated("://a:");
    QTest::newRow("credentials without an end") << "[x]\nbaseurl=" + repeated("/vantor?");
    QTest::newRow("carriage returns") << "[x]\n" + QByteArray(size, '\r') + "\n";
    const int whole = repositoryFileLimit - 100;
    QTest::newRow("a comment above the first section") << QByteArray(whole, '#') + "\n[x]\n";
    QTest::newRow("letters beyond ASCII above the first section") << QByteArray(whole, '\xE9') + "\n[x]\n";
    QTest::newRow("continuation lines above the first section")
        << QByteArray("a\n").repeated(1) + QByteArray("\n b").repeated(whole / 3) + "\n[x]\n";
    QTest::newRow("empty lines above the first section") << QByteArray(whole, '\n') + "[x]\n";
}

void YumConfIOAmountsTest::hugeFilesAreReadAndWrittenWithinTheTimeLimit()
{
    QFETCH(QByteArray, text);
    putRepo(QStringLiteral("x.repo"), text);
    QElapsedTimer time;
    time.start();
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(), QStringList(QStringLiteral("x")));
    conf->entries.first().mirrorlist = QStringLiteral("m");
    QVERIFY(conf->write(window.get()));
    QVERIFY2(time.elapsed() < 20000, QByteArray::number(time.elapsed()));
    qInfo("%lld ms", time.elapsed());
}

QTEST_MAIN(YumConfIOAmountsTest)
#include "YumConfIOAmountsTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "app/base/RepositoryFileLimit.h"
#include "tests/repo/ScratchConfiguration.h"

Q_DECLARE_METATYPE(Qt::CheckState)

// Tests of the values that YumConfIO reads from the configuration files.
class YumConfIOReadTest : public ScratchConfiguration
{
    Q_OBJECT

private Q_SLOTS:
    void everyValueOfASectionIsRead();
    void anEmptySectionSpecifiesNothing();
    void onlyTheValueZeroDisablesASetting_data();
    void onlyTheValueZeroDisablesASetting();
    void onlyALineWithTheExactKeySetsTheName_data();
    void onlyALineWithTheExactKeySetsTheName();
    void theLastValueOfARepeatedKeyIsUsed();
    void blanksAndLineFeedsBetweenUrlsAreReadAsLineFeeds();
    void theReaderKeepsTrailingBlanksOfNames();
    void theReaderKeepsTheBlanksInIdentifiers();
    void aSectionHeaderCanContinueOnTheNextLine();
    void theLastLineIsReadEvenIfItHasNoLineFeed_data();
    void theLastLineIsReadEvenIfItHasNoLineFeed();
    void linesAboveTheFirstSectionAreIgnored();
    void continuationLinesBelongToTheLineAbove();
    void theOptionsKeepAnEmptyLineOnlyIfAContinuationLineFollows();
    void aCarriageReturnBeforeALineFeedBelongsToTheLineEnd();
    void writingAFileKeepsItsCarriageReturns();
    void writingAFileKeepsItsByteOrderMark();
    void theHeaderOfTheMainSectionIsReadAfterAByteOrderMark();
    void aRepositoryFileOfAnUnsupportedKindIsNotChanged_data();
    void aRepositoryFileOfAnUnsupportedKindIsNotChanged();
    void aMainFileOfAnUnsupportedKindIsNotChanged_data();
    void aMainFileOfAnUnsupportedKindIsNotChanged();
    void aNewRepositoryDoesNotOverwriteAFileThatVyreCannotRead();
    void repositoriesOfTheMainFileAreRead();
    void repositoriesAreNumberedWithinEachFile();
    void readingGivesEachNewIdentifierASessionState();
    void theMainSectionCanDisableRepositoriesByDefault();
    void readingKeepsTheSessionStateOfKnownIdentifiers();
    void theLastMatchingRepositoryOptionSetsTheSessionState();
    void repositoryOptionsMatchWholeIdentifiersCaseSensitively();
    void aSecondSectionWithTheSameIdentifierDoesNotSetTheSessionState();
    void readingTheFilesAgainKeepsTheSessionStateThatTheUserHasSet();
};

void YumConfIOReadTest::everyValueOfASectionIsRead()
{
    putRepo(QStringLiteral("f.repo"), "[x]\n"
                                      "metadata_expire=6h\n"
                                      "name=The X\n"
                                      "# a comment\n"
                                      "baseurl=http://a/\n"
                                      "\n"
                                      "mirrorlist = http://m/?a=b:c\n"
                                      "enabled=1\n"
                                      "gpgcheck=0\n"
                                      "gpgkey=file:///k\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.size(), 1);
    const Repo::Entry& read = conf->entries.first();
    QCOMPARE(read.id, QStringLiteral("x"));
    QCOMPARE(read.name, QStringLiteral("The X"));
    QCOMPARE(read.baseurl, QStringLiteral("http://a/"));
    QCOMPARE(read.mirrorlist, QStringLiteral("http://m/?a=b:c"));
    QCOMPARE(read.enabled, qint32(Qt::Checked));
    QCOMPARE(read.gpgcheck, qint32(Qt::Unchecked));
    QCOMPARE(read.options, QStringLiteral("metadata_expire=6h\n# a comment\ngpgkey=file:///k\n"));
    QCOMPARE(read.file, repoPath(QStringLiteral("f.repo")));
    QCOMPARE(read.position, 1.0);
}

void YumConfIOReadTest::anEmptySectionSpecifiesNothing()
{
    putRepo(QStringLiteral("f.repo"), "[x]\n");
    QVERIFY(conf->read(window.get()));
    const Repo::Entry read = conf->entries.value(0);
    QCOMPARE(read.id, QStringLiteral("x"));
    QCOMPARE(read.name + read.baseurl + read.mirrorlist + read.options, QString());
    QCOMPARE(read.enabled, qint32(Qt::PartiallyChecked));
    QCOMPARE(read.gpgcheck, qint32(Qt::PartiallyChecked));
}

void YumConfIOReadTest::onlyTheValueZeroDisablesASetting_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<Qt::CheckState>("state");
    QTest::newRow("zero") << QByteArray("=0") << Qt::Unchecked;
    QTest::newRow("zero after blanks") << QByteArray(" \t= \t0") << Qt::Unchecked;
    QTest::newRow("zero after a colon") << QByteArray(": 0") << Qt::Unchecked;
    QTest::newRow("zero before a blank") << QByteArray("=0 ") << Qt::Checked;
    QTest::newRow("zero before a continuation line") << QByteArray("=0\n ") << Qt::Checked;
    QTest::newRow("two zeros") << QByteArray("=00") << Qt::Checked;
    QTest::newRow("the word no") << QByteArray("=no") << Qt::Checked;
    QTest::newRow("the word false") << QByteArray("=false") << Qt::Checked;
    QTest::newRow("one") << QByteArray("=1") << Qt::Checked;
    QTest::newRow("empty value") << QByteArray("=") << Qt::Checked;
    QTest::newRow("no separator") << QByteArray(" 0") << Qt::PartiallyChecked;
}

void YumConfIOReadTest::onlyTheValueZeroDisablesASetting()
{
    QFETCH(QByteArray, value);
    QFETCH(Qt::CheckState, state);
    putMain("[main]\nenabled" + value + "\ngpgcheck" + value + "\n");
    putRepo(QStringLiteral("f.repo"), "[x]\nenabled" + value + "\ngpgcheck" + value + "\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.size(), 1);
    QCOMPARE(conf->entries.first().enabled, qint32(state));
    QCOMPARE(conf->entries.first().gpgcheck, qint32(state));
    QCOMPARE(conf->enabled, state != Qt::Unchecked);
    QCOMPARE(conf->gpgcheck, state == Qt::Checked);
}

void YumConfIOReadTest::onlyALineWithTheExactKeySetsTheName_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("options");
    const auto nameRow = [](const char* title, const char* line, const char* name) {
        QTest::newRow(title) << QByteArray(line) << QString::fromLatin1(name) << QString();
    };
    const auto otherRow = [](const char* title, const char* line) {
        QTest::newRow(title) << QByteArray(line) << QString()
                             << QString::fromLatin1(line) + QLatin1Char('\n');
    };
    nameRow("equals sign", "name=value", "value");
    nameRow("colon", "name:value", "value");
    nameRow("blanks around the separator", "name \t = \t value", "value");
    nameRow("a separator in the value", "name:a=b", "a=b");
    nameRow("the second separator belongs to the value", "name==x", "=x");
    nameRow("no value", "name=", "");
    nameRow("trailing blanks", "name=a \t", "a \t");
    nameRow("a continued value", "name=a\n  b", "a\n  b");
    nameRow("an empty first line and a continuation line", "name=\n  b", "\n  b");
    otherRow("comment", "#name=value");
    otherRow("different letter case", "Name=value");
    otherRow("a longer key", "names=value");
    otherRow("a shorter key", "nam=value");
    otherRow("no separator", "name value");
    otherRow("separator on the next line", "name\n =value");
    otherRow("a key with a blank", "name x=value");
    otherRow("nothing before the separator", "=value");
}

void YumConfIOReadTest::onlyALineWithTheExactKeySetsTheName()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, name);
    QFETCH(QString, options);
    putRepo(QStringLiteral("f.repo"), "[x]\n" + line + "\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.size(), 1);
    QCOMPARE(conf->entries.first().name, name);
    QCOMPARE(conf->entries.first().options, options);
}

void YumConfIOReadTest::theLastValueOfARepeatedKeyIsUsed()
{
    putRepo(QStringLiteral("f.repo"),
            "[x]\nname=a\nenabled=0\nname=b\nenabled=1\nmirrorlist=c\nmirrorlist=\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.value(0).name, QStringLiteral("b"));
    QCOMPARE(conf->entries.value(0).enabled, qint32(Qt::Checked));
    QCOMPARE(conf->entries.value(0).mirrorlist, QString());
}

void YumConfIOReadTest::blanksAndLineFeedsBetweenUrlsAreReadAsLineFeeds()
{
    putRepo(QStringLiteral("f.repo"),
            "[x]\nbaseurl=http://a/   http://b/ \t\n\thttp://c/\n        http://d/\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.value(0).baseurl, QStringLiteral("http://a/\nhttp://b/\nhttp://c/\nhttp://d/"));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")), QByteArray("[x]\n"
                                                           "baseurl=http://a/\n"
                                                           "        http://b/\n"
                                                           "        http://c/\n"
                                                           "        http://d/\n"));
}

void YumConfIOReadTest::theReaderKeepsTrailingBlanksOfNames()
{
    putRepo(QStringLiteral("f.repo"), "[x]\nname=a \t\nmirrorlist=b  \n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.value(0).name, QStringLiteral("a \t"));
    QCOMPARE(conf->entries.value(0).mirrorlist, QStringLiteral("b  "));
}

void YumConfIOReadTest::theReaderKeepsTheBlanksInIdentifiers()
{
    putRepo(QStringLiteral("f.repo"), "[ foo ]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(), QStringList(QStringLiteral(" foo ")));
    QVERIFY(session.contains(QStringLiteral(" foo ")));
}

void YumConfIOReadTest::aSectionHeaderCanContinueOnTheNextLine()
{
    putMain("[main]\n[foo\n bar]\nname=x\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(), QStringList(QStringLiteral("foo\n bar")));
    QCOMPARE(conf->entries.first().name, QStringLiteral("x"));
}

void YumConfIOReadTest::theLastLineIsReadEvenIfItHasNoLineFeed_data()
{
    QTest::addColumn<QByteArray>("mainFile");
    QTest::addColumn<QByteArray>("repoFile");
    QTest::addColumn<QStringList>("ids");
    QTest::addColumn<QString>("name");
    const QStringList x(QStringLiteral("x"));
    QTest::newRow("option") << QByteArray("[main]") << QByteArray("[x]\nname=a") << x << "a";
    QTest::newRow("continuation") << QByteArray("[main]") << QByteArray("[x]\nname=a\n b") << x << "a\n b";
    QTest::newRow("header") << QByteArray("[main]") << QByteArray("[x]") << x << "";
    QTest::newRow("header in the main file") << QByteArray("[main]\n[x]") << QByteArray() << x << "";
    QTest::newRow("option in the main file") << QByteArray("[main]\n[x]\nname=a") << QByteArray() << x << "a";
}

void YumConfIOReadTest::theLastLineIsReadEvenIfItHasNoLineFeed()
{
    QFETCH(QByteArray, mainFile);
    QFETCH(QByteArray, repoFile);
    QFETCH(QString, name);
    putMain(mainFile);
    putRepo(QStringLiteral("f.repo"), repoFile);
    QVERIFY(conf->read(window.get()));
    QTEST(ids(), "ids");
    QCOMPARE(conf->entries.value(0).name, name);
    QCOMPARE(conf->mainText, QStringLiteral("[main]\n"));
}

void YumConfIOReadTest::linesAboveTheFirstSectionAreIgnored()
{
    putRepo(QStringLiteral("f.repo"), "# a comment\nname=lost\nenabled=0\nretries=1\n[x]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(), QStringList(QStringLiteral("x")));
    QCOMPARE(conf->entries.first().name, QString());
    QCOMPARE(conf->entries.first().options, QString());
    QCOMPARE(conf->entries.first().enabled, qint32(Qt::PartiallyChecked));
    QCOMPARE(conf->entries.first().position, 1.0);
    QCOMPARE(session, (QHash<QString, bool>{{QStringLiteral("x"), true}}));
}

void YumConfIOReadTest::continuationLinesBelongToTheLineAbove()
{
    putRepo(QStringLiteral("f.repo"),
            "[x]\nexclude=a\n\tb\n [c]\n  name=d\nretries=1\n[y]\nretries=2\n  z\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(), QStringList({QStringLiteral("x"), QStringLiteral("y")}));
    QCOMPARE(entry(QStringLiteral("x")).options,
             QStringLiteral("exclude=a\n\tb\n [c]\n  name=d\nretries=1\n"));
    QCOMPARE(entry(QStringLiteral("x")).name, QString());
    QCOMPARE(entry(QStringLiteral("y")).options, QStringLiteral("retries=2\n  z\n"));
}

void YumConfIOReadTest::theOptionsKeepAnEmptyLineOnlyIfAContinuationLineFollows()
{
    putRepo(QStringLiteral("f.repo"), "[x]\n\n  y\n\nretries=1\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.value(0).options, QStringLiteral("\n  y\nretries=1\n"));
}

void YumConfIOReadTest::aCarriageReturnBeforeALineFeedBelongsToTheLineEnd()
{
    const QByteArray mixed("[x]\nname=a\r\r\nenabled=0\r\n\r\nretries=1\rand more\r\nbaseurl=b\r");
    putRepo(QStringLiteral("f.repo"), mixed);
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.value(0).name, QStringLiteral("a"));
    QCOMPARE(conf->entries.value(0).enabled, qint32(Qt::Unchecked));
    QCOMPARE(conf->entries.value(0).options, QStringLiteral("retries=1\rand more\n"));
    QCOMPARE(conf->entries.value(0).baseurl, QStringLiteral("b"));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")), mixed);
    conf->entries.first().name = QStringLiteral("c");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")),
             QByteArray("[x]\nname=c\nbaseurl=b\nenabled=0\nretries=1\rand more\n"));
}

void YumConfIOReadTest::writingAFileKeepsItsCarriageReturns()
{
    const QByteArray mainText("# ours\r\n\r\n[main]\r\ngpgcheck=1\r\n[m]\r\nname=M\r\n");
    const QByteArray text(
        "# above\r\n[x]\r\nname=a\r\nbaseurl=http://a/\r\n http://b/\r\n\r\n[y]\r\nenabled=0");
    putMain(mainText);
    putRepo(QStringLiteral("f.repo"), text);
    QVERIFY(conf->read(window.get()));
    QVERIFY(conf->gpgcheck);
    QCOMPARE(conf->mainText, QStringLiteral("# ours\n\n[main]\ngpgcheck=1\n"));
    QCOMPARE(ids(), QStringList({QStringLiteral("m"), QStringLiteral("x"), QStringLiteral("y")}));
    QCOMPARE(entry(QStringLiteral("x")).baseurl, QStringLiteral("http://a/\nhttp://b/"));
    QCOMPARE(entry(QStringLiteral("y")).enabled, qint32(Qt::Unchecked));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")), text);
    QCOMPARE(get(mainPath()), mainText);
    entry(QStringLiteral("x")).name = QStringLiteral("b");
    entry(QStringLiteral("m")).name = QStringLiteral("N");
    for (int i = 0; i < 2; ++i) {
        QVERIFY(conf->write(window.get()));
        QCOMPARE(getRepo(QStringLiteral("f.repo")),
                 QByteArray(
                     "[x]\r\nname=b\r\nbaseurl=http://a/\r\n        http://b/\r\n\r\n[y]\r\nenabled=0\r\n"));
        QCOMPARE(get(mainPath()), QByteArray(mainText).replace("name=M", "name=N"));
        QVERIFY(conf->read(window.get()));
    }
}

void YumConfIOReadTest::writingAFileKeepsItsByteOrderMark()
{
    const QByteArray text("\xEF\xBB\xBF[x]\nname=a\n[y]\nname=b\n");
    putRepo(QStringLiteral("f.repo"), text);
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(), QStringList({QStringLiteral("x"), QStringLiteral("y")}));
    QCOMPARE(conf->entries.first().position, 1.0);
    QCOMPARE(conf->warnings, QStringList());
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")), text);
    conf->entries.first().name = QStringLiteral("c");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")), QByteArray("\xEF\xBB\xBF[x]\nname=c\n\n[y]\nname=b\n"));
    // If the last repository of a file is removed, VYRE removes the file.
    conf->entries.clear();
    QVERIFY(conf->write(window.get()));
    QVERIFY(!QFile::exists(repoPath(QStringLiteral("f.repo"))));
}

void YumConfIOReadTest::theHeaderOfTheMainSectionIsReadAfterAByteOrderMark()
{
    putMain("\xEF\xBB\xBF[main]\ngpgcheck=1\n[y]\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(conf->gpgcheck);
    QCOMPARE(conf->mainText, QStringLiteral("[main]\ngpgcheck=1\n"));
    QCOMPARE(ids(), QStringList(QStringLiteral("y")));
    entry(QStringLiteral("y")).name = QStringLiteral("Y");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(mainPath()), QByteArray("\xEF\xBB\xBF[main]\ngpgcheck=1\n[y]\nname=Y\n"));
}

namespace {

QByteArray twoByteText(const char* text, bool bigEnd, bool mark)
{
    QByteArray result = mark ? QByteArray(bigEnd ? "\xFE\xFF" : "\xFF\xFE") : QByteArray();
    for (; *text != '\0'; ++text) {
        result += bigEnd ? '\0' : *text;
        result += bigEnd ? *text : '\0';
    }
    return result;
}

void addFilesThatAreNotUnderstood()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<QString>("reason");
    const QString noText =
        QStringLiteral("%1 is left alone, and its repositories are not used: it is not a plain text file.");
    const char text[] = "[main]\n[odd]\nname=Odd\n";
    QTest::newRow("UTF-16") << twoByteText(text, false, true) << noText;
    QTest::newRow("UTF-16, big end first") << twoByteText(text, true, true) << noText;
    QTest::newRow("UTF-16 without mark") << twoByteText(text, false, false) << noText;
    QTest::newRow("UTF-16, only the mark") << QByteArray("\xFF\xFE") << noText;
    QTest::newRow("null bytes") << QByteArray("[main]\n[odd]\nname=a\0b\n", 22) << noText;
    QTest::newRow("carriage returns alone") << QByteArray("[main]\r[odd]\rname=Odd\r") << noText;
    QTest::newRow("a repository that is too large")
        << QByteArray("[main]\n[odd]\n") + QByteArray(repositorySectionLimit, '#') + "\n[y]\n"
        << QStringLiteral(
               "%1 is left alone, and its repositories are not used: one of them is larger than 256 kB.");
    QTest::newRow("too large") << QByteArray("[main]\n[odd]\n") + QByteArray(repositoryFileLimit, '#')
                               << QStringLiteral("%1 is left alone, and its repositories are not used: it is "
                                                 "larger than 8 MB.");
}

} // namespace

void YumConfIOReadTest::aRepositoryFileOfAnUnsupportedKindIsNotChanged_data()
{
    addFilesThatAreNotUnderstood();
}

void YumConfIOReadTest::aRepositoryFileOfAnUnsupportedKindIsNotChanged()
{
    QFETCH(QByteArray, contents);
    QFETCH(QString, reason);
    const QString odd = repoPath(QStringLiteral("odd.repo"));
    put(odd, contents);
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    for (int i = 0; i < 2; ++i) {
        QVERIFY(conf->read(window.get()));
        QCOMPARE(ids(), QStringList(QStringLiteral("a")));
        QCOMPARE(conf->warnings, QStringList(reason.arg(odd)));
        entry(QStringLiteral("a")).name = QString::number(i);
        QVERIFY(conf->write(window.get()));
        QVERIFY(get(odd) == contents);
    }
    QCOMPARE(getRepo(QStringLiteral("a.repo")), QByteArray("[a]\nname=1\n"));
    conf->entries.clear();
    QVERIFY(conf->write(window.get()));
    QVERIFY(!QFile::exists(repoPath(QStringLiteral("a.repo"))));
    QVERIFY(get(odd) == contents);
}

void YumConfIOReadTest::aMainFileOfAnUnsupportedKindIsNotChanged_data()
{
    addFilesThatAreNotUnderstood();
}

void YumConfIOReadTest::aMainFileOfAnUnsupportedKindIsNotChanged()
{
    QFETCH(QByteArray, contents);
    QFETCH(QString, reason);
    putMain(contents);
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(), QStringList(QStringLiteral("a")));
    QCOMPARE(conf->mainText, QString());
    QCOMPARE(conf->warnings, QStringList(reason.arg(mainPath())));
    entry(QStringLiteral("a")).name = QStringLiteral("A");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("a.repo")), QByteArray("[a]\nname=A\n"));
    QVERIFY(get(mainPath()) == contents);
    entry(QStringLiteral("a")).file = mainPath();
    QVERIFY(!conf->write(window.get()));
    compareNothingIsWritten({mainPath()});
    QVERIFY(get(mainPath()) == contents);
    QCOMPARE(getRepo(QStringLiteral("a.repo")), QByteArray("[a]\nname=A\n"));
}

void YumConfIOReadTest::aNewRepositoryDoesNotOverwriteAFileThatVyreCannotRead()
{
    const QByteArray contents = twoByteText("[x]\n", false, true);
    putRepo(QStringLiteral("x.repo"), contents);
    linkTo(QStringLiteral("/dev/null"), repoPath(QStringLiteral("y.repo")));
    linkTo(QStringLiteral("/nowhere"), repoPath(QStringLiteral("z.repo")));
    QVERIFY(conf->read(window.get()));
    conf->entries = {made(QStringLiteral("x")), made(QStringLiteral("y")), made(QStringLiteral("z"))};
    QVERIFY(!conf->write(window.get()));
    compareNothingIsWritten({repoPath(QStringLiteral("x.repo")), repoPath(QStringLiteral("y.repo")),
                             repoPath(QStringLiteral("z.repo"))});
    QCOMPARE(getRepo(QStringLiteral("x.repo")), contents);
    QCOMPARE(conf->entries.size(), 3);
}

void YumConfIOReadTest::repositoriesOfTheMainFileAreRead()
{
    putMain("# top\n[main]\nretries=1\n\n  more\n[x]\nname=a\n\n[main]\nname=b\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->mainText, QStringLiteral("# top\n[main]\nretries=1\n\n  more\n"));
    // A section "main" above the first repository is the main section. Below the first repository, "main" is
    // an ordinary identifier.
    QCOMPARE(ids(), QStringList({QStringLiteral("x"), QStringLiteral("main")}));
    QCOMPARE(conf->entries.at(0).file, mainPath());
    QCOMPARE(conf->entries.at(0).name, QStringLiteral("a"));
    QCOMPARE(conf->entries.at(1).position, 2.0);
}

void YumConfIOReadTest::repositoriesAreNumberedWithinEachFile()
{
    putMain("[main]\n[a]\n[b]\n");
    putRepo(QStringLiteral("f.repo"), "# comment\n[c]\n[d]\n\n[e]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(entry(QStringLiteral("a")).position, 1.0);
    QCOMPARE(entry(QStringLiteral("b")).position, 2.0);
    QCOMPARE(entry(QStringLiteral("c")).position, 1.0);
    QCOMPARE(entry(QStringLiteral("d")).position, 2.0);
    QCOMPARE(entry(QStringLiteral("e")).position, 3.0);
}

void YumConfIOReadTest::readingGivesEachNewIdentifierASessionState()
{
    putRepo(QStringLiteral("f.repo"), "[on]\nenabled=1\n[off]\nenabled=0\n[silent]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(session, (QHash<QString, bool>{{QStringLiteral("on"), true},
                                            {QStringLiteral("off"), false},
                                            {QStringLiteral("silent"), true}}));
}

void YumConfIOReadTest::theMainSectionCanDisableRepositoriesByDefault()
{
    putMain("[main]\nenabled=0\n[on]\nenabled=1\n[silent]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(session,
             (QHash<QString, bool>{{QStringLiteral("on"), true}, {QStringLiteral("silent"), false}}));
}

void YumConfIOReadTest::readingKeepsTheSessionStateOfKnownIdentifiers()
{
    session = {{QStringLiteral("a"), true}, {QStringLiteral("gone"), false}};
    requests = {YumRepoEnabled(false, QStringLiteral("*"))};
    putRepo(QStringLiteral("f.repo"), "[a]\nenabled=0\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(session, (QHash<QString, bool>{{QStringLiteral("a"), true}, {QStringLiteral("gone"), false}}));
    QCOMPARE(conf->entries.value(0).enabled, qint32(Qt::Unchecked));
}

void YumConfIOReadTest::theLastMatchingRepositoryOptionSetsTheSessionState()
{
    requests = {YumRepoEnabled(true, QStringLiteral("a*")), YumRepoEnabled(false, QStringLiteral("*b"))};
    putRepo(QStringLiteral("f.repo"), "[a]\nenabled=0\n[ab]\nenabled=1\n[c]\nenabled=0\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(session,
             (QHash<QString, bool>{
                 {QStringLiteral("a"), true}, {QStringLiteral("ab"), false}, {QStringLiteral("c"), false}}));
    // The permanent states come from the file, not from the session.
    QCOMPARE(entry(QStringLiteral("a")).enabled, qint32(Qt::Unchecked));
    QCOMPARE(entry(QStringLiteral("ab")).enabled, qint32(Qt::Checked));
}

void YumConfIOReadTest::repositoryOptionsMatchWholeIdentifiersCaseSensitively()
{
    requests = {YumRepoEnabled(false, QStringLiteral("base"))};
    putRepo(QStringLiteral("f.repo"), "[base]\n[base-debug]\n[Base]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(session, (QHash<QString, bool>{{QStringLiteral("base"), false},
                                            {QStringLiteral("base-debug"), true},
                                            {QStringLiteral("Base"), true}}));
}

void YumConfIOReadTest::aSecondSectionWithTheSameIdentifierDoesNotSetTheSessionState()
{
    putRepo(QStringLiteral("f.repo"), "[a]\nenabled=1\n[a]\nenabled=0\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(session, (QHash<QString, bool>{{QStringLiteral("a"), true}}));
    QCOMPARE(ids(), QStringList({QStringLiteral("a"), QStringLiteral("a")}));
}

void YumConfIOReadTest::readingTheFilesAgainKeepsTheSessionStateThatTheUserHasSet()
{
    requests = {YumRepoEnabled(true, QStringLiteral("x")), YumRepoEnabled(false, QStringLiteral("x*"))};
    putRepo(QStringLiteral("f.repo"), "[x]\nenabled=1\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(!session.value(QStringLiteral("x"), true));
    session[QStringLiteral("x")] = true;
    QVERIFY(conf->read(window.get()));
    QVERIFY(session.value(QStringLiteral("x")));
    putRepo(QStringLiteral("f.repo"), "[x]\nenabled=0\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(session.value(QStringLiteral("x")));
}

QTEST_MAIN(YumConfIOReadTest)
#include "YumConfIOReadTest.moc"

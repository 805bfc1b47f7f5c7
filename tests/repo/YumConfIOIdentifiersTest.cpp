// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/repo/ScratchConfiguration.h"

// Tests of repositories without an identifier, and of several repositories with the same identifier.
class YumConfIOIdentifiersTest : public ScratchConfiguration
{
    Q_OBJECT

private Q_SLOTS:
    void theUserIsAskedAboutDuplicateAndMissingIdentifiers();
    void nothingIsWrittenIfTheUserDeclinesToRemoveRepositories_data();
    void nothingIsWrittenIfTheUserDeclinesToRemoveRepositories();
    void onlyTheFirstRepositoryWithEachIdentifierIsKeptIfTheUserAgrees();
    void theQuestionMentionsOnlyMissingIdentifiersIfNoIdentifierIsDuplicate();
    void theQuestionMentionsOnlyDuplicatesIfNoIdentifierIsMissing();
    void theQuestionListsAnIdentifierOnceForEachPairOfRepositoriesWithIt();
    void theQuestionListsSeveralDuplicatesInOrder();
    void identifiersThatDifferInLetterCaseAreNoDuplicates();
};

void YumConfIOIdentifiersTest::theUserIsAskedAboutDuplicateAndMissingIdentifiers()
{
    conf->entries = {made(QStringLiteral("a")), made(QString()), made(QStringLiteral("a"))};
    user->answer = AnsweringUser::click(QMessageBox::No);
    QVERIFY(!conf->write(window.get()));
    QCOMPARE(user->seen.size(), 1);
    const ShownBox box = user->seen.takeFirst();
    QCOMPARE(box.title, QStringLiteral("Repository Editor"));
    QCOMPARE(box.text, QStringLiteral("A repository has no Identifier.  It will be removed.\n"
                                      "Two or more repositories have the same Identifier(s), a.  Only one "
                                      "repository will be applied for each Identifier.  Proceed?"));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(box.defaultButton, QMessageBox::No);
    QCOMPARE(box.escapeButton, QMessageBox::No);
    QCOMPARE(box.labelFormat, Qt::PlainText);
    QCOMPARE(box.parent, window.get());
}

void YumConfIOIdentifiersTest::nothingIsWrittenIfTheUserDeclinesToRemoveRepositories_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("No is clicked") << 0;
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Escape") << int(Qt::Key_Escape);
}

void YumConfIOIdentifiersTest::nothingIsWrittenIfTheUserDeclinesToRemoveRepositories()
{
    QFETCH(int, key);
    putMain("[main]\n\n[a]\n[a]\n[b]");
    putRepo(QStringLiteral("comments.repo"), "# only\n");
    QVERIFY(conf->read(window.get()));
    conf->entries.append(made(QString()));
    const auto before = snapshot();
    user->answer =
        key == 0 ? AnsweringUser::click(QMessageBox::No) : AnsweringUser::key(static_cast<Qt::Key>(key));
    QVERIFY(!conf->write(window.get()));
    QCOMPARE(user->seen.size(), 1);
    user->seen.clear();
    QCOMPARE(snapshot(), before);
    QCOMPARE(conf->entries.size(), 4);
    QCOMPARE(conf->entries.last().file, QString());
}

void YumConfIOIdentifiersTest::onlyTheFirstRepositoryWithEachIdentifierIsKeptIfTheUserAgrees()
{
    putMain("[main]\n[b]\n[a]\nname=first\n[a]\nname=second\n");
    QVERIFY(conf->read(window.get()));
    conf->entries.insert(1, made(QString()));
    conf->entries.append(made(QStringLiteral("a")));
    conf->entries.append(made(QStringLiteral("c")));
    user->answer = AnsweringUser::click(QMessageBox::Yes);
    QVERIFY(conf->write(window.get()));
    QCOMPARE(user->seen.size(), 1);
    user->seen.clear();
    QCOMPARE(ids(), QStringList({QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("c")}));
    QCOMPARE(get(mainPath()), QByteArray("[main]\n[b]\n\n[a]\nname=first\n"));
    QVERIFY(!QFile::exists(repoPath(QStringLiteral("a.repo"))));
    QVERIFY(!QFile::exists(repoPath(QStringLiteral(".repo"))));
    QCOMPARE(getRepo(QStringLiteral("c.repo")), QByteArray("[c]\n"));
}

void YumConfIOIdentifiersTest::theQuestionMentionsOnlyMissingIdentifiersIfNoIdentifierIsDuplicate()
{
    QVERIFY(conf->read(window.get()));
    conf->entries = {made(QString()), made(QString())};
    user->answer = AnsweringUser::click(QMessageBox::Yes);
    QVERIFY(conf->write(window.get()));
    QCOMPARE(user->seen.size(), 1);
    QCOMPARE(user->seen.takeFirst().text,
             QStringLiteral("A repository has no Identifier.  It will be removed.  Proceed?"));
    QCOMPARE(conf->entries.size(), 0);
}

void YumConfIOIdentifiersTest::theQuestionMentionsOnlyDuplicatesIfNoIdentifierIsMissing()
{
    conf->entries = {made(QStringLiteral("a")), made(QStringLiteral("a"))};
    user->answer = AnsweringUser::click(QMessageBox::No);
    QVERIFY(!conf->write(window.get()));
    QCOMPARE(user->seen.size(), 1);
    QCOMPARE(user->seen.takeFirst().text,
             QStringLiteral(
                 "Two or more repositories have the same Identifier(s), a.  Only one repository will be "
                 "applied for each Identifier.  Proceed?"));
    QCOMPARE(ids(), QStringList({QStringLiteral("a"), QStringLiteral("a")}));
}

void YumConfIOIdentifiersTest::theQuestionListsAnIdentifierOnceForEachPairOfRepositoriesWithIt()
{
    conf->entries = {made(QStringLiteral("a")), made(QStringLiteral("a")), made(QStringLiteral("a"))};
    user->answer = AnsweringUser::click(QMessageBox::No);
    QVERIFY(!conf->write(window.get()));
    QCOMPARE(user->seen.size(), 1);
    QVERIFY(user->seen.takeFirst().text.contains(QStringLiteral(" a, a, a.  Only")));
}

void YumConfIOIdentifiersTest::theQuestionListsSeveralDuplicatesInOrder()
{
    conf->entries = {made(QStringLiteral("b")), made(QStringLiteral("a")), made(QStringLiteral("c")),
                     made(QStringLiteral("a")), made(QStringLiteral("b"))};
    user->answer = AnsweringUser::click(QMessageBox::No);
    QVERIFY(!conf->write(window.get()));
    QCOMPARE(user->seen.size(), 1);
    QVERIFY(user->seen.takeFirst().text.contains(QStringLiteral(" b, a.  Only")));
}

void YumConfIOIdentifiersTest::identifiersThatDifferInLetterCaseAreNoDuplicates()
{
    QVERIFY(conf->read(window.get()));
    conf->entries = {made(QStringLiteral("a")), made(QStringLiteral("A"))};
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("A.repo")), QByteArray("[A]\n"));
}

QTEST_MAIN(YumConfIOIdentifiersTest)
#include "YumConfIOIdentifiersTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "tests/repo/ShownForm.h"
#include "widgets/Colors.h"

// Tests of the status line below the form. It reports errors in the values that the user types.
class RepoEditorConfigStatusTest : public ShownForm
{
    Q_OBJECT

private Q_SLOTS:
    void theStatusLineReportsErrorsAndWarnings_data();
    void theStatusLineReportsErrorsAndWarnings();
    void theFormRefusesTextsThatAFileCannotRepresent_data();
    void theFormRefusesTextsThatAFileCannotRepresent();
    void theFormAcceptsTheMainConfigurationFileAsTheFileOfARepository();
};

void RepoEditorConfigStatusTest::theStatusLineReportsErrorsAndWarnings_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("baseurl");
    QTest::addColumn<QString>("mirrorlist");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("background");
    const QString url = QStringLiteral("http://h/x");
    const QString good = QStringLiteral("/etc/yum.repos.d/x.repo");
    const QString warning = Colors::warningBg();
    QTest::newRow("complete repository") << "x" << url << "" << good << ""
                                         << "";
    QTest::newRow("file in the second directory") << "x"
                                                  << "" << url << "/etc/yum/repos.d/x.repo"
                                                  << ""
                                                  << "";
    QTest::newRow("no file") << "x" << url << ""
                             << ""
                             << ""
                             << "";
    QTest::newRow("no identifier") << ""
                                   << ""
                                   << ""
                                   << "/tmp/x"
                                   << "No Identifier specified" << Colors::errorBg();
    QTest::newRow("no URL") << "x"
                            << ""
                            << ""
                            << "/tmp/x"
                            << "No URLs or Mirror list URL specified" << warning;
    QTest::newRow("file outside the directories") << "x" << url << ""
                                                  << "/tmp/x.repo"
                                                  << "File is not in any reposdir directory" << warning;
    QTest::newRow("file outside the directories, no suffix")
        << "x" << url << ""
        << "/tmp/x"
        << "File is not in any reposdir directory" << warning;
    QTest::newRow("a directory whose name begins with the name of a reposdir directory")
        << "x" << url << ""
        << "/etc/yum.repos.d2/x.repo"
        << "File is not in any reposdir directory" << warning;
    QTest::newRow("a directory in different letter case")
        << "x" << url << ""
        << "/etc/Yum.repos.d/x.repo"
        << "File is not in any reposdir directory" << warning;
    QTest::newRow("no suffix") << "x" << url << ""
                               << "/etc/yum.repos.d/x"
                               << "File lacks .repo suffix" << warning;
    QTest::newRow("credential URL without a name")
        << "x"
        << "http://h/vantor?u=&p=&path="
        << "" << good << "No Vantor Authentication Name specified" << warning;
    QTest::newRow("credential URL without a password")
        << "x"
        << "http://h/vantor?u=bob&p=&path="
        << "" << good << "No Vantor Authentication Password specified" << warning;
    QTest::newRow("credential mirror list without a name")
        << "x" << url << "http://h/vantor?u=&p=pw&path=" << good << "No Vantor Authentication Name specified"
        << warning;
    QTest::newRow("credentials") << "x"
                                 << "http://h/vantor?u=bob&p=pw&path="
                                 << "" << good << ""
                                 << "";
    QTest::newRow("credentials in the URLs but not in the mirror list")
        << "x"
        << "http://h/vantor?u=bob&p=pw&path="
        << "http://h/vantor?u=&p=&path=" << good << ""
        << "";
}

void RepoEditorConfigStatusTest::theStatusLineReportsErrorsAndWarnings()
{
    QFETCH(QString, id);
    QFETCH(QString, baseurl);
    QFETCH(QString, mirrorlist);
    QFETCH(QString, file);
    QFETCH(QString, text);
    QFETCH(QString, background);
    Repo::Entry entry;
    entry.id = id;
    entry.baseurl = baseurl;
    entry.mirrorlist = mirrorlist;
    entry.file = file;
    config->setEntry(entry);
    bool shown = false;
    QCOMPARE(status(&shown), text);
    QCOMPARE(shown, !text.isEmpty());
    if (shown) {
        QCOMPARE(label->palette().color(QPalette::Window), QColor(background));
    }
}

void RepoEditorConfigStatusTest::theFormRefusesTextsThatAFileCannotRepresent_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("refusal");
    const char* characters = "Identifier has characters other than letters, digits and -_.:";
    QTest::newRow("closing bracket") << "a]b"
                                     << "" << characters;
    QTest::newRow("closing bracket at the end") << "a]"
                                                << "" << characters;
    QTest::newRow("opening bracket") << "[a"
                                     << "" << characters;
    QTest::newRow("line feed") << "a\n b"
                               << "" << characters;
    QTest::newRow("carriage return") << "a\r b"
                                     << "" << characters;
    QTest::newRow("accented letter") << QString::fromUtf8("\xc3\xa4") << "" << characters;
    QTest::newRow("the main section") << "main"
                                      << ""
                                      << "Identifier main is reserved for the main section";
    QTest::newRow("a section header in the options")
        << "x"
        << "a=b\n[y]\n"
        << "Other Options have a line that begins with a bracket";
    QTest::newRow("an incomplete section header in the options")
        << "x"
        << "[y"
        << "Other Options have a line that begins with a bracket";
    QTest::newRow("options that begin with a blank") << "x"
                                                     << " a=b\n"
                                                     << "Other Options begin with a blank";
    QTest::newRow("options that begin with a tab") << "x"
                                                   << "\ta"
                                                   << "Other Options begin with a blank";
    QTest::newRow("blank") << "my repo"
                           << "" << characters;
    QTest::newRow("slash") << "a/b"
                           << "" << characters;
    QTest::newRow("number sign") << "a#b"
                                 << "" << characters;
    QTest::newRow("null character") << QString(QChar(0)) << "" << characters;
    QTest::newRow("all permitted characters") << "Main-$basearch_1.2:3-${releasever}"
                                              << ""
                                              << "";
    QTest::newRow("brackets within a line of options") << "x"
                                                       << "a=[b]\n#[c]\n"
                                                       << "";
    QTest::newRow("options over several lines") << "x"
                                                << "a=b\n [c]\n\td\n"
                                                << "";
}

void RepoEditorConfigStatusTest::theFormRefusesTextsThatAFileCannotRepresent()
{
    QFETCH(QString, id);
    QFETCH(QString, options);
    QFETCH(QString, refusal);
    Repo::Entry entry;
    entry.id = id;
    entry.options = options;
    entry.baseurl = QStringLiteral("not a URL at all");
    config->setEntry(entry);
    QCOMPARE(status(), refusal);
    QCOMPARE(config->canBeWritten(), refusal.isEmpty());
    if (!refusal.isEmpty()) {
        QCOMPARE(label->palette().color(QPalette::Window), QColor(Colors::errorBg()));
    }
}

void RepoEditorConfigStatusTest::theFormAcceptsTheMainConfigurationFileAsTheFileOfARepository()
{
    Repo::Entry entry = usual();
    entry.file = YumConfIO::fileName();
    config->setEntry(entry);
    QCOMPARE(status(), QString());
    conf->reposdir.clear();
    QCOMPARE(status(), QString());
}

QTEST_MAIN(RepoEditorConfigStatusTest)
#include "RepoEditorConfigStatusTest.moc"

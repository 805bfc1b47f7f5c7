// SPDX-License-Identifier: GPL-2.0-or-later

#include <Python.h>

#include "repo/RepoBrowse.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "repo/RepoEntry.h"
#include "tests/repo/Editor.h"
#include "tests/support/AnsweringUser.h"

class RepoBrowseTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void theBrowserOpensTheFirstUrlOrElseTheMirrorList_data();
    void theBrowserOpensTheFirstUrlOrElseTheMirrorList();
    void variablesInTheUrlForTheBrowserAreReplaced_data();
    void variablesInTheUrlForTheBrowserAreReplaced();
    void theScriptReplacesTheVariablesInTheUrlIfItDefinesExpandVariables();
    void theBrowserDoesNotGetCredentials_data();
    void theBrowserDoesNotGetCredentials();
    void anErrorIsShownIfTheRepositoryHasNoUrl_data();
    void anErrorIsShownIfTheRepositoryHasNoUrl();
    void theBrowserOpensTheRepositoryWithTheGivenIdentifier();
    void aMessageIsShownIfTheIdentifierToBrowseIsUnknown();
    void noMessageBoxOpensIfTheBrowserIsMissing();

private:
    // Calls `open`. Returns the titles and texts of the error messages that appear over the window.
    template <typename Open> QStringList shownBy(Open open)
    {
        const AnsweringUser user(AnsweringUser::click(QMessageBox::Ok));
        open();
        QStringList shown;
        for (const ShownBox& box : user.seen) {
            shown << box.title << box.text;
            if (box.icon != QMessageBox::Critical || box.parent != window.get()) {
                shown << QStringLiteral("(not an error over the window)");
            }
        }
        return shown;
    }

    std::unique_ptr<BackEnd> backEnd;
    std::unique_ptr<QWidget> window;
};

void RepoBrowseTest::initTestCase()
{
    backEnd = std::make_unique<BackEnd>();
    window = std::make_unique<QWidget>();
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
}

void RepoBrowseTest::init()
{
    backEnd->installBrowser();
}

void RepoBrowseTest::cleanupTestCase()
{
    window.reset();
    backEnd.reset();
}

void RepoBrowseTest::theBrowserOpensTheFirstUrlOrElseTheMirrorList_data()
{
    QTest::addColumn<QString>("baseurl");
    QTest::addColumn<QString>("mirrorlist");
    QTest::addColumn<QString>("opened");
    QTest::newRow("one URL") << "http://h/one"
                             << ""
                             << "http://h/one";
    QTest::newRow("two URLs") << "http://h/one\nhttp://h/two"
                              << "http://m"
                              << "http://h/one";
    QTest::newRow("white space before the URL") << "\n \thttp://h/one http://h/two"
                                                << ""
                                                << "http://h/one";
    QTest::newRow("only a mirror list") << ""
                                        << "http://m/list a"
                                        << "http://m/list a";
    QTest::newRow("white space and a mirror list") << " \n"
                                                   << "http://m/list"
                                                   << "http://m/list";
    QTest::newRow("beyond ASCII") << QString::fromUtf8("http://h/\xc3\xa4") << ""
                                  << QString::fromUtf8("http://h/\xc3\xa4");
}

void RepoBrowseTest::theBrowserOpensTheFirstUrlOrElseTheMirrorList()
{
    QFETCH(QString, baseurl);
    QFETCH(QString, mirrorlist);
    QFETCH(QString, opened);
    Repo::Entry entry;
    entry.baseurl = baseurl;
    entry.mirrorlist = mirrorlist;
    RepoBrowse::browse(window.get(), entry, &backEnd->yumIO);
    QCOMPARE(BackEnd::browsed(), QStringList{opened});
}

void RepoBrowseTest::variablesInTheUrlForTheBrowserAreReplaced_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("opened");
    QTest::newRow("release and base architecture") << "http://h/$releasever/$basearch/"
                                                   << "http://h/39/x86_64/";
    QTest::newRow("architecture") << "http://h/$arch/"
                                  << "http://h/x86_64_v2/";
    QTest::newRow("every occurrence") << "http://h/$basearch/$arch/$basearch/$arch"
                                      << "http://h/x86_64/x86_64_v2/x86_64/x86_64_v2";
    QTest::newRow("different letter case") << "http://h/$BaseArch/$ARCH"
                                           << "http://h/$BaseArch/$ARCH";
    QTest::newRow("unknown variable") << "http://h/$uuid"
                                      << "http://h/$uuid";
}

void RepoBrowseTest::variablesInTheUrlForTheBrowserAreReplaced()
{
    QFETCH(QString, url);
    QFETCH(QString, opened);
    Repo::Entry entry;
    entry.mirrorlist = url;
    RepoBrowse::browse(window.get(), entry, &backEnd->yumIO);
    QCOMPARE(BackEnd::browsed(), QStringList{opened});
}

// If the script has expandVariables(), the script expands the variables, because dnf may know more variables
// than VYRE.
void RepoBrowseTest::theScriptReplacesTheVariablesInTheUrlIfItDefinesExpandVariables()
{
    Repo::Entry entry;
    entry.baseurl = QStringLiteral("http://$user:$password@h/$releasever_major");
    // The graphical thread, which runs this test, holds the interpreter lock.
    PyRun_SimpleString("YumIO.expandVariables = lambda self, text: "
                       "text.replace('$password', 'p@ss').replace('$releasever_major', '3')");
    RepoBrowse::browse(window.get(), entry, &backEnd->yumIO);
    PyRun_SimpleString("del YumIO.expandVariables");
    QCOMPARE(BackEnd::browsed(), QStringList{QStringLiteral("http://h/3")});
}

void RepoBrowseTest::theBrowserDoesNotGetCredentials_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("opened");
    QTest::newRow("before the host") << "http://joe:s3@cret@h/$basearch/"
                                     << "http://h/x86_64/";
    QTest::newRow("vantor") << "http://h/vantor?user=joe&secret=s3cret&path=/$releasever"
                            << "http://h/vantor?path=/39";
    QTest::newRow("credentials from variables") << "http://joe:$releasever@h/"
                                                << "http://h/";
}

// Passwords in the browser's arguments would not be secret: all users can read the list of processes, and the
// browser keeps a history.
void RepoBrowseTest::theBrowserDoesNotGetCredentials()
{
    QFETCH(QString, url);
    QFETCH(QString, opened);
    Repo::Entry entry;
    entry.baseurl = url;
    RepoBrowse::browse(window.get(), entry, &backEnd->yumIO);
    QCOMPARE(BackEnd::browsed(), QStringList{opened});
    entry.mirrorlist.swap(entry.baseurl);
    backEnd->installBrowser();
    RepoBrowse::browse(window.get(), entry, &backEnd->yumIO);
    QCOMPARE(BackEnd::browsed(), QStringList{opened});
}

void RepoBrowseTest::anErrorIsShownIfTheRepositoryHasNoUrl_data()
{
    QTest::addColumn<QString>("baseurl");
    QTest::newRow("neither URL nor mirror list") << "";
    QTest::newRow("white space alone") << " \n";
}

void RepoBrowseTest::anErrorIsShownIfTheRepositoryHasNoUrl()
{
    QFETCH(QString, baseurl);
    Repo::Entry entry;
    entry.baseurl = baseurl;
    QCOMPARE(shownBy([this, &entry] { RepoBrowse::browse(window.get(), entry, &backEnd->yumIO); }),
             (QStringList{"Error", "Repository configuration has no URL"}));
    QTest::qWait(200);
    QVERIFY(!BackEnd::wasBrowsed());
}

void RepoBrowseTest::theBrowserOpensTheRepositoryWithTheGivenIdentifier()
{
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    YumConfIO conf(requests, session);
    for (const char* url : {"http://h/other", "http://h/first", "http://h/second"}) {
        Repo::Entry entry;
        entry.id = conf.entries.isEmpty() ? QStringLiteral("other") : QStringLiteral("same");
        entry.baseurl = QLatin1String(url);
        conf.entries.append(entry);
    }
    RepoBrowse::browse(window.get(), QStringLiteral("same"), &backEnd->yumIO, &conf);
    QCOMPARE(BackEnd::browsed(), QStringList{QStringLiteral("http://h/first")});
}

void RepoBrowseTest::aMessageIsShownIfTheIdentifierToBrowseIsUnknown()
{
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    YumConfIO conf(requests, session);
    QCOMPARE(shownBy([this, &conf] {
                 RepoBrowse::browse(window.get(), QStringLiteral("<b>gone</b>"), &backEnd->yumIO, &conf);
             }),
             (QStringList{"Error", "There is no configured repository \"<b>gone</b>\""}));
    QTest::qWait(200);
    QVERIFY(!BackEnd::wasBrowsed());
    QVERIFY(RepoBrowse::find(QStringLiteral("gone"), &conf) == nullptr);
    QVERIFY(RepoBrowse::find(QStringLiteral("gone"), nullptr) == nullptr);
}

// If the browser is missing, the error appears only on standard error.
void RepoBrowseTest::noMessageBoxOpensIfTheBrowserIsMissing()
{
    QVERIFY(QFile::remove(Share::absolute(QStringLiteral("webbrowser"))));
    Repo::Entry entry;
    entry.baseurl = QStringLiteral("http://h/x");
    RepoBrowse::browse(window.get(), entry, &backEnd->yumIO);
    QTest::qWait(100);
    QVERIFY(!BackEnd::wasBrowsed());
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

QTEST_MAIN(RepoBrowseTest)
#include "RepoBrowseTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoAuthChecker.h"

#include <QtTest>
#include <QtWidgets>

#include <functional>
#include <memory>

#include "repo/RepoAuthDialog.h"
#include "repo/YumConfIO.h"
#include "tests/repo/Form.h"
#include "tests/support/AnsweringUser.h"
#include "tests/support/Buttons.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/Files.h"

using namespace RepoAuth;

namespace {

// The user's input in one dialog: the name, the password, and the button that the user clicks.
struct Answer
{
    QString name;
    QString password;
    const char* button;
};

QByteArray section(const char* id, const QByteArray& url, const QByteArray& more = QByteArray())
{
    return '[' + QByteArray(id) + "]\nbaseurl=" + url + '\n' + more;
}

const QByteArray emptyAuth("/vantor?u=&p=&path=/x");

} // namespace

class RepoAuthCheckerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theUserIsAskedOnlyAboutCredentialUrlsWithEmptyCredentials();
    void theUserIsNotAskedAboutDisabledRepositories();
    void typedCredentialsAreWrittenToTheFile();
    void theUserIsAskedForCredentialsThatOnlyTheMirrorListLacks();
    void nothingIsWrittenIfTheUserClicksOkWithoutTypedCredentials();
    void aTypedNameIsWrittenEvenIfThePasswordIsEmpty();
    void theApplyToAllButtonChangesEveryEnabledRepositoryAndEndsTheQuestions();
    void theApplyToAllButtonKeepsTheParameterNamesInEachUrl();
    void theHostButtonSetsTheCredentialsOfAllRepositoriesOnTheHost();
    void theHostButtonAlsoSetsTheCredentialsOfMirrorListsOnTheHost();
    void theSkipAllButtonInTheFirstQuestionWritesNothing();
    void theSkipAllButtonInALaterQuestionWritesTheEarlierAnswers();
    void theDisableForSessionButtonDisablesTheRepositoryInTheSession();
    void theQuitButtonEndsTheQuestionsAndSetsTheQuitFlag();
    void theQuitButtonWritesTheAnswersToEarlierQuestions();
    void nothingIsShownOrWrittenIfNoUrlNeedsCredentials();
    void nothingIsAskedOrWrittenIfTheFilesCannotBeRead();
    void nothingIsWrittenIfTheUserDeclinesTheQuestionAboutDuplicates();
    void oneDialogAsksAboutAllRepositories();
    void theCheckerDeletesTheDialogWhenTheCheckEnds();
    void eachCheckReadsTheFilesAgain();
    void theCheckerDoesNotOverwriteAFileThatAnotherProgramHasChanged();
    void changesByOtherProgramsAreKeptWhenCredentialsAreWritten();

private:
    // Runs a check in which the user gives these answers. If more dialogs appear, the user clicks "Skip All".
    // Returns the repository identifiers that the dialogs have shown.
    QStringList check(
        QList<Answer> answers, const std::function<void(Checker&)>& look = [](Checker&) {})
    {
        QStringList asked;
        const auto answerNext = [this, &asked, &answers](QDialog* shownDialog) {
            // The dialog would lose a click that arrives before it has the focus.
            auto* dialog = qobject_cast<Dialog*>(shownDialog);
            if (dialog == nullptr || !dialog->isActiveWindow() || !buttonOf(dialog, "OK")->isEnabled()) {
                return;
            }
            if (asked.isEmpty()) {
                shown = dialog;
            } else if (shown != dialog) {
                asked << QStringLiteral("(another dialog)");
            }
            for (const QLabel* label : dialog->findChildren<QLabel*>()) {
                if (conf && session.contains(label->text())) {
                    asked << label->text();
                }
            }
            if (answers.isEmpty()) {
                QTest::mouseClick(buttonOf(dialog, "Skip All"), Qt::LeftButton);
                return;
            }
            const Answer answer = answers.takeFirst();
            if (meanwhile) {
                meanwhile();
            }
            const QList<QLineEdit*> fields = dialog->findChildren<QLineEdit*>();
            QTest::keyClicks(fields.at(0), answer.name);
            QTest::keyClicks(fields.at(1), answer.password);
            QTest::mouseClick(buttonOf(dialog, answer.button), Qt::LeftButton);
        };
        const AnsweringUser answering(answerNext, AnsweringUser::EveryDialog);
        Checker checker(window.get(), conf.get());
        quit = checker.quit;
        changed = checker.changed;
        look(checker);
        return asked;
    }
    void put(const char* name, const QByteArray& contents) const { Files::put(repoPath(name), contents); }
    QByteArray get(const char* name) const { return Files::get(repoPath(name)); }
    QString repoPath(const char* name) const
    {
        return root->path() + QStringLiteral("/etc/yum.repos.d/") + QLatin1String(name);
    }

    std::unique_ptr<QTemporaryDir> root;
    EnvironmentVariable managedRoot{"VYREROOT"};
    std::unique_ptr<QWidget> window;
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;
    std::unique_ptr<AnsweringUser> user;
    QPointer<Dialog> shown;
    // The test calls this function while the checker waits for the user's answer.
    std::function<void()> meanwhile;
    bool quit = false;
    bool changed = false;
};

void RepoAuthCheckerTest::init()
{
    root = std::make_unique<QTemporaryDir>();
    QDir(root->path()).mkpath(QStringLiteral("etc/yum.repos.d"));
    managedRoot.set(QFile::encodeName(root->path()));
    Files::put(root->path() + QStringLiteral("/etc/yum.conf"), "[main]\n");
    session.clear();
    user = std::make_unique<AnsweringUser>();
    meanwhile = nullptr;
    conf = std::make_unique<YumConfIO>(requests, session);
    window = std::make_unique<QWidget>();
    window->resize(200, 100);
    window->show();
    QVERIFY(waitForFocus(window.get()));
}

void RepoAuthCheckerTest::cleanup()
{
    window.reset();
    conf.reset();
    root.reset();
}

void RepoAuthCheckerTest::theUserIsAskedOnlyAboutCredentialUrlsWithEmptyCredentials()
{
    put("a.repo", section("none", "http://h" + emptyAuth) + section("plain", "http://h/x") +
                      section("name", "http://h/vantor?u=bob&p=&path=/x") +
                      section("password", "http://h/vantor?u=&p=pw&path=/x") +
                      section("both", "http://h/vantor?u=bob&p=pw&path=/x"));
    QCOMPARE(check({{"", "", "OK"}}), QStringList{QStringLiteral("none")});
    QVERIFY(!quit);
    QVERIFY(!changed);
}

void RepoAuthCheckerTest::theCheckerDoesNotOverwriteAFileThatAnotherProgramHasChanged()
{
    put("a.repo", section("a", "http://h" + emptyAuth));
    put("b.repo", section("b", "http://h/x"));
    const QByteArray theirs = section("a", "http://h" + emptyAuth, "cost=1\n");
    meanwhile = [this, &theirs] {
        put("a.repo", theirs);
        put("c.repo", section("c", "http://h/x"));
    };
    QCOMPARE(check({{"bob", "pw", "OK"}}), QStringList{QStringLiteral("a")});
    QCOMPARE(user->seen.size(), 1);
    QVERIFY(user->seen.first().text.contains(repoPath("a.repo")));
    QVERIFY(!user->seen.first().text.contains(repoPath("b.repo")));
    QCOMPARE(get("a.repo"), theirs);
    QCOMPARE(get("b.repo"), section("b", "http://h/x"));
    QCOMPARE(get("c.repo"), section("c", "http://h/x"));
}

void RepoAuthCheckerTest::changesByOtherProgramsAreKeptWhenCredentialsAreWritten()
{
    put("a.repo", section("a", "http://h" + emptyAuth) + section("b", "http://h" + emptyAuth) +
                      section("gone", "http://k" + emptyAuth));
    user->answer = AnsweringUser::click(QMessageBox::Yes);
    meanwhile = [this] {
        put("a.repo", section("b", "http://h" + emptyAuth) +
                          section("a", "http://h/vantor?u=theirs&p=theirs&path=/x", "cost=1\n"));
    };
    QCOMPARE(check({{"bob", "pw", "Apply to All with this Host"}, {"eve", "pw", "OK"}}),
             (QStringList{QStringLiteral("a"), QStringLiteral("gone")}));
    QCOMPARE(user->seen.size(), 1);
    QVERIFY(changed);
    // During the question, another program has written credentials to section "a" and has removed section
    // "gone". VYRE must undo neither change.
    QCOMPARE(get("a.repo"), QByteArray("[b]\nbaseurl=http://h/vantor?u=bob&p=pw&path=/x\n\n"
                                       "[a]\nbaseurl=http://h/vantor?u=theirs&p=theirs&path=/x\ncost=1\n"));
}

void RepoAuthCheckerTest::theUserIsNotAskedAboutDisabledRepositories()
{
    put("a.repo", section("off", "http://h" + emptyAuth, "enabled=0\n") +
                      section("on", "http://h" + emptyAuth) + section("toggled", "http://h" + emptyAuth));
    session.insert(QStringLiteral("toggled"), false);
    QCOMPARE(check({{"", "", "OK"}}), QStringList{QStringLiteral("on")});
}

void RepoAuthCheckerTest::typedCredentialsAreWrittenToTheFile()
{
    put("a.repo", section("a", "http://h" + emptyAuth) + section("b", "http://k/vantor?n=&w=&path=y"));
    QCOMPARE(check({{"a b&c", "s%t", "OK"}, {"eve", "pw", "OK"}}),
             (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    QVERIFY(changed);
    QVERIFY(!quit);
    QCOMPARE(get("a.repo"), QByteArray("[a]\nbaseurl=http://h/vantor?u=a%20b%26c&p=s%25t&path=/x\n\n"
                                       "[b]\nbaseurl=http://k/vantor?n=eve&w=pw&path=y\n"));
    // The credentials are now in the file, so the next check does not ask for them.
    QCOMPARE(check({}), QStringList());
}

void RepoAuthCheckerTest::theUserIsAskedForCredentialsThatOnlyTheMirrorListLacks()
{
    put("a.repo", section("a", "http://h/plain", "mirrorlist=http://m" + emptyAuth + '\n'));
    QCOMPARE(check({{"bob", "pw", "OK"}}), QStringList{QStringLiteral("a")});
    QCOMPARE(get("a.repo"),
             QByteArray("[a]\nbaseurl=http://h/plain\nmirrorlist=http://m/vantor?u=bob&p=pw&path=/x\n"));
}

void RepoAuthCheckerTest::nothingIsWrittenIfTheUserClicksOkWithoutTypedCredentials()
{
    const QByteArray before = "# a comment\n" + section("a", "http://h" + emptyAuth);
    put("a.repo", before);
    check({{"", "", "OK"}});
    QVERIFY(!changed);
    QCOMPARE(get("a.repo"), before);
}

void RepoAuthCheckerTest::aTypedNameIsWrittenEvenIfThePasswordIsEmpty()
{
    put("a.repo", section("a", "http://h" + emptyAuth));
    check({{"bob", "", "OK"}});
    QVERIFY(changed);
    QVERIFY(get("a.repo").contains("u=bob&p=&"));
}

void RepoAuthCheckerTest::theApplyToAllButtonChangesEveryEnabledRepositoryAndEndsTheQuestions()
{
    put("a.repo", section("a", "http://h" + emptyAuth) + section("b", "http://h/x") +
                      section("c", "http://k" + emptyAuth) +
                      section("d", "http://h/vantor?u=eve&p=x&path=/x") +
                      section("e", "http://l" + emptyAuth, "enabled=0\n"));
    QCOMPARE(check({{"bob", "pw", "Apply to All"}}), QStringList{QStringLiteral("a")});
    QVERIFY(changed);
    QCOMPARE(get("a.repo").count("u=bob&p=pw&"), 2);
    QVERIFY(get("a.repo").contains("http://k/vantor?u=bob&p=pw&path=/x"));
    QVERIFY(get("a.repo").contains("http://h/vantor?u=eve&p=x&path=/x"));
    QVERIFY(get("a.repo").contains("http://l/vantor?u=&p=&path=/x"));
}

void RepoAuthCheckerTest::theApplyToAllButtonKeepsTheParameterNamesInEachUrl()
{
    put("a.repo",
        section("a", "http://h" + emptyAuth) +
            section("b", "http://k/vantor?n=&w=&path=/x", "mirrorlist=http://k/vantor?o=&q=&path=/x\n"));
    check({{"bob", "pw", "Apply to All"}});
    QVERIFY(get("a.repo").contains("baseurl=http://k/vantor?n=bob&w=pw&path=/x\n"));
    QVERIFY(get("a.repo").contains("mirrorlist=http://k/vantor?o=bob&q=pw&path=/x\n"));
}

void RepoAuthCheckerTest::theHostButtonSetsTheCredentialsOfAllRepositoriesOnTheHost()
{
    put("a.repo", section("a", "http://h" + emptyAuth) + section("b", "https://h/sub" + emptyAuth) +
                      section("c", "http://k" + emptyAuth) + section("d", "http://h" + emptyAuth));
    QCOMPARE(check({{"bob", "pw", "Apply to All with this Host"}, {"eve", "x", "OK"}}),
             (QStringList{QStringLiteral("a"), QStringLiteral("c")}));
    QCOMPARE(get("a.repo"), QByteArray("[a]\nbaseurl=http://h/vantor?u=bob&p=pw&path=/x\n\n"
                                       "[b]\nbaseurl=https://h/sub/vantor?u=bob&p=pw&path=/x\n\n"
                                       "[c]\nbaseurl=http://k/vantor?u=eve&p=x&path=/x\n\n"
                                       "[d]\nbaseurl=http://h/vantor?u=bob&p=pw&path=/x\n"));
}

void RepoAuthCheckerTest::theHostButtonAlsoSetsTheCredentialsOfMirrorListsOnTheHost()
{
    put("a.repo", section("a", "http://h" + emptyAuth) + "[b]\nmirrorlist=http://h" + emptyAuth + "\n[c]\n" +
                      "mirrorlist=http://k" + emptyAuth + '\n');
    QCOMPARE(check({{"bob", "pw", "Apply to All with this Host"}, {"", "", "OK"}}),
             (QStringList{QStringLiteral("a"), QStringLiteral("c")}));
    QVERIFY(get("a.repo").contains("mirrorlist=http://h/vantor?u=bob&p=pw&path=/x"));
}

void RepoAuthCheckerTest::theSkipAllButtonInTheFirstQuestionWritesNothing()
{
    const QByteArray before =
        "# a comment\n" + section("a", "http://h" + emptyAuth) + section("b", "http://k" + emptyAuth);
    put("a.repo", before);
    QCOMPARE(check({{"bob", "pw", "Skip All"}}), QStringList{QStringLiteral("a")});
    QVERIFY(!changed);
    QVERIFY(!quit);
    QCOMPARE(get("a.repo"), before);
}

void RepoAuthCheckerTest::theSkipAllButtonInALaterQuestionWritesTheEarlierAnswers()
{
    put("a.repo", section("a", "http://h" + emptyAuth) + section("b", "http://k" + emptyAuth) +
                      section("c", "http://l" + emptyAuth));
    QCOMPARE(check({{"bob", "pw", "OK"}, {"eve", "x", "Skip All"}}),
             (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    QVERIFY(changed);
    QCOMPARE(get("a.repo").count("u=bob&p=pw&"), 1);
    QCOMPARE(get("a.repo").count("u=&p=&"), 2);
}

void RepoAuthCheckerTest::theDisableForSessionButtonDisablesTheRepositoryInTheSession()
{
    const QByteArray before = section("a", "http://h" + emptyAuth) + section("b", "http://k" + emptyAuth);
    put("a.repo", before);
    QCOMPARE(check({{"bob", "pw", "Disable for Session"}, {"", "", "OK"}}),
             (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    QCOMPARE(session, (QHash<QString, bool>{{QStringLiteral("a"), false}, {QStringLiteral("b"), true}}));
    QVERIFY(!changed);
    QCOMPARE(get("a.repo"), before);
    QCOMPARE(check({}), QStringList{QStringLiteral("b")});
}

void RepoAuthCheckerTest::theQuitButtonEndsTheQuestionsAndSetsTheQuitFlag()
{
    const QByteArray before = section("a", "http://h" + emptyAuth) + section("b", "http://k" + emptyAuth);
    put("a.repo", before);
    QCOMPARE(check({{"bob", "pw", "Quit"}}), QStringList{QStringLiteral("a")});
    QVERIFY(quit);
    QVERIFY(!changed);
    QCOMPARE(get("a.repo"), before);
}

void RepoAuthCheckerTest::theQuitButtonWritesTheAnswersToEarlierQuestions()
{
    put("a.repo", section("a", "http://h" + emptyAuth) + section("b", "http://k" + emptyAuth));
    check({{"bob", "pw", "OK"}, {"", "", "Quit"}});
    QVERIFY(quit);
    QVERIFY(changed);
    QVERIFY(get("a.repo").contains("u=bob&p=pw&"));
}

void RepoAuthCheckerTest::nothingIsShownOrWrittenIfNoUrlNeedsCredentials()
{
    const QByteArray before = "# a comment\n" + section("a", "http://h/x");
    put("a.repo", before);
    check({}, [this](Checker&) { QVERIFY(window->findChildren<QDialog*>().isEmpty()); });
    QVERIFY(!changed);
    QVERIFY(!quit);
    QCOMPARE(get("a.repo"), before);
}

void RepoAuthCheckerTest::nothingIsAskedOrWrittenIfTheFilesCannotBeRead()
{
    // The order in which the checker reads the files is unknown. Both files contain the same error, so that
    // the result does not depend on this order.
    const QByteArray first =
        section("a", "http://h" + emptyAuth) + section("b", "http://h" + emptyAuth) + "[x\n";
    put("a.repo", first);
    put("b.repo", first);
    QCOMPARE(check({{"bob", "pw", "OK"}}), QStringList());
    QCOMPARE(user->seen.size(), 1);
    QVERIFY(user->seen.at(0).text.startsWith(QStringLiteral("Malformed section name in line: [x")));
    QVERIFY(!quit);
    QVERIFY(!changed);
    QCOMPARE(get("a.repo"), first);
    QCOMPARE(get("b.repo"), first);
}

void RepoAuthCheckerTest::nothingIsWrittenIfTheUserDeclinesTheQuestionAboutDuplicates()
{
    const QByteArray before =
        section("a", "http://h" + emptyAuth) + section("b", "http://h/x") + section("b", "http://h/y");
    put("a.repo", before);
    check({{"bob", "pw", "OK"}});
    QCOMPARE(user->seen.size(), 1);
    QVERIFY(user->seen.at(0).text.endsWith(QStringLiteral("  Proceed?")));
    QVERIFY(changed);
    QCOMPARE(get("a.repo"), before);
}

void RepoAuthCheckerTest::oneDialogAsksAboutAllRepositories()
{
    put("a.repo", section("a", "http://h" + emptyAuth) + section("b", "http://k" + emptyAuth));
    const QStringList asked = check({{"", "", "OK"}, {"", "", "OK"}}, [this](Checker&) {
        QVERIFY(!shown.isNull());
        QVERIFY(!shown->isVisible());
        QCOMPARE(shown->parentWidget(), window.get());
    });
    QCOMPARE(asked, (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
}

void RepoAuthCheckerTest::theCheckerDeletesTheDialogWhenTheCheckEnds()
{
    put("a.repo", section("a", "http://h" + emptyAuth));
    check({{"", "", "OK"}});
    QVERIFY(shown.isNull());
    // If the parent window is deleted during a question, the dialog is deleted with it.
    check({{"", "", "OK"}}, [this](Checker&) {
        QVERIFY(!shown.isNull());
        window.reset();
        QVERIFY(shown.isNull());
    });
}

void RepoAuthCheckerTest::eachCheckReadsTheFilesAgain()
{
    put("a.repo", section("a", "http://h/x"));
    QVERIFY(conf->read(window.get()));
    conf->entries[0].baseurl = QStringLiteral("http://h") + QString::fromLatin1(emptyAuth);
    QCOMPARE(check({{"bob", "pw", "OK"}}), QStringList());
    QCOMPARE(conf->entries.at(0).baseurl, QStringLiteral("http://h/x"));
}

QTEST_MAIN(RepoAuthCheckerTest)
#include "RepoAuthCheckerTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/CommandLine.h"

#include <QtTest>
#include <QtWidgets>

#include <getopt.h>
#include <memory>
#include <vector>

#include "services/LogWindow.h"
#include "tests/app/EachAlone.h"
#include "tests/app/ShownWindow.h"

using namespace PackageTable;

namespace {

const char usageText[] = "usage: vyre [options...]\n"
                         "\n"
                         "VYRE, Vyrecraft, is a graphical user interface which allows a user\n"
                         "to make modifications to the installed rpm packages on a system.\n"
                         "\n"
                         "options:\n"
                         "\n"
                         "   -h, -H, --help           display this help information\n"
                         "   -m m,   --mode=m         start with the package table mode, m:\n"
                         "                               filter, search\n"
                         "   -e r,   --regexp=r       start with the package table regexp, r\n"
                         "   -s s,   --state=s        start with the package table state, s:\n"
                         "                               updatable, installable, removable, all\n"
                         "   -d,     --duplicates     start with the package table omitting duplicates\n"
                         "   -g,     --groups         start with the package table showing groups\n"
                         "   -r,     --repo-editor    start by bringing up the repository configuration\n"
                         "                            editor\n"
                         "   -l,     --log            start with the log window displayed\n"
                         "           --disablerepo=r  disable the specified repository, r\n"
                         "           --enablerepo=r   enable the specified repository, r\n"
                         "\n";

struct Ended
{
    int status = -1;
    QString out;
    QString err;
};

// Runs the built program with these options, and waits until the program ends by itself.
Ended run(const QStringList& arguments, const QString& program = QStringLiteral(VYRE))
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    Ended ended;
    if (process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit) {
        ended.status = process.exitCode();
    }
    process.kill();
    ended.out = QString::fromUtf8(process.readAllStandardOutput());
    ended.err = QString::fromUtf8(process.readAllStandardError());
    return ended;
}

} // namespace

class CommandLineTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir runtimeDirectory;
    std::unique_ptr<StandIn> standIn;
    std::unique_ptr<ShownWindow> shown;

    // Applies the options to a new main window.
    void apply(const QList<QByteArray>& options)
    {
        shown = std::make_unique<ShownWindow>();
        QByteArray name("vyre");
        QList<QByteArray> texts = options;
        std::vector<char*> arguments{name.data()};
        for (QByteArray& text : texts) {
            arguments.push_back(text.data());
        }
        arguments.push_back(nullptr);
        optind = 0; // makes getopt_long() start at the first argument again
        // The arguments can be local variables, because CommandLine keeps no pointers to them.
        CommandLine::apply(static_cast<int>(arguments.size()) - 1, arguments.data(), *shown->window);
    }
    // The recorded calls that enable or disable a repository during a collection, for example "enableRepo
    // base".
    QStringList repositories(const QList<QByteArray>& options)
    {
        apply(options);
        shown->start();
        QStringList found = standIn->calls().filter(QRegularExpression("^(en|dis)ableRepo "));
        found.sort();
        return found;
    }
    void checkLogIsOpened(const QByteArray& option)
    {
        apply({option});
        shown->window->show();
        QTRY_VERIFY(shown->isReady());
        bool visible = false;
        for (const QWidget* widget : QApplication::topLevelWidgets()) {
            visible = visible || (qobject_cast<const Log::Window*>(widget) != nullptr && widget->isVisible());
        }
        QVERIFY(visible);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(runtimeDirectory.isValid());
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtimeDirectory.path()));
        standIn = std::make_unique<StandIn>();
        standIn->setPackages({}, {}, {StandIn::package("editor")});
        standIn->setRepos("[base]\nname=Base\nbaseurl=file:///nowhere\nenabled=1\n"
                          "[extras]\nname=Extras\nbaseurl=file:///nowhere\nenabled=0\n");
    }

    // --- Options that change a setting

    void theModeOptionAcceptsAnyBeginningOfAModeName_data()
    {
        QTest::addColumn<QList<QByteArray>>("options");
        QTest::addColumn<int>("mode");
        using Options = QList<QByteArray>;
        QTest::newRow("no option") << Options() << 0;
        QTest::newRow("-m filter") << Options{"-m", "filter"} << 0;
        QTest::newRow("-m search") << Options{"-m", "search"} << 1;
        QTest::newRow("-msearch") << Options{"-msearch"} << 1;
        QTest::newRow("-m s") << Options{"-m", "s"} << 1;
        QTest::newRow("--mode=search") << Options{"--mode=search"} << 1;
        QTest::newRow("--mode search") << Options{"--mode", "search"} << 1;
        QTest::newRow("--mode=fil") << Options{"--mode=fil"} << 0;
        QTest::newRow("-m search --mode=") << Options{"-m", "search", "--mode="} << 0;
        QTest::newRow("--mo=search") << Options{"--mo=search"} << 1;
        QTest::newRow("the option twice") << Options{"-m", "filter", "--mode=search"} << 1;
    }

    void theModeOptionAcceptsAnyBeginningOfAModeName()
    {
        QFETCH(QList<QByteArray>, options);
        QFETCH(int, mode);
        apply(options);
        QCOMPARE(shown->modeBox->currentIndex(), mode);
        QCOMPARE(shown->filterButton()->text(), QString(mode == 0 ? "Filter" : "Search"));
    }

    void theExpressionEditShowsTheArgumentOfTheRegexpOption_data()
    {
        QTest::addColumn<QList<QByteArray>>("options");
        QTest::addColumn<QString>("expression");
        using Options = QList<QByteArray>;
        QTest::newRow("no option") << Options() << ".*";
        QTest::newRow("-e") << Options{"-e", "^a.b$"} << "^a.b$";
        QTest::newRow("-e -g") << Options{"-e", "-g"} << "-g";
        QTest::newRow("--regexp=") << Options{"--regexp=kernel"} << "kernel";
        QTest::newRow("--regexp") << Options{"--regexp", "kernel"} << "kernel";
        QTest::newRow("-e with an empty expression") << Options{"-e", ""} << "";
        QTest::newRow("letters beyond ASCII")
            << Options{"-e", "Gr\xc3\xb6\xc3\x9f"} << QString::fromUtf8("Gr\xc3\xb6\xc3\x9f");
        QTest::newRow("the option twice") << Options{"-e", "a", "-e", "b"} << "b";
    }

    void theExpressionEditShowsTheArgumentOfTheRegexpOption()
    {
        QFETCH(QList<QByteArray>, options);
        QFETCH(QString, expression);
        apply(options);
        QCOMPARE(shown->regexpEdit->text(), expression);
    }

    void theStateOptionAcceptsAnyBeginningOfAStateName_data()
    {
        QTest::addColumn<QList<QByteArray>>("options");
        QTest::addColumn<int>("state");
        using Options = QList<QByteArray>;
        QTest::newRow("no option") << Options() << 0;
        QTest::newRow("-s updatable") << Options{"-s", "updatable"} << 0;
        QTest::newRow("-s all -s u") << Options{"-s", "all", "-s", "u"} << 0;
        QTest::newRow("-s installable") << Options{"-s", "installable"} << 1;
        QTest::newRow("-s i") << Options{"-s", "i"} << 1;
        QTest::newRow("-s removable") << Options{"-s", "removable"} << 2;
        QTest::newRow("--state=rem") << Options{"--state=rem"} << 2;
        QTest::newRow("--state=all") << Options{"--state=all"} << 3;
        QTest::newRow("--state=a") << Options{"--state=a"} << 3;
        QTest::newRow("-s all --state=") << Options{"-s", "all", "--state="} << 0;
    }

    void theStateOptionAcceptsAnyBeginningOfAStateName()
    {
        QFETCH(QList<QByteArray>, options);
        QFETCH(int, state);
        apply(options);
        QCOMPARE(shown->stateBox->currentIndex(), state);
    }

    void theOptionsForDuplicatesAndGroupsSetTheCheckBoxes_data()
    {
        QTest::addColumn<QList<QByteArray>>("options");
        QTest::addColumn<bool>("duplicates");
        QTest::addColumn<bool>("groups");
        using Options = QList<QByteArray>;
        QTest::newRow("no option") << Options() << true << false;
        QTest::newRow("--duplicates") << Options{"--duplicates"} << false << false;
        QTest::newRow("--dup") << Options{"--dup"} << false << false;
        QTest::newRow("-g") << Options{"-g"} << true << true;
        QTest::newRow("--groups") << Options{"--groups"} << true << true;
        QTest::newRow("several letters in one argument") << Options{"-gl", "--duplicates"} << false << true;
    }

    void theOptionsForDuplicatesAndGroupsSetTheCheckBoxes()
    {
        QFETCH(QList<QByteArray>, options);
        QFETCH(bool, duplicates);
        QFETCH(bool, groups);
        apply(options);
        QCOMPARE(shown->dupsBox->isChecked(), duplicates);
        QCOMPARE(shown->groupsBox->isChecked(), groups);
    }

    // Each of these tests shows the main window, which a process can do only once. So "-l" and "--log" need
    // separate test functions.
    void theShortLogOptionOpensTheLog() { checkLogIsOpened("-l"); }
    void theLongLogOptionOpensTheLog() { checkLogIsOpened("--log"); }

    void repositoriesKeepTheStateInTheirFilesIfNoRepositoryOptionIsGiven()
    {
        QCOMPARE(repositories({}), (QStringList{"disableRepo extras", "enableRepo base"}));
    }

    void theEnablerepoOptionEnablesARepository()
    {
        QCOMPARE(repositories({"--enablerepo=extras"}),
                 (QStringList{"enableRepo base", "enableRepo extras"}));
    }

    void theDisablerepoOptionDisablesTheRepositoriesThatMatchItsPattern()
    {
        QCOMPARE(repositories({"--disablerepo=b?s*"}),
                 (QStringList{"disableRepo base", "disableRepo extras"}));
    }

    void patternsOfRepositoryOptionsAreCaseSensitive()
    {
        QCOMPARE(repositories({"--disablerepo=Base", "--enablerepo=EXTRAS"}),
                 (QStringList{"disableRepo extras", "enableRepo base"}));
    }

    void patternsOfRepositoryOptionsMatchOnlyWholeIdentifiers()
    {
        QCOMPARE(repositories({"--disablerepo=bas", "--enablerepo", "xtras"}),
                 (QStringList{"disableRepo extras", "enableRepo base"}));
    }

    void repositoryOptionsAreAppliedInTheOrderOfTheCommandLine()
    {
        QCOMPARE(repositories({"--disablerepo=*", "--enablerepo=extras"}),
                 (QStringList{"disableRepo base", "enableRepo extras"}));
    }

    void theLastMatchingRepositoryOptionOverridesTheOthers()
    {
        QCOMPARE(repositories({"--enablerepo=extras", "--disablerepo=*"}),
                 (QStringList{"disableRepo base", "disableRepo extras"}));
    }

    // --- Command lines that end the program at once

    void theHelpOptionEndsTheProgramWithStatusOne_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("-h") << QStringList{"-h"};
        QTest::newRow("-H") << QStringList{"-H"};
        QTest::newRow("--help") << QStringList{"--help"};
        QTest::newRow("--he") << QStringList{"--he"};
        QTest::newRow("after other options") << QStringList{"-g", "-m", "search", "--help"};
        QTest::newRow("before an invalid option") << QStringList{"-h", "-d"};
    }

    void theHelpOptionEndsTheProgramWithStatusOne()
    {
        QFETCH(QStringList, arguments);
        const Ended ended = run(arguments);
        QCOMPARE(ended.out, QString(usageText));
        QCOMPARE(ended.err, QString());
        QCOMPARE(ended.status, 1);
    }

    void anInvalidCommandLineEndsTheProgramWithAMessageAndTheUsageText_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        const auto add = [](const QStringList& arguments, const char* message) {
            QTest::newRow(qPrintable(arguments.join(' '))) << arguments << message;
        };
        add({"-m", "x"}, "vyre: unrecogized argument to -m/--mode option: x\n");
        add({"--mode=filters"}, "vyre: unrecogized argument to -m/--mode option: filters\n");
        add({"--mode=Filter"}, "vyre: unrecogized argument to -m/--mode option: Filter\n");
        add({"-s", "x"}, "vyre: unrecogized argument to -s/--state option: x\n");
        add({"--state=pdatable"}, "vyre: unrecogized argument to -s/--state option: pdatable\n");
        add({"-d"}, "vyre: unrecognized option letter: d\n");
        add({"-gd"}, "vyre: unrecognized option letter: d\n");
        add({QString::fromUtf8("-é")}, "vyre: unrecognized option letter: é\n");
        add({QString::fromUtf8("-gé€x"), "-l"}, "vyre: unrecognized option letter: é\n");
        add({"-l", QString::fromUtf8("-l😀")}, "vyre: unrecognized option letter: 😀\n");
        add({QString::fromUtf8("--é")}, "vyre: unrecogized option: --é\n");
        add({"-x"}, "vyre: unrecognized option letter: x\n");
        add({"-m"}, "vyre: unrecognized option letter: m\n");
        add({"-e"}, "vyre: unrecognized option letter: e\n");
        add({"-s"}, "vyre: unrecognized option letter: s\n");
        add({"--mode"}, "vyre: unrecognized option letter: m\n");
        add({"--nonsense"}, "vyre: unrecogized option: --nonsense\n");
        add({"--nonsense=1"}, "vyre: unrecogized option: --nonsense=1\n");
        add({"-g", "--nonsense", "-x"}, "vyre: unrecogized option: --nonsense\n");
        add({"--disablerepo"}, "vyre: unrecogized option: --disablerepo\n");
        add({"--enablerepo"}, "vyre: unrecogized option: --enablerepo\n");
        add({"--duplicates=1"}, "vyre: unrecogized option: --duplicates=1\n");
        add({"foo"}, "vyre: unrecognized argument: foo\n");
        add({"-g", "foo", "bar"}, "vyre: unrecognized argument: foo\n");
        add({"foo", "-d"}, "vyre: unrecognized argument: foo\n");
        add({"--", "-g"}, "vyre: unrecognized argument: -g\n");
        add({""}, "vyre: unrecognized argument: \n");
        add({"-"}, "vyre: unrecognized argument: -\n");
    }

    void anInvalidCommandLineEndsTheProgramWithAMessageAndTheUsageText()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const Ended ended = run(arguments);
        QCOMPARE(ended.err, message);
        QCOMPARE(ended.out, QString(usageText));
        QCOMPARE(ended.status, 1);
    }

    void aByteThatIsNotUtf8IsShownAsOneReplacementCharacter()
    {
        const QString script = QStringLiteral("exec \"$0\" \"$(printf '%b' '-g\\0351')\" -l");
        const Ended ended = run({"-c", script, VYRE}, "/bin/sh");
        QCOMPARE(ended.err, QStringLiteral("vyre: unrecognized option letter: %1\n").arg(QChar(0xFFFD)));
        QCOMPARE(ended.status, 1);
    }

    void errorMessagesBeginWithTheCommandName()
    {
        const QString link = runtimeDirectory.filePath("other name");
        QVERIFY(QFile::link(QStringLiteral(VYRE), link));
        const Ended ended = run({"foo"}, link);
        QCOMPARE(ended.err, QString("other name: unrecognized argument: foo\n"));
        QCOMPARE(ended.out, QString(usageText).replace("usage: vyre ", "usage: other name "));
        QCOMPARE(ended.status, 1);
    }

    void theProgramAcceptsTheOptionsOfQt()
    {
        const Ended ended = run({"-style=windows", "-style", "windows", "foo"});
        QCOMPARE(ended.err, QString("vyre: unrecognized argument: foo\n"));
        QCOMPARE(ended.status, 1);
    }
};

int main(int argc, char** argv)
{
    return EachAlone::run<CommandLineTest>(argc, argv);
}

#include "CommandLineTest.moc"

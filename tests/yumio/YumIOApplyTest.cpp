// SPDX-License-Identifier: GPL-2.0-or-later

#include <unistd.h>

#include <QtTest>

#include "tests/yumio/ApplyFixture.h"

namespace {

// Simulates a lack of memory for Python lists. If `failingList` is 3, the third list from now on gets no
// memory for its elements. If `failingList` is 0, every list gets memory.
int failingList = 0;
PyMemAllocatorEx memory;

void* reallocate(void*, void* old, size_t size)
{
    if (old == nullptr && failingList > 0 && --failingList == 0) {
        return nullptr;
    }
    return memory.realloc(memory.ctx, old, size);
}

class ListsWithoutMemory
{
public:
    explicit ListsWithoutMemory(int number)
    {
        PyMem_GetAllocator(PYMEM_DOMAIN_MEM, &memory);
        PyMemAllocatorEx failing = memory;
        failing.ctx = nullptr;
        failing.malloc = [](void*, size_t size) { return memory.malloc(memory.ctx, size); };
        failing.calloc = [](void*, size_t count, size_t size) {
            return memory.calloc(memory.ctx, count, size);
        };
        failing.realloc = reallocate;
        failing.free = [](void*, void* block) { memory.free(memory.ctx, block); };
        failingList = number;
        PyMem_SetAllocator(PYMEM_DOMAIN_MEM, &failing);
    }
    ~ListsWithoutMemory()
    {
        PyMem_SetAllocator(PYMEM_DOMAIN_MEM, &memory);
        failingList = 0;
    }
    ListsWithoutMemory(const ListsWithoutMemory&) = delete;
    ListsWithoutMemory& operator=(const ListsWithoutMemory&) = delete;
};

// The question that is asked if a group and one of its packages are marked.
QString conflict(const QString& package, const QString& groupAction, const QString& implied,
                 const QString& own)
{
    return QString("Package %1 is included in group G which was marked for %2, so the package would be "
                   "marked for %3.\nBut the package also was marked individually for %4.\nDo you wish to "
                   "proceed?")
        .arg(package, groupAction, implied, own);
}

} // namespace

// These tests check the lists of marked records that the script gets, and the questions and errors before the
// script gets them.
class YumIOApplyTest : public ApplyFixture
{
    Q_OBJECT

private Q_SLOTS:
    void cleanupTestCase()
    {
        init(); // deletes the records of the last test
        // When the back end ends, records are still marked. The back end must delete each of these records
        // only once.
        collect("it.available = [Package('tool'), Package('left')]");
        mark("tool", Package::Install);
        QVERIFY(!apply());
        QCOMPARE(transaction().actionEntries.count(), 1);
        for (Package::Entry* entry : yumIO().records.all()) {
            Py_CLEAR(entry->pyObject);
        }
        ApplyFixture::cleanupTestCase();
    }

    // --- Arguments of the script

    void anErrorIsShownIfAUserOtherThanRootAppliesMarks()
    {
        collect("it.available = [Package('tool')]");
        mark("tool", Package::Install);
        const int before = logLength();
        QCOMPARE(seteuid(65534), 0);
        const bool applied = apply();
        QCOMPARE(seteuid(0), 0);
        QVERIFY(!applied);
        QCOMPARE(errors(), QStringList("Must be run as root to apply changes"));
        QCOMPARE(backEnd->log(before),
                 QStringList({"4 0 Applying", "3 0 Must be run as root to apply changes"}));
        QVERIFY(!wasApplied());
    }

    void theScriptGetsTheMarkedRecordsInSixLists()
    {
        collect("it.updates = [Package('fresh', '2.0')]\n"
                "it.installed = [Package('fresh', '1.0'), Package('old', '3.0')]\n"
                "it.available = [Package('tool', '4.0'), Package('left', '5.0'), Package('set', '6.0', "
                "group='Suite')]\n"
                "BASE.history.installed['r'] = True\n"
                "it.groups = [Group('I', 'i'), Group('U', 'u', mandatory=['fresh']), Group('R', 'r')]");
        mark("fresh", Package::Update);
        mark("old", Package::Remove);
        mark("tool", Package::Install);
        mark("set", Package::Install);
        backEnd->group("I")->action = Package::Install;
        backEnd->group("U")->action = Package::Update;
        backEnd->group("R")->action = Package::Remove;
        // The order of the records may vary.
        QVERIFY(!apply("lists[0].sort(key=lambda package: package.name)"));
        QCOMPARE(given(), QString("set6.0 tool4.0; fresh-2.0<fresh-1.0; old3.0; I; U; R"));
        QCOMPARE(backEnd->text("it.did('apply')[0][0][1] is it.available[0]"), QString("True"));
        QCOMPARE(backEnd->text("[type(each) for part in it.did('apply')[0][1:2] for each in part]"),
                 QString("[<class 'list'>]"));
        QCOMPARE(backEnd->entry("left")->txAction, Package::None);
        QCOMPARE(backEnd->entry("tool")->txAction, Package::Install);
    }

    void theScriptGetsMarkedSuitesInTheListsOfThePackages()
    {
        collect("it.updates = [Package('fresh', '2.0', group='Suite')]\n"
                "it.installed = [Package('fresh', '1.0', group='Suite'), Package('old', '3.0', "
                "group='Suite')]");
        mark("fresh", Package::Update);
        mark("old", Package::Remove);
        QVERIFY(!apply());
        QCOMPARE(given(), QString("; fresh-2.0<fresh-1.0; old3.0; ; ; "));
    }

    void theScriptGetsSixEmptyListsIfNothingIsMarked()
    {
        collect("it.available = [Package('tool')]");
        QVERIFY(!apply());
        QCOMPARE(backEnd->text("it.did('apply')"), QString("[([], [], [], [], [], [])]"));
    }

    void theScriptGetsAnUpdateOfTwoInstalledVersionsAsTwoPairs()
    {
        collect("it.updates = [Package('kernel', '6.3')]\n"
                "it.installed = [Package('kernel', '6.1'), Package('kernel', '6.2')]");
        mark("kernel", Package::Update);
        QVERIFY(!apply());
        QCOMPARE(given(), QString("; kernel-6.3<kernel-6.1 kernel-6.3<kernel-6.2; ; ; ; "));
    }

    void theScriptGetsAllInstalledVersionsOfAPackageToRemove()
    {
        collect("it.updates = [Package('fresh', '2.0')]\n"
                "it.installed = [Package('kernel', v) for v in ('6.1', '6.2', '6.3')] + [Package('fresh')]");
        mark("kernel", Package::Remove);
        QVERIFY(!apply());
        QCOMPARE(given(), QString("; ; kernel6.1 kernel6.2 kernel6.3; ; ; "));
        // If the package to remove has an update, the script gets the installed version, not the update.
        mark("kernel", Package::None);
        mark("fresh", Package::Remove);
        backEnd->run("it.calls.clear()");
        QVERIFY(!apply());
        QCOMPARE(given(), QString("; ; fresh1.0; ; ; "));
    }

    void anErrorIsReportedIfAMarkedUpdateHasNoInstalledVersion()
    {
        collect("it.updates = [Package('fresh', '2.0')]");
        mark("fresh", Package::Update);
        QVERIFY(!apply());
        QCOMPARE(errors(), QStringList("Unable to find installed version for package update fresh"));
        QVERIFY(!wasApplied());
    }

    void marksAreNotAppliedIfAListForTheScriptCannotBeCreated_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("action");
        QTest::addColumn<int>("failing");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, Package::Action action, int failing, const char* expected) {
            QTest::newRow(expected) << name << int(action) << failing << expected;
        };
        row("fresh", Package::Update, 1, "Unable to add new package to pair for updated package fresh");
        row("fresh", Package::Update, 2, "Unable to add package fresh to updates list");
        row("tool", Package::Install, 1, "Unable to add package tool to installs list");
        row("old", Package::Remove, 1, "Unable to add package old to removes list");
        row("G", Package::Install, 1, "Unable to add group G to grp_installs list");
        row("G", Package::Update, 1, "Unable to add group G to grp_updates list");
        row("G", Package::Remove, 1, "Unable to add group G to grp_removes list");
    }

    void marksAreNotAppliedIfAListForTheScriptCannotBeCreated()
    {
        QFETCH(QString, name);
        QFETCH(int, action);
        QFETCH(int, failing);
        QFETCH(QString, expected);
        collect("it.updates = [Package('fresh', '2.0')]\n"
                "it.installed = [Package('fresh'), Package('old')]\n"
                "it.available = [Package('tool')]\n"
                "it.groups = [Group('G', 'g')]");
        (name == "G" ? backEnd->group(name) : backEnd->entry(name))->action = Package::Action(action);
        backEnd->run("it.does['apply'] = lambda *lists: True");
        bool applied = true;
        {
            const ListsWithoutMemory lists(failing);
            applied = yumIO().apply();
        }
        QVERIFY(!applied);
        QCOMPARE(errors(), QStringList(expected));
        QVERIFY(!wasApplied());
        // The next attempt has enough memory, and succeeds.
        QVERIFY(!apply());
        QVERIFY(wasApplied());
    }

    void anErrorIsReportedIfTheOldPackageOfAnUpdateIsMissing()
    {
        collect("it.updates = [Package('fresh', '2.0')]\nit.installed = [Package('fresh')]");
        Package::Entry& old = *backEnd->entry("fresh")->next;
        mark("fresh", Package::Update);
        PyObject* object = old.pyObject;
        old.pyObject = nullptr;
        const bool applied = apply();
        old.pyObject = object;
        QVERIFY(!applied);
        QCOMPARE(errors(), QStringList("Unable to add old package to pair for updated package fresh"));
        QVERIFY(!wasApplied());
    }

    // --- Conflicts of groups and packages

    void aQuestionIsAskedIfAGroupAndItsMemberHaveDifferentMarks_data()
    {
        QTest::addColumn<int>("groupAction");
        QTest::addColumn<QString>("member"); // its state: updatable, available or installed
        QTest::addColumn<int>("action");
        QTest::addColumn<QString>("question"); // empty if no question is expected
        const auto row = [](const char* name, Package::Action groupAction, const char* member,
                            Package::Action action, const QString& question) {
            QTest::newRow(name) << int(groupAction) << member << int(action) << question;
        };
        row("install, remove", Package::Install, "old", Package::Remove,
            conflict("old", "Install", "Remove", "Remove"));
        row("install, remove of an update", Package::Install, "fresh", Package::Remove,
            conflict("fresh", "Install", "Update", "Remove"));
        row("update, remove", Package::Update, "fresh", Package::Remove,
            conflict("fresh", "Update", "Update", "Remove"));
        row("install, install", Package::Install, "tool", Package::Install, QString());
        row("install, update", Package::Install, "fresh", Package::Update, QString());
        row("install, nothing", Package::Install, "tool", Package::None, QString());
        row("update, update", Package::Update, "fresh", Package::Update, QString());
        row("remove, install", Package::Remove, "tool", Package::Install,
            conflict("tool", "Remove", "Install", "Install"));
        row("remove, update", Package::Remove, "fresh", Package::Update,
            conflict("fresh", "Remove", "Update", "Update"));
        row("remove, remove", Package::Remove, "old", Package::Remove, QString());
        row("remove, nothing", Package::Remove, "old", Package::None, QString());
    }

    void aQuestionIsAskedIfAGroupAndItsMemberHaveDifferentMarks()
    {
        QFETCH(int, groupAction);
        QFETCH(QString, member);
        QFETCH(int, action);
        QFETCH(QString, question);
        collect("it.updates = [Package('fresh', '2.0')]\n"
                "it.installed = [Package('fresh'), Package('old')]\n"
                "it.available = [Package('tool')]\n"
                "it.groups = [Group('G', 'g', mandatory=['" +
                member + "', 'nobody'])]");
        backEnd->group("G")->action = Package::Action(groupAction);
        mark(member, Package::Action(action));
        if (question.isEmpty()) {
            QVERIFY(!apply());
            QVERIFY(wasApplied());
            return;
        }
        for (const char* no : {"No", "Escape", "Enter"}) {
            const int before = logLength();
            backEnd->answers.press(no);
            QVERIFY(!apply());
            const QList<ShownDialog> shown = backEnd->answers.take();
            QCOMPARE(shown.count(), 1);
            QCOMPARE(shown[0].title, QString("Apply"));
            QCOMPARE(shown[0].text, question);
            QStringList buttons = shown[0].buttons;
            buttons.sort();
            QCOMPARE(buttons, QStringList({"No", "Yes"}));
            QVERIFY2(!wasApplied(), no);
            QCOMPARE(backEnd->log(before), QStringList("4 0 Applying"));
        }
        backEnd->answers.press("Yes");
        QVERIFY(!apply());
        QCOMPARE(backEnd->answers.takeTexts("Apply"), QStringList(question));
        QVERIFY(wasApplied());
    }

    void onlyMandatoryAndDefaultMembersOfAGroupCauseAQuestion()
    {
        // A group can be installed without its optional and conditional packages.
        collect("it.installed = [Package(name) for name in 'abcd']\n"
                "it.groups = [Group('G', 'g', ['a'], ['b'], ['c'], ['d'])]");
        for (const char* name : {"a", "b", "c", "d"}) {
            mark(name, Package::Remove);
        }
        for (const Package::Action action : {Package::Install, Package::Update}) {
            const QString word = action == Package::Install ? "Install" : "Update";
            backEnd->group("G")->action = action;
            backEnd->answers.press("Yes");
            backEnd->answers.press("Yes");
            QVERIFY(!apply());
            QCOMPARE(backEnd->answers.takeTexts("Apply"),
                     QStringList(
                         {conflict("a", word, "Remove", "Remove"), conflict("b", word, "Remove", "Remove")}));
        }
    }

    void allMembersOfARemovedGroupCauseAQuestion()
    {
        collect("it.available = [Package(name) for name in 'abcd']\n"
                "it.groups = [Group('G', 'g', ['a'], ['b'], ['c'], ['d'])]");
        QStringList questions;
        for (const char* name : {"a", "b", "c", "d"}) {
            mark(name, Package::Install);
            questions.append(conflict(name, "Remove", "Install", "Install"));
        }
        backEnd->group("G")->action = Package::Remove;
        for (int yes = 0; yes < 4; ++yes) {
            // After the first "No", no further question is asked.
            for (int i = 0; i < yes; ++i) {
                backEnd->answers.press("Yes");
            }
            backEnd->answers.press("No");
            QVERIFY(!apply());
            QCOMPARE(backEnd->answers.takeTexts("Apply"), QStringList(questions.mid(0, yes + 1)));
            QVERIFY(!wasApplied());
        }
    }

    void aGroupWithoutAListOfDefaultPackagesIsReportedButApplied()
    {
        collect("it.groups = [Group('G', 'g')]");
        backEnd->run("del it.groups[0].default_packages");
        backEnd->group("G")->action = Package::Install;
        QVERIFY(!apply());
        QCOMPARE(errors(), QStringList("Internal error: group G.default_packages not evaluable"));
        QVERIFY(wasApplied());
    }

    void anErrorIsReportedIfARecordInAConflictHasAnInvalidState()
    {
        collect("it.available = [Package('tool')]\nit.groups = [Group('G', 'g')]");
        Package::Entry& tool = *backEnd->entry("tool");
        tool.state = static_cast<Package::State>(3);
        QVERIFY(!yumIO().applyGrpConflict(*backEnd->group("G"), tool));
        QCOMPARE(errors(), QStringList("Internal error: applyGrpConflict unexpected package state\n"));
    }

    void theQuestionAboutAConflictOfUnmarkedRecordsShowsTheWordERROR()
    {
        collect("it.available = [Package('tool')]\nit.groups = [Group('G', 'g')]");
        Package::Entry& tool = *backEnd->entry("tool");
        tool.txAction = Package::None;
        backEnd->group("G")->txAction = Package::None;
        backEnd->answers.press("Yes");
        QVERIFY(yumIO().applyGrpConflict(*backEnd->group("G"), tool));
        QCOMPARE(backEnd->answers.takeTexts("Apply"),
                 QStringList(conflict("tool", "ERROR", "Install", "ERROR")));
    }

    void aLookUpByNamePrefersTheArchitectureOfTheSystem()
    {
        collect("it.available = [Package('lib', arch='i686'), Package('lib', arch='x86_64'),\n"
                "                Package('only', arch='i686'), Package('text', arch='noarch')]");
        QVERIFY(yumIO().findPackage("lib") == backEnd->entry("lib"));
        QVERIFY(yumIO().findPackage("only") == backEnd->entry("only", "i386"));
        QVERIFY(yumIO().findPackage("only") != nullptr);
        QVERIFY(yumIO().findPackage("text") == backEnd->entry("text"));
        QVERIFY(yumIO().findPackage("nobody") == nullptr);
        backEnd->run("BASE.conf.basearch = 'i386'");
        yumIO().basearch = yumIO().getYumVar("basearch");
        QVERIFY(yumIO().findPackage("lib") == backEnd->entry("lib", "i386"));
    }
};

QTEST_MAIN(YumIOApplyTest)
#include "YumIOApplyTest.moc"

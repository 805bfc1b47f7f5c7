// SPDX-License-Identifier: GPL-2.0-or-later

#include "advisories/AdvisoryMarker.h"

#include <QtTest>

#include <memory>

#include "tests/advisories/Made.h"
#include "tests/packagetable/Table.h"

class AdvisoryMarkerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { table = std::make_unique<Table>(); }
    void init() { table->collectUsual(); }
    void cleanupTestCase() { table.reset(); }
    void anUpdateInTwoAdvisoriesIsFoundOnce();
    void aRefusalIsReportedIfAPackageHasNoUsableUpdate();
    void aRefusalIsReportedIfTheTableListsNoUpdateForAPackage();
    void aRefusalIsReportedIfAPackageIsMarkedForRemoval();
    void aRefusalIsReportedIfAnotherPackageReplacesAPackage();

private:
    AdvisoryMarker::Found find(const QVector<Advisory>& advisories) const
    {
        return AdvisoryMarker::find(table->yumIO, advisories);
    }

    std::unique_ptr<Table> table;
};

void AdvisoryMarkerTest::anUpdateInTwoAdvisoriesIsFoundOnce()
{
    const auto found = find({advisory("A-1", true, {packageOf("tool"), packageOf("many")}),
                             advisory("A-2", false, {packageOf("tool")})});
    QCOMPARE(found.entries, (QVector<Package::Entry*>{&table->entry("tool"), &table->entry("many")}));
    QCOMPARE(found.refusals, QStringList());
    // AdvisoryMarker::find() sets no marks.
    QCOMPARE(table->entry("tool").action, Package::None);
}

void AdvisoryMarkerTest::aRefusalIsReportedIfAPackageHasNoUsableUpdate()
{
    const Advisory made =
        advisory("A-1", true,
                 {packageOf("tool", Advisory::IsInstalled, "1-1", ""),
                  packageOf("tool", Advisory::Older, "3-1", "2-1"),
                  packageOf("shell", Advisory::NotOffered, "2-1", ""),
                  packageOf("kernel", Advisory::Locked, "2-1", ""), packageOf("many", Advisory::Excluded)});
    const auto found = find({made, made});
    QCOMPARE(found.entries.count(), 0);
    QCOMPARE(found.refusals, (QStringList{"tool-3-1.x86_64: the offered update 2-1 is older",
                                          "shell-2-1.x86_64: no repository offers an update",
                                          "kernel-2-1.x86_64: the version is locked",
                                          "many-2-1.x86_64: the configuration excludes the update"}));
    QCOMPARE(AdvisoryMarker::described(made.packages.first()), QString("tool-1-1.x86_64: installed"));
    QCOMPARE(AdvisoryMarker::described(packageOf("tool")),
             QString("tool-2-1.x86_64: not installed; the update 2-1 is available"));
}

void AdvisoryMarkerTest::aRefusalIsReportedIfTheTableListsNoUpdateForAPackage()
{
    const auto found = find({advisory("A-1", true, {packageOf("shell"), packageOf("nobody")})});
    QCOMPARE(found.entries.count(), 0);
    QCOMPARE(found.refusals, (QStringList{"shell-2-1.x86_64: the table lists no update",
                                          "nobody-2-1.x86_64: the table lists no update"}));
}

void AdvisoryMarkerTest::aRefusalIsReportedIfAPackageIsMarkedForRemoval()
{
    table->entry("tool").action = Package::Remove;
    table->entry("many").action = Package::Update;
    const auto found = find({advisory("A-1", true, {packageOf("tool"), packageOf("many")})});
    QCOMPARE(found.entries, QVector<Package::Entry*>{&table->entry("many")});
    QCOMPARE(found.refusals, QStringList{"tool-2-1.x86_64: it is marked for removal"});
}

void AdvisoryMarkerTest::aRefusalIsReportedIfAnotherPackageReplacesAPackage()
{
    using S = StandIn;
    table->collect({S::package("tool", {{"version", "2"}})}, {S::package("tool")},
                   {S::package("other", {{"replaced", "tool"}})});
    const auto found = find({advisory("A-1", true, {packageOf("tool")})});
    QCOMPARE(found.entries.count(), 0);
    QCOMPARE(found.refusals,
             QStringList{"tool-2-1.x86_64: a package of another name replaces it; mark that package in the "
                         "table if you want it"});
}

QTEST_MAIN(AdvisoryMarkerTest)
#include "AdvisoryMarkerTest.moc"

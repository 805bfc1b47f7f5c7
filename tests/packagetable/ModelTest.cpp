// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/Model.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "app/base/Share.h"
#include "packagetable/Columns.h"
#include "tests/packagetable/Described.h"
#include "tests/packagetable/Table.h"
#include "widgets/Colors.h"

using namespace PackageTable;

namespace {

QImage picture(const QIcon& icon)
{
    return icon.pixmap(16, 16).toImage();
}

QImage picture(const char* name)
{
    return picture(QIcon(Share::absolute(QStringLiteral("icons/") + QLatin1String(name))));
}

} // namespace

class ModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();
    void theModelHasAllColumnsAndOneRowForEachRecord();
    void everyColumnHasATitleAndAToolTip_data();
    void everyColumnHasATitleAndAToolTip();
    void theModelHasNoDataForUnsupportedHeaderRolesAndSections();
    void textCellsShowTheTextsOfTheRecord();
    void iconColumnsShowNoText();
    void aStarFollowsTheVersionIfSeveralVersionsAreInstalled_data();
    void aStarFollowsTheVersionIfSeveralVersionsAreInstalled();
    void theActionColumnShowsAnIcon_data();
    void theActionColumnShowsAnIcon();
    void theStateColumnShowsAnIcon();
    void theKindColumnShowsAnIcon();
    void everyTextColumnHasATextInAtLeastOneRow();
    void textColumnsHaveNoIcon();
    void theToolTipOfTheActionColumnShowsTheAction();
    void theToolTipOfTheStateColumnShowsTheState();
    void theToolTipOfTheStateColumnShowsTheVersionLock();
    void theToolTipOfTheStateColumnShowsTheAdvisories();
    void onlyUpdatableRecordsAreMarkedForUpdate();
    void anExcludedPackageCannotBeMarked();
    void theToolTipOfTheKindColumnShowsTheKind();
    void theToolTipOfTheVersionColumnListsAllVersions();
    void cellsHaveNoToolTipIfTheirColumnDefinesNone();
    void theTextColourDependsOnTheState_data();
    void theTextColourDependsOnTheState();
    void theTextColoursDependOnTheBackground();
    void theActionAndStateColumnsHaveNoColour();
    void theDataForUserRoleAreTheSortKeyOrTheRecord();
    void theCellsHaveNoDataForUnsupportedRoles();
    void theModelHasNoDataForAnIndexOutsideTheTable();
    void aStarFollowsTheVersionOfAnAvailablePackageIfTheRecordHasAChain();
    void theModelReturnsTheStateOfARow();
    void theModelStoresEvenAForbiddenAction();
    void noActionIsSetForAnIndexOutsideTheTable();
    void togglingAnActionSelectsTheNextPermittedAction_data();
    void togglingAnActionSelectsTheNextPermittedAction();
    void selectedRowsAreMarkedForInstallationOrUpdate();
    void markingTheSelectedRowsSkipsReplacedAndReplacingPackages();
    void markingTheSelectedRowsKeepsTheMarksOfInstalledPackages();
    void clearingTheActionsRemovesAllMarks();
    void aResetOfTheModelNotifiesTheViews();
    void describingAMissingRowOpensNoDialog();
    void theSameDialogDescribesEachRow();
    void aModelWithoutABackEndHasNoRows();

private:
    QModelIndex cell(const char* name, int column) const
    {
        return model->index(table->row(QLatin1String(name)), column);
    }
    QVariant data(const char* name, int column, int role = Qt::DisplayRole) const
    {
        return model->data(cell(name, column), role);
    }

    static QVector<int> textColumns()
    {
        return columns([](const Columns::Row& row) { return !row.showsPictures(); });
    }

    std::unique_ptr<Table> table;
    std::unique_ptr<Model> model;
};

void ModelTest::initTestCase()
{
    table = std::make_unique<Table>();
}

void ModelTest::init()
{
    table->collectUsual();
    model = std::make_unique<Model>(&table->yumIO);
}

void ModelTest::cleanupTestCase()
{
    model.reset();
    table.reset();
}

void ModelTest::theModelHasAllColumnsAndOneRowForEachRecord()
{
    QCOMPARE(model->rowCount(), 11);
    QCOMPARE(model->columnCount(), int(ColumnCount));
    QCOMPARE(model->columnCount(model->index(0, 0)), int(ColumnCount));
    QCOMPARE(sortedNames(*model), (QStringList{"Editors", "Games", "Tools", "editor", "kernel", "lib", "lib",
                                               "many", "office", "shell", "tool"}));
}

void ModelTest::everyColumnHasATitleAndAToolTip_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("toolTip");
    // Each pair is the heading of a column and its tool tip, in the order of the columns.
    static const char* const headings[][2] = {
        {"Action", "Action to be performed on the package, if any: Update, Install, Remove"},
        {"State", "Indicates whether the package is Installed or not and, if installed, whether it is "
                  "Up-to-date or not"},
        {"Kind", "Whether the package is an ordinary package, a suite of packages, or a group of packages"},
        {"Name", "Name of the package"},
        {"Version", "Version and release of the package as version-release;\n"
                    "If the Epoch is non-zero, includes it as epoch:version-release"},
        {"Repository", "Repository from which the most recent version of the package is available"},
        {"Architecture", "Architecture for which the package is applicable, or \"noarch\" for "
                         "general-purpose packages"},
        {"Size", "Size of the package"},
        {"Build Time", "Date and time at which the package was created"},
    };
    static_assert(sizeof headings / sizeof *headings == ColumnCount, "each column has its heading");
    for (int column = 0; column < ColumnCount; ++column) {
        QTest::newRow(headings[column][0]) << column << headings[column][1];
    }
}

void ModelTest::everyColumnHasATitleAndAToolTip()
{
    QFETCH(int, column);
    QFETCH(QString, toolTip);
    QCOMPARE(model->headerData(column, Qt::Horizontal, Qt::DisplayRole),
             QVariant(QString::fromLatin1(QTest::currentDataTag())));
    QCOMPARE(model->headerData(column, Qt::Horizontal, Qt::ToolTipRole), QVariant(toolTip));
}

void ModelTest::theModelHasNoDataForUnsupportedHeaderRolesAndSections()
{
    for (const int column : {-1, int(ColumnCount)}) {
        QCOMPARE(model->headerData(column, Qt::Horizontal, Qt::DisplayRole), QVariant());
        QCOMPARE(model->headerData(column, Qt::Horizontal, Qt::ToolTipRole), QVariant());
    }
    QCOMPARE(model->headerData(3, Qt::Vertical, Qt::DisplayRole), QVariant());
    QCOMPARE(model->headerData(3, Qt::Vertical, Qt::ToolTipRole), QVariant());
    QCOMPARE(model->headerData(3, Qt::Horizontal, Qt::DecorationRole), QVariant());
    QCOMPARE(model->headerData(3, Qt::Horizontal, Qt::UserRole), QVariant());
}

void ModelTest::textCellsShowTheTextsOfTheRecord()
{
    QStringList texts;
    for (const int column : textColumns()) {
        texts << data("editor", column).toString();
    }
    QCOMPARE(texts, (QStringList{"editor", "3:9-4", "base", "noarch", "4.9Kb", "Fri Jan  2 00:00:00 1970"}));
    QCOMPARE(data("tool", 5), QVariant(QStringLiteral("updates")));
    for (const int column : textColumns()) {
        QCOMPARE(data("Games", column).toString(), QString(column == NameColumn ? "Games" : ""));
    }
}

void ModelTest::iconColumnsShowNoText()
{
    const QVector<int> pictures = columns([](const Columns::Row& row) { return row.showsPictures(); });
    QCOMPARE(pictures, (QVector<int>{ActionColumn, StateColumn, KindColumn}));
    for (const int column : pictures) {
        QCOMPARE(data("tool", column), QVariant());
    }
}

void ModelTest::aStarFollowsTheVersionIfSeveralVersionsAreInstalled_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("tool") << "2-1";       // out of date, one installed version
    QTest::newRow("many") << "2-1 *";     // out of date, two installed versions
    QTest::newRow("shell") << "1-1";      // installed once
    QTest::newRow("kernel") << "0.5-1 *"; // installed twice
    QTest::newRow("editor") << "3:9-4";   // not installed
}

void ModelTest::aStarFollowsTheVersionIfSeveralVersionsAreInstalled()
{
    QFETCH(QString, text);
    QCOMPARE(data(QTest::currentDataTag(), 4), QVariant(text));
    QCOMPARE(Columns::text(table->entry(QLatin1String(QTest::currentDataTag())), VersionColumn), text);
}

void ModelTest::theActionColumnShowsAnIcon_data()
{
    QTest::addColumn<int>("action");
    QTest::newRow("updateBox.png") << int(Package::Update);
    QTest::newRow("installBox.png") << int(Package::Install);
    QTest::newRow("removeBox.png") << int(Package::Remove);
    QTest::newRow("noneBox.png") << int(Package::None);
}

void ModelTest::theActionColumnShowsAnIcon()
{
    QFETCH(int, action);
    table->entry("tool").action = static_cast<Package::Action>(action);
    const QImage shown = picture(data("tool", 0, Qt::DecorationRole).value<QIcon>());
    QVERIFY(!shown.isNull());
    for (const char* name : {"updateBox.png", "installBox.png", "removeBox.png", "noneBox.png"}) {
        QCOMPARE(shown == picture(name), qstrcmp(name, QTest::currentDataTag()) == 0);
    }
}

void ModelTest::theStateColumnShowsAnIcon()
{
    const QImage outOfDate = picture(data("tool", 1, Qt::DecorationRole).value<QIcon>());
    const QImage upToDate = picture(data("shell", 1, Qt::DecorationRole).value<QIcon>());
    QVERIFY(!outOfDate.isNull());
    QVERIFY(outOfDate != upToDate);
    QCOMPARE(outOfDate, picture("out-of-date.png"));
    QCOMPARE(upToDate, picture("up-to-date.png"));
    QVERIFY(data("editor", 1, Qt::DecorationRole).value<QIcon>().isNull());
}

void ModelTest::theKindColumnShowsAnIcon()
{
    const QImage ordinary = picture(data("tool", 2, Qt::DecorationRole).value<QIcon>());
    const QImage group = picture(data("Games", 2, Qt::DecorationRole).value<QIcon>());
    const QImage suite = picture(data("office", 2, Qt::DecorationRole).value<QIcon>());
    QVERIFY(!ordinary.isNull());
    QVERIFY(ordinary != group && group != suite && suite != ordinary);
    QCOMPARE(ordinary, picture("package.png"));
    QCOMPARE(group, picture("group.png"));
    QCOMPARE(suite, picture("suite.png"));
}

void ModelTest::everyTextColumnHasATextInAtLeastOneRow()
{
    for (const int column : textColumns()) {
        int texts = 0;
        for (int row = 0; row < model->rowCount(); ++row) {
            texts += model->index(row, column).data().toString().isEmpty() ? 0 : 1;
        }
        QVERIFY2(texts > 0, qPrintable(model->headerData(column, Qt::Horizontal).toString()));
    }
}

void ModelTest::textColumnsHaveNoIcon()
{
    for (const int column : textColumns()) {
        QCOMPARE(data("tool", column, Qt::DecorationRole), QVariant());
    }
}

void ModelTest::theToolTipOfTheActionColumnShowsTheAction()
{
    Package::Entry& entry = table->entry("tool");
    QCOMPARE(data("tool", 0, Qt::ToolTipRole), QVariant());
    entry.action = Package::Update;
    QCOMPARE(data("tool", 0, Qt::ToolTipRole), QVariant(QStringLiteral("Update package")));
    entry.action = Package::Install;
    QCOMPARE(data("tool", 0, Qt::ToolTipRole), QVariant(QStringLiteral("Install package")));
    entry.action = Package::Remove;
    QCOMPARE(data("tool", 0, Qt::ToolTipRole), QVariant(QStringLiteral("Remove package")));
}

void ModelTest::theToolTipOfTheStateColumnShowsTheState()
{
    QCOMPARE(data("editor", 1, Qt::ToolTipRole),
             QVariant(QStringLiteral("Package is available for installation")));
    QCOMPARE(data("shell", 1, Qt::ToolTipRole),
             QVariant(QStringLiteral("Package is installed and up-to-date")));
    QCOMPARE(data("tool", 1, Qt::ToolTipRole),
             QVariant(QStringLiteral("Package is available to update an out-of-date version")));
    table->entry("shell").excluded = true;
    QCOMPARE(data("shell", 1, Qt::ToolTipRole),
             QVariant(QStringLiteral(
                 "Package is installed; the configuration excludes it from updates and removals")));
}

void ModelTest::theToolTipOfTheStateColumnShowsTheVersionLock()
{
    table->standIn.setVersionLocks({{"shell", "shell-0:1-1.*"}, {"editor", "edi*"}, {"Games", "Games"}});
    table->collectUsual();
    table->standIn.removeVersionLocks();
    QCOMPARE(data("shell", 1, Qt::ToolTipRole),
             QVariant(QStringLiteral(
                 "Package is installed and up-to-date\nThe version is locked: shell-0:1-1.*")));
    QCOMPARE(data("editor", 1, Qt::ToolTipRole),
             QVariant(QStringLiteral("Package is available for installation\nThe version is locked: edi*")));
    // Version locks do not apply to groups.
    QCOMPARE(data("Games", 1, Qt::ToolTipRole),
             QVariant(QStringLiteral("Package is available for installation")));
    QCOMPARE(data("tool", 1, Qt::ToolTipRole),
             QVariant(QStringLiteral("Package is available to update an out-of-date version")));
}

void ModelTest::theToolTipOfTheStateColumnShowsTheAdvisories()
{
    using S = StandIn;
    QJsonArray many;
    for (int i = 1; i <= 10; ++i) {
        many.append(QStringLiteral("A-%1").arg(i));
    }
    table->collect({S::package("tool", {{"version", "2"}, {"advised", QJsonArray{"A-2", "A-1"}}}),
                    S::package("lib", {{"version", "2"}, {"advised", many}}),
                    S::package("other", {{"version", "2"}})},
                   {S::package("tool"), S::package("lib"), S::package("other")}, {});
    const QString update = QStringLiteral("Package is available to update an out-of-date version");
    QCOMPARE(data("tool", 1, Qt::ToolTipRole).toString(), update + "\nAdvisories: A-2, A-1");
    QCOMPARE(data("lib", 1, Qt::ToolTipRole).toString(),
             update + "\nAdvisories: A-1, A-2, A-3, A-4, A-5, A-6, A-7, A-8 and 2 more");
    QCOMPARE(data("other", 1, Qt::ToolTipRole).toString(), update);
}

void ModelTest::onlyUpdatableRecordsAreMarkedForUpdate()
{
    QSignalSpy dataChanged(model.get(), SIGNAL(dataChanged(const QModelIndex&, const QModelIndex&)));
    model->setUpdates({&table->entry("tool"), &table->entry("shell"), &table->entry("editor")});
    QCOMPARE(changed(dataChanged), QStringList{"tool"});
    QCOMPARE(table->entry("tool").action, Package::Update);
    QCOMPARE(table->entry("many").action, Package::None);
    // "shell" and "editor" are not out of date, so setUpdates() does not mark them for update.
    QCOMPARE(table->entry("shell").action, Package::None);
    QCOMPARE(table->entry("editor").action, Package::None);
}

void ModelTest::anExcludedPackageCannotBeMarked()
{
    QVERIFY(!data("shell", 0, Qt::ToolTipRole).isValid());
    QVERIFY(Model::canBeMarked(table->entry("shell")));
    table->entry("shell").excluded = true;
    model->toggleAction(model->index(table->row("shell"), 0));
    QCOMPARE(table->entry("shell").action, Package::None);
    QCOMPARE(data("shell", 0, Qt::ToolTipRole),
             QVariant(QStringLiteral(
                 "Package is installed; the configuration excludes it from updates and removals")));
    QVERIFY(!Model::canBeMarked(table->entry("shell")));
    // One of the two installed versions of "kernel" is not excluded, so "kernel" can be marked for removal.
    table->entry("kernel").excluded = true;
    model->toggleAction(model->index(table->row("kernel"), 0));
    QCOMPARE(table->entry("kernel").action, Package::Remove);
    table->entry("tool").next->excluded = true;
    table->entry("tool").action = Package::Update;
    model->toggleAction(model->index(table->row("tool"), 0));
    QCOMPARE(table->entry("tool").action, Package::None);
    // The installed version is excluded, so "tool" cannot be removed. The new version is not excluded, so
    // "tool" can still be updated.
    QVERIFY(Model::canBeMarked(table->entry("tool")));
    QVERIFY(!data("tool", 0, Qt::ToolTipRole).isValid());
}

void ModelTest::theToolTipOfTheKindColumnShowsTheKind()
{
    QCOMPARE(data("Games", 2, Qt::ToolTipRole), QVariant(QStringLiteral("Group of packages")));
    QCOMPARE(data("tool", 2, Qt::ToolTipRole), QVariant(QStringLiteral("Ordinary package")));
    QCOMPARE(data("office", 2, Qt::ToolTipRole), QVariant(QStringLiteral("Suite of packages")));
}

void ModelTest::theToolTipOfTheVersionColumnListsAllVersions()
{
    QCOMPARE(data("editor", 4, Qt::ToolTipRole), QVariant(QStringLiteral("Available: 3:9-4")));
    QCOMPARE(data("shell", 4, Qt::ToolTipRole), QVariant(QStringLiteral("Installed: 1-1")));
    QCOMPARE(data("kernel", 4, Qt::ToolTipRole),
             QVariant(QStringLiteral("Installed: 0.5-1\nInstalled: 1-1")));
    QCOMPARE(data("tool", 4, Qt::ToolTipRole), QVariant(QStringLiteral("Available: 2-1\nInstalled: 1-1")));
    QCOMPARE(data("many", 4, Qt::ToolTipRole),
             QVariant(QStringLiteral("Available: 2-1\nInstalled: 0.5-1\nInstalled: 1-1")));
}

void ModelTest::cellsHaveNoToolTipIfTheirColumnDefinesNone()
{
    const QVector<int> others = columns([](const Columns::Row& row) { return row.cellToolTip == nullptr; });
    QVERIFY(others.contains(NameColumn));
    for (const int column : others) {
        QCOMPARE(data("tool", column, Qt::ToolTipRole), QVariant());
    }
}

void ModelTest::theTextColourDependsOnTheState_data()
{
    QTest::addColumn<QString>("normal");
    QTest::addColumn<QString>("disabled");
    QTest::newRow("tool") << Colors::error() << Colors::errorDisabled();
    QTest::newRow("editor") << Colors::minor() << Colors::minorDisabled();
}

void ModelTest::theTextColourDependsOnTheState()
{
    QFETCH(QString, normal);
    QFETCH(QString, disabled);
    const QVector<int> coloured = columns([](const Columns::Row& row) { return row.coloured; });
    QVERIFY(coloured.contains(NameColumn));
    for (const int column : coloured) {
        model->setEnabled(true);
        QCOMPARE(data(QTest::currentDataTag(), column, Qt::ForegroundRole).value<QColor>(), QColor(normal));
        QCOMPARE(data("shell", column, Qt::ForegroundRole), QVariant());
        model->setEnabled(false);
        QCOMPARE(data(QTest::currentDataTag(), column, Qt::ForegroundRole).value<QColor>(), QColor(disabled));
        QCOMPARE(data("shell", column, Qt::ForegroundRole), QVariant());
    }
}

void ModelTest::theTextColoursDependOnTheBackground()
{
    const QColor dark(35, 35, 35);
    const auto colour = [this](const char* name) {
        return data(name, 3, Qt::ForegroundRole).value<QColor>();
    };
    model->setBackground(dark);
    QCOMPARE(colour("tool"), QColor(Colors::readable("red", dark)));
    QCOMPARE(colour("editor"), QColor(Colors::readable("#8b5a2b", dark)));
    QVERIFY(colour("editor") != QColor("#8b5a2b"));
    QCOMPARE(data("shell", 3, Qt::ForegroundRole), QVariant());
    model->setEnabled(false);
    QCOMPARE(colour("tool"), QColor(Colors::readableDisabled("#ffa9b8", "red", dark)));
    model->setEnabled(true);
    model->setBackground(Qt::white);
    QCOMPARE(colour("tool"), QColor("red"));
    QCOMPARE(colour("editor"), QColor("#8b5a2b"));
}

void ModelTest::theActionAndStateColumnsHaveNoColour()
{
    const QVector<int> plain = columns([](const Columns::Row& row) { return !row.coloured; });
    QCOMPARE(plain.mid(0, 2), (QVector<int>{ActionColumn, StateColumn}));
    for (const int column : plain) {
        for (const char* name : {"tool", "editor", "shell"}) {
            QCOMPARE(data(name, column, Qt::ForegroundRole), QVariant());
        }
    }
}

void ModelTest::theDataForUserRoleAreTheSortKeyOrTheRecord()
{
    table->entry("editor").action = Package::Install;
    QCOMPARE(data("editor", 0, Qt::UserRole), QVariant(1));
    QCOMPARE(data("tool", 0, Qt::UserRole), QVariant(3));
    QCOMPARE(data("tool", 1, Qt::UserRole), QVariant(0));
    QCOMPARE(data("editor", 1, Qt::UserRole), QVariant(1));
    QCOMPARE(data("shell", 1, Qt::UserRole), QVariant(2));
    QCOMPARE(data("office", 2, Qt::UserRole), QVariant(0));
    QCOMPARE(data("Games", 2, Qt::UserRole), QVariant(1));
    QCOMPARE(data("tool", 2, Qt::UserRole), QVariant(2));
    QCOMPARE(data("editor", 7, Qt::UserRole), QVariant(qlonglong(5000)));
    QCOMPARE(data("editor", 8, Qt::UserRole), QVariant(qulonglong(86400)));
    const QVector<int> others = columns([](const Columns::Row& row) { return row.value == nullptr; });
    QVERIFY(others.contains(NameColumn));
    for (const int column : others) {
        QCOMPARE(data("editor", column, Qt::UserRole).value<Package::Entry*>(), &table->entry("editor"));
    }
}

void ModelTest::theCellsHaveNoDataForUnsupportedRoles()
{
    for (int column = 0; column < ColumnCount; ++column) {
        for (const int role : {int(Qt::EditRole), int(Qt::FontRole), int(Qt::BackgroundRole),
                               int(Qt::CheckStateRole), int(Qt::SizeHintRole), int(Qt::UserRole) + 1}) {
            QCOMPARE(data("tool", column, role), QVariant());
        }
    }
}

void ModelTest::theModelHasNoDataForAnIndexOutsideTheTable()
{
    // This model makes an index outside its columns, as a faulty proxy could do.
    class Careless : public Model
    {
    public:
        using Model::Model;
        QModelIndex beyond() const { return createIndex(0, ColumnCount); }
    };
    const Careless careless(&table->yumIO);
    QVERIFY(careless.beyond().isValid());
    for (const int role : {int(Qt::DisplayRole), int(Qt::UserRole), int(Qt::ToolTipRole)}) {
        QCOMPARE(model->data(QModelIndex(), role), QVariant());
        QCOMPARE(model->data(model->index(model->rowCount(), 3), role), QVariant());
        QCOMPARE(model->data(model->index(0, ColumnCount), role), QVariant());
        QCOMPARE(careless.data(careless.beyond(), role), QVariant());
    }
    // After the next collection, the model has no row for this index.
    const QModelIndex last = model->index(model->rowCount() - 1, 3);
    table->collect({}, {}, {StandIn::package("alone")});
    QVERIFY(last.isValid());
    QCOMPARE(model->data(last), QVariant());
}

void ModelTest::aStarFollowsTheVersionOfAnAvailablePackageIfTheRecordHasAChain()
{
    Package::Entry& lib = table->entry("lib");
    QCOMPARE(lib.state, Package::Available);
    lib.next = new Package::Entry;
    QCOMPARE(data("lib", VersionColumn), QVariant(lib.verRel + " *"));
}

void ModelTest::theModelReturnsTheStateOfARow()
{
    QCOMPARE(model->getState(table->row("tool")), Package::Updatable);
    QCOMPARE(model->getState(table->row("editor")), Package::Available);
    QCOMPARE(model->getState(table->row("shell")), Package::Installed);
}

void ModelTest::theModelStoresEvenAForbiddenAction()
{
    QSignalSpy spy(model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    model->setAction(cell("shell", 5), Package::Install);
    QCOMPARE(table->entry("shell").action, Package::Install);
    QCOMPARE(changed(spy), QStringList{"shell"});
}

void ModelTest::noActionIsSetForAnIndexOutsideTheTable()
{
    const QModelIndex last = model->index(model->rowCount() - 1, 0);
    table->collect({}, {}, {StandIn::package("alone")});
    QSignalSpy spy(model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    model->setAction(QModelIndex(), Package::Install);
    model->setAction(last, Package::Install);
    model->toggleAction(QModelIndex());
    model->toggleAction(last);
    model->setSelected({QModelIndex(), last});
    QCOMPARE(table->entry("alone").action, Package::None);
    QCOMPARE(changed(spy), QStringList());
}

void ModelTest::togglingAnActionSelectsTheNextPermittedAction_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    const struct
    {
        const char* name;
        Package::Action after[4]; // the next action after None, Update, Install, Remove
    } cycles[] = {
        {"tool", {Package::Update, Package::Remove, Package::None, Package::None}},
        {"editor", {Package::Install, Package::None, Package::None, Package::None}},
        {"shell", {Package::Remove, Package::None, Package::None, Package::None}},
    };
    const Package::Action before[4] = {Package::None, Package::Update, Package::Install, Package::Remove};
    for (const auto& cycle : cycles) {
        for (int i = 0; i < 4; ++i) {
            QTest::addRow("%s from %d", cycle.name, int(before[i]))
                << cycle.name << int(before[i]) << int(cycle.after[i]);
        }
    }
}

void ModelTest::togglingAnActionSelectsTheNextPermittedAction()
{
    QFETCH(QString, name);
    QFETCH(int, before);
    QFETCH(int, after);
    table->entry(name).action = static_cast<Package::Action>(before);
    QSignalSpy spy(model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    model->toggleAction(model->index(table->row(name), 0));
    QCOMPARE(int(table->entry(name).action), after);
    QCOMPARE(changed(spy), QStringList{name});
}

void ModelTest::selectedRowsAreMarkedForInstallationOrUpdate()
{
    table->entry("tool").action = Package::Remove;
    QSignalSpy spy(model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    model->setSelected({cell("editor", 0), cell("shell", 0), cell("tool", 4), cell("Games", 0)});
    QCOMPARE(table->entry("editor").action, Package::Install);
    QCOMPARE(table->entry("tool").action, Package::Update);
    QCOMPARE(table->entry("Games").action, Package::Install);
    QCOMPARE(table->entry("many").action, Package::None);
    QCOMPARE(changed(spy), (QStringList{"editor", "tool", "Games"}));
}

void ModelTest::markingTheSelectedRowsSkipsReplacedAndReplacingPackages()
{
    using S = StandIn;
    const QJsonObject old{{"version", "1"}, {"repoid", "@System"}};
    table->collect({S::package("split", {{"version", "2"}})},
                   {S::package("split", old), S::package("oldpost", old)},
                   {S::package("newpost", {{"replaced", "oldpost"}}),
                    S::package("better", {{"replaced", "split"}}), S::package("plain")});
    model->reset();
    model->setSelected(
        {cell("split", 0), cell("oldpost", 0), cell("newpost", 0), cell("better", 0), cell("plain", 0)});
    for (const char* name : {"split", "oldpost", "newpost", "better"}) {
        QCOMPARE(table->entry(name).action, Package::None);
    }
    QCOMPARE(table->entry("plain").action, Package::Install);
    const auto toolTip = [this](const char* name) {
        return cell(name, StateColumn).data(Qt::ToolTipRole).toString().split('\n');
    };
    QCOMPARE(toolTip("plain"), QStringList("Package is available for installation"));
    QCOMPARE(toolTip("oldpost").value(0), QString("Package is installed and up-to-date"));
    QVERIFY(toolTip("oldpost").value(1).startsWith("Replaced by "));
    QVERIFY(toolTip("newpost").value(1).startsWith("Replaces "));
    // setSelected() leaves these rows unmarked, but the user can mark each of them alone.
    model->toggleAction(cell("newpost", 0));
    QCOMPARE(table->entry("newpost").action, Package::Install);
}

void ModelTest::markingTheSelectedRowsKeepsTheMarksOfInstalledPackages()
{
    table->entry("shell").action = Package::Remove;
    QSignalSpy spy(model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    model->setSelected({cell("shell", 0), cell("kernel", 0)});
    QCOMPARE(table->entry("shell").action, Package::Remove);
    QCOMPARE(table->entry("kernel").action, Package::None);
    QCOMPARE(spy.count(), 0);
}

void ModelTest::clearingTheActionsRemovesAllMarks()
{
    QStringList marked;
    for (int row = 0; row < table->yumIO.count(); row += 3) {
        table->yumIO[row]->action = row % 2 == 0 ? Package::Remove : Package::Install;
        marked << table->yumIO[row]->name;
    }
    QSignalSpy spy(model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    model->clearActions();
    QCOMPARE(changed(spy), marked);
    for (int row = 0; row < table->yumIO.count(); ++row) {
        QCOMPARE(table->yumIO[row]->action, Package::None);
    }
    model->clearActions();
    QCOMPARE(spy.count(), 0);
}

void ModelTest::aResetOfTheModelNotifiesTheViews()
{
    QSignalSpy before(model.get(), SIGNAL(modelAboutToBeReset()));
    QSignalSpy after(model.get(), SIGNAL(modelReset()));
    model->reset();
    QCOMPARE(before.count(), 1);
    QCOMPARE(after.count(), 1);
}

void ModelTest::describingAMissingRowOpensNoDialog()
{
    QWidget window;
    // If the index is invalid, no dialog opens, so these functions return at once.
    model->describe(QModelIndex(), &window);
    model->browse(QModelIndex(), &window);
    QVERIFY(window.findChildren<QDialog*>().isEmpty());
}

void ModelTest::theSameDialogDescribesEachRow()
{
    QWidget window;
    QList<QDialog*> dialogs;
    QStringList described;
    const auto describe = [&](const char* name, QWidget* parent) {
        QVERIFY(withDialog<Describe::Dialog>([&] { model->describe(cell(name, NameColumn), parent); },
                                             [&](Describe::Dialog& dialog) {
                                                 dialogs << &dialog;
                                                 described << dialog.findChild<QLabel*>()->text();
                                             }));
    };
    QWidget other;
    describe("tool", &window);
    describe("Games", &other);
    QCOMPARE(described, (QStringList{"tool", "Games"}));
    QCOMPARE(dialogs.at(0), dialogs.at(1));
    QCOMPARE(dialogs.at(0)->parentWidget(), &window);
    // The parent window may delete the dialog before the model is deleted. The next description then needs a
    // new dialog.
    delete dialogs.takeFirst();
    describe("shell", &other);
    QCOMPARE(described.last(), QString("shell"));
}

void ModelTest::aModelWithoutABackEndHasNoRows()
{
    const Model orphan(nullptr);
    QCOMPARE(orphan.rowCount(), 0);
    QCOMPARE(orphan.columnCount(), int(ColumnCount));
}

QTEST_MAIN(ModelTest)
#include "ModelTest.moc"

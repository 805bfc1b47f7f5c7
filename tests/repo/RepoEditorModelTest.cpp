// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorModel.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "repo/RepoEntry.h"
#include "tests/repo/Editor.h"

using namespace RepoEditor;

namespace {

Repo::Entry made(const QString& id, qint32 enabled = 1)
{
    Repo::Entry entry;
    entry.id = id;
    entry.name = id.toUpper();
    entry.baseurl = QStringLiteral("http://h/") + id;
    entry.enabled = enabled;
    return entry;
}

} // namespace

class RepoEditorModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void theModelHasFourColumnsAndOneRowForEachEntry();
    void theHeadersHaveTheExpectedTexts();
    void onlyTheHorizontalHeadersOfTheFourColumnsHaveTexts();
    void theSessionColumnShowsTheSessionState();
    void thePermanentColumnShowsThePermanentState_data();
    void thePermanentColumnShowsThePermanentState();
    void theToolTipOfThePermanentColumnDependsOnTheSessionState();
    void theIdentifierAndNameColumnsShowTexts();
    void aNewRepositoryIsShownInItalics();
    void aRepositoryWithoutASessionStateIsShownAndStoredAsDisabled();
    void theModelHasNoDataForAnIndexOutsideTheTable();
    void theModelHasNoDataForTheIndexOfARemovedRow();

    void aSignalReportsAnAddedRow();
    void aSignalReportsARemovedRow();
    void aSignalReportsAResetOfTheModel();
    void aSignalReportsAChangedRow();
    void togglingTheSessionBoxChangesTheSessionState();
    void togglingThePermanentBoxChangesThePermanentState_data();
    void togglingThePermanentBoxChangesThePermanentState();
    void togglingAnInvalidIndexDoesNothing();
    void browsingARepositoryOpensItsUrl();
    void browsingARowDoesNothingIfTheRowNumberReachesTheNumberOfPackages();

private:
    QVariant data(int row, int column, int role = Qt::DisplayRole) const
    {
        return model->data(model->index(row, column), role);
    }
    bool isOn(int row, int column) const
    {
        const QIcon on(Share::absolute(QStringLiteral("icons/checkBox.png")));
        const QIcon off(Share::absolute(QStringLiteral("icons/noneBox.png")));
        const QImage shown = data(row, column, Qt::DecorationRole).value<QIcon>().pixmap(16).toImage();
        if (shown == on.pixmap(16).toImage()) {
            return true;
        }
        if (shown.isNull() || shown != off.pixmap(16).toImage()) {
            qFatal("the cell shows neither of the two icons");
        }
        return false;
    }

    std::unique_ptr<BackEnd> backEnd;
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;
    std::unique_ptr<Model> model;
};

void RepoEditorModelTest::initTestCase()
{
    backEnd = std::make_unique<BackEnd>();
}

void RepoEditorModelTest::init()
{
    session = {{QStringLiteral("base"), true}, {QStringLiteral("updates"), false}};
    conf = std::make_unique<YumConfIO>(requests, session);
    conf->enabled = true;
    conf->entries = {made(QStringLiteral("base")), made(QStringLiteral("updates"))};
    model = std::make_unique<Model>(&backEnd->yumIO, conf.get());
    backEnd->collect(2);
}

void RepoEditorModelTest::cleanup()
{
    model.reset();
    conf.reset();
}

void RepoEditorModelTest::cleanupTestCase()
{
    backEnd.reset();
}

void RepoEditorModelTest::theModelHasFourColumnsAndOneRowForEachEntry()
{
    QCOMPARE(model->rowCount(), 2);
    QCOMPARE(model->columnCount(), 4);
    QCOMPARE(model->rowCount(model->index(0, 0)), 0);
    conf->entries.clear();
    QCOMPARE(model->rowCount(), 0);
    QCOMPARE(model->columnCount(), 4);
}

void RepoEditorModelTest::theHeadersHaveTheExpectedTexts()
{
    QStringList texts;
    QStringList toolTips;
    for (int column = 0; column < 4; ++column) {
        texts << model->headerData(column, Qt::Horizontal).toString();
        toolTips << model->headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString();
    }
    QCOMPARE(texts, (QStringList{"Sess", "Perm", "Identifier", "Name"}));
    QCOMPARE(toolTips,
             (QStringList{"Whether or not the repository is used during this session.\n"
                          "It overrides the persistent Enabled flag in the repository configuration.",
                          "Whether or not the repository is configured to be enabled by default.\n"
                          "It can be overridden for a particular session.",
                          "Unique identifier for the repository", "Description of the repository"}));
}

void RepoEditorModelTest::onlyTheHorizontalHeadersOfTheFourColumnsHaveTexts()
{
    QVERIFY(!model->headerData(4, Qt::Horizontal).isValid());
    QVERIFY(!model->headerData(-1, Qt::Horizontal).isValid());
    QVERIFY(!model->headerData(0, Qt::Vertical).isValid());
    QVERIFY(!model->headerData(0, Qt::Vertical, Qt::ToolTipRole).isValid());
    QVERIFY(!model->headerData(0, Qt::Horizontal, Qt::DecorationRole).isValid());
}

void RepoEditorModelTest::theSessionColumnShowsTheSessionState()
{
    QVERIFY(!data(0, SessionColumn).isValid());
    QVERIFY(isOn(0, SessionColumn));
    QVERIFY(!isOn(1, SessionColumn));
    QCOMPARE(data(0, SessionColumn, Qt::ToolTipRole).toString(),
             QStringLiteral("Repository is enabled for this session"));
    QCOMPARE(data(1, SessionColumn, Qt::ToolTipRole).toString(),
             QStringLiteral("Repository is not enabled for this session"));
    QVERIFY(!data(0, SessionColumn, Qt::FontRole).isValid());
}

void RepoEditorModelTest::thePermanentColumnShowsThePermanentState_data()
{
    QTest::addColumn<int>("enabled");
    QTest::addColumn<bool>("byDefault");
    QTest::addColumn<bool>("on");
    QTest::newRow("yes") << 2 << false << true;
    QTest::newRow("no") << 0 << true << false;
    QTest::newRow("not specified, on by default") << 1 << true << true;
    QTest::newRow("not specified, off by default") << 1 << false << false;
}

void RepoEditorModelTest::thePermanentColumnShowsThePermanentState()
{
    QFETCH(int, enabled);
    QFETCH(bool, byDefault);
    conf->entries[0].enabled = enabled;
    conf->enabled = byDefault;
    QTEST(isOn(0, PermanentColumn), "on");
    QVERIFY(!data(0, PermanentColumn).isValid());
}

void RepoEditorModelTest::theToolTipOfThePermanentColumnDependsOnTheSessionState()
{
    conf->entries[0].enabled = 0;
    conf->entries[1].enabled = 2;
    QCOMPARE(data(0, PermanentColumn, Qt::ToolTipRole).toString(),
             QStringLiteral("Repository is configured to be enabled"));
    QCOMPARE(data(1, PermanentColumn, Qt::ToolTipRole).toString(),
             QStringLiteral("Repository is not configured to be enabled"));
}

void RepoEditorModelTest::theIdentifierAndNameColumnsShowTexts()
{
    QCOMPARE(data(0, IdentifierColumn).toString(), QStringLiteral("base"));
    QCOMPARE(data(0, NameColumn).toString(), QStringLiteral("BASE"));
    for (int column : {int(IdentifierColumn), int(NameColumn)}) {
        for (int role : {int(Qt::DecorationRole), int(Qt::ToolTipRole), int(Qt::FontRole)}) {
            QVERIFY(!data(0, column, role).isValid());
        }
    }
}

void RepoEditorModelTest::aNewRepositoryIsShownInItalics()
{
    QFont font = QApplication::font();
    font.setBold(true);
    model->setViewFont(font);
    conf->entries[0].id.clear();
    QCOMPARE(data(0, IdentifierColumn).toString(), QStringLiteral("(new)"));
    const QFont shown = data(0, IdentifierColumn, Qt::FontRole).value<QFont>();
    QVERIFY(shown.italic());
    QVERIFY(shown.bold());
    conf->entries[0].id = QStringLiteral("named");
    QCOMPARE(data(0, IdentifierColumn).toString(), QStringLiteral("named"));
    QVERIFY(!data(0, IdentifierColumn, Qt::FontRole).isValid());
}

void RepoEditorModelTest::aRepositoryWithoutASessionStateIsShownAndStoredAsDisabled()
{
    conf->entries[0].id = QStringLiteral("other");
    QVERIFY(!session.contains(QStringLiteral("other")));
    QVERIFY(!isOn(0, SessionColumn));
    QVERIFY(session.contains(QStringLiteral("other")));
    QCOMPARE(session.value(QStringLiteral("other"), true), false);
}

void RepoEditorModelTest::theModelHasNoDataForAnIndexOutsideTheTable()
{
    QVERIFY(!model->data(QModelIndex()).isValid());
    QVERIFY(!model->data(model->createIndex(0, 4)).isValid());
    QVERIFY(!model->data(model->createIndex(2, IdentifierColumn)).isValid());
}

void RepoEditorModelTest::theModelHasNoDataForTheIndexOfARemovedRow()
{
    const QModelIndex last = model->index(1, SessionColumn);
    conf->entries.removeLast();
    QVERIFY(!model->data(last, Qt::DecorationRole).isValid());
    model->toggleUse(last);
    model->toggleEnabled(last);
    QVERIFY(!model->removeRow(1));
}

void RepoEditorModelTest::aSignalReportsAnAddedRow()
{
    QSignalSpy inserted(model.get(), SIGNAL(rowsInserted(QModelIndex, int, int)));
    QCOMPARE(model->addRow(made(QStringLiteral("third"))), 2);
    QCOMPARE(inserted.size(), 1);
    QCOMPARE(inserted.at(0).at(1).toInt(), 2);
    QCOMPARE(inserted.at(0).at(2).toInt(), 2);
    QCOMPARE(conf->entries.size(), 3);
    QCOMPARE(conf->entries.at(2).baseurl, QStringLiteral("http://h/third"));
}

void RepoEditorModelTest::aSignalReportsARemovedRow()
{
    QSignalSpy removed(model.get(), SIGNAL(rowsRemoved(QModelIndex, int, int)));
    QVERIFY(model->removeRow(0));
    QCOMPARE(removed.size(), 1);
    QCOMPARE(removed.at(0).at(1).toInt(), 0);
    QCOMPARE(conf->entries.size(), 1);
    QCOMPARE(conf->entries.at(0).id, QStringLiteral("updates"));
    QVERIFY(!model->removeRow(1));
    QVERIFY(!model->removeRow(-1));
    QCOMPARE(removed.size(), 1);
}

void RepoEditorModelTest::aSignalReportsAResetOfTheModel()
{
    QSignalSpy resets(model.get(), SIGNAL(modelReset()));
    model->reset();
    QCOMPARE(resets.size(), 1);
}

void RepoEditorModelTest::aSignalReportsAChangedRow()
{
    QSignalSpy changes(model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex)));
    model->dataChanged(1);
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes.at(0).at(0).toModelIndex(), model->index(1, 0));
    QCOMPARE(changes.at(0).at(1).toModelIndex(), model->index(1, 3));
    QCOMPARE(model->createIndex(1), model->index(1, 0));
}

void RepoEditorModelTest::togglingTheSessionBoxChangesTheSessionState()
{
    QSignalSpy changes(model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex)));
    QSignalSpy uses(model.get(), SIGNAL(useChanged()));
    QSignalSpy configs(model.get(), SIGNAL(configChanged()));
    model->toggleUse(model->index(1, IdentifierColumn));
    QCOMPARE(session.value(QStringLiteral("updates")), true);
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes.at(0).at(0).toModelIndex(), model->index(1, 0));
    QCOMPARE(changes.at(0).at(1).toModelIndex(), model->index(1, 0));
    model->toggleUse(model->index(1, SessionColumn));
    QCOMPARE(session.value(QStringLiteral("updates")), false);
    // If the session has no state for a repository, the model treats the repository as disabled. So the first
    // toggle enables the repository.
    conf->entries[0].id = QStringLiteral("other");
    model->toggleUse(model->index(0, SessionColumn));
    QCOMPARE(session.value(QStringLiteral("other")), true);
    QCOMPARE(uses.size(), 3);
    QCOMPARE(configs.size(), 0);
    QCOMPARE(conf->entries.at(1).enabled, 1);
}

void RepoEditorModelTest::togglingThePermanentBoxChangesThePermanentState_data()
{
    QTest::addColumn<int>("enabled");
    QTest::addColumn<bool>("byDefault");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::newRow("no") << 0 << true << 2 << 0;
    QTest::newRow("yes") << 2 << true << 0 << 2;
    QTest::newRow("not specified, on by default") << 1 << true << 0 << 2;
    QTest::newRow("not specified, off by default") << 1 << false << 2 << 0;
}

void RepoEditorModelTest::togglingThePermanentBoxChangesThePermanentState()
{
    QFETCH(int, enabled);
    QFETCH(bool, byDefault);
    conf->entries[1].enabled = enabled;
    conf->enabled = byDefault;
    QSignalSpy changes(model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex)));
    QSignalSpy uses(model.get(), SIGNAL(useChanged()));
    QSignalSpy configs(model.get(), SIGNAL(configChanged()));
    const bool before = isOn(1, PermanentColumn);
    model->toggleEnabled(model->index(1, PermanentColumn));
    QTEST(conf->entries.at(1).enabled, "first");
    QCOMPARE(isOn(1, PermanentColumn), !before);
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes.at(0).at(0).toModelIndex(), model->index(1, 1));
    QCOMPARE(changes.at(0).at(1).toModelIndex(), model->index(1, 1));
    model->toggleEnabled(model->index(1, PermanentColumn));
    QTEST(conf->entries.at(1).enabled, "second");
    QCOMPARE(isOn(1, PermanentColumn), before);
    QCOMPARE(configs.size(), 2);
    QCOMPARE(uses.size(), 0);
    QCOMPARE(session,
             (QHash<QString, bool>{{QStringLiteral("base"), true}, {QStringLiteral("updates"), false}}));
}

void RepoEditorModelTest::togglingAnInvalidIndexDoesNothing()
{
    QSignalSpy uses(model.get(), SIGNAL(useChanged()));
    QSignalSpy configs(model.get(), SIGNAL(configChanged()));
    model->toggleUse(QModelIndex());
    model->toggleEnabled(QModelIndex());
    QCOMPARE(uses.size() + configs.size(), 0);
}

void RepoEditorModelTest::browsingARepositoryOpensItsUrl()
{
    backEnd->installBrowser();
    model->browse(model->index(1, IdentifierColumn), nullptr);
    QCOMPARE(BackEnd::browsed(), QStringList{QStringLiteral("http://h/updates")});
    model->browse(QModelIndex(), nullptr);
    QTest::qWait(200);
    QVERIFY(!BackEnd::wasBrowsed());
}

void RepoEditorModelTest::browsingARowDoesNothingIfTheRowNumberReachesTheNumberOfPackages()
{
    backEnd->installBrowser();
    backEnd->collect(1);
    model->browse(model->index(0, IdentifierColumn), nullptr);
    QCOMPARE(BackEnd::browsed(), QStringList{QStringLiteral("http://h/base")});
    model->browse(model->index(1, IdentifierColumn), nullptr);
    QTest::qWait(200);
    QVERIFY(!BackEnd::wasBrowsed());
}

QTEST_MAIN(RepoEditorModelTest)
#include "RepoEditorModelTest.moc"

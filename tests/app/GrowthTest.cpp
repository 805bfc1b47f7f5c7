// SPDX-License-Identifier: GPL-2.0-or-later

#include <QJsonDocument>
#include <QProcess>
#include <QtTest>
#include <QtWidgets>

#include <atomic>
#include <cstdio>
#include <functional>

#include "tests/app/ShownWindow.h"
#include "tests/support/StandIn.h"

namespace {

// The number of executed basic blocks of our own code, on all threads. This measure of the work does not
// depend on the machine or on other programs.
std::atomic<qint64> executedBlocks{0};

// The smaller number of packages. The test also counts the work for four times this number.
constexpr int smallNumber = 2000;

// The limit for the work with four times as many packages, as a multiple of the work with the smaller number.
// Most operations need less than four times the work, because some of their work does not depend on the
// number of packages. A sort needs about 4.7 times the work, and a quadratic loop needs sixteen times the
// work.
constexpr double mostGrowth = 5;

} // namespace

// The compiler adds a call of this function to each basic block in the counted code.
extern "C" void __sanitizer_cov_trace_pc();
extern "C" void __sanitizer_cov_trace_pc()
{
    executedBlocks.fetch_add(1, std::memory_order_relaxed);
}

// Tests that the work of no operation grows like the square of the number of packages. For this test,
// CMakeLists.txt compiles the code of all windows and of the back end again, with the option that counts
// basic blocks.
class GrowthTest : public QObject
{
    Q_OBJECT

public:
    // Shows the window with this number of packages, and acts as a user does. Returns the work of each
    // action.
    static QJsonObject measure(int packages);

private:
    static void setPackages(StandIn& standIn, int count);

private Q_SLOTS:
    void theWorkDoesNotGrowLikeTheSquareOfTheNumberOfPackages();
};

// Two of every five packages are installed, and one of these two has an update. One of every ten packages
// exists for two architectures.
void GrowthTest::setPackages(StandIn& standIn, int count)
{
    QJsonArray updates;
    QJsonArray installed;
    QJsonArray available;
    QJsonArray groups;
    for (int i = 0; i < count; ++i) {
        const qint64 mixed = (i * 7919LL + 13) % count; // the names are not sorted
        const QString name = QStringLiteral("package-%1-%2").arg(mixed % 89).arg(mixed);
        const QJsonArray needs{QStringLiteral("library-%1").arg(i % 50),
                               QStringLiteral("package-%1").arg(i / 2)};
        QJsonArray files;
        for (int file = 0; file < 4; ++file) {
            files.append(QStringLiteral("/usr/share/%1/file%2").arg(name).arg(file));
        }
        const QJsonObject values{{"summary", QStringLiteral("The summary of %1").arg(name)},
                                 {"buildtime", 1600000000 + i},
                                 {"size", 1000 + 17 * i},
                                 {"arch", i % 3 == 0 ? "noarch" : "x86_64"},
                                 {"requires", needs},
                                 {"files", files}};
        QJsonObject newer = values;
        newer["version"] = "2";
        if (i % 5 == 0) {
            updates.append(StandIn::package(name, newer));
            installed.append(StandIn::package(name, values));
        } else if (i % 5 == 1) {
            installed.append(StandIn::package(name, values));
        } else {
            available.append(StandIn::package(name, values));
        }
        if (i % 10 == 3) {
            QJsonObject other = values;
            other["arch"] = "i686";
            available.append(StandIn::package(name, other));
        }
        if (i % 40 == 0) {
            groups.append(StandIn::group(QStringLiteral("Group %1").arg(i)));
        }
    }
    standIn.setPackages(updates, installed, available, groups);
}

QJsonObject GrowthTest::measure(int packages)
{
    StandIn standIn;
    setPackages(standIn, packages);
    ShownWindow shown;
    QJsonObject counts;
    const auto count = [&counts, &shown](const QString& action, const std::function<void()>& act) {
        const qint64 before = executedBlocks;
        act();
        if (!QTest::qWaitFor([&shown] { return shown.isReady(); }, 60000)) {
            qFatal("the window does not become usable");
        }
        shown.view->viewport()->repaint();
        counts[action] = executedBlocks - before;
    };
    count("start", [&shown] { shown.start(); });
    count("list everything", [&shown] {
        shown.choose(shown.stateBox, 3);
        shown.groupsBox->setChecked(true);
    });
    if (shown.proxy->rowCount() < packages) {
        qFatal("only %d rows are listed", shown.proxy->rowCount());
    }
    QHeaderView* const header = shown.view->horizontalHeader();
    for (int column = PackageTable::NameColumn; column < PackageTable::ColumnCount; ++column) {
        count(QStringLiteral("sort by column %1").arg(column),
              [header, column] { Q_EMIT header->sectionClicked(column); });
        count(QStringLiteral("sort by column %1, descending").arg(column),
              [header, column] { Q_EMIT header->sectionClicked(column); });
    }
    count("filter by a word", [&shown] { shown.filter("package-1"); });
    count("filter by an expression", [&shown] { shown.filter("[0-9]+7|summary of [a-z]"); });
    count("list all rows again", [&shown] { shown.filter(""); });
    count("fit the columns", [&shown] { shown.press("Re&size"); });
    count("mark the updates", [&shown] { shown.press("Set &Update of Listed"); });
    count("clear the marks", [&shown] { shown.press("&Clear Actions"); });
    count("select all rows", [&shown] { shown.view->selectAll(); });
    count("mark the selected rows", [&shown] { shown.press("Set &Install/Update of Selected"); });
    count("refresh with marks", [&shown] { shown.press("Re&fresh"); });
    count("begin to search", [&shown] { shown.choose(shown.modeBox, PackageTable::Search); });
    count("search", [&shown] { shown.filter("/usr/share/package-7"); });
    count("search again", [&shown] { shown.filter("library-1"); });
    count("search for nothing", [&shown] { shown.filter("no such text"); });
    return counts;
}

void GrowthTest::theWorkDoesNotGrowLikeTheSquareOfTheNumberOfPackages()
{
    QJsonObject found[2];
    for (int run = 0; run < 2; ++run) {
        QProcess process; // a process can have only one stand-in
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QCoreApplication::applicationFilePath(),
                      {"count", QString::number(run == 0 ? smallNumber : 4 * smallNumber)});
        QVERIFY(process.waitForFinished(-1));
        QCOMPARE(process.exitCode(), 0);
        found[run] = QJsonDocument::fromJson(process.readAllStandardOutput()).object();
    }
    QVERIFY(found[0].contains("search again"));
    QStringList faults;
    for (const QString& action : found[0].keys()) {
        const double few = found[0][action].toDouble();
        const double many = found[1][action].toDouble();
        QVERIFY2(few > 0, qPrintable(action));
        const QString text = QStringLiteral("%1: %2 -> %3 blocks, %4 times")
                                 .arg(action)
                                 .arg(few, 0, 'f', 0)
                                 .arg(many, 0, 'f', 0)
                                 .arg(many / few, 0, 'f', 2);
        qInfo("%s", qPrintable(text));
        if (many / few > mostGrowth) {
            faults.append(text);
        }
    }
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
}

int main(int argc, char** argv)
{
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    QApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "count") == 0) {
        std::puts(QJsonDocument(GrowthTest::measure(QByteArray(argv[2]).toInt())).toJson().constData());
        return 0;
    }
    GrowthTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "GrowthTest.moc"

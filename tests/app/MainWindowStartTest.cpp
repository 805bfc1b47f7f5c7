// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include <algorithm>
#include <unistd.h>

#include "app/Notice.h"
#include "tests/app/EachAlone.h"
#include "tests/app/StandInWindow.h"
#include "tests/packagetable/Described.h"
#include "tests/support/Question.h"

using namespace PackageTable;

// Tests of the main window when the program starts, and of its saved settings.
class MainWindowStartTest : public StandInWindow
{
    Q_OBJECT

private:
    void compareAfterTheEditor(Mode mode, const char* expression, const QStringList& listed);

private Q_SLOTS:
    void theWindowCallsNoScriptMethodBeforeItIsShown();
    void theWindowIsPaintedBeforeThePackagesAreCollected();
    void theTableListsTheOutdatedPackagesAfterTheStart();
    void eventsAreServedBetweenTheStepsThatShowTheTable();
    void theTableIsNotPaintedBeforeItCanBeUsed();
    void showingTheWindowForTheSecondTimeCollectsNothing();
    void theColumnsFitTheirContentsAfterTheStart();
    void theFirstCollectionUsesTheFilterThatWasSetBeforehand();
    void theFirstCollectionUsesTheSearchThatWasSetBeforehand();
    void theFilterOfTheCommandLineIsAppliedAfterTheRepositoryEditorHasClosed()
    {
        compareAfterTheEditor(Filter, "many|shell", {"many", "shell"});
    }
    void theSearchOfTheCommandLineIsAppliedAfterTheRepositoryEditorHasClosed()
    {
        compareAfterTheEditor(Search, "needle", {"editor", "many", "tool"});
    }
    void theProgramQuitsIfTheBackEndCannotStart();
    void theLogOptionShowsTheLogBeforeTheBackEndStarts();
    void theQuitButtonInTheCredentialsDialogPreventsTheFirstCollection();
    void theFirstCollectionUsesTheCredentialsThatTheUserEntersAtStartup();
    void theScriptReadsTheRepositoriesAgainAfterTheRepositoryEditorHasClosed();
    void theLogOptionShowsTheLogAtStartup();
    void theLogIsHiddenAtStartupWithoutTheLogOption();
    void theNoticesAboutMissingRightsAndLoggedErrorsAreShownInTurn();
    void aNoticeSaysThatTheSystemRestrictsTheChangesOfRoot();
    void theNoticeAboutMissingRightsIsShownAfterTheRepositoryEditorHasClosed();

    void theTableShowsTheReasonIfNoRowIsListed();
    void theTableDoesNotSayThatTheSystemIsUpToDateIfACollectionFails();
    void quittingSavesTheWindowSizeAndTheColumns();
    void theSavedWindowSizeAndColumnsAreRestored();
    void invalidSavedSettingsChangeNothing();
};

void MainWindowStartTest::theWindowCallsNoScriptMethodBeforeItIsShown()
{
    QCOMPARE(usable(), usableWhileBusy);
    QCOMPARE(busyCursor(), QString("busy"));
    QCOMPARE(shown->listed(), QStringList());
    QCOMPARE(standIn->calls(), QStringList());
    // The constructor has queued no work.
    QTest::qWait(100);
    QCOMPARE(standIn->calls(), QStringList());
    QVERIFY(!shown->window->isVisible());
}

void MainWindowStartTest::theWindowIsPaintedBeforeThePackagesAreCollected()
{
    QStringList seen;
    QImage picture;
    QVERIFY(inTheMiddle([this] { shown->window->show(); },
                        [this, &seen, &picture] {
                            seen << (shown->window->isVisible() ? "visible" : "hidden")
                                 << (shown->window->windowHandle()->isExposed() ? "exposed" : "covered")
                                 << (shown->area->isVisible() ? "table" : "no table") << busyCursor()
                                 << usable();
                            picture = shown->window->screen()
                                          ->grabWindow(shown->window->winId())
                                          .toImage()
                                          .convertToFormat(QImage::Format_RGB32);
                        }));
    QCOMPARE(seen, (QStringList{"visible", "exposed", "no table", "busy"} + usableWhileBusy));
    // The menu bar is painted: it has several colours.
    QSet<QRgb> colours;
    for (int x = 0; x < picture.width(); ++x) {
        colours.insert(picture.pixel(x, shown->window->menuBar()->height() / 2));
    }
    QVERIFY(colours.count() > 3);
    QTRY_VERIFY(shown->isReady());
}

void MainWindowStartTest::theTableListsTheOutdatedPackagesAfterTheStart()
{
    shown->start();
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
    QCOMPARE(shown->marks(), QStringList());
    QCOMPARE(shown->label->text(), QString());
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(standIn->calls("collectFileLists") + standIn->calls("collectOtherData"), 0);
    QVERIFY(shown->view->horizontalHeader()->isSortIndicatorShown());
}

namespace {

// Calls a function for each event of a widget.
class Watch : public QObject
{
public:
    Watch(QObject* watched, std::function<void(QEvent::Type)> function) : call(std::move(function))
    {
        watched->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        call(event->type());
        return false;
    }

private:
    std::function<void(QEvent::Type)> call;
};

} // namespace

void MainWindowStartTest::eventsAreServedBetweenTheStepsThatShowTheTable()
{
    QStringList seen;
    const auto note = [this, &seen] {
        seen << (shown->area->isHidden() ? "hidden" : shown->area->isEnabled() ? "usable" : "disabled");
    };
    connect(shown->model, &QAbstractItemModel::modelReset, this, [this, &note] {
        if (shown->model->rowCount() > 0) {
            QTimer::singleShot(0, this, note);
        }
    });
    const Watch watch(shown->area, [this, &note](QEvent::Type type) {
        if (type == QEvent::Show) {
            QTimer::singleShot(0, this, note);
        }
    });
    shown->start();
    QTRY_COMPARE(seen, QStringList({"hidden", "disabled"}));
}

void MainWindowStartTest::theTableIsNotPaintedBeforeItCanBeUsed()
{
    QList<bool> usableAtPaint;
    const Watch watch(shown->view->viewport(), [this, &usableAtPaint](QEvent::Type type) {
        if (type == QEvent::Paint) {
            usableAtPaint << shown->isReady();
        }
    });
    shown->start();
    QTRY_VERIFY(!usableAtPaint.isEmpty());
    QVERIFY(!usableAtPaint.contains(false));
}

void MainWindowStartTest::showingTheWindowForTheSecondTimeCollectsNothing()
{
    shown->start();
    shown->window->hide();
    shown->window->show();
    QTest::qWait(200);
    QVERIFY(shown->isReady());
    QCOMPARE(standIn->calls("setupRepos"), 1);
}

void MainWindowStartTest::theColumnsFitTheirContentsAfterTheStart()
{
    const QString longName = QString("name").repeated(15);
    standIn->setPackages({}, {}, {StandIn::package(longName)});
    shown->start();
    // The columns are also wide enough for records that are not listed.
    QCOMPARE(shown->listed(), QStringList());
    QVERIFY(shown->view->columnWidth(NameColumn) >= shown->view->fontMetrics().horizontalAdvance(longName));
}

void MainWindowStartTest::theFirstCollectionUsesTheFilterThatWasSetBeforehand()
{
    shown->window->setMode(Filter);
    shown->window->setRegexp("l");
    shown->window->setStateFilter(ViewAll);
    shown->window->setDups(false);
    shown->window->setGroups(true);
    QCOMPARE(shown->regexpEdit->text(), QString("l"));
    QCOMPARE(shown->stateBox->currentIndex(), 3);
    QVERIFY(!shown->dupsBox->isChecked());
    QVERIFY(shown->groupsBox->isChecked());
    shown->start();
    QCOMPARE(shown->sorted(), (QStringList{"lib", "shell", "tool"}));
    shown->filter("");
    QCOMPARE(shown->sorted(), (QStringList{"Games", "editor", "lib", "many", "shell", "tool"}));
}

void MainWindowStartTest::theFirstCollectionUsesTheSearchThatWasSetBeforehand()
{
    shown->window->setMode(Search);
    shown->window->setRegexp("needle");
    shown->window->setStateFilter(ViewAll);
    QCOMPARE(shown->modeBox->currentIndex(), 1);
    QCOMPARE(usable(), usableWhileBusy);
    shown->start();
    QCOMPARE(shown->sorted(), (QStringList{"editor", "many", "tool"}));
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
}

void MainWindowStartTest::compareAfterTheEditor(Mode mode, const char* expression, const QStringList& listed)
{
    shown->window->setRepoEditorAtStart();
    shown->window->setMode(mode);
    shown->window->setRegexp(expression);
    shown->window->setStateFilter(ViewAll);
    const Once once([] { return QApplication::activeModalWidget() != nullptr; },
                    [] { QApplication::activeModalWidget()->close(); });
    shown->window->show();
    QTRY_VERIFY_WITH_TIMEOUT(shown->isReady(), 20000);
    QCOMPARE(shown->sorted(), listed);
    // Afterwards, the user can filter with another expression.
    shown->filter("too");
    QCOMPARE(shown->listed(), QStringList{"tool"});
}

void MainWindowStartTest::theProgramQuitsIfTheBackEndCannotStart()
{
    standIn->setRefusing(true);
    shown->window->setLogAtStart();
    const Answers answers("Close");
    bool table = false;
    QTimer watch;
    connect(&watch, &QTimer::timeout, [this, &table] { table = table || shown->area->isVisible(); });
    watch.start(1);
    QCOMPARE(runToTheEnd([this] { shown->window->show(); }), 0);
    QVERIFY(!shown->window->isVisible());
    QVERIFY(!logIsVisible());
    QVERIFY(!table);
    QCOMPARE(answers.titles(), QStringList{"VYRE Yum Error"});
    QVERIFY2(answers.texts().first().contains("Unable to initialize"), qPrintable(answers.texts().first()));
    QCOMPARE(standIn->calls("setupRepos"), 0);
}

void MainWindowStartTest::theLogOptionShowsTheLogBeforeTheBackEndStarts()
{
    standIn->setRefusing(true);
    shown->window->setLogAtStart();
    // The message about the failure opens while the back end is still starting.
    QStringList seen;
    const Once once([] { return qobject_cast<QDialog*>(QApplication::activeModalWidget()) != nullptr; },
                    [&seen] {
                        seen << QApplication::activeModalWidget()->windowTitle()
                             << (logIsVisible() ? "log" : "no log");
                        QApplication::activeModalWidget()->close();
                    });
    QCOMPARE(runToTheEnd([this] { shown->window->show(); }), 0);
    QCOMPARE(seen, (QStringList{"VYRE Yum Error", "log"}));
}

void MainWindowStartTest::theQuitButtonInTheCredentialsDialogPreventsTheFirstCollection()
{
    const QByteArray repos("[base]\nbaseurl=http://h/vantor?u=&p=&path=/x\n");
    standIn->setRepos(repos);
    const Answers answers("Quit");
    QCOMPARE(runToTheEnd([this] { shown->window->show(); }), 0);
    QCOMPARE(answers.titles(), QStringList{"VYRE Authentication"});
    QVERIFY(!shown->window->isVisible());
    QCOMPARE(standIn->calls("setupRepos"), 0);
    QFile file(standIn->root() + "/etc/yum.repos.d/standin.repo");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), repos);
}

void MainWindowStartTest::theFirstCollectionUsesTheCredentialsThatTheUserEntersAtStartup()
{
    standIn->setRepos("[base]\nbaseurl=http://h/vantor?u=&p=&path=/x\n");
    const auto dialogTakesInput = [] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        return dialog != nullptr && takesInput(dialog);
    };
    const Once once(dialogTakesInput, [] {
        QWidget* dialog = QApplication::activeModalWidget();
        for (QLineEdit* field : dialog->findChildren<QLineEdit*>()) {
            QTest::keyClicks(field, "me");
        }
        QTest::mouseClick(buttonOf(dialog, "OK"), Qt::LeftButton);
    });
    shown->window->show();
    QTRY_VERIFY_WITH_TIMEOUT(shown->isReady(), 20000);
    QVERIFY(once.isDone());
    QFile file(standIn->root() + "/etc/yum.repos.d/standin.repo");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("[base]\nbaseurl=http://h/vantor?u=me&p=me&path=/x\n"));
    // The script read the repository file before VYRE wrote the credentials to this file, so the script must
    // read the file a second time.
    const QStringList calls = standIn->calls();
    QVERIFY2(calls.contains("reset") && calls.indexOf("reset") < calls.indexOf("setupRepos"),
             qPrintable(calls.join(';')));
}

void MainWindowStartTest::theScriptReadsTheRepositoriesAgainAfterTheRepositoryEditorHasClosed()
{
    shown->window->setRepoEditorAtStart();
    const Once once([] { return qobject_cast<QDialog*>(QApplication::activeModalWidget()) != nullptr; },
                    [] { QApplication::activeModalWidget()->close(); });
    shown->window->show();
    QTRY_COMPARE_WITH_TIMEOUT(shown->listed(), (QStringList{"many", "tool"}), 20000);
    QVERIFY(once.isDone());
    const QStringList calls = standIn->calls();
    QVERIFY2(calls.contains("reset") && calls.indexOf("reset") < calls.indexOf("setupRepos"),
             qPrintable(calls.join(';')));
}

void MainWindowStartTest::theNoticesAboutMissingRightsAndLoggedErrorsAreShownInTurn()
{
    constexpr char nobody[] = "65534";
    QCOMPARE(QProcess::execute("chown", {"--recursive", nobody, QFile::decodeName(qgetenv("VYRESHARE"))}), 0);
    standIn->setComplaining(true);
    QCOMPARE(seteuid(QByteArray(nobody).toUInt()), 0);
    shown->start();
    QCOMPARE(seteuid(0), 0);
    auto* notice = shown->window->findChild<Notice*>();
    QVERIFY(notice->isVisible());
    QCOMPARE(notice->wholeText(), QString("VYRE cannot change packages, because it does not run as root"));
    QVERIFY(QMetaObject::invokeMethod(notice, "showNext"));
    QCOMPARE(notice->wholeText(), QString("There are errors in the log (Ctrl+L)"));
    QVERIFY(notice->isVisible());
}

void MainWindowStartTest::aNoticeSaysThatTheSystemRestrictsTheChangesOfRoot()
{
    standIn->setRestricted(true);
    shown->start();
    const auto* notice = shown->window->findChild<Notice*>();
    QVERIFY(notice->isVisible());
    QCOMPARE(notice->wholeText(),
             QString("VYRE cannot change packages while the file system of /db is read-only"));
}

void MainWindowStartTest::theNoticeAboutMissingRightsIsShownAfterTheRepositoryEditorHasClosed()
{
    constexpr char nobody[] = "65534";
    QCOMPARE(QProcess::execute("chown", {"--recursive", nobody, QFile::decodeName(qgetenv("VYRESHARE"))}), 0);
    shown->window->setRepoEditorAtStart();
    const Once once([] { return qobject_cast<QDialog*>(QApplication::activeModalWidget()) != nullptr; },
                    [] { QApplication::activeModalWidget()->close(); });
    QCOMPARE(seteuid(QByteArray(nobody).toUInt()), 0);
    shown->window->show();
    const bool listed =
        QTest::qWaitFor([this] { return shown->area->isVisible() && shown->isReady(); }, 20000);
    QCOMPARE(seteuid(0), 0);
    QVERIFY(listed);
    auto* notice = shown->window->findChild<Notice*>();
    QVERIFY(notice->isVisible());
    QCOMPARE(notice->wholeText(), QString("VYRE cannot change packages, because it does not run as root"));
    // After later changes to the repositories, the window does not show this notice again.
    QVERIFY(QMetaObject::invokeMethod(notice, "showNext"));
    QVERIFY(QMetaObject::invokeMethod(shown->window, "reposChanged"));
    QVERIFY(!notice->isVisible());
}

void MainWindowStartTest::theTableShowsTheReasonIfNoRowIsListed()
{
    standIn->setPackages({}, {StandIn::package("shell")}, {});
    shown->start();
    const auto told = [this] { return shown->view->accessibleDescription(); };
    QCOMPARE(shown->listed(), QStringList());
    QCOMPARE(told(), QString("No package has an update."));
    shown->choose(shown->stateBox, ViewInstallable);
    // Without an expression, the hint about other views would be pointless.
    QCOMPARE(told(), QString("No package matches.\n"
                             "\"View Installable\" lists only packages that are not installed."));
    shown->filter("(");
    QCOMPARE(told(), QString("This is not a valid regular expression:\nUnmatched ( or \\("));
    shown->choose(shown->stateBox, ViewUpdatable);
    shown->filter("shell");
    const QString onlyUpdates = "No package matches.\n"
                                "\"View Updatable\" lists only packages that have an update. "
                                "Another view may list packages that match.";
    QCOMPARE(told(), onlyUpdates);
    shown->choose(shown->stateBox, ViewRemovable);
    shown->filter("Shell");
    QCOMPARE(
        told(),
        QString(
            "No package matches.\nWith other upper and lower case letters, packages match. For both forms "
            "of a letter, write \"[Aa]\".\n\"View Removable\" lists only installed packages. "
            "Another view may list packages that match."));
    shown->filter("shell");
    QCOMPARE(shown->listed(), QStringList{"shell"});
    QCOMPARE(told(), QString());
    shown->filter("nothing");
    shown->choose(shown->stateBox, ViewUpdatable);
    QCOMPARE(told(), onlyUpdates);

    // The view paints the reason only while no row is listed.
    const auto colours = [this] {
        const QImage picture = shown->view->viewport()->grab().toImage();
        QSet<QRgb> found;
        const QPoint middle = picture.rect().center();
        for (int x = -60; x < 60; ++x) {
            for (int y = -10; y < 10; ++y) {
                found.insert(picture.pixel(middle + QPoint(x, y)));
            }
        }
        return found.count();
    };
    QVERIFY(colours() > 1);
    shown->filter("");
    shown->choose(shown->stateBox, ViewAll);
    QCOMPARE(shown->listed(), QStringList{"shell"});
    QCOMPARE(colours(), 1);
}

void MainWindowStartTest::theTableDoesNotSayThatTheSystemIsUpToDateIfACollectionFails()
{
    standIn->setUnreadable(true);
    const Answers answers("OK");
    // This test does not wait until the main window has the focus, because the error message may get the
    // focus first.
    shown->window->show();
    QTRY_VERIFY_WITH_TIMEOUT(shown->isReady(), 20000);
    QCOMPARE(shown->view->accessibleDescription(),
             QString("The packages could not be read.\nThe Log window (Ctrl+L) shows the reason."));
    standIn->setUnreadable(false);
    shown->press("Re&fresh");
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
    shown->filter("nothing");
    QVERIFY(shown->view->accessibleDescription().startsWith("No package matches."));
}

void MainWindowStartTest::quittingSavesTheWindowSizeAndTheColumns()
{
    shown->start();
    const QSize size(shown->window->width() - 20, shown->window->height() - 30);
    shown->window->QWidget::resize(size);
    shown->view->setColumnWidth(NameColumn, 321);
    shown->view->horizontalHeader()->moveSection(RepositoryColumn, ArchitectureColumn);
    compareQuit([this] { shown->key(Qt::Key_Q, Qt::ControlModifier); });
    const QSettings* kept = settings(this);
    QCOMPARE(kept->value("MainWindow/size").toSize(), size);
    QVariantList widths;
    QVariantList places;
    for (int column = 0; column < ColumnCount; ++column) {
        widths << (column == NameColumn ? 321 : 0);
        places << column;
    }
    std::swap(places[RepositoryColumn], places[ArchitectureColumn]);
    QCOMPARE(kept->value("MainWindow/columnWidths").toStringList(), QVariant(widths).toStringList());
    QCOMPARE(kept->value("MainWindow/columnPlaces").toStringList(), QVariant(places).toStringList());
}

void MainWindowStartTest::theSavedWindowSizeAndColumnsAreRestored()
{
    QSettings* kept = settings(this);
    kept->setValue("MainWindow/size", QSize(1100, 500));
    QVariantList widths;
    QVariantList places;
    for (int column = 0; column < ColumnCount; ++column) {
        widths << (column == NameColumn ? 234 : 0);
        places << column;
    }
    std::swap(places[RepositoryColumn], places[ArchitectureColumn]);
    kept->setValue("MainWindow/columnWidths", widths);
    kept->setValue("MainWindow/columnPlaces", places);
    kept->sync();
    shown->start();
    QTRY_COMPARE(shown->window->size(), QSize(1100, 500));
    QCOMPARE(shown->view->columnWidth(NameColumn), 234);
    QCOMPARE(shown->view->horizontalHeader()->logicalIndex(RepositoryColumn), int(ArchitectureColumn));
    QCOMPARE(shown->view->columnWidth(ArchitectureColumn),
             qMax(shown->view->sizeHintForColumn(ArchitectureColumn),
                  shown->view->horizontalHeader()->sectionSizeHint(ArchitectureColumn)));
    // "Resize" fits the columns to their contents, and discards the widths that the user has set.
    shown->press("Re&size");
    QVERIFY(shown->view->columnWidth(NameColumn) != 234);
    QCOMPARE(shown->view->layoutByHand().widths.at(NameColumn), 0);
}

void MainWindowStartTest::invalidSavedSettingsChangeNothing()
{
    QSettings* kept = settings(this);
    kept->setValue("MainWindow/size", "wide");
    // Each list has one value per column, because the program ignores lists of another length.
    QVariantList widths{-5, 1 << 30, "x"};
    QVariantList nowhere{0, 0, 99, -1, "x"};
    QList<int> usualPlaces;
    QList<int> noWidths;
    for (int column = 0; column < ColumnCount; ++column) {
        usualPlaces << column;
        noWidths << 0;
        if (column >= widths.size()) {
            widths << 0;
        }
        if (column >= nowhere.size()) {
            nowhere << column;
        }
    }
    kept->setValue("MainWindow/columnWidths", widths);
    kept->setValue("MainWindow/columnPlaces", nowhere);
    kept->sync();
    shown->start();
    QVERIFY(QGuiApplication::primaryScreen()->geometry().contains(shown->window->geometry()));
    QList<int> places = shown->view->layoutByHand().places;
    std::sort(places.begin(), places.end());
    QCOMPARE(places, usualPlaces);
    QCOMPARE(shown->view->layoutByHand().widths, noWidths);
    shown->click("tool", ActionColumn);
    QCOMPARE(shown->marks(), QStringList{"tool update"});
}

void MainWindowStartTest::theLogOptionShowsTheLogAtStartup()
{
    shown->window->setLogAtStart();
    QVERIFY(inTheMiddle([this] { shown->window->show(); }, [] { QVERIFY(logIsVisible()); }));
    QTRY_VERIFY(shown->isReady());
    QVERIFY(logIsVisible());
}

void MainWindowStartTest::theLogIsHiddenAtStartupWithoutTheLogOption()
{
    shown->start();
    QVERIFY(logWindow() == nullptr);
}

int main(int argc, char** argv)
{
    return EachAlone::run<MainWindowStartTest>(argc, argv);
}

#include "MainWindowStartTest.moc"

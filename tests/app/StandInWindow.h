// The base of the tests of the main window: the window on a script that stands in for the package manager.

#ifndef TESTS_APP_STANDINWINDOW_H
#define TESTS_APP_STANDINWINDOW_H

#include <QSettings>
#include <QtTest>
#include <QtWidgets>

#include <functional>
#include <memory>

#include "services/LogWindow.h"
#include "tests/app/ShownWindow.h"
#include "tests/support/StandIn.h"

class StandInWindow : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<StandIn> standIn;
    std::unique_ptr<ShownWindow> shown;

    static QSettings* settings(QObject* owner);

    // What there is unless a test says otherwise: "tool" and "many" are out of date, "shell" is installed,
    // "editor" and "lib" are not, the latter for two architectures, and "Games" is a group.
    void usual();
    void listEverything() const;
    // What can be used: menus by their titles, entries by their texts, and "table" for the table area.
    QStringList usable() const;
    const QStringList usableWhileBusy{"&Windows", "&Log", "&Help", "Manual (html)", "Manual (PDF)", "&About"};
    const QStringList usableWhenReady{"&Program",       "&Quit",         "&Windows",
                                      "&Log",           "&Repositories", "&Edit Configuration",
                                      "&Cache",         "Clean dbcache", "Clean Packages",
                                      "Clean Metadata", "Clean All",     "&Help",
                                      "Manual (html)",  "Manual (PDF)",  "&About",
                                      "table"};

    // Runs something that collects the packages, and in the middle of it something else.
    bool inTheMiddle(const std::function<void()>& collect, const std::function<void()>& meanwhile);

    // The colour of the label's background, as it is painted.
    QColor backgroundOfLabel() const;

    static QMessageBox* aboutBox();
    // Quits in this way, and compares what is left.
    void compareQuit(const std::function<void()>& quit);

    static Log::Window* logWindow();
    static bool logIsVisible();
    static QString busyCursor();

    static constexpr char unlistedToolTip[] =
        "Some packages have actions specified, but because of the current\n"
        "Mode, Filter, Search, State, Duplicates, and Groups settings,\n"
        "these packages are not listed currently.\n"
        "Pressing Apply will cause these actions to occur nonetheless.";

    static constexpr char modeToolTip[] =
        "Specify the method for using a regular expression to select packages in the table:\n"
        "\tFilter uses the textual fields visible in the table, as if they were separated by spaces.\n"
        "\tSearch uses all fields in packages, including list of Files, Change Log, Requires, etc.,\n"
        "\tindependently.  It is considerably slower.";

private Q_SLOTS:
    void initTestCase();
};

#endif

// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of the main window. A stand-in script replaces the package manager.

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

    // Sets the packages for tests that do not set their own. "tool" and "many" are out of date, "shell" is
    // installed, "editor" and "lib" are not installed; "lib" has two architectures. "Games" is a group.
    void usual();
    // Shows the window on a system whose packages the script cannot read.
    void startWithoutPackages();
    void listEverything() const;
    // The enabled controls: menu titles, texts of menu entries, and "table" for the table area.
    QStringList usable() const;
    const QStringList usableWhileBusy{"&Windows", "&Log", "&Help", "Manual (html)", "Manual (PDF)", "&About"};
    const QStringList usableWhenReady{"&Program",  "&Quit",         "&Windows",       "&Log",
                                      "&History",  "&Advisories",   "&Repositories",  "&Edit Configuration",
                                      "&Cache",    "Clean dbcache", "Clean Packages", "Clean Metadata",
                                      "Clean All", "&Help",         "Manual (html)",  "Manual (PDF)",
                                      "&About",    "table"};

    // Calls collect(), which must start a collection, and calls meanwhile() in the middle of this collection.
    // Returns whether meanwhile() was called.
    bool inTheMiddle(const std::function<void()>& collect, const std::function<void()>& meanwhile);

    // The painted background colour of the label that warns about unlisted actions.
    QColor backgroundOfLabel() const;

    static QMessageBox* aboutBox();
    // Calls quit(), and then checks that the program has ended completely.
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

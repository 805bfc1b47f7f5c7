// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/DescribeArea.h"

#include <QtTest>
#include <QtWidgets>

#include "app/base/Fonts.h"
#include "tests/packagetable/ShownDescription.h"
#include "tests/support/Buttons.h"

class DescribeAreaTest : public ShownDescription
{
    Q_OBJECT

private Q_SLOTS:
    void theAreaOfAnAvailablePackageShowsEveryField();
    void fieldsWithoutAValueAreNotShown();
    void theRepositoryOfAnInstalledPackageHasNoDetailsButton();
    void eachInstalledVersionAfterTheFirstHasAShortArea();
    void theDescriptionOfAnUpdateAlsoShowsTheInstalledVersions();
    void theAreaOfASuiteHasTheFieldsOfAPackage();
    void theAreaOfAGroupShowsItsMembers();
    void markupIsShownAsPlainText();
    void theUserCanSelectAndCopyValues();
    void theFilesButtonShowsTheFileList();
    void theChangeLogButtonShowsTheChangeLog();
    void theWindowsRespondWhileAChangeLogIsRead();
    void closingTheDescriptionStopsTheReadingOfAChangeLog();
    void closingTheDescriptionEndsTheWaitForALock();
    void theTitlesShowAPackageNameWithPercentSignsUnchanged();
    void anEmptyFileListIsShownIfAPackageHasNoFiles();
    void theShowButtonsSayThatExtraDataMustBeLoaded();
    void theFileListsAreLoadedOnlyOnce();
    void theDialogCannotBeClosedWhileFileListsAreLoaded();
    void theButtonsInTheAreasDoNothingWhileFileListsAreLoaded();
};

void DescribeAreaTest::theAreaOfAnAvailablePackageShowsEveryField()
{
    table->standIn.setVersionLocks({{"it", "it-1:2-3.*"}});
    available({{"repoid", "base"},
               {"version", "2"},
               {"release", "3"},
               {"epoch", 1},
               {"size", 5000},
               {"arch", "noarch"},
               {"summary", "short"},
               {"description", "first\n\nsecond"},
               {"group", "Games"},
               {"vendor", "Vendor"},
               {"buildtime", 86400},
               {"buildhost", "host"},
               {"installtime", 2 * 86400},
               {"relativepath", "p/it.rpm"},
               {"sourcerpm", "it.src.rpm"},
               {"license", "MIT"},
               {"packager", "Someone"},
               {"url", "http://it"},
               {"prefixes", QJsonArray{"/opt", "/usr"}},
               {"provides", QJsonArray{"it = 1", "also"}},
               {"requires_pre", QJsonArray{"pre"}},
               {"requires", QJsonArray{"b", "a"}},
               {"conflicts", QJsonArray{"con"}},
               {"obsoletes", QJsonArray{"obs"}},
               {"recommends", QJsonArray{"rec"}},
               {"suggests", QJsonArray{"sug"}},
               {"supplements", QJsonArray{"sup"}},
               {"enhances", QJsonArray{"enh"}},
               {"advisories", "A-1: one\nA-2: two"},
               {"modulestreams", "grove:1\ngrove:2"}});
    table->standIn.removeVersionLocks();
    describe("it", [this](Dialog& shown) {
        const Package::Entry& entry = table->entry("it");
        QCOMPARE(areasOf(shown).count(), 1);
        QCOMPARE(linesOf(areasOf(shown).first()),
                 (QStringList{"Available for installation",
                              "Kind|Ordinary package",
                              "Version|1:2-3",
                              "Repository|base|[Details]",
                              "Architecture|noarch",
                              "Size|" + entry.sizeText,
                              "Summary|short",
                              "Description|first\n\nsecond",
                              "Group|Games",
                              "Vendor|Vendor",
                              "Build Time|" + entry.buildTimeText,
                              "Build Host|host",
                              "Install Time|" + table->yumIO.getInstallTime(entry),
                              "Binary RPM|p/it.rpm",
                              "Source RPM|it.src.rpm",
                              "License|MIT",
                              "Packager|Someone",
                              "URL|http://it",
                              "Relocations|/opt\n/usr",
                              "Provides|also\nit = 1",
                              "Requires (pre)|pre",
                              "Requires|a\nb",
                              "Conflicts|con",
                              "Obsoletes|obs",
                              "Recommends|rec",
                              "Suggests|sug",
                              "Supplements|sup",
                              "Enhances|enh",
                              "Advisories|A-1: one\nA-2: two",
                              "Module Streams|grove:1\ngrove:2",
                              "Version Lock|Locked by it-1:2-3.*",
                              "Files|[Show]",
                              "Change Log|[Show]"}));
        // The comparison above does not notice a field without a value, because the window does not show such
        // a field. The file list and the change log may be empty here, because the window shows a button for
        // each of them.
        Fields::forEachUntil(Fields::OfPackages | Fields::Described, [this, &entry](Fields::Field field) {
            const bool button = field == Fields::Files || field == Fields::ChangeLog;
            QTest::qVerify(button || !table->yumIO.text(entry, field).isEmpty(), "the field has a text",
                           qPrintable(Fields::label(field)), __FILE__, __LINE__);
            return false; // continue with the next field
        });
    });
}

void DescribeAreaTest::fieldsWithoutAValueAreNotShown()
{
    available({{"repoid", "base"}, {"summary", "short"}});
    describe("it", [this](Dialog& shown) {
        const Package::Entry& entry = table->entry("it");
        QCOMPARE(linesOf(areasOf(shown).first()),
                 (QStringList{"Available for installation", "Kind|Ordinary package", "Version|1-1",
                              "Repository|base|[Details]", "Architecture|x86_64", "Size|" + entry.sizeText,
                              "Summary|short", "Build Time|" + entry.buildTimeText, "Files|[Show]",
                              "Change Log|[Show]"}));
    });
}

void DescribeAreaTest::theRepositoryOfAnInstalledPackageHasNoDetailsButton()
{
    installed({});
    repo("@System", "a repository that only has the name", "http://h", "");
    describe("it", [](Dialog& shown) {
        const QStringList lines = linesOf(areasOf(shown).first());
        QCOMPARE(lines.first(), QString("Installed"));
        QVERIFY(lines.contains("Repository|@System"));
        QVERIFY(buttonBeside(shown, "Repository") == nullptr);
    });
}

void DescribeAreaTest::eachInstalledVersionAfterTheFirstHasAShortArea()
{
    const QJsonObject more{{"repoid", "@System"}, {"packager", "Someone"}, {"summary", "not told again"}};
    QJsonObject older = more;
    older.insert("version", "0.5");
    table->collect({}, {S::package("it", more), S::package("it", older)}, {});
    describe("it", [this](Dialog& shown) {
        const QList<HScrollArea*> areas = areasOf(shown);
        QCOMPARE(areas.count(), 2);
        QVERIFY(linesOf(areas.at(0)).contains("Summary|not told again"));
        const Package::Entry& second = *table->entry("it").next;
        QCOMPARE(linesOf(areas.at(1)),
                 (QStringList{"Installed", "Version|" + second.verRel, "Architecture|x86_64",
                              "Size|" + second.sizeText, "Build Time|" + second.buildTimeText,
                              "Packager|Someone"}));
        QVERIFY(second.verRel != table->entry("it").verRel);
        // An area without a vertical scroll bar shows all its lines.
        QVERIFY(!areas.at(1)->verticalScrollBar()->isVisible());
    });
}

void DescribeAreaTest::theDescriptionOfAnUpdateAlsoShowsTheInstalledVersions()
{
    table->collectUsual();
    describe("many", [](Dialog& shown) {
        QStringList heads;
        for (const HScrollArea* area : areasOf(shown)) {
            heads << linesOf(area).first() + ' ' + linesOf(area).filter("Version").join(QString());
        }
        QCOMPARE(heads, (QStringList{"Available for update Version|2-1", "Installed Version|0.5-1",
                                     "Installed Version|1-1"}));
    });
}

void DescribeAreaTest::theAreaOfASuiteHasTheFieldsOfAPackage()
{
    table->collectUsual();
    describe("office", [](Dialog& shown) {
        const QStringList lines = linesOf(areasOf(shown).first());
        QVERIFY(lines.contains("Kind|Suite of packages"));
        QVERIFY(lines.contains("Files|[Show]"));
        QVERIFY(lines.contains("Change Log|[Show]"));
    });
}

void DescribeAreaTest::theAreaOfAGroupShowsItsMembers()
{
    table->collect({}, {}, {},
                   {S::group("Games", {{"mandatory_packages", QJsonArray{"b", "a"}},
                                       {"default_packages", QJsonArray{"c"}},
                                       {"optional_packages", QJsonArray{"d"}},
                                       {"conditional_packages", QJsonArray{"e"}}}),
                    S::group("Void")});
    describe("Games", [](Dialog& shown) {
        QCOMPARE(areasOf(shown).count(), 1);
        QCOMPARE(
            linesOf(areasOf(shown).first()),
            (QStringList{"Available for installation", "Kind|Group of packages", "Mandatory Packages|a\nb",
                         "Default Packages|c", "Optional Packages|d", "Conditional Packages|e"}));
    });
    describe("Void", [](Dialog& shown) {
        QCOMPARE(linesOf(areasOf(shown).first()),
                 (QStringList{"Available for installation", "Kind|Group of packages"}));
    });
}

void DescribeAreaTest::markupIsShownAsPlainText()
{
    const QString name = QStringLiteral("<i>it</i>");
    table->collect({}, {},
                   {S::package(name, {{"summary", markup},
                                      {"description", markup},
                                      {"url", markup},
                                      {"repoid", "<u>base</u>"},
                                      {"changelogs", QJsonArray{QJsonArray{"<b>me</b>", markup}}}})});
    describe(name, [name](Dialog& shown) {
        const HScrollArea* area = areasOf(shown).first();
        for (const char* label : {"Summary", "Description", "URL"}) {
            QCOMPARE(valueOf(area, label)->text(), QString(markup));
        }
        for (const QLabel* label : shown.findChildren<QLabel*>()) {
            QVERIFY2(label->textFormat() == Qt::PlainText || !label->text().contains('<'),
                     qPrintable(label->text()));
        }
        // If the label interpreted the markup, the selection would lack the tags.
        valueOf(area, "Summary")->setSelection(0, int(strlen(markup)));
        QCOMPARE(valueOf(area, "Summary")->selectedText(), QString(markup));
        const QStringList log = textBehind(buttonBeside(shown, "Change Log"));
        QCOMPARE(log.value(0), name + " 1-1 Change Log");
        QVERIFY2(log.value(1).endsWith(" <b>me</b>\n" + QString(markup)), qPrintable(log.value(1)));
    });
}

void DescribeAreaTest::theUserCanSelectAndCopyValues()
{
    available({{"url", "http://somewhere/else"}});
    describe("it", [](Dialog& shown) {
        QLabel* value = valueOf(areasOf(shown).first(), "URL");
        areasOf(shown).first()->ensureWidgetVisible(value);
        const auto at = [value, &shown](double part) {
            return value->mapTo(&shown, QPoint(int(part * value->sizeHint().width()), value->height() / 2));
        };
        QTest::mouseDClick(shown.windowHandle(), Qt::LeftButton, Qt::NoModifier, at(0.6));
        QVERIFY(value->hasSelectedText());
        QTest::keyClick(shown.windowHandle(), Qt::Key_A, Qt::ControlModifier);
        QApplication::clipboard()->clear();
        QTest::keyClick(shown.windowHandle(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), QString("http://somewhere/else"));
    });
}

void DescribeAreaTest::theFilesButtonShowsTheFileList()
{
    available({{"files", QJsonArray{"/usr/b", "/usr/a", "/usr/a"}}});
    describe("it", [](Dialog& shown) {
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(textBehind(buttonBeside(shown, "Files")),
                     (QStringList{"it 1-1 File List", "/usr/a\n/usr/b"}));
        }
        QCOMPARE(shown.findChildren<TextDialog*>().count(), 1);
        QVERIFY(buttonOf(&shown, "Close")->isEnabled());
    });
}

void DescribeAreaTest::theChangeLogButtonShowsTheChangeLog()
{
    available({{"changelogs", QJsonArray{QJsonArray{"Me", "- new"}, QJsonArray{"You", "- old"}}}});
    describe("it", [this](Dialog& shown) {
        const QString log = table->yumIO.getChangeLog(table->entry("it"));
        QVERIFY(log.contains("- new\n\n* "));
        QCOMPARE(textBehind(buttonBeside(shown, "Change Log")), (QStringList{"it 1-1 Change Log", log}));
    });
}

void DescribeAreaTest::theWindowsRespondWhileAChangeLogIsRead()
{
    available({{"waiting", true}});
    describe("it", [this](Dialog& shown) {
        bool responded = false;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [this, &responded] {
            if (table->yumIO.isWorking()) {
                responded = true;
                table->standIn.letChangeLogsBeRead();
            }
        });
        timer.start(1);
        QCOMPARE(textBehind(buttonBeside(shown, "Change Log")),
                 (QStringList{"it 1-1 Change Log", "* Thu Jan 2 2020 Me\nat last"}));
        QVERIFY(responded);
    });
}

void DescribeAreaTest::closingTheDescriptionStopsTheReadingOfAChangeLog()
{
    available({{"waiting", true}});
    describe("it", [this](Dialog& shown) {
        bool closed = true;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [this, &shown, &closed] {
            if (table->yumIO.isWorking()) {
                closed = shown.close() || !shown.isVisible();
                table->standIn.letChangeLogsBeRead();
            }
        });
        timer.start(1);
        QCOMPARE(textBehind(buttonBeside(shown, "Change Log")), QStringList());
        QVERIFY(!closed);
    });
}

void DescribeAreaTest::closingTheDescriptionEndsTheWaitForALock()
{
    available({{"locked", true}});
    QStringList seen;
    describe("it", [this, &seen](Dialog& shown) {
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [this, &shown, &seen] {
            if (table->yumIO.isWorking()) {
                QTest::keyClick(shown.windowHandle(), Qt::Key_Escape);
            }
            if (QApplication::activeModalWidget() != nullptr && QApplication::activeModalWidget() != &shown) {
                seen << QApplication::activeModalWidget()->windowTitle();
                QApplication::activeModalWidget()->close();
            }
        });
        timer.start(1);
        press(buttonBeside(shown, "Change Log"));
        QVERIFY(!table->yumIO.isWorking());
        QTRY_VERIFY(!shown.isVisible());
    });
    // The user has closed the description, so no window shows the change log.
    QCOMPARE(seen, QStringList());
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
}

void DescribeAreaTest::theTitlesShowAPackageNameWithPercentSignsUnchanged()
{
    table->collect({}, {}, {S::package("%2%1", {{"version", "%1"}})});
    describe("%2%1", [](Dialog& shown) {
        QCOMPARE(textBehind(buttonBeside(shown, "Files")).value(0), QString("%2%1 %1-1 File List"));
        QCOMPARE(textBehind(buttonBeside(shown, "Change Log")).value(0), QString("%2%1 %1-1 Change Log"));
    });
}

void DescribeAreaTest::anEmptyFileListIsShownIfAPackageHasNoFiles()
{
    available({});
    describe("it", [](Dialog& shown) {
        QCOMPARE(textBehind(buttonBeside(shown, "Files")), (QStringList{"it 1-1 File List", ""}));
    });
}

void DescribeAreaTest::theShowButtonsSayThatExtraDataMustBeLoaded()
{
    table->collectUsual();
    setLoaded(false, false);
    const auto buttons = [](Dialog& shown) {
        return QStringList{buttonBeside(shown, "Files")->text(), buttonBeside(shown, "Change Log")->text()};
    };
    for (const char* name : {"editor", "tool", "office"}) {
        describe(name, [buttons](Dialog& shown) {
            QCOMPARE(buttons(shown),
                     (QStringList{"Show (must load extra data)", "Show (must load extra data)"}));
        });
    }
    describe("shell", [buttons](Dialog& shown) { QCOMPARE(buttons(shown), (QStringList{"Show", "Show"})); });
    setLoaded(true, false);
    describe("editor", [buttons](Dialog& shown) {
        QCOMPARE(buttons(shown), (QStringList{"Show", "Show (must load extra data)"}));
    });
}

void DescribeAreaTest::theFileListsAreLoadedOnlyOnce()
{
    table->collectUsual();
    setLoaded(false, true);
    table->standIn.forgetCalls();
    describe("editor", [this](Dialog& shown) {
        QPushButton* files = buttonBeside(shown, "Files");
        QCOMPARE(textBehind(files).value(0), QString("editor 3:9-4 File List"));
        QCOMPARE(files->text(), QString("Show"));
        textBehind(files);
        QCOMPARE(table->standIn.calls("collectFileLists"), 1);
    });
}

void DescribeAreaTest::theDialogCannotBeClosedWhileFileListsAreLoaded()
{
    table->collectUsual();
    setLoaded(false, true);
    table->standIn.forgetCalls();
    table->standIn.setHeld(true);
    describe("editor", [this](Dialog& shown) {
        QStringList seen;
        QTimer timer;
        connect(&timer, &QTimer::timeout, &timer, [&] {
            if (table->standIn.calls("collectFileLists") == 0) {
                return;
            }
            timer.stop();
            seen << (buttonOf(&shown, "Close")->isEnabled() ? "can be closed" : "cannot be closed");
            press(buttonOf(&shown, "Close"));
            QTest::keyClick(shown.windowHandle(), Qt::Key_Escape);
            seen << (shown.close() ? "closed" : "not closed");
            // Alt+F4 goes through the window manager, which asks the window to close.
            QCOMPARE(QProcess::execute("xdotool", {"key", "alt+F4"}), 0);
            QTest::qWait(100);
            seen << (shown.isVisible() ? "still there" : "gone") << QString::number(areasOf(shown).count());
            table->standIn.setHeld(false);
        });
        timer.start(5);
        QCOMPARE(textBehind(buttonBeside(shown, "Files")).value(0), QString("editor 3:9-4 File List"));
        QCOMPARE(seen, (QStringList{"cannot be closed", "not closed", "still there", "1"}));
        // After the files are loaded, Close works again.
        press(buttonOf(&shown, "Close"));
        QVERIFY(!shown.isVisible());
    });
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
}

void DescribeAreaTest::theButtonsInTheAreasDoNothingWhileFileListsAreLoaded()
{
    table->collectUsual();
    setLoaded(false, true);
    table->standIn.forgetCalls();
    table->standIn.setHeld(true);
    describe("editor", [this](Dialog& shown) {
        QTimer timer;
        int dialogs = 0;
        connect(&timer, &QTimer::timeout, &timer, [&] {
            if (table->standIn.calls("collectFileLists") == 0) {
                return;
            }
            timer.stop();
            for (const char* label : {"Files", "Change Log", "Repository"}) {
                press(buttonBeside(shown, label));
            }
            QTest::qWait(50);
            dialogs = shown.findChildren<QDialog*>().count();
            table->standIn.setHeld(false);
        });
        timer.start(5);
        textBehind(buttonBeside(shown, "Files"));
        QCOMPARE(dialogs, 0);
        for (const char* label : {"Files", "Change Log", "Repository"}) {
            QVERIFY(buttonBeside(shown, label)->isEnabled());
        }
    });
}

QTEST_MAIN(DescribeAreaTest)
#include "DescribeAreaTest.moc"

#include "packagetable/DescribeDialog.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "app/base/Fonts.h"
#include "app/base/Share.h"
#include "repo/YumConfIO.h"
#include "tests/packagetable/Described.h"
#include "tests/packagetable/Table.h"
#include "tests/repo/Assistive.h"
#include "tests/yumio/YumIOProbe.h"
#include "widgets/Metrics.h"

using PackageTable::Describe::Dialog;
using PackageTable::Describe::Instance::RepoDialog;

namespace {

const char markup[] = "<b>bold</b> &amp; <img src=x> <script>alert(1)</script>";

} // namespace

class DescribeDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void dialogIsModalAndHasItsTitle();
    void nameIsTheHeader();
    void availablePackageShowsEveryField();
    void fieldsWithoutValueDoNotAppear();
    void installedPackageHasNoDetailsOfItsRepository();
    void furtherVersionsHaveShortAreas();
    void anUpdateShowsTheInstalledVersions();
    void suiteIsShownAsAPackage();
    void groupShowsItsMembers();
    void markupIsShownAsTheCharactersThatItIs();
    void valuesCanBeSelectedAndCopied();
    void longTextsAreWrappedAndScrolled();
    void anEndlessWordDoesNotWidenTheOtherValues();
    void linesAreNotWrappedWhileThereIsRoom();
    void manyVersionsStayOnTheScreen();
    void thousandsOfDependenciesAreShown();
    void nothingIsAskedForOnceItIsShown();
    void closeAccepts();
    void escapeCloses();
    void closedDialogHoldsNothing();
    void secondDescriptionReplacesTheFirst();
    void dialogIsAsLargeAsItsContents();

    void filesAreShown();
    void changeLogIsShown();
    void windowsAreAliveWhileAChangeLogIsRead();
    void closingEndsTheWaitForALock();
    void nameWithAPercentSignIsKeptInTheTitles();
    void emptyListsAreShownAsEmpty();
    void buttonsTellOfDataThatHaveToBeLoaded();
    void loadingIsToldOfOnlyOnce();
    void dialogCannotBeClosedWhileFilesAreLoading();
    void nothingElseCanBeAskedForWhileFilesAreLoading();

    void detailsShowTheRepository();
    void detailsOfARepositoryThatIsGone();
    void detailsHideMarkupAndPasswords();
    void detailsOfAnotherRepositoryReplaceTheFirst();
    void repositoryIsBrowsed();
    void repositoryWithoutUrlCannotBeBrowsed();

private:
    using S = StandIn;

    // Shows the description of a record and does something with it.
    void describe(const QString& name, const std::function<void(Dialog&)>& use)
    {
        QVERIFY(withDialog<Dialog>(
            [this, name] {
                dialog->config(&table->yumIO, table->entry(name), conf.get());
                dialog->exec();
            },
            use));
    }
    void available(const QJsonObject& attributes) { table->collect({}, {}, {S::package("it", attributes)}); }
    void installed(const QJsonObject& attributes)
    {
        QJsonObject all = attributes;
        all.insert("repoid", "@System");
        table->collect({}, {S::package("it", all)}, {});
    }
    void repo(const QString& id, const QString& name, const QString& urls, const QString& mirrorList)
    {
        Repo::Entry entry;
        entry.id = id;
        entry.name = name;
        entry.baseurl = urls;
        entry.mirrorlist = mirrorList;
        conf->entries.append(entry);
    }
    // Which text dialog comes up when a button is pressed: its title and its text.
    static QStringList textBehind(QPushButton* button)
    {
        QStringList found;
        withDialog<TextDialog>([button] { press(button); },
                               [&found](TextDialog& shown) {
                                   found << shown.windowTitle()
                                         << shown.findChild<QTextEdit*>()->toPlainText();
                               });
        return found;
    }
    // The labels that a repository's description shows, in order.
    QStringList repositoryOf(const QString& name)
    {
        QStringList found;
        describe(name, [&found](Dialog& shown) {
            withDialog<RepoDialog>([&shown] { press(buttonBeside(shown, "Repository")); },
                                   [&found](RepoDialog& details) {
                                       for (const QLabel* label : details.findChildren<QLabel*>()) {
                                           found << label->text();
                                       }
                                   });
        });
        return found;
    }
    // The message box that comes up, as its title and text.
    static QStringList messageOf(const std::function<void()>& action)
    {
        QStringList found;
        withDialog<QMessageBox>(action, [&found](QMessageBox& box) {
            found << box.windowTitle() << box.text();
            QTest::mouseClick(box.button(QMessageBox::Ok), Qt::LeftButton);
        });
        return found;
    }

    void setLoaded(bool fileLists, bool otherData)
    {
        table->yumIO.*(&YumIOProbe::fileListsLoaded) = fileLists;
        table->yumIO.*(&YumIOProbe::otherDataLoaded) = otherData;
    }

    std::unique_ptr<Table> table;
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;
    std::unique_ptr<QWidget> window;
    std::unique_ptr<Dialog> dialog;
};

void DescribeDialogTest::initTestCase()
{
    table = std::make_unique<Table>();
}

void DescribeDialogTest::init()
{
    conf = std::make_unique<YumConfIO>(requests, session);
    window = std::make_unique<QWidget>();
    window->resize(300, 200);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    dialog = std::make_unique<Dialog>(window.get());
    table->standIn.setHeld(false);
}

void DescribeDialogTest::cleanup()
{
    dialog.reset();
    window.reset();
    conf.reset();
}

void DescribeDialogTest::cleanupTestCase()
{
    table.reset();
}

void DescribeDialogTest::dialogIsModalAndHasItsTitle()
{
    available({});
    describe("it", [this](Dialog& shown) {
        QCOMPARE(shown.windowTitle(), QString("VYRE Package Description"));
        QVERIFY(shown.isModal());
        QCOMPARE(shown.parentWidget(), window.get());
    });
}

void DescribeDialogTest::nameIsTheHeader()
{
    available({});
    describe("it", [](Dialog& shown) {
        const QList<HScrollArea*> areas = areasOf(shown);
        QCOMPARE(areas.count(), 1);
        QList<QLabel*> above;
        for (QLabel* label : shown.findChildren<QLabel*>()) {
            if (!areas.first()->isAncestorOf(label)) {
                above.append(label);
            }
        }
        QCOMPARE(above.count(), 1);
        QCOMPARE(above.first()->text(), QString("it"));
        QCOMPARE(above.first()->font(), Fonts::makeHeader(QApplication::font("QLabel")));
        QVERIFY(above.first()->mapTo(&shown, QPoint()).y() < areas.first()->mapTo(&shown, QPoint()).y());
    });
}

void DescribeDialogTest::availablePackageShowsEveryField()
{
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
               {"enhances", QJsonArray{"enh"}}});
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
                              "Files|[Show]",
                              "Change Log|[Show]"}));
        QVERIFY(!entry.sizeText.isEmpty() && !entry.buildTimeText.isEmpty());
        QVERIFY(!table->yumIO.getInstallTime(entry).isEmpty());
    });
}

void DescribeDialogTest::fieldsWithoutValueDoNotAppear()
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

void DescribeDialogTest::installedPackageHasNoDetailsOfItsRepository()
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

void DescribeDialogTest::furtherVersionsHaveShortAreas()
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
        // All of it can be seen.
        QVERIFY(!areas.at(1)->verticalScrollBar()->isVisible());
    });
}

void DescribeDialogTest::anUpdateShowsTheInstalledVersions()
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

void DescribeDialogTest::suiteIsShownAsAPackage()
{
    table->collectUsual();
    describe("office", [](Dialog& shown) {
        const QStringList lines = linesOf(areasOf(shown).first());
        QVERIFY(lines.contains("Kind|Suite of packages"));
        QVERIFY(lines.contains("Files|[Show]"));
        QVERIFY(lines.contains("Change Log|[Show]"));
    });
}

void DescribeDialogTest::groupShowsItsMembers()
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

void DescribeDialogTest::markupIsShownAsTheCharactersThatItIs()
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
        // What is selected on the screen is what is shown there.
        valueOf(area, "Summary")->setSelection(0, int(strlen(markup)));
        QCOMPARE(valueOf(area, "Summary")->selectedText(), QString(markup));
        const QStringList log = textBehind(buttonBeside(shown, "Change Log"));
        QCOMPARE(log.value(0), name + " 1-1 Change Log");
        QVERIFY2(log.value(1).endsWith(" <b>me</b>\n" + QString(markup)), qPrintable(log.value(1)));
    });
}

void DescribeDialogTest::valuesCanBeSelectedAndCopied()
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

void DescribeDialogTest::longTextsAreWrappedAndScrolled()
{
    const QString text = QStringLiteral("word and word ").repeated(2000).trimmed();
    available({{"description", text}, {"summary", "short"}});
    describe("it", [text](Dialog& shown) {
        const HScrollArea* area = areasOf(shown).first();
        const QLabel* value = valueOf(area, "Description");
        QCOMPARE(value->text(), text);
        QVERIFY(!area->horizontalScrollBar()->isVisible());
        QVERIFY(area->verticalScrollBar()->isVisible());
        QVERIFY(value->height() >= value->heightForWidth(value->width()));
        QVERIFY(value->mapTo(area->widget(), QPoint(value->width(), 0)).x() <= area->viewport()->width());
        QCOMPARE(area->sizeHint().height(), 24 * area->fontMetrics().height());
        QVERIFY(area->sizeHint().width() <= 80 * Metrics::columnWidth(area->fontMetrics()));
    });
}

void DescribeDialogTest::anEndlessWordDoesNotWidenTheOtherValues()
{
    const QString word = QStringLiteral("abcdefghij").repeated(200);
    available({{"description", QStringLiteral("word and word ").repeated(50)},
               {"url", word},
               {"provides", QJsonArray{word, "short"}}});
    describe("it", [word](Dialog& shown) {
        const HScrollArea* area = areasOf(shown).first();
        const QLabel* value = valueOf(area, "Description");
        QVERIFY(value->mapTo(area->widget(), QPoint(value->width(), 0)).x() <= area->viewport()->width());
        QVERIFY(value->width() > area->viewport()->width() / 2);
        QVERIFY(value->height() >= value->heightForWidth(value->width()));
        // The word is there as a whole, for whoever scrolls to it.
        QVERIFY(area->horizontalScrollBar()->isVisible());
        QCOMPARE(valueOf(area, "URL")->text(), word);
        QVERIFY(valueOf(area, "URL")->width() >= area->fontMetrics().horizontalAdvance(word));
        QVERIFY(valueOf(area, "Provides")->width() >= area->fontMetrics().horizontalAdvance(word));
        QVERIFY(shown.width() <= Metrics::maxWindowSize().width());
    });
}

void DescribeDialogTest::linesAreNotWrappedWhileThereIsRoom()
{
    available({{"summary", "It has a summary of sixty letters, or not many more than that."}});
    describe("it", [](Dialog& shown) {
        const QLabel* value = valueOf(areasOf(shown).first(), "Summary");
        QVERIFY(value->height() < 2 * value->fontMetrics().lineSpacing());
    });
}

void DescribeDialogTest::manyVersionsStayOnTheScreen()
{
    QJsonArray versions;
    for (int i = 0; i < 30; ++i) {
        versions.append(S::package("it", {{"repoid", "@System"}, {"version", QString::number(i + 1)}}));
    }
    table->collect({}, versions, {});
    describe("it", [](Dialog& shown) {
        const QList<HScrollArea*> areas = areasOf(shown);
        QCOMPARE(areas.count(), 30);
        QVERIFY(shown.height() <= Metrics::maxWindowSize().height());
        const QPushButton* close = buttonNamed(shown, "Close");
        QVERIFY(shown.rect().contains(QRect(close->mapTo(&shown, QPoint()), close->size())));
        // Each can be scrolled to, and is high enough to be read.
        QScrollArea* outer = nullptr;
        for (QScrollArea* area : shown.findChildren<QScrollArea*>()) {
            outer = area->widget()->isAncestorOf(areas.first()) ? area : outer;
        }
        QVERIFY(outer != nullptr && outer->verticalScrollBar()->isVisible());
        const auto endIsVisible = [outer, &areas, &shown] {
            outer->verticalScrollBar()->setValue(outer->verticalScrollBar()->maximum());
            const QPoint end = areas.last()->mapTo(&shown, QPoint(0, areas.last()->height() - 1));
            return outer->rect().contains(outer->mapFrom(&shown, end));
        };
        QTRY_VERIFY(endIsVisible());
        QVERIFY(areas.first()->height() >= 12 * areas.first()->fontMetrics().height());
        for (const HScrollArea* area : areas.mid(1)) {
            QVERIFY(!area->verticalScrollBar()->isVisible());
        }
    });
}

void DescribeDialogTest::thousandsOfDependenciesAreShown()
{
    QJsonArray names;
    for (int i = 0; i < 20000; ++i) {
        names.append(QStringLiteral("symbol(number_%1) = 0x%1").arg(i, 8, 16, QLatin1Char('0')));
    }
    available({{"provides", names}});
    describe("it", [](Dialog& shown) {
        const HScrollArea* area = areasOf(shown).first();
        const QLabel* value = valueOf(area, "Provides");
        QCOMPARE(value->text().count('\n'), 19999);
        QVERIFY(value->height() >= 20000 * value->fontMetrics().height());
    });
}

void DescribeDialogTest::nothingIsAskedForOnceItIsShown()
{
    table->collect({}, {}, {S::package("it", {{"watched", true}})});
    dialog->config(&table->yumIO, table->entry("it"), conf.get());
    table->standIn.forgetCalls();
    QTimer::singleShot(0, this, [this] {
        QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
        dialog->resize(dialog->size() + QSize(100, 100));
        dialog->repaint();
        QTest::qWait(100);
        dialog->close();
    });
    dialog->exec();
    QCOMPARE(table->standIn.calls(), QStringList());
}

void DescribeDialogTest::closeAccepts()
{
    available({});
    describe("it", [](Dialog& shown) {
        press(buttonNamed(shown, "Close"));
        QVERIFY(!shown.isVisible());
    });
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
}

void DescribeDialogTest::escapeCloses()
{
    available({});
    describe("it", [](Dialog& shown) {
        QTest::keyClick(shown.windowHandle(), Qt::Key_Escape);
        QVERIFY(!shown.isVisible());
    });
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
}

void DescribeDialogTest::closedDialogHoldsNothing()
{
    table->collectUsual();
    repo("updates", "", "http://h", "");
    describe("many", [](Dialog& shown) {
        textBehind(buttonBeside(shown, "Files"));
        withDialog<RepoDialog>([&shown] { press(buttonBeside(shown, "Repository")); }, [](RepoDialog&) {});
        QVERIFY(!shown.findChildren<TextDialog*>().isEmpty());
        QVERIFY(!shown.findChildren<RepoDialog*>().isEmpty());
    });
    QCOMPARE(dialog->findChildren<QLabel*>().count(), 0);
    QCOMPARE(dialog->findChildren<QScrollArea*>().count(), 0);
    QCOMPARE(dialog->findChildren<QDialog*>().count(), 0);
    QCOMPARE(dialog->findChildren<QPushButton*>().count(), 1);
}

void DescribeDialogTest::secondDescriptionReplacesTheFirst()
{
    table->collectUsual();
    describe("many", [](Dialog& shown) { QCOMPARE(areasOf(shown).count(), 3); });
    // Even one that was never shown.
    dialog->config(&table->yumIO, table->entry("many"), conf.get());
    describe("shell", [](Dialog& shown) {
        QCOMPARE(areasOf(shown).count(), 1);
        QStringList texts;
        for (const QLabel* label : shown.findChildren<QLabel*>()) {
            texts << label->text();
        }
        QVERIFY(texts.contains("shell"));
        QVERIFY(!texts.contains("many"));
    });
}

void DescribeDialogTest::dialogIsAsLargeAsItsContents()
{
    table->collect({}, {}, {S::package("it", {{"description", QStringLiteral("word ").repeated(500)}})},
                   {S::group("Void")});
    QSize large;
    describe("it", [&large](Dialog& shown) { large = shown.size(); });
    describe("Void", [large](Dialog& shown) {
        QVERIFY(shown.width() < large.width());
        QVERIFY(shown.height() < large.height() / 2);
    });
}

void DescribeDialogTest::filesAreShown()
{
    available({{"files", QJsonArray{"/usr/b", "/usr/a", "/usr/a"}}});
    describe("it", [](Dialog& shown) {
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(textBehind(buttonBeside(shown, "Files")),
                     (QStringList{"it 1-1 File List", "/usr/a\n/usr/b"}));
        }
        QCOMPARE(shown.findChildren<TextDialog*>().count(), 1);
        QVERIFY(buttonNamed(shown, "Close")->isEnabled());
    });
}

void DescribeDialogTest::changeLogIsShown()
{
    available({{"changelogs", QJsonArray{QJsonArray{"Me", "- new"}, QJsonArray{"You", "- old"}}}});
    describe("it", [this](Dialog& shown) {
        const QString log = table->yumIO.getChangeLog(table->entry("it"));
        QVERIFY(log.contains("- new\n\n* "));
        QCOMPARE(textBehind(buttonBeside(shown, "Change Log")), (QStringList{"it 1-1 Change Log", log}));
    });
}

void DescribeDialogTest::windowsAreAliveWhileAChangeLogIsRead()
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
        QCOMPARE(textBehind(buttonBeside(shown, "Change Log")),
                 (QStringList{"it 1-1 Change Log", "* Thu Jan 2 2020 Me\nat last"}));
        QVERIFY(!closed);
    });
}

void DescribeDialogTest::closingEndsTheWaitForALock()
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
    // The change log, which nobody waits for any more, is not shown.
    QCOMPARE(seen, QStringList());
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
}

void DescribeDialogTest::nameWithAPercentSignIsKeptInTheTitles()
{
    table->collect({}, {}, {S::package("%2%1", {{"version", "%1"}})});
    describe("%2%1", [](Dialog& shown) {
        QCOMPARE(textBehind(buttonBeside(shown, "Files")).value(0), QString("%2%1 %1-1 File List"));
        QCOMPARE(textBehind(buttonBeside(shown, "Change Log")).value(0), QString("%2%1 %1-1 Change Log"));
    });
}

void DescribeDialogTest::emptyListsAreShownAsEmpty()
{
    available({});
    describe("it", [](Dialog& shown) {
        QCOMPARE(textBehind(buttonBeside(shown, "Files")), (QStringList{"it 1-1 File List", ""}));
    });
}

void DescribeDialogTest::buttonsTellOfDataThatHaveToBeLoaded()
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

void DescribeDialogTest::loadingIsToldOfOnlyOnce()
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

void DescribeDialogTest::dialogCannotBeClosedWhileFilesAreLoading()
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
            seen << (buttonNamed(shown, "Close")->isEnabled() ? "can be closed" : "cannot be closed");
            press(buttonNamed(shown, "Close"));
            QTest::keyClick(shown.windowHandle(), Qt::Key_Escape);
            seen << (shown.close() ? "closed" : "not closed");
            // As the window manager asks for it.
            QCOMPARE(QProcess::execute("xdotool", {"key", "alt+F4"}), 0);
            QTest::qWait(100);
            seen << (shown.isVisible() ? "still there" : "gone") << QString::number(areasOf(shown).count());
            table->standIn.setHeld(false);
        });
        timer.start(5);
        QCOMPARE(textBehind(buttonBeside(shown, "Files")).value(0), QString("editor 3:9-4 File List"));
        QCOMPARE(seen, (QStringList{"cannot be closed", "not closed", "still there", "1"}));
        // And can be afterwards.
        press(buttonNamed(shown, "Close"));
        QVERIFY(!shown.isVisible());
    });
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
}

void DescribeDialogTest::nothingElseCanBeAskedForWhileFilesAreLoading()
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

void DescribeDialogTest::detailsShowTheRepository()
{
    available({{"repoid", "base"}});
    repo("other", "not this one", "http://other", "");
    repo("base", "The base", "http://one/\nhttp://two/", "http://mirrors");
    QCOMPARE(repositoryOf("it"), (QStringList{"base", "Name", "The base", "URLs", "http://one/\nhttp://two/",
                                              "Mirror list URL", "http://mirrors"}));
    describe("it", [](Dialog& shown) {
        withDialog<RepoDialog>(
            [&shown] { press(buttonBeside(shown, "Repository")); },
            [](RepoDialog& details) {
                QCOMPARE(details.windowTitle(), QString("VYRE Repository Description"));
                QVERIFY(details.isModal());
                QLabel* header = details.findChild<QLabel*>();
                QCOMPARE(header->text(), QString("base"));
                QCOMPARE(header->font(), Fonts::makeHeader(QApplication::font("QLabel")));
                QCOMPARE(buttonNamed(details, "Browse Repository")->toolTip(),
                         QString("Browse the first URL specified for the selected repository using an "
                                 "external web browser"));
                press(buttonNamed(details, "Close"));
                QVERIFY(!details.isVisible());
                QCOMPARE(details.result(), int(QDialog::Accepted));
            });
    });
}

void DescribeDialogTest::detailsOfARepositoryThatIsGone()
{
    available({{"repoid", "<b>gone</b>"}});
    repo("base", "", "http://one/", "");
    describe("it", [](Dialog& shown) {
        QCOMPARE(messageOf([&shown] { press(buttonBeside(shown, "Repository")); }),
                 (QStringList{"Error", "There is no configured repository \"<b>gone</b>\""}));
        QVERIFY(shown.isVisible());
    });
    // Nor is there a configuration before it has been read.
    conf.reset();
    describe("it", [](Dialog& shown) {
        QCOMPARE(messageOf([&shown] { press(buttonBeside(shown, "Repository")); }).count(), 2);
    });
}

void DescribeDialogTest::detailsHideMarkupAndPasswords()
{
    available({{"repoid", "base"}});
    repo("base", markup, "https://me:secret@h/\nhttp://h/vantor?u=me&p=hidden&path=x", "http://a:b1@h/");
    const QStringList shown = repositoryOf("it");
    QCOMPARE(shown.value(2), QString(markup));
    const QString dot(QChar(0x25cf));
    QCOMPARE(shown.value(4),
             "https://me:" + dot.repeated(6) + "@h/\nhttp://h/vantor?u=me&p=" + dot.repeated(6) + "&path=x");
    QCOMPARE(shown.value(6), "http://a:" + dot.repeated(2) + "@h/");
    describe("it", [](Dialog& description) {
        withDialog<RepoDialog>(
            [&description] { press(buttonBeside(description, "Repository")); },
            [&description](RepoDialog& details) {
                const QStringList texts = readableTexts(&details) + readableTexts(&description);
                QVERIFY(texts.contains("Mirror list URL"));
                for (const QString& text : texts) {
                    QVERIFY2(!text.contains(QRegExp("secret|hidden|b1")), qPrintable(text));
                }
            });
    });
}

void DescribeDialogTest::detailsOfAnotherRepositoryReplaceTheFirst()
{
    available({{"repoid", "base"}});
    repo("base", "", "http://one/", "");
    describe("it", [this](Dialog& shown) {
        for (const char* url : {"http://one/", "http://two/"}) {
            conf->entries.first().baseurl = QLatin1String(url);
            QStringList texts;
            withDialog<RepoDialog>([&shown] { press(buttonBeside(shown, "Repository")); },
                                   [&texts](RepoDialog& details) {
                                       for (const QLabel* label : details.findChildren<QLabel*>()) {
                                           texts << label->text();
                                       }
                                   });
            QCOMPARE(texts, (QStringList{"base", "URLs", url}));
        }
        QCOMPARE(shown.findChildren<RepoDialog*>().count(), 1);
        QCOMPARE(shown.findChild<RepoDialog*>()->findChildren<QLabel*>().count(), 0);
    });
}

void DescribeDialogTest::repositoryIsBrowsed()
{
    const QString browser = Share::absolute("webbrowser");
    QFile program(browser);
    QVERIFY(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.part\" && mv \"$0.part\" \"$0.called\"\n");
    program.close();
    QVERIFY(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    available({{"repoid", "base"}});
    repo("base", "", "http://me:secret@h/$basearch/\nhttp://two/", "");
    describe("it", [](Dialog& shown) {
        withDialog<RepoDialog>([&shown] { press(buttonBeside(shown, "Repository")); },
                               [](RepoDialog& details) { press(buttonNamed(details, "Browse Repository")); });
    });
    QTRY_VERIFY(QFile::exists(browser + ".called"));
    QFile called(browser + ".called");
    QVERIFY(called.open(QIODevice::ReadOnly));
    QCOMPARE(called.readAll(), QByteArray("http://h/x86_64/\n"));
}

void DescribeDialogTest::repositoryWithoutUrlCannotBeBrowsed()
{
    available({{"repoid", "base"}});
    repo("base", "name", "", "");
    describe("it", [](Dialog& shown) {
        withDialog<RepoDialog>(
            [&shown] { press(buttonBeside(shown, "Repository")); },
            [](RepoDialog& details) {
                QCOMPARE(messageOf([&details] { press(buttonNamed(details, "Browse Repository")); }),
                         (QStringList{"Error", "Repository configuration has no URL"}));
            });
    });
}

QTEST_MAIN(DescribeDialogTest)
#include "DescribeDialogTest.moc"

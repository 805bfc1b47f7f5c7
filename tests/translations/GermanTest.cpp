// SPDX-License-Identifier: GPL-2.0-or-later

// Tests of the program in German: the windows show the right texts, a small screen cuts off no text, and the
// catalogue has all texts that the program requests.

#include <QTranslator>
#include <QXmlStreamReader>
#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "advisories/AdvisoryDialog.h"
#include "app/MainWindow.h"
#include "app/Notice.h"
#include "app/OutcomeLine.h"
#include "app/Translations.h"
#include "app/base/Share.h"
#include "packagetable/PackageTable.h"
#include "packagetable/SortFilterProxyModel.h"
#include "packagetable/TableStatus.h"
#include "packagetable/View.h"
#include "repo/RepoAuthDialog.h"
#include "repo/RepoEditorConfigDialog.h"
#include "repo/RepoEditorDialog.h"
#include "repo/RepoEntry.h"
#include "services/HProgressBar.h"
#include "services/LogWindow.h"
#include "services/ScrollableDialogs.h"
#include "tests/app/EachAlone.h"
#include "tests/history/ShownHistory.h"
#include "tests/packagetable/Described.h"
#include "tests/support/AnsweringUser.h"
#include "tests/support/Buttons.h"
#include "tests/support/StandIn.h"
#include "widgets/ElidedLabel.h"
#include "widgets/FindBar.h"
#include "widgets/HFrameLabel.h"
#include "widgets/HMessageBox.h"

namespace {

// Records the texts that no catalogue has. Qt asks the translators in reverse order of their installation.
// This translator is installed first, so Qt asks it only if no catalogue has the text.
class Missing : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        asked << QString::fromUtf8(context) + QLatin1String(": ") + QString::fromUtf8(text);
        return {};
    }

    mutable QStringList asked;
};

// Counts the texts that the program requests. This translator is installed after the catalogues, so Qt asks
// it first. It translates nothing, so Qt asks the catalogues next.
class Counting : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char*, const char*, const char*, int) const override
    {
        ++count;
        return {};
    }

    mutable QAtomicInt count; // atomic, because workers request texts too
};

bool isScrolled(const QWidget* widget)
{
    for (const QWidget* each = widget; each != nullptr && !each->isWindow(); each = each->parentWidget()) {
        if (qobject_cast<const QAbstractScrollArea*>(each) != nullptr) {
            return true;
        }
    }
    return false;
}

// The width that the widget's text needs; 0 if the widget can show a text of any length.
int neededWidth(const QWidget* widget)
{
    if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        return label->wordWrap() || label->text().isEmpty() ? 0 : label->sizeHint().width();
    }
    if (qobject_cast<const QPushButton*>(widget) != nullptr ||
        qobject_cast<const QCheckBox*>(widget) != nullptr ||
        qobject_cast<const QComboBox*>(widget) != nullptr) {
        return widget->sizeHint().width();
    }
    if (const auto* group = qobject_cast<const QGroupBox*>(widget)) {
        return group->fontMetrics().horizontalAdvance(group->title());
    }
    return 0;
}

// The part of the box in which the style draws the text.
QRect fieldOf(const QComboBox* box)
{
    QStyleOptionComboBox option;
    option.initFrom(box);
    return box->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box);
}

// Describes each text that is cut off, or that is outside the window.
QStringList cutOff(const QWidget* window)
{
    QStringList found;
    int looked = 0;
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
        const int needed = neededWidth(widget);
        if (!widget->isVisible() || widget->window() != window || needed == 0) {
            continue;
        }
        ++looked;
        const QString text = widget->property("text").toString() + widget->property("title").toString() +
                             widget->property("currentText").toString();
        if (const auto* box = qobject_cast<const QComboBox*>(widget)) {
            for (int i = 0; i < box->count(); ++i) {
                if (fieldOf(box).width() < box->fontMetrics().horizontalAdvance(box->itemText(i))) {
                    found << QStringLiteral("the item ") + box->itemText(i);
                }
            }
        }
        if (widget->width() < needed || widget->height() < widget->minimumSizeHint().height()) {
            found << QStringLiteral("%1 needs %2, has %3").arg(text).arg(needed).arg(widget->width());
        }
        const QRect place(widget->mapTo(const_cast<QWidget*>(window), QPoint()), widget->size());
        if (!isScrolled(widget->parentWidget()) && !window->rect().contains(place)) {
            found << text + QLatin1String(" is outside the window");
        }
    }
    for (const QHeaderView* header : window->findChildren<QHeaderView*>()) {
        for (int i = 0; header->isVisible() && i < header->count(); ++i) {
            ++looked;
            // Measure only the text: a heading that does not show the sort indicator needs no space for it.
            const QString text = header->model()->headerData(i, header->orientation()).toString();
            if (!header->isSectionHidden(i) &&
                header->sectionSize(i) < header->fontMetrics().horizontalAdvance(text)) {
                found << QStringLiteral("the heading ") + text;
            }
        }
    }
    for (const QToolButton* button : window->findChildren<QToolButton*>("qt_menubar_ext_button")) {
        if (button->isVisible()) {
            found << QStringLiteral("the menus are cut off");
        }
    }
    if (looked == 0) {
        found << QStringLiteral("the window has no visible texts");
    }
    return found;
}

// The result of cutOff() for the final layout. The window manager and the layout may need several rounds of
// the event loop, so this function waits until no text is cut off. After 10 seconds, it gives up.
QStringList cutOffFinally(const QWidget* window)
{
    QCoreApplication::processEvents();
    QStringList found;
    (void)QTest::qWaitFor([&] { return (found = cutOff(window)).isEmpty(); }, 10000);
    return found;
}

// The texts of all status labels in a dialog.
QStringList statusOf(const QWidget& dialog)
{
    QStringList texts;
    for (const HFrameLabel* label : dialog.findChildren<HFrameLabel*>()) {
        texts << label->text();
    }
    return texts;
}

// The texts that the window cuts off at its initial size or at its smallest size.
QStringList cutOffAtAnySize(QWidget* window)
{
    QTest::qWait(300); // the window manager may still change the size of a new window
    QStringList found = cutOffFinally(window);
    const QSize screen = window->screen()->availableSize();
    const QSize smallest = window->minimumSizeHint().expandedTo(window->minimumSize());
    if (smallest.width() > screen.width() || smallest.height() > screen.height()) {
        found << QStringLiteral("the window cannot be smaller than %1x%2")
                     .arg(smallest.width())
                     .arg(smallest.height());
    }
    window->resize(smallest);
    if (!QTest::qWaitFor([&] { return window->size() == smallest; }, 10000)) {
        found << QStringLiteral("the window has not shrunk to its smallest size");
    }
    return found + cutOffFinally(window);
}

} // namespace

class GermanTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<StandIn> standIn;
    Missing missing;
    MainWindow* window = nullptr;
    PackageTable::View* view = nullptr;
    const QAbstractItemModel* listed = nullptr;

    // No code deletes the main window: in the program, it also exists until the process ends.
    void start()
    {
        using S = StandIn;
        const QJsonObject old{{"version", "1"}, {"repoid", "@System"}};
        const QJsonObject next{
            {"version", "2"}, {"repoid", "updates"}, {"size", 1536}, {"summary", "Werkzeug"}};
        standIn->setPackages({S::package("tool", next)}, {S::package("tool", old), S::package("shell", old)},
                             {S::package("editor")}, {S::group("Games")});
        standIn->setVersionLocks({{"shell", "shell-0:1-1.*"}});
        window = new MainWindow;
        view = window->findChild<PackageTable::View*>();
        listed = window->findChild<PackageTable::SortFilterProxyModel*>();
        window->show();
        QApplication::setActiveWindow(window);
        QVERIFY(QTest::qWaitForWindowActive(window));
        QVERIFY(QTest::qWaitFor(
            [this] { return view->parentWidget()->isVisible() && view->parentWidget()->isEnabled(); },
            20000));
    }
    QStringList buttons() const
    {
        QStringList texts;
        for (const QPushButton* button : window->findChildren<QPushButton*>()) {
            texts << button->text();
        }
        return texts;
    }
    QAction* entry(const QString& text) const
    {
        for (QAction* action : window->findChildren<QAction*>()) {
            if (action->text() == text) {
                return action;
            }
        }
        qFatal("the entry %s is missing", qPrintable(text));
        return nullptr;
    }
    QPushButton* button(const QString& text) const { return buttonOf(window, text); }
    static void click(QPushButton* button) { QTest::mouseClick(button, Qt::LeftButton); }

private Q_SLOTS:
    void init()
    {
        standIn = std::make_unique<StandIn>();
        QVERIFY(QFile::link(QStringLiteral(VYRE_CATALOGUES), Share::absolute("translations")));
        QVERIFY(QCoreApplication::installTranslator(&missing));
        QCOMPARE(Translations::install(*qApp, {"de-DE"}), QStringLiteral("vyre_de"));
        const int density = qEnvironmentVariableIntValue("QT_FONT_DPI") == 192 ? 2 : 1;
        QCOMPARE(QGuiApplication::primaryScreen()->size(), QSize(1024, 768) * density);
    }

    // Each text that no catalogue had is a failure, except for Qt's own texts.
    void cleanup()
    {
        QStringList contexts;
        QFile catalogue(QStringLiteral(VYRE_GERMAN));
        QVERIFY(catalogue.open(QIODevice::ReadOnly));
        QXmlStreamReader reader(&catalogue);
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::StartElement &&
                reader.name() == QLatin1String("name")) {
                contexts << reader.readElementText();
            }
        }
        QVERIFY(contexts.contains("PackageTable::Describe::Instance::Area"));
        QStringList unknown;
        for (const QString& text : qAsConst(missing.asked)) {
            if (!text.startsWith(QLatin1Char('Q')) ||
                contexts.contains(text.section(QLatin1String(": "), 0, 0))) {
                unknown << text;
            }
        }
        QCOMPARE(unknown.join('\n'), QString());
        QCoreApplication::removeTranslator(&missing);
    }

    void textsOfTheMainWindowAreGerman()
    {
        start();
        QStringList menus;
        QStringList entries;
        for (const QAction* action : window->menuBar()->actions()) {
            menus << action->text();
            for (const QAction* each : action->menu()->actions()) {
                if (!each->isSeparator()) {
                    entries << each->text();
                }
            }
        }
        QCOMPARE(menus, (QStringList{"&Programm", "&Fenster", "Paket&quellen", "&Cache", "&Hilfe"}));
        QCOMPARE(entries, (QStringList{"&Beenden", "&Protokoll", "&Verlauf", "&Aktualisierungshinweise",
                                       "&Konfiguration bearbeiten", "dbcache leeren", "Pakete löschen",
                                       "Metadaten löschen", "Alles löschen", "Handbuch (HTML)",
                                       "Handbuch (PDF)", "&Über VYRE"}));
        QCOMPARE(buttons(), (QStringList{"Im Protokoll &zeigen", "Filtern", "&Beschreiben", "Anpa&ssen",
                                         "&Neu laden", "Auswahl &vormerken", "Akt&ualisierungen vormerken",
                                         "Aktionen ver&werfen", "Aktionen &anwenden", "Anhalten"}));
        QStringList headings;
        for (int i = 0; i < listed->columnCount(); ++i) {
            headings << listed->headerData(i, Qt::Horizontal).toString();
        }
        QCOMPARE(headings, (QStringList{"Aktion", "Zustand", "Art", "Name", "Version", "Paketquelle",
                                        "Architektur", "Größe", "Erstellt am"}));
        QCOMPARE(entry("&Beenden")->shortcut(), QKeySequence(Qt::CTRL + Qt::Key_Q));
        QCOMPARE(entry("&Protokoll")->shortcut(), QKeySequence(Qt::CTRL + Qt::Key_L));
        QCOMPARE(entry("&Konfiguration bearbeiten")->shortcut(), QKeySequence(Qt::CTRL + Qt::Key_E));
        QCOMPARE(listed->index(0, PackageTable::NameColumn).data().toString(), QStringLiteral("tool"));
        QCOMPARE(listed->index(0, PackageTable::SizeColumn).data().toString(), QStringLiteral("1.5Kb"));
    }

    void theGermanMnemonicsOfTheMainWindowAreUnique()
    {
        start();
        QStringList texts;
        for (const QAction* action : window->menuBar()->actions()) {
            texts << action->text();
        }
        // Hidden buttons count too, because the program shows them later.
        for (const QPushButton* button : window->findChildren<QPushButton*>()) {
            texts << button->text();
        }
        QVERIFY(texts.contains("Im Protokoll &zeigen"));
        QStringList letters;
        for (const QString& text : qAsConst(texts)) {
            const int place = text.indexOf(QLatin1Char('&'));
            if (place != -1) {
                letters << text.mid(place + 1, 1).toLower();
            }
        }
        QVERIFY(letters.size() > 10);
        QStringList different = letters;
        different.removeDuplicates();
        QCOMPARE(letters, different);
    }

    void theMainWindowCutsOffNoGermanText()
    {
        start();
        QCOMPARE(cutOffFinally(window).join('\n'), QString());
        // The button row is widest while it contains the warning about unlisted actions.
        click(button("Akt&ualisierungen vormerken"));
        auto* expression = window->findChild<QLineEdit*>();
        expression->setText("^nothing");
        QTest::keyClick(expression, Qt::Key_Return);
        auto* warning = window->findChild<HFrameLabel*>();
        QTRY_COMPARE(warning->text(), QStringLiteral("Ungelistete Aktionen"));
        QCOMPARE(cutOffAtAnySize(window).join('\n'), QString());
    }

    void theLineBelowTheTableShowsMarksAndLocksAtTheSmallestSize()
    {
        start();
        window->findChildren<QComboBox*>().at(1)->setCurrentIndex(PackageTable::ViewAll);
        QTRY_COMPARE(listed->rowCount(), 3);
        view->selectAll();
        click(button("Akt&ualisierungen vormerken"));
        const auto* line = window->findChild<PackageTable::TableStatus*>()->findChild<ElidedLabel*>();
        QTRY_COMPARE(line->wholeText(),
                     QStringLiteral("Aufgelistet: 3   Ausgewählt: 3   Vorgemerkt: 0 Installieren, "
                                    "1 Aktualisieren, 0 Entfernen   Herunterzuladen: 1.5Kb   Gesperrt: 1 "
                                    "(1 ausgewählt)"));
        QCOMPARE(cutOffAtAnySize(window).join('\n'), QString());
        QCOMPARE(line->text(), line->wholeText());
    }

    void theOutcomeAndANoticeTogetherCutOffNeitherTheMenusNorTheShowInLogButton()
    {
        start();
        click(button("Akt&ualisierungen vormerken"));
        standIn->setOutcome({{"installed", 18},
                             {"updated", 1},
                             {"restartNeeded", true},
                             {"failedScriptlets", QJsonArray{"a-package-with-a-long-name-1.0-1.noarch",
                                                             "another-1.0-1.noarch"}}});
        standIn->setComplaining(true);
        const AnsweringUser user(AnsweringUser::click("OK"), AnsweringUser::EveryDialog);
        click(button("Aktionen &anwenden"));
        const auto* outcome = window->findChild<OutcomeLine*>();
        const auto* notice = window->findChild<Notice*>();
        QTRY_VERIFY(outcome->isVisible() && notice->isVisible());
        QTRY_VERIFY(view->isEnabled());
        // The "Show in Log" button is only as high as the menus, and so lower than other buttons.
        // Nevertheless its text must fit.
        const QPushButton* show = button("Im Protokoll &zeigen");
        const auto cutOffElsewhere = [this, show] {
            QStringList texts;
            for (const QString& text : cutOff(window)) {
                texts << text.section(QLatin1String(" needs "), 0, 0);
            }
            texts.removeOne(show->text());
            return texts;
        };
        auto* widget = static_cast<QWidget*>(window); // MainWindow has a slot with the name resize()
        for (const QSize& size : {widget->size(), window->minimumSizeHint()}) {
            widget->resize(size);
            QTRY_COMPARE(widget->size(), size);
            // The row is too narrow for the outcome and the notice. Only these two texts are shortened, and
            // the tool tip of each shows the whole text.
            QStringList shortened = cutOffElsewhere();
            QVERIFY(shortened.contains(outcome->findChild<ElidedLabel*>()->text()));
            for (const ElidedLabel* label :
                 QList<const ElidedLabel*>{outcome->findChild<ElidedLabel*>(), notice}) {
                if (label->text() != label->wholeText()) {
                    QVERIFY(label->toolTip().contains(label->wholeText()));
                    // The line ends with an ellipsis, not in the middle of a letter.
                    QVERIFY2(label->text().endsWith(QChar(0x2026)), qPrintable(label->text()));
                    QVERIFY(label->wholeText().startsWith(label->text().chopped(1)));
                    const int drawn = label->fontMetrics().horizontalAdvance(label->text());
                    QVERIFY(drawn + 2 * label->margin() <= label->width());
                    QCOMPARE(label->accessibleName(), label->wholeText());
                    QVERIFY2(shortened.removeOne(label->text()), qPrintable(shortened.join('|')));
                }
            }
            QCOMPARE(shortened, QStringList());
            QVERIFY(show->height() >= show->fontMetrics().height() &&
                    show->width() >= show->sizeHint().width());
        }
    }

    void theHintsOfTheEmptyTableFitTheSmallestWindow()
    {
        start();
        auto* widget = static_cast<QWidget*>(window); // MainWindow has a slot with the name resize()
        widget->resize(window->minimumSizeHint());
        QTRY_COMPARE(widget->size(), window->minimumSizeHint());
        auto* mode = window->findChildren<QComboBox*>().at(0);
        auto* expression = window->findChild<QLineEdit*>();
        const QVector<QPair<const char*, const char*>> hints{
            {"^nothing", "Kein Paket entspricht der Auswahl."},
            {"^TOOL", "Groß- und Kleinschreibung"},
            {"[", "kein gültiger regulärer Ausdruck"},
            {"nothing$", "das Ende eines ganzen Feldes"}};
        for (const auto& hint : hints) {
            mode->setCurrentIndex(hint == hints.last() ? PackageTable::Search : PackageTable::Filter);
            QTRY_VERIFY(view->isEnabled());
            expression->setText(hint.first);
            QTest::keyClick(expression, Qt::Key_Return);
            QTRY_VERIFY(view->accessibleDescription().contains(QString::fromUtf8(hint.second)));
            // The view leaves this margin on both sides of the text.
            const int margin = 2 * view->fontMetrics().height();
            const QRect room = view->viewport()->rect().adjusted(margin, 0, -margin, 0);
            const QRect text = view->fontMetrics().boundingRect(room, Qt::AlignCenter | Qt::TextWordWrap,
                                                                view->accessibleDescription());
            QVERIFY2(room.contains(text), hint.first);
        }
    }

    void theEditorAndItsFormCutOffNoGermanText()
    {
        start();
        standIn->setRepos("[base]\nname=Basis\nbaseurl=http://h/vantor?user=&word=&path=/x\nenabled=1\n");
        QStringList editor;
        QStringList form;
        QVERIFY(withDialog<RepoEditor::Dialog>(
            [this] { entry("&Konfiguration bearbeiten")->trigger(); },
            [&](RepoEditor::Dialog& dialog) {
                QCOMPARE(dialog.windowTitle(), QStringLiteral("VYRE – Paketquellen bearbeiten"));
                editor = cutOffAtAnySize(&dialog);
                QPushButton* add = buttonOf(&dialog, "Hinzufügen");
                QVERIFY(withDialog<RepoEditor::ConfigDialog>(
                    [add] { click(add); },
                    [&](RepoEditor::ConfigDialog& shown) {
                        const auto look = [&](const QString& warning) {
                            QVERIFY2(
                                QTest::qWaitFor([&] { return statusOf(shown).contains(warning); }, 10000),
                                qPrintable(statusOf(shown).join('|')));
                            form += cutOffAtAnySize(&shown);
                        };
                        look("Keine Kennung angegeben");
                        // The longest warning of the form is the warning about characters in the identifier.
                        auto* field = shown.findChild<QLineEdit*>();
                        for (QLineEdit* each : shown.findChildren<QLineEdit*>()) {
                            if (each->toolTip() == QLatin1String("Eindeutige Kennung der Paketquelle")) {
                                field = each;
                            }
                        }
                        QTest::keyClicks(field, "[x]");
                        look("Die Kennung enthält andere Zeichen als Buchstaben, Ziffern und -_.:");
                        // Closing the window instead would open a question.
                        click(buttonOf(&shown, "Abbrechen"));
                    }));
                // Check the editor again, because the form was open in front of it.
                editor += cutOffAtAnySize(&dialog);
            }));
        QCOMPARE(editor.join('\n'), QString());
        QCOMPARE(form.join('\n'), QString());
    }

    void theCredentialsDialogCutsOffNoGermanText()
    {
        Repo::Entry repository;
        repository.id = "updates";
        repository.name = "Aktualisierungen";
        repository.baseurl =
            "http://h/vantor?=&=&path=/x"; // the parameters for the name and the password have no names
        QWidget owner;
        RepoAuth::Dialog dialog(&owner);
        QStringList found;
        QStringList labels;
        QStringList texts;
        withDialog<RepoAuth::Dialog>([&] { dialog.exec(&repository); },
                                     [&](RepoAuth::Dialog& shown) {
                                         for (const QPushButton* each : shown.findChildren<QPushButton*>()) {
                                             texts << each->text();
                                         }
                                         for (const QLabel* each : shown.findChildren<QLabel*>()) {
                                             labels << each->text();
                                         }
                                         found = cutOffAtAnySize(&shown);
                                     });
        QCOMPARE(found.join('\n'), QString());
        QCOMPARE(texts, (QStringList{"Beenden", "Für diese Sitzung abschalten", "Alle überspringen",
                                     "Auf alle anwenden", "Auf alle dieses Servers anwenden", "OK"}));
        QVERIFY(labels.contains("Einige Paketquellen verlangen eine Anmeldung"));
        QVERIFY(labels.contains("Passwort"));
    }

    void aPackageDescriptionCutsOffNoGermanText()
    {
        start();
        view->selectRow(0);
        QPushButton* describe = button("&Beschreiben");
        QTRY_VERIFY(describe->isEnabled());
        QStringList found;
        QStringList labels;
        QVERIFY(withDialog<PackageTable::Describe::Dialog>([describe] { click(describe); },
                                                           [&](PackageTable::Describe::Dialog& dialog) {
                                                               for (const QLabel* each :
                                                                    dialog.findChildren<QLabel*>()) {
                                                                   labels << each->text();
                                                               }
                                                               found = cutOffAtAnySize(&dialog);
                                                           }));
        QCOMPARE(found.join('\n'), QString());
        for (const char* text :
             {"tool", "Aktualisierbar", "Installiert", "Art", "Gewöhnliches Paket", "Zusammenfassung"}) {
            QVERIFY2(labels.contains(QString::fromUtf8(text)), text);
        }
    }

    void theLogWindowCutsOffNoGermanText()
    {
        start();
        entry("&Protokoll")->trigger();
        Log::Window* log = nullptr;
        for (QWidget* each : QApplication::topLevelWidgets()) {
            log = log == nullptr ? qobject_cast<Log::Window*>(each) : log;
        }
        QVERIFY(log != nullptr);
        QVERIFY(QTest::qWaitForWindowExposed(log));
        QCOMPARE(log->windowTitle(), QStringLiteral("VYRE – Protokoll"));
        QVERIFY(log->findChild<QTextEdit*>()->toPlainText().contains("Initialisierung"));
        QCOMPARE(cutOffAtAnySize(log).join('\n'), QString());
        log->findChild<FindBar*>()->open();
        QTest::keyClicks(QApplication::focusWidget(), "nirgends");
        QCOMPARE(cutOffAtAnySize(log).join('\n'), QString());
        log->hide();
    }

    void theHistoryWindowCutsOffNoGermanText()
    {
        start();
        QStringList found;
        QString title;
        QVERIFY(withHistory([this] { entry("&Verlauf")->trigger(); },
                            [&](HistoryDialog& history) {
                                title = history.windowTitle();
                                found = cutOffAtAnySize(&history);
                            }));
        QCOMPARE(title, QStringLiteral("VYRE – Verlauf"));
        QCOMPARE(found.join('\n'), QString());
    }

    void noGermanTextIsCutOffInQuestions()
    {
        ScrollableConfirmDialog listing(QStringLiteral("Auszuführen:\n\tEntfernen: tool 1-1 (x86_64)\n"),
                                        "OK", "Abbrechen", nullptr, true,
                                        "Entfernungen: 1.\n    tool 1-1 (x86_64)", "Entfernen: 1");
        listing.show();
        QVERIFY(QTest::qWaitForWindowExposed(&listing));
        listing.findChild<FindBar*>()->open();
        QCOMPARE(cutOffAtAnySize(&listing).join('\n'), QString());
        HMessageBox question(QMessageBox::Question, "Paketquellen",
                             "In dieser Sitzung ohne sie weitermachen?",
                             QMessageBox::Yes | QMessageBox::No | QMessageBox::YesToAll, nullptr);
        question.show();
        QVERIFY(QTest::qWaitForWindowExposed(&question));
        QCOMPARE(cutOffFinally(&question).join('\n'), QString());
    }

    void theAdvisoriesWindowCutsOffNoGermanText()
    {
        standIn->setAdvisories({StandIn::advisory("LSA-2024-1", true, {StandIn::advised("tool", 0)})});
        start();
        QStringList found;
        QStringList texts;
        QVERIFY(withDialog<AdvisoryDialog>([this] { entry("&Aktualisierungshinweise")->trigger(); },
                                           [&](AdvisoryDialog& dialog) {
                                               texts << dialog.windowTitle()
                                                     << dialog.findChild<QTextEdit*>()->toPlainText();
                                               found = cutOffAtAnySize(&dialog);
                                           }));
        QCOMPARE(found.join('\n'), QString());
        QCOMPARE(texts.first(), QStringLiteral("VYRE – Aktualisierungshinweise"));
        QVERIFY(texts.last().contains(
            QStringLiteral("tool-2-1.x86_64: nicht installiert; die Aktualisierung 2-1 ist verfügbar")));
    }

    // A distribution has 60,000 packages, so a translation for each package would take noticeable time.
    void collectingMorePackagesRequestsNoMoreTranslations()
    {
        start();
        QPushButton* refresh = button("&Neu laden");
        Counting counting;
        QVERIFY(QCoreApplication::installTranslator(&counting));
        const auto count = [&](int packages) {
            QJsonArray available;
            for (int i = 0; i < packages; ++i) {
                available << StandIn::package(QStringLiteral("package%1").arg(i),
                                              {{"size", 1000 + 3000 * i}});
            }
            standIn->setPackages({}, {}, available);
            window->findChildren<QComboBox*>().at(1)->setCurrentIndex(PackageTable::ViewAll);
            counting.count = 0;
            click(refresh);
            return QTest::qWaitFor([&] { return listed->rowCount() == packages; })
                       ? counting.count.loadRelaxed()
                       : -1;
        };
        const int few = count(100);
        QVERIFY(few > 0);
        const int many = count(1000);
        QVERIFY(many > 0);
        QVERIFY2(many < few + 400, qPrintable(QStringLiteral("%1 and %2").arg(few).arg(many)));
        QCoreApplication::removeTranslator(&counting);
    }

    // The filters compare values, not translated texts.
    void theFilteredRowsDoNotDependOnTheLanguage()
    {
        start();
        auto* state = window->findChildren<QComboBox*>().at(1);
        QCOMPARE(state->itemText(PackageTable::ViewAll), QStringLiteral("Alle"));
        state->setCurrentIndex(PackageTable::ViewAll);
        QTRY_COMPARE(listed->rowCount(), 3);
        state->setCurrentIndex(PackageTable::ViewInstallable);
        QTRY_COMPARE(listed->rowCount(), 1);
        QCOMPARE(listed->index(0, PackageTable::NameColumn).data().toString(), QStringLiteral("editor"));
        QCOMPARE(listed->index(0, PackageTable::StateColumn).data(Qt::AccessibleTextRole).toString(),
                 QStringLiteral("Nicht installiert"));
    }
};

int main(int argc, char** argv)
{
    return EachAlone::run<GermanTest>(argc, argv);
}

#include "GermanTest.moc"

// SPDX-License-Identifier: GPL-2.0-or-later

// These tests check each window of the program: the keyboard alone can operate the window, assistive programs
// can read its controls, and the window fits on a small screen.
//
// If VYRE_PICTURES names a directory, the tests save pictures of the windows there. If VYRE_PALETTE is
// "dark", the windows are dark.

#include <QAccessible>
#include <QtTest>
#include <QtWidgets>

#include <atomic>
#include <functional>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "advisories/AdvisoryDialog.h"
#include "packagetable/ActionContextMenu.h"
#include "packagetable/OtherContextMenu.h"
#include "repo/RepoAuthDialog.h"
#include "repo/RepoEditorConfigDialog.h"
#include "repo/RepoEditorDialog.h"
#include "repo/RepoEditorView.h"
#include "repo/RepoEntry.h"
#include "services/LogWindow.h"
#include "services/ScrollableDialogs.h"
#include "tests/app/EachAlone.h"
#include "tests/app/ShownWindow.h"
#include "tests/history/ShownHistory.h"
#include "tests/packagetable/Described.h"
#include "tests/support/Question.h"
#include "widgets/FindBar.h"
#include "widgets/HMessageBox.h"
#include "yumio/Fields.h"

using PackageTable::Describe::Instance::RepoDialog;

// A named pipe. Markup in the tests names the pipe as the file of a picture. If the program opens the pipe to
// read the picture, the program waits for a writer. A thread then opens the pipe as a writer, which ends this
// wait. The thread counts how often the program opens the pipe.
class WatchedPipe
{
public:
    WatchedPipe()
    {
        if (mkfifo(path().constData(), 0600) != 0) {
            qFatal("the pipe cannot be created");
        }
        watcher.reset(QThread::create([this] {
            while (!done) {
                const int writer = open(path().constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
                if (writer >= 0) {
                    ++readers;
                    close(writer);
                }
                QThread::msleep(1);
            }
        }));
        watcher->start();
    }
    ~WatchedPipe()
    {
        done = true;
        watcher->wait();
    }
    WatchedPipe(const WatchedPipe&) = delete;
    WatchedPipe& operator=(const WatchedPipe&) = delete;

    QByteArray path() const { return QFile::encodeName(directory.filePath("pipe")); }
    int reads() const { return readers; }

private:
    QTemporaryDir directory;
    std::unique_ptr<QThread> watcher;
    std::atomic<bool> done{false};
    std::atomic<int> readers{0};
};

class WindowsTest : public QObject
{
    Q_OBJECT

private:
    using Check = std::function<void(const QString& name, QWidget& window)>;

    static const int windowCount = 14;

    std::unique_ptr<StandIn> standIn;
    std::unique_ptr<WatchedPipe> watched;
    std::unique_ptr<ShownWindow> shown;

    // The markup before each name and text that comes from outside the program. In most tests, it is empty.
    QByteArray foreign;

    QString longText() const
    {
        QString text = QString::fromUtf8(foreign) + QLatin1Char('\n');
        for (int i = 0; i < 60; ++i) {
            text += QStringLiteral("Install: a-package-with-a-long-name-%1-1.0-1.x86_64 from a repository\n")
                        .arg(i);
        }
        return text;
    }

    template <typename Dialog> static void showOne(Dialog& dialog, const QString& name, const Check& check)
    {
        QVERIFY2(
            withDialog<Dialog>([&dialog] { dialog.exec(); }, [&](Dialog& opened) { check(name, opened); }),
            qPrintable(name));
    }

    // Calls check() for each window of the program. Opens most windows as a user does. But this function
    // itself creates the windows of a transaction, the windows of a failure, and the credentials dialog.
    void forEachWindow(const Check& check)
    {
        check("main", *shown->window);

        shown->key(Qt::Key_L, Qt::ControlModifier);
        for (QWidget* each : QApplication::topLevelWidgets()) {
            if (qobject_cast<Log::Window*>(each) != nullptr) {
                QVERIFY(QTest::qWaitForWindowActive(each));
                check("log", *each);
                QTest::keyClick(each, Qt::Key_Escape);
            }
        }
        QVERIFY(QTest::qWaitForWindowActive(shown->window));

        QVERIFY(withDialog<AdvisoryDialog>([this] { shown->key(Qt::Key_D, Qt::ControlModifier); },
                                           [&](AdvisoryDialog& dialog) { check("advisories", dialog); }));
        QTRY_COMPARE(QApplication::activeWindow(), shown->window);

        QStringList opened;
        QVERIFY(withDialog<RepoEditor::Dialog>([this] { shown->key(Qt::Key_E, Qt::ControlModifier); },
                                               [&](RepoEditor::Dialog& editor) {
                                                   QTest::keyClick(&editor, Qt::Key_Down);
                                                   editor.findChild<RepoEditor::View*>()->setCurrentRow(0);
                                                   check("editor", editor);
                                                   const bool form = withDialog<RepoEditor::ConfigDialog>(
                                                       [&editor] { press(buttonOf(&editor, "Edit")); },
                                                       [&](RepoEditor::ConfigDialog& dialog) {
                                                           check("form", dialog);
                                                       });
                                                   opened << (form ? "form" : "no form");
                                               }));
        QCOMPARE(opened.takeFirst(), QString("form"));

        QTRY_VERIFY(shown->isReady());
        shown->window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(shown->window));
        QTRY_VERIFY(QApplication::activeWindow() == shown->window);
        QVERIFY(withHistory([this] { shown->key(Qt::Key_H, Qt::ControlModifier); },
                            [&](HistoryDialog& history) {
                                // If the current transaction is not the newest transaction, all commands are
                                // enabled.
                                history.findChild<QTableView*>()->selectRow(1);
                                QTRY_VERIFY(!history.findChild<QTextEdit*>()->toPlainText().isEmpty());
                                check("history", history);
                            }));
        QVERIFY(QTest::qWaitForWindowActive(shown->window));

        shown->click(foreign + "tool", PackageTable::NameColumn);
        QVERIFY(withDialog<PackageTable::Describe::Dialog>(
            [this] { shown->key(Qt::Key_Return); },
            [&](PackageTable::Describe::Dialog& dialog) {
                check("description", dialog);
                const bool details =
                    withDialog<RepoDialog>([&dialog] { press(buttonBeside(dialog, "Repository")); },
                                           [&](RepoDialog& repository) { check("repository", repository); });
                const bool files = withDialog<TextDialog>([&dialog] { press(buttonBeside(dialog, "Files")); },
                                                          [&](TextDialog& text) { check("files", text); });
                opened << (details && files ? "details" : "no details");
            }));
        QCOMPARE(opened.takeFirst(), QString("details"));

        ScrollableConfirmDialog confirm(longText(), "OK", "Cancel", shown->window, true,
                                        "Removals: 1\n" + foreign + QString(30, 'x'), foreign + "Remove: 1");
        confirm.setWindowTitle("Apply");
        showOne(confirm, "confirmation", check);
        ScrollableErrorDialog error(longText(), shown->window);
        error.setWindowTitle("VYRE Yum Error");
        showOne(error, "failure", check);
        HMessageBox box(QMessageBox::Critical, "VYRE Yum Error",
                        foreign + "Cannot download " + QString(70, 'x') + ": all mirrors were tried",
                        QMessageBox::Ok, shown->window);
        showOne(box, "error", check);
        HMessageBox remarks(QMessageBox::Warning, "VYRE Yum Warning", longText(), QMessageBox::Ok,
                            shown->window);
        showOne(remarks, "remarks", check);

        RepoAuth::Dialog credentials(shown->window);
        Repo::Entry entry;
        entry.id = foreign + "updates";
        entry.name = foreign + "All updates";
        entry.baseurl = foreign + "http://h/vantor?user=&word=&path=/x\nhttp://k/vantor?user=&word=&path=y";
        QTimer::singleShot(0, &credentials, [&] {
            QVERIFY(QTest::qWaitForWindowActive(&credentials));
            QTRY_VERIFY(takesInput(&credentials));
            check("credentials", credentials);
            credentials.close();
        });
        credentials.exec(&entry);
    }

    // The text of the tool tip at a position in a widget.
    static QString toolTipAt(QWidget* widget, const QPoint& place)
    {
        QHelpEvent event(QEvent::ToolTip, place, widget->mapToGlobal(place));
        QApplication::sendEvent(widget, &event);
        return QToolTip::text();
    }

    static QStringList toolTipsOf(QWidget& window)
    {
        QStringList tips;
        for (QWidget* widget : window.findChildren<QWidget*>()) {
            if (widget->isVisible() && widget->window() == &window) {
                tips << toolTipAt(widget, widget->rect().center());
            }
        }
        for (QTableView* view : window.findChildren<QTableView*>()) {
            for (int row = 0; row < qMin(view->model()->rowCount(), 20); ++row) {
                for (int column = 0; column < view->model()->columnCount(); ++column) {
                    const QModelIndex cell = view->model()->index(row, column);
                    view->scrollTo(cell);
                    const QRect seen = view->visualRect(cell) & view->viewport()->rect();
                    tips << toolTipAt(view->viewport(), seen.center());
                }
            }
        }
        for (QMenu* menu : window.findChildren<QMenu*>()) {
            for (QAction* action : menu->actions()) {
                menu->setActiveAction(action);
                tips << toolTipAt(menu, menu->rect().center());
            }
            menu->setActiveAction(nullptr);
        }
        QToolTip::hideText();
        return tips;
    }

    static bool isStop(const QWidget* widget)
    {
        return widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus) != 0 &&
               widget->focusProxy() == nullptr && !widget->isWindow() &&
               // Skip the line edit inside a spin box: the spin box itself takes the focus.
               qobject_cast<QAbstractSpinBox*>(widget->parentWidget()) == nullptr;
    }
    static QList<QWidget*> stops(const QWidget& window)
    {
        QList<QWidget*> found;
        for (QWidget* widget : window.findChildren<QWidget*>()) {
            if (isStop(widget) && widget->window() == &window) {
                found.append(widget);
            }
        }
        return found;
    }
    static QString describe(const QWidget* widget)
    {
        if (widget == nullptr) {
            return QStringLiteral("nothing");
        }
        const auto* button = qobject_cast<const QAbstractButton*>(widget);
        return QString::fromLatin1(widget->metaObject()->className()) + QLatin1Char(' ') +
               (button != nullptr ? button->text() : widget->accessibleName());
    }
    static QRect placeOf(const QWidget* widget)
    {
        return QRect(widget->mapTo(widget->window(), QPoint()), widget->size());
    }
    // Whether `before` precedes `after` in the reading order.
    static bool isRead(const QRect& before, const QRect& after)
    {
        return before.contains(after) || after.top() >= before.center().y() ||
               (after.left() >= before.right() - 1 && after.bottom() > before.top());
    }

    static QStringList mnemonicsOf(const QStringList& texts)
    {
        QStringList found;
        for (const QString& text : texts) {
            const QString key = QKeySequence::mnemonic(text).toString();
            if (!key.isEmpty()) {
                found << key + ' ' + text;
            }
        }
        found.sort();
        return found;
    }
    static QStringList doubled(const QStringList& mnemonics)
    {
        QStringList found;
        for (int i = 1; i < mnemonics.count(); ++i) {
            if (mnemonics.at(i).section(' ', 0, 0) == mnemonics.at(i - 1).section(' ', 0, 0)) {
                found << mnemonics.at(i - 1) << mnemonics.at(i);
            }
        }
        return found;
    }
    static QStringList textsOf(const QList<QAction*>& actions)
    {
        QStringList texts;
        for (const QAction* action : actions) {
            texts << action->text();
        }
        return texts;
    }

    static void keepPicture(const QString& name, QWidget& window)
    {
        const QString directory = qEnvironmentVariable("VYRE_PICTURES");
        if (!directory.isEmpty()) {
            QTest::qWait(300);
            QVERIFY(window.grab().save(directory + '/' + name + ".png"));
        }
    }

private Q_SLOTS:
    void init()
    {
        if (qEnvironmentVariable("VYRE_PALETTE") == "dark") {
            QPalette dark(QColor(53, 53, 53), QColor(42, 42, 42));
            dark.setColor(QPalette::AlternateBase, QColor(50, 50, 50));
            dark.setColor(QPalette::Base, QColor(35, 35, 35));
            dark.setColor(QPalette::Highlight, QColor(42, 130, 218));
            QApplication::setStyle("Fusion");
            QApplication::setPalette(dark);
        }
        standIn = std::make_unique<StandIn>();
        if (QByteArray(QTest::currentTestFunction()) ==
            "markupInTextsFromOutsideTheProgramIsShownAsPlainText") {
            watched = std::make_unique<WatchedPipe>();
            foreign = "<h1>x</h1><img src=\"" + watched->path() + "\">&amp;&nbsp;&";
            QFile configuration(standIn->root() + "/etc/yum.conf");
            QVERIFY(configuration.open(QIODevice::WriteOnly));
            configuration.write("[main]\ncachedir=/var/cache/" + foreign + "\n");
        }
        standIn->setRepos("[base]\nname=The base\nbaseurl=http://h/base\nenabled=1\n[extras]\nname=Extras\n"
                          "baseurl=http://h/extras\n[" +
                          foreign + "updates]\nname=" + foreign + "Updates\nbaseurl=http://h/updates" +
                          QByteArray(foreign).replace(' ', "%20") + "\nmirrorlist=" + foreign +
                          (foreign.isEmpty() ? "\n" : "\nenabled=no\n"));
        using S = StandIn;
        const QString text = QString::fromUtf8(foreign);
        const QJsonArray texts{text};
        const QJsonObject old{{"version", "1"}, {"repoid", "@System"}};
        const QJsonObject older{{"version", "0"}, {"repoid", "@System"}};
        QJsonObject next{{"version", text + "2"},
                         {"release", text + "1"},
                         {"arch", foreign.isEmpty() ? "x86_64" : text},
                         {"repoid", text + "updates"},
                         {"summary", text + "A tool"},
                         {"files", texts}};
        for (int i = 0; i < Fields::Count; ++i) {
            const Fields::Row& row = Fields::row(static_cast<Fields::Field>(i));
            if (row.source == Fields::Source::Text) {
                next.insert(row.attribute, text);
            } else if (row.source == Fields::Source::Dependencies) {
                next.insert(row.attribute, texts);
            }
        }
        QJsonArray available{S::package("editor"), S::package("lib")};
        for (int i = 0; i < 60; ++i) {
            available.append(S::package(QStringLiteral("x-package-with-a-name-%1").arg(i)));
        }
        const QString tool = text + "tool";
        standIn->setPackages({S::package(tool, next)},
                             {S::package(tool, old), S::package(tool, older), S::package("shell", old)},
                             available, {S::group(text + "Games", {{"mandatory_packages", texts}})});
        QList<QJsonArray> advisories;
        for (int i = 1; i <= 40; ++i) {
            advisories.append(S::advisory(text + QStringLiteral("LSA-2024-%1").arg(i), i % 3 != 0,
                                          {S::advised(tool, 0), S::advised(text + "lib", i % 6)}));
        }
        standIn->setAdvisories(advisories);
        shown = std::make_unique<ShownWindow>();
        shown->start();
        shown->window->showNormal();
        shown->choose(shown->stateBox, PackageTable::ViewAll);
        shown->click(foreign + "tool", PackageTable::ActionColumn);
        QCOMPARE(shown->marks(), QStringList{foreign + "tool update"});
    }

    void tabReachesEveryControlInReadingOrder()
    {
        int windows = 0;
        forEachWindow([&windows](const QString& name, QWidget& window) {
            ++windows;
            QVERIFY2(QTest::qWaitFor([&window] {
                         return QApplication::focusWidget() != nullptr &&
                                QApplication::focusWidget()->window() == &window;
                     }),
                     qPrintable(name));
            if (auto* findBar = window.findChild<FindBar*>()) {
                findBar->open(); // its fields are tab stops too
            }
            const QList<QWidget*> expected = stops(window);
            QVERIFY2(!expected.isEmpty(), qPrintable(name));
            QList<QWidget*> reached;
            QStringList jumps;
            for (int i = 0; i <= expected.count() + 1; ++i) {
                QWidget* focused = QApplication::focusWidget();
                if (reached.contains(focused)) {
                    break;
                }
                reached.append(focused);
                QTest::keyClick(window.windowHandle(), Qt::Key_Tab);
            }
            QStringList missed;
            for (QWidget* stop : expected) {
                if (!reached.contains(stop)) {
                    missed << describe(stop);
                }
            }
            QVERIFY2(missed.isEmpty(), qPrintable(name + ": " + missed.join(", ")));
            // Tab moves the focus forward in the reading order, except once: from the last control to the
            // first.
            for (int i = 0; i < reached.count(); ++i) {
                const QWidget* from = reached.at(i);
                const QWidget* to = reached.at((i + 1) % reached.count());
                if (from != nullptr && to != nullptr && !isRead(placeOf(from), placeOf(to))) {
                    jumps << describe(from) + " - " + describe(to);
                }
            }
            QVERIFY2(jumps.count() <= 1, qPrintable(name + ": " + jumps.join(", ")));
        });
        QCOMPARE(windows, windowCount);
    }

    void markupInTextsFromOutsideTheProgramIsShownAsPlainText()
    {
        const auto isMarkup = [](const QString& shownText) {
            return Qt::mightBeRichText(shownText) &&
                   (shownText.contains("<h1>") || shownText.contains("<img"));
        };
        int windows = 0;
        int foreignLabels = 0;
        int foreignTips = 0;
        forEachWindow([&](const QString& name, QWidget& window) {
            ++windows;
            for (const QLabel* label : window.findChildren<QLabel*>()) {
                if (label->text().contains("</h1>")) {
                    ++foreignLabels;
                    QVERIFY2(label->textFormat() == Qt::PlainText, qPrintable(name + ": " + label->text()));
                    QVERIFY2(label->buddy() == nullptr, qPrintable(name + ": " + label->text()));
                }
            }
            for (const QTextEdit* edit : window.findChildren<QTextEdit*>()) {
                QVERIFY2(!edit->toHtml().contains("<h1"), qPrintable(name));
                QVERIFY2(!edit->toHtml().contains("<img"), qPrintable(name));
                QVERIFY2(name != "log" || edit->toPlainText().contains("<h1>x</h1>"), qPrintable(name));
            }
            const QStringList tips = toolTipsOf(window);
            for (const QString& tip : tips) {
                foreignTips += tip.contains("h1") ? 1 : 0;
                QVERIFY2(!isMarkup(tip), qPrintable(name + ": " + tip));
            }
        });
        QCOMPARE(windows, windowCount);
        QVERIFY2(foreignLabels > 20, qPrintable(QString::number(foreignLabels)));
        QVERIFY2(foreignTips >= 5, qPrintable(QString::number(foreignTips)));
        QCOMPARE(watched->reads(), 0);
    }

    void everyMnemonicIsUniqueWithinItsWindow()
    {
        forEachWindow([](const QString& name, QWidget& window) {
            QStringList texts;
            for (const QAbstractButton* button : window.findChildren<QAbstractButton*>()) {
                texts << button->text();
            }
            for (const QLabel* label : window.findChildren<QLabel*>()) {
                if (label->buddy() != nullptr) {
                    texts << label->text();
                }
            }
            for (const QGroupBox* group : window.findChildren<QGroupBox*>()) {
                texts << group->title();
            }
            QStringList both;
            if (const auto* bar = window.findChild<QMenuBar*>()) {
                texts += textsOf(bar->actions());
                for (const QAction* action : bar->actions()) {
                    QCOMPARE(doubled(mnemonicsOf(textsOf(action->menu()->actions()))), QStringList());
                }
                // These two controls share one mnemonic, and their texts must not change. A second press of
                // the key reaches the second control.
                both = QStringList{"Alt+C &Cache", "Alt+C &Clear Actions"};
                QVERIFY(mnemonicsOf(texts).count() > 10);
            }
            if (doubled(mnemonicsOf(texts)) != both) {
                QFAIL(qPrintable(name + ": " + doubled(mnemonicsOf(texts)).join(", ")));
            }
        });
    }

    void everyControlHasAnAccessibleNameAndRole()
    {
        int controls = 0;
        forEachWindow([&controls](const QString& name, QWidget& window) {
            for (QWidget* stop : stops(window)) {
                if (qobject_cast<QScrollArea*>(stop) != nullptr) {
                    continue; // a scroll area only scrolls its contents
                }
                ++controls;
                QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(stop);
                QVERIFY2(accessible != nullptr && accessible->isValid(), qPrintable(describe(stop)));
                const QString what = name + ": " + describe(stop);
                QVERIFY2(!accessible->text(QAccessible::Name).isEmpty(), qPrintable(what));
                QVERIFY2(accessible->role() != QAccessible::NoRole &&
                             accessible->role() != QAccessible::Client,
                         qPrintable(what));
                if (qobject_cast<QComboBox*>(stop) != nullptr) {
                    // The accessible name of a combo box is its current choice, so the box also needs a label
                    // or a description.
                    QVERIFY2(!accessible->relations(QAccessible::Label).isEmpty() ||
                                 !accessible->text(QAccessible::Description).isEmpty(),
                             qPrintable(what));
                }
            }
            for (const QProgressBar* bar : window.findChildren<QProgressBar*>()) {
                QVERIFY2(!bar->accessibleName().isEmpty(), qPrintable(name));
            }
        });
        QVERIFY(controls > 50);
    }

    void everyFieldOfAFormHasALabel()
    {
        QStringList fields;
        forEachWindow([&fields](const QString& name, QWidget& window) {
            if (name != "form" && name != "credentials" && name != "log") {
                return;
            }
            for (const QWidget* stop : stops(window)) {
                const auto* text = qobject_cast<const QTextEdit*>(stop);
                if (qobject_cast<const QAbstractButton*>(stop) != nullptr ||
                    (text != nullptr && text->isReadOnly())) {
                    continue;
                }
                int labels = 0;
                for (const QLabel* label : window.findChildren<QLabel*>()) {
                    labels += label->buddy() == stop ? 1 : 0;
                }
                if (labels == 0 && name == "credentials") {
                    // The labels are parameter names from a URL. If a label were the buddy of its field, Qt
                    // would treat "&" in the name as a mnemonic.
                    QVERIFY(stop->accessibleName() == "user" || stop->accessibleName() == "word");
                    labels = 1;
                }
                QVERIFY2(labels == 1, qPrintable(name + ": " + describe(stop)));
                fields << name;
            }
        });
        QCOMPARE(fields.count("form"), 9); // two further fields of the form are disabled here
        QCOMPARE(fields.count("credentials"), 2);
        QCOMPARE(fields.count("log"), 1);
    }

    void everyWindowFitsTheScreen()
    {
        // If the screen is scaled, Qt rounds positions, so allow one more pixel.
        const QRect screen = QGuiApplication::primaryScreen()->geometry().adjusted(0, 0, 1, 1);
        forEachWindow([screen](const QString& name, QWidget& window) {
            keepPicture(name, window);
            const QRect frame = window.frameGeometry();
            QVERIFY2(screen.contains(frame), qPrintable(QStringLiteral("%1: %2 x %3 at %4, %5")
                                                            .arg(name)
                                                            .arg(frame.width())
                                                            .arg(frame.height())
                                                            .arg(frame.x())
                                                            .arg(frame.y())));
            for (const QWidget* widget : window.findChildren<QWidget*>()) {
                const bool isText = qobject_cast<const QAbstractButton*>(widget) != nullptr ||
                                    qobject_cast<const QLabel*>(widget) != nullptr ||
                                    qobject_cast<const QComboBox*>(widget) != nullptr ||
                                    qobject_cast<const QGroupBox*>(widget) != nullptr;
                if (!widget->isVisible() || !isText || widget->window() != &window) {
                    continue;
                }
                const QSize needed = widget->minimumSizeHint();
                QVERIFY2(widget->width() >= needed.width() && widget->height() >= needed.height(),
                         qPrintable(name + ": " + describe(widget)));
                bool scrolled = false;
                for (const QWidget* above = widget; above != nullptr; above = above->parentWidget()) {
                    scrolled = scrolled || qobject_cast<const QAbstractScrollArea*>(above) != nullptr;
                }
                QVERIFY2(scrolled || window.rect().contains(placeOf(widget)),
                         qPrintable(name + ": " + describe(widget)));
            }
        });
    }

    void theKeyboardOpensBothContextMenusOfTheTable()
    {
        // The keys must pass through the window system, which turns the menu key into a menu request. 76 is
        // the code of F10. If xdotool gets the name "F10" instead, it also presses Alt with some keyboard
        // layouts.
        for (const char* keys : {"Menu", "shift+76"}) {
            QStringList menus;
            QTimer timer;
            connect(&timer, &QTimer::timeout, this, [&menus] {
                if (QWidget* popup = QApplication::activePopupWidget()) {
                    menus << popup->metaObject()->className();
                    popup->close();
                }
            });
            timer.start(10);
            shown->click("shell", PackageTable::NameColumn);
            for (const char* pressed : {"Home", keys, "Right", "Right", "Right", keys}) {
                QCOMPARE(QProcess::execute("xdotool", {"key", pressed}), 0);
                const bool isMenu = pressed == keys;
                const int count = menus.count();
                if (isMenu) {
                    QTRY_VERIFY2(menus.count() > count, keys);
                } else {
                    QTest::qWait(50);
                }
            }
            QCOMPARE(menus,
                     (QStringList{"PackageTable::ActionContextMenu", "PackageTable::OtherContextMenu"}));
        }
    }

    void theSpaceKeyTogglesTheBoxesInTheRepositoryEditor()
    {
        QStringList seen;
        withDialog<RepoEditor::Dialog>(
            [this] { shown->key(Qt::Key_E, Qt::ControlModifier); },
            [&seen](RepoEditor::Dialog& editor) {
                auto* view = editor.findChild<RepoEditor::View*>();
                const auto boxes = [view] {
                    const QAccessibleTableInterface* table =
                        QAccessible::queryAccessibleInterface(view)->tableInterface();
                    return table->cellAt(0, 0)->text(QAccessible::Name) + '/' +
                           table->cellAt(0, 1)->text(QAccessible::Name);
                };
                seen << boxes();
                view->setCurrentIndex(view->model()->index(0, 2));
                const auto key = [&](Qt::Key pressed) { QTest::keyClick(editor.windowHandle(), pressed); };
                key(Qt::Key_Space);
                seen << boxes();
                key(Qt::Key_Left);
                key(Qt::Key_Space);
                seen << boxes();
                key(Qt::Key_Left);
                key(Qt::Key_Space);
                seen << boxes();
                // Undo the changes, so that the editor closes without a question.
                press(buttonOf(&editor, "Reset All"));
            });
        QCOMPARE(seen, (QStringList{"Yes/Yes", "Yes/Yes", "Yes/No", "No/No"}));
    }

    void theIconsInThePackageTableHaveAccessibleNames()
    {
        shown->click(shown->groupsBox, QPoint(8, shown->groupsBox->height() / 2));
        const QAccessibleTableInterface* table =
            QAccessible::queryAccessibleInterface(shown->view)->tableInterface();
        const auto row = [this, table](const QString& name) {
            QStringList texts;
            for (int column = 0; column < PackageTable::NameColumn; ++column) {
                texts << table->cellAt(shown->listed().indexOf(name), column)->text(QAccessible::Name);
            }
            return texts.join('/');
        };
        shown->click("shell", PackageTable::ActionColumn);
        shown->click("editor", PackageTable::ActionColumn);
        QCOMPARE(row("tool"), QString("Update/Out-of-date/Package"));
        QCOMPARE(row("shell"), QString("Remove/Up-to-date/Package"));
        QCOMPARE(row("editor"), QString("Install/Not Installed/Package"));
        QCOMPARE(row("lib"), QString("No Action/Not Installed/Package"));
        QCOMPARE(row("Games").section('/', 2), QString("Group"));
    }
};

int main(int argc, char** argv)
{
    return EachAlone::run<WindowsTest>(argc, argv);
}

#include "WindowsTest.moc"

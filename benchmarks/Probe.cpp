// SPDX-License-Identifier: GPL-2.0-or-later

// A Qt plug-in that measures the program from inside. Qt loads it because of QT_QPA_GENERIC_PLUGINS=probe, so
// the program needs no code for it.
//
// The probe waits until the table is filled. Then it acts like a user and measures times. It compares some of
// these times with the time of a plain loop over the same data. It also measures the longest stretch in which
// the graphical thread serves no events. It writes the results as JSON to the file whose path is in
// VYRE_PROBE, and then ends the program. Everything runs on the graphical thread.
//
// VYRE_PROBE_PARTS lists the parts to measure after the start: filter sort cells columns search first-search
// refresh listing windows stop. VYRE_PROBE_START is the monotonic time at which the program was started.

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QEvent>
#include <QFile>
#include <QFontMetrics>
#include <QGenericPlugin>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QMainWindow>
#include <QMap>
#include <QMouseEvent>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QThread>
#include <QTimer>

#include <regex.h>
#include <time.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <vector>

#include "packagetable/PackageTable.h"

namespace {

double clockTime(clockid_t clock)
{
    timespec now;
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double monotonic()
{
    return clockTime(CLOCK_MONOTONIC);
}

// Returns the CPU time of the calling thread, in seconds. Other programs hardly affect CPU times.
double computed()
{
    return clockTime(CLOCK_THREAD_CPUTIME_ID);
}

// Returns the CPU time of the whole process, in seconds.
double computedByAll()
{
    return clockTime(CLOCK_PROCESS_CPUTIME_ID);
}

// Returns a value from /proc/self/status, in KiB.
qint64 memory(const char* name)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> lines = status.readAll().split('\n');
        for (const QByteArray& line : lines) {
            if (line.startsWith(name)) {
                return line.mid(static_cast<int>(qstrlen(name)) + 1)
                    .simplified()
                    .split(' ')
                    .first()
                    .toLongLong();
            }
        }
    }
    return -1;
}

} // namespace

class Probe : public QObject
{
    Q_OBJECT

public:
    explicit Probe(QObject* parent)
        : QObject(parent), view(nullptr), proxy(nullptr), edit(nullptr), button(nullptr), modeCombo(nullptr),
          painted(false), windowPainted(0), windowIsPainting(false), dialogPainted(0), watched("start"),
          lastBeat(0), lastComputed(0)
    {
        QCoreApplication::instance()->installEventFilter(this);
        QTimer::singleShot(0, this, SLOT(begin()));
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            painted = painted || (view != nullptr && object == view->viewport());
            auto* window = qobject_cast<QWidget*>(object);
            if (windowPainted == 0 && qobject_cast<QMainWindow*>(window) != nullptr) {
                windowIsPainting = true;
            }
            if (windowIsPainting) {
                windowPainted = monotonic(); // the last paint event of this series counts
                rest();
            }
            if (dialogPainted == 0 && window != nullptr && qobject_cast<QDialog*>(window) != nullptr) {
                dialogPainted = monotonic();
            }
        } else {
            windowIsPainting = false;
        }
        return false;
    }

private Q_SLOTS:
    void begin()
    {
        connect(&heart, SIGNAL(timeout()), this, SLOT(beat()));
        heart.setTimerType(Qt::PreciseTimer);
        heart.start(1);
        waitForTable();
    }

    // Runs in each round of the event loop, and also of nested event loops.
    void beat()
    {
        if (windowPainted != 0) {
            noteStretch();
        }
    }

    void waitForTable()
    {
        const QWidgetList all = QApplication::allWidgets();
        for (QWidget* widget : all) {
            if (qstrcmp(widget->metaObject()->className(), "PackageTable::View") == 0) {
                view = static_cast<QTableView*>(widget);
            }
        }
        if (view == nullptr || !view->isVisible() || !view->isEnabled() || !painted ||
            QThread::currentThread()->loopLevel() > 1 || view->model()->rowCount() == 0) {
            QTimer::singleShot(1, this, SLOT(waitForTable()));
            return;
        }
        noteStretch();
        watched = nullptr;
        const double begun = QByteArray(std::getenv("VYRE_PROBE_START")).toDouble();
        result[QStringLiteral("window")] = windowPainted - begun;
        result[QStringLiteral("start")] = monotonic() - begun;
        result[QStringLiteral("startComputed")] = computedByAll();
        result[QStringLiteral("startMemory")] = memory("VmHWM:");
        proxy = qobject_cast<QSortFilterProxyModel*>(view->model());
        const QList<QWidget*> children = view->window()->findChildren<QWidget*>();
        for (QWidget* widget : children) {
            if (auto* found = qobject_cast<QPushButton*>(widget)) {
                button = found->isDefault() ? found : button;
                buttons[found->text().remove(QLatin1Char('&'))] = found;
            } else if (auto* line = qobject_cast<QLineEdit*>(widget)) {
                edit = line;
            } else if (auto* combo = qobject_cast<QComboBox*>(widget)) {
                modeCombo = combo->itemText(1) == QLatin1String("Search") ? combo : modeCombo;
            }
        }
        QTimer::singleShot(500, this, SLOT(run())); // later, when the program is idle
    }

    void run()
    {
        result[QStringLiteral("rows")] = proxy->sourceModel()->rowCount();
        result[QStringLiteral("listed")] = proxy->rowCount();
        const QList<QByteArray> what = qgetenv("VYRE_PROBE_PARTS").split(' ');
        if (what.contains("filter")) {
            filters();
        }
        if (what.contains("sort")) {
            sorts();
        }
        if (what.contains("cells")) {
            cells();
        }
        if (what.contains("columns")) {
            columns();
        }
        if (what.contains("listing")) {
            listing();
        }
        if (what.contains("windows")) {
            result[QStringLiteral("windows")] = QJsonObject{
                {QStringLiteral("history"), window("history", QStringLiteral("&History"))},
                {QStringLiteral("advisories"), window("advisories", QStringLiteral("&Advisories"))}};
        }
        if (what.contains("refresh")) {
            refresh();
        }
        if (what.contains("stop")) {
            stops();
        }
        if (what.contains("search") || what.contains("first-search")) {
            searches(what.contains("search"));
        }
        QJsonObject longest;
        for (auto i = stretches.constBegin(); i != stretches.constEnd(); ++i) {
            longest[i.key()] = QJsonObject{{QStringLiteral("seconds"), i->seconds},
                                           {QStringLiteral("computed"), i->computed}};
        }
        result[QStringLiteral("stretches")] = longest;
        result[QStringLiteral("endMemory")] = memory("VmHWM:");
        QFile file(QString::fromLocal8Bit(qgetenv("VYRE_PROBE")));
        file.open(QIODevice::WriteOnly);
        file.write(QJsonDocument(result).toJson());
        file.close();
        view->window()->close();
    }

private:
    // The longest elapsed time in which the graphical thread has served no events, and the most CPU time that
    // it has used in such a stretch. Other programs affect only the elapsed time. The two values may come
    // from different stretches.
    struct Stretch
    {
        double seconds = 0;
        double computed = 0;
    };

    // Ends the current stretch without events, and begins the next one.
    void noteStretch()
    {
        if (watched != nullptr && lastBeat != 0) {
            Stretch& stretch = stretches[QLatin1String(watched)];
            stretch.seconds = std::max(stretch.seconds, monotonic() - lastBeat);
            stretch.computed = std::max(stretch.computed, computed() - lastComputed);
        }
        rest();
    }

    void rest()
    {
        lastBeat = monotonic();
        lastComputed = computed();
    }

    // Returns the time from the beginning of the action until the table shows its result. `name` is the name
    // under which the longest stretch without events is noted.
    double timed(const char* name, const std::function<void()>& action)
    {
        QApplication::processEvents();
        painted = false;
        rest();
        watched = name;
        const double start = monotonic();
        action();
        view->viewport()->update(); // forces a paint event, even without a change
        while (!painted) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        const double end = monotonic();
        noteStretch();
        watched = nullptr;
        return end - start;
    }

    double enter(const char* name, const char* expression)
    {
        edit->setText(QLatin1String(expression));
        return timed(name, [this] { button->click(); });
    }

    QVector<QByteArray> joinedTexts() const
    {
        QVector<QByteArray> texts;
        const QAbstractItemModel* model = proxy->sourceModel();
        for (int row = 0; row < model->rowCount(); ++row) {
            QStringList parts;
            for (int column = PackageTable::NameColumn; column < PackageTable::ColumnCount; ++column) {
                const QString part = model->index(row, column).data().toString();
                if (!part.isEmpty()) {
                    parts.append(part);
                }
            }
            texts.append(parts.join(QLatin1Char(' ')).toUtf8());
        }
        return texts;
    }

    void filters()
    {
        static const char* const expressions[] = {
            "amber", "^python3-.*-devel", "noarch [0-9]", "(oak|pine)-m[a-z]*s", "[a-z]+-[a-z]+-libs",
            "a",     "no such text"};
        const QVector<QByteArray> texts = joinedTexts();
        QJsonArray rows;
        for (const char* expression : expressions) {
            QJsonObject row;
            row[QStringLiteral("expression")] = QLatin1String(expression);
            row[QStringLiteral("program")] = enter("filter", expression);
            row[QStringLiteral("listed")] = proxy->rowCount();
            const double start = monotonic();
            regex_t pattern;
            regcomp(&pattern, expression, REG_EXTENDED | REG_NOSUB);
            int found = 0;
            for (const QByteArray& text : texts) {
                found += regexec(&pattern, text.constData(), 0, nullptr, 0) == 0 ? 1 : 0;
            }
            regfree(&pattern);
            row[QStringLiteral("loop")] = monotonic() - start;
            row[QStringLiteral("found")] = found;
            rows.append(row);
        }
        result[QStringLiteral("filters")] = rows;
        enter("filter", "");
    }

    void click(int section)
    {
        QHeaderView* header = view->horizontalHeader();
        header->setOffsetToSectionPosition(0);
        const QPointF place(header->sectionViewportPosition(section) + 20, header->height() / 2.0);
        for (QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            QMouseEvent event(type, place, header->viewport()->mapToGlobal(place.toPoint()), Qt::LeftButton,
                              type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                              Qt::NoModifier);
            QApplication::sendEvent(header->viewport(), &event);
        }
    }

    template <typename Key> double stableSort(int column, Key (*key)(const QVariant&), int role) const
    {
        const QAbstractItemModel* model = proxy->sourceModel();
        std::vector<std::pair<Key, QString>> keys;
        for (int row = 0; row < model->rowCount(); ++row) {
            keys.emplace_back(key(model->index(row, column).data(role)),
                              model->index(row, PackageTable::NameColumn).data().toString());
        }
        std::vector<int> order(keys.size());
        for (size_t i = 0; i < order.size(); ++i) {
            order[i] = static_cast<int>(i);
        }
        const double start = monotonic();
        std::stable_sort(order.begin(), order.end(), [&keys](int left, int right) {
            return keys[static_cast<size_t>(left)] <
                   keys[static_cast<size_t>(right)]; // equal cells are sorted by name
        });
        return monotonic() - start;
    }

    // Returns whether Qt::UserRole contains a number in this column. In other columns, Qt::UserRole contains
    // the record.
    bool isNumber(int column) const
    {
        return proxy->sourceModel()->index(0, column).data(Qt::UserRole).canConvert<int>();
    }

    void sorts()
    {
        QJsonArray rows;
        using namespace PackageTable;
        QVector<int> clicked;
        for (int column = NameColumn; column < ColumnCount; ++column) {
            clicked << column;
        }
        // A second click on a heading reverses the order.
        clicked << KindColumn << StateColumn << NameColumn << NameColumn << SizeColumn << SizeColumn;
        for (const int column : qAsConst(clicked)) {
            QJsonObject row;
            row[QStringLiteral("column")] = column;
            row[QStringLiteral("program")] = timed("sort", [this, column] { click(column); });
            row[QStringLiteral("loop")] =
                isNumber(column)
                    ? stableSort<int>(
                          column, [](const QVariant& value) { return value.toInt(); }, Qt::UserRole)
                    : stableSort<QString>(
                          column, [](const QVariant& value) { return value.toString(); }, Qt::DisplayRole);
            rows.append(row);
        }
        result[QStringLiteral("sorts")] = rows;
    }

    // Measures the time to read the data of all cells, as painting and sorting do. For comparison, measures
    // the time to copy a string the same number of times.
    void cells()
    {
        const int count = proxy->rowCount();
        QJsonArray found;
        for (int role : {Qt::DisplayRole, Qt::DecorationRole, Qt::ForegroundRole, Qt::UserRole}) {
            const auto measure = [count](const std::function<QVariant(int, int)>& cell) {
                double best = 1e9;
                for (int run = 0; run < 15; ++run) {
                    const double start = computed();
                    int valid = 0;
                    for (int row = 0; row < count; ++row) {
                        for (int column = 0; column < PackageTable::ColumnCount; ++column) {
                            valid += cell(row, column).isValid() ? 1 : 0;
                        }
                    }
                    best = std::min(best, valid >= 0 ? computed() - start : 0);
                }
                return best;
            };
            const QVector<QString> texts(count, QStringLiteral("text"));
            found.append(QJsonObject{{QStringLiteral("role"), role},
                                     {QStringLiteral("program"), measure([this, role](int row, int column) {
                                          return proxy->index(row, column).data(role);
                                      })},
                                     {QStringLiteral("loop"),
                                      measure([&texts](int row, int) { return QVariant(texts.at(row)); })}});
        }
        result[QStringLiteral("cells")] = found;
    }

    void columns()
    {
        const double program =
            timed("columns", [this] { QMetaObject::invokeMethod(view, "resizeColumnsToContents"); });
        const QAbstractItemModel* model = proxy->sourceModel();
        const QFontMetrics metrics(view->font());
        const double start = monotonic();
        int widest = 0;
        for (int column = PackageTable::NameColumn; column < PackageTable::ColumnCount; ++column) {
            for (int row = 0; row < model->rowCount(); ++row) {
                widest =
                    std::max(widest, metrics.size(0, model->index(row, column).data().toString()).width());
            }
        }
        result[QStringLiteral("columns")] = QJsonObject{{QStringLiteral("program"), program},
                                                        {QStringLiteral("loop"), monotonic() - start},
                                                        {QStringLiteral("widest"), widest}};
    }

    // The first expression makes the program read the texts. The other expressions search the texts that were
    // read. The last expressions are slow: their matches have no fixed text in common, or the texts contain
    // the beginning of a match thousands of times.
    void searches(bool again)
    {
        timed("search", [this] { modeCombo->setCurrentIndex(0); });
        enter("search", "");
        QJsonArray rows;
        for (const char* expression :
             {"quill-otter.html", "documentation server", "^/usr/share/doc/python3-amber",
              "cobalt.* >= 0\\.1", "zzzz", "a", "e.*e.*zz", "[a-z]+-[a-z]+-[a-z]+[0-9]{9}", "(a|e|i|o|u){6}",
              "([a-z]+)-\\1-\\1", "(.*)(.*)(.*)[0-9]q"}) {
            if (rows.isEmpty()) {
                edit->setText(QLatin1String(expression));
                result[QStringLiteral("memoryBefore")] = memory("VmRSS:");
            }
            const double before = computedByAll();
            const double begun =
                rows.isEmpty() ? timed("search", [this] { modeCombo->setCurrentIndex(1); }) : 0;
            QJsonObject row;
            row[QStringLiteral("expression")] = QLatin1String(expression);
            const char* const name = rows.isEmpty() ? "search" : "search again";
            row[QStringLiteral("program")] = begun + enter(name, expression);
            row[QStringLiteral("computed")] = computedByAll() - before;
            row[QStringLiteral("listed")] = proxy->rowCount();
            if (rows.isEmpty()) {
                result[QStringLiteral("memoryAfter")] = memory("VmRSS:");
                result[QStringLiteral("searchMemory")] = memory("VmHWM:");
            }
            rows.append(row);
            if (!again) {
                break;
            }
        }
        result[QStringLiteral("searches")] = rows;
        enter("end of search", "");
        timed("end of search", [this] { modeCombo->setCurrentIndex(0); });
    }

    void refresh()
    {
        QJsonArray rows;
        for (int run = 0; run < 3; ++run) {
            const double before = computedByAll();
            const double seconds =
                timed("refresh", [this] { buttons.value(QStringLiteral("Refresh"))->click(); });
            rows.append(QJsonObject{{QStringLiteral("program"), seconds},
                                    {QStringLiteral("computed"), computedByAll() - before}});
        }
        result[QStringLiteral("refreshes")] = rows;
    }

    // Presses "Refresh", and two seconds later "Stop". A repository must be so slow that the refresh has not
    // ended by then.
    void stops()
    {
        QPushButton* const stop = buttons.value(QStringLiteral("Stop"));
        QPushButton* const refresh = buttons.value(QStringLiteral("Refresh"));
        QJsonArray rows;
        for (int run = 0; run < 3; ++run) {
            double stopped = 0;
            double before = 0;
            const double start = monotonic();
            QTimer user;
            connect(&user, &QTimer::timeout, this, [&] {
                if (stopped == 0 && monotonic() - start > 2 && stop->isVisible() && stop->isEnabled()) {
                    stopped = monotonic();
                    before = computedByAll();
                    stop->click();
                }
            });
            user.start(1);
            timed("stop", [refresh] { refresh->click(); });
            const double seconds = monotonic() - stopped;
            if (stopped == 0 || !view->isEnabled() || !refresh->isEnabled()) {
                qFatal("the refresh was not stopped");
            }
            rows.append(QJsonObject{{QStringLiteral("program"), seconds},
                                    {QStringLiteral("computed"), computedByAll() - before},
                                    {QStringLiteral("rows"), proxy->sourceModel()->rowCount()}});
        }
        result[QStringLiteral("stops")] = rows;
    }

    // Marks all updates and presses "Apply Actions". Closes the listing a second after it was painted.
    void listing()
    {
        timed("mark", [this] { buttons.value(QStringLiteral("Set Update of Listed"))->click(); });
        dialogPainted = 0;
        QTimer answer;
        connect(&answer, &QTimer::timeout, this, [this] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (dialog != nullptr && dialogPainted != 0 && monotonic() - dialogPainted > 1) {
                dialog->reject();
            }
        });
        answer.start(10);
        const double start = monotonic();
        const double before = computedByAll();
        timed("listing", [this] { buttons.value(QStringLiteral("Apply Actions"))->click(); });
        result[QStringLiteral("listing")] =
            QJsonObject{{QStringLiteral("start"), start},
                        {QStringLiteral("computed"), computedByAll() - before},
                        {QStringLiteral("dialog"), dialogPainted}};
        timed("mark", [this] { buttons.value(QStringLiteral("Clear Actions"))->click(); });
    }

    // Opens a window from the menu, and closes it a second after it was painted.
    QJsonObject window(const char* name, const QString& text)
    {
        QAction* wanted = nullptr;
        const QList<QAction*> actions = view->window()->findChildren<QAction*>();
        for (QAction* action : actions) {
            if (action->text() == text) {
                wanted = action;
            }
        }
        if (wanted == nullptr) {
            qFatal("the menu lacks %s", qPrintable(text));
        }
        dialogPainted = 0;
        int rows = 0;
        QTimer answer;
        connect(&answer, &QTimer::timeout, this, [this, &rows] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (dialog != nullptr && dialogPainted != 0 && monotonic() - dialogPainted > 1) {
                const QList<QAbstractItemView*> lists = dialog->findChildren<QAbstractItemView*>();
                for (const QAbstractItemView* list : lists) {
                    rows = qMax(rows, list->model() != nullptr ? list->model()->rowCount() : 0);
                }
                dialog->reject();
            }
        });
        answer.start(10);
        const double start = monotonic();
        const double before = computedByAll();
        timed(name, [wanted] { wanted->trigger(); });
        return {{QStringLiteral("painted"), dialogPainted - start},
                {QStringLiteral("computed"), computedByAll() - before},
                {QStringLiteral("rows"), rows}};
    }

    QTableView* view;
    QSortFilterProxyModel* proxy;
    QLineEdit* edit;
    QPushButton* button;
    QComboBox* modeCombo;
    bool painted;         // whether the table has been painted since the last action
    double windowPainted; // the time when the main window was painted for the first time
    bool windowIsPainting;
    double dialogPainted; // the time when a dialog was painted for the first time
    QTimer heart;
    const char* watched; // the name of the current action; nullptr while the probe itself computes
    double lastBeat;
    double lastComputed;
    QMap<QString, Stretch> stretches;
    QMap<QString, QPushButton*> buttons;
    QJsonObject result;
};

class ProbePlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "Probe.json")

public:
    // Qt calls this function before the application object is complete. The caller deletes the Probe.
    QObject* create(const QString&, const QString&) override { return new Probe(nullptr); }
};

#include "Probe.moc"

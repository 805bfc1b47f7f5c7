// SPDX-License-Identifier: GPL-2.0-or-later

// A Qt plug-in that measures the program from inside. Qt loads it because of QT_QPA_GENERIC_PLUGINS=probe, so
// the program needs no code for it.
//
// The probe waits until the table is filled. Then it acts like a user and measures times. It compares each
// time with the time of a plain loop over the same data. It writes the results as JSON to the file whose path
// is in VYRE_PROBE, and then ends the program. Everything runs on the graphical thread.

#include <QApplication>
#include <QComboBox>
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

double monotonic()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// Returns the CPU time of the calling thread, in seconds. Other programs do not affect it.
double computed()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
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
          painted(false), beats(8, 0), longestBeat(0), lastBeat(0), lastLevel(0)
    {
        qApp->installEventFilter(this);
        connect(&heart, SIGNAL(timeout()), this, SLOT(beat()));
        heart.setTimerType(Qt::PreciseTimer);
        heart.start(1);
        QTimer::singleShot(0, this, SLOT(waitForTable()));
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (view != nullptr && event->type() == QEvent::Paint && object == view->viewport()) {
            painted = true;
        }
        return false;
    }

private Q_SLOTS:
    // Records the times between two rounds of the event loop while the graphical thread waits for a worker.
    // During a wait, the event loop is nested.
    void beat()
    {
        const double now = monotonic();
        const int level = QThread::currentThread()->loopLevel();
        if (level > 1 && lastLevel > 1) {
            const double gap = now - lastBeat;
            longestBeat = std::max(longestBeat, gap);
            static const double bounds[] = {0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5};
            ++beats[static_cast<size_t>(std::upper_bound(bounds, bounds + 7, gap) - bounds)];
        }
        lastBeat = now;
        lastLevel = level;
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
        result[QStringLiteral("start")] =
            monotonic() - QByteArray(std::getenv("VYRE_PROBE_START")).toDouble();
        result[QStringLiteral("startMemory")] = memory("VmHWM:");
        proxy = qobject_cast<QSortFilterProxyModel*>(view->model());
        const QList<QWidget*> children = view->window()->findChildren<QWidget*>();
        for (QWidget* widget : children) {
            if (auto* found = qobject_cast<QPushButton*>(widget)) {
                button = found->isDefault() ? found : button;
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
        const QByteArray what = qgetenv("VYRE_PROBE_PARTS");
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
        if (what.contains("search")) {
            searches();
        }
        QJsonArray histogram;
        for (int count : beats) {
            histogram.append(count);
        }
        result[QStringLiteral("beats")] = histogram;
        result[QStringLiteral("longestBeat")] = longestBeat;
        result[QStringLiteral("endMemory")] = memory("VmHWM:");
        QFile file(QString::fromLocal8Bit(qgetenv("VYRE_PROBE")));
        file.open(QIODevice::WriteOnly);
        file.write(QJsonDocument(result).toJson());
        file.close();
        view->window()->close();
    }

private:
    double timed(const std::function<void()>& action)
    {
        QApplication::processEvents();
        painted = false;
        const double start = monotonic();
        action();
        view->viewport()->update(); // forces a paint event, even without a change
        while (!painted) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return monotonic() - start;
    }

    double enter(const char* expression)
    {
        edit->setText(QLatin1String(expression));
        return timed([this] { button->click(); });
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
            row[QStringLiteral("program")] = enter(expression);
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
        enter("");
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

    // In other columns, Qt::UserRole contains the record.
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
            row[QStringLiteral("program")] = timed([this, column] { click(column); });
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
        const double program = timed([this] { QMetaObject::invokeMethod(view, "resizeColumnsToContents"); });
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

    void searches()
    {
        enter("");
        timed([this] { modeCombo->setCurrentIndex(1); });
        QJsonArray rows;
        for (const char* expression : {"quill-otter.html", "documentation server",
                                       "^/usr/share/doc/python3-amber", "cobalt.* >= 1\\.0", "zzzz"}) {
            QJsonObject row;
            row[QStringLiteral("expression")] = QLatin1String(expression);
            row[QStringLiteral("program")] = enter(expression);
            row[QStringLiteral("listed")] = proxy->rowCount();
            rows.append(row);
        }
        result[QStringLiteral("searches")] = rows;
        result[QStringLiteral("searchMemory")] = memory("VmHWM:");
        modeCombo->setCurrentIndex(0);
    }

    QTableView* view;
    QSortFilterProxyModel* proxy;
    QLineEdit* edit;
    QPushButton* button;
    QComboBox* modeCombo;
    bool painted;
    QTimer heart;
    std::vector<int> beats;
    double longestBeat;
    double lastBeat;
    int lastLevel;
    QJsonObject result;
};

class ProbePlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "Probe.json")

public:
    // Qt creates plug-ins before the application object is complete, so the probe starts in the event loop.
    QObject* create(const QString&, const QString&) override
    {
        auto* starter = new QObject; // the application deletes this object
        QTimer::singleShot(0, starter, [starter] { new Probe(starter); });
        return starter;
    }
};

#include "Probe.moc"

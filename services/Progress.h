// Progress of a back-end operation on two bars: the total bar for the whole of it, the item bar for the step
// now running.
//
// Object is the side of the operation: it lives on the thread that runs it, does the arithmetic and limits
// how often it reports. Minion is the side of the bars: it lives on the graphical thread and sets them. The
// two are joined by queued signals, so the operation never waits. User gives one operation an Object for its
// length.

#ifndef SERVICES_PROGRESS_H
#define SERVICES_PROGRESS_H

#include <functional>
#include <memory>

#include <QElapsedTimer>
#include <QLabel>
#include <QMutex>
#include <QObject>
#include <QPoint>
#include <QString>

class GeneralTip;
class HProgressBar;

// The unit of all progress counters.
typedef quint64 Steps;

namespace Progress {

// One of the downloads that run side by side.
struct ThreadState
{
    enum : quint32 { NotStarted = 0, Retrying = 1, InProgress = 2, Complete = 3 };

    QString name;
    quint64 value = 0; // weighted bytes done
    quint64 max = 1;   // expected size; 1: unknown
    quint32 state = NotStarted;
};

// All of them; a value type.
class ThreadsState
{
public:
    ThreadsState();
    // None of them started, all of unknown size.
    explicit ThreadsState(quint32 count);
    ThreadsState(const ThreadsState& other);
    ThreadsState& operator=(const ThreadsState& other);

    quint32 count() const { return threadCount; }
    // The index is not checked.
    ThreadState& operator[](quint32 index) { return threads[index]; }
    const ThreadState& operator[](quint32 index) const { return threads[index]; }

private:
    quint32 threadCount;
    std::unique_ptr<ThreadState[]> threads;
};

// What an Object and its Minion share: the downloads as they are now. One report of them is on its way at
// most, whatever their number; what changes meanwhile the Minion fetches when the report has arrived.
struct Downloads
{
    QMutex mutex; // guards the rest
    ThreadsState state;
    bool reported = false; // and the report has not arrived yet
    bool changed = false;  // since that report
};

// Graphical thread; made by its Object and deleted there after the last signal has run. Owns nothing.
class Minion : public QObject
{
    Q_OBJECT

public:
    Minion(HProgressBar* totalBar, HProgressBar* itemBar, std::shared_ptr<Downloads> shared);

public Q_SLOTS:
    void startTotal(QString text, Steps max);
    void changeTotal(Steps value, Steps max);
    void startItem(QString text, Steps total, Steps itemMax);
    void changeItemActivity(QString text);
    void changeItemActs(Steps total);
    void changeItemActSteps(Steps total, Steps value, Steps max);
    void setItemValue(Steps total, Steps value);
    void endItemActs(Steps total);
    void setTotalValue(Steps total);
    void updateThreadsState(const ThreadsState& state);
    void reset();
    // Shows the state of the downloads, if there are any. The position is one of the item bar.
    void itemProgressToolTip(const QPoint& pos);

private:
    static void setupTip(GeneralTip* tip, void* minion);
    static QLabel* makeLabel(const QString& text, const QColor& colour);

    // A bar counts in int, where steps are often bytes: all numbers of a bar lose as many of their low bits
    // as make its maximum fit.
    class Scale
    {
    public:
        explicit Scale(HProgressBar* scaledBar);
        void setMaximum(Steps max);
        void setValue(Steps value);

    private:
        HProgressBar* bar;
        int shift;
    };

    HProgressBar* totalBar;
    HProgressBar* itemBar;
    Scale totalScale;
    Scale itemScale;
    ThreadsState threadsState;
    std::shared_ptr<Downloads> downloads;
};

// Lives on the thread that runs the operation and is used from no other.
//
// The total bar runs from 0 to the maximum of startTotal(). Every item covers the next stretch of it, and has
// a range of its own on the item bar. A stretch may be divided into acts; an item then covers some of them.
class Object : public QObject
{
    Q_OBJECT

public:
    // The bars are not owned and must outlive the operation.
    Object(HProgressBar* totalBar, HProgressBar* itemBar);
    // Leaves the bars idle.
    ~Object() override;

    void startTotal(QString text, Steps max);
    void changeTotal(Steps max);

    // Covers the next "steps" of the total. "itemMax" is the item's own range; with 0 any value fills it.
    void startItem(QString text, Steps steps, Steps itemMax);
    void changeItemActivity(QString text);

    // Divides the next "steps" of the total evenly among "acts".
    void setupItemActs(Steps steps, Steps acts);
    void changeItemActs(Steps acts);
    // An item that covers the acts from the last one reached up to number "uptoAct".
    void startItemAct(QString text, Steps itemMax, Steps uptoAct);
    void changeItemActSteps(Steps value, Steps max);
    // Goes to the end of all acts.
    void endItemActs();

    // An item that stands for parallel downloads; its value is the sum of theirs. An index that is not below
    // "threads" is ignored by the functions that follow.
    void setupItemActsThreads(QString text, Steps actsFrom, Steps uptoAct, unsigned int threads,
                              Steps itemMax);
    void startItemActThread(QString name, unsigned int index, Steps max);
    void setItemActsThreadValue(unsigned int index, Steps value);
    void endItemActThread(unsigned int index);
    void retryItemActThread(unsigned int index);
    void endItemActsThreads();

    // Values that come within 10 ms of the last report are kept, but not reported.
    void setItemValue(Steps value);
    // Values that come within 10 ms of the last report are dropped, except for the first that is the maximum.
    void setTotalValue(Steps value);
    void reset();

Q_SIGNALS:
    void startTotalSig(QString text, Steps max);
    void changeTotalSig(Steps value, Steps max);
    void startItemSig(QString text, Steps total, Steps itemMax);
    void changeItemActivitySig(QString text);
    void changeItemActsSig(Steps total);
    void changeItemActStepsSig(Steps value, Steps max);
    void changeItemActStepsSig(Steps total, Steps value, Steps max);
    void setItemValueSig(Steps total, Steps value);
    void endItemActsSig(Steps total);
    void setTotalValueSig(Steps total);
    void updateThreadsStateSig(const ThreadsState& state);
    void resetSig();

private:
    // The share of the item's stretch of the total that a value of the item stands for.
    Steps itemShare(Steps value) const;
    // Changes the downloads, and reports them unless a report is on its way.
    void changeThreads(const std::function<void(ThreadsState& state)>& change);
    // How far into the stretch of all acts the given number of them reaches.
    Steps actsShare(Steps acts) const;
    // Keeps the display alive during an operation that runs in the graphical thread itself.
    void updateGui();

    Minion* minion;
    bool guiInSameThread;
    QElapsedTimer itemTimer;
    QElapsedTimer guiTimer;
    Steps totalValue;
    Steps totalMax;
    Steps itemStart;
    Steps itemEnd;
    Steps itemValue;
    Steps itemMax;
    Steps actsSteps;
    Steps actsEnd;
    Steps actsCount;
    Steps actsDone;
    Steps threadsActsFrom;
    Steps threadsActsCount;
    std::shared_ptr<Downloads> downloads; // changed by this thread only
};

// Gives the slot an Object for the length of a scope; leaves it null.
class User
{
public:
    User(Object*& objectSlot, HProgressBar* totalBar, HProgressBar* itemBar);
    ~User();
    User(const User&) = delete;
    User& operator=(const User&) = delete;

private:
    Object*& slot;
};

} // namespace Progress

#endif

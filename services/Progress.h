// SPDX-License-Identifier: GPL-2.0-or-later

// Progress of a back-end operation on two bars: the total bar shows the whole operation, the item bar its
// current step.
//
// Object is the operation's side. It lives on the thread that runs the operation, does the arithmetic and
// limits how often it reports. Minion is the bars' side: it lives on the graphical thread and sets the bars.
// Queued signals connect the two, so the operation never waits. User provides an Object for the length of one
// operation.

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

// One of several parallel downloads.
struct ThreadState
{
    enum : quint32 { NotStarted = 0, Retrying = 1, InProgress = 2, Complete = 3 };

    QString name;
    quint64 value = 0; // weighted bytes done
    quint64 max = 1;   // expected size; 1: unknown
    quint32 state = NotStarted;
};

// The states of all parallel downloads; a value type.
class ThreadsState
{
public:
    ThreadsState();
    // None of them is started, all sizes are unknown.
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

// The current state of the downloads, which an Object and its Minion share. At most one report is on its way
// to the Minion. When it arrives, the Minion fetches the changes that came meanwhile.
struct Downloads
{
    QMutex mutex; // guards the other members
    ThreadsState state;
    bool reported = false; // a report is on its way
    bool changed = false;  // the state has changed since that report
};

// Graphical thread. Its Object makes it; it is deleted on the graphical thread after its last slot has run.
// Owns nothing.
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
    // Shows the state of the downloads, if any. The position is in the item bar's coordinates.
    void itemProgressToolTip(const QPoint& pos);

private:
    static void setupTip(GeneralTip* tip, void* minion);
    static QLabel* makeLabel(const QString& text, const QColor& colour);

    // A bar counts in int, but steps are often bytes and may exceed its range. All numbers of a bar are
    // shifted right until its maximum fits.
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

// Lives on the thread that runs the operation, which alone uses it.
//
// The total bar runs from 0 to the maximum of startTotal(). Each item covers the next stretch of the total,
// and has its own range on the item bar. A stretch may be divided into acts. Each item then covers some of
// the acts.
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

    // Covers the next "steps" of the total. "itemMax" is the item's own range; with 0, any value fills it.
    void startItem(QString text, Steps steps, Steps itemMax);
    void changeItemActivity(QString text);

    // Divides the next "steps" of the total evenly among "acts".
    void setupItemActs(Steps steps, Steps acts);
    void changeItemActs(Steps acts);
    // Starts an item that covers the acts from the last one reached up to number "uptoAct".
    void startItemAct(QString text, Steps itemMax, Steps uptoAct);
    void changeItemActSteps(Steps value, Steps max);
    // Goes to the end of all acts.
    void endItemActs();

    // Starts an item for parallel downloads. Its value is the sum of their values. The functions below ignore
    // an index that is not less than "threads".
    void setupItemActsThreads(QString text, Steps actsFrom, Steps uptoAct, unsigned int threads,
                              Steps itemMax);
    void startItemActThread(QString name, unsigned int index, Steps max);
    void setItemActsThreadValue(unsigned int index, Steps value);
    void endItemActThread(unsigned int index);
    void retryItemActThread(unsigned int index);
    void endItemActsThreads();

    // Values that come within 10 ms of the last report are stored, but not reported.
    void setItemValue(Steps value);
    // Values that come within 10 ms of the last report are dropped, except the first one that equals the
    // maximum.
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
    // The part of the total that corresponds to a value of the item.
    Steps itemShare(Steps value) const;
    // Changes the downloads, and reports them unless a report is already on its way.
    void changeThreads(const std::function<void(ThreadsState& state)>& change);
    // The part of the total that this number of acts covers.
    Steps actsShare(Steps acts) const;
    // Keeps the display responsive while the graphical thread itself runs an operation.
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
    std::shared_ptr<Downloads> downloads; // only this thread changes it
};

// Sets the slot to an Object for the length of a scope, and resets it to null at the end.
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

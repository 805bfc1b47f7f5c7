// SPDX-License-Identifier: GPL-2.0-or-later

// Shows the progress of a back-end operation on two bars. The total bar shows the whole operation, and the
// item bar shows the current step.
//
// An Object belongs to the operation. It lives on the thread that runs the operation, calculates the values
// and limits the number of reports. A Minion belongs to the bars. It lives on the graphical thread and sets
// the bars. Queued signals connect the two objects, so the operation never waits. The class User creates an
// Object for one operation.

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
    quint64 value = 0; // the weight of the loaded bytes
    quint64 max = 1;   // the expected size; 1 if it is unknown
    quint32 state = NotStarted;
};

// The states of all parallel downloads. A ThreadsState can be copied.
class ThreadsState
{
public:
    ThreadsState();
    // Creates the states of `count` downloads that have not started and whose sizes are unknown.
    explicit ThreadsState(quint32 count);
    ThreadsState(const ThreadsState& other);
    ThreadsState& operator=(const ThreadsState& other);

    quint32 count() const { return threadCount; }
    // The caller must make sure that the index is valid.
    ThreadState& operator[](quint32 index) { return threads[index]; }
    const ThreadState& operator[](quint32 index) const { return threads[index]; }

private:
    quint32 threadCount;
    std::unique_ptr<ThreadState[]> threads;
};

// The current state of the downloads, which an Object and its Minion share. At most one report to the Minion
// is pending. When the report arrives, the Minion also fetches later changes.
struct Downloads
{
    QMutex mutex; // guards the other members
    ThreadsState state;
    bool reported = false; // a report to the Minion is pending
    bool changed = false;  // the state has changed since the pending report was sent
};

// The Minion lives on the graphical thread. An Object creates the Minion. The graphical thread deletes the
// Minion after the last slot of the Minion has run. The main window owns the bars.
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
    // Shows the states of the downloads in a tool tip, if any downloads are running. The position is in the
    // item bar's coordinates.
    void itemProgressToolTip(const QPoint& pos);

private:
    static void setupTip(GeneralTip* tip, void* minion);
    static QLabel* makeLabel(const QString& text, const QColor& colour);

    // Converts steps to the int values of a bar. Steps are often bytes and may exceed the range of int.
    // Therefore all values of a bar are shifted right until its maximum fits.
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

// An Object lives on the thread that runs the operation. Only that thread uses the Object.
//
// The total bar runs from 0 to the maximum of startTotal(). Each item covers the next part of the total bar,
// and has its own range on the item bar. A part of the total may be divided into acts. In such a part, each
// item covers some of the acts.
class Object : public QObject
{
    Q_OBJECT

public:
    // The main window owns the bars, which must outlive the operation.
    Object(HProgressBar* totalBar, HProgressBar* itemBar);
    // Resets the bars.
    ~Object() override;

    void startTotal(QString text, Steps max);
    void changeTotal(Steps max);

    // Starts an item that covers the next "steps" of the total bar. "itemMax" is the item's maximum; if it is
    // 0, any value fills the item.
    void startItem(QString text, Steps steps, Steps itemMax);
    void changeItemActivity(QString text);

    // Divides the next "steps" of the total bar into "acts" parts of equal size.
    void setupItemActs(Steps steps, Steps acts);
    void changeItemActs(Steps acts);
    // Starts an item that covers the acts from the end of the previous item up to act "uptoAct".
    void startItemAct(QString text, Steps itemMax, Steps uptoAct);
    void changeItemActSteps(Steps value, Steps max);
    // Sets the total bar to the end of all acts.
    void endItemActs();

    // Starts an item for parallel downloads. The item's value is the sum of the downloads' values. The
    // following functions ignore an index that is not less than "threads".
    void setupItemActsThreads(QString text, Steps actsFrom, Steps uptoAct, unsigned int threads,
                              Steps itemMax);
    void startItemActThread(QString name, unsigned int index, Steps max);
    void setItemActsThreadValue(unsigned int index, Steps value);
    void endItemActThread(unsigned int index);
    // Subtracts the value of a download that begins again. Part of the interface of parallel downloads; no
    // operation needs it now.
    void retryItemActThread(unsigned int index);
    void endItemActsThreads();

    // Stores the value. Reports it only if the last report is more than 9 ms old.
    void setItemValue(Steps value);
    // Ignores a value that arrives less than 9 ms after the last report. But the first value that equals the
    // maximum is always reported.
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
    // Returns the steps of the total bar that correspond to a value of the item.
    Steps itemShare(Steps value) const;
    // Changes the states of the downloads. Sends a report to the Minion, unless an earlier report is still
    // pending.
    void changeThreads(const std::function<void(ThreadsState& state)>& change);
    // Returns the steps of the total bar for this number of acts.
    Steps actsShare(Steps acts) const;
    // If the graphical thread runs the operation, processes events so that the windows are repainted.
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
    std::shared_ptr<Downloads> downloads; // only the operation's thread changes it
};

// While a User exists, `objectSlot` points to a new Progress::Object. After that, `objectSlot` is null.
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

// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/Progress.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <QCoreApplication>
#include <QEventLoop>
#include <QGridLayout>
#include <QMetaType>
#include <QMutexLocker>

#include "services/HProgressBar.h"
#include "widgets/GeneralTip.h"
#include "widgets/PlainLabel.h"

namespace Progress {

namespace {

// The minimum time in milliseconds between two reports, and between two rounds of event processing.
const qint64 minInterval = 9;

const quint32 maxCompleteRows = 20;

const QColor notStartedColour(255, 140, 0, 255);
const QColor retryingColour(255, 140, 0, 255);
const QColor inProgressColour(255, 255, 0, 255);
const QColor completeColour(144, 238, 144, 255);

// Returns whether more than minInterval has passed since the timer was started. Returns false if the timer
// was never started.
bool intervalOver(const QElapsedTimer& timer)
{
    return timer.isValid() && timer.elapsed() > minInterval;
}

Steps subtract(Steps value, Steps part)
{
    return value > part ? value - part : 0;
}

} // namespace

ThreadsState::ThreadsState() : threadCount(0) {}

ThreadsState::ThreadsState(quint32 count)
    : threadCount(count), threads(count != 0 ? new ThreadState[count] : nullptr)
{
}

ThreadsState::ThreadsState(const ThreadsState& other) : ThreadsState(other.threadCount)
{
    std::copy_n(other.threads.get(), threadCount, threads.get());
}

ThreadsState& ThreadsState::operator=(const ThreadsState& other)
{
    if (this != &other) {
        ThreadsState copy(other);
        threadCount = copy.threadCount;
        threads = std::move(copy.threads);
    }
    return *this;
}

Minion::Scale::Scale(HProgressBar* scaledBar) : bar(scaledBar), shift(0) {}

void Minion::Scale::setMaximum(Steps max)
{
    shift = 0;
    while ((max >> shift) > static_cast<Steps>(std::numeric_limits<int>::max())) {
        ++shift;
    }
    bar->setMaximum(static_cast<int>(max >> shift));
}

void Minion::Scale::setValue(Steps value)
{
    const Steps largest = std::numeric_limits<int>::max();
    bar->setValue(static_cast<int>(std::min(value >> shift, largest)));
}

Minion::Minion(HProgressBar* total, HProgressBar* item, std::shared_ptr<Downloads> shared)
    : totalBar(total), itemBar(item), totalScale(total), itemScale(item), downloads(std::move(shared))
{
    connect(itemBar, SIGNAL(toolTip(const QPoint&)), this, SLOT(itemProgressToolTip(const QPoint&)));
}

void Minion::startTotal(QString text, Steps max)
{
    totalBar->setActivity(text);
    totalScale.setMaximum(max);
    totalScale.setValue(0);
    totalBar->setEnabled(true);
    itemBar->reset();
    itemBar->setEnabled(false);
}

void Minion::changeTotal(Steps value, Steps max)
{
    totalScale.setMaximum(max);
    totalScale.setValue(value);
}

void Minion::startItem(QString text, Steps total, Steps itemMax)
{
    totalScale.setValue(total);
    itemBar->setActivity(text);
    itemScale.setMaximum(itemMax);
    itemScale.setValue(0);
    itemBar->setEnabled(true);
}

void Minion::changeItemActivity(QString text)
{
    itemBar->setActivity(text);
}

void Minion::changeItemActs(Steps total)
{
    totalScale.setValue(total);
}

void Minion::changeItemActSteps(Steps total, Steps value, Steps max)
{
    totalScale.setValue(total);
    itemScale.setMaximum(max);
    itemScale.setValue(value);
}

void Minion::setItemValue(Steps total, Steps value)
{
    totalScale.setValue(total);
    itemScale.setValue(value);
}

void Minion::endItemActs(Steps total)
{
    totalScale.setValue(total);
}

void Minion::setTotalValue(Steps total)
{
    totalScale.setValue(total);
}

void Minion::updateThreadsState(const ThreadsState& state)
{
    threadsState = state;
    const QMutexLocker locker(&downloads->mutex);
    downloads->reported = false;
    if (downloads->changed) {
        downloads->changed = false;
        threadsState = downloads->state;
    }
}

void Minion::reset()
{
    for (HProgressBar* bar : {totalBar, itemBar}) {
        bar->setMinimum(0);
    }
    totalScale.setMaximum(1);
    itemScale.setMaximum(1);
    for (HProgressBar* bar : {totalBar, itemBar}) {
        bar->reset();
    }
    for (HProgressBar* bar : {totalBar, itemBar}) {
        bar->setEnabled(false);
    }
}

void Minion::itemProgressToolTip(const QPoint& pos)
{
    if (threadsState.count() != 0) {
        GeneralTip::showTip(itemBar->mapToGlobal(pos), setupTip, this, itemBar, true);
    }
}

void Minion::setupTip(GeneralTip* tip, void* data)
{
    const ThreadsState& threads = static_cast<Minion*>(data)->threadsState;
    QGridLayout* layout = new QGridLayout(tip);
    layout->setContentsMargins(4, 4, 4, 4);

    quint32 notStarted = 0;
    quint32 complete = 0;
    for (quint32 i = 0; i < threads.count(); ++i) {
        if (threads[i].state == ThreadState::NotStarted) {
            ++notStarted;
        } else if (threads[i].state == ThreadState::Complete) {
            ++complete;
        }
    }
    const bool collapsed = complete > maxCompleteRows;

    const auto addRow = [layout](const QString& text, QLabel* state) {
        const int row = layout->count() / 2;
        layout->addWidget(new PlainLabel(text), row, 0);
        layout->addWidget(state, row, 1);
    };
    if (collapsed) {
        addRow(tr("%1 downloads").arg(complete), makeLabel(tr("Complete"), completeColour));
    }
    for (quint32 i = 0; i < threads.count(); ++i) {
        const ThreadState& thread = threads[i];
        switch (thread.state) {
        case ThreadState::Retrying: {
            QLabel* state = makeLabel(tr("Retrying"), retryingColour);
            state->setFrameStyle(QFrame::Box);
            addRow(thread.name, state);
            break;
        }
        case ThreadState::InProgress: {
            QString text = tr("In Progress");
            if (thread.max != 1) {
                const double percent =
                    static_cast<double>(thread.value) / static_cast<double>(thread.max) * 100;
                text = tr("%1 / %2 (%3%)").arg(thread.value).arg(thread.max).arg(percent, 0, 'f', 1);
            }
            addRow(thread.name, makeLabel(text, inProgressColour));
            break;
        }
        case ThreadState::Complete:
            if (!collapsed) {
                QLabel* state = makeLabel(tr("Complete"), completeColour);
                state->setFrameStyle(QFrame::Box);
                addRow(thread.name, state);
            }
            break;
        default:
            break;
        }
    }
    if (notStarted != 0) {
        addRow(tr("%1 downloads").arg(notStarted), makeLabel(tr("Not Started Yet"), notStartedColour));
    }
}

QLabel* Minion::makeLabel(const QString& text, const QColor& colour)
{
    QLabel* label = new PlainLabel(text);
    label->setFrameShape(QFrame::StyledPanel);
    label->setFrameShadow(QFrame::Plain);
    QPalette palette = label->palette();
    palette.setColor(QPalette::Window, colour);
    palette.setColor(QPalette::WindowText, qGray(colour.rgb()) < 124 ? Qt::white : Qt::black);
    label->setPalette(palette);
    label->setAutoFillBackground(true);
    return label;
}

Object::Object(HProgressBar* totalBar, HProgressBar* itemBar)
    : minion(nullptr), guiInSameThread(false), totalValue(0), totalMax(1), itemStart(0), itemEnd(0),
      itemValue(0), itemMax(1), actsSteps(0), actsEnd(0), actsCount(0), actsDone(0), threadsActsFrom(0),
      threadsActsCount(0), downloads(std::make_shared<Downloads>())
{
    static bool registered = false;
    if (!registered) {
        qRegisterMetaType<Steps>("Steps");
        qRegisterMetaType<ThreadsState>("ThreadsState");
        registered = true;
    }

    minion = new Minion(totalBar, itemBar, downloads);
    minion->moveToThread(QCoreApplication::instance()->thread());
    guiInSameThread = minion->thread() == thread();

    connect(this, SIGNAL(startTotalSig(QString, Steps)), minion, SLOT(startTotal(QString, Steps)));
    connect(this, SIGNAL(changeTotalSig(Steps, Steps)), minion, SLOT(changeTotal(Steps, Steps)));
    connect(this, SIGNAL(startItemSig(QString, Steps, Steps)), minion,
            SLOT(startItem(QString, Steps, Steps)));
    connect(this, SIGNAL(changeItemActivitySig(QString)), minion, SLOT(changeItemActivity(QString)));
    connect(this, SIGNAL(changeItemActsSig(Steps)), minion, SLOT(changeItemActs(Steps)));
    connect(this, SIGNAL(changeItemActStepsSig(Steps, Steps, Steps)), minion,
            SLOT(changeItemActSteps(Steps, Steps, Steps)));
    connect(this, SIGNAL(setItemValueSig(Steps, Steps)), minion, SLOT(setItemValue(Steps, Steps)));
    connect(this, SIGNAL(endItemActsSig(Steps)), minion, SLOT(endItemActs(Steps)));
    connect(this, SIGNAL(setTotalValueSig(Steps)), minion, SLOT(setTotalValue(Steps)));
    connect(this, SIGNAL(updateThreadsStateSig(const ThreadsState&)), minion,
            SLOT(updateThreadsState(const ThreadsState&)));
    connect(this, SIGNAL(resetSig()), minion, SLOT(reset()));

    reset();
}

Object::~Object()
{
    reset();
    minion->deleteLater();
}

void Object::startTotal(QString text, Steps max)
{
    totalValue = 0;
    totalMax = max;
    if (guiInSameThread) {
        guiTimer.start();
    }
    Q_EMIT startTotalSig(text, totalMax);
    updateGui();
}

void Object::changeTotal(Steps max)
{
    totalValue = std::min(totalValue, totalMax);
    totalMax = max;
    Q_EMIT changeTotalSig(totalValue, totalMax);
    updateGui();
}

void Object::startItem(QString text, Steps steps, Steps max)
{
    totalValue = itemEnd;
    itemStart = itemEnd;
    itemEnd = itemStart + steps;
    itemValue = 0;
    itemMax = max;
    itemTimer.start();
    Q_EMIT startItemSig(text, totalValue, itemMax);
    updateGui();
}

void Object::changeItemActivity(QString text)
{
    Q_EMIT changeItemActivitySig(text);
    updateGui();
}

void Object::setupItemActs(Steps steps, Steps acts)
{
    actsSteps = steps;
    actsEnd = itemEnd + steps;
    actsCount = acts;
    actsDone = 0;
}

void Object::changeItemActs(Steps acts)
{
    actsCount = acts;
    itemEnd = (actsEnd - actsSteps) + actsShare(actsDone);
    totalValue = itemEnd;
    Q_EMIT changeItemActsSig(totalValue);
    updateGui();
}

void Object::startItemAct(QString text, Steps max, Steps uptoAct)
{
    uptoAct = std::min(uptoAct, actsCount);
    startItem(text, actsShare(uptoAct) - actsShare(actsDone), max);
    actsDone = uptoAct;
}

void Object::changeItemActSteps(Steps value, Steps max)
{
    itemValue = std::min(value, max);
    itemMax = max;
    totalValue = itemStart + itemShare(itemValue);
    itemTimer.start();
    Q_EMIT changeItemActStepsSig(totalValue, itemValue, itemMax);
    updateGui();
}

void Object::endItemActs()
{
    itemStart = actsEnd;
    itemEnd = actsEnd;
    totalValue = actsEnd;
    Q_EMIT endItemActsSig(totalValue);
    updateGui();
}

void Object::setupItemActsThreads(QString text, Steps actsFrom, Steps uptoAct, unsigned int threads,
                                  Steps max)
{
    threadsActsFrom = actsFrom;
    threadsActsCount = actsCount;
    changeThreads([threads](ThreadsState& state) { state = ThreadsState(threads); });
    startItem(text, actsShare(uptoAct - 1) - actsShare(actsDone), max);
    actsDone = uptoAct - 1;
}

void Object::startItemActThread(QString name, unsigned int index, Steps max)
{
    const ThreadsState& threads = downloads->state;
    if (index >= threads.count()) {
        return;
    }
    if (threads.count() == 1) {
        changeItemActivity(name);
    }
    changeThreads([&](ThreadsState& state) {
        state[index].name = name;
        state[index].value = 0;
        state[index].max = max;
        state[index].state = ThreadState::InProgress;
    });
}

void Object::setItemActsThreadValue(unsigned int index, Steps value)
{
    if (index >= downloads->state.count()) {
        return;
    }
    Steps oldValue = 0;
    changeThreads([&](ThreadsState& state) {
        oldValue = state[index].value;
        state[index].value = value;
    });
    // The item's value is limited to itemMax, so the sum can be less than `oldValue`. subtract() then returns
    // 0.
    setItemValue(subtract(itemValue + value, oldValue));
}

void Object::endItemActThread(unsigned int index)
{
    if (index >= downloads->state.count()) {
        return;
    }
    changeThreads([index](ThreadsState& state) { state[index].state = ThreadState::Complete; });
}

void Object::retryItemActThread(unsigned int index)
{
    if (index >= downloads->state.count()) {
        return;
    }
    const ThreadsState& threads = downloads->state;
    setItemValue(subtract(itemValue, threads[index].value));
    changeThreads([index](ThreadsState& state) {
        state[index].state = ThreadState::Retrying;
        state[index].value = 0;
    });
}

void Object::endItemActsThreads()
{
    changeThreads([](ThreadsState& state) { state = ThreadsState(); });
}

void Object::setItemValue(Steps value)
{
    // A value that arrives less than minInterval after the last report is not reported. If this value is the
    // item's final value, the bars show an older value until the next item, endItemActs() or reset().
    itemValue = std::min(value, itemMax);
    totalValue = itemStart + itemShare(itemValue);
    if (intervalOver(itemTimer)) {
        itemTimer.start();
        Q_EMIT setItemValueSig(totalValue, itemValue);
    }
    updateGui();
}

void Object::setTotalValue(Steps value)
{
    value = std::min(value, totalMax);
    if (intervalOver(itemTimer) || (value == totalMax && totalValue != totalMax)) {
        itemTimer.start();
        totalValue = value;
        Q_EMIT setTotalValueSig(totalValue);
        updateGui();
    }
}

void Object::reset()
{
    totalMax = 1;
    itemStart = 0;
    itemEnd = 0;
    itemMax = 1;
    changeThreads([](ThreadsState& state) { state = ThreadsState(); });
    Q_EMIT resetSig();
    updateGui();
}

void Object::changeThreads(const std::function<void(ThreadsState& state)>& change)
{
    {
        const QMutexLocker locker(&downloads->mutex);
        change(downloads->state);
        if (downloads->reported) {
            downloads->changed = true;
            return;
        }
        downloads->reported = true;
    }
    Q_EMIT updateThreadsStateSig(downloads->state);
}

Steps Object::itemShare(Steps value) const
{
    const Steps steps = itemEnd - itemStart;
    return itemMax != 0 ? value * steps / itemMax : steps;
}

Steps Object::actsShare(Steps acts) const
{
    return actsCount != 0 ? acts * actsSteps / actsCount : actsSteps;
}

void Object::updateGui()
{
    if (guiInSameThread && intervalOver(guiTimer)) {
        QEventLoop loop;
        loop.processEvents(QEventLoop::ExcludeUserInputEvents);
        guiTimer.start();
    }
}

User::User(Object*& objectSlot, HProgressBar* totalBar, HProgressBar* itemBar) : slot(objectSlot)
{
    slot = new Object(totalBar, itemBar);
}

User::~User()
{
    delete slot;
    slot = nullptr;
}

} // namespace Progress

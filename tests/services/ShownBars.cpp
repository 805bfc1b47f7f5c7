// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/services/ShownBars.h"

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QTest>
#include <QThread>
#include <QVBoxLayout>

void ShownBars::waitForInterval()
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() <= interval + 1) {
        QThread::yieldCurrentThread();
    }
}

Progress::ThreadsState ShownBars::downloads(const QVariant& argument)
{
    return *static_cast<const Progress::ThreadsState*>(argument.constData());
}

void ShownBars::setState(Progress::Object& progress, unsigned int index, quint32 state)
{
    if (state != Progress::ThreadState::NotStarted) {
        progress.startItemActThread(QString("package-%1").arg(index), index, 20480);
    }
    if (state == Progress::ThreadState::Retrying) {
        progress.retryItemActThread(index);
    } else if (state == Progress::ThreadState::Complete) {
        progress.endItemActThread(index);
    }
}

void ShownBars::hover()
{
    QTest::mouseMove(window.get(), QPoint(1, 1));
    QTest::mouseMove(item, item->rect().center());
}

GeneralTip* ShownBars::currentTip()
{
    for (QWidget* widget : QApplication::allWidgets()) {
        GeneralTip* tip = qobject_cast<GeneralTip*>(widget);
        if (tip != nullptr && tip->isVisible()) {
            return tip;
        }
    }
    return nullptr;
}

QLabel* ShownBars::cell(const GeneralTip* tip, int row, int column)
{
    const QGridLayout* grid = qobject_cast<QGridLayout*>(tip->layout());
    QLayoutItem* found = grid->itemAtPosition(row, column);
    return found != nullptr ? qobject_cast<QLabel*>(found->widget()) : nullptr;
}

QStringList ShownBars::tipRows()
{
    QStringList rows;
    const GeneralTip* tip = currentTip();
    for (int row = 0; tip != nullptr && cell(tip, row, 0) != nullptr; ++row) {
        rows.append(cell(tip, row, 0)->text() + ": " + cell(tip, row, 1)->text());
    }
    return rows;
}

void ShownBars::init()
{
    window = std::make_unique<QWidget>();
    QVBoxLayout* layout = new QVBoxLayout(window.get());
    total = new HProgressBar(window.get());
    item = new HProgressBar(window.get());
    layout->addWidget(total);
    layout->addWidget(item);
    window->resize(400, 100);
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window.get(), 30000));
}

void ShownBars::cleanup()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    window.reset();
    delete currentTip();
}

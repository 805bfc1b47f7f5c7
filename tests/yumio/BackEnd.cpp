// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/yumio/BackEnd.h"

#include <csignal>

#include <QApplication>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QThread>

#include "app/base/Program.h"
#include "services/ScrollableDialogs.h"
#include "widgets/GeneralTip.h"

void QueuedAnswers::answer(QDialog* dialog)
{
    ShownDialog record;
    record.title = dialog->windowTitle();
    if (const auto* box = qobject_cast<QMessageBox*>(dialog)) {
        record.text = box->text();
        record.icon = box->icon();
    } else {
        for (const QLabel* label : dialog->findChildren<QLabel*>()) {
            QString& text = label->objectName() == QLatin1String("notice")    ? record.notice
                            : label->objectName() == QLatin1String("summary") ? record.summary
                                                                              : record.text;
            if (!label->text().isEmpty()) {
                text = label->text();
            }
        }
    }
    const QList<QPushButton*> buttons = dialog->findChildren<QPushButton*>();
    for (const QPushButton* button : buttons) {
        record.buttons.append(button->text());
        if (button->isDefault()) {
            record.defaultButton = button->text();
        }
    }
    shown.append(record);
    const QString next = answers.isEmpty() ? record.buttons.value(0) : answers.takeFirst();
    if (next == QLatin1String("Escape") || next == QLatin1String("Enter")) {
        QTest::keyClick(dialog, next == QLatin1String("Enter") ? Qt::Key_Return : Qt::Key_Escape);
        return;
    }
    const int index = record.buttons.indexOf(next);
    if (index < 0) {
        QTest::qFail(qPrintable("no button " + next), __FILE__, __LINE__);
        dialog->reject();
        return;
    }
    QTest::mouseClick(buttons.at(index), Qt::LeftButton);
}

QList<ShownDialog> QueuedAnswers::take()
{
    QList<ShownDialog> taken;
    taken.swap(shown);
    if (!answers.isEmpty()) {
        QTest::qFail(qPrintable("no dialog needed the answers " + answers.join(' ')), __FILE__, __LINE__);
        answers.clear();
    }
    return taken;
}

QStringList QueuedAnswers::takeTexts(const QString& title)
{
    QStringList texts;
    for (const ShownDialog& each : take()) {
        if (each.title != title) {
            QTest::qFail(qPrintable("a dialog titled " + each.title + ": " + each.text), __FILE__, __LINE__);
        }
        texts.append(each.text);
    }
    return texts;
}

BackEnd::BackEnd() : total(&window), item(&window)
{
    yumIO.setup(&window, &total, &item);
}

namespace {

BackEnd* backEndOf(PyObject* capsule)
{
    return static_cast<BackEnd*>(PyCapsule_GetPointer(capsule, nullptr));
}

// Runs the function on the graphical thread after all earlier events. Waits for its result, and returns the
// lines as a Python list.
template <typename Function> PyObject* texts(const Function& function)
{
    QStringList lines;
    if (QThread::currentThread() == qApp->thread()) {
        lines = function();
    } else {
        QMetaObject::invokeMethod(
            qApp, [&] { lines = function(); }, Qt::BlockingQueuedConnection);
    }
    PyObject* list = PyList_New(0);
    for (const QString& line : qAsConst(lines)) {
        const PyRef text(PyUnicode_FromString(line.toUtf8().constData()));
        PyList_Append(list, text.get());
    }
    return list;
}

PyObject* look(PyObject* self, PyObject*)
{
    return texts([self] { return backEndOf(self)->bars(); });
}

PyObject* tip(PyObject* self, PyObject*)
{
    return texts([self] { return backEndOf(self)->tip(); });
}

PyObject* counted(PyObject* self, PyObject*)
{
    return texts([self] { return QStringList{QString::number(backEndOf(self)->yumIO.count())}; });
}

PyObject* captured(PyObject* self, PyObject*)
{
    return texts([self] {
        const YumIOProbe& yumIO = backEndOf(self)->yumIO;
        return QStringList{yumIO.stdoutCapturedPending, yumIO.stderrCapturedPending};
    });
}

PyObject* state(PyObject* self, PyObject*)
{
    const YumIOProbe& yumIO = backEndOf(self)->yumIO;
    const QHash<QString, qint64> members{
        {"phase", yumIO.phase},
        {"txListed", yumIO.transaction.txListed},
        {"txApplied", yumIO.transaction.txApplied},
        {"cachedSize", static_cast<qint64>(yumIO.transaction.cachedSize)},
        {"downloadSize", static_cast<qint64>(yumIO.transaction.downloadSize)},
        {"downloadWeight", static_cast<qint64>(yumIO.transaction.downloadWeight)},
        {"rpmWeight", static_cast<qint64>(yumIO.transaction.rpmWeight)},
        {"downloadSteps", yumIO.transaction.downloadSteps},
        {"actCounter", static_cast<qint64>(yumIO.transaction.actCounter)},
        {"testRun", yumIO.transaction.testRun},
        {"lastTsDone", yumIO.transaction.lastTsDone},
        {"lastAction", yumIO.transaction.lastAction},
        {"remoteWeight", static_cast<qint64>(yumIO.transaction.remoteWeight)},
        {"remoteCount", yumIO.transaction.remoteCount},
        {"downloading", yumIO.transaction.downloading},
        {"threadCount", yumIO.transaction.threadCount},
        {"threadsMax", static_cast<qint64>(yumIO.transaction.threadsMax)},
        {"nextSlot", yumIO.transaction.nextSlot},
        {"payloadSlots", yumIO.transaction.payloadSlots.count()},
    };
    PyObject* dictionary = PyDict_New();
    for (auto i = members.constBegin(); i != members.constEnd(); ++i) {
        const PyRef number(PyLong_FromLongLong(i.value()));
        PyDict_SetItemString(dictionary, i.key().toUtf8().constData(), number.get());
    }
    const PyRef text(PyUnicode_FromString(yumIO.transaction.txText.toUtf8().constData()));
    PyDict_SetItemString(dictionary, "txText", text.get());
    return dictionary;
}

PyMethodDef functions[] = {
    {"look", look, METH_NOARGS, nullptr},         {"tip", tip, METH_NOARGS, nullptr},
    {"captured", captured, METH_NOARGS, nullptr}, {"counted", counted, METH_NOARGS, nullptr},
    {"state", state, METH_NOARGS, nullptr},
};

} // namespace

bool BackEnd::start(const QByteArray& share)
{
    // The test framework has installed a handler for SIGINT. Python would keep that handler instead of its
    // own.
    std::signal(SIGINT, SIG_DFL);
    program = "the-test";
    qputenv("VYRESHARE", share.isEmpty() ? QByteArray(STANDIN_SHARE) : share);
    if (!yumIO.initialize()) {
        return false;
    }
    const PyRef capsule(PyCapsule_New(this, nullptr, nullptr));
    for (PyMethodDef& each : functions) {
        const PyRef function(PyCFunction_New(&each, capsule.get()));
        yumIO.python().pyAssignGlobal(each.ml_name, function.get());
    }
    return true;
}

QStringList BackEnd::bars() const
{
    QStringList lines;
    for (const HProgressBar* bar : {&total, &item}) {
        lines.append(bar->isEnabled()
                         ? QStringLiteral("%1 %2/%3").arg(bar->text()).arg(bar->value()).arg(bar->maximum())
                         : QStringLiteral("idle"));
    }
    return lines;
}

QStringList BackEnd::tip()
{
    for (QWidget* old : QApplication::topLevelWidgets()) {
        delete qobject_cast<GeneralTip*>(old); // null if this window is not a tip
    }
    Q_EMIT item.toolTip(QPoint(1, 1));
    QStringList rows;
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        const auto* grid = qobject_cast<const GeneralTip*>(widget) != nullptr
                               ? qobject_cast<const QGridLayout*>(widget->layout())
                               : nullptr;
        for (int row = 0; grid != nullptr && row < grid->rowCount(); ++row) {
            const auto cell = [grid, row](int column) {
                return qobject_cast<const QLabel*>(grid->itemAtPosition(row, column)->widget())->text();
            };
            rows.append(cell(0) + ": " + cell(1));
        }
    }
    return rows;
}

void BackEnd::run(const QString& statements)
{
    if (yumIO.python().py(statements.toUtf8().constData()) != 0) {
        QTest::qFail(qPrintable("failed: " + statements), __FILE__, __LINE__);
    }
}

PyRef BackEnd::value(const QString& expression)
{
    PyRef result(yumIO.python().pyr(expression.toUtf8().constData()));
    if (!result) {
        QTest::qFail(qPrintable("failed: " + expression), __FILE__, __LINE__);
    }
    return result;
}

QString BackEnd::text(const QString& expression)
{
    const PyRef result(value(expression));
    const PyRef string(result ? PyObject_Str(result.get()) : nullptr);
    return string ? QString::fromUtf8(PyUnicode_AsUTF8(string.get())) : QString();
}

void BackEnd::renew()
{
    yumIO.clearEntries();
    run(QStringLiteral("it.setUp()"));
    answers.take();
}

bool BackEnd::collect(const QHash<QString, bool>& repoEnable)
{
    return yumIO.collect(repoEnable);
}

Package::Entry* BackEnd::entry(const QString& name, const QString& biArch)
{
    return yumIO.records.find(YumIO::EntryKey(false, name, biArch));
}

Package::Entry* BackEnd::group(const QString& name)
{
    return yumIO.records.find(YumIO::EntryKey(true, name, QString()));
}

QStringList BackEnd::log(int from)
{
    QStringList lines;
    QMutexLocker locker(&yumIO.logEntries());
    for (int i = from; i < yumIO.logEntries().count(); ++i) {
        const Log::Entry& each = yumIO.logEntries().at(i);
        lines.append(QStringLiteral("%1 %2 %3").arg(each.kind).arg(each.level).arg(each.text));
    }
    return lines;
}

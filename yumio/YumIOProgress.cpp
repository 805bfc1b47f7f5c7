// SPDX-License-Identifier: GPL-2.0-or-later

// Receives the script's output, download reports and transaction progress while the script reads repositories
// or applies a transaction. The worker that runs the script calls these functions and holds the interpreter
// lock. Between operations, `progress` is null, so reports reach only the log.

#include "yumio/YumIO.h"

#include "python/CPython.h"
#include "services/Progress.h"
#include "services/Unattended.h"
#include "services/YumIODialogs.h"
#include "yumio/Transaction.h"

using Transaction::atLeast;

PyObject* YumIO::badArguments(const char* text)
{
    const PyRef exception(pyExceptValue());
    if (exception) {
        handleException();
    }
    error(tr(text));
    // Raise the exception again, because the script must receive it.
    if (exception) {
        PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exception.get())), exception.get());
    } else {
        PyErr_SetString(PyExc_TypeError, text);
    }
    return nullptr;
}

PyObject* YumIO::badPhase(const char* text)
{
    error(tr(text));
    PyErr_SetString(PyExc_RuntimeError, text);
    return nullptr;
}

PyObject* YumIO::noneUnlessPending()
{
    if (PyErr_Occurred() != nullptr) {
        return nullptr;
    }
    Py_RETURN_NONE;
}

PyObject* YumIO::stdWrite(PyObject* args, Log::Kind kind, unsigned int level, QString& pending)
{
    const char* text = nullptr;
    if (PyArg_ParseTuple(args, "s", &text) == 0) {
        return nullptr;
    }
    const QString decoded = QString::fromUtf8(text);
    if (!transaction.txListed) {
        transaction.txText += decoded + QLatin1Char('\n');
    }
    write(decoded, kind, level, pending);
    Py_RETURN_NONE;
}

void YumIO::write(const QString& text, Log::Kind kind, unsigned int level, QString& pending)
{
    pending += text;
    const int end = pending.lastIndexOf(QLatin1Char('\n'));
    if (end < 0) {
        return;
    }
    const QString complete = pending.left(end);
    pending.remove(0, end + 1);
    logList.appendMessage(kind, level, complete);
}

void YumIO::finishLine(Log::Kind kind, unsigned int level, QString& pending)
{
    if (!pending.isEmpty()) {
        write(QStringLiteral("\n"), kind, level, pending);
    }
}

void YumIO::finishLines()
{
    finishLine(Log::OK, 0, stdoutPending);
    finishLine(stderrKind, stderrLevel, stderrPending);
}

PyObject* YumIO::stdoutWrite(PyObject*, PyObject* args)
{
    return stdWrite(args, Log::OK, 0, stdoutPending);
}

PyObject* YumIO::stderrWrite(PyObject*, PyObject* args)
{
    return stdWrite(args, stderrKind, stderrLevel, stderrPending);
}

void YumIO::stdoutCapturedWrite(const QString& text)
{
    write(text, Log::OK, 0, stdoutCapturedPending);
}

void YumIO::stderrCapturedWrite(const QString& text)
{
    write(text, Log::Error, 0, stderrCapturedPending);
}

void YumIO::captureEnded()
{
    finishLine(Log::OK, 0, stdoutCapturedPending);
    finishLine(Log::Error, 0, stderrCapturedPending);
}

PyObject* YumIO::log(PyObject*, PyObject* args)
{
    long level = 0;
    const char* text = nullptr;
    if (PyArg_ParseTuple(args, "ls", &level, &text) == 0) {
        return nullptr;
    }
    log(Log::Info, static_cast<unsigned int>(level), QString::fromUtf8(text));
    Py_RETURN_NONE;
}

PyObject* YumIO::errorlog(PyObject*, PyObject* args)
{
    long level = 0;
    const char* text = nullptr;
    if (PyArg_ParseTuple(args, "ls", &level, &text) == 0) {
        return nullptr;
    }
    log(Log::Error, static_cast<unsigned int>(level), QString::fromUtf8(text));
    Py_RETURN_NONE;
}

bool YumIO::isInstance(PyObject* object, PyObject* type)
{
    if (type == nullptr) {
        return false;
    }
    const int is = PyObject_IsInstance(object, type);
    if (is < 0) {
        PyErr_Clear();
    }
    return is == 1;
}

bool YumIO::isPayload(PyObject* object)
{
    return isInstance(object, classes[MDPayload]) || isInstance(object, classes[RPMPayload]) ||
           isInstance(object, classes[DeltaPayload]);
}

bool YumIO::payloadError(const QString& text)
{
    // Leave the exception pending if the running operation expects it and explains it to the user.
    if (PyErr_Occurred() != nullptr && !exceptionIsExpected()) {
        displayException();
    }
    error(text);
    return false;
}

bool YumIO::payloadText(PyObject* payload, const char* function, QString& text, quint64& size)
{
    const PyRef description(PyObject_Str(payload));
    if (!description) {
        return payloadError(
            tr("Internal error: %1: unable to determine payload __str__").arg(QLatin1String(function)));
    }
    text = pyString(description.get());
    // Convert the size, because it is a floating-point number for metadata files.
    const PyRef number(attribute(payload, "download_size"));
    const PyRef bytes(number ? PyNumber_Long(number.get()) : nullptr);
    if (!bytes) {
        return payloadError(
            tr("Internal error: %1: unable to determine payload download_size").arg(QLatin1String(function)));
    }
    size = pyTime(bytes.get());
    return true;
}

PyObject* YumIO::downloadStart(PyObject*, PyObject* args)
{
    long long files = 0;
    long long bytes = 0;
    long long deltas = 0;
    if (PyArg_ParseTuple(args, "LLL", &files, &bytes, &deltas) == 0) {
        return badArguments(QT_TR_NOOP("Internal error: downloadStart: unable to interpret arguments"));
    }
    if (phase == Applying) {
        tsDownloadStart();
    } else if (phase != Collecting) {
        return badPhase(QT_TR_NOOP("Internal error: downloadStart: download at unexpected time"));
    }
    Py_RETURN_NONE;
}

PyObject* YumIO::downloadProgress(PyObject*, PyObject* args)
{
    PyObject* payload = nullptr;
    double done = 0;
    if (PyArg_ParseTuple(args, "Od", &payload, &done) == 0) {
        return badArguments(QT_TR_NOOP("Internal error: downloadProgress: unable to interpret arguments"));
    }
    QString text;
    quint64 size = 0;
    if (!payloadText(payload, "downloadProgress", text, size)) {
        return noneUnlessPending();
    }
    const quint64 bytes = done > 0 ? static_cast<quint64>(done) : 0;
    if (phase == Applying) {
        tsDownloadProgress(payload, text, size, bytes);
    } else if (phase == Collecting) {
        collectProgress(text, size, bytes);
    } else {
        return badPhase(QT_TR_NOOP("Internal error: downloadProgress: download at unexpected time"));
    }
    Py_RETURN_NONE;
}

PyObject* YumIO::downloadMessage(PyObject*, PyObject* args)
{
    PyObject* message = nullptr;
    if (PyArg_ParseTuple(args, "O", &message) == 0) {
        return badArguments(QT_TR_NOOP("Internal error: downloadMessage: unable to interpret arguments"));
    }
    if (phase == Idle) {
        return badPhase(QT_TR_NOOP("Internal error: downloadMessage: download at unexpected time"));
    }
    Py_RETURN_NONE;
}

PyObject* YumIO::downloadEnd(PyObject*, PyObject* args)
{
    PyObject* payload = nullptr;
    PyObject* status = nullptr;
    PyObject* message = nullptr;
    if (PyArg_ParseTuple(args, "OOO", &payload, &status, &message) == 0) {
        return badArguments(QT_TR_NOOP("Internal error: downloadEnd: unable to interpret arguments"));
    }
    QString text;
    quint64 size = 0;
    if (!payloadText(payload, "downloadEnd", text, size)) {
        return noneUnlessPending();
    }
    if (phase == Applying) {
        // If a download succeeds, the package manager passes None as the status.
        const long number = PyLong_Check(status) ? PyLong_AsLong(status) : 0;
        PyErr_Clear(); // ignore a status that does not fit into a long
        tsDownloadEnd(payload, text, size, number);
        if (message != Py_None && PyUnicode_Check(message)) {
            log(Log::Info, 2, QStringLiteral("%1: %2").arg(text, pyString(message)));
        }
    } else if (phase == Collecting) {
        collectEnd();
    } else {
        return badPhase(QT_TR_NOOP("Internal error: downloadEnd: download at unexpected time"));
    }
    Py_RETURN_NONE;
}

PyObject* YumIO::downloadRemotePayloads(PyObject*, PyObject* args)
{
    PyObject* payloads = nullptr;
    if (PyArg_ParseTuple(args, "O", &payloads) == 0) {
        return nullptr;
    }
    const PyRef iterator(PyObject_GetIter(payloads));
    if (!iterator) {
        return nullptr;
    }
    // Report an unreadable payload, and go on with the next one. But if the running operation expects the
    // exception, leave the exception pending and stop.
    while (PyErr_Occurred() == nullptr) {
        const PyRef payload(PyIter_Next(iterator.get()));
        if (!payload) {
            break;
        }
        const PyRef pkg(PyObject_GetAttrString(payload.get(), "pkg"));
        if (!pkg) {
            payloadError(tr("Internal error: downloadRemotePayloads: unable to determine payload pkg"));
            continue;
        }
        const PyRef name(PyObject_GetAttrString(pkg.get(), "name"));
        if (!name) {
            payloadError(tr("Internal error: downloadRemotePayloads: unable to determine payload pkg.name"));
            continue;
        }
        const PyRef arch(PyObject_GetAttrString(pkg.get(), "arch"));
        if (!arch) {
            payloadError(tr("Internal error: downloadRemotePayloads: unable to determine payload pkg.arch"));
            continue;
        }
        const PyRef number(attribute(payload.get(), "download_size"));
        const PyRef bytes(number ? PyNumber_Long(number.get()) : nullptr);
        if (!bytes) {
            payloadError(
                tr("Internal error: downloadRemotePayloads: unable to determine payload download_size"));
            continue;
        }
        const quint64 size = pyTime(bytes.get());
        transaction.weighRemote(size, isInstance(payload.get(), classes[DeltaPayload]));
    }
    if (PyErr_Occurred() != nullptr) {
        return nullptr;
    }
    transaction.shareDownloadSteps();
    if (progress != nullptr) {
        progress->changeTotal(transaction.downloadSteps + Transaction::runSteps);
        progress->setupItemActs(transaction.downloadSteps, transaction.remoteWeight);
    }
    Py_RETURN_NONE;
}

void YumIO::tsDownloadStart()
{
    transaction.startDownloads();
    const quint64 from = transaction.actCounter;
    transaction.actCounter += transaction.threadsMax;
    progress->setupItemActsThreads(tr("Downloading %1 packages").arg(transaction.threadCount), from,
                                   transaction.actCounter, transaction.threadCount, transaction.threadsMax);
}

QHash<QString, quint32>::const_iterator YumIO::startSlot(const QString& text, quint64 size)
{
    const auto slot = transaction.payloadSlots.insert(text, transaction.nextSlot++);
    if (slot.value() < transaction.threadCount) {
        progress->startItemActThread(tr("Downloading %1").arg(text), slot.value(), atLeast(size));
    }
    return slot;
}

void YumIO::tsDownloadProgress(PyObject* payload, const QString& text, quint64 size, quint64 done)
{
    if (!isPayload(payload)) {
        warning(tr("warning: YumIO::tsDownloadProgress saw payload with unexpected type: %1")
                    .arg(QLatin1String(Py_TYPE(payload)->tp_name)));
        return;
    }
    auto slot = transaction.payloadSlots.constFind(text);
    if (slot == transaction.payloadSlots.constEnd()) {
        slot = startSlot(text, size);
    }
    if (slot.value() >= transaction.threadCount) {
        static bool reported = false;
        if (!reported) {
            reported = true;
            warning(tr("error: YumIO::tsDownloadProgress: unexpected thread %1/%2")
                        .arg(slot.value())
                        .arg(transaction.threadCount));
        }
        return;
    }
    progress->setItemActsThreadValue(slot.value(), done);
}

void YumIO::tsDownloadEnd(PyObject* payload, const QString& text, quint64 size, long status)
{
    constexpr long alreadyPresent = 2;
    if (status == alreadyPresent) {
        return;
    }
    auto slot = transaction.payloadSlots.constFind(text);
    if (slot == transaction.payloadSlots.constEnd() && transaction.nextSlot < transaction.threadCount &&
        isPayload(payload)) {
        // No progress report came before the end of the download, so assign a slot now.
        slot = startSlot(text, size);
    }
    if (slot == transaction.payloadSlots.constEnd() || slot.value() >= transaction.threadCount) {
        transaction.payloadSlots.remove(text);
        return;
    }
    const quint32 index = slot.value();
    const bool delta = isInstance(payload, classes[DeltaPayload]);
    if (delta && status == 0) {
        // The package manager now rebuilds the package from the delta, and then reports the end of the same
        // download again. Keep the slot until then.
        progress->setItemActsThreadValue(index, atLeast(size));
        return;
    }
    transaction.payloadSlots.remove(text);
    progress->setItemActsThreadValue(index, atLeast(size) + (delta ? atLeast(size / 3) : 0));
    progress->endItemActThread(index);
}

PyObject* YumIO::rpmtransInit(PyObject*, PyObject* args)
{
    PyObject* test = nullptr;
    if (PyArg_ParseTuple(args, "O", &test) == 0) {
        return badArguments(QT_TR_NOOP("Internal error: rpmtransInit: unable to interpret arguments"));
    }
    const bool flag = test != Py_False;
    if (!flag && phase == Applying && !transaction.signalRecorder) {
        // Set changingSystem before checking whether the program is ending, because the graphical thread may
        // begin to end the program between these two steps. That thread then reads that changingSystem is
        // true, and waits for the transaction. If the program has begun to end before both steps, the check
        // stops the transaction. changingSystem stays true until the operation is over.
        changingSystem = true;
        if (Unattended::is()) {
            changingSystem = false;
            PyErr_SetNone(PyExc_KeyboardInterrupt);
            return nullptr;
        }
        if (!stopRequest.refuse()) {
            changingSystem = false;
            PyErr_SetString(classes[DnfError] != nullptr ? classes[DnfError] : PyExc_RuntimeError,
                            "stopped before the transaction");
            return nullptr;
        }
        transaction.signalRecorder = std::make_unique<SignalRecorder>();
    }
    transaction.transactionRan = transaction.transactionRan || !flag;
    if (progress != nullptr) {
        if (flag || !transaction.testRun) {
            progress->endItemActsThreads();
            transaction.endDownloads();
            progress->endItemActs();
            progress->startItem(tr("Preparing to Run Transaction"), 1000, 1);
        }
        if (!flag) {
            progress->setupItemActs(8000, transaction.rpmWeight);
        }
    }
    transaction.actCounter = 0;
    transaction.testRun = flag;
    Py_RETURN_NONE;
}

PyObject* YumIO::rpmtransDel(PyObject*, PyObject*)
{
    // Use `progress` only if it is not null. An exception's traceback may keep the script's transaction
    // object alive, and then the destructor of this object calls rpmtransDel() after the operation.
    if (!transaction.testRun && progress != nullptr) {
        progress->endItemActs();
    }
    Py_RETURN_NONE;
}

YumIO::PackageStep YumIO::packageStep(long action, quint64 newWeight, quint64 oldSize)
{
    switch (action) {
    case Transaction::Install:
        return {tr("Installing %1"), newWeight};
    case Transaction::Downgrade:
        return {tr("Downgrading %1"), newWeight};
    case Transaction::Downgraded:
        return {tr("Completing downgrade of %1"), atLeast(oldSize / 5)};
    case Transaction::Obsolete:
        return {tr("Obsoleting %1"), newWeight};
    case Transaction::Obsoleted:
        return {tr("Obsoleting %1"), atLeast(oldSize)};
    case Transaction::Upgrade:
        return {tr("Upgrading %1"), newWeight};
    case Transaction::Upgraded:
        return {tr("Completing upgrade of %1"), atLeast(oldSize / 5)};
    case Transaction::Remove:
        return {tr("Removing %1"), atLeast(oldSize)};
    case Transaction::Reinstall:
        return {tr("Reinstalling %1"), newWeight};
    case Transaction::Reinstalled:
        return {tr("Completing reinstall of %1"), atLeast(oldSize / 5)};
    default:
        return {tr("Executing scriptlet for %1"), 0};
    }
}

PyObject* YumIO::rpmtransProgress(PyObject*, PyObject* args)
{
    PyObject* package = nullptr;
    long action = 0;
    PyObject* numbers[4] = {};
    if (PyArg_ParseTuple(args, "OlOOOO", &package, &action, &numbers[0], &numbers[1], &numbers[2],
                         &numbers[3]) == 0) {
        return badArguments(QT_TR_NOOP("Internal error: rpmtransProgress: unable to interpret arguments"));
    }
    qint64 values[4] = {};
    for (int i = 0; i < 4; ++i) {
        if (numbers[i] != Py_None) {
            values[i] = PyLong_AsLongLong(numbers[i]);
            if (PyErr_Occurred() != nullptr) {
                return badArguments(
                    QT_TR_NOOP("Internal error: rpmtransProgress: unable to interpret arguments"));
            }
        }
    }
    const qint64 itemDone = values[0];
    const qint64 itemTotal = values[1];
    const qint64 tsDone = values[2];

    if (action == Transaction::ReasonChange || action == Transaction::Cleanup ||
        action == Transaction::Verify) {
        Py_RETURN_NONE;
    }
    if (!(action >= Transaction::Install && action <= Transaction::Reinstalled) &&
        action != Transaction::Scriptlet && action != Transaction::Preparation &&
        action != Transaction::Post) {
        warning(tr("Internal error: YumIO::rpmtransProgress action=%1 not understood; ignoring").arg(action));
        Py_RETURN_NONE;
    }
    if (tsDone == transaction.lastTsDone && action == transaction.lastAction) {
        if (progress != nullptr) {
            progress->setItemValue(static_cast<Steps>(itemDone));
        }
        Py_RETURN_NONE;
    }
    if (action == Transaction::Preparation || action == Transaction::Post) {
        warning(tr("Internal error: YumIO::rpmtransProgress interior action=%1 not understood").arg(action));
        Py_RETURN_NONE;
    }

    const QString name = pyStringDec(attribute(package, "name"));
    Package::Entry* entry = findPackage(name, pyStringDec(attribute(package, "arch")));
    // If the package has no record, read the size from the package object.
    const quint64 ownSize = entry == nullptr ? sizeOf(package) : 0;
    const PackageStep step = packageStep(action, atLeast(3 * (entry != nullptr ? entry->size : ownSize)),
                                         entry != nullptr ? Records::installedSize(entry) : ownSize);
    const QString text = step.text.arg(name);
    transaction.actCounter += step.weight;
    log(Log::Info, 1, text);
    transaction.lastTsDone = tsDone;
    transaction.lastAction = action;
    if (progress != nullptr) {
        progress->startItemAct(text, static_cast<Steps>(itemTotal), transaction.actCounter);
        progress->setItemValue(static_cast<Steps>(itemDone));
    }
    Py_RETURN_NONE;
}

PyObject* YumIO::rpmtransScriptout(PyObject*, PyObject* args)
{
    PyObject* text = nullptr;
    if (PyArg_ParseTuple(args, "O", &text) == 0) {
        return badArguments(QT_TR_NOOP("Internal error: rpmtransScriptout: unable to interpret arguments"));
    }
    if (text != Py_None) {
        log(Log::OK, 0, pyString(text));
    }
    Py_RETURN_NONE;
}

PyObject* YumIO::postTransactionOutput(PyObject*, PyObject*)
{
    Py_RETURN_NONE;
}

PyObject* YumIO::gpgsigcheck(PyObject*, PyObject*)
{
    transaction.txText.clear();
    Py_RETURN_NONE;
}

void YumIO::collectProgress(const QString& repository, quint64 total, quint64 done)
{
    if (progress == nullptr) {
        return;
    }
    if (!readingIsShown && repository != readingRepo) {
        readingRepo = repository;
        ++readingCount;
        readingMax = 1;
        progress->startItemAct(tr("Reading repository metadata for %1").arg(repository), 1, readingCount);
    } else if (done != 0) {
        readingMax = total;
        progress->changeItemActSteps(done, total);
    }
}

// Shows which repository the script reads. The arguments are the name of the repository and the text for the
// bar. The bar shows no percentage until a download begins.
PyObject* YumIO::showReading(PyObject* capsule, PyObject* args)
{
    auto* yumIO = static_cast<YumIO*>(PyCapsule_GetPointer(capsule, nullptr));
    const char* name = nullptr;
    const char* text = nullptr;
    if (yumIO == nullptr || PyArg_ParseTuple(args, "ss", &name, &text) == 0) {
        return nullptr;
    }
    if (yumIO->progress == nullptr || yumIO->phase != Collecting) {
        Py_RETURN_NONE;
    }
    const QString repository = QString::fromUtf8(name);
    yumIO->readingMax = 0;
    if (!yumIO->readingIsShown || repository != yumIO->readingRepo) {
        yumIO->readingIsShown = true;
        yumIO->readingRepo = repository;
        ++yumIO->readingCount;
        yumIO->progress->startItemAct(QString::fromUtf8(text), 0, yumIO->readingCount);
    } else {
        yumIO->progress->changeItemActivity(QString::fromUtf8(text));
        yumIO->progress->changeItemActSteps(0, 0);
    }
    Py_RETURN_NONE;
}

void YumIO::collectEnd()
{
    if (progress != nullptr) {
        progress->setItemValue(readingMax);
    }
}

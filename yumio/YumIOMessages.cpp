// SPDX-License-Identifier: GPL-2.0-or-later

// Writes the log, shows messages to the user, and converts failures of the script to messages.

#include "yumio/YumIO.h"

#include <QRegularExpression>

#include "python/CPython.h"
#include "services/YumIODialogs.h"

void YumIO::log(Log::Kind kind, unsigned int level, const QString& text)
{
    static const QRegularExpression errorMark(QStringLiteral(": (\\[Errno [0-9]*\\] )"));
    QString marked = text;
    marked.replace(errorMark, QStringLiteral(":\n\\1"));
    logList.appendMessage(kind, level, marked);
}

void YumIO::error(const QString& text)
{
    log(Log::Error, 0, text);
    if (dialogs != nullptr && !stopRequest.isRequested()) {
        dialogs->critical(tr("VYRE Yum Error"), Log::withoutPasswords(text), QString(), QString(), QString(),
                          0, -1);
    }
}

void YumIO::warning(const QString& text)
{
    log(Log::Warning, 0, text);
    if (dialogs != nullptr && !stopRequest.isRequested()) {
        dialogs->warning(tr("VYRE Yum Warning"), Log::withoutPasswords(text), QString(), QString(), QString(),
                         0, -1);
    }
}

void YumIO::error(const char* text)
{
    error(afterCarriedOut(QString::fromUtf8(text)));
}

// Adds the changes before the failure to the beginning of the message about the failure.
QString YumIO::afterCarriedOut(const QString& text) const
{
    return carriedOut.isEmpty() ? text : carriedOut + QLatin1Char('\n') + text;
}

void YumIO::warning(const char* text)
{
    warning(QString::fromUtf8(text));
}

bool YumIO::internalError(const QString& text)
{
    if (PyErr_Occurred() != nullptr) {
        handleException();
    }
    error(text);
    return false;
}

int YumIO::exceptionLogStart()
{
    QMutexLocker locker(&logList);
    return exceptLogStart >= 0 ? exceptLogStart : logList.count();
}

void YumIO::pythonException(const QString& text)
{
    const int start = exceptionLogStart();
    showExceptionLog(start, text);
}

void YumIO::pythonExceptionV(const QString& text)
{
    const int start = exceptionLogStart();
    log(Log::Error, 0, pyStringXDec(pyExceptValuef()));
    showExceptionLog(start, text);
}

void YumIO::showExceptionLog(int start, const QString& text)
{
    log(Log::Error, 0, text);
    QStringList lines;
    if (!carriedOut.isEmpty()) {
        log(Log::Info, 0, carriedOut);
        lines.append(carriedOut);
    }
    {
        QMutexLocker locker(&logList);
        for (int i = start; i < logList.count(); ++i) {
            const Log::Entry& entry = logList.at(i);
            if (entry.kind == Log::Error && entry.level < 3) {
                lines.append(entry.text);
            }
        }
    }
    // Open the dialog only after the log is unlocked, because the Log window locks the log to show the
    // messages.
    if (dialogs != nullptr && !stopRequest.isRequested()) {
        dialogs->scrollable(tr("VYRE Yum Error"), lines.join(QLatin1Char('\n')));
    }
}

void YumIO::pyExceptExpect(PyObject* type)
{
    {
        QMutexLocker locker(&logList);
        exceptLogStart = logList.count();
    }
    Python::pyExceptExpect(type);
}

void YumIO::pyExceptClear()
{
    exceptLogStart = -1;
    Python::pyExceptClear();
}

void YumIO::exceptionExpected()
{
    // Do nothing: the exception stays pending, and the caller explains the failure to the user.
}

void YumIO::tracebackOnTerminal(const char* text)
{
    // Log the traceback too, because messages refer the user to the log.
    log(Log::Error, 0, QString::fromUtf8(text));
}

// Shows the remarks that the script has collected during an operation, whether or not the operation
// succeeded.
void YumIO::showRemarks()
{
    PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
    PyErr_Fetch(&type, &value, &traceback);
    const PyRef remarks(attribute(yumIO.get(), "remarks"));
    QStringList texts;
    if (remarks && PyList_Check(remarks.get())) {
        const Py_ssize_t count = PyList_GET_SIZE(remarks.get());
        for (Py_ssize_t i = 0; i < count; ++i) {
            texts.append(pyString(PyList_GET_ITEM(remarks.get(), i)));
        }
        PyList_SetSlice(remarks.get(), 0, count, nullptr);
    }
    if (!texts.isEmpty()) {
        warning(texts.join(QLatin1String("\n\n")));
    }
    PyErr_Restore(type, value, traceback);
}

bool YumIO::stopRaised(PyObject* result)
{
    if (result != nullptr || !stopRequest.isRequested()) {
        return false;
    }
    const PyRef exception(pyExceptValue());
    PyErr_Clear();
    const PyRef text(exception ? PyObject_Str(exception.get()) : nullptr);
    PyErr_Clear();
    if (text) {
        log(Log::Info, 3, pyString(text.get()));
    }
    return true;
}

void YumIO::commExceptSetup()
{
    pyExceptExpect(classes[BdbQuit]);
    pyExceptExpect(classes[DnfError]);
    pyExceptExpect(classes[RepoError]);
    pyExceptExpect(PyExc_IOError);
    pyExceptExpect(PyExc_KeyboardInterrupt);
    pyExceptExpect(PyExc_AssertionError);
    pyExceptExpect(PyExc_RuntimeError);
    for (const Class optional : {OtherRepoError, MetadataError}) {
        if (classes[optional] != nullptr) {
            pyExceptExpect(classes[optional]);
        }
    }
}

bool YumIO::commExceptRaised(PyObject* result, const QString& what)
{
    // Below, PyErr_PrintEx(0) prints exceptions without storing their tracebacks in `sys`. A stored traceback
    // would keep the objects of the failed call alive.
    const auto raised = [this, result](PyObject* type) {
        return type != nullptr && pyExceptMatches(result, type);
    };
    const auto value = [this] {
        const PyRef text(pyExceptValuef());
        return text ? pyStringX(text.get()) : QString();
    };
    const auto report = [this](const QString& text) { error(afterCarriedOut(text)); };
    if (raised(PyExc_IOError)) {
        const QString text = value();
        PyErr_PrintEx(0);
        report(tr("Unable to %1: I/O Error: %2\n\nEmitting a walkback to the Log window.").arg(what, text));
        return true;
    }
    if (raised(PyExc_KeyboardInterrupt)) {
        PyErr_PrintEx(0);
        report(
            tr("Unable to %1: KeyboardInterrupt\n\nThis usually means VYRE was sent signal SIGINT, SIGTERM, "
               "or "
               "similar.\n\nBut urlgrabber also can raise this error for several situations where it is just "
               "guessing.\nSo, emitting a walkback to the Log window.")
                .arg(what));
        return true;
    }
    if (raised(PyExc_AssertionError)) {
        PyErr_PrintEx(0);
        report(tr(
            "Internal error: python assertion failed\nWhen reporting this issue, please include the contents "
            "of the\nLog window, which should contain a walkback."));
        return true;
    }
    if (raised(PyExc_RuntimeError)) {
        report(tr("Unable to %1: Runtime Error:\n\n%2").arg(what, value()));
        return true;
    }
    if (raised(classes[MetadataError])) {
        report(tr("Unable to %1: metadata unavailable from all repo mirrors:\n%2").arg(what, value()));
        return true;
    }
    if (raised(classes[RepoError]) || raised(classes[OtherRepoError])) {
        if (value().contains(QLatin1String("database is locked"))) {
            pythonException(
                tr("Unable to %1: a repository's sqlite database was locked unexpectedly\nOn some "
                   "distributions, PackageKit has been known to cause this.")
                    .arg(what));
        } else {
            exceptionError();
        }
        return true;
    }
    if (raised(classes[BdbQuit]) || raised(classes[DnfError])) {
        pythonExceptionV(tr("Unable to %1").arg(what));
        return true;
    }
    return false;
}

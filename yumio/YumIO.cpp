// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/YumIO.h"

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <QThread>

#include "app/base/Credentials.h"
#include "python/CPython.h"
#include "services/Progress.h"
#include "services/Unattended.h"
#include "services/YumIOCapturers.h"
#include "services/YumIODialogs.h"
#include "yumio/EndSignals.h"
#include "yumio/Metadata.h"
#include "yumio/Words.h"
#include "yumio/WorkerThreads.h"

namespace {

// All texts of the script that are translated. They are repeated here because Qt's lupdate finds texts only
// in C++ files.
const char* const scriptTexts[] = {
    QT_TRANSLATE_NOOP(
        "YumIO", "VYRE does not support version {} of dnf. It cannot read the configuration, because dnf "
                 "lacks {}."),
    QT_TRANSLATE_NOOP("YumIO",
                      "VYRE does not support version {} of dnf. It cannot read repositories and packages, "
                      "because dnf lacks {}."),
    QT_TRANSLATE_NOOP(
        "YumIO", "VYRE does not support version {} of dnf. It cannot use plug-ins, because dnf lacks {}."),
    QT_TRANSLATE_NOOP(
        "YumIO", "VYRE does not support version {} of dnf. It cannot carry out transactions, because dnf "
                 "lacks {}."),
    QT_TRANSLATE_NOOP(
        "YumIO",
        "VYRE does not support version {} of dnf. It cannot undo transactions, because dnf lacks {}."),
    QT_TRANSLATE_NOOP("YumIO", "The transaction is impossible:\n"
                               "{}\nNothing was changed. VYRE keeps all marks."),
    QT_TRANSLATE_NOOP(
        "YumIO", "These changes are impossible:\n{}\n\nGo on without them?\n\"Yes\" shows the other changes. "
                 "\"No\" changes nothing.\n"),
    QT_TRANSLATE_NOOP("YumIO",
                      "This transaction was interrupted. All its packages are in the intended state."),
    QT_TRANSLATE_NOOP("YumIO",
                      "This transaction was interrupted. \"Redo\" completes it with these changes:\n{}"),
    QT_TRANSLATE_NOOP("YumIO", "Packages were changed without dnf between the previous transaction and this "
                               "transaction."),
    QT_TRANSLATE_NOOP("YumIO",
                      "Packages were changed without dnf between this transaction and the next transaction."),
    QT_TRANSLATE_NOOP("YumIO", "Install"),
    QT_TRANSLATE_NOOP("YumIO", "Upgrade"),
    QT_TRANSLATE_NOOP("YumIO", "Downgrade"),
    QT_TRANSLATE_NOOP("YumIO", "Reinstall"),
    QT_TRANSLATE_NOOP("YumIO", "Removed"),
    QT_TRANSLATE_NOOP("YumIO", "Obsoleted"),
    QT_TRANSLATE_NOOP("YumIO", "Reason Change"),
    QT_TRANSLATE_NOOP("YumIO", "Upgraded"),
    QT_TRANSLATE_NOOP("YumIO", "Downgraded"),
    QT_TRANSLATE_NOOP("YumIO", "Reinstalled"),
    QT_TRANSLATE_NOOP("YumIO", "Obsoleting"),
    QT_TRANSLATE_NOOP("YumIO", "(failed)"),
    QT_TRANSLATE_NOOP("YumIO", "(result not recorded)"),
    QT_TRANSLATE_NOOP("YumIO", "VYRE cannot check signatures, because the rpmkeys program is missing."),
    QT_TRANSLATE_NOOP("YumIO", "Import the signing key 0x{}?\n\nMetadata of:\t{}\nUser "
                               "id:\t{}\nFingerprint:\t{}\nFrom:\t{}\n"),
    QT_TRANSLATE_NOOP("YumIO", "Import the signing key 0x{}?\n\nPackage:\t{}\nRepository:\t{}\nUser "
                               "id:\t{}\nFingerprint:\t{}\nFrom:\t{}\n"),
    QT_TRANSLATE_NOOP("YumIO", "\nOnly {} kB are free in {}"),
    QT_TRANSLATE_NOOP("YumIO", "The change logs of %s cannot be read: %s"),
    QT_TRANSLATE_NOOP("YumIO", "Unable to use the configuration file %s: %s"),
    QT_TRANSLATE_NOOP("YumIO", "it is not a regular file"),
    QT_TRANSLATE_NOOP("YumIO", "it is larger than {} MB"),
    QT_TRANSLATE_NOOP("YumIO", "The main configuration file is missing. VYRE checks package signatures, "
                               "unless a repository disables this check."),
    QT_TRANSLATE_NOOP("YumIO", "VYRE ignores the options in this file, such as exclude. VYRE checks package "
                               "signatures, unless a repository disables this check."),
    QT_TRANSLATE_NOOP("YumIO", "Waiting for {}, which uses the cache of the package manager"),
    QT_TRANSLATE_NOOP("YumIO", "VYRE no longer waits for {}. Nothing was changed."),
    QT_TRANSLATE_NOOP("YumIO", "VYRE no longer waits for {}."),
    QT_TRANSLATE_NOOP("YumIO", "{}\nNo packages were changed, but dnf had already saved these changes:\n{}"),
    QT_TRANSLATE_NOOP("YumIO", "These marked packages belong to streams that are not enabled: {}"),
    QT_TRANSLATE_NOOP("YumIO", "Stopped."),
    QT_TRANSLATE_NOOP("YumIO", "Reading the installed packages"),
    QT_TRANSLATE_NOOP("YumIO", "Reading repository metadata for {}"),
    QT_TRANSLATE_NOOP("YumIO", "Reading the packages of {}"),
    QT_TRANSLATE_NOOP("YumIO", "Checking the metadata of {}"),
    QT_TRANSLATE_NOOP("YumIO", "These repositories have no usable metadata in the cache, and are left "
                               "out until the next Refresh: {}."),
    QT_TRANSLATE_NOOP("YumIO", "another program"),
    QT_TRANSLATE_NOOP("YumIO", "process {}"),
    QT_TRANSLATE_NOOP(
        "YumIO", "dnf's file %s requires checks that %s does not require. VYRE makes these checks too: %s"),
    QT_TRANSLATE_NOOP("YumIO",
                      "The main configuration file is missing. dnf uses %s instead. VYRE also makes the "
                      "checks that this file requires: %s"),
    QT_TRANSLATE_NOOP("YumIO", "Resolve Dependencies"),
    QT_TRANSLATE_NOOP("YumIO", "Preparing to Run Transaction"),
    QT_TRANSLATE_NOOP("YumIO", "VYRE cannot write log files in %s: %s"),
    QT_TRANSLATE_NOOP("YumIO", "Unable to read the repository configuration: %s"),
    QT_TRANSLATE_NOOP("YumIO", "There is nothing to do."),
    QT_TRANSLATE_NOOP("YumIO", "The marks cannot be applied:\n"
                               "{}\nNothing was changed. VYRE keeps all marks."),
    // The following four lines are one text.
    // NOLINTNEXTLINE(bugprone-suspicious-missing-comma)
    QT_TRANSLATE_NOOP("YumIO", "Go on without these packages?\n\n"
                               "\"Yes\" goes on with the remaining marks: {}.\n"
                               "VYRE keeps the marks that cannot be applied.\n"
                               "\"No\" changes nothing. VYRE keeps all marks.\n\n"
                               "{}\n"),
    QT_TRANSLATE_NOOP("YumIO", "{} and {} more"),
    QT_TRANSLATE_NOOP("YumIO",
                      "This is only a test, because the tsflags option contains test. dnf downloads and "
                      "checks the packages;\n"
                      "it installs, updates and removes nothing.\n\n"),
    QT_TRANSLATE_NOOP(
        "YumIO", "The group {} has no packages that can be installed; it is only recorded as installed."),
    QT_TRANSLATE_NOOP(
        "YumIO",
        "The group {} has no further packages that can be installed; it is only recorded as installed."),
    QT_TRANSLATE_NOOP("YumIO",
                      "The group {} has no packages that can be removed; only its record is removed."),
    QT_TRANSLATE_NOOP("YumIO",
                      "You can remove the downloaded packages with Clean Packages in the Cache menu."),
    QT_TRANSLATE_NOOP("YumIO", "Finding the marks that can be applied"),
    QT_TRANSLATE_NOOP("YumIO", "Reading the recorded transactions"),
    QT_TRANSLATE_NOOP("YumIO", "Finding the packages of the recorded transactions"),
    QT_TRANSLATE_NOOP("YumIO", "{} is not newer than the installed version."),
    QT_TRANSLATE_NOOP("YumIO", "The transaction failed for:"),
    QT_TRANSLATE_NOOP("YumIO", "The scriptlet of {} failed."),
    QT_TRANSLATE_NOOP("YumIO", "The package database does not record these changes:"),
    QT_TRANSLATE_NOOP("YumIO", "The repository {} does not exist"),
    QT_TRANSLATE_NOOP("YumIO", "another package"),
    QT_TRANSLATE_NOOP("YumIO",
                      "The transaction history is damaged: {}\n"
                      "Move the file to another place. The package manager then creates a new file."),
    QT_TRANSLATE_NOOP("YumIO", "The {} metadata of the repository {} are damaged: {}"),
    QT_TRANSLATE_NOOP("YumIO",
                      "The {} metadata of the repository {} are damaged: {}\n"
                      "Searches and descriptions lack some file lists or change logs of its packages."),
    // The following three lines are one text.
    // NOLINTNEXTLINE(bugprone-suspicious-missing-comma)
    QT_TRANSLATE_NOOP("YumIO", "VYRE cannot read groups of packages on this system, because the installed "
                               "libcomps does not work with the installed version of Python. VYRE lists no "
                               "groups. Everything else works."),
    QT_TRANSLATE_NOOP("YumIO", "The group metadata of the repository {} are damaged: {}\n"
                               "VYRE does not list the groups of this repository."),
    QT_TRANSLATE_NOOP("YumIO", "The file {} is damaged: {}"),
    QT_TRANSLATE_NOOP("YumIO", "The plug-in {} cannot be loaded: {}"),
    QT_TRANSLATE_NOOP("YumIO", "The plug-ins cannot be loaded: {}"),
    QT_TRANSLATE_NOOP("YumIO", "The plug-in {} has ended the operation: {}"),
    QT_TRANSLATE_NOOP("YumIO", "The plug-in %s has failed (%s):"),
    QT_TRANSLATE_NOOP("YumIO", "The plug-in %s needs the dnf command and does not work in VYRE (%s)."),
    QT_TRANSLATE_NOOP("YumIO", "The packages were changed.\n{}"),
    QT_TRANSLATE_NOOP("YumIO", "The programs of this system are in a read-only image. VYRE cannot change "
                               "the image. Nothing was changed."),
    QT_TRANSLATE_NOOP("YumIO", "VYRE cannot change packages, because it has no right to change {}"),
    QT_TRANSLATE_NOOP("YumIO", "VYRE cannot change packages, because the programs of this system are in a "
                               "read-only image"),
    QT_TRANSLATE_NOOP("YumIO", "VYRE cannot change packages while the file system of {} is read-only"),
    QT_TRANSLATE_NOOP("YumIO", "VYRE cannot change files below {} while their file system is read-only"),
    QT_TRANSLATE_NOOP("YumIO", "The programs of this system are in an image: the next start of the system "
                               "may discard changes to packages"),
    QT_TRANSLATE_NOOP("YumIO", "The transaction was only tested, because the tsflags option contains test. "
                               "Nothing was changed."),
    QT_TRANSLATE_NOOP("YumIO", "The packages were changed, but VYRE could not write the transaction "
                               "history:\n"
                               "{}"),
    QT_TRANSLATE_NOOP("YumIO", "The disk was full, so the scripts of these packages may not have run:\n{}"),
    QT_TRANSLATE_NOOP("YumIO", "The disk has too little space for package scripts. They may not run.{}\n"
                               "Apply anyway?\n"),
    QT_TRANSLATE_NOOP("YumIO", "The disk has too little space for package scripts. Nothing was changed."),
    QT_TRANSLATE_NOOP("YumIO", "The history does not record the end of the last transaction, begun on {}.\n"
                               "All its packages are in the intended state."),
    QT_TRANSLATE_NOOP("YumIO", "Waiting for {}, which uses the package database"),
    QT_TRANSLATE_NOOP("YumIO", "Waiting for another program, which uses the package database"),
    QT_TRANSLATE_NOOP("YumIO", "Another program is using the package database: {}\nKeep waiting?\n"),
    QT_TRANSLATE_NOOP("YumIO", "Another program is using the package database.\nKeep waiting?\n"),
    QT_TRANSLATE_NOOP("YumIO", "Another program is using the package database. Nothing was changed."),
    // The following three lines are one text.
    // NOLINTNEXTLINE(bugprone-suspicious-missing-comma)
    QT_TRANSLATE_NOOP("YumIO", "Another program has changed the system since VYRE read the packages. "
                               "Nothing was applied.\n"
                               "VYRE now reads the packages again, and keeps the marks that are still "
                               "possible."),
    QT_TRANSLATE_NOOP("YumIO",
                      "Process {} has ended without removing its lock file {}. VYRE removes this file."),
    QT_TRANSLATE_NOOP("YumIO", "The last transaction, begun on {}, was interrupted.\n"
                               "In the History window (Ctrl+H), \"Redo\" completes it."),
    QT_TRANSLATE_NOOP("YumIO", "You are not allowed to change the list of locks {}"),
    QT_TRANSLATE_NOOP("YumIO", "These packages are still locked: {}\n"
                               "VYRE keeps these lines of {}, because they lock other packages too:\n"
                               "{}"),
    QT_TRANSLATE_NOOP("YumIO", "The versionlock plug-in is not loaded."),
    QT_TRANSLATE_NOOP("YumIO", "{}: the version of {} is locked by {}"),
    QT_TRANSLATE_NOOP("YumIO", "{}: the configuration or a plug-in excludes this version"),
    // The following two lines are one text.
    // NOLINTNEXTLINE(bugprone-suspicious-missing-comma)
    QT_TRANSLATE_NOOP("YumIO",
                      "The group {} is not installed: only its installed packages are updated. To install "
                      "the whole group, mark it for Install after this transaction."),
    QT_TRANSLATE_NOOP("YumIO", "This undoes transaction {}."),
    QT_TRANSLATE_NOOP("YumIO", "This undoes all transactions after transaction {}."),
    QT_TRANSLATE_NOOP("YumIO", "This repeats transaction {}."),
    QT_TRANSLATE_NOOP("YumIO", "This completes transaction {}."),
    QT_TRANSLATE_NOOP("YumIO",
                      "An interrupted transaction has left several installed versions of these packages:\n"
                      "{}\n\"dnf remove --duplicates\" removes the older versions."),
};

// A global function for the script. The script calls this function before it writes text to its log files.
// Returns a new string without passwords.
PyObject* hideSecrets(PyObject*, PyObject* given)
{
    if (PyUnicode_Check(given) == 0) {
        PyErr_SetString(PyExc_TypeError, "a text is needed");
        return nullptr;
    }
    // Python represents invalid UTF-8 in file names by lone surrogates, which a strict encoder would refuse.
    const PyRef bytes(PyUnicode_AsEncodedString(given, "utf-8", "backslashreplace"));
    if (!bytes) {
        return nullptr;
    }
    const QString text =
        QString::fromUtf8(PyBytes_AsString(bytes.get()), static_cast<int>(PyBytes_Size(bytes.get())));
    const QString hidden = Credentials::hidden(text);
    if (hidden == text) {
        // The text contains no password. Return it unchanged, because the encoding above may have replaced
        // characters.
        Py_INCREF(given);
        return given;
    }
    const QByteArray result = hidden.toUtf8();
    return PyUnicode_DecodeUTF8(result.constData(), result.size(), "replace");
}

} // namespace

YumIO::YumIO()
{
    connect(&stopRequest, SIGNAL(changed()), this, SIGNAL(stopStateChanged()));
    qRegisterMetaType<Package::Entry*>("Package::Entry*");
    const int descriptor = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    if (descriptor >= 0) {
        terminal = fdopen(descriptor, "w");
        if (terminal == nullptr) {
            close(descriptor);
        }
    }
}

YumIO::~YumIO()
{
    if (terminal != nullptr) {
        std::fclose(terminal);
    }
    if (Python::initialized) {
        PyGILStateWrapper lock(true);
        py("import sys\nsys.stdout = sys.__stdout__\nsys.stderr = sys.__stderr__\n");
        releaseLock();
        repos = PyRef();
        base = PyRef();
        yumIO = PyRef();
    }
    delete dialogs;
}

void YumIO::releaseLock()
{
    if (!locked) {
        return;
    }
    ExceptScope scope(*this, {classes[LockError]});
    const PyRef result(pyMethodCall(yumIO.get(), "unlock", "()"));
    if (pyExceptMatches(result.get(), classes[LockError])) {
        pythonException(tr("Unable to release yum lock"));
    }
    locked = false;
    EndSignals::setLockFile(nullptr);
}

void YumIO::setup(QWidget* parentWidget, HProgressBar* total, HProgressBar* item)
{
    parent = parentWidget;
    totalBar = total;
    itemBar = item;
    dialogs = new YumIODialogs(parentWidget);
}

// Passes the translations to the script as a dictionary. The script uses its English text if the dictionary
// lacks a text.
void YumIO::offerTranslations()
{
    const PyRef translations(PyDict_New());
    for (const char* text : scriptTexts) {
        const PyRef translation(PyUnicode_FromString(tr(text).toUtf8().constData()));
        if (translations && translation) {
            PyDict_SetItemString(translations.get(), text, translation.get());
        }
    }
    if (translations) {
        PyDict_SetItemString(main_dict, "translations", translations.get());
    }
    PyErr_Clear();
}

// Sets optional global functions for the script, outside the module yumIOC. addToListing adds lines to the
// end of a transaction's listing, and addBeforeListing to its start. changeActivity shows the current
// activity on the bar of the current step. faultOfMetadata returns the error in a metadata document.
// goOnWithout asks whether to go on without a failing repository. hideSecrets hides the passwords in a text.
// logWarning adds a warning to the log. showReading shows the current activity for a repository. stopWanted
// returns whether the user has asked the operation to stop. waitForLock shows the reason for a wait and
// returns whether the script must continue to wait.
void YumIO::offerFunctions()
{
    static PyMethodDef definitions[] = {
        {"addBeforeListing", addBeforeListing, METH_O, nullptr},
        {"addToListing", addToListing, METH_O, nullptr},
        {"changeActivity", changeActivity, METH_O, nullptr},
        {"faultOfMetadata", faultOfMetadata, METH_VARARGS, nullptr},
        {"goOnWithout", goOnWithout, METH_VARARGS, nullptr},
        {"hideSecrets", hideSecrets, METH_O, nullptr},
        {"logWarning", logWarning, METH_VARARGS, nullptr},
        {"showReading", showReading, METH_VARARGS, nullptr},
        {"stopWanted", stopWanted, METH_O, nullptr},
        {"waitForLock", waitForLock, METH_O, nullptr},
    };
    const PyRef capsule(PyCapsule_New(this, nullptr, nullptr));
    for (PyMethodDef& definition : definitions) {
        const PyRef function(capsule ? PyCFunction_New(&definition, capsule.get()) : nullptr);
        if (function) {
            PyDict_SetItemString(main_dict, definition.ml_name, function.get());
        }
    }
    PyErr_Clear();
}

// A global function for the script: adds a warning to the log. The arguments are the level and the text.
PyObject* YumIO::logWarning(PyObject* capsule, PyObject* args)
{
    auto* yumIO = static_cast<YumIO*>(PyCapsule_GetPointer(capsule, nullptr));
    unsigned int level = 0;
    const char* text = nullptr;
    if (yumIO == nullptr || PyArg_ParseTuple(args, "Is", &level, &text) == 0) {
        return nullptr;
    }
    yumIO->log(Log::Warning, level, QString::fromUtf8(text));
    Py_RETURN_NONE;
}

PyObject* YumIO::faultOfMetadata(PyObject*, PyObject* args)
{
    const char* path = nullptr;
    const char* root = nullptr;
    if (PyArg_ParseTuple(args, "ss", &path, &root) == 0) {
        return nullptr;
    }
    QString problem;
    {
        // Release the interpreter lock: the check of a distribution's file lists takes seconds, and another
        // thread of the script reads packages during the check.
        const PyThreadStateWrapper released;
        Metadata::check(QFile::decodeName(path), root, problem);
    }
    return PyUnicode_FromString(problem.toUtf8().constData());
}

PyObject* YumIO::addToListing(PyObject* capsule, PyObject* text)
{
    auto* yumIO = static_cast<YumIO*>(PyCapsule_GetPointer(capsule, nullptr));
    if (yumIO == nullptr) {
        return nullptr;
    }
    if (yumIO->transaction.txListed) {
        yumIO->transaction.txText += yumIO->pyString(text);
    }
    Py_RETURN_NONE;
}

PyObject* YumIO::addBeforeListing(PyObject* capsule, PyObject* text)
{
    auto* yumIO = static_cast<YumIO*>(PyCapsule_GetPointer(capsule, nullptr));
    if (yumIO == nullptr) {
        return nullptr;
    }
    if (yumIO->transaction.txListed) {
        yumIO->transaction.txText.prepend(yumIO->pyString(text));
    }
    Py_RETURN_NONE;
}

PyObject* YumIO::changeActivity(PyObject* capsule, PyObject* text)
{
    auto* yumIO = static_cast<YumIO*>(PyCapsule_GetPointer(capsule, nullptr));
    if (yumIO == nullptr) {
        return nullptr;
    }
    if (Unattended::is()) {
        // Stop the script here, because the program ends and no user can see the activity.
        PyErr_SetNone(PyExc_KeyboardInterrupt);
        return nullptr;
    }
    if (yumIO->progress != nullptr) {
        // Start a new item, because a question may have reset the bars. The maximum is 0, because the length
        // of the activity is unknown.
        yumIO->progress->startItem(yumIO->pyString(text), 0, 0);
    }
    Py_RETURN_NONE;
}

// Called while the script waits for a lock, with the reason as a string. None means that the wait is over.
// Returns whether the script must continue to wait.
PyObject* YumIO::waitForLock(PyObject* capsule, PyObject* text)
{
    auto* yumIO = static_cast<YumIO*>(PyCapsule_GetPointer(capsule, nullptr));
    if (yumIO == nullptr) {
        return nullptr;
    }
    if (yumIO->worker == nullptr || QThread::currentThread() == yumIO->thread()) {
        // The graphical thread must not wait for a lock.
        return PyBool_FromLong(text == Py_None ? 1 : 0);
    }
    if (text == Py_None) {
        if (yumIO->progress != nullptr && !Unattended::is()) {
            // Show the step that the wait has interrupted.
            yumIO->progress->startItem(
                yumIO->phase == Collecting ? tr("Reading repositories") : tr("Preparing"), 0, 1);
        }
        yumIO->stopRequest.setWaiting(false);
        return PyBool_FromLong(yumIO->stopRequest.isRequested() ? 0 : 1);
    }
    if (Unattended::is()) {
        Py_RETURN_FALSE;
    }
    const PyRef shown(changeActivity(capsule, text));
    if (!shown) {
        return nullptr;
    }
    yumIO->stopRequest.setWaiting(true);
    return PyBool_FromLong(yumIO->stopRequest.isRequested() ? 0 : 1);
}

// Returns whether the user has requested a stop. If the argument is True and no request exists, refuses all
// further requests, because the next step of the script must not be interrupted.
PyObject* YumIO::stopWanted(PyObject* capsule, PyObject* last)
{
    auto* yumIO = static_cast<YumIO*>(PyCapsule_GetPointer(capsule, nullptr));
    if (yumIO == nullptr) {
        return nullptr;
    }
    const bool wanted = last == Py_True ? !yumIO->stopRequest.refuse() : yumIO->stopRequest.isRequested();
    return PyBool_FromLong(wanted ? 1 : 0);
}

QStringList YumIO::knownDirectories()
{
    QStringList result;
    if (yumIO) {
        PyGILStateWrapper lock(true);
        const PyRef known(attribute(yumIO.get(), "knownDirectories"));
        const Py_ssize_t count = known && PyList_Check(known.get()) ? PyList_GET_SIZE(known.get()) : 0;
        for (Py_ssize_t i = 0; i < count; ++i) {
            result.append(pyString(PyList_GET_ITEM(known.get(), i)));
        }
    }
    return result;
}

QString YumIO::restriction()
{
    if (!yumIO) {
        return QString();
    }
    PyGILStateWrapper lock(true);
    const PyRef text(pyMethodCall(yumIO.get(), "restriction", "()"));
    // Ignore a failure, because the caller uses the result only for a notice. An impossible transaction fails
    // anyway.
    PyErr_Clear();
    return text ? pyString(text.get()) : QString();
}

QString YumIO::getYumVar(QString variable)
{
    PyGILStateWrapper lock(true);
    const PyRef conf(PyObject_GetAttrString(base.get(), "conf"));
    if (!conf) {
        internalError(tr("Internal error: conf not evaluable"));
        return QString();
    }
    PyRef value(PyObject_GetAttrString(conf.get(), variable.toUtf8().constData()));
    if (!value) {
        internalError(tr("Internal error: yum var %1 not found").arg(variable));
        return QString();
    }
    return pyStringXDec(value.release());
}

QString YumIO::expandVariables(QString text)
{
    PyGILStateWrapper lock(true);
    if (PyObject_HasAttrString(yumIO.get(), "expandVariables") != 0) {
        PyRef expanded(pyMethodCall(yumIO.get(), "expandVariables", "(s)", text.toUtf8().constData()));
        if (expanded) {
            return pyStringDec(expanded.release());
        }
        PyErr_Clear();
        return text;
    }
    // If the script has no method expandVariables(), replace only the following three variables.
    for (const char* variable : {"basearch", "arch", "releasever"}) {
        const QString name = QLatin1String(variable);
        const QString reference = QLatin1Char('$') + name;
        if (text.contains(reference)) {
            text.replace(reference, getYumVar(name));
        }
    }
    return text;
}

QString YumIO::getBiArch(const QString& arch)
{
    // Store each answer: only a few architectures exist, and the script always gives the same answer for the
    // same architecture.
    auto known = biArchByArch.constFind(arch);
    if (known == biArchByArch.constEnd()) {
        const PyRef answer(pyMethodCall(yumIO.get(), "getBiArch", "(s)", arch.toUtf8().constData()));
        if (!answer) {
            return pyString(nullptr); // not stored: the next call may succeed
        }
        known = biArchByArch.insert(arch, pyString(answer.get()));
    }
    return known.value();
}

QString YumIO::dnfVersionStr()
{
    if (!dnfVersionLooked) {
        dnfVersionLooked = true;
        PyGILStateWrapper lock(true);
        if (PyObject* module = pyLookup("dnf", true)) {
            if (PyObject* version = attribute(module, "__version__")) {
                dnfVersionText = pyStringDec(version);
            }
        }
    }
    return dnfVersionText;
}

quint64 YumIO::dnfVersion()
{
    const QString text = dnfVersionStr();
    if (text.isEmpty()) {
        static bool warned = false;
        if (!warned) {
            warned = true;
            warning(tr("Internal error: dnf version not found"));
        }
        return 0;
    }
    return splitVersion(text);
}

void YumIO::clearEntries()
{
    FlagScope clearingFlag(clearing);
    FlagScope rebuildingFlag(rebuilding);
    QEventLoop loop;
    ClearEntriesThread thread(this, loop);
    execWorkThread(loop, thread);
}

void YumIO::clearEntriesReal()
{
    blocker.block();
    PyGILStateWrapper lock(true);
    forgetEntries([](PyObject* object) { Py_DECREF(object); });
}

void YumIO::clearEntriesBeforeQuit()
{
    FlagScope flag(clearing);
    forgetEntries({});
}

void YumIO::forgetEntries(const std::function<void(PyObject*)>& drop)
{
    transaction.actionEntries.clear();
    biArchByArch.clear();
    updateAdvisoryIds.clear();
    advisoryList.clear();
    advisoriesLoaded = false;
    records.clear(drop);
}

Package::Entry* YumIO::findPackage(const QString& name)
{
    return records.findPackage(name, getBiArch(basearch));
}

Package::Entry* YumIO::findPackage(const QString& name, const QString& arch)
{
    return records.find(EntryKey(false, name, getBiArch(arch)));
}

QString YumIO::getState(const Package::Entry& entry) const
{
    return Words::described(entry.state);
}

QString YumIO::getKind(const Package::Entry& entry) const
{
    return Words::described(entry.kind);
}

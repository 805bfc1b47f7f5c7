// SPDX-License-Identifier: GPL-2.0-or-later

// Loads extra data and reads the fields of one record.
//
// Functions whose names end in Real run on a worker. text() and the functions that it calls run on the
// graphical thread for a description, and on a worker for a search. All other functions run on the graphical
// thread.

#include "yumio/YumIO.h"

#include "python/CPython.h"
#include "services/Progress.h"
#include "services/YumIOCapturers.h"
#include "yumio/OperationScope.h"
#include "yumio/WorkerThreads.h"

namespace {

// Calls the function for each item of a Python list. If an item cannot be read, returns false with a pending
// exception. `list` may be null only if an exception is already pending.
template <typename Use> bool forEach(PyObject* list, Use use)
{
    const PyRef iterator(list != nullptr ? PyObject_GetIter(list) : nullptr);
    while (iterator) {
        const PyRef item(PyIter_Next(iterator.get()));
        if (!item) {
            break;
        }
        use(item.get());
    }
    return PyErr_Occurred() == nullptr;
}

} // namespace

bool YumIO::collectFileLists()
{
    if (fileListsLoaded) {
        return true;
    }
    QEventLoop loop;
    CollectFileListsThread thread(this, loop);
    execWorkThread(loop, thread);
    return outcome(thread.result);
}

bool YumIO::collectFileListsReal()
{
    return collectExtra(tr("Collecting File Lists"), tr("file lists"),
                        tr("Loading file lists: Total Progress"), "collectFileLists", tr("collect filelists"),
                        fileListsLoaded);
}

bool YumIO::collectOtherData()
{
    if (otherDataLoaded) {
        return true;
    }
    QEventLoop loop;
    CollectOtherDataThread thread(this, loop);
    execWorkThread(loop, thread);
    return outcome(thread.result);
}

bool YumIO::collectOtherDataReal()
{
    return collectExtra(tr("Collecting Miscellaneous data"), tr("miscellaneous data"),
                        tr("Loading miscellaneous data: Total Progress"), "collectOtherData",
                        tr("collect miscellaneous data"), otherDataLoaded);
}

bool YumIO::collectExtra(const QString& heading, const QString& dataName, const QString& totalText,
                         const char* method, const QString& what, bool& loaded)
{
    OperationScope operationScope(*this);
    log(Log::Action, 0, heading);
    readingName = dataName;
    readingCount = 0;
    readingRepo.clear();
    readingIsShown = false;
    PyGILStateWrapper lock(true);
    PhaseScope phaseScope(phase);
    phase = Collecting; // this operation downloads nothing but metadata

    progress->startTotal(totalText, 15000);
    progress->startItem(tr("Reading repositories"), 1000, 1);
    progress->setupItemActs(14000, enabledRepos.count());
    bool raised = false;
    PyRef result;
    {
        ExceptScope scope(*this);
        commExceptSetup();
        {
            YumIOCapturersUser capturersUser(capturers, this);
            result = PyRef(pyMethodCall(yumIO.get(), method, "()"));
        }
        raised = stopRaised(result.get()) || commExceptRaised(result.get(), what);
    }
    if (!result) {
        if (!raised) {
            internalError(tr("Internal error: execution of yumIO.%1 failed").arg(QLatin1String(method)));
        }
        progress->reset();
        return false;
    }
    progress->endItemActs();
    loaded = true;
    Q_EMIT collectedExtraData();
    return true;
}

QString YumIO::text(const Package::Entry& entry, Fields::Field field)
{
    const Fields::Row& row = Fields::row(field);
    switch (row.source) {
    case Fields::Source::Record:
        return entry.*row.member;
    case Fields::Source::RecordKind:
        return getKind(entry);
    case Fields::Source::Text:
        return textOf(entry, row.attribute);
    case Fields::Source::Time:
        return timeOf(entry, row.attribute);
    case Fields::Source::Dependencies:
        return getRelDepList(entry.pyObject, row.attribute);
    case Fields::Source::Header:
        return getRpmList(entry.pyObject, row.attribute);
    case Fields::Source::FileList:
        return getFiles(entry);
    case Fields::Source::ChangeLog:
        return getChangeLog(entry);
    case Fields::Source::VersionLock:
        return versionLockState.isLocked(entry)
                   ? tr("Locked by %1").arg(versionLockState.lines.value(entry.name))
                   : QString();
    case Fields::Source::Members:
        return getGroupPkgs(entry, row.attribute);
    }
    return QString();
}

QString YumIO::textOf(const Package::Entry& entry, const char* attr)
{
    PyGILStateWrapper lock(true);
    return simpleString(entry.pyObject, attr);
}

QString YumIO::timeOf(const Package::Entry& entry, const char* attr)
{
    PyGILStateWrapper lock(true);
    PyRef time(attribute(entry.pyObject, attr));
    if (!time || time.get() == Py_None) {
        return QString();
    }
    const quint64 seconds = pyTimeDec(time.release());
    // The install time is 0 if the package is not installed.
    return seconds == 0 ? QString() : timeText(seconds);
}

QString YumIO::getFiles(const Package::Entry& entry)
{
    PyGILStateWrapper lock(true);
    if (entry.kind == Package::Group) {
        return QString();
    }
    // Keep the value of the attribute, because the script may need a long time to create the list.
    PyRef files(PyObject_GetAttrString(entry.pyObject, "files"));
    if (!files && PyErr_ExceptionMatches(PyExc_AttributeError) != 0) {
        PyErr_Clear();
        return QString();
    }
    if (!fileListsLoaded) {
        files = PyRef();
        PyErr_Clear();
        // Release the interpreter lock, because the worker that loads the file lists needs it.
        lock.release();
        const bool loaded = collectFileLists();
        lock.ensure();
        if (!loaded) {
            return QString();
        }
        files = PyRef(PyObject_GetAttrString(entry.pyObject, "files"));
    }
    QStringList paths;
    if (!forEach(files.get(), [this, &paths](PyObject* path) { paths.append(pyString(path)); })) {
        missingAttribute("files");
        return QString();
    }
    return makeSortedUniq(paths);
}

void YumIO::loadChangeLog(const Package::Entry& entry)
{
    if (entry.kind == Package::Group || entry.state == Package::Installed || !otherDataLoaded) {
        return;
    }
    QEventLoop loop;
    LoadChangeLogThread thread(this, loop, entry);
    execWorkThread(loop, thread);
}

void YumIO::loadChangeLogReal(const Package::Entry& entry)
{
    OperationScope operationScope(*this);
    PyGILStateWrapper lock(true);
    YumIOCapturersUser capturersUser(capturers, this);
    const PyRef items(PyObject_GetAttrString(entry.pyObject, "changelogs"));
    PyErr_Clear();
}

QString YumIO::getChangeLog(const Package::Entry& entry)
{
    if (entry.kind == Package::Group) {
        return QString();
    }
    if (!collectOtherData()) {
        return QString();
    }
    PyGILStateWrapper lock(true);
    const PyRef items(PyObject_GetAttrString(entry.pyObject, "changelogs"));
    if (items.get() == Py_None) {
        return QString();
    }
    QString text;
    const auto append = [this, &text](PyObject* item) {
        if (!text.isEmpty()) {
            text += QLatin1String("\n\n");
        }
        const PyRef time(PyMapping_GetItemString(item, "timestamp"));
        text += QLatin1String("* ") + pyDate(time.get()) + QLatin1Char(' ') +
                pyMappingString(item, "author") + QLatin1Char('\n') + pyMappingString(item, "text");
    };
    if (!forEach(items.get(), append)) {
        missingAttribute("changelogs");
        return QString();
    }
    return text;
}

// Reports each missing attribute only once: a search reads the attribute of thousands of packages.
void YumIO::missingAttribute(const char* attr)
{
    if (missingAttributes.contains(attr)) {
        PyErr_Clear();
        return;
    }
    missingAttributes.insert(attr);
    internalError(tr("Internal error: cannot find package's %1").arg(QLatin1String(attr)));
}

QString YumIO::getRelDepList(PyObject* pkg, const char* attr)
{
    PyGILStateWrapper lock(true);
    const PyRef items(PyObject_GetAttrString(pkg, attr));
    QStringList texts;
    const auto append = [this, &texts](PyObject* item) { texts.append(pyStringDec(PyObject_Str(item))); };
    if (!forEach(items.get(), append)) {
        missingAttribute(attr);
        return QString();
    }
    return makeSorted(texts);
}

QString YumIO::getGroupPkgs(const Package::Entry& entry, const char* item)
{
    PyGILStateWrapper lock(true);
    const PyRef list(getGroupItem(entry, item));
    if (!list || list.get() == Py_None) {
        return QString();
    }
    QStringList texts;
    const auto append = [this, &texts](PyObject* pkg) { texts.append(pyStringDec(PyObject_Str(pkg))); };
    if (!forEach(list.get(), append)) {
        internalError(tr("Internal error: group %1.%2 not evaluable").arg(entry.name, QLatin1String(item)));
        return QString();
    }
    return makeSorted(texts);
}

QString YumIO::getRpmList(PyObject* pkg, const char* tag)
{
    PyGILStateWrapper lock(true);
    const PyRef header(attribute(pkg, "hdr"));
    if (!header) {
        return QString();
    }
    const PyRef value(headerValue(header.get(), tag));
    if (!value || value.get() == Py_None) {
        return QString();
    }
    QStringList texts;
    if (!forEach(value.get(), [this, &texts](PyObject* item) { texts.append(pyString(item)); })) {
        handleException();
        return QString();
    }
    return texts.join(QLatin1Char('\n'));
}

PyObject* YumIO::getRpmHdrValue(PyObject* pkg, const char* tag)
{
    PyGILStateWrapper lock(true);
    const PyRef header(attribute(pkg, "hdr"));
    if (!header) {
        error(tr("getRpmHdrValue called for package with no hdr (i.e. not installed)"));
        return nullptr;
    }
    return headerValue(header.get(), tag);
}

PyObject* YumIO::headerValue(PyObject* header, const char* tag)
{
    const QByteArray key = QByteArray("RPMTAG_") + tag;
    PyObject* tagNumber = PyDict_GetItemString(rpmDict, key.constData());
    if (tagNumber == nullptr) {
        error(tr("Internal error: cannot find rpm.%1").arg(QString::fromLatin1(key)));
        return nullptr;
    }
    PyObject* value = PyObject_GetItem(header, tagNumber);
    if (value == nullptr) {
        if (PyErr_ExceptionMatches(PyExc_LookupError) == 0) {
            handleException();
        }
        PyErr_Clear(); // the package's header lacks this tag
    }
    return value;
}

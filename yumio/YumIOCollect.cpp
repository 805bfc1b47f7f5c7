// SPDX-License-Identifier: GPL-2.0-or-later

// Collects packages and groups. All functions except collect() run on a worker thread.

#include "yumio/YumIO.h"

#include "python/CPython.h"
#include "python/GarbageCollectorPause.h"
#include "services/Progress.h"
#include "services/Unattended.h"
#include "services/YumIOCapturers.h"
#include "yumio/EndSignals.h"
#include "yumio/OperationScope.h"
#include "yumio/WorkerThreads.h"

namespace {

// Whenever the collection has read this number of packages, it updates the progress bar and checks whether it
// must stop.
constexpr Steps packagesAtOnce = 256;

// The maximum number of lines of an error in a question. The text may name a hundred mirrors, and a question
// cannot scroll.
constexpr int mostLines = 12;

QString firstLines(const QString& text)
{
    const QStringList lines = text.split(QLatin1Char('\n'));
    return lines.count() <= mostLines
               ? text
               : lines.mid(0, mostLines).join(QLatin1Char('\n')) + QLatin1String("\n...");
}

} // namespace

// Converts texts that many consecutive packages have in common, and skips the conversion of a text that
// equals the previous text. Only a thread with the interpreter lock may use and delete the object.
class YumIO::RepeatedText
{
public:
    explicit RepeatedText(YumIO& itsBackEnd) : backEnd(itsBackEnd) {}

    // Takes over a new reference, or NULL. All records share the memory of equal results.
    const QString& operator()(PyObject* object)
    {
        PyRef text(object);
        if (!text || !previous || !PyUnicode_Check(object) || !PyUnicode_Check(previous.get()) ||
            PyUnicode_Compare(object, previous.get()) != 0) {
            converted = backEnd.records.shared(backEnd.pyString(object));
            previous = std::move(text);
        }
        return converted;
    }

private:
    YumIO& backEnd;
    PyRef previous;
    QString converted;
};

bool YumIO::collect(const QHash<QString, bool>& repoEnable, Source source, RecordTexts::Reader* reader)
{
    FlagScope flag(rebuilding);
    rowReader = reader;
    unwanted.clear();
    skipped.clear();
    QEventLoop loop;
    CollectThread thread(this, loop, repoEnable, source);
    execWorkThread(loop, thread, source == Source::Repositories);
    rowReader = nullptr;
    return outcome(thread.result);
}

bool YumIO::stopCollection()
{
    progress->reset();
    return false;
}

bool YumIO::collectReal(const QHash<QString, bool>& repoEnable, Source source)
{
    OperationScope operationScope(*this);
    log(Log::Action, 0, tr("Initialization"));
    PyGILStateWrapper lock(true);
    // Nearly all new objects stay: the modules of plug-ins, and the packages, which the records keep.
    const GarbageCollectorPause pause;
    PhaseScope phaseScope(phase);
    if (repos) {
        // An earlier collection has used much memory. Return this memory, because the thread of this
        // collection may use another area of memory.
        returnFreeMemory();
    }

    // After this collection, package objects can read the file lists and the change logs, so later operations
    // need not load them.
    fileListsLoaded = true;
    otherDataLoaded = true;

    progress->startTotal(tr("Initializing: Total Progress"), 18000);
    progress->startItem(tr("Preparing"), 100, 1);
    if (!lockPackages() || !readConfiguration(repoEnable) || Unattended::is()) {
        return false;
    }
    if (stopRequest.isRequested()) {
        return stopCollection();
    }
    if (!readRepos(source)) {
        return false;
    }
    // From now on, a stop would be useless: the remaining steps only compute, and a new collection from the
    // cache would take at least as long as these steps.
    stopRequest.setStoppable(false);
    progress->endItemActs();
    basearch = getYumVar(QStringLiteral("basearch"));
    localRepos.clear();
    // After a failure too, no thread may use the records when this function returns.
    const RecordTexts::Scope textsScope(recordTexts);
    if (!collectUpdates() || !collectInstalledAndAvailable()) {
        return false;
    }
    phase = Idle;
    if (!collectAllGroups()) {
        return false;
    }
    const PyRef done(pyMethodCall(yumIO.get(), "collectDone", "()"));
    collectReplacements();
    collectVersionLocks();
    collectUpdateAdvisories();
    records.publish();
    return true;
}

bool YumIO::lockPackages()
{
    if (locked) {
        return true;
    }
    ExceptScope scope(*this, {classes[LockError]});
    const PyRef result(pyMethodCall(yumIO.get(), "lock", "()"));
    if (pyExceptMatches(result.get(), classes[LockError])) {
        pythonException(tr("Unable to obtain yum lock"));
    }
    if (!result) {
        progress->reset();
        return false;
    }
    locked = true;
    // `result` is the path of the lock file as a string, or another object if the script does not know the
    // path.
    EndSignals::setLockFile(PyUnicode_Check(result.get()) ? pyString(result.get()).toUtf8().constData()
                                                          : nullptr);
    return true;
}

bool YumIO::readConfiguration(const QHash<QString, bool>& repoEnable)
{
    {
        // Capture the output: the script now loads the package manager's plug-ins, which may print text or
        // start programs that print text.
        YumIOCapturersUser capturersUser(capturers, this);
        repos = PyRef(PyObject_GetAttrString(base.get(), "repos"));
    }
    if (!repos) {
        return internalError(tr("Internal error: yumIO.base.repos not evaluable"));
    }
    if (!PyDict_Check(repos.get())) {
        return internalError(tr("Internal error: yumIO.base.repos not a dictionary"));
    }
    useRepos(base.get(), repoEnable);
    phase = Collecting;
    enabledRepos = collectRepos(repos.get());
    readingName = tr("contents");
    readingCount = 0;
    readingRepo.clear();
    readingIsShown = false;
    allUnwanted = false;
    if (PyDict_Size(repos.get()) == 0) {
        error(tr(
            "No repositories are configured.\nUnder the Repositories menu, Edit Configuration can be used to "
            "configure repositories."));
        return false;
    }
    if (enabledRepos.isEmpty() && everUnwanted) {
        // The user has switched off all failing repositories. Go on, because the table still shows the
        // installed packages.
        log(Log::Warning, 0, tr("All repositories are disabled for this session."));
    } else if (enabledRepos.isEmpty()) {
        error(
            tr("No repositories are enabled.\nUnder the Repositories menu, Edit Configuration can be used to "
               "configure repositories."));
        return false;
    }
    return true;
}

bool YumIO::readRepos(Source source)
{
    progress->startItem(tr("Reading repositories"), 900, 0);
    progress->setupItemActs(14000, enabledRepos.count());
    ExceptScope scope(*this, {classes[RepoError], classes[BdbQuit]});
    PyRef result;
    {
        YumIOCapturersUser capturersUser(capturers, this);
        const char* const method = source == Source::Cache ? "setupCachedRepos" : "setupRepos";
        result = PyRef(pyMethodCall(yumIO.get(), method, "()"));
    }
    if (stopRaised(result.get())) {
        return stopCollection();
    }
    showRemarks();
    readSkippedRepos();
    if (pyExceptMatches(result.get(), classes[RepoError]) ||
        pyExceptMatches(result.get(), classes[BdbQuit])) {
        pythonExceptionV(tr("Unable to initialize"));
    }
    if (!result) {
        progress->reset();
        return false;
    }
    return true;
}

void YumIO::readSkippedRepos()
{
    PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
    PyErr_Fetch(&type, &value, &traceback);
    const PyRef found(attribute(yumIO.get(), "skippedRepos"));
    if (found && PyList_Check(found.get())) {
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(found.get()); ++i) {
            skipped.append(pyString(PyList_GET_ITEM(found.get(), i)));
        }
    }
    PyErr_Restore(type, value, traceback);
}

PyObject* YumIO::collected(const char* method, const QString& what, bool capture)
{
    if (Unattended::is() || stopRequest.isRequested()) {
        return nullptr; // nobody needs the packages any more
    }
    ExceptScope scope(*this);
    commExceptSetup();
    PyRef result;
    if (capture) {
        YumIOCapturersUser capturersUser(capturers, this);
        result = PyRef(pyMethodCall(yumIO.get(), method, "()"));
    } else {
        result = PyRef(pyMethodCall(yumIO.get(), method, "()"));
    }
    if (!result) {
        if (!stopRaised(nullptr) && !commExceptRaised(nullptr, what)) {
            internalError(tr("Internal error: execution of yumIO.%1 failed").arg(QLatin1String(method)));
        }
        progress->reset();
    }
    return result.release();
}

bool YumIO::collectUpdates()
{
    progress->startItem(tr("Collecting updatable packages"), 1000, 0);
    const PyRef updates(collected("collectUpdates", tr("collect updatable packages"), true));
    if (!updates || !collectSet(updates.get(), Package::Updatable)) {
        return false;
    }
    addCounterparts();
    return true;
}

// Handles updates that change the architecture to or from "noarch". Such an update and the installed package
// may have different bi-arch classes. This function adds the keys of these installed packages to the update's
// record. Later, collectSet() finds the update's record by such a key, and adds the installed package to the
// record's chain.
void YumIO::addCounterparts()
{
    const auto key = [this](PyObject* pkg) {
        return EntryKey(false, pyStringDec(attribute(pkg, NameAttribute)),
                        getBiArch(pyStringDec(attribute(pkg, ArchAttribute))));
    };
    const PyRef pairs(PyObject_GetAttrString(yumIO.get(), "counterparts"));
    const Py_ssize_t count = pairs && PyList_Check(pairs.get()) ? PyList_GET_SIZE(pairs.get()) : 0;
    for (Py_ssize_t i = 0; i < count; ++i) {
        PyObject* update = nullptr;
        PyObject* installed = nullptr;
        if (PyArg_ParseTuple(PyList_GET_ITEM(pairs.get(), i), "OO", &update, &installed) == 0) {
            break;
        }
        if (Package::Entry* const entry = records.find(key(update))) {
            records.addKey(key(installed), entry);
        }
    }
    PyErr_Clear();
}

bool YumIO::collectInstalledAndAvailable()
{
    const QString collecting = tr("Collecting installed and available packages");
    progress->startItem(collecting, 200, 0);
    const PyRef all(collected("collectAll", tr("collect installed and available packages"), true));
    if (!all || !collectField(all.get(), "installed", Package::Installed) || !collectExcluded(all.get())) {
        return false;
    }
    progress->startItem(collecting, 800, 0);
    if (!collectField(all.get(), "available", Package::Available)) {
        return false;
    }
    recordTexts.endRows();
    return true;
}

bool YumIO::collectAllGroups()
{
    progress->startItem(tr("Collecting groups"), 1000, 0);
    const PyRef groups(collected("collectGroups", tr("collect groups"), false));
    showRemarks();
    if (!groups) {
        return false;
    }
    if (!collectGroups(groups.get())) {
        progress->reset();
        return false;
    }
    return true;
}

void YumIO::collectReplacements()
{
    const PyRef pairs(PyObject_GetAttrString(yumIO.get(), "replacements"));
    QStringList lines;
    const auto record = [this](PyObject* pkg) {
        return findPackage(pyStringDec(attribute(pkg, NameAttribute)),
                           pyStringDec(attribute(pkg, ArchAttribute)));
    };
    const Py_ssize_t count = pairs && PyList_Check(pairs.get()) ? PyList_GET_SIZE(pairs.get()) : 0;
    for (Py_ssize_t i = 0; i < count; ++i) {
        PyObject* replaced = nullptr;
        PyObject* other = nullptr;
        if (PyArg_ParseTuple(PyList_GET_ITEM(pairs.get(), i), "OO", &replaced, &other) == 0) {
            break;
        }
        const PyRef replacedText(PyObject_Str(replaced));
        const PyRef otherText(PyObject_Str(other));
        if (!replacedText || !otherText) {
            break;
        }
        const QString before = pyString(replacedText.get());
        const QString after = pyString(otherText.get());
        records.addReplacement(record(replaced), before, record(other), after);
        lines.append(before + QStringLiteral(" -> ") + after);
    }
    PyErr_Clear();
    if (!lines.isEmpty()) {
        log(Log::Warning, 2,
            tr("Other packages replace these installed packages. Mark the replacements for "
               "installation, or keep the installed packages:\n%1")
                .arg(lines.join(QLatin1Char('\n'))));
    }
}

// Asks whether to go on without a failing repository. The arguments are the identifier of this repository,
// the reason, and the number of failing repositories after this one. Returns True if the collection continues
// without this repository.
PyObject* YumIO::goOnWithout(PyObject* capsule, PyObject* args)
{
    auto* yumIO = static_cast<YumIO*>(PyCapsule_GetPointer(capsule, nullptr));
    const char* id = nullptr;
    const char* reason = nullptr;
    int others = 0;
    if (yumIO == nullptr || PyArg_ParseTuple(args, "ssi", &id, &reason, &others) == 0) {
        return nullptr;
    }
    if (yumIO->dialogs == nullptr || yumIO->stopRequest.isRequested()) {
        Py_RETURN_FALSE;
    }
    const QString repository = QString::fromUtf8(id);
    const QString fault = QString::fromUtf8(reason);
    enum Answer { Yes = 0, No = 1, YesToAll = 2 };
    int answer = Yes;
    if (!yumIO->allUnwanted) {
        if (fault.count(QLatin1Char('\n')) >= mostLines) {
            yumIO->log(Log::Info, 0, fault);
        }
        if (yumIO->progress != nullptr) {
            yumIO->progress->changeItemActivity(tr("Reading repositories"));
            yumIO->progress->changeItemActSteps(0, 1);
        }
        const QString question =
            tr("The repository %1 cannot be read:\n%2\n\nGo on without it for this session?")
                .arg(repository, firstLines(Log::withoutPasswords(fault)));
        answer = yumIO->dialogs->warning(tr("Repositories"), question, tr("Yes"), tr("No"),
                                         others > 0 ? tr("Yes to &All") : QString(), Yes, No);
    }
    if (answer == No) {
        Py_RETURN_FALSE;
    }
    yumIO->allUnwanted = yumIO->allUnwanted || answer == YesToAll;
    yumIO->everUnwanted = true;
    yumIO->unwanted.append(repository);
    yumIO->log(Log::Warning, 0,
               tr("VYRE does not use the repository %1 in this session:\n%2").arg(repository, fault));
    Py_RETURN_TRUE;
}

void YumIO::useRepos(PyObject*, const QHash<QString, bool>& repoEnable)
{
    for (auto i = repoEnable.constBegin(); i != repoEnable.constEnd(); ++i) {
        if (pyDictGetItem(repos.get(), i.key()) == nullptr) {
            continue;
        }
        ExceptScope scope(*this, {classes[RepoError]});
        const PyRef result(pyMethodCall(yumIO.get(), i.value() ? "enableRepo" : "disableRepo", "(s)",
                                        i.key().toUtf8().constData()));
        if (pyExceptMatches(result.get(), classes[RepoError])) {
            warning(tr("unable to setup repository %1:\n%2").arg(i.key(), pyStringDec(pyExceptValuef())));
        }
    }
}

QStringList YumIO::collectRepos(PyObject* reposDict)
{
    QStringList enabled;
    PyObject* id = nullptr;
    PyObject* repo = nullptr;
    Py_ssize_t position = 0;
    while (PyDict_Next(reposDict, &position, &id, &repo)) {
        const PyRef flag(attribute(repo, "enabled"));
        if (flag && PyLong_Check(flag.get()) && PyObject_IsTrue(flag.get()) == 1) {
            enabled.append(pyString(id));
        }
    }
    return enabled;
}

bool YumIO::collectField(PyObject* all, const char* field, Package::State state)
{
    const PyRef set(PyObject_GetAttrString(all, field));
    if (!set) {
        return internalError(tr("Internal error: yumIO.collectAll.%1 not found").arg(QLatin1String(field)));
    }
    return collectSet(set.get(), state);
}

bool YumIO::collectExcluded(PyObject* all)
{
    const PyRef set(attribute(all, "excluded"));
    return !set || collectSet(set.get(), Package::Installed, true);
}

bool YumIO::collectSet(PyObject* set, Package::State state, bool excluded)
{
    const PyRef iterator(PyObject_GetIter(set));
    if (!iterator) {
        return internalError(tr("Internal error: the packages are not iterable"));
    }
    // Reserve memory, so that the index does not grow step by step. If the hint is wrong, the index still
    // grows when necessary.
    const Py_ssize_t hint = PyObject_LengthHint(set, 0);
    if (hint > 0) {
        records.reserve(static_cast<int>(hint));
        if (!excluded) {
            progress->changeItemActSteps(0, static_cast<Steps>(hint));
        }
    }
    PyErr_Clear();
    if (state == Package::Available) {
        // From now on, the texts of rows do not change: all installed versions are in their chains.
        const QVector<Package::Entry*>& earlier = records.collected();
        recordTexts.beginRows(rowReader, {earlier.cbegin(), earlier.cend()}, static_cast<int>(hint));
    }
    bool comparisonFailed = false;
    const auto isBetter = [this, &comparisonFailed](const Package::Entry& best, const Package::Entry& other) {
        // If isBetterThan() fails for one pair of packages, it fails for thousands of pairs. So report only
        // the first failure.
        ExceptScope scope(*this);
        if (comparisonFailed) {
            pyExceptExpect(PyExc_Exception);
        }
        const PyRef better(pyMethodCall(yumIO.get(), "isBetterThan", "(O,O)", best.pyObject, other.pyObject));
        comparisonFailed = comparisonFailed || !better;
        PyErr_Clear();
        return better.get() == Py_True;
    };
    RepeatedText archOf(*this);
    RepeatedText repoOf(*this);
    const QChar* repo = nullptr; // the characters of the previous package's repository identifier
    for (Steps done = 0;; ++done) {
        if (done % packagesAtOnce == 0) {
            if (!excluded) {
                progress->setItemValue(done);
            }
            if (stopRequest.isRequested()) {
                return stopCollection();
            }
        }
        const PyRef pkg(PyIter_Next(iterator.get()));
        if (!pkg) {
            break;
        }
        const QString name = pyStringDec(attribute(pkg.get(), NameAttribute));
        const QString arch = archOf(attribute(pkg.get(), ArchAttribute));
        const EntryKey key(false, name, getBiArch(arch));
        Package::Entry*& entry = records.place(key);
        if (entry != nullptr) {
            if (state == Package::Installed) {
                Package::Entry*& further = Records::endOfChain(entry);
                collectPkg(further, state, pkg.get(), key, arch, repoOf);
                further->excluded = excluded;
            }
            continue;
        }
        collectPkg(entry, state, pkg.get(), key, arch, repoOf);
        entry->excluded = excluded;
        // Most packages belong to the same repository as the previous package. The records of both packages
        // then share the text of the repository's identifier.
        if (state != Package::Installed && entry->repo.constData() != repo) {
            repo = entry->repo.constData();
            noteRepository(*entry);
        }
        records.added(entry);
        records.rank(entry, isBetter);
    }
    if (PyErr_Occurred() != nullptr) {
        return internalError(tr("Internal error: the packages cannot be walked"));
    }
    return true;
}

// Finds out whether the repository of this package is local. The script is called only once for each
// repository: all packages of a repository have the same base URL.
void YumIO::noteRepository(const Package::Entry& entry)
{
    if (localRepos.contains(entry.repo)) {
        return;
    }
    bool local = false;
    if (PyObject_HasAttrString(yumIO.get(), "isLocal") != 0) {
        const PyRef result(pyMethodCall(yumIO.get(), "isLocal", "(O)", entry.pyObject));
        local = result.get() == Py_True;
        PyErr_Clear();
    }
    localRepos.insert(entry.repo, local);
}

void YumIO::collectPkg(Package::Entry*& slot, Package::State state, PyObject* pkg, const EntryKey& key,
                       const QString& arch, RepeatedText& repoOf)
{
    auto* entry = new Package::Entry;
    slot = entry;
    Py_INCREF(pkg);
    entry->pyObject = pkg;
    entry->action = Package::None;
    entry->state = state;
    entry->kind = getPkgKind(pkg);
    entry->name = key.name;
    entry->verRel = getVerRel(pkg);
    entry->repo = repoOf(attribute(pkg, RepoIdAttribute));
    entry->arch = arch;
    entry->biArch = key.arch;
    entry->size = sizeOf(pkg);
    entry->summary = pyStringDec(attribute(pkg, SummaryAttribute));
    entry->buildTime = buildTimeOf(pkg);
    recordTexts.add(entry);
}

bool YumIO::collectGroups(PyObject* groups)
{
    const PyRef history(PyObject_GetAttrString(base.get(), "history"));
    if (!history) {
        return internalError(tr("Internal error: yumIO.base.history not evaluable"));
    }
    const PyRef historyGroup(PyObject_GetAttrString(history.get(), "group"));
    if (!historyGroup) {
        return internalError(tr("Internal error: yumIO.base.history.group not evaluable"));
    }
    const PyRef iterator(PyObject_GetIter(groups));
    if (!iterator) {
        return internalError(tr("Internal error: the groups are not iterable"));
    }
    QString historyFault;
    for (;;) {
        const PyRef group(PyIter_Next(iterator.get()));
        if (!group) {
            break;
        }
        const PyRef visible(attribute(group.get(), "uservisible"));
        if (!visible || PyObject_IsTrue(visible.get()) != 1) {
            PyErr_Clear();
            continue;
        }
        const PyRef name(attribute(group.get(), "name"));
        if (!name) {
            return internalError(tr("Internal error: group without name"));
        }
        const QString text = pyString(name.get());
        Package::Entry*& entry = records.place(EntryKey(true, text, QString()));
        if (entry == nullptr) {
            collectGroup(entry, group.get(), text, historyGroup.get(), historyFault);
            records.added(entry);
        }
    }
    if (PyErr_Occurred() != nullptr) {
        return internalError(tr("Internal error: the groups cannot be walked"));
    }
    // Do not repeat a warning that an earlier collection has already shown.
    if (!historyFault.isEmpty() && historyFault != reportedHistoryFault) {
        reportedHistoryFault = historyFault;
        warning(tr("VYRE does not know which groups are installed, because it cannot read the transaction "
                   "history.\n"
                   "%1\n"
                   "If the file is damaged, move it to another place. The package manager then creates a "
                   "new file.")
                    .arg(historyFault));
    }
    return true;
}

void YumIO::collectGroup(Package::Entry*& slot, PyObject* group, QString name, PyObject* historyGroup,
                         QString& historyFault)
{
    auto* entry = new Package::Entry;
    slot = entry;
    Py_INCREF(group);
    entry->pyObject = group;
    entry->action = Package::None;
    entry->kind = Package::Group;
    entry->name = name;
    PyRef installed;
    if (historyFault.isEmpty()) {
        ExceptScope scope(*this, {PyExc_Exception});
        installed = PyRef(pyMethodCall(historyGroup, "get", "(s)",
                                       pyStringDec(attribute(group, "id")).toUtf8().constData()));
        if (pyExceptMatches(installed.get(), PyExc_Exception)) {
            const PyRef exception(pyExceptValue());
            PyErr_Clear();
            const PyRef text(PyObject_Str(exception.get()));
            historyFault = text ? pyString(text.get()) : QString();
            if (historyFault.isEmpty()) {
                historyFault = QLatin1String(Py_TYPE(exception.get())->tp_name);
            }
        }
    }
    PyErr_Clear();
    if (installed && installed.get() != Py_None) {
        entry->state = Package::Installed;
    } else {
        entry->state = upToDateGroup(*entry) ? Package::Available : Package::Updatable;
    }
}

bool YumIO::upToDateGroup(const Package::Entry& entry)
{
    return upToDateGroupPkgs(entry, "mandatory_packages") && upToDateGroupPkgs(entry, "default_packages");
}

bool YumIO::upToDateGroupPkgs(const Package::Entry& entry, const char* item)
{
    PyGILStateWrapper lock(true);
    const PyRef list(getGroupItem(entry, item));
    const PyRef iterator(list ? PyObject_GetIter(list.get()) : nullptr);
    bool upToDate = true;
    while (iterator && upToDate) {
        const PyRef pkg(PyIter_Next(iterator.get()));
        if (!pkg) {
            break;
        }
        const Package::Entry* found = findPackage(pyStringDec(attribute(pkg.get(), "name")));
        upToDate = found == nullptr || found->state != Package::Updatable;
    }
    PyErr_Clear();
    return upToDate;
}

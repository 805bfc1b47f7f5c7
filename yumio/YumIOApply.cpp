// SPDX-License-Identifier: GPL-2.0-or-later

// Applies the chosen actions as one transaction, on a worker thread. This file also contains functions of
// yumIOC, which the script calls on the same thread.

#include "yumio/YumIO.h"

#include <unistd.h>

#include <QEventLoop>
#include <QScopedValueRollback>

#include "python/CPython.h"
#include "services/Progress.h"
#include "services/YumIOCapturers.h"
#include "yumio/ChildSignal.h"
#include "yumio/OperationScope.h"
#include "yumio/Transaction.h"
#include "yumio/Words.h"
#include "yumio/WorkerThreads.h"

using Transaction::atLeast;

namespace {

// Returns whether the transaction removes the packages with this action. An obsoleted package is removed too:
// another package replaces it.
bool isRemoval(long action)
{
    return action == Transaction::Remove || action == Transaction::Obsoleted;
}

int numberOfRemovals(const QMap<long, int>& listed)
{
    return listed.value(Transaction::Remove) + listed.value(Transaction::Obsoleted);
}

} // namespace

bool YumIO::apply()
{
    QList<Package::Entry*> marked;
    for (Package::Entry* entry : records.all()) {
        entry->txAction = Package::None;
        entry->local = false;
        if (entry->action != Package::None) {
            marked.append(entry);
        }
    }
    transaction = TransactionState(marked);
    QEventLoop loop;
    ApplyThread thread(this, loop);
    execWorkThread(loop, thread, true);
    return outcome(thread.result);
}

// The arguments for the script's method that applies marks: lists of the script's objects for the marked
// records. If Python cannot create a list, this list is null.
struct YumIO::MarkedObjects
{
    PyRef installs{PyList_New(0)};
    PyRef updates{PyList_New(0)}; // each item is a list of the new and the old package
    PyRef removes{PyList_New(0)};
    PyRef groupInstalls{PyList_New(0)};
    PyRef groupUpdates{PyList_New(0)};
    PyRef groupRemoves{PyList_New(0)};

    bool isComplete() const
    {
        return installs && updates && removes && groupInstalls && groupUpdates && groupRemoves;
    }
};

bool YumIO::applyReal()
{
    OperationScope operationScope(*this);
    if (!startTransaction(tr("Applying"))) {
        return false;
    }
    PyGILStateWrapper lock(true);
    PhaseScope phaseScope(phase);
    startResolving();

    MarkedObjects lists;
    if (!lists.isComplete()) {
        return internalError(tr("Internal error: python exception occurred from C code."));
    }
    for (Package::Entry* entry : qAsConst(transaction.actionEntries)) {
        entry->txAction = entry->action;
        entry->local = false;
    }
    if (!applyGroups()) {
        return false;
    }
    for (Package::Entry* entry : qAsConst(transaction.actionEntries)) {
        if (!addMarked(*entry, lists)) {
            return false;
        }
    }
    return carryOut([this, &lists] {
        return pyMethodTry(yumIO.get(), "apply", "(O,O,O,O,O,O)", lists.installs.get(), lists.updates.get(),
                           lists.removes.get(), lists.groupInstalls.get(), lists.groupUpdates.get(),
                           lists.groupRemoves.get());
    });
}

bool YumIO::startTransaction(const QString& heading)
{
    log(Log::Action, 0, heading);
    if (geteuid() != 0) {
        error(tr("Must be run as root to apply changes"));
        return false;
    }
    return true;
}

bool YumIO::addMarked(Package::Entry& entry, MarkedObjects& lists)
{
    const bool group = entry.kind == Package::Group;
    switch (entry.txAction) {
    case Package::Update:
        return group ? addObject(lists.groupUpdates, entry.pyObject,
                                 tr("Unable to add group %1 to grp_updates list"), entry.name)
                     : addUpdate(entry, lists);
    case Package::Install:
        return group ? addObject(lists.groupInstalls, entry.pyObject,
                                 tr("Unable to add group %1 to grp_installs list"), entry.name)
                     : addObject(lists.installs, entry.pyObject,
                                 tr("Unable to add package %1 to installs list"), entry.name);
    case Package::Remove:
        return group ? addObject(lists.groupRemoves, entry.pyObject,
                                 tr("Unable to add group %1 to grp_removes list"), entry.name)
                     : addRemoval(entry, lists);
    case Package::None:
        break;
    }
    return true;
}

bool YumIO::addUpdate(const Package::Entry& entry, MarkedObjects& lists)
{
    if (entry.next == nullptr) {
        error(tr("Unable to find installed version for package update %1").arg(entry.name));
        return false;
    }
    for (const Package::Entry* old = entry.next; old != nullptr; old = old->next) {
        const PyRef pair(PyList_New(0));
        if (!addObject(pair, entry.pyObject, tr("Unable to add new package to pair for updated package %1"),
                       entry.name) ||
            !addObject(pair, old->pyObject, tr("Unable to add old package to pair for updated package %1"),
                       entry.name) ||
            !addObject(lists.updates, pair.get(), tr("Unable to add package %1 to updates list"),
                       entry.name)) {
            return false;
        }
    }
    return true;
}

bool YumIO::addRemoval(Package::Entry& entry, MarkedObjects& lists)
{
    for (const Package::Entry* old = installedEntry(&entry); old != nullptr; old = old->next) {
        if (!old->excluded && !addObject(lists.removes, old->pyObject,
                                         tr("Unable to add package %1 to removes list"), entry.name)) {
            return false;
        }
    }
    return true;
}

bool YumIO::addObject(const PyRef& list, PyObject* object, const QString& failure, const QString& name)
{
    if (object != nullptr && PyList_Append(list.get(), object) == 0) {
        return true;
    }
    PyErr_Clear();
    error(failure.arg(name));
    return false;
}

void YumIO::startResolving()
{
    progress->startTotal(tr("Checking Dependencies: Total Progress"), 1);
    progress->startItem(tr("Resolve Dependencies"), 1, 1);
    phase = Applying;
}

bool YumIO::carryOut(const std::function<PyObject*()>& method)
{
    if (!reapChildren()) {
        progress->reset();
        return false;
    }
    {
        ChildSignal childSignal(*this);
        YumIOCapturersUser capturersUser(capturers, this);
        childSignal.disable();
        ExceptScope scope(*this);
        commExceptSetup();
        const PyRef result(method());
        changingSystem = false;
        transaction.signalRecorder.reset();
        readOutcome();
        const QString changes = transaction.outcome.changes();
        const QString done = changes.isEmpty() ? QString() : tr("Carried out: %1.").arg(changes);
        const QScopedValueRollback<QString> reporting(carriedOut, done);
        if (!result && PyErr_Occurred() != nullptr) {
            handleException(); // only now, because the message begins with the changes
        }
        if (stopRaised(result.get()) || commExceptRaised(result.get(), tr("apply changes")) || !result ||
            result.get() == Py_False) {
            transaction.txApplied = false; // keep the marks
        }
    }
    showRemarks();
    progress->reset();
    return transaction.txApplied;
}

// Reads the outcome from the script's object. This outcome is more exact than the reports of the callbacks: a
// callback may announce a transaction that rpm never begins.
void YumIO::readOutcome()
{
    PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
    PyErr_Fetch(&type, &value, &traceback);
    const PyRef changed(attribute(yumIO.get(), "systemChanged"));
    if (changed) {
        transaction.transactionRan = changed.get() == Py_True;
    }
    const PyRef old(attribute(yumIO.get(), "outdated"));
    transaction.outdated = old.get() == Py_True;
    const PyRef left(attribute(yumIO.get(), "leftOut"));
    if (left && PyList_Check(left.get())) {
        QSet<PyObject*> objects;
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(left.get()); ++i) {
            objects.insert(PyList_GET_ITEM(left.get(), i));
        }
        for (const Package::Entry* entry : qAsConst(transaction.actionEntries)) {
            for (const Package::Entry* version = entry; version != nullptr; version = version->next) {
                if (objects.contains(version->pyObject)) {
                    transaction.leftOut.insert(EntryKey(*entry), entry->action);
                }
            }
        }
    }
    readCounts(PyRef(attribute(yumIO.get(), "outcome")).get());
    transaction.outcome.leftOut = transaction.leftOut.count();
    // Log the reasons why marks were left out, because the question that showed these reasons is closed now.
    const PyRef reasons(attribute(yumIO.get(), "leftOutReasons"));
    const QString text = reasons ? pyString(reasons.get()) : QString();
    if (!text.isEmpty()) {
        log(Log::Warning, 0,
            tr("These packages are not in the transaction. VYRE keeps their marks:\n%1").arg(text));
    }
    PyErr_Restore(type, value, traceback);
}

// values: a dictionary, or another object if the user has not confirmed a transaction.
void YumIO::readCounts(PyObject* values)
{
    TransactionOutcome& outcome = transaction.outcome;
    if (values == nullptr || PyDict_Check(values) == 0) {
        return;
    }
    outcome.known = true;
    for (int i = 0; i < TransactionOutcome::CountCount; ++i) {
        PyObject* number = PyDict_GetItemString(
            values, TransactionOutcome::nameOf(static_cast<TransactionOutcome::Count>(i)));
        outcome.counts[i] =
            number != nullptr && PyLong_Check(number) != 0 ? static_cast<int>(PyLong_AsLong(number)) : 0;
        PyErr_Clear();
    }
    PyObject* names = PyDict_GetItemString(values, "failedScriptlets");
    if (names != nullptr && PyList_Check(names) != 0) {
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(names); ++i) {
            outcome.failedScriptlets.append(pyString(PyList_GET_ITEM(names, i)));
        }
    }
    outcome.restartNeeded = PyDict_GetItemString(values, "restartNeeded") == Py_True;
    outcome.keysImported = PyDict_GetItemString(values, "keysImported") == Py_True;
}

bool YumIO::applyGroups()
{
    for (const Package::Entry* entry : qAsConst(transaction.actionEntries)) {
        if (entry->kind != Package::Group) {
            continue;
        }
        if (entry->txAction == Package::Remove) {
            for (const char* list :
                 {"mandatory_packages", "default_packages", "optional_packages", "conditional_packages"}) {
                if (!applyGrpPkgs(*entry, list, &YumIO::applyGrpChkInsUpd)) {
                    return false;
                }
            }
        } else if (entry->txAction == Package::Update || entry->txAction == Package::Install) {
            for (const char* list : {"mandatory_packages", "default_packages"}) {
                if (!applyGrpPkgs(*entry, list, &YumIO::applyGrpChkRemove)) {
                    return false;
                }
            }
        }
    }
    return true;
}

bool YumIO::applyGrpPkgs(const Package::Entry& group, const char* listName, GroupCheck check)
{
    const PyRef list(getGroupItem(group, listName));
    const PyRef iterator(list ? PyObject_GetIter(list.get()) : nullptr);
    bool accepted = true;
    while (iterator && accepted) {
        const PyRef pkg(PyIter_Next(iterator.get()));
        if (!pkg) {
            break;
        }
        const QString name = pyStringDec(attribute(pkg.get(), "name"));
        if (group.txAction == Package::Remove) {
            transaction.membersToRemove.insert(name);
        }
        const Package::Entry* found = findPackage(name);
        accepted = found == nullptr || (this->*check)(group, *found);
    }
    PyErr_Clear();
    return accepted;
}

bool YumIO::applyGrpChkRemove(const Package::Entry& group, const Package::Entry& pkg)
{
    return pkg.txAction != Package::Remove || applyGrpConflict(group, pkg);
}

bool YumIO::applyGrpChkInsUpd(const Package::Entry& group, const Package::Entry& pkg)
{
    return (pkg.txAction != Package::Update && pkg.txAction != Package::Install) ||
           applyGrpConflict(group, pkg);
}

bool YumIO::applyGrpConflict(const Package::Entry& group, const Package::Entry& pkg)
{
    Package::Action implied = Package::None;
    switch (pkg.state) {
    case Package::Updatable:
        implied = Package::Update;
        break;
    case Package::Available:
        implied = Package::Install;
        break;
    case Package::Installed:
        implied = Package::Remove;
        break;
    default:
        error(tr("Internal error: applyGrpConflict unexpected package state\n"));
        return false;
    }
    const auto word = [](Package::Action action) {
        return action == Package::None ? tr("ERROR") : Words::of(action);
    };
    const QString text =
        tr("Package %1 is included in group %2 which was marked for %3, so the package would be marked for "
           "%4.\n"
           "But the package also was marked individually for %5.\nDo you wish to proceed?")
            .arg(pkg.name, group.name, word(group.txAction), word(implied), word(pkg.txAction));
    return dialogs->critical(tr("Apply"), text, tr("Yes"), tr("No"), QString(), 1, 1) == 0;
}

PyObject* YumIO::getGroupItem(const Package::Entry& group, const char* attr)
{
    PyObject* item = attribute(group.pyObject, attr);
    if (item == nullptr) {
        error(tr("Internal error: group %1.%2 not evaluable").arg(group.name, QLatin1String(attr)));
    }
    return item;
}

PyObject* YumIO::listTransaction(PyObject*, PyObject* args)
{
    PyObject* unused = nullptr;
    PyObject* items = nullptr;
    if (PyArg_ParseTuple(args, "OO", &unused, &items) == 0) {
        return nullptr;
    }
    const PyRef iterator(PyObject_GetIter(items));
    if (!iterator) {
        return nullptr;
    }
    transaction.txText = tr("Transaction to be performed:\n");
    transaction.txListed = true;
    transaction.listed.clear();
    transaction.unmarkedRemovals.clear();
    transaction.sizes.clear();
    Listing listing;
    for (;;) {
        const PyRef item(PyIter_Next(iterator.get()));
        if (!item) {
            break;
        }
        listItem(item.get(), listing);
    }
    if (PyErr_Occurred() != nullptr) {
        return nullptr;
    }
    if (!listing.dependencies.isEmpty()) {
        transaction.txText +=
            tr("Performing the following to resolve dependencies:\n") + listing.dependencies;
    }
    if (!listing.dependents.isEmpty()) {
        transaction.txText +=
            scriptWords("Removing dependent packages") + QLatin1String(":\n") + listing.dependents;
    }
    if (!listing.unused.isEmpty()) {
        transaction.txText +=
            scriptWords("Removing unused dependencies") + QLatin1String(":\n") + listing.unused;
    }
    Py_RETURN_NONE;
}

// Returns the package manager's translation of a text to the user's language.
QString YumIO::scriptWords(const char* text)
{
    if (PyObject_HasAttrString(yumIO.get(), "words") == 0) {
        return QString::fromLatin1(text);
    }
    const PyRef words(pyMethodCall(yumIO.get(), "words", "(s)", text));
    return words ? pyString(words.get()) : QString::fromLatin1(text);
}

void YumIO::listItem(PyObject* item, Listing& listing)
{
    const long action = pyLongDec(attribute(item, "action"));
    const long reason = pyLongDec(attribute(item, "reason"));
    if (isRemoval(action) && (transaction.isReplay || !isMarkedForRemoval(item))) {
        transaction.unmarkedRemovals.append(txitemFormat(item));
    }
    switch (action) {
    case Transaction::Install:
        if (reason == Transaction::Group) {
            listing.dependencies += tr("\tInstall (group): %1\n").arg(txitemRepoFormat(item));
        } else if (reason == Transaction::WeakDependency) {
            listing.dependencies += tr("\tInstall (weak): %1\n").arg(txitemRepoFormat(item));
        } else if (reason == Transaction::Dependency) {
            listing.dependencies += tr("\tInstall: %1\n").arg(txitemRepoFormat(item));
        } else {
            transaction.txText += tr("\tInstall: %1\n").arg(txitemRepoFormat(item));
        }
        break;
    case Transaction::Downgrade:
        transaction.txText += tr("\tDowngrade: %1\n").arg(txitemRepoFormat(item));
        break;
    case Transaction::Obsoleted:
        listing.dependencies += tr("\tObsoleting: %1\n").arg(txitemFormat(item));
        break;
    case Transaction::Upgrade:
        transaction.txText += tr("\tUpgrade: %1\n").arg(txitemRepoFormat(item));
        break;
    case Transaction::Remove:
        if (reason == Transaction::Dependency) {
            listing.dependents += tr("\tRemove: %1\n").arg(txitemFormat(item));
        } else if (reason == Transaction::Clean) {
            listing.unused += tr("\tRemove (unused): %1\n").arg(txitemFormat(item));
        } else {
            transaction.txText += tr("\tRemove: %1\n").arg(txitemFormat(item));
        }
        break;
    case Transaction::Reinstall:
        transaction.txText += tr("\tReinstall: %1\n").arg(txitemRepoFormat(item));
        break;
    case Transaction::Downgraded:
    case Transaction::Upgraded:
    case Transaction::Reinstalled:
        break; // the new version already has a line in the listing
    default: {
        // Use the package manager's own word for the action. The package manager does not translate the word;
        // the texts of the script contain it.
        const PyRef word(attribute(item, "action_name"));
        const QString prefix =
            word ? tr(pyString(word.get()).toUtf8().constData()) + QLatin1String(": ") : QString();
        listing.dependencies += QLatin1Char('\t') + prefix + txitemFormat(item) + QLatin1Char('\n');
        break;
    }
    }
    ++transaction.listed[action];
    weighItem(item, action);
}

// Returns whether the user has marked the item, or its group, for removal. The item's reason does not show
// this: superfluous kernel versions and marked packages have the same reason. But a member of a marked group
// may also be removed as a dependent or unused package, and then it counts as unmarked.
bool YumIO::isMarkedForRemoval(PyObject* item)
{
    const QString name = pyStringDec(attribute(item, "name"));
    const long reason = pyLongDec(attribute(item, "reason"));
    const Package::Entry* entry = findPackage(name, pyStringDec(attribute(item, "arch")));
    return (entry != nullptr && entry->action == Package::Remove) ||
           (transaction.membersToRemove.contains(name) && reason != Transaction::Dependency &&
            reason != Transaction::Clean);
}

// Returns a notice of the removals that the user has not marked. The dialog shows the notice outside the
// scrolling listing, so that the user always sees the notice.
QString YumIO::noticeOfListing() const
{
    constexpr int most = 5;
    constexpr int longest = 80;
    const QStringList& unmarked = transaction.unmarkedRemovals;
    if (unmarked.isEmpty()) {
        return QString();
    }
    const int removals = numberOfRemovals(transaction.listed);
    QString text = transaction.isReplay
                       ? tr("Removals: %1.").arg(removals)
                       : tr("Removals: %1. You did not mark %2 of them:").arg(removals).arg(unmarked.count());
    for (const QString& removal : unmarked.mid(0, most)) {
        // Shorten long names, because the notice cannot scroll. The listing contains the whole names.
        const bool fits = removal.length() <= longest;
        text += QLatin1String("\n    ") + (fits ? removal : removal.left(longest) + QLatin1String("..."));
    }
    if (unmarked.count() > most) {
        text += QLatin1String("\n    ...");
    }
    return text;
}

// Returns a summary for the user: the number of packages for each action, and the sizes. The listing itself
// may be too long to read.
QString YumIO::summaryOfListing() const
{
    const struct
    {
        long action;
        QString text;
    } parts[] = {
        {Transaction::Install, tr("Install: %1")},     {Transaction::Upgrade, tr("Upgrade: %1")},
        {Transaction::Downgrade, tr("Downgrade: %1")}, {Transaction::Reinstall, tr("Reinstall: %1")},
        {Transaction::Remove, tr("Remove: %1")},       {Transaction::Obsoleted, tr("Obsoleting: %1")},
    };
    QStringList numbers;
    for (const auto& part : parts) {
        const int count = transaction.listed.value(part.action);
        if (count != 0) {
            numbers.append(part.text.arg(count));
        }
    }
    const QString separator = QStringLiteral("    ");
    QString text = numbers.join(separator);
    if (!transaction.sizes.isEmpty()) {
        text += QLatin1Char('\n') + transaction.sizes;
    }
    return text;
}

void YumIO::weighItem(PyObject* item, long action)
{
    const QString name = pyStringDec(attribute(item, "name"));
    const QString arch = pyStringDec(attribute(item, "arch"));
    Package::Entry* entry = findPackage(name, arch);
    if (entry == nullptr) {
        weighUnlisted(item, action);
        return;
    }
    switch (action) {
    case Transaction::Install:
    case Transaction::Downgrade:
    case Transaction::Upgrade:
    case Transaction::Reinstall:
        if (transaction.isReplay &&
            (installedEntry(entry) == entry || getVerRelTxitem(item) != entry->verRel)) {
            // The replayed transaction installs a version that the table does not list. The record contains
            // the size of another version.
            weighUnlisted(item, action);
        } else {
            entry->local = verifyLocalPkg(entry->pyObject);
            transaction.weighNew(entry->size, entry->local);
        }
        if (entry->txAction == Package::None) {
            entry->txAction = action == Transaction::Install ? Package::Install : Package::Update;
        }
        break;
    case Transaction::Obsolete:
        transaction.rpmWeight += atLeast(3 * entry->size);
        break;
    case Transaction::Obsoleted:
        transaction.rpmWeight += atLeast(Records::installedSize(entry));
        break;
    case Transaction::Downgraded:
    case Transaction::Upgraded:
    case Transaction::Reinstalled:
        transaction.rpmWeight += atLeast(Records::installedSize(entry) / 5);
        break;
    case Transaction::Remove: {
        const QString verRel = getVerRelTxitem(item);
        for (const Package::Entry* old = installedEntry(entry); old != nullptr; old = old->next) {
            if (old->verRel == verRel) {
                transaction.rpmWeight += atLeast(old->size);
                break;
            }
        }
        if (entry->txAction == Package::None) {
            entry->txAction = Package::Remove;
        }
        break;
    }
    default:
        break;
    }
}

// Adds the weight of a package whose version has no record. For example, the configuration excludes the
// package.
void YumIO::weighUnlisted(PyObject* item, long action)
{
    const PyRef package(attribute(item, "pkg"));
    const quint64 size = package ? sizeOf(package.get()) : 0;
    PyErr_Clear();
    switch (action) {
    case Transaction::Install:
    case Transaction::Downgrade:
    case Transaction::Upgrade:
    case Transaction::Reinstall:
        transaction.weighNew(size, package && verifyLocalPkg(package.get()));
        break;
    case Transaction::Obsolete:
        transaction.rpmWeight += atLeast(3 * size);
        break;
    case Transaction::Obsoleted:
    case Transaction::Remove:
        transaction.rpmWeight += atLeast(size);
        break;
    case Transaction::Downgraded:
    case Transaction::Upgraded:
    case Transaction::Reinstalled:
        transaction.rpmWeight += atLeast(size / 5);
        break;
    default:
        break;
    }
}

bool YumIO::verifyLocalPkg(PyObject* pkg)
{
    // This function may run inside a longer operation. If the longer operation fails after this function, its
    // message must include all log entries since the longer operation began. Therefore store the start of the
    // longer operation in the log here, and restore it below.
    const int outerLogStart = exceptLogStart;
    bool valid = false;
    {
        ExceptScope scope(*this, {PyExc_FileNotFoundError, classes[MiscError]});
        const PyRef result(pyMethodCall(yumIO.get(), "verifyLocalPkg", "(O)", pkg));
        valid = result && PyObject_IsTrue(result.get()) == 1;
    }
    exceptLogStart = outerLogStart;
    return valid;
}

PyObject* YumIO::reportDownloadSize(PyObject*, PyObject* args)
{
    PyObject* packages = nullptr;
    if (PyArg_ParseTuple(args, "O", &packages) == 0) {
        return nullptr;
    }
    const PyRef iterator(PyObject_GetIter(packages));
    if (!iterator) {
        return nullptr;
    }
    quint64 installedSize = 0;
    for (;;) {
        const PyRef package(PyIter_Next(iterator.get()));
        if (!package) {
            break;
        }
        installedSize += static_cast<quint32>(pyLongDec(attribute(package.get(), "installsize")));
    }
    if (PyErr_Occurred() != nullptr) {
        return nullptr;
    }
    const QString sizes = tr("Cached size: %1\n").arg(bytesFormat(transaction.cachedSize)) +
                          tr("Total download size: %1\n").arg(bytesFormat(transaction.downloadSize)) +
                          tr("Installed size: %1\n").arg(bytesFormat(installedSize));
    transaction.txText += QLatin1Char('\n') + sizes;
    transaction.sizes = sizes.trimmed().replace(QLatin1Char('\n'), QLatin1String("    "));
    Py_RETURN_NONE;
}

PyObject* YumIO::reportRemoveSize(PyObject*, PyObject* args)
{
    PyObject* unused = nullptr;
    if (PyArg_ParseTuple(args, "O", &unused) == 0) {
        return nullptr;
    }
    transaction.txText += tr("No downloads; only removals\n");
    Py_RETURN_NONE;
}

PyObject* YumIO::userconfirm(PyObject*, PyObject*)
{
    if (progress != nullptr) {
        progress->reset();
    }
    transaction.nextSlot = 0;
    if (stopRequest.isRequested()) {
        // Ask nothing: the script notices the request and ends at its next step.
        transaction.txText.clear();
        transaction.txListed = false;
        return PyLong_FromLong(0);
    }
    // If no listing exists, the text is the script's output. It may contain a URL with a password.
    const QString text = Log::withoutPasswords(transaction.txText);
    // "OK" and "Cancel" are not translated.
    const bool yes =
        (transaction.txListed
             ? dialogs->confirm(tr("Apply"), text, QStringLiteral("OK"), QStringLiteral("Cancel"),
                                numberOfRemovals(transaction.listed) != 0, noticeOfListing(),
                                summaryOfListing())
             : dialogs->confirm(tr("Query"), text, QStringLiteral("Yes"), QStringLiteral("No"), true)) == 1;
    if (transaction.txListed) {
        log(Log::Action, 0, yes ? tr("Applying: OK") : tr("Not Applying: Canceled"));
        transaction.txApplied = yes;
        if (yes && progress != nullptr) {
            transaction.downloadSteps = transaction.downloadWeight != 0 ? Transaction::downloadSteps : 0;
            progress->startTotal(tr("Running Transaction: Total Progress"),
                                 transaction.downloadSteps + Transaction::runSteps);
            progress->startItem(tr("Preparing"), 100, 1);
        }
    } else {
        log(Log::Action, 0, yes ? tr("Confirmation: Yes") : tr("Confirmation: No"));
    }
    transaction.txText.clear();
    transaction.txListed = false;
    return PyLong_FromLong(yes ? 1 : 0);
}

// SPDX-License-Identifier: GPL-2.0-or-later

// The package back end: drives the package manager through the script in the embedded interpreter, and owns
// the package records, the log and every operation on the package manager.
//
// Lives on the graphical thread; the main window owns it. Every long operation has two halves. The public
// half runs on the graphical thread, which waits in a nested event loop and keeps the windows painted. The
// other half (ending in Real) runs on a worker thread. One worker runs at a time. A thread that touches a
// Python object holds the interpreter lock. The graphical thread always holds it, except while it waits for a
// worker.
//
// No function throws. A failure is reported to the user in a dialog and in the log, and the result is false,
// empty or null.

#ifndef YUMIO_YUMIO_H
#define YUMIO_YUMIO_H

#include "python/PyRef.h"
#include "python/YumIOCTarget.h"
#include "services/CapturedOutput.h"
#include "services/Log.h"
#include "yumio/Fields.h"
#include "yumio/Package.h"
#include "yumio/Records.h"
#include "yumio/ScriptValues.h"
#include "yumio/TransactionState.h"

#include <QHash>
#include <QMutex>
#include <QObject>
#include <QSet>
#include <QStringList>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <functional>

class HProgressBar;
class QEventLoop;
class QThread;
class QWidget;
class YumIOCapturers;
class YumIODialogs;
template <auto operation> class WorkerThread;
namespace Progress {
class Object;
}

class YumIO : public QObject, private ScriptValues, public YumIOCTarget, public CapturedOutput
{
    Q_OBJECT

public:
    using EntryKey = Package::EntryKey;
    using Marks = Package::Marks;
    using Replacement = Package::Replacement;

    YumIO();
    ~YumIO() override;

    // Call it once, before any other function. The caller keeps the ownership of all three.
    void setup(QWidget* parentWidget, HProgressBar* total, HProgressBar* item);

    // Starts the interpreter and the script, once. After false, which is reported, the back end is unusable.
    bool initialize();

    // The directories with repository files that the package manager knows; empty if they are unknown.
    QStringList knownDirectories();

    // --- Collection. A successful collect() makes the records valid until the next clearEntries().

    // repoEnable says for each repository identifier whether to use that repository; unknown identifiers are
    // ignored.
    bool collect(const QHash<QString, bool>& repoEnable);
    // Makes the script forget its packages and read the configuration again.
    void reset();
    void clearEntries();
    // For the end of the program: abandons the references, because the interpreter is not used again.
    void clearEntriesBeforeQuit();

    // Whether a package of another name replaces this installed package, or this available package replaces
    // an installed one of another name. The user must decide that: no function marks such a record together
    // with others.
    bool isLeftToUser(const Package::Entry& entry) const { return records.isLeftToUser(entry); }
    // Empty for nearly all records.
    Replacement replacement(const Package::Entry& entry) const { return records.replacement(entry); }

    // Whether a worker is running.
    bool isWorking() const { return worker != nullptr; }
    // Whether rpm is changing the system now, which must not be interrupted. Any thread.
    bool isChangingSystem() const { return changingSystem; }
    // For a request to close the program while a worker waits for another process's lock. Ends the wait and
    // the operation, whose failure is only logged. Returns false if no worker waits.
    bool endWaiting();
    // For an unavoidable end of the program. No more questions are asked. A worker that changes the system
    // finishes its work; any other worker gives up. The function waits for the worker without serving events
    // and then releases the package manager's lock. From now on log entries go to standard error: all of
    // them, or only faults while the display exists.
    void finish(bool displayIsThere);

    // The records by position; none while a worker rebuilds the list.
    int count() const { return rebuilding ? 0 : records.count(); }
    Package::Entry* operator[](int row) const { return records.at(row); }

    // --- Extra data. Each function loads its data at most once and returns whether the data are loaded.

    bool collectFileLists();
    bool collectOtherData();
    // Reads Package::Entry::searchTexts, on a worker, for those records that lack it. The extra data must be
    // loaded first. A search that only uses getters finds the same records, but is far slower.
    void collectSearchTexts(const QVector<Package::Entry*>& wanted);
    // Calls the function for each searched text, except the file list and the change log, until the function
    // returns true. Returns whether it did.
    bool anySearchText(const Package::Entry& entry, const std::function<bool(const QString&)>& found);
    // Has a worker load the change logs that getChangeLog() needs for an available package. The first call
    // reads those of the whole repository. A failure is reported by getChangeLog().
    void loadChangeLog(const Package::Entry& entry);
    bool haveFileLists() const { return fileListsLoaded; }
    bool haveOtherData() const { return otherDataLoaded; }

    // --- Applying

    // Carries out the actions of the records: resolves, shows the listing, asks and runs. Returns true if the
    // user confirmed and the package manager reported no failure.
    bool apply();
    // Whether the last apply() began to change the system, regardless of its result.
    bool systemChanged() const { return transaction.transactionRan; }
    // Whether the last apply() was refused because another program has changed the system since the last
    // collection.
    bool isOutdated() const { return transaction.outdated; }

    // The actions of the records, for restoring them after a new collection.
    Marks marks() const { return records.marks(); }
    // The impossible marks that the last apply() left out.
    const Marks& leftOutMarks() const { return transaction.leftOut; }
    // Sets each action for the record that now has its key, if that record permits the action.
    void restoreMarks(const Marks& marks) { records.restoreMarks(marks); }

    // Each function has a worker remove files from the package manager's cache.
    bool cleanDbcache();
    bool cleanPackages();
    bool cleanMetadata();
    bool cleanAll();

    // --- Texts of one record. A record without this information has an empty text.

    QString text(const Package::Entry& entry, Fields::Field field);
    QString getName(const Package::Entry& entry) const { return entry.name; }
    QString getVerRel(const Package::Entry& entry) const { return entry.verRel; }
    QString getRepo(const Package::Entry& entry) const { return entry.repo; }
    QString getArch(const Package::Entry& entry) const { return entry.arch; }
    QString getSize(const Package::Entry& entry) const { return entry.sizeText; }
    QString getSummary(const Package::Entry& entry) const { return entry.summary; }
    QString getBuildTime(const Package::Entry& entry) const { return entry.buildTimeText; }
    QString getState(const Package::Entry& entry) const;
    QString getKind(const Package::Entry& entry) const;
    QString getDescription(const Package::Entry& entry) { return text(entry, Fields::Description); }
    QString getGroup(const Package::Entry& entry) { return text(entry, Fields::Group); }
    QString getVendor(const Package::Entry& entry) { return text(entry, Fields::Vendor); }
    QString getBuildHost(const Package::Entry& entry) { return text(entry, Fields::BuildHost); }
    QString getInstallTime(const Package::Entry& entry) { return text(entry, Fields::InstallTime); }
    QString getBinaryRpm(const Package::Entry& entry) { return text(entry, Fields::BinaryRpm); }
    QString getSourceRpm(const Package::Entry& entry) { return text(entry, Fields::SourceRpm); }
    QString getLicense(const Package::Entry& entry) { return text(entry, Fields::License); }
    QString getPackager(const Package::Entry& entry) { return text(entry, Fields::Packager); }
    QString getUrl(const Package::Entry& entry) { return text(entry, Fields::Url); }
    // One path a line; may start a worker.
    QString getFiles(const Package::Entry& entry);
    QString getChangeLog(const Package::Entry& entry);
    // One dependency a line.
    QString getProvides(const Package::Entry& entry) { return text(entry, Fields::Provides); }
    QString getRequires(const Package::Entry& entry) { return text(entry, Fields::Requires); }
    QString getRequiresPre(const Package::Entry& entry) { return text(entry, Fields::RequiresPre); }
    QString getConflicts(const Package::Entry& entry) { return text(entry, Fields::Conflicts); }
    QString getObsoletes(const Package::Entry& entry) { return text(entry, Fields::Obsoletes); }
    QString getRecommends(const Package::Entry& entry) { return text(entry, Fields::Recommends); }
    QString getSuggests(const Package::Entry& entry) { return text(entry, Fields::Suggests); }
    QString getSupplements(const Package::Entry& entry) { return text(entry, Fields::Supplements); }
    QString getEnhances(const Package::Entry& entry) { return text(entry, Fields::Enhances); }
    // One package a line, for groups.
    QString getMandatoryPkgs(const Package::Entry& entry) { return text(entry, Fields::MandatoryPackages); }
    QString getDefaultPkgs(const Package::Entry& entry) { return text(entry, Fields::DefaultPackages); }
    QString getOptionalPkgs(const Package::Entry& entry) { return text(entry, Fields::OptionalPackages); }
    QString getConditionalPkgs(const Package::Entry& entry)
    {
        return text(entry, Fields::ConditionalPackages);
    }
    QString getRelocations(const Package::Entry& entry) { return text(entry, Fields::Relocations); }

    // The value of a variable of the package manager's configuration, such as "basearch".
    QString getYumVar(QString variable);
    // The text after replacing the variables as the package manager does in repository files.
    QString expandVariables(QString text);
    // This and dnfVersion() are kept for bug reports and for behaviour that depends on the version.
    QString dnfVersionStr();
    // As 10000 * first + 100 * second + third part; 0 if the version is unknown.
    quint64 dnfVersion();

    // --- Log and messages, from any thread

    Log::EntryList& logEntries() { return logList; }
    // Each line becomes an entry. An error mark inside the text begins a new line.
    void log(Log::Kind kind, unsigned int level, const QString& text);
    // Both functions log the text and show it in a dialog. They return when the user has closed the dialog.
    // Passwords in URLs are hidden in both places.
    void error(const QString& text) override;
    void warning(const QString& text) override;
    void stdoutCapturedWrite(const QString& text) override;
    void stderrCapturedWrite(const QString& text) override;
    void captureEnded() override;

    // --- Functions for the script (YumIOCTarget). Worker thread; without a worker, the graphical thread.

    PyObject* stdoutWrite(PyObject* module, PyObject* args) override;
    PyObject* stderrWrite(PyObject* module, PyObject* args) override;
    PyObject* log(PyObject* module, PyObject* args) override;
    PyObject* errorlog(PyObject* module, PyObject* args) override;
    PyObject* downloadStart(PyObject* module, PyObject* args) override;
    PyObject* downloadProgress(PyObject* module, PyObject* args) override;
    PyObject* downloadMessage(PyObject* module, PyObject* args) override;
    PyObject* downloadEnd(PyObject* module, PyObject* args) override;
    PyObject* userconfirm(PyObject* module, PyObject* args) override;
    PyObject* reportDownloadSize(PyObject* module, PyObject* args) override;
    PyObject* reportRemoveSize(PyObject* module, PyObject* args) override;
    PyObject* listTransaction(PyObject* module, PyObject* args) override;
    PyObject* downloadRemotePayloads(PyObject* module, PyObject* args) override;
    PyObject* rpmtransInit(PyObject* module, PyObject* args) override;
    PyObject* rpmtransDel(PyObject* module, PyObject* args) override;
    PyObject* rpmtransProgress(PyObject* module, PyObject* args) override;
    PyObject* rpmtransScriptout(PyObject* module, PyObject* args) override;
    PyObject* postTransactionOutput(PyObject* module, PyObject* args) override;
    PyObject* gpgsigcheck(PyObject* module, PyObject* args) override;

public Q_SLOTS:
    // Releases the worker that was just started; called from inside the loop that waits for the worker.
    void blockerRelease();

Q_SIGNALS:
    void collectedExtraData();

private:
    // For tests of operations without a public function.
    friend class YumIOProbe;

    // Sets a flag for a scope.
    class FlagScope
    {
    public:
        explicit FlagScope(bool& theFlag) : flag(theFlag) { flag = true; }
        ~FlagScope() { flag = false; }
        FlagScope(const FlagScope&) = delete;
        FlagScope& operator=(const FlagScope&) = delete;

    private:
        bool& flag;
    };

    class ChildSignal;

    // Delays a worker until the event loop that the worker will end is running.
    class Blocker
    {
    public:
        void prepare() { mutex.lock(); }
        void release() { mutex.unlock(); }
        // Waits for release().
        void block()
        {
            mutex.lock();
            mutex.unlock();
        }

    private:
        QMutex mutex;
    };

    // The current operation. Some callbacks depend on it.
    enum Phase : quint32 { Idle = 0, Collecting = 1, Applying = 2 };

    // Resets the phase on every path out of an operation.
    class PhaseScope
    {
    public:
        explicit PhaseScope(quint32& thePhase) : phase(thePhase) {}
        ~PhaseScope() { phase = Idle; }
        PhaseScope(const PhaseScope&) = delete;
        PhaseScope& operator=(const PhaseScope&) = delete;

    private:
        quint32& phase;
    };

    using GroupCheck = bool (YumIO::*)(const Package::Entry& group, const Package::Entry& pkg);

    // Start (YumIO.cpp)
    void offerTranslations();
    void offerFunctions();
    static PyObject* addToListing(PyObject* capsule, PyObject* text);
    static PyObject* changeActivity(PyObject* capsule, PyObject* text);
    static PyObject* faultOfMetadata(PyObject* capsule, PyObject* args);
    static PyObject* waitForLock(PyObject* capsule, PyObject* text);
    static PyObject* addBeforeListing(PyObject* capsule, PyObject* text);
    void releaseLock();

    // Worker threads (WorkerThreads.cpp): the half of each operation that runs on a worker, and the class of
    // that worker
    void execWorkThread(QEventLoop& loop, QThread& thread);
    bool collectReal(const QHash<QString, bool>& repoEnable);
    void clearEntriesReal();
    bool collectFileListsReal();
    bool collectOtherDataReal();
    void collectSearchTextsReal(const QVector<Package::Entry*>& wanted);
    void loadChangeLogReal(const Package::Entry& entry);
    bool applyReal();
    bool cleanReal(const QString& label, const char* method);
    using CollectThread = WorkerThread<&YumIO::collectReal>;
    using ClearEntriesThread = WorkerThread<&YumIO::clearEntriesReal>;
    using CollectFileListsThread = WorkerThread<&YumIO::collectFileListsReal>;
    using CollectOtherDataThread = WorkerThread<&YumIO::collectOtherDataReal>;
    using CollectSearchTextsThread = WorkerThread<&YumIO::collectSearchTextsReal>;
    using LoadChangeLogThread = WorkerThread<&YumIO::loadChangeLogReal>;
    using ApplyThread = WorkerThread<&YumIO::applyReal>;
    using CleanThread = WorkerThread<&YumIO::cleanReal>;

    // Collection (YumIOCollect.cpp)
    // The base object is kept for scripts with more than one; repos belongs to the only one.
    void useRepos(PyObject* baseObject, const QHash<QString, bool>& repoEnable);
    QStringList collectRepos(PyObject* reposDict);
    bool collectField(PyObject* all, const char* field, Package::State state);
    // Collects installed packages that the configuration excludes; a script may lack this function.
    bool collectExcluded(PyObject* all);
    bool collectSet(PyObject* set, Package::State state, bool excluded = false);
    // The caller passes the package's name and architecture, because it has already read them for the key.
    void collectPkg(Package::Entry*& slot, Package::State state, PyObject* pkg, const QString& name,
                    const QString& arch);
    bool collectGroups(PyObject* groups);
    // Stops asking a history that cannot be read; historyFault holds the reason and is empty until then.
    void collectGroup(Package::Entry*& slot, PyObject* group, QString name, PyObject* historyGroup,
                      QString& historyFault);
    void collectReplacements();
    bool upToDateGroup(const Package::Entry& entry);
    bool upToDateGroupPkgs(const Package::Entry& entry, const char* item);

    // Searching (YumIOSearch.cpp)
    // The files of up to this many packages are read one by one; those of more, from the metadata file.
    static int fewPackages;
    QString metadataPath(const QString& repo, const char* kind); // empty without such a file

    // Extra data and details (YumIODetails.cpp)
    bool collectExtra(const QString& heading, const QString& dataName, const QString& totalText,
                      const char* method, const QString& what, bool& loaded);
    QString getRelDepList(PyObject* pkg, const char* attr);
    QString getGroupPkgs(const Package::Entry& entry, const char* item);
    QString getRpmList(PyObject* pkg, const char* tag);
    // New reference or null. Kept for tags that are not lists.
    PyObject* getRpmHdrValue(PyObject* pkg, const char* tag);
    PyObject* headerValue(PyObject* header, const char* tag); // new reference or null
    void missingAttribute(const char* attr);
    QString textOf(const Package::Entry& entry, const char* attr);
    QString timeOf(const Package::Entry& entry, const char* attr);

    // Applying (YumIOApply.cpp)
    bool applyGroups();
    bool applyGrpPkgs(const Package::Entry& group, const char* listName, GroupCheck check);
    bool applyGrpChkRemove(const Package::Entry& group, const Package::Entry& pkg);
    bool applyGrpChkInsUpd(const Package::Entry& group, const Package::Entry& pkg);
    bool applyGrpConflict(const Package::Entry& group, const Package::Entry& pkg);
    PyObject* getGroupItem(const Package::Entry& group, const char* attr); // new reference or null
    // The lines of the listing after the marked packages.
    struct Listing
    {
        QString dependencies;
        QString dependents;
        QString unused;
    };
    void listItem(PyObject* item, Listing& listing);
    QString scriptWords(const char* text);
    void weighItem(PyObject* item, long action);
    void weighUnlisted(PyObject* item, long action);
    void readOutcome();
    bool verifyLocalPkg(PyObject* pkg);
    bool cleanType(const QString& label, const char* method);

    // Output and progress (YumIOProgress.cpp)
    PyObject* stdWrite(PyObject* args, Log::Kind kind, unsigned int level, QString& pending);
    void write(const QString& text, Log::Kind kind, unsigned int level, QString& pending);
    // Logs an operation's last line, which lacks a line feed, apart from the next operation's output.
    void finishLine(Log::Kind kind, unsigned int level, QString& pending);
    void finishLines(); // of the script's output
    PyObject* badArguments(const char* text);
    PyObject* badPhase(const char* text);
    static PyObject* noneUnlessPending(); // null passes a pending exception on to the script
    bool isPayload(PyObject* object);
    bool payloadError(const QString& text); // false
    bool payloadText(PyObject* payload, const char* function, QString& text, quint64& size);
    void tsDownloadStart();
    // Assigns the next download slot to a payload.
    QHash<QString, quint32>::const_iterator startSlot(const QString& text, quint64 size);
    void tsDownloadProgress(PyObject* payload, const QString& text, quint64 size, quint64 done);
    void tsDownloadEnd(PyObject* payload, const QString& text, quint64 size, long status);
    void collectProgress(const QString& repository, quint64 total, quint64 done);
    void collectEnd();
    bool isInstance(PyObject* object, PyObject* type);

    // Values of the package manager, and records (YumIO.cpp)
    using ScriptValues::getVerRel; // otherwise hidden by the function for records
    QString getBiArch(const QString& arch);
    static Package::Entry* installedEntry(Package::Entry* entry) { return Records::installedEntry(entry); }
    Package::Entry* findPackage(const QString& name);
    Package::Entry* findPackage(const QString& name, const QString& arch);
    void forgetEntries(const std::function<void(PyObject*)>& drop);

    // Messages and failures of the script (YumIOMessages.cpp)
    bool internalError(const QString& text);
    void error(const char* text) override;
    void warning(const char* text) override;
    void pythonException(const QString& text);
    void pythonExceptionV(const QString& text);
    int exceptionLogStart();
    void showExceptionLog(int start, const QString& text);
    void pyExceptExpect(PyObject* type) override;
    void pyExceptClear() override;
    void exceptionExpected() override;
    void tracebackOnTerminal(const char* text) override;
    void commExceptSetup();
    bool commExceptRaised(PyObject* result, const QString& what);
    void showRemarks();
    // Only for the guard ChildSignal.
    bool sigchldDisable();
    void sigchldRestore();
    bool reapChildren();

    Records records;
    QString basearch;
    QHash<QString, QString> biArchByArch; // the script's answers
    bool clearing = false;                // a worker deletes the records; kept for diagnostics
    QThread* worker = nullptr;            // null without a running worker
    bool blockerHeld = false;             // the worker is delayed
    std::atomic<bool> changingSystem{false};
    // The wait for another process's lock. Ended remains until the next operation begins.
    enum class Wait { None, Lasts, Ended };
    std::atomic<Wait> wait{Wait::None};
    bool rebuilding = false; // a worker changes the list of records; the graphical thread must not read it
    Log::EntryList logList;
    // The log position at which the output of an expected exception begins; -1 without an expected exception.
    int exceptLogStart = -1;
    bool fileListsLoaded = false;
    bool otherDataLoaded = false;
    QSet<QByteArray> missingAttributes; // already reported to the user
    QString reportedHistoryFault;       // already reported to the user
    YumIODialogs* dialogs = nullptr;
    QWidget* parent = nullptr;
    HProgressBar* totalBar = nullptr;
    HProgressBar* itemBar = nullptr;
    Progress::Object* progress = nullptr; // null between operations
    YumIOCapturers* capturers = nullptr;
    bool locked = false;
    PyObject* rpmDict = nullptr;    // borrowed
    PyObject* yumIOClass = nullptr; // borrowed; kept for a second object of the class
    PyRef yumIO;
    PyRef base;
    PyRef repos;
    QStringList enabledRepos;
    QString readingName; // the kind of data that the operation reads; kept for diagnostics
    quint32 readingCount = 0;
    QString readingRepo;
    quint64 readingMax = 1;

    // Exception and payload classes, borrowed. OtherRepoError and MetadataError are null: they are kept for
    // package managers with such classes.
    enum Class {
        BdbQuit,
        DnfError,
        MiscError,
        RepoError,
        OtherRepoError,
        LockError,
        MetadataError,
        DeltaPayload,
        MDPayload,
        RPMPayload,
        ClassCount
    };
    PyObject* classes[ClassCount] = {};
    // The standard error of the process, even if the script redirects its own. Kept for diagnostics.
    FILE* terminal = nullptr;
    Blocker blocker;

    quint32 phase = Idle;
    TransactionState transaction;

    QString stdoutPending;
    QString stderrPending;
    QString stdoutCapturedPending;
    QString stderrCapturedPending;
    Log::Kind stderrKind = Log::Error;
    unsigned int stderrLevel = 0;

    bool dnfVersionLooked = false;
    QString dnfVersionText;
    struct sigaction savedSigchld = {};
};

#endif

// The package back end: drives the package manager through the script in the embedded interpreter, and owns
// the package records, the log and every operation on the package manager.
//
// Lives on the graphical thread; the main window owns it. Every long operation has two halves: the public one
// runs on the graphical thread, which then waits in a nested event loop and keeps the windows painted, while
// the other half (ending in Real) runs on a worker thread. One worker runs at a time. Whoever touches a
// Python object holds the interpreter lock: the graphical thread does so always except while it waits for a
// worker.
//
// Nothing here throws. A failure is reported to the user in a dialog and in the log, and the result is false,
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

    // To be called once, before anything else. None of the three passes into the back end's ownership.
    void setup(QWidget* parentWidget, HProgressBar* total, HProgressBar* item);

    // Starts the interpreter and the script; a second call does nothing. False: reported, and of no use.
    bool initialize();

    // The directories with files of repositories that the package manager knows; empty if that is not known.
    QStringList knownDirectories();

    // --- Collection. The records are valid from a successful collect() to the next clearEntries().

    // repoEnable tells for each repository identifier whether it is used; identifiers that are not configured
    // are ignored.
    bool collect(const QHash<QString, bool>& repoEnable);
    // Makes the script forget its packages and read the configuration anew.
    void reset();
    void clearEntries();
    // At the program's end: the interpreter is not used again, so the references are abandoned.
    void clearEntriesBeforeQuit();

    // Whether another package is to take the place of this installed one, or this one, which is not
    // installed, the place of an installed one. That is left to the user: nothing marks such a record
    // together with others.
    bool isLeftToUser(const Package::Entry& entry) const { return records.isLeftToUser(entry); }
    // Few records have one.
    Replacement replacement(const Package::Entry& entry) const { return records.replacement(entry); }

    // Whether a worker runs.
    bool isWorking() const { return worker != nullptr; }
    // Whether rpm changes the system at this moment, which nothing may cut off. Any thread.
    bool isChangingSystem() const { return changingSystem; }
    // For a request to close the program while a worker waits for a lock of another process: ends that wait,
    // and with it the operation, whose failure is only logged. False: no worker waits.
    bool endWaiting();
    // For an end of the program from which there is no way back. Nobody is asked anything any more; a worker
    // goes on to its end if it changes the system, and gives up otherwise. Waits for it without serving
    // events, then gives the package manager's lock back.
    // What is logged from then on is reported on standard error: only faults while the display is there.
    void finish(bool displayIsThere);

    // The records by position; none while they are being rebuilt.
    int count() const { return rebuilding ? 0 : records.count(); }
    Package::Entry* operator[](int row) const { return records.at(row); }

    // --- Extra data. Each loads at most once; true when loaded.

    bool collectFileLists();
    bool collectOtherData();
    // Reads, on a worker, what Package::Entry::searchTexts holds for those of the records that lack it. Wants
    // the extra data loaded. A search through getters alone finds the same, far slower.
    void collectSearchTexts(const QVector<Package::Entry*>& wanted);
    // Gives the texts that a search looks at, all but the file list and the change log, to a function, one
    // after the other until that returns true; whether it did.
    bool anySearchText(const Package::Entry& entry, const std::function<bool(const QString&)>& found);
    // Has a worker read what getChangeLog() needs for a package of a repository: the first one takes reading
    // those of the whole repository. What is wrong with it is told by getChangeLog().
    void loadChangeLog(const Package::Entry& entry);
    bool haveFileLists() const { return fileListsLoaded; }
    bool haveOtherData() const { return otherDataLoaded; }

    // --- Applying

    // Resolves, shows, confirms and runs what the records' actions ask for. True when the user confirmed and
    // the package manager reported no failure.
    bool apply();
    // Whether the last apply() came as far as changing the system, whatever its result.
    bool systemChanged() const { return transaction.transactionRan; }
    // Whether the last apply() was refused because another program has changed the system since the records
    // were made.
    bool isOutdated() const { return transaction.outdated; }

    // The records' actions, to be put back after a new collection.
    Marks marks() const { return records.marks(); }
    // Those marks that the last apply() has not carried out because they were impossible.
    const Marks& leftOutMarks() const { return transaction.leftOut; }
    // Each for the record that has the same key now, if that still permits the action.
    void restoreMarks(const Marks& marks) { records.restoreMarks(marks); }

    // Each has a worker remove files from the package manager's cache.
    bool cleanDbcache();
    bool cleanPackages();
    bool cleanMetadata();
    bool cleanAll();

    // --- Texts of one record. Empty when there is nothing to tell.

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
    // One path a line; may run a worker.
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
    // One package a line; for groups.
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
    // The text with the variables replaced as the package manager replaces them in the files of repositories.
    QString expandVariables(QString text);
    // Kept for bug reports and for behaviour that depends on the version, as is dnfVersion().
    QString dnfVersionStr();
    // As 10000 * first + 100 * second + third part; 0 when it is not known.
    quint64 dnfVersion();

    // --- Log and messages, from any thread

    Log::EntryList& logEntries() { return logList; }
    // An error mark inside the text begins a line of its own; each line becomes an entry.
    void log(Log::Kind kind, unsigned int level, const QString& text);
    // Both log the text and show it in a dialog, and return when the user has closed that. Passwords in URLs
    // are hidden in both places.
    void error(const QString& text) override;
    void warning(const QString& text) override;
    void stdoutCapturedWrite(const QString& text) override;
    void stderrCapturedWrite(const QString& text) override;
    void captureEnded() override;

    // --- What the script calls; see YumIOCTarget. Worker thread, or the graphical one while no worker runs.

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
    // Lets the worker that has just been started go on; called from inside the loop that waits for it.
    void blockerRelease();

Q_SIGNALS:
    void collectedExtraData();

private:
    // Tests reach the operations that have no caller of their own outside.
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

    // Holds a worker back until the loop that it will end is running.
    class Blocker
    {
    public:
        void prepare() { mutex.lock(); }
        void release() { mutex.unlock(); }
        // Waits until released.
        void block()
        {
            mutex.lock();
            mutex.unlock();
        }

    private:
        QMutex mutex;
    };

    // What is being done, for the callbacks that mean different things then.
    enum Phase : quint32 { Idle = 0, Collecting = 1, Applying = 2 };

    // Sets the phase back on every way out of an operation.
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
    // The base object is kept for scripts that have more than one; repos is that of the only one.
    void useRepos(PyObject* baseObject, const QHash<QString, bool>& repoEnable);
    QStringList collectRepos(PyObject* reposDict);
    bool collectField(PyObject* all, const char* field, Package::State state);
    // What is installed although the configuration excludes it; the script need not know of such.
    bool collectExcluded(PyObject* all);
    bool collectSet(PyObject* set, Package::State state, bool excluded = false);
    // The name and the architecture are the package's own: whoever looks for its key has read them already.
    void collectPkg(Package::Entry*& slot, Package::State state, PyObject* pkg, const QString& name,
                    const QString& arch);
    bool collectGroups(PyObject* groups);
    // A history that cannot be read is asked no further; historyFault says why, and is empty until then.
    void collectGroup(Package::Entry*& slot, PyObject* group, QString name, PyObject* historyGroup,
                      QString& historyFault);
    void collectReplacements();
    bool upToDateGroup(const Package::Entry& entry);
    bool upToDateGroupPkgs(const Package::Entry& entry, const char* item);

    // Searching (YumIOSearch.cpp)
    // Up to so many packages are asked for their files one by one; for more, the metadata are read through.
    static int fewPackages;
    QString metadataPath(const QString& repo, const char* kind); // empty: there is none

    // Extra data and details (YumIODetails.cpp)
    bool collectExtra(const QString& heading, const QString& dataName, const QString& totalText,
                      const char* method, const QString& what, bool& loaded);
    QString getRelDepList(PyObject* pkg, const char* attr);
    QString getGroupPkgs(const Package::Entry& entry, const char* item);
    QString getRpmList(PyObject* pkg, const char* tag);
    // New reference or null. Kept for tags that are no lists.
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
    // The lines that follow what the user has marked.
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
    // Writes the last line of an operation, which has no line feed: it must not become part of another one's.
    void finishLine(Log::Kind kind, unsigned int level, QString& pending);
    void finishLines(); // of what the script prints
    PyObject* badArguments(const char* text);
    PyObject* badPhase(const char* text);
    static PyObject* noneUnlessPending(); // null while an exception is pending, which the script is to see
    bool isPayload(PyObject* object);
    bool payloadError(const QString& text); // false
    bool payloadText(PyObject* payload, const char* function, QString& text, quint64& size);
    void tsDownloadStart();
    // Gives a payload the next download slot.
    QHash<QString, quint32>::const_iterator startSlot(const QString& text, quint64 size);
    void tsDownloadProgress(PyObject* payload, const QString& text, quint64 size, quint64 done);
    void tsDownloadEnd(PyObject* payload, const QString& text, quint64 size, long status);
    void collectProgress(const QString& repository, quint64 total, quint64 done);
    void collectEnd();
    bool isInstance(PyObject* object, PyObject* type);

    // Values of the package manager, and records (YumIO.cpp)
    using ScriptValues::getVerRel; // beside the text of a record
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
    // Use the guard ChildSignal.
    bool sigchldDisable();
    void sigchldRestore();
    bool reapChildren();

    Records records;
    QString basearch;
    QHash<QString, QString> biArchByArch; // the script's answers
    bool clearing = false;                // the records are being deleted; kept for diagnostics
    QThread* worker = nullptr;            // null while none runs
    bool blockerHeld = false;             // the worker is held back
    std::atomic<bool> changingSystem{false};
    // For a lock of another process. What was ended stays so until the next operation begins.
    enum class Wait { None, Lasts, Ended };
    std::atomic<Wait> wait{Wait::None};
    bool rebuilding = false; // a worker changes the list of records; the graphical thread keeps away from it
    Log::EntryList logList;
    // Where in the log the output of an expected exception begins; -1: none is expected.
    int exceptLogStart = -1;
    bool fileListsLoaded = false;
    bool otherDataLoaded = false;
    QSet<QByteArray> missingAttributes; // those that the user was told of
    QString reportedHistoryFault;       // the same
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
    QString readingName; // the data being read from the repositories; kept for diagnostics
    quint32 readingCount = 0;
    QString readingRepo;
    quint64 readingMax = 1;

    // Exception and payload classes, borrowed. OtherRepoError and MetadataError are null: they are kept for a
    // package manager that has such classes.
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
    // The process's standard error, even if the script redirects its own. Kept for diagnostics.
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

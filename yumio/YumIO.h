// SPDX-License-Identifier: GPL-2.0-or-later

// The package back end: drives the package manager through the script in the embedded interpreter. The back
// end owns the package records and the log, and runs every operation on the package manager.
//
// The object lives on the graphical thread; the main window owns it. Every long operation has two functions.
// The public function runs on the graphical thread, which waits in a nested event loop and keeps the windows
// painted. The function whose name ends in Real runs on a worker thread. Only one worker runs at a time. A
// thread that uses a Python object holds the interpreter lock. The graphical thread always holds this lock,
// except while it waits for a worker.
//
// No function throws. A failure is reported to the user in a dialog and in the log, and the result is false,
// empty or null.

#ifndef YUMIO_YUMIO_H
#define YUMIO_YUMIO_H

#include "python/PyRef.h"
#include "python/YumIOCTarget.h"
#include "services/CapturedOutput.h"
#include "services/Log.h"
#include "yumio/Advisory.h"
#include "yumio/Fields.h"
#include "yumio/HistoryRecord.h"
#include "yumio/Package.h"
#include "yumio/RecordTexts.h"
#include "yumio/Records.h"
#include "yumio/ScriptValues.h"
#include "yumio/StopRequest.h"
#include "yumio/TransactionState.h"
#include "yumio/VersionLocks.h"

#include <QEventLoop>
#include <QHash>
#include <QMutex>
#include <QObject>
#include <QSet>
#include <QStringList>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <functional>
#include <vector>

class Expression;
class HProgressBar;
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

    // Call this function once, before any other function of this class. The caller still owns the three
    // widgets.
    void setup(QWidget* parentWidget, HProgressBar* total, HProgressBar* item);

    // Starts the interpreter and the script. After the first success, further calls do nothing. On failure,
    // reports an error and returns false. The back end is then unusable.
    bool initialize();

    // Returns the directories in which the package manager looks for repository files. The list is empty if
    // these directories are unknown.
    QStringList knownDirectories();
    // Returns a sentence about changes that are impossible for root now, or that may not last: for example,
    // the file system is read-only. Returns an empty text if no such restriction is known.
    QString restriction();

    // --- Collection. A successful collect() makes the records valid until the next clearEntries().

    // A collection from the cache needs no network and asks no questions. Such a collection leaves out the
    // repositories without metadata in the cache.
    enum class Source { Repositories, Cache };
    // The keys of repoEnable are repository identifiers. A value is true if the session uses the repository.
    // Unknown identifiers are ignored. `reader` can read rows before the end of the collection. If collect()
    // returns false, the records of these rows may be invalid.
    bool collect(const QHash<QString, bool>& repoEnable, Source source = Source::Repositories,
                 RecordTexts::Reader* reader = nullptr);
    // Returns the identifiers of the failing repositories that the user switched off for this session during
    // the last collection.
    const QStringList& unwantedRepos() const { return unwanted; }
    // Returns the identifiers of the failing repositories that the package manager left out without a
    // question during the last collection.
    const QStringList& skippedRepos() const { return skipped; }
    // Makes the script forget its packages and read the configuration again, on a worker. The graphical
    // thread waits in an event loop without user input.
    void reset();
    void clearEntries();
    // Deletes the records when the program ends. Does not release the script's objects, because the
    // interpreter is not used again.
    void clearEntriesBeforeQuit();

    // Returns whether the record is part of a replacement: a package with another name replaces this
    // installed package, or this available package replaces an installed package. The user must decide about
    // such a record: functions that mark many records at once skip it.
    bool isLeftToUser(const Package::Entry& entry) const { return records.isLeftToUser(entry); }
    // Returns the packages that replace the record's package, and the packages that this package replaces.
    // Both lists are empty for nearly all records.
    Replacement replacement(const Package::Entry& entry) const { return records.replacement(entry); }

    // Returns whether a worker is running.
    bool isWorking() const { return worker != nullptr; }
    // Returns whether rpm is changing the system now. Nothing may interrupt rpm during this time. Any thread
    // may call this function.
    bool isChangingSystem() const { return changingSystem; }
    // Asks the running operation to stop. Downloads and the wait for another process end at once. A step that
    // only computes is first completed. A stopped operation shows no message. The function returns false if
    // no worker runs, or if the worker changes the system.
    bool stop() { return stopRequest.request(); }
    StopRequest::State stopState() const { return stopRequest.state(); }
    // Returns whether the last operation was stopped.
    bool wasStopped() const { return stopped; }
    // Prepares the end of the program after a signal or the loss of the display. From this call on, the
    // program asks no questions, and log entries go to standard error. But if the display still exists, only
    // errors and warnings go to standard error. A worker that changes the system finishes its work; any other
    // worker gives up. The function waits for the worker without serving events, and then releases the
    // package manager's lock.
    void finish(bool displayIsThere);

    // Access to the records by position. While a worker rebuilds the list, count() returns 0.
    int count() const { return rebuilding ? 0 : records.count(); }
    Package::Entry* operator[](int row) const { return records.at(row); }

    // Returns whether the packages of this repository are in a local directory, so that the package manager
    // does not download them.
    bool isLocalRepo(const QString& id) const { return localRepos.value(id); }

    // --- Extra data. collectFileLists() and collectOtherData() load the data at most once, and return
    // whether the data are loaded.

    bool collectFileLists();
    bool collectOtherData();
    // A worker reads the search texts (Package::Entry::searchTexts) of the records that lack them. The extra
    // data must be loaded first. A search without these texts finds the same records, but is far slower.
    // Returns false if the user has stopped the operation. In this case, these records still lack their
    // texts.
    bool collectSearchTexts(const QVector<Package::Entry*>& wanted);
    // Compares the expression with `count` items, on several threads without the interpreter. Each thread
    // calls the function for some of the items; see ParallelMatching. Sets `found` for each item to 1 if it
    // matches, or to 0. Returns false if the user has stopped the operation. In this case, a thread may still
    // call the function for a while.
    using Matches = std::function<bool(const Expression& expression, size_t index)>;
    bool findMatches(const QString& expression, size_t count, const Matches& matches,
                     std::vector<char>& found);
    // Returns the free memory of all threads to the system. Otherwise, the C library would keep the memory of
    // a search for the next allocations.
    static void returnFreeMemory();
    // Runs a computation on a worker. The computation must need neither the interpreter nor graphical
    // objects. In the meantime, the window serves events, but keys and clicks wait.
    void compute(const std::function<void()>& computation);
    // Calls the function for each searched text, except the file list and the change log, until the function
    // returns true. Returns whether the function returned true.
    bool anySearchText(const Package::Entry& entry, const std::function<bool(const QString&)>& found);
    // A worker loads the change log of an available package, before getChangeLog() needs it. The first call
    // reads the change logs of the whole repository. If the worker cannot read them, getChangeLog() reports
    // the failure.
    void loadChangeLog(const Package::Entry& entry);
    bool haveFileLists() const { return fileListsLoaded; }
    bool haveOtherData() const { return otherDataLoaded; }

    // --- Applying

    // Applies the marks: resolves the dependencies, shows the listing, asks the user and runs the
    // transaction. Returns true if the user confirmed and the package manager reported no failure.
    bool apply();
    // Returns whether the last apply() began to change the system, regardless of its result.
    bool systemChanged() const { return transaction.transactionRan; }
    // Returns whether the last apply() was refused because another program has changed the system since the
    // last collection.
    bool isOutdated() const { return transaction.outdated; }
    // Returns the outcome of the last apply() or replay().
    const TransactionOutcome& transactionOutcome() const { return transaction.outcome; }

    // --- The history of transactions

    // Reads all transactions, the newest first. On failure, reports an error and returns false.
    bool readHistory(HistoryRecords& found);
    // Returns all details of a transaction as plain text. On failure, reports an error and returns an empty
    // string.
    QString describeTransaction(qint64 number);
    // Returns the reason why no transaction can be undone or repeated now, or an empty string. Call
    // readHistory() first.
    QString replayFault() const;
    // Undoes or repeats a recorded transaction. Ignores the marks of the records. Otherwise, works in the
    // same way as apply().
    bool replay(Replay kind, qint64 number);

    // Returns the marks. restoreMarks() sets them again after a new collection.
    Marks marks() const { return records.marks(); }
    // Returns the marks that the last apply() left out, because they cannot be carried out.
    const Marks& leftOutMarks() const { return transaction.leftOut; }
    // Sets each of these marks again, for the record with the same key. Skips records that do not permit the
    // action.
    void restoreMarks(const Marks& marks) { records.restoreMarks(marks); }

    // In each of the following functions, a worker removes files from the package manager's cache.
    bool cleanDbcache();
    bool cleanPackages();
    bool cleanMetadata();
    bool cleanAll();

    // --- Advisories

    // A worker reads the advisories about installed packages. The worker reads the advisories only once after
    // each collection. Returns whether the advisories have been read.
    bool collectAdvisories();
    // Returns the advisories, the newest first. The list is empty before collectAdvisories().
    const QVector<Advisory>& advisories() const { return advisoryList; }
    // Returns the identifiers of the advisories about versions after the installed version, the newest first.
    // If the record has no update, the list is empty.
    QStringList advisoriesOfUpdate(const Package::Entry& entry) const
    {
        return updateAdvisoryIds.value(&entry);
    }
    // Returns the record of a package, or null if it has no record. Only the graphical thread may call this
    // function.
    Package::Entry* recordOf(const QString& name, const QString& arch) { return findPackage(name, arch); }

    // --- Version locks

    // Returns the version locks at the time of the last collection.
    const VersionLocks& versionLocks() const { return versionLockState; }
    // Locks or unlocks the packages of these records. On failure, returns false, although some locks may have
    // changed. The records are outdated afterwards, so a new collection must follow.
    bool changeVersionLocks(const QVector<Package::Entry*>& entries, bool lockThem);

    // --- Texts of one record. If a record lacks the information, the text is empty.

    // Reads a field: on the graphical thread for a description, on a worker for a search.
    QString text(const Package::Entry& entry, Fields::Field field);
    // Each getter reads one field, or the state. The getters are part of the interface of the back end. The
    // program reads most fields through text(), so it calls only a few getters, and a new field needs none.
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
    // getFiles() returns one path per line. The two functions may start a worker.
    QString getFiles(const Package::Entry& entry);
    QString getChangeLog(const Package::Entry& entry);
    // One dependency per line.
    QString getProvides(const Package::Entry& entry) { return text(entry, Fields::Provides); }
    QString getRequires(const Package::Entry& entry) { return text(entry, Fields::Requires); }
    QString getRequiresPre(const Package::Entry& entry) { return text(entry, Fields::RequiresPre); }
    QString getConflicts(const Package::Entry& entry) { return text(entry, Fields::Conflicts); }
    QString getObsoletes(const Package::Entry& entry) { return text(entry, Fields::Obsoletes); }
    QString getRecommends(const Package::Entry& entry) { return text(entry, Fields::Recommends); }
    QString getSuggests(const Package::Entry& entry) { return text(entry, Fields::Suggests); }
    QString getSupplements(const Package::Entry& entry) { return text(entry, Fields::Supplements); }
    QString getEnhances(const Package::Entry& entry) { return text(entry, Fields::Enhances); }
    // One package per line; only groups have these texts.
    QString getMandatoryPkgs(const Package::Entry& entry) { return text(entry, Fields::MandatoryPackages); }
    QString getDefaultPkgs(const Package::Entry& entry) { return text(entry, Fields::DefaultPackages); }
    QString getOptionalPkgs(const Package::Entry& entry) { return text(entry, Fields::OptionalPackages); }
    QString getConditionalPkgs(const Package::Entry& entry)
    {
        return text(entry, Fields::ConditionalPackages);
    }
    QString getRelocations(const Package::Entry& entry) { return text(entry, Fields::Relocations); }

    // Returns the value of a variable of the package manager's configuration, such as "basearch".
    QString getYumVar(QString variable);
    // Replaces the variables in a text in the same way as the package manager does in repository files.
    QString expandVariables(QString text);
    // The version of dnf as a text and as a number. Part of the interface of the back end; the program does
    // not need the version now.
    QString dnfVersionStr();
    // Returns 10000 * first + 100 * second + third part of the version, or 0 if the version is unknown.
    quint64 dnfVersion();

    // --- Log and messages. Any thread may call these functions.

    Log::EntryList& logEntries() { return logList; }
    // Each line of the text becomes an entry of the log. A new line begins before an error number such as
    // "[Errno 2]".
    void log(Log::Kind kind, unsigned int level, const QString& text);
    // error() and warning() log the text and show it in a dialog, without passwords in URLs. They return when
    // the user has closed the dialog.
    void error(const QString& text) override;
    void warning(const QString& text) override;
    void stdoutCapturedWrite(const QString& text) override;
    void stderrCapturedWrite(const QString& text) override;
    void captureEnded() override;

    // --- Functions for the script (YumIOCTarget). If no worker runs, they run on the graphical thread.

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
    // Lets a new worker begin its work. The event loop that waits for the worker calls this slot.
    void blockerRelease();

Q_SIGNALS:
    void collectedExtraData();
    // Emitted on any thread.
    void stopStateChanged();

private:
    // Tests use this class to call private operations.
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
    class OperationScope;

    // Delays a worker until the event loop of the graphical thread runs. Otherwise the worker might end that
    // loop before the loop has begun.
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

    // The current operation. The effect of some callbacks depends on this value.
    enum Phase : quint32 { Idle = 0, Collecting = 1, Applying = 2 };

    // Resets the phase to Idle on every path out of an operation.
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

    // The functions whose names end in Real run on a worker. After each of these functions, an alias names
    // the class of its worker.

    // Start (YumIOStart.cpp)
    bool initializeReal();
    using InitializeThread = WorkerThread<&YumIO::initializeReal>;
    void resetReal();
    using ResetThread = WorkerThread<&YumIO::resetReal>;

    // Translations and functions for the script, values of the package manager, records (YumIO.cpp)
    void offerTranslations();
    void offerFunctions();
    static PyObject* addToListing(PyObject* capsule, PyObject* text);
    static PyObject* changeActivity(PyObject* capsule, PyObject* text);
    static PyObject* faultOfMetadata(PyObject* capsule, PyObject* args);
    static PyObject* waitForLock(PyObject* capsule, PyObject* text);
    static PyObject* stopWanted(PyObject* capsule, PyObject* last);
    static PyObject* logWarning(PyObject* capsule, PyObject* args);
    static PyObject* addBeforeListing(PyObject* capsule, PyObject* text);
    void releaseLock();
    using ScriptValues::getVerRel; // otherwise the function for records would hide this function
    QString getBiArch(const QString& arch);
    static Package::Entry* installedEntry(Package::Entry* entry) { return Records::installedEntry(entry); }
    Package::Entry* findPackage(const QString& name);
    Package::Entry* findPackage(const QString& name, const QString& arch);
    void clearEntriesReal();
    using ClearEntriesThread = WorkerThread<&YumIO::clearEntriesReal>;
    void forgetEntries(const std::function<void(PyObject*)>& drop);

    // Worker threads (YumIOThreads.cpp)
    // execWorkThread() starts the thread, and waits in `loop` until the thread has ended. The loop serves the
    // events that `flags` selects. If `stoppable` is true, a request to stop has an effect from the start.
    void execWorkThread(QEventLoop& loop, QThread& thread, bool stoppable = false,
                        QEventLoop::ProcessEventsFlags flags = QEventLoop::AllEvents);
    // Returns `done`, the result of the operation. If the user has stopped the operation, logs this.
    bool outcome(bool done);
    // Returns whether a running operation that does not change the system must end.
    bool mustGiveUp() const;
    void computeReal(const std::function<void()>& computation);
    using ComputeThread = WorkerThread<&YumIO::computeReal>;

    // Collection (YumIOCollect.cpp)
    bool collectReal(const QHash<QString, bool>& repoEnable, Source source);
    using CollectThread = WorkerThread<&YumIO::collectReal>;
    // The steps of a collection, in their order. Each step returns whether the collection can go on. If a
    // step returns false, it has already reported its failure.
    bool lockPackages();
    bool readConfiguration(const QHash<QString, bool>& repoEnable);
    bool readRepos(Source source);
    void readSkippedRepos();
    bool collectUpdates();
    bool collectInstalledAndAvailable();
    bool collectAllGroups();
    // Calls a method of the script and reports a failure. `what` completes the words "Unable to" in this
    // report, for example "collect groups". Returns a new reference or null.
    PyObject* collected(const char* method, const QString& what, bool capture);
    void addCounterparts();
    static PyObject* goOnWithout(PyObject* capsule, PyObject* args); // for the script
    // Enables and disables repositories for the session. Ignores `baseObject`, because `repos` belongs to the
    // only base object of the script.
    void useRepos(PyObject* baseObject, const QHash<QString, bool>& repoEnable);
    QStringList collectRepos(PyObject* reposDict);
    bool collectField(PyObject* all, const char* field, Package::State state);
    // Collects the installed packages that the configuration excludes. If the script does not provide the set
    // of these packages, does nothing.
    bool collectExcluded(PyObject* all);
    bool collectSet(PyObject* set, Package::State state, bool excluded = false);
    void noteRepository(const Package::Entry& entry);
    class RepeatedText;
    // The key and the architecture are arguments, because the caller has already read both. `repoOf` converts
    // the identifier of the repository.
    void collectPkg(Package::Entry*& slot, Package::State state, PyObject* pkg, const EntryKey& key,
                    const QString& arch, RepeatedText& repoOf);
    bool collectGroups(PyObject* groups);
    // If the history cannot be read, sets historyFault to the reason. Later calls then do not read the
    // history.
    void collectGroup(Package::Entry*& slot, PyObject* group, QString name, PyObject* historyGroup,
                      QString& historyFault);
    void collectReplacements();
    bool stopCollection();
    bool upToDateGroup(const Package::Entry& entry);
    bool upToDateGroupPkgs(const Package::Entry& entry, const char* item);

    // Advisories (YumIOAdvisories.cpp)
    bool collectAdvisoriesReal();
    using CollectAdvisoriesThread = WorkerThread<&YumIO::collectAdvisoriesReal>;
    void collectUpdateAdvisories();
    void readAdvisory(PyObject* tuple); // leaves an exception pending if the tuple is not an advisory
    // If `keep` is true, the script keeps an index of all advisories in memory. A search of many packages
    // needs this index. If `keep` is false, the script deletes this index.
    void indexAdvisories(bool keep);

    // Version locks (YumIOVersionLocks.cpp)
    bool changeVersionLocksReal(const QVector<Package::Entry*>& entries, bool lockThem);
    using ChangeVersionLocksThread = WorkerThread<&YumIO::changeVersionLocksReal>;
    void collectVersionLocks();

    // Searching (YumIOSearch.cpp)
    bool collectSearchTextsReal(const QVector<Package::Entry*>& wanted);
    using CollectSearchTextsThread = WorkerThread<&YumIO::collectSearchTextsReal>;
    bool findMatchesReal(const QString& expression, size_t count, const Matches& matches,
                         std::vector<char>& found);
    using FindMatchesThread = WorkerThread<&YumIO::findMatchesReal>;
    // A search in at most this number of packages reads each package separately. For more packages, it reads
    // the metadata files.
    static int fewPackages;
    QString metadataPath(const QString& repo, const char* kind); // empty if the file is missing

    // Extra data and details (YumIODetails.cpp)
    bool collectFileListsReal();
    using CollectFileListsThread = WorkerThread<&YumIO::collectFileListsReal>;
    bool collectOtherDataReal();
    using CollectOtherDataThread = WorkerThread<&YumIO::collectOtherDataReal>;
    void loadChangeLogReal(const Package::Entry& entry);
    using LoadChangeLogThread = WorkerThread<&YumIO::loadChangeLogReal>;
    bool collectExtra(const QString& heading, const QString& dataName, const QString& totalText,
                      const char* method, const QString& what, bool& loaded);
    QString getRelDepList(PyObject* pkg, const char* attr);
    QString getGroupPkgs(const Package::Entry& entry, const char* item);
    QString getRpmList(PyObject* pkg, const char* tag);
    // Returns a new reference or null. Unlike getRpmList(), this function can also read tags that are not
    // lists. Part of the interface of the back end; only tests call it now.
    PyObject* getRpmHdrValue(PyObject* pkg, const char* tag);
    PyObject* headerValue(PyObject* header, const char* tag); // new reference or null
    void missingAttribute(const char* attr);
    QString textOf(const Package::Entry& entry, const char* attr);
    QString timeOf(const Package::Entry& entry, const char* attr);

    // Applying (YumIOApply.cpp)
    bool applyReal();
    using ApplyThread = WorkerThread<&YumIO::applyReal>;
    // Returns whether the transaction can begin. heading: the heading of the operation in the log.
    bool startTransaction(const QString& heading);
    void startResolving();
    // Adds the packages or the group of a marked record to the lists for the script.
    struct MarkedObjects;
    bool addMarked(Package::Entry& entry, MarkedObjects& lists);
    bool addUpdate(const Package::Entry& entry, MarkedObjects& lists);
    bool addRemoval(Package::Entry& entry, MarkedObjects& lists);
    bool addObject(const PyRef& list, PyObject* object, const QString& failure, const QString& name);
    // Calls a method of the script that carries out a transaction, and reads its outcome. `method` must call
    // pyMethodTry(), so that every exception stays pending until the outcome is known.
    bool carryOut(const std::function<PyObject*()>& method);
    bool applyGroups();
    bool applyGrpPkgs(const Package::Entry& group, const char* listName, GroupCheck check);
    bool applyGrpChkRemove(const Package::Entry& group, const Package::Entry& pkg);
    bool applyGrpChkInsUpd(const Package::Entry& group, const Package::Entry& pkg);
    bool applyGrpConflict(const Package::Entry& group, const Package::Entry& pkg);
    PyObject* getGroupItem(const Package::Entry& group, const char* attr); // new reference or null
    // The parts of the listing after the marked packages.
    struct Listing
    {
        QString dependencies;
        QString dependents;
        QString unused;
    };
    void listItem(PyObject* item, Listing& listing);
    QString scriptWords(const char* text);
    bool isMarkedForRemoval(PyObject* item);
    QString noticeOfListing() const;
    QString summaryOfListing() const;
    void weighItem(PyObject* item, long action);
    void weighUnlisted(PyObject* item, long action);
    void readOutcome();
    void readCounts(PyObject* values);
    bool verifyLocalPkg(PyObject* pkg);

    // Cleaning the caches (YumIOClean.cpp)
    bool cleanType(const QString& label, const char* method);
    bool cleanReal(const QString& label, const char* method);
    using CleanThread = WorkerThread<&YumIO::cleanReal>;

    // The history (YumIOHistory.cpp)
    bool readHistoryReal(HistoryRecords* found);
    using ReadHistoryThread = WorkerThread<&YumIO::readHistoryReal>;
    QString describeTransactionReal(qint64 number);
    using DescribeTransactionThread = WorkerThread<&YumIO::describeTransactionReal>;
    bool replayReal(Replay kind, qint64 number);
    using ReplayThread = WorkerThread<&YumIO::replayReal>;
    static QString replayHeading(Replay kind);

    // Output and progress (YumIOProgress.cpp)
    PyObject* stdWrite(PyObject* args, Log::Kind kind, unsigned int level, QString& pending);
    void write(const QString& text, Log::Kind kind, unsigned int level, QString& pending);
    // Logs an unfinished last line of an operation, so that the next operation's output begins on a new line.
    void finishLine(Log::Kind kind, unsigned int level, QString& pending);
    void finishLines(); // calls finishLine() for standard output and standard error
    PyObject* badArguments(const char* text);
    PyObject* badPhase(const char* text);
    static PyObject* noneUnlessPending(); // returns None, or null if an exception is pending
    bool isPayload(PyObject* object);
    bool payloadError(const QString& text); // always returns false
    bool payloadText(PyObject* payload, const char* function, QString& text, quint64& size);
    void tsDownloadStart();
    // Assigns the next free download slot to a payload.
    QHash<QString, quint32>::const_iterator startSlot(const QString& text, quint64 size);
    void tsDownloadProgress(PyObject* payload, const QString& text, quint64 size, quint64 done);
    void tsDownloadEnd(PyObject* payload, const QString& text, quint64 size, long status);
    // One step of rpm's work on a package.
    struct PackageStep
    {
        QString text;   // for the progress bar, with %1 for the package's name
        quint64 weight; // the weight of the step in the progress
    };
    // action: a Transaction::Action. newWeight: the weight of a package that rpm installs. oldSize: the bytes
    // of the installed version.
    static PackageStep packageStep(long action, quint64 newWeight, quint64 oldSize);
    void collectProgress(const QString& repository, quint64 total, quint64 done);
    static PyObject* showReading(PyObject* capsule, PyObject* args); // for the script
    void collectEnd();
    bool isInstance(PyObject* object, PyObject* type);

    // Messages and failures of the script (YumIOMessages.cpp)
    bool internalError(const QString& text);
    void error(const char* text) override;
    void warning(const char* text) override;
    void pythonException(const QString& text);
    void pythonExceptionV(const QString& text);
    int exceptionLogStart();
    void showExceptionLog(int start, const QString& text);
    QString afterCarriedOut(const QString& text) const;
    void pyExceptExpect(PyObject* type) override;
    void pyExceptClear() override;
    void exceptionExpected() override;
    void tracebackOnTerminal(const char* text) override;
    void commExceptSetup();
    bool commExceptRaised(PyObject* result, const QString& what);
    void showRemarks();
    // Returns true if `result` is null because the user has stopped the operation. In this case, logs the
    // failure as a detail.
    bool stopRaised(PyObject* result);

    // Child processes (ChildSignal.cpp)
    // Only ChildSignal calls sigchldDisable() and sigchldRestore().
    bool sigchldDisable();
    void sigchldRestore();
    bool reapChildren();

    Records records;
    RecordTexts recordTexts;
    RecordTexts::Reader* rowReader = nullptr; // the reader of the running collection
    VersionLocks versionLockState;
    QHash<QString, bool> localRepos; // whether each collected repository is local, by its identifier
    QVector<Advisory> advisoryList;
    bool advisoriesLoaded = false;
    QHash<const Package::Entry*, QStringList> updateAdvisoryIds;
    QString basearch;
    QHash<QString, QString> biArchByArch; // the script's answers to getBiArch()
    bool clearing = false;     // the records are being deleted; kept for debuggers, no code reads it
    QThread* worker = nullptr; // the running worker, or null
    QString missingForReplay;  // why the script cannot undo or repeat transactions; usually empty
    bool blockerHeld = false;  // the worker waits for blockerRelease()
    std::atomic<bool> changingSystem{false};
    StopRequest stopRequest;
    bool stopped = false; // the user stopped the last operation
    // A worker changes the list of records, so the graphical thread must not read the list.
    bool rebuilding = false;
    Log::EntryList logList;
    // The number of log entries at the last call of pyExceptExpect(), or -1 outside an expectation scope.
    int exceptLogStart = -1;
    // While a failed transaction is reported: the changes before the failure. The message about the failure
    // begins with these changes. Otherwise empty.
    QString carriedOut;
    bool fileListsLoaded = false;
    bool otherDataLoaded = false;
    QSet<QByteArray> missingAttributes; // attributes whose absence was already reported to the user
    QString reportedHistoryFault;       // the reason that was already reported to the user
    YumIODialogs* dialogs = nullptr;
    QWidget* parent = nullptr;
    HProgressBar* totalBar = nullptr;
    HProgressBar* itemBar = nullptr;
    Progress::Object* progress = nullptr; // null between operations
    YumIOCapturers* capturers = nullptr;
    bool locked = false;
    PyObject* rpmDict = nullptr;    // borrowed
    PyObject* yumIOClass = nullptr; // borrowed; unused after initialize()
    PyRef yumIO;
    PyRef base;
    PyRef repos;
    QStringList enabledRepos;
    QStringList unwanted;        // the result of unwantedRepos()
    QStringList skipped;         // the result of skippedRepos()
    bool allUnwanted = false;    // the user has given one answer for all failing repositories
    bool everUnwanted = false;   // the user has switched off a failing repository in this session
    bool readingIsShown = false; // showReading() has named the repository that the script reads
    QString readingName;         // the kind of data that the operation reads; kept for debuggers and tests
    quint32 readingCount = 0;
    QString readingRepo;
    quint64 readingMax = 1;

    // Exception and payload classes (borrowed). OtherRepoError and MetadataError are null with dnf 4, which
    // lacks these two classes; other package managers have them.
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
    // The standard error of the process, even if the script redirects sys.stderr. For diagnostics only.
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

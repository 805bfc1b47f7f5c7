// The texts that a search over every field looks at: read once, on a worker, and kept with the records.

#include "yumio/YumIO.h"

#include <algorithm>
#include <future>

#include "python/CPython.h"
#include "services/Progress.h"
#include "services/YumIODialogs.h"
#include "yumio/Metadata.h"
#include "yumio/WorkerThreads.h"

namespace {

// Puts the texts of one record after each other, in memory that all records share.
class SearchTextsWriter
{
public:
    void add(const QByteArray& text)
    {
        if (text.isEmpty()) {
            // One is enough to be found by an expression that an empty text matches.
            hasEmpty = true;
            return;
        }
        texts += text.constData(); // matching ends at a zero too
        texts += '\0';
    }
    // In memory of its own, no more than it needs.
    QByteArray finish()
    {
        if (hasEmpty) {
            texts += '\0';
        }
        const QByteArray finished(texts.constData(), texts.size());
        texts.resize(0);
        hasEmpty = false;
        return finished;
    }

private:
    QByteArray texts;
    bool hasEmpty = false;
};

// What is wanted from the metadata of one repository, and what went wrong.
struct RepositoryTexts
{
    QString fileListsPath;
    QString changeLogsPath;
    Metadata::Wanted wanted;
    QString filesProblem;
    QString changeLogsProblem;
};

} // namespace

int YumIO::fewPackages = 300;

void YumIO::collectSearchTexts(const QVector<Package::Entry*>& wanted)
{
    QVector<Package::Entry*> unread;
    for (Package::Entry* entry : wanted) {
        if (entry->searchTexts.isNull()) {
            unread.append(entry);
        }
    }
    if (unread.isEmpty() || !fileListsLoaded || !otherDataLoaded) {
        return;
    }
    QEventLoop loop;
    CollectSearchTextsThread thread(this, loop, unread);
    execWorkThread(loop, thread);
}

QString YumIO::metadataPath(const QString& repo, const char* kind)
{
    if (PyObject_HasAttrString(yumIO.get(), "metadataPath") == 0) {
        return QString(); // the packages are asked one by one then
    }
    PyRef path(pyMethodCall(yumIO.get(), "metadataPath", "(s,s)", repo.toUtf8().constData(), kind));
    if (!path) {
        PyErr_Clear();
        return QString();
    }
    return path.get() == Py_None ? QString() : pyStringDec(path.release());
}

bool YumIO::anySearchText(const Package::Entry& entry, const std::function<bool(const QString&)>& found)
{
    const int owner = entry.kind == Package::Group ? Fields::OfGroups : Fields::OfPackages;
    return Fields::any(owner | Fields::Searched,
                       [this, &entry, &found](Fields::Field field) { return found(text(entry, field)); });
}

void YumIO::collectSearchTextsReal(const QVector<Package::Entry*>& wanted)
{
    blocker.block();
    Progress::User progressUser(progress, totalBar, itemBar);
    YumIODialogsUser dialogsUser(dialogs, parent);
    log(Log::Action, 0, tr("Collecting Texts to Search"));
    PyGILStateWrapper lock(true);
    const auto steps = static_cast<Steps>(wanted.count());
    progress->startTotal(tr("Reading package texts: Total Progress"), steps);
    progress->startItem(tr("Reading packages"), steps, steps);

    // The metadata are read beside the packages: that needs no interpreter.
    QHash<QString, RepositoryTexts> repositories;
    int fromRepositories = 0;
    for (const Package::Entry* entry : wanted) {
        fromRepositories += entry->kind != Package::Group && entry->state != Package::Installed ? 1 : 0;
    }
    if (fromRepositories > fewPackages) {
        for (int place = 0; place < wanted.count(); ++place) {
            const Package::Entry* entry = wanted.at(place);
            if (entry->kind == Package::Group || PyObject_HasAttrString(entry->pyObject, "chksum") == 0) {
                continue;
            }
            RepositoryTexts& repository = repositories[entry->repo];
            const QByteArray checksum = checksumOf(entry->pyObject);
            if (!checksum.isEmpty()) {
                repository.wanted.insert(checksum, place);
            }
        }
    }
    for (auto i = repositories.begin(); i != repositories.end(); ++i) {
        i->fileListsPath = metadataPath(i.key(), "filelists");
        i->changeLogsPath = metadataPath(i.key(), "other");
    }
    std::vector<QByteArray> files(static_cast<size_t>(wanted.count()));
    std::vector<QByteArray> changeLogs(static_cast<size_t>(wanted.count()));
    // Where there can be no further thread, both are read when they are waited for.
    const auto whenPossible = std::launch::async | std::launch::deferred;
    const auto readingFiles = std::async(whenPossible, [&repositories, &files] {
        for (RepositoryTexts& repository : repositories) {
            if (!repository.fileListsPath.isEmpty()) {
                Metadata::readFileLists(repository.fileListsPath, repository.wanted, files,
                                        repository.filesProblem);
            }
        }
    });
    const auto readingChangeLogs = std::async(whenPossible, [&repositories, &changeLogs] {
        for (RepositoryTexts& repository : repositories) {
            if (!repository.changeLogsPath.isEmpty()) {
                Metadata::readChangeLogs(repository.changeLogsPath, repository.wanted, changeLogs,
                                         repository.changeLogsProblem);
            }
        }
    });

    // The package manager keeps long texts packed by many; in its own order each pack is unpacked once. The
    // hash of a package is its number there.
    std::vector<std::pair<Py_hash_t, int>> order;
    order.reserve(static_cast<size_t>(wanted.count()));
    for (int place = 0; place < wanted.count(); ++place) {
        order.emplace_back(PyObject_Hash(wanted.at(place)->pyObject), place);
        PyErr_Clear(); // one that has no number comes first
    }
    std::sort(order.begin(), order.end());
    SearchTextsWriter writer;
    Steps done = 0;
    for (const auto& each : order) {
        Package::Entry* entry = wanted.at(each.second);
        anySearchText(*entry, [&writer](const QString& text) {
            writer.add(text.toUtf8());
            return false; // all of them
        });
        entry->searchTexts = writer.finish();
        progress->setItemValue(++done);
    }
    readingFiles.wait();
    readingChangeLogs.wait();
    for (const RepositoryTexts& repository : qAsConst(repositories)) {
        const auto warn = [this](const QString& path, const QString& problem) {
            if (!problem.isEmpty()) {
                log(Log::Warning, 1, tr("Unable to read %1: %2").arg(path, problem));
            }
        };
        warn(repository.fileListsPath, repository.filesProblem);
        warn(repository.changeLogsPath, repository.changeLogsProblem);
    }
    for (int place = 0; place < wanted.count(); ++place) {
        Package::Entry* entry = wanted.at(place);
        if (entry->kind == Package::Group) {
            continue;
        }
        // What the metadata do not hold, the package itself may.
        const QByteArray& itsFiles = files[static_cast<size_t>(place)];
        entry->searchFiles = itsFiles.isNull() ? getFiles(*entry).toUtf8() : itsFiles;
        const QByteArray& itsChangeLog = changeLogs[static_cast<size_t>(place)];
        entry->searchChangeLog = itsChangeLog.isNull() ? getChangeLog(*entry).toUtf8() : itsChangeLog;
    }
    progress->reset();
}

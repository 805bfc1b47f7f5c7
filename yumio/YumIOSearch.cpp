// SPDX-License-Identifier: GPL-2.0-or-later

// Collects the texts for a search in every field. A worker reads them once, and the records store them.

#include "yumio/YumIO.h"

#include <algorithm>
#include <future>

#include "python/CPython.h"
#include "services/Progress.h"
#include "yumio/Metadata.h"
#include "yumio/OperationScope.h"
#include "yumio/WorkerThreads.h"

namespace {

// Joins the texts of one record. All records use the same buffer, one after the other.
class SearchTextsWriter
{
public:
    void add(const QByteArray& text)
    {
        if (text.isEmpty()) {
            // finish() adds a single empty text, which is enough for an expression that matches empty texts.
            hasEmpty = true;
            return;
        }
        texts += text.constData(); // copies only up to a zero byte, because matching also ends there
        texts += '\0';
    }
    // Returns a copy of the texts without unused memory.
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

// For more packages, an index of all advisories is faster.
constexpr int fewAdvisoryReads = 10;

// The paths of one repository's metadata, the wanted packages, and the errors of both files.
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
        return QString(); // the packages are then read one by one
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
    return Fields::forEachUntil(owner | Fields::Searched, [this, &entry, &found](Fields::Field field) {
        return found(text(entry, field));
    });
}

void YumIO::collectSearchTextsReal(const QVector<Package::Entry*>& wanted)
{
    OperationScope operationScope(*this);
    log(Log::Action, 0, tr("Collecting Texts to Search"));
    PyGILStateWrapper lock(true);
    const auto steps = static_cast<Steps>(wanted.count());
    progress->startTotal(tr("Reading package texts: Total Progress"), steps);
    progress->startItem(tr("Reading packages"), steps, steps);

    // Other threads read the metadata at the same time, because this does not need the interpreter.
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
    // If no other thread can start, wait() reads the data on this thread.
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

    // The package manager stores long texts in compressed blocks. If the packages are read in its order, it
    // decompresses each block only once. A package's hash is its position in that order.
    std::vector<std::pair<Py_hash_t, int>> order;
    order.reserve(static_cast<size_t>(wanted.count()));
    for (int place = 0; place < wanted.count(); ++place) {
        order.emplace_back(PyObject_Hash(wanted.at(place)->pyObject), place);
        PyErr_Clear(); // a package without a hash comes first
    }
    std::sort(order.begin(), order.end());
    const bool indexed = wanted.count() > fewAdvisoryReads;
    if (indexed) {
        indexAdvisories(true);
    }
    SearchTextsWriter writer;
    Steps done = 0;
    for (const auto& each : order) {
        Package::Entry* entry = wanted.at(each.second);
        anySearchText(*entry, [&writer](const QString& text) {
            writer.add(text.toUtf8());
            return false; // continue with the next text
        });
        entry->searchTexts = writer.finish();
        progress->setItemValue(++done);
    }
    if (indexed) {
        indexAdvisories(false);
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
        // If the metadata files lack a text, the package object may have it.
        const QByteArray& itsFiles = files[static_cast<size_t>(place)];
        entry->searchFiles = itsFiles.isNull() ? getFiles(*entry).toUtf8() : itsFiles;
        const QByteArray& itsChangeLog = changeLogs[static_cast<size_t>(place)];
        entry->searchChangeLog = itsChangeLog.isNull() ? getChangeLog(*entry).toUtf8() : itsChangeLog;
    }
    progress->reset();
}

// SPDX-License-Identifier: GPL-2.0-or-later

// Collects the texts for a search in every field. A worker reads these texts once, and the records store
// them. Then several threads compare the texts with an expression.

#include "yumio/YumIO.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <QElapsedTimer>

#include <malloc.h>

#include "python/CPython.h"
#include "services/Progress.h"
#include "widgets/ParallelMatching.h"
#include "yumio/Metadata.h"
#include "yumio/OperationScope.h"
#include "yumio/WorkerThreads.h"

namespace {

// Reads the fields of records, and packs their texts, each followed by a zero byte. YumIO::text() reads any
// field, but converts each text twice, and creates the name of the attribute again for each record. Nearly
// all attributes are ASCII texts, lists of such texts, or empty. This class copies their bytes directly. One
// FieldReader reads all records in turn, so that its memory is allocated only once. The calling thread must
// hold the interpreter lock.
class FieldReader
{
public:
    explicit FieldReader(YumIO& backEnd) : yumIO(backEnd), names(Fields::Count)
    {
        for (int i = 0; i < Fields::Count; ++i) {
            const char* const attribute = Fields::row(static_cast<Fields::Field>(i)).attribute;
            if (attribute != nullptr) {
                names[static_cast<size_t>(i)] = PyRef(PyUnicode_InternFromString(attribute));
            }
        }
    }

    // Packs the texts of a record.
    void read(const Package::Entry& entry, TextPacker& packer, PackedText& target)
    {
        texts.clear();
        hasEmpty = false;
        const int owner = entry.kind == Package::Group ? Fields::OfGroups : Fields::OfPackages;
        Fields::forEachUntil(owner | Fields::Searched, [this, &entry](Fields::Field field) {
            if (!addDirectly(entry, field)) {
                add(yumIO.text(entry, field));
            }
            return false; // go on with the next field
        });
        if (hasEmpty) {
            texts += '\0';
        }
        packer.add(target, texts.data(), texts.size());
    }

private:
    // Adds a text up to its first zero byte, because a comparison would end there too. Does not add an empty
    // text: read() later adds one empty text for all empty fields. This is enough for an expression that
    // matches an empty text.
    void add(const char* text, size_t size)
    {
        size = strnlen(text, size);
        if (size == 0) {
            hasEmpty = true;
            return;
        }
        texts.append(text, size);
        texts += '\0';
    }
    void add(const QString& text)
    {
        const QByteArray bytes = text.toUtf8();
        add(bytes.constData(), static_cast<size_t>(bytes.size()));
    }

    // Adds the text of a field, or returns false if this is impossible.
    bool addDirectly(const Package::Entry& entry, Fields::Field field)
    {
        const Fields::Row& row = Fields::row(field);
        PyObject* const name = names[static_cast<size_t>(field)].get();
        if (row.source == Fields::Source::Record) {
            add(entry.*row.member);
            return true;
        }
        if (row.source == Fields::Source::Header && entry.state != Package::Installed) {
            hasEmpty = true; // do not ask the script, which would raise an exception
            return true;
        }
        if (name == nullptr) {
            PyErr_Clear();
            return false;
        }
        switch (row.source) {
        case Fields::Source::Text:
            return addText(entry.pyObject, name);
        case Fields::Source::Time:
            return addNoTime(entry.pyObject, name);
        case Fields::Source::Dependencies:
            return addList(entry.pyObject, name);
        default:
            return false;
        }
    }

    // The following functions read an attribute. If the attribute is missing, they return false without an
    // exception.

    bool addText(PyObject* package, PyObject* name)
    {
        const PyRef value(PyObject_GetAttr(package, name));
        if (value.get() == Py_None) {
            hasEmpty = true;
            return true;
        }
        std::string_view text;
        if (!isAscii(value.get(), text)) {
            return false;
        }
        while (!text.empty() && text.back() == '\n') {
            text.remove_suffix(1);
        }
        add(text.data(), text.size());
        return true;
    }

    bool addNoTime(PyObject* package, PyObject* name)
    {
        const PyRef value(PyObject_GetAttr(package, name));
        if (!value) {
            PyErr_Clear();
            return false;
        }
        if (value.get() != Py_None &&
            (!PyLong_CheckExact(value.get()) || PyObject_IsTrue(value.get()) != 0)) {
            return false;
        }
        hasEmpty = true;
        return true;
    }

    bool addList(PyObject* package, PyObject* name)
    {
        const PyRef list(PyObject_GetAttr(package, name));
        if (!list) {
            PyErr_Clear();
            return false;
        }
        if (PyList_CheckExact(list.get()) == 0) {
            return false;
        }
        const Py_ssize_t count = PyList_GET_SIZE(list.get());
        items.clear();
        parts.clear();
        for (Py_ssize_t i = 0; i < count; ++i) {
            std::string_view part;
            items.emplace_back(PyObject_Str(PyList_GET_ITEM(list.get(), i)));
            if (!isAscii(items.back().get(), part)) {
                return false;
            }
            parts.push_back(part);
        }
        std::sort(parts.begin(), parts.end());
        joined.clear();
        for (size_t i = 0; i < parts.size(); ++i) {
            if (i > 0) {
                joined += '\n';
            }
            joined += parts[i];
        }
        add(joined.data(), joined.size());
        return true;
    }

    // If the object is a string of ASCII characters, sets `text` to its characters.
    static bool isAscii(PyObject* object, std::string_view& text)
    {
        if (object == nullptr) {
            PyErr_Clear();
            return false;
        }
        if (!PyUnicode_Check(object) || !PyUnicode_IS_COMPACT_ASCII(object)) {
            return false;
        }
        text = std::string_view(reinterpret_cast<const char*>(PyUnicode_1BYTE_DATA(object)),
                                static_cast<size_t>(PyUnicode_GET_LENGTH(object)));
        return true;
    }

    YumIO& yumIO;
    std::vector<PyRef> names; // for each field, the name of its attribute; null if it has no attribute
    std::string texts;
    bool hasEmpty = false;
    std::vector<PyRef> items;
    std::vector<std::string_view> parts;
    std::string joined;
};

// If a search reads the advisories of more packages than this number, it first builds an index of all
// advisories, because reading with an index is faster.
constexpr int fewAdvisoryReads = 10;

// If a comparison takes longer than this number of milliseconds, the bars show its progress, and the Stop
// button is enabled. Otherwise, the bars and the button would flicker during each short comparison.
constexpr int shownAfter = 200;

// The interval, in milliseconds, at which a comparison shows its progress and checks for a request to stop.
constexpr int checkInterval = 20;

// A metadata file of a repository, and the error of reading it. Without such a file, the path is empty.
struct Document
{
    QString path;
    QString problem;
};

// A repository's two metadata files, and the packages to read from them.
struct RepositoryTexts
{
    Document fileLists;
    Document changeLogs;
    Metadata::Wanted wanted;
};

// For each repository, finds the wanted packages whose texts are in its metadata files.
QHash<QString, RepositoryTexts> byRepository(const QVector<Package::Entry*>& wanted,
                                             const std::function<QByteArray(PyObject*)>& checksumOf)
{
    QHash<QString, RepositoryTexts> found;
    for (int place = 0; place < wanted.count(); ++place) {
        const Package::Entry* entry = wanted.at(place);
        if (entry->kind == Package::Group) {
            continue;
        }
        const QByteArray checksum = checksumOf(entry->pyObject);
        if (!checksum.isEmpty()) {
            found[entry->repo].wanted.insert(checksum, place);
        } else if (PyObject_HasAttrString(entry->pyObject, "chksum") != 0) {
            found[entry->repo]; // the metadata are read, although they have no text of this package
        }
    }
    return found;
}

// Starts another thread that reads one metadata file of each repository, and packs the texts. The caller must
// keep all references until wait() of the result returns. If the system cannot start a thread, wait() reads
// the files.
std::future<void> startReading(decltype(&Metadata::readFileLists) read, Document RepositoryTexts::*which,
                               QHash<QString, RepositoryTexts>& repositories, std::vector<PackedText>& texts,
                               const std::function<bool()>& stopWanted)
{
    return std::async(std::launch::async | std::launch::deferred,
                      [read, which, &repositories, &texts, stopWanted] {
                          TextPacker packer;
                          const Metadata::Take take = [&packer, &texts](int index, const std::string& text) {
                              packer.add(texts[static_cast<size_t>(index)], text.data(), text.size());
                          };
                          for (RepositoryTexts& repository : repositories) {
                              Document& document = repository.*which;
                              if (!document.path.isEmpty()) {
                                  read(document.path, repository.wanted, take, document.problem, stopWanted);
                              }
                          }
                          packer.finish();
                      });
}

// Returns the packages in the order in which the package manager stores them. The package manager stores long
// texts in compressed blocks. If a search reads packages in the stored order, each block is decompressed only
// once. The hash of a package is its position in this order.
QVector<Package::Entry*> inStoredOrder(const QVector<Package::Entry*>& wanted)
{
    std::vector<std::pair<Py_hash_t, Package::Entry*>> order;
    order.reserve(static_cast<size_t>(wanted.count()));
    for (Package::Entry* entry : wanted) {
        order.emplace_back(PyObject_Hash(entry->pyObject), entry);
        PyErr_Clear(); // a package without a hash gets -1 and comes first
    }
    std::stable_sort(order.begin(), order.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    QVector<Package::Entry*> sorted;
    sorted.reserve(wanted.count());
    for (const auto& each : order) {
        sorted.append(each.second);
    }
    return sorted;
}

} // namespace

int YumIO::fewPackages = 300;

void YumIO::returnFreeMemory()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

bool YumIO::collectSearchTexts(const QVector<Package::Entry*>& wanted)
{
    QVector<Package::Entry*> unread;
    for (Package::Entry* entry : wanted) {
        if (entry->searchTexts.isNull()) {
            unread.append(entry);
        }
    }
    if (unread.isEmpty() || !fileListsLoaded || !otherDataLoaded) {
        return true;
    }
    QEventLoop loop;
    CollectSearchTextsThread thread(this, loop, unread);
    execWorkThread(loop, thread, true);
    return outcome(thread.result);
}

bool YumIO::findMatches(const QString& expression, size_t count, const Matches& matches,
                        std::vector<char>& found)
{
    QEventLoop loop;
    FindMatchesThread thread(this, loop, expression, count, matches, found);
    execWorkThread(loop, thread);
    return outcome(thread.result);
}

bool YumIO::findMatchesReal(const QString& expression, size_t count, const Matches& matches,
                            std::vector<char>& found)
{
    blocker.block();
    std::optional<OperationScope> operationScope;
    QElapsedTimer running;
    running.start();
    const ParallelMatching matching(expression, count, matches);
    while (!matching.wait(checkInterval)) {
        if (mustGiveUp()) {
            return false; // do not wait: the threads cannot be interrupted
        }
        if (!operationScope && running.elapsed() >= shownAfter) {
            operationScope.emplace(*this);
            log(Log::Action, 0, tr("Comparing Packages with the Expression"));
            progress->startTotal(tr("Comparing with the expression: Total Progress"), count);
            progress->startItem(tr("Comparing packages"), count, count);
            stopRequest.setStoppable(true);
        }
        if (operationScope) {
            progress->setItemValue(matching.done());
        }
    }
    if (operationScope) {
        progress->reset();
    }
    found = matching.found();
    return true;
}

QString YumIO::metadataPath(const QString& repo, const char* kind)
{
    if (PyObject_HasAttrString(yumIO.get(), "metadataPath") == 0) {
        return QString(); // the script cannot name the file, so each package is read separately
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

bool YumIO::collectSearchTextsReal(const QVector<Package::Entry*>& wanted)
{
    OperationScope operationScope(*this);
    log(Log::Action, 0, tr("Collecting Texts to Search"));
    PyGILStateWrapper lock(true);
    const auto steps = static_cast<Steps>(wanted.count());
    progress->startTotal(tr("Reading package texts: Total Progress"), steps);
    progress->startItem(tr("Reading packages"), steps, steps);

    // Other threads read the metadata files while this thread reads package objects. Only package objects
    // need the interpreter.
    QHash<QString, RepositoryTexts> repositories;
    const auto fromRepositories =
        std::count_if(wanted.cbegin(), wanted.cend(), [](const Package::Entry* entry) {
            return entry->kind != Package::Group && entry->state != Package::Installed;
        });
    if (fromRepositories > fewPackages) {
        repositories = byRepository(wanted, [this](PyObject* package) { return checksumOf(package); });
    }
    for (auto i = repositories.begin(); i != repositories.end(); ++i) {
        i->fileLists.path = metadataPath(i.key(), "filelists");
        i->changeLogs.path = metadataPath(i.key(), "other");
    }
    std::vector<PackedText> files(static_cast<size_t>(wanted.count()));
    std::vector<PackedText> changeLogs(static_cast<size_t>(wanted.count()));
    const auto stopWanted = [this] { return mustGiveUp(); };
    const auto readingFiles =
        startReading(Metadata::readFileLists, &RepositoryTexts::fileLists, repositories, files, stopWanted);
    const auto readingChangeLogs = startReading(Metadata::readChangeLogs, &RepositoryTexts::changeLogs,
                                                repositories, changeLogs, stopWanted);

    const bool indexed = wanted.count() > fewAdvisoryReads;
    if (indexed) {
        indexAdvisories(true);
    }
    TextPacker packer;
    FieldReader fields(*this);
    Steps done = 0;
    for (Package::Entry* entry : inStoredOrder(wanted)) {
        if (stopWanted()) {
            break;
        }
        fields.read(*entry, packer, entry->searchTexts);
        progress->setItemValue(++done);
    }
    if (indexed) {
        indexAdvisories(false);
    }
    readingFiles.wait();
    readingChangeLogs.wait();
    for (const RepositoryTexts& repository : qAsConst(repositories)) {
        for (const Document& document : {repository.fileLists, repository.changeLogs}) {
            if (!document.problem.isEmpty()) {
                log(Log::Warning, 1, tr("Unable to read %1: %2").arg(document.path, document.problem));
            }
        }
    }
    for (int place = 0; place < wanted.count() && !stopWanted(); ++place) {
        Package::Entry* entry = wanted.at(place);
        if (entry->kind == Package::Group) {
            continue;
        }
        // Ask the package object for a text that the metadata files do not contain.
        const auto add = [&packer](PackedText& target, const QString& text) {
            const QByteArray bytes = text.toUtf8();
            packer.add(target, bytes.constData(), static_cast<size_t>(bytes.size()));
        };
        entry->searchFiles = files[static_cast<size_t>(place)];
        if (entry->searchFiles.isNull()) {
            add(entry->searchFiles, getFiles(*entry));
        }
        entry->searchChangeLog = changeLogs[static_cast<size_t>(place)];
        if (entry->searchChangeLog.isNull()) {
            add(entry->searchChangeLog, getChangeLog(*entry));
        }
    }
    packer.finish();
    progress->reset();
    repositories.clear();
    std::vector<PackedText>().swap(files);
    std::vector<PackedText>().swap(changeLogs);
    returnFreeMemory(); // each thread has freed memory between the texts that it has packed
    const bool complete = !stopWanted();
    if (!complete) {
        for (Package::Entry* entry : wanted) {
            entry->searchTexts = entry->searchFiles = entry->searchChangeLog = PackedText();
        }
    }
    return complete;
}

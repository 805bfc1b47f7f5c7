// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/Metadata.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <memory>

#include <QCoreApplication>

#include <archive.h>
#include <archive_entry.h>
#include <expat.h>

namespace Metadata {

namespace {

using Archive = std::unique_ptr<archive, decltype(&archive_read_free)>;
using Parser = std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)>;

// The base class for the parsers of all kinds of metadata files. Such a file is a list of package elements,
// each with a checksum.
class Reader
{
public:
    // rootName is the name of the expected root element. The package elements are the same in all kinds of
    // metadata files, so only the root element shows that a file is of the wrong kind.
    Reader(const QByteArray& rootName, const Wanted& wantedPackages, std::vector<QByteArray>& result)
        : expectedRoot(rootName), wanted(wantedPackages), texts(result),
          parser(XML_ParserCreate(nullptr), XML_ParserFree), announced(0), found(0), place(-1),
          collecting(false)
    {
        XML_SetUserData(parser.get(), this);
        XML_SetElementHandler(parser.get(), start, end);
        XML_SetCharacterDataHandler(parser.get(), characters);
    }
    virtual ~Reader() = default;
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    bool read(const QString& path, QString& problem, const std::function<bool()>& stopped = {})
    {
        const Archive file(archive_read_new(), archive_read_free);
        archive_read_support_filter_all(file.get());
        archive_read_support_format_raw(file.get());
        archive_entry* entry = nullptr;
        if (archive_read_open_filename(file.get(), path.toLocal8Bit().constData(), blockSize) != ARCHIVE_OK ||
            archive_read_next_header(file.get(), &entry) != ARCHIVE_OK) {
            problem = QString::fromLocal8Bit(archive_error_string(file.get()));
            return false;
        }
        for (;;) {
            if (stopped && stopped()) {
                return false;
            }
            void* buffer = XML_GetBuffer(parser.get(), blockSize);
            const la_ssize_t count =
                buffer != nullptr ? archive_read_data(file.get(), buffer, blockSize) : -1;
            if (count < 0) {
                problem = QString::fromLocal8Bit(archive_error_string(file.get()));
                return false;
            }
            if (XML_ParseBuffer(parser.get(), static_cast<int>(count), count == 0) != XML_STATUS_OK) {
                const XML_Error error = XML_GetErrorCode(parser.get());
                problem = error == XML_ERROR_ABORTED
                              ? QCoreApplication::translate("Metadata", "\"%1\" where \"%2\" is expected")
                                    .arg(QString::fromUtf8(root), QString::fromUtf8(expectedRoot))
                              : QString::fromLatin1(XML_ErrorString(error));
                return false;
            }
            if (count == 0) {
                return isComplete(problem);
            }
        }
    }

protected:
    // Called at the start of each element inside a wanted package. Returns whether the reader must collect
    // the element's characters for take().
    virtual bool begin(const char* name, const char** attributes) = 0;
    // Called at the end of each element for which begin() has returned true, with all characters of the
    // element.
    virtual void take(const QByteArray& characters) = 0;
    // Called at the end of a wanted package. Returns the text of the package.
    virtual QByteArray finish() = 0;

    static const char* value(const char** attributes, const char* name)
    {
        for (; *attributes != nullptr; attributes += 2) {
            if (std::strcmp(attributes[0], name) == 0) {
                return attributes[1];
            }
        }
        return "";
    }

private:
    static constexpr int blockSize = 1 << 18;

    // Compares the number of packages with the number that the file declares, because a truncated file may
    // still have a proper end tag.
    bool isComplete(QString& problem) const
    {
        if (found < announced) {
            problem = QCoreApplication::translate("Metadata", "%1 packages where %2 are announced")
                          .arg(found)
                          .arg(announced);
        }
        return found >= announced;
    }

    static void XMLCALL start(void* self, const char* name, const char** attributes)
    {
        auto* reader = static_cast<Reader*>(self);
        if (reader->root.isNull()) {
            reader->root = name;
            reader->announced = std::atoll(value(attributes, "packages"));
            if (reader->root != reader->expectedRoot) {
                XML_StopParser(reader->parser.get(), XML_FALSE);
            }
        } else if (std::strcmp(name, "package") == 0) {
            ++reader->found;
            const char* id = value(attributes, "pkgid");
            reader->place =
                reader->wanted.value(QByteArray::fromRawData(id, static_cast<int>(std::strlen(id))), -1);
        } else if (reader->place >= 0) {
            reader->collecting = reader->begin(name, attributes);
            reader->collected.resize(0);
        }
    }

    static void XMLCALL characters(void* self, const char* text, int length)
    {
        auto* reader = static_cast<Reader*>(self);
        if (reader->collecting) {
            reader->collected.append(text, length);
        }
    }

    static void XMLCALL end(void* self, const char* name)
    {
        auto* reader = static_cast<Reader*>(self);
        if (reader->collecting) {
            reader->collecting = false;
            reader->take(reader->collected);
        } else if (reader->place >= 0 && std::strcmp(name, "package") == 0) {
            reader->texts[static_cast<size_t>(reader->place)] = reader->finish();
            reader->place = -1;
        }
    }

    const QByteArray expectedRoot;
    const Wanted& wanted;
    std::vector<QByteArray>& texts;
    Parser parser;
    QByteArray root;     // null before the root element begins
    long long announced; // the number of packages that the file declares, or 0
    long long found;
    int place; // the index of the current package in `texts`; -1 if the package is not wanted
    bool collecting;
    QByteArray collected;
};

class FileListReader : public Reader
{
public:
    FileListReader(const Wanted& wantedPackages, std::vector<QByteArray>& result)
        : Reader("filelists", wantedPackages, result)
    {
    }

protected:
    bool begin(const char* name, const char**) override { return std::strcmp(name, "file") == 0; }

    void take(const QByteArray& path) override { paths.push_back(path); }

    QByteArray finish() override
    {
        // The paths must be sorted by UTF-16 code units. Sorting the UTF-8 bytes gives the same order only if
        // all bytes are less than 0xee.
        const bool sortable = std::all_of(paths.begin(), paths.end(), [](const QByteArray& path) {
            return std::all_of(path.begin(), path.end(),
                               [](char byte) { return static_cast<unsigned char>(byte) < 0xee; });
        });
        if (sortable) {
            std::sort(paths.begin(), paths.end());
        } else {
            std::sort(paths.begin(), paths.end(), [](const QByteArray& left, const QByteArray& right) {
                return QString::fromUtf8(left) < QString::fromUtf8(right);
            });
        }
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
        QByteArray text;
        for (const QByteArray& path : paths) {
            if (!text.isEmpty()) {
                text += '\n';
            }
            text += path;
        }
        paths.clear();
        text.squeeze();
        return text.isNull() ? QByteArray("") : text;
    }

private:
    std::vector<QByteArray> paths;
};

// A base class of Checker: its members must exist before Reader refers to them.
struct NothingWanted
{
    const Wanted nothing;
    std::vector<QByteArray> none;
};

// Checks whether a file is well-formed and complete, without collecting texts.
class Checker : private NothingWanted, public Reader
{
public:
    explicit Checker(const QByteArray& rootName) : Reader(rootName, nothing, none) {}

protected:
    bool begin(const char*, const char**) override { return false; }
    void take(const QByteArray&) override {}
    QByteArray finish() override { return QByteArray(); }
};

class ChangeLogReader : public Reader
{
public:
    ChangeLogReader(const Wanted& wantedPackages, std::vector<QByteArray>& result)
        : Reader("otherdata", wantedPackages, result)
    {
    }

protected:
    bool begin(const char* name, const char** attributes) override
    {
        if (std::strcmp(name, "changelog") != 0) {
            return false;
        }
        const auto seconds = static_cast<time_t>(std::atoll(value(attributes, "date")));
        std::tm day = {};
        gmtime_r(&seconds, &day);
        static const char* const weekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
        static const char* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
        heading = QByteArray("* ") + weekdays[day.tm_wday] + ' ' + months[day.tm_mon] + ' ' +
                  QByteArray::number(day.tm_mday) + ' ' + QByteArray::number(day.tm_year + 1900) + ' ' +
                  value(attributes, "author") + '\n';
        return true;
    }

    void take(const QByteArray& text) override { entries.push_back(heading + text); }

    QByteArray finish() override
    {
        QByteArray text("");
        for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
            if (!text.isEmpty()) {
                text += "\n\n";
            }
            text += *entry;
        }
        entries.clear();
        text.squeeze();
        return text;
    }

private:
    QByteArray heading;
    std::vector<QByteArray> entries;
};

} // namespace

bool readFileLists(const QString& path, const Wanted& wanted, std::vector<QByteArray>& texts,
                   QString& problem, const std::function<bool()>& stopped)
{
    return FileListReader(wanted, texts).read(path, problem, stopped);
}

bool readChangeLogs(const QString& path, const Wanted& wanted, std::vector<QByteArray>& texts,
                    QString& problem, const std::function<bool()>& stopped)
{
    return ChangeLogReader(wanted, texts).read(path, problem, stopped);
}

bool check(const QString& path, const QByteArray& rootName, QString& problem)
{
    return Checker(rootName).read(path, problem);
}

} // namespace Metadata

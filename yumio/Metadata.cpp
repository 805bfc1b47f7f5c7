// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/Metadata.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <ctime>
#include <memory>
#include <string_view>
#include <vector>

#include <QCoreApplication>

#include <expat.h>

#include "yumio/UnpackedFile.h"

namespace Metadata {

namespace {

using Parser = std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)>;

// Returns whether a name equals a constant. The parsers compare several names for each of millions of
// elements. A call of strcmp() takes longer than the comparison of a few characters.
template <size_t size> bool is(const char* name, const char (&constant)[size])
{
    for (size_t i = 0; i < size; ++i) {
        if (name[i] != constant[i]) {
            return false;
        }
    }
    return true;
}

// The base class for the parsers of all kinds of metadata files. Such a file is a list of package elements,
// each with a checksum.
class Reader
{
public:
    // rootName is the name of the expected root element. The package elements are the same in all kinds of
    // metadata files, so only the root element shows that a file is of the wrong kind.
    Reader(const QByteArray& rootName, const Wanted& wantedPackages, const Take& takeText)
        : expectedRoot(rootName), wanted(wantedPackages), take(takeText),
          parser(XML_ParserCreate(nullptr), XML_ParserFree), announced(0), found(0), place(-1),
          collecting(false)
    {
        XML_SetUserData(parser.get(), this);
        XML_SetElementHandler(parser.get(), start, end);
        XML_SetCharacterDataHandler(parser.get(), append);
    }
    virtual ~Reader() = default;
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    bool read(const QString& path, QString& problem, const std::function<bool()>& stopped = {})
    {
        UnpackedFile file(path);
        for (;;) {
            if (stopped && stopped()) {
                return false;
            }
            void* buffer = XML_GetBuffer(parser.get(), blockSize);
            const int count = buffer != nullptr ? file.read(static_cast<char*>(buffer), blockSize) : -1;
            if (count < 0) {
                problem = file.problem();
                return false;
            }
            if (XML_ParseBuffer(parser.get(), count, count == 0) != XML_STATUS_OK) {
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
    // A part of `collected`: the characters of one element.
    struct Part
    {
        size_t begin;
        size_t end;
    };

    // Called at the start of each element inside a wanted package. Returns whether the characters of the
    // element must be appended to `collected`. The function may first append characters of its own.
    virtual bool begin(const char* name, const char** attributes) = 0;
    // Called at the end of a wanted package. Makes the text of the package from the parts of `collected`,
    // which are in the order of the document.
    virtual void finish(const std::vector<Part>& parts, std::string& text) = 0;

    std::string& characters() { return collected; }

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
            problem = QCoreApplication::translate("Metadata", "%1 packages instead of %2")
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
        } else if (is(name, "package")) {
            ++reader->found;
            const char* id = value(attributes, "pkgid");
            reader->place =
                reader->wanted.value(QByteArray::fromRawData(id, static_cast<int>(std::strlen(id))), -1);
        } else if (reader->place >= 0) {
            // Only elements without child elements become parts. So discard the characters of the parent
            // element, which come before this element.
            reader->collected.resize(reader->collectedParts.empty() ? 0 : reader->collectedParts.back().end);
            reader->collecting = reader->begin(name, attributes);
        }
    }

    static void XMLCALL append(void* self, const char* text, int length)
    {
        auto* reader = static_cast<Reader*>(self);
        if (reader->collecting) {
            reader->collected.append(text, static_cast<size_t>(length));
        }
    }

    static void XMLCALL end(void* self, const char* name)
    {
        auto* reader = static_cast<Reader*>(self);
        if (reader->collecting) {
            reader->collecting = false;
            const size_t begin = reader->collectedParts.empty() ? 0 : reader->collectedParts.back().end;
            reader->collectedParts.push_back({begin, reader->collected.size()});
        } else if (reader->place >= 0 && is(name, "package")) {
            reader->packageText.clear();
            reader->finish(reader->collectedParts, reader->packageText);
            reader->take(reader->place, reader->packageText);
            reader->collectedParts.clear();
            reader->collected.clear();
            reader->place = -1;
        }
    }

    const QByteArray expectedRoot;
    const Wanted& wanted;
    const Take& take;
    Parser parser;
    QByteArray root;     // null before the root element begins
    long long announced; // the number of packages that the file declares, or 0
    long long found;
    int place; // the index of the current package; -1 if the package is not wanted
    bool collecting;
    std::string collected; // the collected characters of the current package
    std::vector<Part> collectedParts;
    std::string packageText; // a member, so that its memory is allocated only once
};

class FileListReader : public Reader
{
public:
    FileListReader(const Wanted& wantedPackages, const Take& takeText)
        : Reader("filelists", wantedPackages, takeText)
    {
    }

protected:
    bool begin(const char* name, const char**) override { return is(name, "file"); }

    void finish(const std::vector<Part>& parts, std::string& text) override
    {
        const std::string_view all = characters();
        paths.clear();
        for (const Part& part : parts) {
            paths.push_back(all.substr(part.begin, part.end - part.begin));
        }
        // The paths must be sorted by UTF-16 code units. Sorting the UTF-8 bytes gives the same order only if
        // all bytes are less than 0xee.
        const bool sortable = isAscii(all) || std::all_of(all.begin(), all.end(), [](char byte) {
                                  return static_cast<unsigned char>(byte) < 0xee;
                              });
        if (sortable) {
            sortBytes();
        } else {
            std::sort(paths.begin(), paths.end(), [](std::string_view left, std::string_view right) {
                return QString::fromUtf8(left.data(), static_cast<int>(left.size())) <
                       QString::fromUtf8(right.data(), static_cast<int>(right.size()));
            });
        }
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
        text.reserve(all.size() + paths.size());
        for (const std::string_view path : paths) {
            if (!text.empty()) {
                text += '\n';
            }
            text += path;
        }
    }

private:
    static bool isAscii(std::string_view text)
    {
        constexpr quint64 highBits = 0x8080808080808080U;
        size_t at = 0;
        quint64 found = 0;
        for (; at + sizeof found <= text.size(); at += sizeof found) {
            quint64 bytes = 0;
            std::memcpy(&bytes, text.data() + at, sizeof bytes);
            found |= bytes;
        }
        for (; at < text.size(); ++at) {
            found |= static_cast<unsigned char>(text[at]);
        }
        return (found & highBits) == 0;
    }

    // Sorts the paths by their bytes. Most documents list the paths of a package in this order, or in the
    // reverse order.
    void sortBytes()
    {
        if (std::is_sorted(paths.rbegin(), paths.rend())) {
            std::reverse(paths.begin(), paths.end());
        } else if (!std::is_sorted(paths.begin(), paths.end())) {
            std::sort(paths.begin(), paths.end());
        }
    }

    std::vector<std::string_view> paths;
};

// The members of Checker. They belong to a base class, because they must exist before the constructor of
// Reader refers to them. Reader is the second base class of Checker.
struct NothingWanted
{
    const Wanted nothing;
    const Take none;
};

// Checks whether a file is well-formed and complete, without collecting texts.
class Checker : private NothingWanted, public Reader
{
public:
    explicit Checker(const QByteArray& rootName) : Reader(rootName, nothing, none) {}

protected:
    bool begin(const char*, const char**) override { return false; }
    void finish(const std::vector<Part>&, std::string&) override {}
};

class ChangeLogReader : public Reader
{
public:
    ChangeLogReader(const Wanted& wantedPackages, const Take& takeText)
        : Reader("otherdata", wantedPackages, takeText)
    {
    }

protected:
    bool begin(const char* name, const char** attributes) override
    {
        if (!is(name, "changelog")) {
            return false;
        }
        const auto seconds = static_cast<time_t>(std::atoll(value(attributes, "date")));
        std::tm day = {};
        gmtime_r(&seconds, &day);
        static const char* const weekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
        static const char* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
        char number[24];
        const auto append = [this, &number](long long value) {
            characters().append(number, std::to_chars(number, number + sizeof number, value).ptr);
        };
        characters() += "* ";
        characters() += weekdays[day.tm_wday];
        characters() += ' ';
        characters() += months[day.tm_mon];
        characters() += ' ';
        append(day.tm_mday);
        characters() += ' ';
        append(1900LL + day.tm_year);
        characters() += ' ';
        characters() += value(attributes, "author");
        characters() += '\n';
        return true;
    }

    void finish(const std::vector<Part>& parts, std::string& text) override
    {
        for (auto entry = parts.rbegin(); entry != parts.rend(); ++entry) {
            if (!text.empty()) {
                text += "\n\n";
            }
            text.append(characters(), entry->begin, entry->end - entry->begin);
        }
    }
};

} // namespace

bool readFileLists(const QString& path, const Wanted& wanted, const Take& take, QString& problem,
                   const std::function<bool()>& stopped)
{
    return FileListReader(wanted, take).read(path, problem, stopped);
}

bool readChangeLogs(const QString& path, const Wanted& wanted, const Take& take, QString& problem,
                    const std::function<bool()>& stopped)
{
    return ChangeLogReader(wanted, take).read(path, problem, stopped);
}

bool check(const QString& path, const QByteArray& rootName, QString& problem)
{
    return Checker(rootName).read(path, problem);
}

} // namespace Metadata

// SPDX-License-Identifier: GPL-2.0-or-later

// Reads metadata documents with only zlib and expat. A first search reads the same documents.
// "benchmarks/run" compares the time of that search with the time of this plain loop.
//
// usage: plain-reader DOCUMENT.xml.gz ...
//
// Two threads share the documents, and begin with the largest one. The handlers count the elements, the
// attributes and the bytes of text, so that the compiler cannot omit any work. The program prints the elapsed
// time and the CPU time, in seconds, and the counts.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include <expat.h>
#include <zlib.h>

namespace {

struct Counts
{
    std::atomic<long> elements{0};
    std::atomic<long> attributes{0};
    std::atomic<long> bytes{0};
};

struct Document
{
    std::string path;
    long size;
};

// The counts of one document.
struct Found
{
    long elements = 0;
    long attributes = 0;
    long bytes = 0;
};

void begin(void* data, const XML_Char*, const XML_Char** attributes)
{
    auto* found = static_cast<Found*>(data);
    ++found->elements;
    for (int i = 0; attributes[i] != nullptr; i += 2) {
        ++found->attributes;
        found->bytes += static_cast<long>(std::strlen(attributes[i + 1]));
    }
}

void end(void*, const XML_Char*) {}

void text(void* data, const XML_Char*, int length)
{
    static_cast<Found*>(data)->bytes += length;
}

bool read(const std::string& path, Counts& counts)
{
    constexpr int blockSize = 1 << 16;
    gzFile file = gzopen(path.c_str(), "rb");
    if (file == nullptr) {
        return false;
    }
    gzbuffer(file, 1 << 17);
    XML_Parser parser = XML_ParserCreate(nullptr);
    Found found;
    XML_SetUserData(parser, &found);
    XML_SetElementHandler(parser, begin, end);
    XML_SetCharacterDataHandler(parser, text);
    bool good = true;
    for (bool last = false; good && !last;) {
        void* const block = XML_GetBuffer(parser, blockSize);
        const int length = block != nullptr ? gzread(file, block, blockSize) : -1;
        last = length < blockSize;
        good = length >= 0 && XML_ParseBuffer(parser, length, last ? 1 : 0) == XML_STATUS_OK;
    }
    XML_ParserFree(parser);
    gzclose(file);
    counts.elements += found.elements;
    counts.attributes += found.attributes;
    counts.bytes += found.bytes;
    return good;
}

} // namespace

int main(int argc, char** argv)
{
    const auto start = std::chrono::steady_clock::now();
    std::vector<Document> documents;
    for (int i = 1; i < argc; ++i) {
        struct stat status = {};
        documents.push_back({argv[i], stat(argv[i], &status) == 0 ? static_cast<long>(status.st_size) : 0});
    }
    std::sort(documents.begin(), documents.end(),
              [](const Document& a, const Document& b) { return a.size > b.size; });
    Counts counts;
    std::atomic<size_t> next{0};
    std::atomic<bool> good{true};
    const auto work = [&] {
        for (size_t i = next++; i < documents.size(); i = next++) {
            if (!read(documents[i].path, counts)) {
                good = false;
            }
        }
    };
    std::thread other(work);
    work();
    other.join();
    timespec computed = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &computed);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::printf("elapsed %f\ncomputed %f\nelements %ld\nattributes %ld\nbytes %ld\n", elapsed.count(),
                static_cast<double>(computed.tv_sec) + 1e-9 * static_cast<double>(computed.tv_nsec),
                counts.elements.load(), counts.attributes.load(), counts.bytes.load());
    return good ? 0 : 1;
}

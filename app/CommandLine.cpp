// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/CommandLine.h"

#include <getopt.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "app/MainWindow.h"
#include "app/base/Program.h"

void printUsage()
{
    std::printf("usage: %s [options...]\n"
                "\n"
                "VYRE, Vyrecraft, is a graphical user interface which allows a user\n"
                "to make modifications to the installed rpm packages on a system.\n"
                "\n"
                "options:\n"
                "\n"
                "   -h, -H, --help           display this help information\n"
                "   -m m,   --mode=m         start with the package table mode, m:\n"
                "                               filter, search\n"
                "   -e r,   --regexp=r       start with the package table regexp, r\n"
                "   -s s,   --state=s        start with the package table state, s:\n"
                "                               updatable, installable, removable, all\n"
                "   -d,     --duplicates     start with the package table omitting duplicates\n"
                "   -g,     --groups         start with the package table showing groups\n"
                "   -r,     --repo-editor    start by bringing up the repository configuration\n"
                "                            editor\n"
                "   -l,     --log            start with the log window displayed\n"
                "           --disablerepo=r  disable the specified repository, r\n"
                "           --enablerepo=r   enable the specified repository, r\n"
                "\n",
                program);
}

void usage()
{
    printUsage();
    std::exit(1);
}

namespace CommandLine {

namespace {

// Returns the index of the first keyword that begins with the argument, or -1. An empty argument selects the
// first keyword.
template <int count> int keyword(const char* const (&keywords)[count], const char* argument)
{
    const size_t length = std::strlen(argument);
    for (int i = 0; i < count; ++i) {
        if (std::strncmp(argument, keywords[i], length) == 0) {
            return i;
        }
    }
    return -1;
}

// Returns the first character beyond ASCII. If the character is invalid UTF-8, returns only its first byte.
std::string firstBeyondAscii(const char* text)
{
    const auto isContinuation = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; };
    while (*text != '\0' && (static_cast<unsigned char>(*text) & 0x80) == 0) {
        ++text;
    }
    size_t length = *text != '\0' ? 1 : 0;
    while (length > 0 && isContinuation(text[length])) {
        ++length;
    }
    const std::string whole(text, length);
    const bool utf8 = !QString::fromUtf8(whole.c_str()).contains(QChar::ReplacementCharacter);
    return utf8 ? whole : whole.substr(0, 1);
}

const char* const modes[] = {"filter", "search"};
const char* const states[] = {"updatable", "installable", "removable", "all"};

// The values of options that have no short form. They are larger than any character.
enum LongOnly { Duplicates = 256, DisableRepo, EnableRepo };

const option longOptions[] = {
    {"help", no_argument, nullptr, 'h'},
    {"mode", required_argument, nullptr, 'm'},
    {"regexp", required_argument, nullptr, 'e'},
    {"state", required_argument, nullptr, 's'},
    {"duplicates", no_argument, nullptr, Duplicates},
    {"groups", no_argument, nullptr, 'g'},
    {"repo-editor", no_argument, nullptr, 'r'},
    {"log", no_argument, nullptr, 'l'},
    {"disablerepo", required_argument, nullptr, DisableRepo},
    {"enablerepo", required_argument, nullptr, EnableRepo},
    {nullptr, 0, nullptr, 0},
};

} // namespace

void apply(int argc, char** argv, MainWindow& window)
{
    opterr = 0;
    for (;;) {
        const char* const word = optind < argc ? argv[std::max(optind, 1)] : "";
        const int found = getopt_long(argc, argv, "+hHm:e:s:grl", longOptions, nullptr);
        if (found == -1) {
            break;
        }
        switch (found) {
        case 'h':
        case 'H':
            usage();
        case 'm': {
            const int mode = keyword(modes, optarg);
            if (mode < 0) {
                std::fprintf(stderr, "%s: unrecogized argument to -m/--mode option: %s\n", program, optarg);
                usage();
            }
            window.setMode(static_cast<PackageTable::Mode>(mode));
            break;
        }
        case 'e':
            window.setRegexp(optarg);
            break;
        case 's': {
            const int state = keyword(states, optarg);
            if (state < 0) {
                std::fprintf(stderr, "%s: unrecogized argument to -s/--state option: %s\n", program, optarg);
                usage();
            }
            window.setStateFilter(static_cast<PackageTable::StateFilter>(state));
            break;
        }
        case Duplicates:
            window.setDups(false);
            break;
        case 'g':
            window.setGroups(true);
            break;
        case 'r':
            window.setRepoEditorAtStart();
            break;
        case 'l':
            window.setLogAtStart();
            break;
        case DisableRepo:
            window.addRepoOverride(YumRepoEnabled(false, QString::fromLocal8Bit(optarg)));
            break;
        case EnableRepo:
            window.addRepoOverride(YumRepoEnabled(true, QString::fromLocal8Bit(optarg)));
            break;
        default:
            // optopt contains the unknown character. If char is signed, a byte beyond ASCII is a negative
            // number.
            if (optopt < 0 || (optopt > 127 && optopt < Duplicates)) {
                std::fprintf(stderr, "%s: unrecognized option letter: %s\n", program,
                             firstBeyondAscii(word).c_str());
                usage();
            }
            // If the argument of a long option is missing, optopt contains the option's letter or its
            // LongOnly value.
            if (optopt > 0 && optopt < Duplicates) {
                std::fprintf(stderr, "%s: unrecognized option letter: %c\n", program, optopt);
            } else {
                std::fprintf(stderr, "%s: unrecogized option: %s\n", program, argv[optind - 1]);
            }
            usage();
        }
    }
    if (optind < argc) {
        std::fprintf(stderr, "%s: unrecognized argument: %s\n", program, argv[optind]);
        usage();
    }
}

} // namespace CommandLine

// SPDX-License-Identifier: MIT

// A command line from one declaration: what an option is called, what it takes and what it is for
// stand in one place, and parsing, checks of files and the help come from there. The program prints
// the lines of a file that hold one of some words.
//
//     $ options --help
//     usage: options -input FILE [OPTION]... [-- WORD...]
//       -c integer
//       -count integer
//         end after this number of lines
//       -h
//       -help
//         print this and end
//       -i file
//       -input file
//         the file to search; - is standard input
//       -n ? bool
//       -numbered ? bool
//         print the number of each line, or do not
//       -w sequence
//       -words sequence
//         the words, in brackets; without any, every line is printed
//     $ printf 'to be\nor not\nto be\nthat is\n' > lines
//     $ options -input lines -numbered -words [ not that ]
//     2: or not
//     4: that is
//     $ options --in lines -n no -c 1 -- be
//     to be
//     $ options -i missing
//     options: While processing option: -input  (InputFile)
//       missing does not exist.
//     $ options -i lines -c many
//     options: While processing option: -count
//       Expected an integer, got: many

#include <climits>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "Base/OS/zeOSGetOpt.h"

namespace {

using zeOS::GetOpt;
using zeString::IString;

/// The parser with its options, which are told apart by their address.
struct Options : GetOpt {
    const option* count = addOption("c|count", "int", L"end after this number of lines");
    const option* help = addOption("h|help", "", L"print this and end");
    const option* input =
        addOption("i|input", "inputfile-", L"the file to search; - is standard input");
    const option* numbered =
        addOption("n|numbered", "? bool", L"print the number of each line, or do not");
    const option* words = addOption("w|words", "sequence",
                                    L"the words, in brackets; without any, every line is printed");

    void printHelp() const {
        std::puts("usage: options -input FILE [OPTION]... [-- WORD...]");
        std::vector<int> sorted;
        getSortedOptions(sorted);
        for (const int i : sorted)
            std::printf("%s", getOptionUsage(getOption(i), true).asMultibyte());
    }
};

struct Search {
    IString file;
    std::vector<IString> words;
    long count = LONG_MAX;
    bool isNumbered = false;
    bool wantsHelp = false;
};

/// What the command line asks for; the parser says whether it was understood.
Search parse(Options& options) {
    Search search;
    std::vector<IString> behindDashes;
    while (const GetOpt::result* found = options.getOpt()) {
        const GetOpt::option* option = options.getResultOption(found);
        const IString first = options.getResultArg(found, 0); // empty without one
        if (option == options.count)
            search.count = std::wcstol(first.asWChar(), nullptr, 10);
        else if (option == options.help)
            search.wantsHelp = true;
        else if (option == options.input)
            search.file = first;
        else if (option == options.numbered)
            search.isNumbered = first != L"0"; // "no", "off" and "false" are "0" here
        else if (option == options.words)
            options.getResultArgs(found, search.words);
    }
    options.remaining(behindDashes);
    search.words.insert(search.words.end(), behindDashes.begin(), behindDashes.end());
    return search;
}

bool holdsAny(const std::string& line, const std::vector<IString>& words) {
    for (const IString& word : words)
        if (line.find(word.asMultibyte()) != std::string::npos)
            return true;
    return words.empty();
}

void print(std::istream& in, const Search& search) {
    std::string line;
    long printed = 0;
    for (int number = 1; printed < search.count && std::getline(in, line); ++number) {
        if (!holdsAny(line, search.words))
            continue;
        if (search.isNumbered)
            std::printf("%d: ", number);
        std::printf("%s\n", line.c_str());
        ++printed;
    }
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, ""); // arguments are in the user's encoding
    Options options;
    options.initialize(argc - 1, argv + 1);
    const Search search = parse(options);
    if (options.hasErrors()) {
        std::fprintf(stderr, "options: %s\n", options.getError().asMultibyte());
        return 2;
    }
    if (search.wantsHelp || search.file.length() == 0) {
        options.printHelp();
        return search.wantsHelp ? 0 : 2;
    }
    std::ifstream file;
    if (search.file != L"-")
        file.open(search.file.asUTF8());
    print(search.file == L"-" ? std::cin : file, search);
    return 0;
}

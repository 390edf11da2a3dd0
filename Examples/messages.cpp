// SPDX-License-Identifier: MIT

// What a program says while it works: results for everybody, steps for who asks for them, a log,
// and a trace for its developer. Each message has a level, and each stream shows those up to its
// own.
//
//     $ printf 'one two\nthree\n' > a.txt
//     $ messages 0 a.txt missing.txt
//     a.txt: 2 lines, 3 words
//     cannot read missing.txt
//     1 file counted
//     $ messages 1 a.txt
//     counting 1 file
//         read 14 bytes from a.txt
//         a.txt: 2 lines, 3 words
//     1 file counted
//     $ messages 2 a.txt | sed -E 's/[0-9]\.[0-9]{4}/0.0000/g'
//     counting 1 file
//            0.0000 Start trace: count a.txt
//             read 14 bytes from a.txt
//                0.0000 tick trace: count read now 0.0000
//            0.0000 End trace: count elapsed 0.0000 total 0.0000 calls 1
//         a.txt: 2 lines, 3 words
//     1 file counted
//     $ cat messages.log
//     a.txt: 2 lines, 3 words
//     cannot read missing.txt
//     1 file counted
//     a.txt: 2 lines, 3 words
//     1 file counted
//     a.txt: 2 lines, 3 words
//     1 file counted

#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSAppOutput.h"
#include "Base/OS/zeOSDebugTrace.h"

namespace {

struct Counts {
    bool isRead = false;
    int lines = 0;
    int words = 0;
};

Counts count(const char* name) {
    // Made at the first call, when the levels stand: a trace looks at them once.
    static zeOS::DebugTrace trace("count", 2);
    const zeOS::AppOutput& output = zeOS::AppOutput::getInstance();

    std::ifstream file(name);
    if (!file)
        return {};
    trace.start(name);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    output.info(1, "read %zu bytes from %s\n", text.size(), name);
    trace.tick("read");

    Counts counts = {true, static_cast<int>(std::count(text.begin(), text.end(), '\n')), 0};
    std::istringstream words(text);
    for (std::string word; words >> word;)
        ++counts.words;
    trace.stop();
    return counts;
}

/// Returns how many files were counted. What it says goes to the screen and into the log.
int countAll(int number, char** names) {
    const zeOS::AppOutput& output = zeOS::AppOutput::getInstance();
    output.status(1, "counting %d file%s\n", number, output.status.plural(number));
    const zeOS::AppOutputStatusTab tab(1); // indents the screen, if that line was shown
    int counted = 0;
    for (int i = 0; i < number; ++i) {
        const auto [isRead, lines, words] = count(names[i]);
        if (isRead)
            output.info("%s: %d line%s, %d word%s\n", names[i], lines, output.status.plural(lines),
                        words, output.status.plural(words));
        else
            output.error("cannot read %s\n", names[i]);
        counted += isRead;
    }
    return counted;
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, ""); // names and messages are in the user's encoding
    zeOS::AppMain::getInstance().initialize(argc, argv, environ); // traces count from here
    if (argc < 3) {
        std::fputs("usage: messages LEVEL FILE...\n", stderr);
        return 2;
    }
    zeOS::AppOutput& output = zeOS::AppOutput::getInstance();
    output.status.open("-", false); // standard output; nothing is shown before this
    output.status.setLevel(std::atoi(argv[1]));
    output.log.open("messages.log", true); // its level stays 0: results alone

    const int counted = countAll(argc - 2, argv + 2);
    output.info("%d file%s counted\n", counted, output.status.plural(counted));
    return counted == argc - 2 ? 0 : 1;
}

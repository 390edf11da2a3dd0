// SPDX-License-Identifier: MIT

#include <csignal>
#include <iostream>

#include "command/command.h"

int main(int argc, char** argv) {
    // A limit on the size of files, or a closed pipe, is then an error of the write that meets it,
    // which leaves nothing unfinished behind. The locale stays "C", in which numbers have a decimal
    // point: names are passed to the library as UTF-8.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    return scenefile::run({argv + (argc > 0), argv + argc}, std::cout, std::cerr);
}

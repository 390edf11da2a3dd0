// SPDX-License-Identifier: MIT

#include <csignal>
#include <iostream>

#include "commands.h"

int main(int argc, char** argv) {
    // A limit on the size of files, or a reader that has gone, is an error of the write that meets
    // it, which then leaves everything tidy.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    return scenefile::run({argv + (argc > 0), argv + argc}, std::cout, std::cerr);
}

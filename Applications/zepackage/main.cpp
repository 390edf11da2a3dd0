// SPDX-License-Identifier: MIT

#include <clocale>
#include <csignal>

#include "Base/OS/zeOSAppOutput.h"

#include "command.h"

int main(int argc, char** argv) {
    // A limit on the size of files, or a closed pipe, is then an error of the write that meets it,
    // which leaves nothing unfinished behind.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    std::setlocale(LC_ALL, "");
    zeOS::AppOutput::getInstance().application1.open("-", false);
    return zepackage::run({argv + (argc > 0), argv + argc});
}

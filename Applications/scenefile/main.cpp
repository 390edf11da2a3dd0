// SPDX-License-Identifier: MIT

#include <clocale>
#include <csignal>

#include "Base/OS/zeOSAppMain.h"

#include "Shared/output.h"
#include "command/command.h"

int main(int argc, char** argv, char** envp) {
    // A limit on the size of files, or a closed pipe, is then an error of the write that meets it,
    // which leaves nothing unfinished behind. Names are UTF-8; numbers stay as in the "C" locale,
    // with a decimal point.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    std::setlocale(LC_CTYPE, "C.UTF-8");
    zeOS::AppMain::getInstance().initialize(argc, argv, envp); // traces count from here
    app::openOutput();
    return scenefile::run({argv + (argc > 0), argv + argc});
}

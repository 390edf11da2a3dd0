// SPDX-License-Identifier: MIT

#include <clocale>
#include <csignal>

#include "Base/OS/zeOSAppMain.h"

#include "Shared/output.h"
#include "relay/command.h"

int main(int argc, char** argv, char** envp) {
    // A limit on the size of files, or a closed pipe, is then an error of the write that meets it,
    // which leaves nothing unfinished behind.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    std::setlocale(LC_CTYPE, "C.UTF-8"); // names are UTF-8
    zeOS::AppMain::getInstance().initialize(argc, argv, envp);
    app::openOutput();
    return relay::run({argv + (argc > 0), argv + argc});
}

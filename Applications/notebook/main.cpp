// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <climits>
#include <clocale>
#include <csignal>

#include "Base/OS/zeOSAppMain.h"

#include "Shared/output.h"
#include "notebook/command.h"

int main(int argc, char** argv, char** envp) {
    // A limit on the size of files, or a closed pipe, is then an error of the write that meets it,
    // which leaves nothing unfinished behind.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    std::setlocale(LC_CTYPE, "C.UTF-8"); // names are UTF-8
    // Plug-ins lie beside the program itself, whatever name it was started by.
    char program[PATH_MAX] = {};
    if (argc > 0 && readlink("/proc/self/exe", program, sizeof program - 1) > 0)
        argv[0] = program;
    zeOS::AppMain::getInstance().initialize(argc, argv, envp);
    app::openOutput();
    return notebook::run({argv + (argc > 0), argv + argc});
}

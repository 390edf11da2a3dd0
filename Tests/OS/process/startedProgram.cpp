// SPDX-License-Identifier: MIT

// What the tests of the process manager start.
//
//     startedProgram exit CODE             ends with CODE; with 255 if it holds more descriptors
//                                          than its three streams
//     startedProgram report FILE [ARG]...  writes to FILE its directory, its parent, whether it
//                                          holds SIGCHLD back, and each ARG, all NUL-terminated

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

bool holdsMoreThanStreams() {
    for (int fd = 3; fd < 1024; ++fd)
        if (fcntl(fd, F_GETFD) != -1)
            return true;
    return false;
}

bool holdsChildSignalBack() {
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    struct sigaction action;
    sigaction(SIGCHLD, nullptr, &action);
    return sigismember(&mask, SIGCHLD) || action.sa_handler != SIG_DFL;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && strcmp(argv[1], "exit") == 0)
        return holdsMoreThanStreams() ? 255 : atoi(argv[2]);

    char directory[4096];
    FILE* const file = fopen(argv[2], "w");
    fprintf(file, "%s%c%d%c%d%c", getcwd(directory, sizeof directory), 0, getppid(), 0,
            holdsChildSignalBack(), 0);
    for (int i = 3; i < argc; ++i)
        fwrite(argv[i], strlen(argv[i]) + 1, 1, file);
    return fclose(file);
}

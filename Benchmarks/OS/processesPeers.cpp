// SPDX-License-Identifier: MIT

// The same start as processes.cpp by the system's own calls: a fork that learns through a pipe
// whether the program runs. What shares the parent's memory with the child until the program runs
// (posix_spawn, and system, which starts a shell first) is another kind of thing.

#include <spawn.h>
#include <sys/wait.h>

#include "OS/processesWorkload.h"

namespace {

char* arguments[] = {const_cast<char*>(bench::startedProgram), nullptr};

bool waitFor(pid_t process) {
    int status = 0;
    return waitpid(process, &status, 0) == process && status == 0;
}

bool forkAndPipe() {
    int ends[2];
    bench::require(pipe2(ends, O_CLOEXEC) == 0, "a pipe");
    const pid_t process = fork();
    if (process == 0) {
        execv(bench::startedProgram, arguments);
        _exit(255);
    }
    close(ends[1]);
    char message[260];
    const bool isRunning = read(ends[0], message, sizeof message) == 0;
    close(ends[0]);
    return waitFor(process) && isRunning;
}

bool posixSpawn() {
    pid_t process = -1;
    return posix_spawn(&process, bench::startedProgram, nullptr, nullptr, arguments, environ) ==
               0 &&
           waitFor(process);
}

bool byShell() {
    return system(bench::startedProgram) == 0;
}

const bool registered = [] {
    bench::regStart("fork_and_pipe", forkAndPipe);
    bench::regStart("context_posix_spawn", posixSpawn);
    bench::regStart("context_system", byShell);
    return true;
}();

} // namespace

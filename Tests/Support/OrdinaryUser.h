// SPDX-License-Identifier: MIT

/// @file
/// Permissions as an ordinary user meets them: root passes every one.

#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <functional>

/// Runs `body` in a child process without root's rights, and returns what it returns (0 to 255), or
/// -1 if the child failed otherwise. Folders that it is to enter must be open to everybody.
inline int asOrdinaryUser(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        constexpr unsigned int nobody = 65534;
        if (geteuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0))
            _exit(255);
        _exit(body());
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

// SPDX-License-Identifier: MIT

/// @file
/// A second process that interferes with the tested one.

#pragma once

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>

#include <gtest/gtest.h>

/// Repeats `body` in a child process, from its construction to its destruction.
class OtherProcess {
public:
    explicit OtherProcess(const std::function<void()>& body) : child_(fork()) {
        EXPECT_GE(child_, 0);
        if (child_ != 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (;;)
            body();
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    ~OtherProcess() {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }

private:
    pid_t child_;
};

/// Repeats `body` until it returns false or a second is over.
inline void repeatForAWhile(const std::function<bool()>& body) {
    using Clock = std::chrono::steady_clock;
    for (const auto end = Clock::now() + std::chrono::seconds(1); Clock::now() < end;)
        if (!body())
            return;
}

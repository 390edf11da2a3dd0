// SPDX-License-Identifier: MIT

/// @file
/// A percentage on the terminal, for work that takes a while.

#pragma once

#include <chrono>
#include <cstdint>

namespace scenefile {

/// Shows how far a piece of work is, if standard error is a terminal and the work has taken half a
/// second already. Its line is wiped out when it goes.
class Progress {
public:
    /// `what` must outlive it. Without a `total` (0), nothing is shown.
    Progress(const char* what, std::int64_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// `done` of the total are done.
    void report(std::int64_t done) {
        if (active_ && done >= next_)
            show(done);
    }

private:
    void show(std::int64_t done);

    const char* what_;
    std::int64_t total_;
    std::int64_t next_ = 0; // nothing new to show before this
    std::chrono::steady_clock::time_point start_;
    bool active_;
    bool shown_ = false;
};

} // namespace scenefile

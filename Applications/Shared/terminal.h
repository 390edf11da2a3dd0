// SPDX-License-Identifier: MIT

/// @file
/// What appears on a terminal: texts from outside, and the progress of long work.

#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace app {

/// `text` as it may be printed: control characters (newlines and those beyond ASCII included) and
/// bytes that are not UTF-8 become `\x1b` and the like, byte by byte. A file name or the content of
/// a file thus cannot send commands to the terminal. Everything from outside is printed through
/// this function.
std::string visible(std::string_view text);

/// The size of the character at the start of `text` (not empty) if it is valid UTF-8 and may be
/// printed, or else 0.
std::size_t printableSize(std::string_view text);

/// Shows how far a piece of work is, as "reading 50 %", if standard error is a terminal and the
/// work has taken half a second already. Its line is erased when it is destroyed.
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

} // namespace app

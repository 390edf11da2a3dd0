// SPDX-License-Identifier: MIT

/// @file
/// Stands between the library and the system: a test program that links SystemFaults.cpp has its
/// own open, read, write and close, which fail where a test says so.
///
/// @code
/// SystemFaults faults(SystemFaults::onWrite, {{EINTR}, {ENOSPC}});
/// // The next write is interrupted, the one after it meets a full disk, the third works again.
/// @endcode

#pragma once

#include <cstddef>
#include <vector>

class SystemFaults {
public:
    enum Call { onOpen, onRead, onWrite, onClose };

    /// What one call meets: a failure with `error`, or, with error 0, at most `limit` bytes moved.
    struct Answer {
        int error = 0;
        std::size_t limit = static_cast<std::size_t>(-1);
    };

    /// From now on each `call` takes the next answer; after the last one the system answers.
    SystemFaults(Call call, std::vector<Answer> answers);
    SystemFaults(const SystemFaults&) = delete;
    SystemFaults& operator=(const SystemFaults&) = delete;
    ~SystemFaults();

    /// How many calls were made.
    std::size_t calls() const { return calls_; }

    /// The answer to a call that is being made: sets errno where it is a failure.
    static Answer next(Call call);

private:
    Call call_;
    std::vector<Answer> answers_;
    std::size_t calls_ = 0;
};

// SPDX-License-Identifier: MIT

/// @file
/// Tidying up when the user interrupts the program.

#pragma once

#include <csignal>
#include <string>

namespace app {

/// While it lives, SIGHUP, SIGINT and SIGTERM delete a temporary file before they end the process.
/// Nothing can be done about SIGKILL. One object at a time.
class Interruption {
public:
    explicit Interruption(const std::string& temporaryFile);
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    /// A signal that was held back ends the process here.
    ~Interruption();

    /// From now on these signals wait: what follows must not be left half done.
    void holdBack();

private:
    static constexpr int signals[] = {SIGHUP, SIGINT, SIGTERM};

    struct sigaction before_[3] = {};
    sigset_t blockedBefore_ = {};
};

} // namespace app

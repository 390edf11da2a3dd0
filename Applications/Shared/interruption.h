// SPDX-License-Identifier: MIT

/// @file
/// What happens when the user interrupts the program: it ends what it does, or tidies up at once.

#pragma once

#include <csignal>
#include <optional>
#include <string>

namespace app {

/// While it lives, SIGHUP, SIGINT and SIGTERM wait.
class HeldSignals {
public:
    HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
    /// A signal that was held back comes here.
    ~HeldSignals();

private:
    sigset_t before_;
};

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
    struct sigaction before_[3] = {};
    std::optional<HeldSignals> held_;
};

/// While it lives, SIGINT does nothing but set a flag, so that long work can end by itself; where
/// it is ignored, as under nohup, it stays ignored. One object at a time.
class InterruptFlag {
public:
    InterruptFlag();
    InterruptFlag(const InterruptFlag&) = delete;
    InterruptFlag& operator=(const InterruptFlag&) = delete;
    ~InterruptFlag();

    /// Whether SIGINT has come, since the last clear().
    bool isSet() const;
    void clear();

private:
    struct sigaction before_ = {};
};

} // namespace app

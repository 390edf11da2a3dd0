// SPDX-License-Identifier: MIT

/// @file
/// Stands between the library and the wall clock: in a test program that links FakeTime.cpp the
/// clock stands still while an object lives, and nobody sleeps.

#pragma once

#include <ctime>
#include <vector>

class FakeTime {
public:
    /// The clock stands at the present moment, cut to whole seconds. One object at a time.
    FakeTime();
    FakeTime(const FakeTime&) = delete;
    FakeTime& operator=(const FakeTime&) = delete;
    ~FakeTime();

    /// Sets the clock, in whole seconds since the epoch.
    void set(std::time_t seconds) { now = {seconds, 0}; }
    /// Moves the clock.
    void advance(long milliseconds);

    std::timespec now = {};
    long millisecondsPerReading = 0;   ///< The clock moves so far after each reading.
    std::vector<std::timespec> sleeps; ///< What was asked for instead of slept.
};

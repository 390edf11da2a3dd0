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

    /// Moves the clock.
    void advance(long milliseconds) { now += milliseconds * 1000000; }

    long now;                          ///< In nanoseconds since the epoch.
    long millisecondsPerReading = 0;   ///< The clock moves so far after each reading.
    std::vector<std::timespec> sleeps; ///< What was asked for instead of slept.
};

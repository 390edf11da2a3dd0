// SPDX-License-Identifier: MIT

/// @file
/// A span of time in seconds and microseconds, as waits take it: zeUtil::Interval.
///
/// See the class for its contract.

#pragma once

#include "Base/zeBaseExport.h"

namespace zeUtil {

/// A span of time. Zero means no limit wherever a time is awaited, never a poll.
///
/// Conversions truncate to whole microseconds: less than a microsecond becomes zero, that is, no
/// limit. A literal `0` is ambiguous as an argument: write `Interval()`.
///
/// Threads: as for any plain value, different objects may be used by different threads at once.
///
/// @code
/// assert(zeUtil::Interval("1500ms") == zeUtil::Interval(1.5));
/// assert(zeUtil::Interval("2min").seconds == 120);
/// assert(zeUtil::Interval("250us") < zeUtil::Interval("1ms"));
/// @endcode
class ZEBASE_API Interval {
public:
    /// Zero: no limit.
    constexpr Interval() = default;

    /// The absolute value of `seconds`, truncated to whole microseconds: 2.3 has 299999, since the
    /// nearest double lies below. NaN, and what 32 bits cannot hold, give the longest interval.
    Interval(double seconds);

    /// From digits and a unit, with nothing before, between or after: `us`, `ms`, `s`, `min` or
    /// `h`. The number wraps at 32 bits, and from 2147483648 on it is negative. Throws an Error of
    /// code 1, "Bad time string", for any other text, and for null.
    Interval(const char* text);

    /// Both fields as seconds.
    double dseconds() const { return seconds + microseconds / 1000000.0; }

    /// Whether both fields are equal.
    friend constexpr bool operator==(const Interval&, const Interval&) = default;

    /// By `seconds`, then by `microseconds`.
    friend constexpr bool operator<(const Interval& a, const Interval& b) {
        return a.seconds != b.seconds ? a.seconds < b.seconds : a.microseconds < b.microseconds;
    }

    int seconds = 0;      ///< Whole seconds.
    int microseconds = 0; ///< The rest, below a second in magnitude.
};

} // namespace zeUtil

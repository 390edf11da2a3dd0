// SPDX-License-Identifier: MIT

/// @file
/// Timing by the wall clock.
///
/// The clock is the system's real time, so that a correction of the system's clock shows in what a
/// running watch measures: a duration can be too long, too short or negative.
///
/// Threads: a StopWatch belongs to one thread at a time.
///
/// @code
/// zeOS::StopWatch watch;
/// watch.start();
/// const double soFar = watch.check(); // the watch goes on
/// const double total = watch.stop();
/// assert(watch.check() == total && watch.clear() == total && watch.check() == 0);
/// static_cast<void>(soFar);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeOS {

/// Adds up the stretches of time between start() and stop(), in seconds. Stopped at first, at 0.
class ZEBASE_API StopWatch {
public:
    /// A moment of the wall clock.
    struct CurTime {
        int seconds = 0;     ///< Since the epoch, cut to 32 bits.
        int nanoseconds = 0; ///< From 0 to 999999999.
    };

    /// Begins a stretch, which adds to what was measured before. A running watch begins anew, and
    /// forgets the stretch that it was in. Returns the sum of the finished stretches.
    double start();
    /// Ends the stretch, if the watch is running. Returns the sum.
    double stop();
    /// stop(), and back to 0. Returns the sum.
    double clear();
    /// The sum, the running stretch included.
    double check() const;
    /// Whether the watch is running.
    bool running() const { return running_; }

    /// Reads the clock.
    void now(CurTime& time) const;
    /// The seconds from `from` to `to`, correct as long as less than 68 years lie between them.
    double getDelta(const CurTime& from, const CurTime& to) const;

private:
    double elapsed_ = 0;
    bool running_ = false;
    CurTime started_;
};

} // namespace zeOS

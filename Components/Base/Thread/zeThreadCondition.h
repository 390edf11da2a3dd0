// SPDX-License-Identifier: MIT

/// @file
/// A condition variable with its mutex: zeThread::Condition.
///
/// Threads: any thread may call at any time; wait() wants the mutex held by the calling thread.
///
/// @code
/// #include <ctime>
/// zeThread::Condition changed;
/// bool ready = false; // guarded by the mutex of `changed`
///
/// // One thread says that it is so:
/// changed.getMutex().lock();
/// ready = true;
/// changed.signal();
/// changed.getMutex().unlock();
///
/// // Another waits until it is so, but no longer than to a point in time:
/// zeUtil::Interval deadline = "5s";
/// deadline.seconds += static_cast<int>(std::time(nullptr));
/// changed.getMutex().lock();
/// while (!ready && changed.wait(deadline) == 0) {
/// }
/// changed.getMutex().unlock();
/// @endcode

#pragma once

#include "Base/Thread/zeThreadMutex.h"
#include "Base/Utility/zeUtilInterval.h"
#include "Base/zeBaseExport.h"

namespace zeThread {

/// Lets threads sleep until another says that something has changed. A wait can end without a
/// signal: test what is waited for again, in a loop.
class ZEBASE_API Condition {
public:
    /// Throws a zeUtil::Error of code 1 if the system cannot make one.
    Condition();
    Condition(const Condition&) = delete; ///< Share a reference to one.
    Condition& operator=(const Condition&) = delete;

    /// No thread may be waiting. The C library waits for threads that still are; where it reports
    /// them instead, the process ends with an uncaught zeUtil::Error of code 2.
    ~Condition();

    /// The mutex that guards what is waited for.
    Mutex& getMutex();

    /// Wakes one waiting thread, if there is any.
    void signal();

    /// Wakes all waiting threads.
    void broadcast();

    /// Releases the mutex, sleeps until woken, and takes the mutex again.
    ///
    /// `deadline` is a point in time and not a duration: seconds and microseconds since the start
    /// of 1970 on the system's clock (CLOCK_REALTIME). An Interval of five seconds has passed long
    /// ago, and the call returns at once. For a duration, add the current time; the seconds' 32
    /// bits reach to January 2038. Zero: no limit.
    ///
    /// Returns 0 if woken, or the system's error number: ETIMEDOUT at the deadline.
    int wait(zeUtil::Interval deadline);

private:
    struct Block;

    Block* block_;
};

} // namespace zeThread

// SPDX-License-Identifier: MIT

/// @file
/// A counter that threads wait for to be above zero: zeThread::Semaphore.
///
/// Threads: any thread may call at any time.
///
/// @code
/// zeThread::Semaphore jobs(0);
/// jobs.post(); // one thread: there is a job
/// jobs.wait(); // another: waits for a job, and takes it
/// assert(!jobs.tryWait());
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeThread {

/// A counter that never falls below zero.
class ZEBASE_API Semaphore {
public:
    /// Counts from `initial`, at most maxValue(). Throws a zeUtil::Error of code 1 with the
    /// system's text if it cannot be made.
    explicit Semaphore(unsigned int initial);
    Semaphore(const Semaphore&) = delete; ///< Share a reference to one.
    Semaphore& operator=(const Semaphore&) = delete;

    /// No thread may be waiting. The memory behind a semaphore (less than 100 bytes) is not freed,
    /// which is kept for compatibility: make semaphores once rather than in a loop. Where the
    /// system reports a failure, the process ends with an uncaught zeUtil::Error of code 2.
    ~Semaphore();

    /// Waits until the counter is above zero, and takes one off. Signals that interrupt the thread
    /// do not end the wait.
    void wait();

    /// Takes one off if the counter is above zero, and says whether it was. Does not wait.
    bool tryWait();

    /// Adds one, which ends the wait of one thread. Ignored at maxValue().
    void post();

    /// The highest value of the counter, 2147483647.
    static unsigned int maxValue();

private:
    struct Block;

    Block* block_;
};

} // namespace zeThread

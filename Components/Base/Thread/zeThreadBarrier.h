// SPDX-License-Identifier: MIT

/// @file
/// A place where a number of threads wait for each other: zeThread::Barrier.
///
/// Threads: any thread may call at any time.
///
/// @code
/// #include "Base/Thread/zeThreadThread.h"
/// static zeThread::Barrier barrier(2);
/// static int result = 0;
/// zeThread::Thread worker(
///     [](void*) {
///         result = 42;
///         barrier.wait();
///     },
///     nullptr);
/// assert(worker.start().code() == 0);
/// barrier.wait();
/// assert(result == 42); // what was written before the barrier is seen behind it
/// assert(worker.wait().code() == 0);
/// @endcode

#pragma once

#include "Base/Utility/zeReferenceCount.h"
#include "Base/zeBaseExport.h"

namespace zeThread {

/// Lets a fixed number of parties wait for each other, as often as they like. What a party wrote
/// before the barrier is seen by all parties behind it.
///
/// A party that is released may destroy the Barrier at once, while others are still leaving it.
class ZEBASE_API Barrier {
public:
    /// For so many parties. With less than 1, wait() never returns. Throws as Condition does.
    explicit Barrier(int parties);
    Barrier(const Barrier&) = delete; ///< Share a reference to one.
    Barrier& operator=(const Barrier&) = delete;

    /// No party may still be waiting for others.
    ~Barrier();

    /// Waits until as many parties have come as there are, this one included. The next cycle then
    /// begins.
    ///
    /// Spins for some microseconds before it sleeps, if there is a processor for each party and the
    /// last waits have shown that it pays.
    void wait();

private:
    class Impl;

    ze::Reference<Impl> impl_;
};

} // namespace zeThread

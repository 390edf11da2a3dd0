// SPDX-License-Identifier: MIT

/// @file
/// Stands between the library and the system's threads: a test program that links ThreadCalls.cpp
/// has its own calls of `pthread_create`, `pthread_mutex_lock`, `sem_wait` and their like, which
/// fail where a test says so, and give way to other threads at random. ThreadSanitizer sees the
/// genuine calls.
///
/// @code
/// const ThreadsAndLocks none;                               // at the end as at the start
/// const RandomYields yields;                                // at every lock and unlock
/// const ThreadFaults faults(ThreadFaults::onCreate, 3, EAGAIN); // the third thread does not start
/// @endcode

#pragma once

#include <cstddef>

/// Makes one call fail. One object at a time; calls of any thread count.
class ThreadFaults {
public:
    enum Call { onCreate, onJoin, onCondInit, onSemInit, onSemWait, callCount };

    /// From now on the `n`-th `call` (1 is the next) fails with `error`. It does nothing, but for
    /// onJoin, which joins.
    ThreadFaults(Call call, std::size_t n, int error);
    ThreadFaults(const ThreadFaults&) = delete;
    ThreadFaults& operator=(const ThreadFaults&) = delete;
    ~ThreadFaults();

    /// How many such calls were made since.
    std::size_t calls() const;
};

/// While it lives, every thread gives way at random (by a yield, or a sleep of some microseconds)
/// before and after it locks, unlocks, posts or waits for a semaphore: orders of events that are
/// rare otherwise.
class RandomYields {
public:
    RandomYields();
    RandomYields(const RandomYields&) = delete;
    RandomYields& operator=(const RandomYields&) = delete;
    ~RandomYields();
};

/// Fails the test if there are more or fewer threads, or locks held, when it dies than when it was
/// made.
class ThreadsAndLocks {
public:
    ThreadsAndLocks();
    ThreadsAndLocks(const ThreadsAndLocks&) = delete;
    ThreadsAndLocks& operator=(const ThreadsAndLocks&) = delete;
    ~ThreadsAndLocks();

    /// The mutexes that the threads of the process hold.
    static long locks();

private:
    std::ptrdiff_t threads_;
    long locks_;
};

/// For how long a test that repeats something at random goes on: ZEBASE_STRESS_SECONDS of the
/// environment, or `usual` seconds. The clock starts when it is made.
class StressTime {
public:
    explicit StressTime(double usual);
    bool isLeft() const;

private:
    double end_;
};

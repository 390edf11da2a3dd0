// SPDX-License-Identifier: MIT

/// @file
/// The pool that parallel algorithms run on: zeUtil::ThreadPool.
///
/// Code that has something to do in parallel derives an algorithm (zeUtilThreadedAlg.h) and gives
/// it to ThreadPool::get(). That is a pool of one thread, the caller's own, until an application
/// installs another, a zeThread::Pool: the same code runs serially in a program that has no
/// threads.
///
/// **Nesting.** While a pool executes, get() gives the pool of one thread again, so that an
/// algorithm which is started inside of another one runs serially, on the thread that starts it.
///
/// **Ownership.** An installed pool stays with whoever installs it, and must be uninstalled before
/// it is destroyed.
///
/// Threads: get() and install() may be called from any thread, but a pool executes for one caller
/// at a time, usually the thread that made it. The pool of one thread executes for any number of
/// callers at once.
///
/// @code
/// struct Count : zeUtil::ThreadedAlg {
///     int sum = 0;
///     void threadFunc(int threadId, int) override {
///         if (threadId == 0)
///             sum = 42;
///     }
/// };
/// Count count;
/// zeUtil::ThreadPool::get()->execute(count);
/// assert(count.sum == 42);
/// assert(zeUtil::ThreadPool::get() == zeUtil::ThreadPool::getSingleThreadedPool());
/// @endcode

#pragma once

#include "Base/Utility/zeUtilThreadedAlg.h"
#include "Base/zeBaseExport.h"

namespace zeUtil {

/// Base of the pools, and the place where one is installed for the process.
class ZEBASE_API ThreadPool {
public:
    /// How many threads execute(), the caller's among them.
    const int numThreads;

    /// For a derived class.
    explicit constexpr ThreadPool(int threads) : numThreads(threads) {}
    ThreadPool(const ThreadPool&) = delete; ///< A pool is its threads. Hand on a pointer.
    ThreadPool& operator=(const ThreadPool&) = delete;
    virtual ~ThreadPool();

    /// @{
    /// Runs the algorithm, and returns when it is done.
    virtual void execute(ThreadedAlg& algorithm) = 0;
    virtual void execute(ThreadedChunkAlg& algorithm) = 0;
    /// @}

    /// Makes `pool` the one that get() gives; null puts the pool of one thread in force again.
    static void install(ThreadPool* pool);

    /// The installed pool, or else the pool of one thread. Never null.
    static ThreadPool* get();

    /// The pool of one thread, which needs no thread but the caller's. It exists until the process
    /// ends.
    static ThreadPool* getSingleThreadedPool();

private:
    ZEBASE_HIDDEN static std::atomic<ThreadPool*> s_threadPool;
};

} // namespace zeUtil

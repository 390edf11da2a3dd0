// SPDX-License-Identifier: MIT

/// @file
/// The threads that parallel algorithms run on: zeThread::Pool.
///
/// An application makes a Pool of as many threads as it wants to use (zeOS::sysInfo() knows the
/// processors), installs it with zeUtil::ThreadPool::install(), and gives algorithms to
/// zeUtil::ThreadPool::get(). The threads are started once and sleep between executions. The
/// library makes no Pool by itself.
///
/// **At exit.** Destroy the Pool before `main` returns, when nothing executes on it any more; its
/// threads have ended when the destructor returns. A queue (zeThread::TaskQueue) goes first.
///
/// Threads: one thread at a time gives work to a Pool; workers that do so get the pool of one
/// thread, since execute() uninstalls the Pool while it runs.
///
/// @code
/// #include <atomic>
/// struct Count : zeUtil::ThreadedAlg {
///     std::atomic<int> sum = 0;
///     void threadFunc(int threadId, int) override { sum += threadId; }
/// };
/// zeThread::Pool pool(4);
/// zeUtil::ThreadPool::install(&pool);
/// Count count;
/// zeUtil::ThreadPool::get()->execute(count);
/// assert(count.sum == 0 + 1 + 2 + 3);
/// @endcode

#pragma once

#include "Base/Utility/zeUtilThreadPool.h"
#include "Base/zeBaseExport.h"

namespace zeThread {

class PoolImpl;

/// A pool of threads. A Pool of `n` executes on `n` threads: the caller, as number 0, and all
/// workers but one, which only a TaskQueue uses.
class ZEBASE_API Pool : public zeUtil::ThreadPool {
public:
    /// Starts `n` workers. Throws the zeUtil::Error of Thread::start() when one of them cannot be
    /// started, and ends those that were. With an `n` below 1 the caller executes alone:
    /// `initialize` of an algorithm is told of 0 threads then, and `threadFunc` of `n`.
    explicit Pool(int n);

    /// Ends the workers. A Pool that is installed is uninstalled.
    ~Pool() override;

    /// @{
    /// Runs the algorithm, and returns when it is done. Afterwards the Pool is installed, even if
    /// it was not before. What `initialize` and `finalize` throw passes through; an exception that
    /// leaves `threadFunc` ends the process. Not to be called while the Pool executes or is
    /// acquired. Waking the workers and waiting for them costs some 50 microseconds, or less than
    /// one if processors are free and executions follow each other closely.
    void execute(zeUtil::ThreadedAlg& algorithm) override;
    void execute(zeUtil::ThreadedChunkAlg& algorithm) override;
    /// @}

    /// Uninstalls any pool, so that nobody else gives work to this one.
    void acquire();

    /// Ends acquire(), and installs this pool.
    void release();

    /// The workers, for the library's own use.
    PoolImpl* getPoolImpl();

    /// Calls threadExecute() of `pool`, which is a `Pool*`. What an execution releases the workers
    /// into.
    static void threadFunc(void* pool, int id, int count);

    /// Runs the share of thread `id` of the execution in progress.
    void threadExecute(int id, int count) noexcept;

private:
    template<class Algorithm>
    ZEBASE_HIDDEN void executeAlg(Algorithm& algorithm, Algorithm*& current);

    PoolImpl* impl_;                                     ///< Owned.
    zeUtil::ThreadedAlg* algorithm_ = nullptr;           ///< In execution.
    zeUtil::ThreadedChunkAlg* chunkAlgorithm_ = nullptr; ///< In execution.
    int lastChunk_ = -1;                                 ///< Dealt last.
    bool busy_ = false;                                  ///< Between acquire() and release().
};

} // namespace zeThread

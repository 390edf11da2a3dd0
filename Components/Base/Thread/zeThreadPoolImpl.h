// SPDX-License-Identifier: MIT

/// @file
/// The workers of a zeThread::Pool.

#pragma once

#include <memory>
#include <vector>

#include "Base/Thread/zeThreadBarrier.h"
#include "Base/Thread/zeThreadMutex.h"
#include "Base/Thread/zeThreadThread.h"

namespace zeThread {

/// Keeps workers parked, releases all of them into one function, and joins them again. The
/// controlling thread calls releaseAll() or releaseAllButOne(), and then join().
///
/// The worker with the highest number is parked at a barrier of its own, so that it sleeps through
/// releaseAllButOne(): a pool of as many threads as there are processors leaves none of them
/// without one. Nothing but the numbers of workers is guarded by a lock: what the controlling
/// thread writes before it comes to a barrier, the workers see behind it.
class PoolImpl {
public:
    /// What workers are released into; `number` is from 1 to `numThreads`.
    using Function = void (*)(void* arg, int number, int numThreads);

    /// Starts `n` workers, or throws and leaves none.
    explicit PoolImpl(int n);
    PoolImpl(const PoolImpl&) = delete;
    PoolImpl& operator=(const PoolImpl&) = delete;

    /// Ends the workers, which must be parked.
    ~PoolImpl();

    /// The workers that were started.
    int numThreads() const { return numThreads_; }

    /// Lets all workers run `function(arg, …)`.
    void releaseAll(Function function, void* arg) { release(function, arg, false); }

    /// Lets all workers but the one with the highest number, whose place the controlling thread
    /// takes, run `function(arg, …)`.
    void releaseAllButOne(Function function, void* arg) { release(function, arg, true); }

    /// Returns when all workers are parked again.
    void join() { meetWorkers(); }

private:
    void startThreads(int n);
    void waitForThreads();
    void release(Function function, void* arg, bool skipLast);
    void meetWorkers();
    void threadFunc();

    std::vector<std::unique_ptr<Thread>> threads_;
    Mutex lock_{true}; ///< Guards nextId_; held by the constructor, so that no worker gets ahead.
    std::unique_ptr<Barrier> barrier_;     ///< For the controlling thread and all workers but one.
    std::unique_ptr<Barrier> lastBarrier_; ///< For the controlling thread and that one.
    int nextId_ = 1;
    int numThreads_ = 0;
    Function function_ = nullptr;
    void* arg_ = nullptr;
    bool skipLast_ = false;
    bool terminating_ = false;
};

} // namespace zeThread

// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadPool.h"

#include <algorithm>

#include "Base/Thread/zeThreadAtomic.h"
#include "Base/Thread/zeThreadPoolImpl.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeUtilError.h"

namespace zeThread {

PoolImpl::PoolImpl(int n) {
    MutexOp op(lock_, true);
    op.lock();
    try {
        startThreads(n);
        numThreads_ = static_cast<int>(threads_.size());
        lastBarrier_ = std::make_unique<Barrier>(2);
        barrier_ = std::make_unique<Barrier>(std::max(numThreads_, 1));
    } catch (...) {
        op.unlock();
        waitForThreads();
        throw;
    }
}

void PoolImpl::startThreads(int n) {
    for (int i = 0; i < n; ++i) {
        // Kept before it is started: a thread that runs must not be lost.
        Thread& thread = *threads_.emplace_back(std::make_unique<Thread>());
        // Not tied to a client: each worker destroys the connection by itself at its end, and would
        // change the client's list while others do.
        thread.getSignal()->connect(this, &PoolImpl::threadFunc);
        const zeUtil::Error error = thread.start();
        if (error.code() != 0)
            throw error;
    }
}

PoolImpl::~PoolImpl() {
    terminating_ = true;
    release(nullptr, nullptr, false);
    waitForThreads();
}

/// Passes by the one that could not be started.
void PoolImpl::waitForThreads() {
    for (const std::unique_ptr<Thread>& thread : threads_)
        static_cast<void>(thread->wait());
}

void PoolImpl::release(Function function, void* arg, bool skipLast) {
    function_ = function;
    arg_ = arg;
    skipLast_ = skipLast;
    meetWorkers();
}

void PoolImpl::meetWorkers() {
    barrier_->wait();
    if (!skipLast_ && numThreads_ > 0)
        lastBarrier_->wait();
}

/// A worker's life. It parks at the first of the two waits; the second one is join().
void PoolImpl::threadFunc() {
    lock_.lock();
    const int number = nextId_++;
    const bool isPoolMade = barrier_ != nullptr;
    lock_.unlock();
    if (!isPoolMade)
        return;
    Barrier& barrier = number < numThreads_ ? *barrier_ : *lastBarrier_;
    for (;;) {
        barrier.wait();
        if (terminating_)
            return;
        function_(arg_, number, numThreads_);
        barrier.wait();
    }
}

Pool::Pool(int n) : ThreadPool(n), impl_(new PoolImpl(n)) {}

Pool::~Pool() {
    if (get() == this)
        install(nullptr);
    delete impl_;
}

void Pool::acquire() {
    install(nullptr);
    busy_ = true;
}

void Pool::release() {
    install(this);
    busy_ = false;
}

PoolImpl* Pool::getPoolImpl() {
    return impl_;
}

void Pool::execute(zeUtil::ThreadedAlg& algorithm) {
    executeAlg(algorithm, algorithm_);
}

void Pool::execute(zeUtil::ThreadedChunkAlg& algorithm) {
    lastChunk_ = -1;
    executeAlg(algorithm, chunkAlgorithm_);
}

template<class Algorithm>
void Pool::executeAlg(Algorithm& algorithm, Algorithm*& current) {
    struct Acquired { // also while initialize() or finalize() throws
        Acquired(Pool& itsPool, Algorithm& algorithm, Algorithm*& itsCurrent)
            : pool(itsPool), current(itsCurrent) {
            pool.acquire();
            current = &algorithm;
        }
        ~Acquired() {
            current = nullptr;
            pool.release();
        }
        Pool& pool;
        Algorithm*& current;
    };
    const Acquired acquired(*this, algorithm, current);
    algorithm.initialize(impl_->numThreads());
    impl_->releaseAllButOne(threadFunc, this);
    threadExecute(0, numThreads);
    impl_->join();
    algorithm.finalize();
}

void Pool::threadFunc(void* pool, int id, int count) {
    static_cast<Pool*>(pool)->threadExecute(id, count);
}

// On a worker nobody could catch an exception; on the caller's thread it would leave the workers
// behind.
void Pool::threadExecute(int id, int count) noexcept {
    if (algorithm_)
        algorithm_->threadFunc(id, count);
    if (!chunkAlgorithm_)
        return;
    const int numChunks = chunkAlgorithm_->numChunks;
    for (;;) {
        const int chunk = atomicIncrement(lastChunk_);
        if (chunk < 0 || chunk >= numChunks) // below 0: each thread counts one too far
            return;
        chunkAlgorithm_->threadFunc(chunk, id, count);
    }
}

} // namespace zeThread

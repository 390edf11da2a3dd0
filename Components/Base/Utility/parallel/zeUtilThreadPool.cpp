// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilThreadPool.h"

namespace zeUtil {

namespace {

class SimpleThreadPool final : public ThreadPool {
public:
    constexpr SimpleThreadPool() : ThreadPool(1) {}

    void execute(ThreadedAlg& algorithm) override {
        algorithm.initialize(1);
        algorithm.threadFunc(0, 1);
        algorithm.finalize();
    }

    void execute(ThreadedChunkAlg& algorithm) override {
        algorithm.initialize(1);
        const int numChunks = algorithm.numChunks;
        for (int chunk = 0; chunk < numChunks; ++chunk)
            algorithm.threadFunc(chunk, 0, 1);
        algorithm.finalize();
    }
};

constinit SimpleThreadPool simplePool; // there before any static object that may call get()

} // namespace

constinit std::atomic<ThreadPool*> ThreadPool::s_threadPool = nullptr;

ThreadPool::~ThreadPool() = default;

void ThreadPool::install(ThreadPool* pool) {
    s_threadPool.store(pool, std::memory_order_release);
}

ThreadPool* ThreadPool::get() {
    ThreadPool* pool = s_threadPool.load(std::memory_order_acquire);
    return pool ? pool : getSingleThreadedPool();
}

ThreadPool* ThreadPool::getSingleThreadedPool() {
    return &simplePool;
}

} // namespace zeUtil

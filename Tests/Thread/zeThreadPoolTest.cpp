// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadPool.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Utility/zeUtilError.h"
#include "Base/Utility/zeUtilProgress.h"
#include "Support/AllocationCount.h"
#include "Support/ThreadCalls.h"

#include "Thread/poolRounds.h"

namespace {

using zeThread::Pool;
using zeUtil::ThreadPool;

/// An algorithm on either base class, which notes what is called.
template<class Algorithm>
struct Noting : Algorithm {
    explicit Noting(int count) : calls(static_cast<std::size_t>(count)) {}
    void initialize(int count) override { initializedWith = count; }
    void finalize() override { isFinalized = true; }
    void note(int place, int id, int count) {
        ++calls.at(static_cast<std::size_t>(place));
        if (id == 0)
            numThreads = count;
    }

    int initializedWith = -1000, numThreads = -1000;
    bool isFinalized = false;
    std::vector<std::atomic<int>> calls; ///< For each thread, or each chunk.
};

struct OnThreads : Noting<zeUtil::ThreadedAlg> {
    using Noting::Noting;
    void threadFunc(int id, int count) override {
        note(id, id, count);
        // What it starts on the pool that it sees runs on its own thread.
        EXPECT_EQ(ThreadPool::get(), ThreadPool::getSingleThreadedPool());
        struct Inner : zeUtil::ThreadedAlg {
            void threadFunc(int innerId, int innerCount) override {
                EXPECT_EQ(innerId, 0);
                EXPECT_EQ(innerCount, 1);
                where = std::this_thread::get_id();
            }
            std::thread::id where;
        } inner;
        ThreadPool::get()->execute(inner);
        EXPECT_EQ(inner.where, std::this_thread::get_id());
    }
};

struct OnChunks : Noting<zeUtil::ThreadedChunkAlg> {
    OnChunks(int chunks, int threads) : Noting(chunks), limit(threads) {}
    void initialize(int count) override {
        EXPECT_EQ(numChunks, 100);
        numChunks = static_cast<int>(calls.size());
        Noting::initialize(count);
    }
    void threadFunc(int chunk, int id, int count) override {
        EXPECT_LT(id, limit);
        EXPECT_TRUE(limit > 1 || chunk == last + 1) << "one thread gets them in order";
        last = limit > 1 ? 0 : chunk;
        note(chunk, id, count);
    }
    int limit;
    std::atomic<int> last = -1;
};

} // namespace

TEST(ThreadPool, ExecutesOncePerThreadAndOncePerChunk) {
    const ThreadsAndLocks none;
    struct Case {
        int n, workers, threads; ///< 0 stands for the single-threaded pool.
    };
    for (const Case& c : {Case{1, -1, 1}, {-3, 0, 1}, {0, 0, 1}, {1, 1, 1}, {2, 2, 2}, {8, 8, 8}}) {
        const std::unique_ptr<Pool> made(c.workers < 0 ? nullptr : new Pool(c.n));
        ThreadPool* const pool = made ? made.get() : ThreadPool::getSingleThreadedPool();
        EXPECT_EQ(pool->numThreads, c.n);
        EXPECT_EQ(ThreadPool::get(), ThreadPool::getSingleThreadedPool()) << "installed by nobody";
        const auto verify = [&](const auto& notes) {
            EXPECT_EQ(ThreadPool::get(), pool) << "whoever has executed is installed";
            EXPECT_EQ(notes.initializedWith, made ? c.workers : 1) << c.n;
            EXPECT_TRUE(notes.isFinalized);
            for (const std::atomic<int>& calls : notes.calls)
                EXPECT_EQ(calls, 1) << c.n;
        };
        OnThreads onThreads(c.threads);
        pool->execute(onThreads);
        verify(onThreads);
        EXPECT_EQ(onThreads.numThreads, c.n) << "as the pool was made, even below 0";
        for (int chunks : {0, 1, 7, 1000}) {
            OnChunks onChunks(chunks, c.threads);
            pool->execute(onChunks);
            verify(onChunks);
        }
    }
    EXPECT_EQ(ThreadPool::get(), ThreadPool::getSingleThreadedPool()) << "uninstalled at its end";
}

TEST(ThreadPool, StaysUsableWhenAnAlgorithmThrowsOnTheCaller) {
    struct Throwing : zeUtil::ThreadedChunkAlg {
        void initialize(int) override { throw 1; }
        void threadFunc(int, int, int) override { FAIL(); }
    } throwing;
    Pool pool(2), other(1);
    EXPECT_THROW(pool.execute(throwing), int);
    EXPECT_EQ(ThreadPool::get(), &pool);
    OnThreads algorithm(2);
    pool.execute(algorithm);
    ThreadPool::install(&other); // which is not uninstalled by the end of `pool`
    EXPECT_EQ(algorithm.calls[1], 1);
}

TEST(ThreadedAlg, LetsThreadZeroSpeakWithTheProgress) {
    zeUtil::Progress progress;
    OnThreads algorithm(1);
    EXPECT_FALSE(algorithm.cancelled(0)) << "nobody to ask";
    algorithm.setProgress(&progress);
    progress.cancel();
    EXPECT_FALSE(algorithm.cancelled(1)) << "thread 0 has not asked yet";
    EXPECT_TRUE(algorithm.cancelled(0));
    EXPECT_TRUE(algorithm.cancelled(1));
    algorithm.updateProgress(0, 0.5);
    algorithm.updateProgress(2, 0.75);
    EXPECT_EQ(progress.get(), 0.5);
    EXPECT_EQ(algorithm.getProgress(0), &progress);
    EXPECT_EQ(algorithm.getProgress(1), nullptr);
    algorithm.setProgress(nullptr);
    EXPECT_TRUE(algorithm.cancelled(0)) << "for the life of the algorithm";
}

TEST(Pool, StartsAllThreadsOrNone) {
    const ThreadsAndLocks none;
    const auto failure = [] {
        try {
            Pool pool(4);
            return std::string();
        } catch (const zeUtil::Error& error) {
            EXPECT_EQ(error.code(), 1);
            EXPECT_EQ(ThreadPool::get(), ThreadPool::getSingleThreadedPool());
            const std::string text = error.message();
            return text.substr(0, text.find(':'));
        }
    };
    for (std::size_t n = 1; n <= 5; ++n) {
        const ThreadFaults faults(ThreadFaults::onCreate, n, EAGAIN);
        EXPECT_EQ(failure(), n <= 4 ? "pthread_create() failed" : "");
        EXPECT_EQ(faults.calls(), n <= 4 ? n : 4) << "no further thread after one that failed";
    }
    const ThreadFaults faults(ThreadFaults::onCondInit, 1, ENOMEM);
    EXPECT_EQ(failure(), "Cannot initialize pthread condition");
}

TEST(Pool, LeavesNoThreadWhenMemoryRunsOut) {
    const ThreadsAndLocks none;
    bool hasRun = false;
    for (std::size_t n = 1; !hasRun; ++n) {
        try {
            failAllocation(n);
            Pool pool(3);
            hasRun = true;
        } catch (const std::bad_alloc&) {
            EXPECT_LT(n, 50u);
        }
        failAllocation(0);
    }
}

TEST(Pool, IsMadeAndDestroyedAThousandTimes) {
    const ThreadsAndLocks none;
    for (int round = 0; round < 1000; ++round) {
        std::unique_ptr<RandomYields> yields;
        if (round % 4 == 0)
            yields = std::make_unique<RandomYields>();
        Pool pool(round % 5);
        if (round % 3 == 0)
            continue;
        OnThreads algorithm(5);
        pool.execute(algorithm);
        EXPECT_EQ(algorithm.calls[0], 1);
    }
}

TEST(Pool, LosesNoWakeUp) {
    const ThreadsAndLocks none;
    for (int threads : {2, 3, 8}) {
        const StressTime time(0.3);
        PoolRounds rounds(threads);
        for (int block = 0; time.isLeft(); ++block) {
            std::unique_ptr<RandomYields> yields;
            if (block % 2 == 0)
                yields = std::make_unique<RandomYields>();
            for (int i = 0; i < 100; ++i)
                rounds.run();
        }
        rounds.verify();
    }
}

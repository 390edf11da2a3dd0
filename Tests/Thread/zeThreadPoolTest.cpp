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

/// What an algorithm on either base class notes.
struct Notes {
    int initializedWith = -1000, numThreads = -1000;
    bool isFinalized = false;
    std::vector<std::atomic<int>> calls; ///< For each thread, or each chunk.

    explicit Notes(std::size_t count) : calls(count) {}

    /// The pool that code in the algorithm sees, and where what it starts there runs.
    static void nest() {
        EXPECT_EQ(ThreadPool::get(), ThreadPool::getSingleThreadedPool());
        struct Inner : zeUtil::ThreadedAlg {
            void threadFunc(int id, int count) override {
                EXPECT_EQ(id, 0);
                EXPECT_EQ(count, 1);
                where = std::this_thread::get_id();
            }
            std::thread::id where;
        } inner;
        ThreadPool::get()->execute(inner);
        EXPECT_EQ(inner.where, std::this_thread::get_id());
    }
};

struct OnThreads : zeUtil::ThreadedAlg {
    explicit OnThreads(std::size_t threads) : notes(threads) {}
    void initialize(int count) override { notes.initializedWith = count; }
    void threadFunc(int id, int count) override {
        if (id == 0)
            notes.numThreads = count;
        ++notes.calls.at(static_cast<std::size_t>(id));
        Notes::nest();
    }
    void finalize() override { notes.isFinalized = true; }
    Notes notes;
};

struct OnChunks : zeUtil::ThreadedChunkAlg {
    OnChunks(int chunks, int threads) : notes(static_cast<std::size_t>(chunks)), limit(threads) {}
    void initialize(int count) override {
        EXPECT_EQ(numChunks, 100);
        numChunks = static_cast<int>(notes.calls.size());
        notes.initializedWith = count;
    }
    void threadFunc(int chunk, int id, int count) override {
        EXPECT_LT(id, limit);
        EXPECT_TRUE(limit > 1 || chunk == last + 1) << "one thread gets them in order";
        last = limit > 1 ? 0 : chunk;
        ++notes.calls.at(static_cast<std::size_t>(chunk));
        if (id == 0)
            notes.numThreads = count;
    }
    void finalize() override { notes.isFinalized = true; }
    Notes notes;
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
        const auto verify = [&](const Notes& notes) {
            EXPECT_EQ(ThreadPool::get(), pool) << "whoever has executed is installed";
            EXPECT_EQ(notes.initializedWith, made ? c.workers : 1) << c.n;
            EXPECT_TRUE(notes.isFinalized);
            for (const std::atomic<int>& calls : notes.calls)
                EXPECT_EQ(calls, 1) << c.n;
        };
        OnThreads onThreads(static_cast<std::size_t>(c.threads));
        pool->execute(onThreads);
        verify(onThreads.notes);
        EXPECT_EQ(onThreads.notes.numThreads, c.n) << "as the pool was made, even below 0";
        for (int chunks : {0, 1, 7, 1000}) {
            OnChunks onChunks(chunks, c.threads);
            pool->execute(onChunks);
            verify(onChunks.notes);
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
    EXPECT_EQ(algorithm.notes.calls[1], 1);
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
    const auto failsWith = [](auto message, const auto& made) {
        try {
            Pool pool(4);
            return false;
        } catch (const zeUtil::Error& error) {
            EXPECT_EQ(error.code(), 1);
            EXPECT_EQ(std::string(error.message()).rfind(message, 0), 0u) << error.message();
            EXPECT_EQ(ThreadPool::get(), ThreadPool::getSingleThreadedPool());
            return made;
        }
    };
    for (std::size_t n = 1; n <= 5; ++n) {
        const ThreadFaults faults(ThreadFaults::onCreate, n, EAGAIN);
        EXPECT_EQ(failsWith("pthread_create() failed: ", true), n <= 4);
        EXPECT_EQ(faults.calls(), n <= 4 ? n : 4) << "no further thread after one that failed";
    }
    const ThreadFaults faults(ThreadFaults::onCondInit, 1, ENOMEM);
    EXPECT_TRUE(failsWith("Cannot initialize pthread condition: ", true));
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
        EXPECT_EQ(algorithm.notes.calls[0], 1);
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

// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadPool.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <new>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Utility/zeUtilProgress.h"
#include "Support/AllocationCount.h"
#include "Support/ThreadCalls.h"

#include "Thread/zeThreadTeam.h"

namespace {

using zeThread::Pool;
using zeUtil::Error;
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

/// A pool, whose threads count their rounds. A wake-up that is lost would stop it for good.
class PoolRounds : zeUtil::ThreadedAlg {
public:
    explicit PoolRounds(int threads) : pool_(threads), counts_(static_cast<std::size_t>(threads)) {}

    void run() {
        pool_.execute(*this);
        ++rounds_;
    }

    void verify() const { EXPECT_EQ(counts_, std::vector<int>(counts_.size(), rounds_)); }

private:
    void threadFunc(int id, int) override { ++counts_[static_cast<std::size_t>(id)]; }

    zeThread::Pool pool_;
    std::vector<int> counts_;
    int rounds_ = 0;
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
        const Error error = thrownBy([] { Pool(4); });
        EXPECT_EQ(ThreadPool::get(), ThreadPool::getSingleThreadedPool());
        return error;
    };
    const Error noThread(1, "pthread_create() failed: Resource temporarily unavailable");
    const Error noCondition(1, "Cannot initialize pthread condition: Cannot allocate memory");
    for (std::size_t n = 1; n <= 5; ++n) {
        const ThreadFaults faults(ThreadFaults::onCreate, n, EAGAIN);
        EXPECT_EQ(failure(), n <= 4 ? noThread : Error());
        EXPECT_EQ(faults.calls(), n <= 4 ? n : 4) << "no further thread after one that failed";
    }
    const ThreadFaults faults(ThreadFaults::onCondInit, 1, ENOMEM);
    EXPECT_EQ(failure(), noCondition);
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

TEST(Pool, LosesNoWakeUpFromItsFirstRoundToItsEnd) {
    const ThreadsAndLocks none;
    for (int threads : {1, 2, 3, 8}) {
        const StressTime time(0.3);
        for (int block = 0; time.isLeft(); ++block) {
            const std::unique_ptr<RandomYields> yields(block % 2 == 0 ? new RandomYields : nullptr);
            PoolRounds rounds(threads);
            for (int i = 0; i < block % 3 * 50; ++i)
                rounds.run();
            rounds.verify();
        }
    }
}

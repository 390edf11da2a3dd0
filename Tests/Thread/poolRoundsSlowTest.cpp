// SPDX-License-Identifier: MIT

#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadPool.h"

namespace {

/// Counts the rounds of each thread.
struct Rounds : zeUtil::ThreadedAlg {
    explicit Rounds(int threads) : counts(static_cast<std::size_t>(threads)) {}
    void threadFunc(int id, int) override { ++counts[static_cast<std::size_t>(id)]; }

    std::vector<int> counts;
};

} // namespace

/// A wake-up that is lost would stop the pool for good.
TEST(Pool, LosesNoWakeUpInAMillionRounds) {
    constexpr int count = 1'000'000;
    for (const int threads : {2, 4}) {
        zeThread::Pool pool(threads);
        Rounds rounds(threads);
        for (int i = 0; i < count; ++i)
            pool.execute(rounds);
        EXPECT_EQ(rounds.counts, std::vector<int>(rounds.counts.size(), count));
    }
}

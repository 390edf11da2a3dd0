// SPDX-License-Identifier: MIT

/// @file
/// Rounds of release and join, for a short test and a long one.

#pragma once

#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadPool.h"

/// A pool, whose threads count their rounds. A wake-up that is lost would stop it for good.
class PoolRounds {
public:
    explicit PoolRounds(int threads) : pool_(threads), counting_(threads) {}

    void run() {
        pool_.execute(counting_);
        ++rounds_;
    }

    void verify() const {
        for (const Count& count : counting_.counts)
            EXPECT_EQ(count.rounds, rounds_);
    }

private:
    struct alignas(64) Count {
        int rounds = 0;
    };
    struct Counting : zeUtil::ThreadedAlg {
        explicit Counting(int threads) : counts(static_cast<std::size_t>(threads)) {}
        void threadFunc(int id, int) override { ++counts[static_cast<std::size_t>(id)].rounds; }
        std::vector<Count> counts;
    };

    zeThread::Pool pool_;
    Counting counting_;
    int rounds_ = 0;
};

// SPDX-License-Identifier: MIT

/// @file
/// Rounds of release and join, for a short test and a long one.

#pragma once

#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadPool.h"

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

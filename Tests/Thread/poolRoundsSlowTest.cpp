// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "Thread/poolRounds.h"

TEST(Pool, LosesNoWakeUpInAMillionRounds) {
    for (int threads : {2, 4}) {
        PoolRounds rounds(threads);
        for (int i = 0; i < 1000000; ++i)
            rounds.run();
        rounds.verify();
    }
}

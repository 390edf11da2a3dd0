// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadBarrier.h"

#include <sys/time.h>

#include <csignal>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "Support/ThreadCalls.h"

#include "Thread/zeThreadTeam.h"

using zeThread::Barrier;

// Every party counts its rounds, and looks at those of all others between two barriers. The counts
// are plain: the barrier alone orders who writes and who reads.
TEST(Barrier, HoldsAllPartiesInEachRound) {
    const ThreadsAndLocks none;
    for (const int parties : {1, 2, 3, 5, 9, -1, -2, -3, -5, -9}) {
        SCOPED_TRACE(parties);
        const std::unique_ptr<RandomYields> yields(parties > 0 ? nullptr : new RandomYields);
        const auto count = static_cast<std::size_t>(std::abs(parties));
        const StressTime time(0.05);
        Barrier barrier(std::abs(parties));
        std::vector<long> rounds(count, 0);
        bool isOver = false;
        {
            const Team team(std::abs(parties), [&](int number) {
                while (!isOver) {
                    const long mine = ++rounds[static_cast<std::size_t>(number)];
                    barrier.wait();
                    EXPECT_EQ(rounds, std::vector<long>(count, mine));
                    barrier.wait();
                    if (number == 0)
                        isOver = mine > 2 && !time.isLeft();
                    barrier.wait();
                }
            });
        }
    }
}

TEST(Barrier, MayBeDestroyedByThoseThatItReleased) {
    const ThreadsAndLocks none;
    const RandomYields yields;
    for (const StressTime time(0.2); time.isLeft();) {
        auto barrier = std::make_unique<Barrier>(3);
        Barrier* const shared = barrier.get();
        const Team team(3, [&](int number) {
            shared->wait();
            if (number == 0)
                barrier = nullptr; // while the others may still be leaving
        });
    }
}

TEST(BarrierDeathTest, OfNoPartyNeverOpens) {
    for (const int parties : {0, -1}) {
        const auto waiting = [&] {
            const itimerval soon{{0, 0}, {0, 100000}};
            std::signal(SIGALRM, SIG_DFL);
            setitimer(ITIMER_REAL, &soon, nullptr);
            Barrier(parties).wait();
        };
        EXPECT_EXIT(waiting(), testing::KilledBySignal(SIGALRM), "");
    }
}

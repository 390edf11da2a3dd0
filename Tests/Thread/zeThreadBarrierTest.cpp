// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadBarrier.h"

#include <sys/time.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <memory>

#include <gtest/gtest.h>

#include "Base/Utility/zeUtilError.h"
#include "Support/ThreadCalls.h"

#include "Thread/zeThreadTeam.h"

using zeThread::Barrier;

namespace {

/// Every party counts its rounds, and looks at those of all others between two barriers. The counts
/// are plain: the barrier alone orders who writes and who reads.
void runRounds(int parties, double seconds) {
    SCOPED_TRACE(parties);
    const StressTime time(seconds);
    Barrier barrier(parties);
    std::vector<long> rounds(static_cast<std::size_t>(parties), 0);
    bool isOver = false;
    {
        const Team team(parties, [&](int number) {
            while (!isOver) {
                const long mine = ++rounds[static_cast<std::size_t>(number)];
                barrier.wait();
                for (const long theirs : rounds)
                    EXPECT_EQ(theirs, mine);
                barrier.wait();
                if (number == 0)
                    isOver = !time.isLeft();
                barrier.wait();
            }
        });
    }
    EXPECT_GT(rounds[0], 3);
}

} // namespace

TEST(Barrier, OfOnePartyHoldsNobodyUp) {
    Barrier barrier(1);
    for (int i = 0; i < 3; ++i)
        barrier.wait();
}

TEST(Barrier, HoldsAllPartiesInEachRound) {
    const ThreadsAndLocks none;
    for (const int parties : {2, 3, 5, 9})
        runRounds(parties, 0.1);
    const RandomYields yields;
    for (const int parties : {2, 3, 5, 9})
        runRounds(parties, 0.1);
}

TEST(Barrier, MayBeDestroyedByThoseThatItReleased) {
    const ThreadsAndLocks none;
    const RandomYields yields;
    const StressTime time(0.2);
    constexpr int parties = 3;
    long rounds = 0;
    for (; time.isLeft(); ++rounds) {
        auto barrier = std::make_unique<Barrier>(parties);
        Barrier* const shared = barrier.get();
        const Team team(parties, [&](int number) {
            shared->wait();
            if (number == 0)
                barrier = nullptr; // while the others may still be leaving
        });
    }
    EXPECT_GT(rounds, 3);
}

TEST(Barrier, ThrowsIfTheSystemHasNoCondition) {
    const ThreadFaults faults(ThreadFaults::onCondInit, 1, ENOMEM);
    EXPECT_THROW(Barrier(2), zeUtil::Error);
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

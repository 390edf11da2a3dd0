// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadSemaphore.h"

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "Base/Utility/zeUtilError.h"
#include "Support/ThreadCalls.h"

#include "Thread/zeThreadTeam.h"

using zeThread::Semaphore;
using zeUtil::Error;

namespace {

/// Two who post and wait in turn.
struct PingPong {
    Semaphore there{0}, back{0};
};

Error errorOf(unsigned int initial) {
    try {
        const Semaphore semaphore(initial);
    } catch (const Error& error) {
        return error;
    }
    return {};
}

} // namespace

TEST(Semaphore, Counts) {
    Semaphore semaphore(2);
    EXPECT_TRUE(semaphore.tryWait());
    semaphore.wait();
    EXPECT_FALSE(semaphore.tryWait());
    semaphore.post();
    semaphore.post();
    semaphore.wait();
    EXPECT_TRUE(semaphore.tryWait());
    EXPECT_FALSE(semaphore.tryWait());

    EXPECT_EQ(Semaphore::maxValue(), 2147483647u);
    Semaphore full(Semaphore::maxValue());
    full.post();
    EXPECT_TRUE(full.tryWait());
}

TEST(Semaphore, ReportsThatTheSystemMadeNone) {
    EXPECT_EQ(errorOf(0x80000000u), Error(1, "Invalid argument"));
    const ThreadFaults faults(ThreadFaults::onSemInit, 1, ENOSPC);
    EXPECT_EQ(errorOf(0), Error(1, "No space left on device"));
    EXPECT_EQ(errorOf(0), Error());
}

TEST(SemaphoreDeathTest, EndsTheProcessIfTheSystemCannotDestroyIt) {
    const auto destroy = [] {
        const ThreadFaults faults(ThreadFaults::onSemDestroy, 1, EBUSY);
        const Semaphore semaphore(0);
    };
    EXPECT_DEATH(destroy(), "zeUtil::Error");
}

TEST(Semaphore, WaitsOnWhenASignalComes) {
    const ThreadsAndLocks none;
    static std::atomic<int> signals = 0;
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = [](int) { ++signals; }; // and no SA_RESTART
    sigaction(SIGUSR1, &action, &before);
    Semaphore semaphore(0);
    std::atomic<pthread_t> thread = 0;
    std::atomic<bool> isThrough = false;
    {
        const Team team(1, [&](int) {
            thread = pthread_self();
            semaphore.wait();
            isThrough = true;
        });
        while (thread == 0)
            sched_yield();
        for (int i = 1; i <= 5; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            pthread_kill(thread, SIGUSR1);
            while (signals < i)
                sched_yield();
        }
        EXPECT_FALSE(isThrough);
        semaphore.post();
    }
    sigaction(SIGUSR1, &before, nullptr);
}

// A lost wake-up would hang these.
TEST(Semaphore, LosesNoWakeUpBetweenTwo) {
    const ThreadsAndLocks none;
    for (const bool withYields : {false, true}) {
        const std::unique_ptr<RandomYields> yields(withYields ? new RandomYields : nullptr);
        const StressTime time(0.2);
        PingPong game;
        long there = 0, back = 0;
        bool isOver = false;
        {
            const Team partner(1, [&](int) {
                while (true) {
                    game.there.wait();
                    if (isOver)
                        return;
                    EXPECT_EQ(++there, back + 1);
                    game.back.post();
                }
            });
            while (time.isLeft()) {
                game.there.post();
                game.back.wait();
                EXPECT_EQ(++back, there);
            }
            isOver = true;
            game.there.post();
        }
        EXPECT_GT(back, 100);
        EXPECT_FALSE(game.there.tryWait() || game.back.tryWait());
    }
}

TEST(Semaphore, GivesEachPostToOneOfMany) {
    const ThreadsAndLocks none;
    const RandomYields yields;
    Semaphore semaphore(0);
    for (const StressTime time(0.2); time.isLeft();) {
        constexpr int posters = 2, posts = 300;
        std::atomic<int> tickets = posters * posts;
        {
            const Team team(5, [&](int number) {
                for (int i = 0; number < posters && i < posts; ++i)
                    semaphore.post();
                while (number >= posters && --tickets >= 0)
                    semaphore.wait();
            });
        }
        EXPECT_FALSE(semaphore.tryWait());
    }
}

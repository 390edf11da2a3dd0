// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadSemaphore.h"

#include <sched.h>

#include <atomic>
#include <cerrno>
#include <memory>

#include <gtest/gtest.h>

#include "Base/Utility/zeUtilError.h"
#include "Support/ThreadCalls.h"

#include "Thread/zeThreadTeam.h"

using zeThread::Semaphore;
using zeUtil::Error;

TEST(Semaphore, Counts) {
    Semaphore semaphore(2);
    semaphore.wait();
    EXPECT_TRUE(semaphore.tryWait());
    EXPECT_FALSE(semaphore.tryWait());
    semaphore.post();
    EXPECT_TRUE(semaphore.tryWait());

    EXPECT_EQ(Semaphore::maxValue(), 2147483647u);
    Semaphore full(Semaphore::maxValue());
    full.post();
    EXPECT_TRUE(full.tryWait());
}

TEST(Semaphore, ReportsThatTheSystemMadeNone) {
    EXPECT_EQ(thrownBy([] { Semaphore(0x80000000u); }), Error(1, "Invalid argument"));
    const ThreadFaults faults(ThreadFaults::onSemInit, 1, ENOSPC);
    EXPECT_EQ(thrownBy([] { Semaphore(0); }), Error(1, "No space left on device"));
}

TEST(Semaphore, WaitsOnWhenItIsInterrupted) {
    Semaphore semaphore(0);
    std::atomic<bool> isThrough = false;
    const ThreadFaults faults(ThreadFaults::onSemWait, 1, EINTR);
    const Team waiter(1, [&](int) {
        semaphore.wait();
        isThrough = true;
    });
    while (faults.calls() < 2 && !isThrough)
        sched_yield();
    EXPECT_FALSE(isThrough);
    semaphore.post();
}

// A lost wake-up would hang this. Two post and wait in turn, and then two post for three.
TEST(Semaphore, LosesNoWakeUp) {
    const ThreadsAndLocks none;
    for (const bool withYields : {false, true}) {
        const std::unique_ptr<RandomYields> yields(withYields ? new RandomYields : nullptr);
        Semaphore there(0), back(0), many(0);
        for (const StressTime time(0.2); time.isLeft();) {
            constexpr int posters = 2, posts = 20;
            long sum = 0; // of whoever's turn it is
            std::atomic<int> tickets = posters * posts;
            {
                const Team team(5, [&](int number) {
                    for (int i = 0; number < posters && i < posts; ++i) {
                        (number == 0 ? back : there).wait();
                        ++sum;
                        (number == 0 ? there : back).post();
                        many.post();
                    }
                    if (number == posters)
                        back.post(); // the first turn
                    while (number >= posters && --tickets >= 0)
                        many.wait();
                });
            }
            EXPECT_EQ(sum, posters * posts);
            EXPECT_TRUE(back.tryWait());
            EXPECT_FALSE(there.tryWait() || back.tryWait() || many.tryWait());
        }
    }
}

// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadMutex.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadCondition.h"
#include "Base/Thread/zeThreadRWLock.h"
#include "Support/ThreadCalls.h"

#include "Thread/zeThreadTeam.h"

using zeThread::Condition;
using zeThread::Mutex;
using zeThread::MutexOp;
using zeThread::RWLock;
using zeThread::RWLockOp;
using zeUtil::Interval;

namespace {

/// A point in time on the system's clock.
Interval fromNow(double seconds) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return {static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9 + seconds};
}

/// For other threads to fall asleep, if they do.
void sleepBriefly() {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

} // namespace

TEST(MutexOp, UnlocksWhatItLockedIfItIsTold) {
    for (const bool unlockOnDestroy : {false, true}) {
        const ThreadsAndLocks none;
        Mutex mutex(!unlockOnDestroy);
        {
            const MutexOp unused(mutex, unlockOnDestroy);
            MutexOp op(mutex, unlockOnDestroy);
            EXPECT_EQ(ThreadsAndLocks::locks(), 0);
            op.lock();
            op.unlock();
            EXPECT_EQ(ThreadsAndLocks::locks(), 0);
            op.lock();
        }
        EXPECT_EQ(ThreadsAndLocks::locks(), unlockOnDestroy ? 0 : 1);
        if (!unlockOnDestroy)
            MutexOp(mutex, false).unlock(); // also what it did not lock
    }
}

TEST(Condition, WaitsUntilAPointInTime) {
    Condition condition;
    MutexOp op(condition.getMutex(), true);
    op.lock();
    const Interval start = fromNow(0);
    for (const Interval past : {Interval(0.000001), Interval("5s"), fromNow(-1)})
        EXPECT_EQ(condition.wait(past), ETIMEDOUT);
    EXPECT_LT(fromNow(-3), start);
    const Interval future = fromNow(0.03);
    while (condition.wait(future) == 0) {
    }
    EXPECT_FALSE(fromNow(0) < future);
}

TEST(RWLock, CountsWhoHoldsIt) {
    const ThreadsAndLocks none;
    RWLock lock;
    const auto state = [&] { return std::pair(lock.numberOfReaders(), lock.hasWriter()); };
    {
        RWLockOp first(lock, false), second(lock, true);
        EXPECT_EQ(state(), std::pair(0, false));
        first.read();
        second.read();
        EXPECT_EQ(state(), std::pair(2, false));
        first.unlock();
        first.unlock(); // nothing more
        EXPECT_EQ(state(), std::pair(1, false));
        second.unlock();
        first.write();
        EXPECT_EQ(state(), std::pair(0, true));
    }
    {
        RWLockOp both(lock, true);
        both.read();
        lock.readUnlock();
        both.write();
    }
    EXPECT_EQ(state(), std::pair(-1, true)) << "one side is released, the reader's";
}

TEST(RWLock, LetsReadersPassAWaitingWriterAndAllReadersInBehindIt) {
    const ThreadsAndLocks none;
    RWLock lock;
    std::atomic<bool> writes = false, mayEnd = false;
    std::atomic<int> inside = 0;
    lock.readLock();
    lock.readLock();
    const Team writer(1, [&](int) {
        lock.writeLock();
        for (writes = true; !mayEnd;)
            sched_yield();
        lock.writeUnlock();
    });
    sleepBriefly();
    lock.readLock(); // though a writer waits
    lock.readUnlock();
    lock.readUnlock();
    sleepBriefly();
    EXPECT_FALSE(writes);
    lock.readUnlock(); // the last one wakes it
    while (!writes)
        sched_yield();
    const Team readers(3, [&](int) {
        lock.readLock();
        for (++inside; inside < 3;)
            sched_yield();
        lock.readUnlock();
    });
    sleepBriefly();
    EXPECT_EQ(inside, 0);
    mayEnd = true;
}

TEST(RWLock, KeepsReadersAndWritersApart) {
    const ThreadsAndLocks none;
    const RandomYields yields;
    const StressTime time(0.2);
    RWLock lock;
    long first = 0, second = 0; // guarded by `lock`
    {
        const Team team(5, [&](int number) {
            // Readers pause in between: a stream of them would keep the writers out.
            for (int round = 0; time.isLeft(); ++round) {
                RWLockOp op(lock, false);
                if (number < 2) {
                    op.write();
                    ++first;
                    sched_yield();
                    ++second;
                } else {
                    op.read();
                    EXPECT_EQ(first, second);
                    op.unlock();
                    if (round % 8 == 0)
                        std::this_thread::sleep_for(std::chrono::microseconds(200));
                }
            }
        });
    }
    EXPECT_GT(first, 0);
    EXPECT_EQ(lock.numberOfReaders(), 0);
    EXPECT_FALSE(lock.hasWriter());
}

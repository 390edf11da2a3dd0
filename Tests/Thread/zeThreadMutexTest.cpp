// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadMutex.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <thread>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadCondition.h"
#include "Base/Thread/zeThreadRWLock.h"
#include "Base/Utility/zeUtilError.h"
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
Interval inMilliseconds(long milliseconds) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const long microseconds = now.tv_nsec / 1000 + milliseconds * 1000;
    Interval point;
    point.seconds = static_cast<int>(now.tv_sec + microseconds / 1000000);
    point.microseconds = static_cast<int>(microseconds % 1000000);
    return point;
}

bool hasPassed(Interval point) {
    return !(inMilliseconds(0) < point);
}

void sleepMilliseconds(int n) {
    std::this_thread::sleep_for(std::chrono::milliseconds(n));
}

} // namespace

TEST(MutexOp, UnlocksWhatItLockedIfItIsTold) {
    for (const bool unlockOnDestroy : {false, true}) {
        const ThreadsAndLocks none;
        Mutex mutex(!unlockOnDestroy);
        {
            const MutexOp unused(mutex, unlockOnDestroy);
            EXPECT_EQ(ThreadsAndLocks::locks(), 0);
        }
        {
            MutexOp op(mutex, unlockOnDestroy);
            op.lock();
            op.unlock();
            EXPECT_EQ(ThreadsAndLocks::locks(), 0);
            op.lock();
            EXPECT_EQ(ThreadsAndLocks::locks(), 1);
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
    for (const Interval past : {Interval(0.000001), Interval("5s"), inMilliseconds(-1)}) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(condition.wait(past), ETIMEDOUT);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
    }
    const Interval future = inMilliseconds(30);
    while (condition.wait(future) == 0) {
    }
    EXPECT_TRUE(hasPassed(future));
    Interval wrong;
    wrong.microseconds = -1;
    EXPECT_EQ(condition.wait(wrong), EINVAL);
}

TEST(Condition, ReportsThatTheSystemMadeNone) {
    const ThreadFaults faults(ThreadFaults::onCondInit, 1, ENOMEM);
    try {
        const Condition condition;
        ADD_FAILURE();
    } catch (const zeUtil::Error& error) {
        EXPECT_EQ(error, zeUtil::Error(1, "Cannot initialize pthread condition: %s",
                                       "Cannot allocate memory"));
    }
}

TEST(ConditionDeathTest, EndsTheProcessIfItIsInUse) {
    const auto destroy = [] {
        const ThreadFaults faults(ThreadFaults::onCondDestroy, 1, EBUSY);
        const Condition condition;
    };
    EXPECT_DEATH(destroy(), "zeUtil::Error");
}

TEST(RWLock, CountsWhoHoldsIt) {
    const ThreadsAndLocks none;
    RWLock lock;
    const auto expect = [&](int readers, bool hasWriter, int line) {
        EXPECT_EQ(lock.numberOfReaders(), readers) << "line " << line;
        EXPECT_EQ(lock.hasWriter(), hasWriter) << "line " << line;
    };
    expect(0, false, __LINE__);
    for (const bool ignored : {false, true}) {
        {
            RWLockOp first(lock, ignored), second(lock, ignored);
            expect(0, false, __LINE__);
            first.read();
            second.read();
            expect(2, false, __LINE__);
            first.unlock();
            first.unlock(); // nothing more
            expect(1, false, __LINE__);
        }
        {
            RWLockOp op(lock, ignored);
            op.write();
            expect(0, true, __LINE__);
        }
        expect(0, false, __LINE__);
    }
    {
        RWLockOp both(lock, true);
        both.read();
        lock.readUnlock();
        both.write();
    }
    expect(-1, true, __LINE__); // one side is released, the reader's
    lock.writeUnlock();
}

TEST(RWLock, LetsReadersPassAWaitingWriter) {
    const ThreadsAndLocks none;
    RWLock lock;
    std::atomic<bool> hasWritten = false;
    lock.readLock();
    lock.readLock();
    const Team writer(1, [&](int) {
        lock.writeLock();
        hasWritten = true;
        lock.writeUnlock();
    });
    sleepMilliseconds(10);
    lock.readLock(); // though a writer waits
    lock.readUnlock();
    lock.readUnlock();
    sleepMilliseconds(10);
    EXPECT_FALSE(hasWritten);
    lock.readUnlock(); // the last one wakes it
    while (!hasWritten)
        sched_yield();
}

TEST(RWLock, LetsAllReadersInBehindAWriter) {
    const ThreadsAndLocks none;
    RWLock lock;
    std::atomic<int> inside = 0;
    lock.writeLock();
    const Team readers(3, [&](int) {
        lock.readLock();
        for (++inside; inside < 3;)
            sched_yield();
        lock.readUnlock();
    });
    sleepMilliseconds(10);
    EXPECT_EQ(inside, 0);
    lock.writeUnlock();
}

TEST(RWLock, KeepsReadersAndWritersApart) {
    const ThreadsAndLocks none;
    const RandomYields yields;
    const StressTime time(0.3);
    RWLock lock;
    long first = 0, second = 0, written = 0; // guarded by `lock`
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
                    ++written;
                } else {
                    op.read();
                    EXPECT_EQ(first, second);
                    EXPECT_FALSE(lock.hasWriter());
                    op.unlock();
                    if (round % 8 == 0)
                        std::this_thread::sleep_for(std::chrono::microseconds(200));
                }
            }
        });
    }
    EXPECT_GT(written, 0);
    EXPECT_EQ(first, written);
    EXPECT_EQ(lock.numberOfReaders(), 0);
    EXPECT_FALSE(lock.hasWriter());
}

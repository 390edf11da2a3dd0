// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadThread.h"

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadKey.h"
#include "Base/Thread/zeThreadSemaphore.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Support/ThreadCalls.h"

#include "Thread/zeThreadTeam.h"

using zeThread::Thread;
using zeUtil::Error;

namespace {

const Error stopped(2, "cannot wait for a stopped thread");

void count(void* counter) {
    ++*static_cast<int*>(counter);
}

/// Posted by threads that nobody waits for.
zeThread::Semaphore& done() {
    static zeThread::Semaphore semaphore(0);
    return semaphore;
}

bool isChildSignalBlocked() {
    sigset_t signals;
    pthread_sigmask(SIG_BLOCK, nullptr, &signals);
    return sigismember(&signals, SIGCHLD) == 1;
}

} // namespace

TEST(Thread, RunsAFunctionAsOftenAsItIsStarted) {
    const ThreadsAndLocks none;
    int runs = 0, otherRuns = 0;
    Thread thread(count, &runs);
    EXPECT_EQ(thread.getSignal(), nullptr);
    EXPECT_EQ(thread.wait(), stopped);
    for (int i = 1; i <= 2; ++i) {
        EXPECT_EQ(thread.start(), Error());
        EXPECT_EQ(thread.wait(), Error()); // perhaps long after the body has ended
        EXPECT_EQ(runs, i);
        EXPECT_EQ(thread.wait(), stopped);
    }
    thread.setArg(&otherRuns);
    EXPECT_EQ(thread.start(), Error());
    EXPECT_EQ(thread.wait(), Error());
    EXPECT_EQ(otherRuns, 1);
}

TEST(Thread, FiresItsSignalOnce) {
    const ThreadsAndLocks none;
    std::string calls;
    const auto owned = std::make_shared<int>();
    Thread thread;
    thread.getSignal()->connectOwned([&calls, owned] { calls += 'A'; });
    thread.getSignal()->connectOwned([&calls] { calls += 'B'; });
    EXPECT_EQ(thread.start(), Error());
    EXPECT_EQ(thread.getSignal(), nullptr);
    EXPECT_EQ(thread.wait(), Error());
    EXPECT_EQ(calls, "BA");
    EXPECT_EQ(owned.use_count(), 1) << "the new thread destroyed the signal";
    // Nothing is left to run.
    EXPECT_EQ(thread.start(), Error());
    EXPECT_EQ(thread.wait(), Error());
    Thread empty(nullptr, nullptr);
    EXPECT_EQ(empty.start(), Error());
    EXPECT_EQ(empty.wait(), Error());
    EXPECT_EQ(calls, "BA");
}

TEST(Thread, GoesOnWithoutItsObject) {
    const ThreadsAndLocks none;
    zeThread::Semaphore go(0);
    const auto owned = std::make_shared<int>();
    {
        Thread thread;
        thread.getSignal()->connectOwned([&go, owned] { go.wait(); });
        EXPECT_EQ(thread.start(), Error());
    }
    EXPECT_EQ(owned.use_count(), 2);
    go.post();
    while (owned.use_count() > 1)
        sched_yield();
    EXPECT_EQ(zeThread_CreateThread([](void*) { done().post(); }, nullptr), 1);
    done().wait();
}

TEST(Thread, ReportsThatTheSystemMadeNone) {
    const ThreadsAndLocks none;
    const Error failed(1, "pthread_create() failed: Resource temporarily unavailable");
    const auto owned = std::make_shared<int>();
    Thread thread;
    thread.getSignal()->connectOwned([owned] { FAIL(); });
    {
        const ThreadFaults faults(ThreadFaults::onCreate, 1, EAGAIN);
        EXPECT_EQ(thread.start(), failed);
    }
    EXPECT_EQ(owned.use_count(), 1) << "the signal is gone";
    EXPECT_EQ(thread.getSignal(), nullptr);
    EXPECT_EQ(thread.wait(), stopped);

    int runs = 0;
    const ThreadFaults faults(ThreadFaults::onCreate, 1, EAGAIN);
    EXPECT_EQ(zeThread_CreateThread(count, &runs), 0);
    EXPECT_EQ(runs, 0);
}

TEST(Thread, ForgetsAThreadThatCannotBeWaitedFor) {
    const ThreadsAndLocks none;
    static pthread_t itself;
    Thread thread(
        [](void*) {
            itself = pthread_self();
            done().post();
        },
        nullptr);
    EXPECT_EQ(thread.start(), Error());
    {
        const ThreadFaults faults(ThreadFaults::onJoin, 1, EDEADLK); // as when it waits for itself
        EXPECT_EQ(thread.wait(), Error(1, "pthread_join() failed: Resource deadlock avoided"));
    }
    EXPECT_EQ(thread.wait(), stopped);
    done().wait();
    EXPECT_EQ(pthread_join(itself, nullptr), 0);
}

TEST(ThreadDeathTest, FirstOneBlocksTheSignalOfEndedChildren) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // in a fresh process
    const auto firstTwo = [] {
        bool wasBlocked[4] = {isChildSignalBlocked()};
        Thread first([](void* blocked) { *static_cast<bool*>(blocked) = isChildSignalBlocked(); },
                     &wasBlocked[1]);
        wasBlocked[2] = isChildSignalBlocked();
        static_cast<void>(first.start());
        static_cast<void>(first.wait());
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGCHLD);
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
        const Thread second;
        wasBlocked[3] = isChildSignalBlocked();
        std::exit(wasBlocked[0] + 2 * wasBlocked[1] + 4 * wasBlocked[2] + 8 * wasBlocked[3]);
    };
    EXPECT_EXIT(firstTwo(), testing::ExitedWithCode(2 + 4), "");
}

TEST(ThreadDeathTest, EndsTheProcessWithAnExceptionOfItsBody) {
    const auto thrower = [] {
        Thread thread([](void*) { throw Error(7, "lost"); }, nullptr);
        static_cast<void>(thread.start());
        static_cast<void>(thread.wait());
    };
    EXPECT_DEATH(thrower(), "zeUtil::Error");
}

TEST(ThreadKey, HoldsAPointerForEachThread) {
    const unsigned int key = zeThread::createThreadKey();
    int values[4];
    zeThread::setThreadSpecificValue(key, &values[3]);
    {
        const Team team(3, [&](int number) {
            EXPECT_EQ(zeThread::getThreadSpecificValue(key), nullptr);
            zeThread::setThreadSpecificValue(key, &values[number]);
            EXPECT_EQ(zeThread::getThreadSpecificValue(key), &values[number]);
        });
    }
    EXPECT_EQ(zeThread::getThreadSpecificValue(key), &values[3]);
    zeThread::freeThreadKey(key);
}

TEST(ThreadKey, IsNoneWhereTheSystemHasNoneLeft) {
    std::vector<unsigned int> keys;
    unsigned int key = zeThread::createThreadKey();
    for (; key < PTHREAD_KEYS_MAX; key = zeThread::createThreadKey())
        keys.push_back(key);
    EXPECT_GT(keys.size(), 500u);
    zeThread::setThreadSpecificValue(key, &key);
    EXPECT_EQ(zeThread::getThreadSpecificValue(key), nullptr);
    zeThread::freeThreadKey(key);
    for (const unsigned int used : keys)
        zeThread::freeThreadKey(used);
}

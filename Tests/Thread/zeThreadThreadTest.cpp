// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadThread.h"

#include <pthread.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadKey.h"
#include "Base/Thread/zeThreadSemaphore.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Support/ThreadCalls.h"

#include "Thread/zeThreadTeam.h"

using zeThread::Semaphore;
using zeThread::Thread;
using zeUtil::Error;

namespace {

const Error stopped(2, "cannot wait for a stopped thread");

void count(void* counter) {
    ++*static_cast<int*>(counter);
}

void post(void* semaphore) {
    static_cast<Semaphore*>(semaphore)->post();
}

/// Whether SIGCHLD was blocked in the calling thread, where it no longer is.
bool unblockChildSignal() {
    sigset_t child, before;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    pthread_sigmask(SIG_UNBLOCK, &child, &before);
    return sigismember(&before, SIGCHLD) == 1;
}

} // namespace

TEST(Thread, RunsAFunctionAsOftenAsItIsStarted) {
    const ThreadsAndLocks none;
    int runs[2] = {0, 0};
    Thread thread(count, &runs[0]);
    EXPECT_EQ(thread.getSignal(), nullptr);
    EXPECT_EQ(thread.wait(), stopped);
    for (int i = 0; i < 2; ++i) {
        thread.setArg(&runs[i]);
        EXPECT_EQ(thread.start(), Error());
        EXPECT_EQ(thread.wait(), Error()); // perhaps long after the body has ended
        EXPECT_EQ(runs[i], 1);
        EXPECT_EQ(thread.wait(), stopped);
    }
}

TEST(Thread, FiresItsSignalOnce) {
    const ThreadsAndLocks none;
    std::string calls;
    const auto owned = std::make_shared<int>();
    Thread thread, empty(nullptr, nullptr);
    thread.getSignal()->connectOwned([&calls, owned] { calls += 'A'; });
    thread.getSignal()->connectOwned([&calls] { calls += 'B'; });
    for (Thread* each : {&thread, &thread, &empty}) { // nothing is left to run the second time
        EXPECT_EQ(each->start(), Error());
        EXPECT_EQ(each->getSignal(), nullptr);
        EXPECT_EQ(each->wait(), Error());
        EXPECT_EQ(calls, "BA");
        EXPECT_EQ(owned.use_count(), 1) << "the new thread destroyed the signal";
    }
}

TEST(Thread, GoesOnWithoutItsObject) {
    const ThreadsAndLocks none;
    Semaphore go(0), done(0);
    {
        Thread thread;
        thread.getSignal()->connectOwned([&] {
            go.wait();
            done.post();
        });
        EXPECT_EQ(thread.start(), Error());
    }
    go.post();
    done.wait();
    EXPECT_EQ(zeThread_CreateThread(post, &done), 1);
    done.wait();
}

TEST(Thread, ReportsWhatTheSystemRefuses) {
    const ThreadsAndLocks none;
    const Error failed(1, "pthread_create() failed: Resource temporarily unavailable");
    const auto owned = std::make_shared<int>();
    Semaphore done(0);
    Thread thread, running(post, &done);
    thread.getSignal()->connectOwned([owned] { FAIL(); });
    EXPECT_EQ(running.start(), Error());
    for (Thread* each : {&thread, &running}) {
        const ThreadFaults faults(ThreadFaults::onCreate, 1, EAGAIN);
        EXPECT_EQ(each->start(), failed);
    }
    EXPECT_EQ(owned.use_count(), 1) << "the signal is gone";
    EXPECT_EQ(thread.getSignal(), nullptr);
    EXPECT_EQ(thread.wait(), stopped);
    EXPECT_EQ(running.wait(), Error()) << "as if nothing had been tried";
    {
        const ThreadFaults faults(ThreadFaults::onCreate, 1, EAGAIN);
        EXPECT_EQ(zeThread_CreateThread(post, &done), 0);
    }
    const ThreadFaults faults(ThreadFaults::onJoin, 1, EDEADLK); // as when it waits for itself
    EXPECT_EQ(running.start(), Error());
    EXPECT_EQ(running.wait(), Error(1, "pthread_join() failed: Resource deadlock avoided"));
    EXPECT_EQ(running.wait(), stopped);
}

TEST(ThreadDeathTest, FirstOneBlocksTheSignalOfEndedChildren) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // in a fresh process
    const auto firstTwo = [] {
        bool wasBlocked[4] = {unblockChildSignal()};
        Thread first([](void* blocked) { *static_cast<bool*>(blocked) = unblockChildSignal(); },
                     &wasBlocked[1]);
        static_cast<void>(first.start());
        static_cast<void>(first.wait());
        wasBlocked[2] = unblockChildSignal();
        const Thread second;
        wasBlocked[3] = unblockChildSignal();
        std::exit(wasBlocked[0] + 2 * wasBlocked[1] + 4 * wasBlocked[2] + 8 * wasBlocked[3]);
    };
    EXPECT_EXIT(firstTwo(), testing::ExitedWithCode(2 + 4), "");
}

TEST(ThreadKey, HoldsAPointerForEachThread) {
    std::vector<unsigned int> keys;
    unsigned int key = zeThread::createThreadKey();
    for (; key < PTHREAD_KEYS_MAX; key = zeThread::createThreadKey())
        keys.push_back(key);
    ASSERT_GT(keys.size(), 500u);
    zeThread::setThreadSpecificValue(key, &key); // the system had none left
    EXPECT_EQ(zeThread::getThreadSpecificValue(key), nullptr);
    key = keys[0];
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
    for (const unsigned int used : keys)
        zeThread::freeThreadKey(used);
}

// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadPollingThread.h"

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <functional>
#include <memory>
#include <utility>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadMessage.h"
#include "Base/Thread/zeThreadMessageReceiver.h"
#include "Base/Thread/zeThreadMessageSender.h"
#include "Support/ThreadCalls.h"

using zeThread::MessageReceiver;
using zeThread::PollingThread;
using zeUtil::Error;

namespace {

class Poller : public PollingThread {
public:
    explicit Poller(std::function<bool()> body) : body_(std::move(body)) {}
    bool poll() override {
        ++polls;
        return body_();
    }

    std::atomic<int> polls = 0;

private:
    std::function<bool()> body_;
};

class PollingThreadTest : public testing::Test {
protected:
    /// Notes the end of `thread`.
    void watch(PollingThread& thread) {
        thread.getSigTerminated().connectOwned([this](PollingThread* which) {
            ended_ = which;
            endedOn_ = pthread_self();
        });
    }

    void dispatchUntilEnd() {
        while (!ended_) {
            receiver_.wait();
            receiver_.dispatch();
        }
    }

    const ThreadsAndLocks none_;
    PollingThread* ended_ = nullptr;
    pthread_t endedOn_{};
    MessageReceiver receiver_;
};

struct Add : zeThread::Message {
    explicit Add(int& sum) : sum_(sum) {}
    void dispatch() override { ++sum_; }
    int& sum_;
};

} // namespace

TEST_F(PollingThreadTest, PollsUntilItIsEnough) {
    int left = 3, sum = 0;
    Poller* self = nullptr;
    Poller poller([&] {
        self->getSender().send(new Add(sum));
        return --left > 0;
    });
    self = &poller;
    watch(poller);
    EXPECT_EQ(poller.start(receiver_), Error());
    EXPECT_EQ(poller.start(receiver_), Error(1, "Object started already"));
    dispatchUntilEnd();
    EXPECT_EQ(ended_, &poller);
    EXPECT_TRUE(pthread_equal(endedOn_, pthread_self()));
    EXPECT_EQ(poller.polls, 3);
    EXPECT_EQ(sum, 3) << "sent before the end was";
    EXPECT_EQ(poller.start(receiver_), Error(1, "Object started already"));
}

TEST_F(PollingThreadTest, StopsWhenItIsTold) {
    Poller poller([] { return true; });
    watch(poller);
    EXPECT_EQ(poller.start(receiver_), Error());
    while (poller.polls == 0)
        sched_yield();
    EXPECT_EQ(receiver_.dispatch(), 0);
    poller.terminateAsync();
    dispatchUntilEnd();
    const int polls = poller.polls;
    EXPECT_EQ(receiver_.dispatch(), 0);
    EXPECT_EQ(poller.polls, polls);
}

TEST_F(PollingThreadTest, NeverPollsIfItWasStoppedBefore) {
    Poller poller([] { return true; });
    watch(poller);
    poller.terminateAsync();
    {
        const ThreadFaults faults(ThreadFaults::onCreate, 1, EAGAIN);
        EXPECT_EQ(poller.start(receiver_),
                  Error(1, "pthread_create() failed: Resource temporarily unavailable"));
        poller.getSender().sendAsyncSignal(nullptr);
        EXPECT_EQ(receiver_.dispatch(), 0) << "the sender is disconnected again";
    }
    EXPECT_EQ(poller.start(receiver_), Error());
    dispatchUntilEnd();
    EXPECT_EQ(poller.polls, 0);
}

TEST_F(PollingThreadTest, MayBeDeletedWhenItsEndIsReported) {
    const RandomYields yields;
    for (const StressTime time(0.2); time.isLeft();) {
        bool isOver = false;
        auto poller = std::make_unique<Poller>([] { return false; });
        poller->getSigTerminated().connectOwned([&](PollingThread*) {
            poller = nullptr;
            isOver = true;
        });
        EXPECT_EQ(poller->start(receiver_), Error());
        while (!isOver) {
            receiver_.wait();
            receiver_.dispatch();
        }
    }
}

TEST_F(PollingThreadTest, IsWaitedForByItsDestructor) {
    std::atomic<bool> isThrough = false;
    {
        MessageReceiver gone;
        Poller poller([&] {
            for (int i = 0; i < 100; ++i)
                sched_yield();
            isThrough = true;
            return false;
        });
        watch(poller);
        EXPECT_EQ(poller.start(gone), Error());
        while (!isThrough)
            sched_yield();
        gone.disconnect(); // or the end would be reported when `gone` is destroyed, after the
                           // poller
        gone.dispatch();
    }
    EXPECT_TRUE(isThrough);
}

// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadPollingThread.h"

#include <sched.h>

#include <atomic>
#include <cerrno>
#include <memory>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadMessageReceiver.h"
#include "Base/Thread/zeThreadMessageSender.h"
#include "Support/ThreadCalls.h"

using zeThread::MessageReceiver;
using zeThread::PollingThread;
using zeUtil::Error;

namespace {

/// Of calls of poll(). The one that ends as number `last` says that it is enough.
struct Polls {
    std::atomic<int> begun = 0, ended = 0;
    int last = 3;
};

/// Sends a message in each call.
class Poller : public PollingThread {
public:
    explicit Poller(Polls& polls) : polls_(polls) {}
    bool poll() override {
        Polls& polls = polls_; // this object may be on its way out before the call ends
        getSender().sendAsyncSignal(nullptr);
        ++polls.begun;
        for (int i = 0; i < 100; ++i)
            sched_yield();
        return ++polls.ended != polls.last;
    }

private:
    Polls& polls_;
};

class PollingThreadTest : public testing::Test {
protected:
    PollingThreadTest() {
        poller_->getSigTerminated().connectOwned([this](PollingThread* which) {
            EXPECT_EQ(which, poller_.get());
            isOver_ = true;
        });
    }

    /// Returns how many messages were dispatched.
    int dispatchUntilEnd() {
        int messages = 0;
        while (!isOver_) {
            receiver_.wait();
            messages += receiver_.dispatch();
        }
        return messages;
    }

    const ThreadsAndLocks none_;
    bool isOver_ = false;
    MessageReceiver receiver_;
    Polls polls_;
    std::unique_ptr<PollingThread> poller_ = std::make_unique<Poller>(polls_);
};

const Error startedAlready(1, "Object started already");

} // namespace

TEST_F(PollingThreadTest, PollsUntilItIsEnough) {
    EXPECT_EQ(poller_->start(receiver_), Error());
    EXPECT_EQ(poller_->start(receiver_), startedAlready);
    EXPECT_EQ(dispatchUntilEnd(), 3 + 1) << "the end comes last";
    EXPECT_EQ(polls_.ended, 3);
    EXPECT_EQ(poller_->start(receiver_), startedAlready);
}

TEST_F(PollingThreadTest, StopsWhenItIsTold) {
    polls_.last = 0; // for ever
    EXPECT_EQ(poller_->start(receiver_), Error());
    while (polls_.begun == 0)
        sched_yield();
    EXPECT_FALSE(isOver_);
    poller_->terminateAsync();
    const int messages = dispatchUntilEnd();
    EXPECT_EQ(messages, polls_.ended + 1);
}

TEST_F(PollingThreadTest, NeverPollsIfItWasStoppedBefore) {
    poller_->terminateAsync();
    {
        const ThreadFaults faults(ThreadFaults::onCreate, 1, EAGAIN);
        EXPECT_EQ(poller_->start(receiver_),
                  Error(1, "pthread_create() failed: Resource temporarily unavailable"));
        poller_->getSender().sendAsyncSignal(nullptr);
        EXPECT_EQ(receiver_.dispatch(), 0) << "the sender is disconnected again";
    }
    EXPECT_EQ(poller_->start(receiver_), Error());
    EXPECT_EQ(dispatchUntilEnd(), 1);
    EXPECT_EQ(polls_.begun, 0);
}

TEST_F(PollingThreadTest, MayBeDeletedWhenItsEndIsReported) {
    const RandomYields yields;
    poller_->getSigTerminated().connectOwned([this](PollingThread*) { poller_ = nullptr; });
    EXPECT_EQ(poller_->start(receiver_), Error());
    while (poller_) {
        receiver_.wait();
        receiver_.dispatch();
    }
}

TEST_F(PollingThreadTest, IsWaitedForByItsDestructor) {
    polls_.last = 1;
    {
        MessageReceiver gone; // what is sent later is dropped
        EXPECT_EQ(poller_->start(gone), Error());
    }
    while (polls_.begun == 0)
        sched_yield();
    poller_ = nullptr;
    EXPECT_EQ(polls_.ended, 1);
}

// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadMessage.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadMessageReceiver.h"
#include "Base/Thread/zeThreadMessageSender.h"
#include "Base/Thread/zeThreadMutex.h"
#include "Base/Utility/zeRTBAsyncSignal.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Support/ThreadCalls.h"

#include "Thread/zeThreadTeam.h"

using zeThread::Message;
using zeThread::MessageReceiver;
using zeThread::MessageSender;

namespace {

/// Writes its letter when it runs, and the small one when it is deleted.
class Letter : public Message {
public:
    Letter(std::string& log, char letter, std::function<void()> body = nullptr)
        : log_(log), letter_(letter), body_(std::move(body)) {}
    ~Letter() override { log_ += static_cast<char>(letter_ - 'A' + 'a'); }

    void dispatch() override {
        log_ += letter_;
        if (body_)
            body_();
    }

private:
    std::string& log_;
    char letter_;
    std::function<void()> body_;
};

class MessageTest : public testing::Test {
protected:
    void send(MessageSender& sender, char letter, std::function<void()> body = nullptr) {
        sender.send(new Letter(log_, letter, std::move(body)));
    }

    /// What has been written since the last call.
    std::string taken() { return std::exchange(log_, ""); }

    const ThreadsAndLocks none_;
    std::string log_;
};

struct Counter {
    int sum = 0;
    void add(int n) { sum += n; }
};

using IntSignal = zeRTB::SignalArg<int>;

} // namespace

TEST_F(MessageTest, RunsInTheOrderOfSendingWhenItIsDispatched) {
    MessageReceiver receiver;
    MessageSender first, second;
    first.connect(receiver);
    receiver.connect(second);
    EXPECT_EQ(receiver.dispatch(), 0);
    send(first, 'A');
    send(second, 'B');
    first.send(nullptr);
    send(first, 'C');
    receiver.wait(); // returns at once
    EXPECT_EQ(taken(), "");
    EXPECT_EQ(receiver.dispatch(), 3);
    EXPECT_EQ(taken(), "AaBbCc");
    // What is sent meanwhile waits. No lock is held: a message may do anything.
    send(first, 'A', [&] {
        send(first, 'C');
        EXPECT_EQ(ThreadsAndLocks::locks(), 0);
        second.disconnect();
    });
    send(second, 'B');
    EXPECT_EQ(receiver.dispatch(), 2);
    EXPECT_EQ(taken(), "AaBb");
    EXPECT_EQ(receiver.dispatch(), 1);
    EXPECT_EQ(taken(), "Cc");
}

TEST_F(MessageTest, IsDroppedWithoutAReceiver) {
    MessageSender sender;
    send(sender, 'A');
    EXPECT_EQ(taken(), "a");
    {
        MessageReceiver receiver;
        sender.connect(receiver);
        sender.disconnect();
        send(sender, 'A');
        EXPECT_EQ(taken(), "a");
        sender.connect(receiver);
        send(sender, 'B');
        receiver.disconnect();
        send(sender, 'C');
        EXPECT_EQ(taken(), "c");
        sender.connect(receiver);
        send(sender, 'D');
        EXPECT_EQ(taken(), "");
    }
    EXPECT_EQ(taken(), "BbDd") << "ran when their receiver was destroyed";
    send(sender, 'E');
    EXPECT_EQ(taken(), "e");
    sender.disconnect();
}

TEST_F(MessageTest, GoesToTheLastReceiverOfItsSender) {
    MessageReceiver first, second;
    {
        MessageSender sender;
        sender.connect(first);
        send(sender, 'A');
        sender.connect(second);
        send(sender, 'B');
        first.disconnect(); // no longer lists it
        send(sender, 'C');
        sender.connect(second);
        send(sender, 'D');
        first.disconnect(&sender); // not its receiver, and clears the sender's all the same
        send(sender, 'E');
        EXPECT_EQ(taken(), "e");
        second.disconnect(&sender);
    }
    EXPECT_EQ(first.dispatch(), 1);
    EXPECT_EQ(second.dispatch(), 3);
    EXPECT_EQ(taken(), "AaBbCcDd");
}

TEST_F(MessageTest, MayThrowAwayTheRestOfItsBatch) {
    MessageReceiver receiver;
    MessageSender sender;
    sender.connect(receiver);
    send(sender, 'A');
    send(sender, 'B', [] { throw std::runtime_error("message"); });
    send(sender, 'C');
    EXPECT_THROW(receiver.dispatch(), std::runtime_error);
    EXPECT_EQ(taken(), "AaBbc");
    std::vector<Message*> list{new Letter(log_, 'D'), new Letter(log_, 'E')};
    EXPECT_EQ(receiver.dispatchMessages(list), 2);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(taken(), "DdEe");
}

TEST_F(MessageTest, IsAnnouncedOnTheSendersThreadUnderBothLocks) {
    struct Receiver : MessageReceiver {
        ~Receiver() override { disconnect(); }
        void onMessageReceived() override {
            isOnSendersThread = pthread_equal(pthread_self(), sendersThread);
            locks = ThreadsAndLocks::locks();
        }
        pthread_t sendersThread{};
        bool isOnSendersThread = false;
        long locks = 0;
    } receiver;
    MessageSender sender;
    sender.connect(receiver);
    {
        const Team team(1, [&](int) {
            receiver.sendersThread = pthread_self();
            send(sender, 'A');
        });
    }
    EXPECT_TRUE(receiver.isOnSendersThread);
    EXPECT_EQ(receiver.locks, 2);
    EXPECT_EQ(receiver.dispatch(), 1);
}

TEST_F(MessageTest, CarriesTheFiringOfASignal) {
    Counter counter;
    IntSignal signal;
    signal.connect(&counter, &Counter::add);
    const auto firing = [&] { return new zeRTB::AsyncSignalArg<IntSignal>(&signal, 5); };
    MessageReceiver receiver;
    MessageSender sender;
    sender.sendAsyncSignal(firing()); // dropped
    sender.connect(receiver);
    sender.sendAsyncSignal(firing());
    sender.sendAsyncSignal(nullptr);
    EXPECT_EQ(counter.sum, 0);
    EXPECT_EQ(receiver.dispatch(), 2);
    EXPECT_EQ(counter.sum, 5);
    zeThread::AsyncSignalMessage unsent(firing());
    unsent.dispatch();
    unsent.dispatch(); // the signal is gone
    EXPECT_EQ(counter.sum, 10);
}

namespace {

constexpr int senderCount = 3;

/// The number of the last message of each sender that this thread ran.
thread_local long lastRun[senderCount];

struct Traffic {
    std::atomic<long> sent = 0, deleted = 0, run = 0;
};

class Numbered : public Message {
public:
    Numbered(Traffic& traffic, int sender, long number)
        : traffic_(traffic), sender_(sender), number_(number) {}
    ~Numbered() override { ++traffic_.deleted; }
    void dispatch() override {
        ++traffic_.run;
        EXPECT_LT(std::exchange(lastRun[sender_], number_), number_) << "in the order of sending";
    }

private:
    Traffic& traffic_;
    int sender_;
    long number_;
};

} // namespace

// Senders send, receivers take senders over from each other and die, all at once.
TEST_F(MessageTest, ArrivesInOrderOrIsDroppedWhoeverConnectsAndDies) {
    const RandomYields yields;
    for (const StressTime time(0.5); time.isLeft();) {
        Traffic traffic;
        MessageSender senders[senderCount];
        MessageReceiver steady; // lives as long as the others come and go
        std::atomic<int> working = senderCount;
        {
            const Team team(2 * senderCount, [&](int number) {
                MessageSender& sender = senders[number % senderCount];
                for (int i = 1; number < senderCount && i <= 100; ++i) {
                    ++traffic.sent;
                    sender.send(new Numbered(traffic, number, i));
                    if (i % 16 == 0)
                        sender.connect(steady);
                    if (i % 40 == 0)
                        sender.disconnect();
                }
                if (number < senderCount)
                    --working;
                for (int i = number; number >= senderCount && working > 0; ++i) {
                    MessageReceiver passing;
                    MessageSender brief;
                    brief.connect(steady);
                    passing.connect(sender);
                    passing.connect(senders[i % senderCount]);
                    sched_yield();
                    if (i % 2 == 0) {
                        passing.connect(brief);
                        passing.dispatch();
                    }
                    (i % 3 == 0 ? passing : steady).disconnect();
                }
            });
        }
        std::fill(std::begin(lastRun), std::end(lastRun), 0);
        steady.dispatch();
        EXPECT_EQ(traffic.deleted, traffic.sent);
        EXPECT_GT(traffic.run, 0);
    }
}

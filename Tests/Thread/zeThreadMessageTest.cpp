// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadMessage.h"

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadMessageReceiver.h"
#include "Base/Thread/zeThreadMessageSender.h"
#include "Base/Utility/zeRTBAsyncSignal.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Support/ThreadCalls.h"

#include "Thread/zeThreadTeam.h"

using zeThread::Message;
using zeThread::MessageReceiver;
using zeThread::MessageSender;

namespace {

/// Runs a function, and another one when it is deleted.
class Call : public Message {
public:
    Call(std::function<void()> run, std::function<void()> end)
        : run_(std::move(run)), end_(std::move(end)) {}
    ~Call() override { end_(); }
    void dispatch() override { run_(); }

private:
    std::function<void()> run_, end_;
};

/// Notes with how many locks it is told of each message.
struct Receiver : MessageReceiver {
    explicit Receiver(std::string& log) : log_(log) {}
    ~Receiver() override { disconnect(); }
    void onMessageReceived() override { log_ += std::to_string(ThreadsAndLocks::locks()); }
    std::string& log_;
};

class MessageTest : public testing::Test {
protected:
    /// A message that writes its letter when it runs, and the small one when it is deleted.
    Message* letter(
        char name, std::function<void()> body = [] {}) {
        const auto run = [this, name, body] {
            log_ += name;
            body();
        };
        return new Call(run, [this, name] { log_ += static_cast<char>(name - 'A' + 'a'); });
    }

    /// Returns what has been written since the last call.
    std::string send(
        MessageSender& sender, char name, std::function<void()> body = [] {}) {
        sender.send(letter(name, std::move(body)));
        return taken();
    }

    /// Dispatches, and returns what has been written.
    std::string run(MessageReceiver& receiver, int count) {
        EXPECT_EQ(receiver.dispatch(), count);
        return taken();
    }

    std::string taken() { return std::exchange(log_, ""); }

    const ThreadsAndLocks none_;
    std::string log_;
};

} // namespace

TEST_F(MessageTest, RunsInTheOrderOfSendingWhenItIsDispatched) {
    Receiver receiver(log_);
    MessageSender first, second;
    first.connect(receiver);
    receiver.connect(second);
    EXPECT_EQ(run(receiver, 0), "");
    EXPECT_EQ(send(first, 'A'), "2") << "announced at once, under both locks";
    send(second, 'B');
    first.send(nullptr);
    send(first, 'C');
    receiver.wait(); // returns at once
    EXPECT_EQ(run(receiver, 3), "AaBbCc");
    // What is sent meanwhile waits. No lock is held: a message may do anything.
    send(first, 'A', [&] {
        send(first, 'C');
        EXPECT_EQ(ThreadsAndLocks::locks(), 0);
        second.disconnect();
    });
    send(second, 'B');
    EXPECT_EQ(run(receiver, 2), "aBb");
    EXPECT_EQ(run(receiver, 1), "Cc");
    // One that throws takes the rest of its batch with it.
    send(first, 'A', [] { throw std::runtime_error("message"); });
    send(first, 'B');
    EXPECT_THROW(receiver.dispatch(), std::runtime_error);
    EXPECT_EQ(taken(), "Aab");
    std::vector<Message*> list{letter('D'), letter('E')};
    EXPECT_EQ(receiver.dispatchMessages(list), 2);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(taken(), "DdEe");
}

TEST_F(MessageTest, GoesToTheLastReceiverOfItsSenderIfAny) {
    MessageSender sender;
    EXPECT_EQ(send(sender, 'A'), "a");
    {
        MessageReceiver first, second;
        sender.connect(first);
        EXPECT_EQ(send(sender, 'B'), "");
        sender.disconnect();
        EXPECT_EQ(send(sender, 'C'), "c");
        sender.connect(first);
        first.disconnect();
        EXPECT_EQ(send(sender, 'D'), "d");
        sender.connect(first);
        sender.connect(second);
        first.disconnect(); // no longer lists it
        send(sender, 'E');
        sender.connect(second);
        send(sender, 'F');
        first.disconnect(&sender); // not its receiver, and clears the sender's all the same
        EXPECT_EQ(send(sender, 'G'), "g");
        second.disconnect(); // still lists it
        sender.connect(second);
        EXPECT_EQ(run(first, 1), "Bb");
    }
    EXPECT_EQ(taken(), "EeFf") << "ran when their receiver was destroyed";
    EXPECT_EQ(send(sender, 'H'), "h");
    sender.disconnect();
}

TEST_F(MessageTest, CarriesTheFiringOfASignal) {
    int sum = 0;
    zeRTB::SignalArg<int> signal;
    signal.connectOwned([&](int n) { sum += n; });
    const auto firing = [&] { return new zeRTB::AsyncSignalArg(&signal, 5); };
    MessageReceiver receiver;
    MessageSender sender;
    sender.sendAsyncSignal(firing()); // dropped
    sender.connect(receiver);
    sender.sendAsyncSignal(firing());
    sender.sendAsyncSignal(nullptr);
    EXPECT_EQ(sum, 0);
    EXPECT_EQ(receiver.dispatch(), 2);
    EXPECT_EQ(sum, 5);
    zeThread::AsyncSignalMessage unsent(firing());
    unsent.dispatch();
    unsent.dispatch(); // the signal is gone
    EXPECT_EQ(sum, 10);
}

// Senders send, receivers take senders over from each other and die, all at once.
TEST_F(MessageTest, ArrivesInOrderOrIsDroppedWhoeverConnectsAndDies) {
    const RandomYields yields;
    constexpr int count = 3, each = 40;
    static thread_local int last[count]; // that this thread ran of each sender
    std::atomic<int> alive = 0, runs = 0;
    int round = 0;
    for (const StressTime time(0.4); time.isLeft(); ++round) {
        MessageSender senders[count];
        MessageReceiver steady; // lives as long as the others come and go
        std::atomic<int> working = count;
        const auto send = [&](int sender) {
            for (int i = 1; i <= each; ++i) {
                const auto run = [&runs, sender, number = round * each + i] {
                    ++runs;
                    EXPECT_LT(std::exchange(last[sender], number), number);
                };
                ++alive;
                senders[sender].send(new Call(run, [&alive] { --alive; }));
                if (i % 7 == 0)
                    senders[sender].connect(steady);
                if (i % 17 == 0)
                    senders[sender].disconnect();
            }
            --working;
        };
        const auto receive = [&](int sender) {
            for (int i = sender; working > 0; ++i) {
                MessageReceiver passing;
                MessageSender brief;
                brief.connect(steady);
                passing.connect(senders[sender]);
                passing.connect(senders[i % count]);
                sched_yield();
                if (i % 2 == 0) {
                    passing.connect(brief);
                    passing.dispatch();
                }
                (i % 3 == 0 ? passing : steady).disconnect();
            }
        };
        {
            const Team team(2 * count, [&](int i) { i < count ? send(i) : receive(i - count); });
        }
        steady.dispatch();
        EXPECT_EQ(alive, 0);
    }
    EXPECT_GT(runs, 0);
}

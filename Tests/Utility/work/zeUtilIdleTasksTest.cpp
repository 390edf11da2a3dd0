// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilIdleTasks.h"

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using zeUtil::getIdleTasks;
using zeUtil::IdleTask;

/// Tasks with letters. A step writes its letter and then does what the case asks for; the signal
/// writes "+" or "-".
class IdleTasksTest : public testing::Test {
protected:
    class Task : public IdleTask {
    public:
        Task(std::string& log, char letter) : log_(log), letter_(letter) {}
        void step() override {
            log_ += letter_;
            if (body)
                body();
        }
        std::function<void()> body;

    private:
        std::string& log_;
        char letter_;
    };

    void SetUp() override { getIdleTasks().sigChanged.connect(this, &IdleTasksTest::changed); }
    void TearDown() override {
        getIdleTasks().sigChanged.disconnectInstance(this);
        for (const auto& [letter, task] : tasks)
            getIdleTasks().removeTask(task);
        EXPECT_FALSE(getIdleTasks().haveTasks());
    }
    void changed() {
        log += getIdleTasks().haveTasks() ? '+' : '-';
        if (onChange)
            std::exchange(onChange, nullptr)();
    }

    void add(char letter, std::function<void()> body = nullptr) {
        if (!tasks[letter])
            tasks[letter] = new Task(log, letter);
        if (body)
            tasks[letter]->body = std::move(body);
        getIdleTasks().addTask(tasks[letter]);
    }
    void remove(char letter) { getIdleTasks().removeTask(tasks[letter]); }

    /// What `turns` runs write.
    std::string run(int turns) {
        log.clear();
        for (int i = 0; i < turns; ++i)
            getIdleTasks().run();
        return log;
    }

    std::string log;
    std::function<void()> onChange; ///< What a callback of the signal does, once.
    std::map<char, ze::Reference<Task>> tasks;
};

} // namespace

TEST_F(IdleTasksTest, TakeTurnsInTheOrderTheyWereAdded) {
    EXPECT_EQ(run(1), "");
    add('A');
    add('B');
    add('A'); // stands in the list already
    EXPECT_EQ(log, "+");
    EXPECT_EQ(tasks['A']->refs(), 3) << "one of the test, two of the list";
    EXPECT_EQ(run(4), "ABAB");
    add('C'); // the last one has had its turn: the next round has begun, though not run
    EXPECT_EQ(run(4), "ABCA");
    remove('B'); // would be the next
    EXPECT_EQ(tasks['B']->refs(), 1);
    remove('B');
    EXPECT_EQ(run(2), "CA");
    remove('A');
    remove('C');
    EXPECT_EQ(log, "CA-");
}

TEST_F(IdleTasksTest, MayChangeTheListFromTheirSteps) {
    add('A', [&] { remove('A'); });
    add('B', [&] {
        remove('C'); // would be the next
        add('E');
        add('A');
    });
    add('C');
    add('D');
    EXPECT_EQ(run(5), "ABDEA") << "E and A come behind, in this round still";
    EXPECT_EQ(run(3), "BDE");
    // The last task removes and adds others while it has its turn: these wait for the next round.
    tasks['A']->body = [&] {
        remove('B');
        add('C');
        add('B');
    };
    EXPECT_EQ(run(4), "ADEA") << "C waits for the next round";
    EXPECT_EQ(run(3), "CBD");
}

TEST_F(IdleTasksTest, FinishAndTellTheSignal) {
    add('A', [&] { tasks['A']->setFinished(); });
    EXPECT_EQ(run(2), "A-");
    add('A', [&] { remove('A'); }); // finished already, and gone before this is looked at
    EXPECT_EQ(run(1), "A-");
    add('A', [] {});
    add('B');
    EXPECT_EQ(run(3), "ABB");
    tasks['B']->setFinished();
    EXPECT_EQ(run(2), "B-");
    EXPECT_TRUE(tasks['B']->isFinished());
}

TEST_F(IdleTasksTest, MayChangeTheListFromTheSignalAndFromDestructors) {
    onChange = [&] { add('B'); };
    add('A');
    EXPECT_EQ(log, "+");
    remove('B');
    onChange = [&] { add('A'); };
    remove('A');
    EXPECT_EQ(run(1), "A") << "added again while it was being removed";

    struct Heir : IdleTask {
        explicit Heir(std::function<void()> last) : last_(std::move(last)) {}
        ~Heir() override { last_(); }
        void step() override { setFinished(); }
        std::function<void()> last_;
    };
    getIdleTasks().addTask(new Heir([&] { add('C'); }));
    EXPECT_EQ(run(4), "AAC") << "the heir's turn, the second one, writes nothing";
}

TEST_F(IdleTasksTest, PassExceptionsOnAndGiveTheNextTheTurn) {
    add('A', [] { throw std::runtime_error("step"); });
    add('B');
    EXPECT_THROW(getIdleTasks().run(), std::runtime_error);
    EXPECT_EQ(run(1), "B");
}

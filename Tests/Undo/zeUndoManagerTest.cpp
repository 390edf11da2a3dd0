// SPDX-License-Identifier: MIT

#include "Base/Undo/zeUndoManager.h"

#include <climits>
#include <functional>
#include <memory>
#include <new>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "Base/Undo/zeUndoCommand.h"
#include "Base/Undo/zeUndoGroup.h"
#include "Support/AllocationCount.h"

#include "Undo/undoTwin.h"

namespace {

using zeUndo::Manager;

/// A history whose commands append their letter to a log, upper case when they are done; the
/// activity signal writes parentheses.
class UndoManager : public testing::Test {
protected:
    class Letter : public zeUndo::Command {
    public:
        Letter(zeUndo::Group* group, std::string& log, char letter)
            : Command(group, nullptr), log_(log), letter_(letter) {}
        ~Letter() override {
            log_ += '~';
            farewell();
        }
        bool doCommand() override { return run('A'); }
        bool undoCommand() override { return run('a'); }
        void commit() override { log_ += '!'; }
        int getNumBytesUsed() const override { return size; }
        std::function<bool()> body = [] { return true; };
        std::function<void()> farewell = [] {};
        int size = 1;

    private:
        bool run(char base) {
            log_ += static_cast<char>(letter_ - 'a' + base);
            return body();
        }

        std::string& log_;
        char letter_;
    };

    UndoManager() {
        manager->activitySignal.connectOwned([this](bool begins) { log += begins ? '(' : ')'; });
    }

    /// A group with one command for each letter; gives the first.
    Letter* add(const char* letters) {
        zeUndo::Group* group = manager->newGroup(letters, false);
        for (const char* letter = letters; *letter; ++letter)
            new Letter(group, log, *letter);
        return static_cast<Letter*>(group->getCommand(0));
    }

    std::string log;
    std::unique_ptr<Manager> manager{zeUndo::newManager()};
};

using UndoManagerDeathTest = UndoManager;

} // namespace

TEST(UndoTwin, AnswersAsTheManagerDoes) {
    twin::Trial trial(1);
    trial.run(20000);
    EXPECT_GT(trial.failures, 40);
}

TEST_F(UndoManager, LosesEverythingToAFailure) {
    add("a");
    add("bc")->body = [] { return false; };
    add("d");
    EXPECT_TRUE(manager->undoIt());
    EXPECT_FALSE(manager->undoIt());
    EXPECT_EQ(log, "(d)(cb(!~)(!!~~)(!~))") << "what ran before the failure is not rolled back";
    EXPECT_FALSE(manager->undoAvailable() || manager->doAvailable());
    add("a");
    manager->newGroup("empty", false)->stateInvalid();
    EXPECT_TRUE(manager->undoIt()) << "an invalid group without commands counts as empty";
    EXPECT_EQ(manager->getNumGroups(false), 0) << "it costs as much all the same";
}

TEST_F(UndoManager, PassesOverEmptyGroupsInALoop) {
    std::set<const void*> depths; // of the stack
    manager->activitySignal.connectOwned([&](bool) { depths.insert(__builtin_frame_address(0)); });
    for (int i = 0; i < 3; ++i)
        manager->newGroup("empty", false);
    EXPECT_TRUE(manager->undoIt() && !manager->undoAvailable());
    EXPECT_TRUE(manager->doIt() && !manager->doAvailable());
    EXPECT_LE(depths.size(), 4u) << "beginning and ending, undoing and doing";
    manager.reset();
}

TEST_F(UndoManager, AnswersWhileItWorksAndWhileGroupsDie) {
    Letter* letter = add("a");
    letter->body = [this] { return manager->currentlyActive() && manager->getGroup(0); };
    EXPECT_TRUE(manager->undoIt());
    letter->farewell = [this] { // the group counts until it has left the queue
        EXPECT_EQ(manager->getNumGroups(false), 1);
        EXPECT_EQ(manager->getGroup(0)->getNumCommands(), 0) << "but its commands do not";
        EXPECT_EQ(manager->getGroup(0)->getNumBytesUsed(), 0);
    };
    manager->clearAllGroups();
    EXPECT_EQ(manager->getNumGroups(false), 0);
}

TEST_F(UndoManager, FindsNoCommandBeyondTheEndsAndNoSizeBeyondAnInt) {
    manager->setUndoMemoryLimit(INT_MAX);
    for (int i = 0; i < 2; ++i) {
        zeUndo::Group* group = manager->newGroup("large", false);
        for (char letter : {'a', 'b'})
            (new Letter(group, log, letter))->size = INT_MAX - 1;
        EXPECT_EQ(group->getNumBytesUsed(), INT_MAX);
        EXPECT_EQ(group->getCommand(1)->getID(), 2);
        for (int position : {2, 3, INT_MAX, -1, -2, INT_MIN})
            EXPECT_EQ(group->getCommand(position), nullptr);
    }
    EXPECT_EQ(manager->getNumGroups(false), 2);
}

TEST_F(UndoManager, StaysWholeWhenMemoryRunsOut) {
    add("a");
    for (std::size_t n = 1;; ++n) {
        failAllocation(n);
        try {
            zeUndo::Group* group = manager->newGroup("a name that needs memory of its own", false);
            new Letter(group, log, 'b');
            failAllocation(0);
            EXPECT_GT(n, 5u);
            break;
        } catch (const std::bad_alloc&) {
            failAllocation(0);
        }
    }
    EXPECT_TRUE(manager->undoIt() && manager->undoIt());
    EXPECT_FALSE(manager->undoAvailable());
}

TEST_F(UndoManager, IsDeletedWhenAnotherTakesItsPlace) {
    EXPECT_EQ(zeUndo::getInstalledManager(), nullptr);
    add("a");
    Manager* first = manager.release();
    zeUndo::installManager(first);
    zeUndo::installManager(first);
    EXPECT_EQ(zeUndo::getInstalledManager(), first);
    EXPECT_EQ(log, "");
    zeUndo::installManager(nullptr);
    EXPECT_EQ(log, "(!~)");
    EXPECT_EQ(zeUndo::getInstalledManager(), nullptr);
}

#ifndef NDEBUG
TEST_F(UndoManagerDeathTest, RefusesChangesOfItsQueueFromACommand) {
    void (*changes[])(Manager&) = {
        [](Manager& m) { m.newGroup("nested", false); }, [](Manager& m) { m.undoIt(); },
        [](Manager& m) { m.clearAllGroups(); }, [](Manager& m) { m.setUndoGroupLimit(1); }};
    for (const auto change : changes) {
        add("a")->body = [&] {
            change(*manager);
            return true;
        };
        EXPECT_DEATH(manager->undoIt(), "active_");
    }
}
#endif

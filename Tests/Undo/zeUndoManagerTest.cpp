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

/// A history whose commands append their letter to a log, upper case when they are done; the
/// activity signal writes parentheses.
class UndoManager : public testing::Test {
protected:
    struct Letter : zeUndo::Command {
        Letter(zeUndo::Group* group, std::string& itsLog, char itsLetter, std::string name = "")
            : Command(group, name.c_str()), log(itsLog), letter(itsLetter) {}
        ~Letter() override { log += '~', farewell(); }
        bool doCommand() override { return log += char(letter - 'a' + 'A'), body(); }
        bool undoCommand() override { return log += letter, body(); }
        void commit() override { log += '!'; }
        int getNumBytesUsed() const override { return size; }

        std::string& log;
        char letter;
        int size = 1;
        std::function<bool()> body = [] { return true; };
        std::function<void()> farewell = [] {};
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
    std::unique_ptr<zeUndo::Manager> manager{zeUndo::newManager()};
};

} // namespace

TEST(UndoTwin, AnswersAsTheManagerDoes) {
    twin::Trial(1).run(20000);
}

TEST_F(UndoManager, LosesEverythingToAFailure) {
    add("a");
    Letter* failing = add("bc");
    failing->body = [] { return false; };
    failing->farewell = [=] { EXPECT_TRUE(failing->hasBeenUndone() && !failing->isValid()); };
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
    letter->farewell = [this] {
        EXPECT_EQ(manager->getNumGroups(false), 1) << "it counts until it has left the queue";
        EXPECT_EQ(manager->getGroup(0)->getNumCommands(), 0) << "but its commands do not";
        EXPECT_EQ(manager->getGroup(0)->getNumBytesUsed(), 0);
    };
    manager->clearAllGroups();
}

TEST_F(UndoManager, CountsTheChainsAnewWhenAnObserverJoinsThem) {
    for (const char* name : {"a", "b", "c", "d", "e"})
        add(name);
    manager->activitySignal.connectOwned([this](bool begins) {
        if (!begins)
            manager->associateGroups(3, 5);
    });
    manager->setUndoGroupLimit(2);
    EXPECT_EQ(log, "(!~)") << "b, and c to e as one";
    EXPECT_EQ(manager->getNumGroups(false), 4);
}

TEST_F(UndoManager, FindsNoCommandBeyondTheEndsAndNoSizeBeyondAnInt) {
    manager->setUndoMemoryLimit(INT_MAX);
    for (const char* name : {"a", "large name of more than fifteen bytes"})
        add(name)->size = INT_MAX;
    EXPECT_EQ(manager->getNumGroups(false), 2);
    zeUndo::Group* group = manager->getGroup(0);
    new Letter(group, log, 'b');
    EXPECT_EQ(group->getNumBytesUsed(), INT_MAX);
    EXPECT_EQ(group->getCommand(1)->getID(), 2);
    for (int position : {2, 3, INT_MAX, -1, -2, INT_MIN})
        EXPECT_EQ(group->getCommand(position), nullptr);
}

TEST_F(UndoManager, KeepsCopiesOfTheNamesOfCommands) {
    for (const char* name :
         {"", "fifteen bytes..", "sixteen bytes...", "a longer name than those"}) {
        const Letter command(nullptr, log, 'a', name);
        EXPECT_STREQ(command.getName(), name);
        EXPECT_EQ(&command.log, &log) << "and they do not run over";
    }
}

TEST_F(UndoManager, StaysWholeWhenMemoryRunsOut) {
    add("a");
    bool isDone = false;
    for (std::size_t n = 1; !isDone; ++n) {
        failAllocation(n);
        try {
            zeUndo::Group* group = manager->newGroup("a name that needs memory of its own", false);
            new Letter(group, log, 'b', "a name that needs memory of its own");
            isDone = true;
        } catch (const std::bad_alloc&) {
        }
        failAllocation(0);
    }
    while (manager->undoAvailable())
        EXPECT_TRUE(manager->undoIt());
}

TEST_F(UndoManager, IsDeletedWhenAnotherTakesItsPlace) {
    add("a");
    zeUndo::Manager* first = manager.release();
    zeUndo::installManager(first);
    zeUndo::installManager(first);
    EXPECT_EQ(zeUndo::getInstalledManager(), first);
    EXPECT_EQ(log, "");
    zeUndo::installManager(nullptr);
    EXPECT_EQ(log, "(!~)");
    EXPECT_EQ(zeUndo::getInstalledManager(), nullptr);
}

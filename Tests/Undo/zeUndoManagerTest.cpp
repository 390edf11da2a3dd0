// SPDX-License-Identifier: MIT

#include "Base/Undo/zeUndoManager.h"

#include <pthread.h>

#include <functional>
#include <memory>
#include <new>
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
        ~Letter() override { log_ += '~'; }
        bool doCommand() override { return run('A'); }
        bool undoCommand() override { return run('a'); }
        void commit() override { log_ += '!'; }
        std::function<bool()> body = [] { return true; };

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
    EXPECT_GT(trial.failures(), 40);
}

TEST_F(UndoManager, LosesEverythingToAFailure) {
    add("a");
    add("bc")->body = [] { return false; };
    add("d");
    EXPECT_TRUE(manager->undoIt());
    EXPECT_FALSE(manager->undoIt());
    EXPECT_EQ(log, "(d)(cb(!~)(!!~~)(!~))") << "what ran before the failure is not rolled back";
    EXPECT_FALSE(manager->undoAvailable() || manager->doAvailable());
}

TEST_F(UndoManager, CountsAnInvalidGroupWithoutCommandsAsEmpty) {
    add("a");
    manager->newGroup("empty", false)->stateInvalid();
    EXPECT_TRUE(manager->undoIt());
    EXPECT_EQ(manager->getNumGroups(false), 0) << "it costs as much all the same";
}

TEST_F(UndoManager, PassesOverManyEmptyGroupsOnASmallStack) {
    manager->setUndoMemoryLimit(0);
    add("a");
    for (int i = 0; i < 2000; ++i)
        manager->newGroup("empty", false);
    pthread_attr_t small;
    pthread_attr_init(&small);
    pthread_attr_setstacksize(&small, 96 * 1024); // 48 bytes for each group
    pthread_t thread;
    const auto undoAndDo = [](void* history) -> void* {
        Manager& all = *static_cast<Manager*>(history);
        EXPECT_TRUE(all.undoIt());
        EXPECT_FALSE(all.undoAvailable());
        EXPECT_TRUE(all.doIt() && all.doIt());
        EXPECT_FALSE(all.doAvailable());
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &small, undoAndDo, manager.get()), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&small);
}

TEST_F(UndoManager, AnswersWhileItWorksAndWhileGroupsDie) {
    add("a")->body = [this] {
        EXPECT_TRUE(manager->currentlyActive());
        EXPECT_EQ(manager->getGroup(0), manager->findGroupWithID(1));
        return true;
    };
    manager->undoIt();
    struct Asks : zeUndo::Command {
        Asks(Manager& itsManager, zeUndo::Group* group)
            : Command(group, "asks"), manager(itsManager) {}
        ~Asks() override { // a dying group counts until it has left the queue, without its commands
            EXPECT_EQ(manager.getNumGroups(false), 1);
            EXPECT_EQ(manager.getGroup(0)->getNumCommands(), 0);
            EXPECT_EQ(manager.getGroup(0)->getNumBytesUsed(), 0);
        }
        bool doCommand() override { return true; }
        bool undoCommand() override { return true; }
        Manager& manager;
    };
    new Asks(*manager, manager->newGroup("dies", false));
    manager->clearAllGroups();
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

// SPDX-License-Identifier: MIT

#include "Base/Undo/zeUndoReport.h"

#include <memory>
#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "Base/Undo/zeUndoCommand.h"
#include "Base/Undo/zeUndoGroup.h"
#include "Base/Undo/zeUndoManager.h"
#include "Support/TempFolder.h"

namespace {

/// Each run counts down, and the one that meets 0 fails.
struct Countdown : zeUndo::Command {
    Countdown(zeUndo::Group* group, const char* name, int itsRuns)
        : Command(group, name), runs(itsRuns) {}
    bool doCommand() override { return runs-- != 0; }
    bool undoCommand() override { return runs-- != 0; }
    int runs;
};

class UndoReport : public testing::Test {
protected:
    UndoReport() { zeUndoReportInit(folder.path("trace").c_str()); }
    /// Later reports of this process go nowhere.
    ~UndoReport() override { zeUndoReportInit("/dev/null"); }

    /// What was written since the last call, with addresses replaced by "@".
    std::string written() {
        static const std::regex address("0x0x[0-9a-f]+");
        const std::string text = folder.read("trace").substr(length_);
        length_ += text.size();
        return '\n' + std::regex_replace(text, address, "@");
    }

    TempFolder folder;
    std::unique_ptr<zeUndo::Manager> manager{zeUndo::newManager()};

private:
    std::size_t length_ = 0;
};

using UndoReportDeathTest = UndoReport;

} // namespace

TEST_F(UndoReport, TellsOfEveryStep) {
    new Countdown(manager->newGroup("one", false), "write", 2);
    manager->undoIt();
    manager->undoIt();
    manager->newGroup("two", true)->addCommand(new Countdown(nullptr, nullptr, 1));
    manager->undoIt();
    manager->doIt();
    manager->doIt();
    new Countdown(manager->newGroup("three", false), "write", 0);
    manager->getGroup(0)->undoIt();
    zeUndo::Group* four = manager->newGroup("four", false);
    EXPECT_EQ(written(), R"(

------------------------------

--------------------------------------------------------
zeUndo::newGroup (one, dynamic = 0)
zeUndo::Manager: pruneTrailingInvalidGroups()
  zeUndo::Group: new group (one)
    zeUndo::Command: new (write, @)
- zeUndo::Manager: undoIt() - 1 groups, 1024 bytes used
  - zeUndo::Group: undoIt() - (one) 1 commands 1024 bytes.
    - zeUndo::Command: undoIt (write, @), 1024 bytes
- zeUndo::Manager: undoIt() - 1 groups, 1024 bytes used
- zeUndo::Manager: undoIt() - at beginning of queue.
--------------------------------------------------------
zeUndo::newGroup (two, dynamic = 1)
zeUndo::Manager: pruneUndoneGroups()
  zeUndo::Group: delete group (one) - 1024 bytes
    zeUndo::Command: delete (write, @)
zeUndo::Manager: pruneTrailingInvalidGroups()
  zeUndo::Group: new group (two)
    zeUndo::Command: new ((null), @)
- zeUndo::Manager: undoIt() - 1 groups, 1024 bytes used
  - zeUndo::Group: undoIt() - (two) 1 commands 1024 bytes.
    - zeUndo::Command: undoIt ((null), @), 1024 bytes
+ zeUndo::Manager: doIt() - 1 groups, 1024 bytes used
  + zeUndo::Group: doIt() - (two) 1 commands 1024 bytes.
    + zeUndo::Command: doIt ((null), @), 1024 bytes
    - zeUndo::Command: 'do' of (null) returned failure.  Marking invalid.
  ! zeUndo::Group: 'do' of command 0 (noname) returnedfailure status
  ! zeUndo::Group: marking group (two) invalid.
zeUndo::Manager: currentGroupIsInvalid()
zeUndo::Manager: clearAllGroups()
  zeUndo::Group: delete group (two) - 1024 bytes
    zeUndo::Command: delete ((null), @)
+ zeUndo::Manager: doIt() - 0 groups, 0 bytes used
+ zeUndo::Manager: doIt() - at end of queue.
--------------------------------------------------------
zeUndo::newGroup (three, dynamic = 0)
zeUndo::Manager: pruneTrailingInvalidGroups()
  zeUndo::Group: new group (three)
    zeUndo::Command: new (write, @)
  - zeUndo::Group: undoIt() - (three) 1 commands 1024 bytes.
    - zeUndo::Command: undoIt (write, @), 1024 bytes
    - zeUndo::Command: undo of write returned failure.  Marking invalid.
  ! zeUndo::Group: 'undo' of command 0 (write) returnedfailure status
  ! zeUndo::Group: marking group (three) invalid.
--------------------------------------------------------
zeUndo::newGroup (four, dynamic = 0)
zeUndo::Manager: pruneTrailingInvalidGroups()
  zeUndo::Group: delete group (three) - 1024 bytes
    zeUndo::Command: delete (write, @)
  zeUndo::Group: new group (four)
)");
    manager->undoIt();
    manager->doIt();
    four->declarePtr(this);
    manager->deletePtr(&folder); // was not declared
    manager->deletePtr(this);
    EXPECT_TRUE(four->isPointerPresent(this)) << "it stays declared";
    EXPECT_FALSE(four->doIt() || four->undoIt());
    manager->associateGroups(1, 2);
    manager->deleteLastGroup();
    EXPECT_EQ(written(), R"(
- zeUndo::Manager: undoIt() - 1 groups, 0 bytes used
  - zeUndo::Group: undoIt() - (four) 0 commands 0 bytes.
- zeUndo::Manager: undoIt() - empty group, undoing again.
- zeUndo::Manager: undoIt() - 1 groups, 0 bytes used
- zeUndo::Manager: undoIt() - at beginning of queue.
+ zeUndo::Manager: doIt() - 1 groups, 0 bytes used
  + zeUndo::Group: doIt() - (four) 0 commands 0 bytes.
+ zeUndo::Manager: doIt() - empty group, doing again.
+ zeUndo::Manager: doIt() - 1 groups, 0 bytes used
+ zeUndo::Manager: doIt() - at end of queue.
!   zeUndo::Group: pointer @ declared by group has been destroyed
!   zeUndo::Group: marking group (four) invalid.
  + zeUndo::Group: doIt() - (four) 0 commands 0 bytes.
  ! zeUndo::Group: doIt() - (four) invalid group.
  - zeUndo::Group: undoIt() - (four) 0 commands 0 bytes.
  ! zeUndo::Group: undoIt() - (four) invalid group.
zeUndo::Manager: associateGroups (1, 2)
zeUndo::Manager: deleteLastGroup()
  zeUndo::Group: delete group (four) - 0 bytes
)");
}

TEST_F(UndoReport, FormatsTextsTwiceAndCutsThem) {
    written();
    zeUndoReport("%s\n", "at 50%% of %d, %s and %g");
    EXPECT_EQ(written(), "\nat 50% of 0, (null) and 0\n");
    zeUndoReport("%s", std::string(2000, 'x').c_str());
    EXPECT_EQ(written(), '\n' + std::string(1023, 'x'));
}

TEST_F(UndoReport, IsAppendedToAnotherFile) {
    const std::string other = folder.write("other", "old");
    zeUndoReportInit(other.c_str());
    zeUndoReport("new\n");
    EXPECT_EQ(folder.read("other"), "old\n------------------------------\n\nnew\n");
    EXPECT_EQ(folder.read("trace"), "\n------------------------------\n\n");
}

TEST_F(UndoReportDeathTest, EndsWithoutAFileToWriteTo) {
    EXPECT_DEATH(zeUndoReportInit(folder.path("missing/trace").c_str()), "");
}

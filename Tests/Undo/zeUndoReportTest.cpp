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

/// The trace file of one test.
class UndoReport : public testing::Test {
protected:
    UndoReport() { zeUndoReportInit(folder_.path("trace").c_str()); }
    /// Later reports of this process go nowhere.
    ~UndoReport() override { zeUndoReportInit("/dev/null"); }

    /// What was written since the last call, with addresses replaced by "ADDRESS".
    std::string written() {
        static const std::regex address("0x0x[0-9a-f]+");
        const std::string text = folder_.read("trace").substr(length_);
        length_ += text.size();
        return std::regex_replace(text, address, "ADDRESS");
    }

    TempFolder folder_;
    std::size_t length_ = 0;
    std::unique_ptr<zeUndo::Manager> manager{zeUndo::newManager()};
};

using UndoReportDeathTest = UndoReport;

} // namespace

TEST_F(UndoReport, TellsOfEveryStep) {
    EXPECT_EQ(written(), "\n------------------------------\n\n");

    new Countdown(manager->newGroup("one", false), "write", -1);
    EXPECT_EQ(written(), "--------------------------------------------------------\n"
                         "zeUndo::newGroup (one, dynamic = 0)\n"
                         "zeUndo::Manager: pruneTrailingInvalidGroups()\n"
                         "  zeUndo::Group: new group (one)\n"
                         "    zeUndo::Command: new (write, ADDRESS)\n");
    manager->undoIt();
    manager->undoIt();
    EXPECT_EQ(written(), "- zeUndo::Manager: undoIt() - 1 groups, 1024 bytes used\n"
                         "  - zeUndo::Group: undoIt() - (one) 1 commands 1024 bytes.\n"
                         "    - zeUndo::Command: undoIt (write, ADDRESS), 1024 bytes\n"
                         "- zeUndo::Manager: undoIt() - 1 groups, 1024 bytes used\n"
                         "- zeUndo::Manager: undoIt() - at beginning of queue.\n");
    manager->doIt();
    manager->doIt();
    EXPECT_EQ(written(), "+ zeUndo::Manager: doIt() - 1 groups, 1024 bytes used\n"
                         "  + zeUndo::Group: doIt() - (one) 1 commands 1024 bytes.\n"
                         "    + zeUndo::Command: doIt (write, ADDRESS), 1024 bytes\n"
                         "+ zeUndo::Manager: doIt() - 1 groups, 1024 bytes used\n"
                         "+ zeUndo::Manager: doIt() - at end of queue.\n");
    manager->undoIt();
    written();
    manager->newGroup("two", true)->addCommand(new Countdown(nullptr, nullptr, 0));
    EXPECT_EQ(written(), "--------------------------------------------------------\n"
                         "zeUndo::newGroup (two, dynamic = 1)\n"
                         "zeUndo::Manager: pruneUndoneGroups()\n"
                         "  zeUndo::Group: delete group (one) - 1024 bytes\n"
                         "    zeUndo::Command: delete (write, ADDRESS)\n"
                         "zeUndo::Manager: pruneTrailingInvalidGroups()\n"
                         "  zeUndo::Group: new group (two)\n"
                         "    zeUndo::Command: new ((null), ADDRESS)\n");
    manager->associateGroups(1, 2);
    manager->deleteLastGroup();
    EXPECT_EQ(written(), "zeUndo::Manager: associateGroups (1, 2)\n"
                         "zeUndo::Manager: deleteLastGroup()\n"
                         "zeUndo::Manager: clearAllGroups()\n"
                         "  zeUndo::Group: delete group (two) - 1024 bytes\n"
                         "    zeUndo::Command: delete ((null), ADDRESS)\n");
}

TEST_F(UndoReport, TellsOfFailures) {
    new Countdown(manager->newGroup("three", false), nullptr, 0);
    written();
    manager->undoIt();
    EXPECT_EQ(written(),
              "- zeUndo::Manager: undoIt() - 1 groups, 1024 bytes used\n"
              "  - zeUndo::Group: undoIt() - (three) 1 commands 1024 bytes.\n"
              "    - zeUndo::Command: undoIt ((null), ADDRESS), 1024 bytes\n"
              "    - zeUndo::Command: undo of (null) returned failure.  Marking invalid.\n"
              "  ! zeUndo::Group: 'undo' of command 0 (noname) returnedfailure status\n"
              "  ! zeUndo::Group: marking group (three) invalid.\n"
              "zeUndo::Manager: currentGroupIsInvalid()\n"
              "zeUndo::Manager: clearAllGroups()\n"
              "  zeUndo::Group: delete group (three) - 1024 bytes\n"
              "    zeUndo::Command: delete ((null), ADDRESS)\n");
    new Countdown(manager->newGroup("four", false), "turn", 1);
    manager->newGroup("five", false)->declarePtr(this);
    written();
    manager->undoIt();
    EXPECT_EQ(written(), "- zeUndo::Manager: undoIt() - 2 groups, 1024 bytes used\n"
                         "  - zeUndo::Group: undoIt() - (five) 0 commands 0 bytes.\n"
                         "- zeUndo::Manager: undoIt() - empty group, undoing again.\n"
                         "- zeUndo::Manager: undoIt() - 2 groups, 1024 bytes used\n"
                         "  - zeUndo::Group: undoIt() - (four) 1 commands 1024 bytes.\n"
                         "    - zeUndo::Command: undoIt (turn, ADDRESS), 1024 bytes\n");
    manager->deletePtr(&folder_);
    manager->deletePtr(this);
    EXPECT_EQ(written(), "!   zeUndo::Group: pointer ADDRESS declared by group has been destroyed\n"
                         "!   zeUndo::Group: marking group (five) invalid.\n");
    EXPECT_FALSE(manager->getGroup(1)->doIt() || manager->getGroup(1)->undoIt());
    EXPECT_EQ(written(), "  + zeUndo::Group: doIt() - (five) 0 commands 0 bytes.\n"
                         "  ! zeUndo::Group: doIt() - (five) invalid group.\n"
                         "  - zeUndo::Group: undoIt() - (five) 0 commands 0 bytes.\n"
                         "  ! zeUndo::Group: undoIt() - (five) invalid group.\n");
    manager->doIt();
    EXPECT_EQ(written(), "+ zeUndo::Manager: doIt() - 2 groups, 1024 bytes used\n"
                         "  + zeUndo::Group: doIt() - (four) 1 commands 1024 bytes.\n"
                         "    + zeUndo::Command: doIt (turn, ADDRESS), 1024 bytes\n"
                         "    - zeUndo::Command: 'do' of turn returned failure.  Marking invalid.\n"
                         "  ! zeUndo::Group: 'do' of command 0 (turn) returnedfailure status\n"
                         "  ! zeUndo::Group: marking group (four) invalid.\n"
                         "zeUndo::Manager: currentGroupIsInvalid()\n"
                         "zeUndo::Manager: clearAllGroups()\n"
                         "  zeUndo::Group: delete group (four) - 1024 bytes\n"
                         "    zeUndo::Command: delete (turn, ADDRESS)\n"
                         "  zeUndo::Group: delete group (five) - 0 bytes\n");
    manager->newGroup("six", false);
    manager->undoIt();
    written();
    manager->doIt();
    EXPECT_EQ(written(), "+ zeUndo::Manager: doIt() - 1 groups, 0 bytes used\n"
                         "  + zeUndo::Group: doIt() - (six) 0 commands 0 bytes.\n"
                         "+ zeUndo::Manager: doIt() - empty group, doing again.\n"
                         "+ zeUndo::Manager: doIt() - 1 groups, 0 bytes used\n"
                         "+ zeUndo::Manager: doIt() - at end of queue.\n");
}

TEST_F(UndoReport, FormatsTextsTwiceAndCutsThem) {
    written();
    zeUndoReport("%s\n", "at 50%% of %d, %s and %g");
    EXPECT_EQ(written(), "at 50% of 0, (null) and 0\n");
    zeUndoReport("%s", std::string(2000, 'x').c_str());
    EXPECT_EQ(written(), std::string(1023, 'x'));
}

TEST_F(UndoReport, IsAppendedToAnotherFile) {
    const std::string other = folder_.write("other", "old");
    zeUndoReportInit(other.c_str());
    zeUndoReport("new\n");
    EXPECT_EQ(folder_.read("other"), "old\n------------------------------\n\nnew\n");
    EXPECT_EQ(folder_.read("trace"), "\n------------------------------\n\n");
}

TEST_F(UndoReportDeathTest, EndsWithoutAFileToWriteTo) {
    EXPECT_DEATH(zeUndoReportInit(folder_.path("missing/trace").c_str()), "");
}

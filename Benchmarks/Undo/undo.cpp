// SPDX-License-Identifier: MIT

// add_undo: a group with 1, 100 or 10,000 small commands, undone, and deleted when the next one
// begins; per command. turn: the same group done and undone. memory: what a million small commands
// cost, in groups of a million, 10 and 1.

#include <memory>

#include "Base/Undo/zeUndoCommand.h"
#include "Base/Undo/zeUndoGroup.h"
#include "Base/Undo/zeUndoManager.h"

#include "Undo/undoWorkload.h"

namespace {

class Assign : public zeUndo::Command {
public:
    Assign(zeUndo::Group* group, int& target, int value)
        : Command(group, bench::CommandName), cell_{&target, value} {
        cell_.exchange();
    }
    bool doCommand() override { return cell_.exchange(); }
    bool undoCommand() override { return cell_.exchange(); }
    int getNumBytesUsed() const override { return sizeof *this; }

private:
    bench::Cell cell_;
};

using History = std::unique_ptr<zeUndo::Manager>;

void addStep(const History& history, int& cell, int n) {
    zeUndo::Group* group = history->newGroup("step", false);
    for (int i = 0; i < n; ++i)
        new Assign(group, cell, i);
}

void addAndUndo(State& s, int n) {
    const History history(zeUndo::newManager());
    int cell = -1;
    for (auto _ : s) {
        addStep(history, cell, n);
        bench::keep(&cell);
        history->undoIt();
    }
    bench::require(cell == -1, "everything was undone");
    bench::items(s, size_t(n));
}

void turn(State& s, int n) {
    const History history(zeUndo::newManager());
    int cell = -1;
    addStep(history, cell, n);
    history->undoIt();
    for (auto _ : s) {
        history->doIt();
        bench::keep(&cell);
        history->undoIt();
    }
    bench::require(cell == -1, "everything was undone");
    bench::items(s, size_t(n) * 2);
}

History million(int perGroup) {
    History history(zeUndo::newManager());
    history->setUndoMemoryLimit(0);
    static int cell;
    for (int i = 0; i < 1000000; i += perGroup)
        addStep(history, cell, perGroup);
    return history;
}

const bool registered = [] {
    for (int n : {1, 100, 10000}) {
        bench::reg("add_undo/ours/" + std::to_string(n), [n](State& s) { addAndUndo(s, n); });
        bench::reg("turn/ours/" + std::to_string(n), [n](State& s) { turn(s, n); });
    }
    for (int n : {1000000, 10, 1})
        bench::reg("memory/ours/" + std::to_string(n), [n](State& s) {
            bench::memory(s, [n] { return million(n); });
        })->Iterations(1);
    return true;
}();

} // namespace

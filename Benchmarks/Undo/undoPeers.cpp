// SPDX-License-Identifier: MIT

// What a program would write by itself: steps that are vectors of owned commands with names, whose
// virtual operations are called as often and in the same order as ours. It has no flags, no limits,
// no signals and no trace.

#include <memory>
#include <string>
#include <vector>

#include "Undo/undoWorkload.h"

namespace peer {

class Change {
public:
    explicit Change(const char* name) : name_(name) {}
    virtual ~Change() = default;
    virtual bool redo() = 0;
    virtual bool undo() = 0;
    virtual int size() const = 0;
    virtual void commit() {}

private:
    std::string name_;
};

template<int>
class Assign : public Change {
public:
    Assign(int& target, int value) : Change(bench::CommandName), cell_{&target, value} {
        cell_.exchange();
    }
    bool redo() override { return cell_.exchange(); }
    bool undo() override { return cell_.exchange(); }
    int size() const override { return sizeof *this; }

private:
    bench::Cell cell_;
};

} // namespace peer

namespace {

using Step = std::vector<std::unique_ptr<peer::Change>>;

/// Sizes are asked for as often as ours are: for the history, for the step and for each change.
int size(const Step& step) {
    int sum = 0;
    for (const auto& change : step)
        sum += change->size();
    return sum;
}

bool undo(Step& step) {
    bench::keep(size(step));
    bench::keep(size(step));
    for (auto change = step.rbegin(); change != step.rend(); ++change) {
        bench::keep((*change)->size());
        if (!(*change)->undo())
            return false;
    }
    return true;
}

bool redo(Step& step) {
    bench::keep(size(step));
    bench::keep(size(step));
    for (auto& change : step) {
        bench::keep(change->size());
        if (!change->redo())
            return false;
    }
    return true;
}

void drop(Step& step) {
    bench::keep(size(step));
    for (auto& change : step)
        change->commit();
    step.clear();
}

/// All commands are of one class, as ours; but the compiler cannot know, and see through the calls.
Step made(int& cell, int n) {
    bool isOther = false;
    benchmark::DoNotOptimize(isOther);
    Step step;
    for (int i = 0; i < n; ++i) {
        if (isOther)
            step.push_back(std::make_unique<peer::Assign<1>>(cell, i));
        else
            step.push_back(std::make_unique<peer::Assign<0>>(cell, i));
    }
    return step;
}

void addAndUndo(State& s, int n) {
    int cell = -1;
    for (auto _ : s) {
        Step step = made(cell, n);
        bench::keep(&cell);
        undo(step);
        drop(step);
    }
    bench::require(cell == -1, "everything was undone");
    bench::items(s, size_t(n));
}

void turn(State& s, int n) {
    int cell = -1;
    Step step = made(cell, n);
    undo(step);
    for (auto _ : s) {
        redo(step);
        bench::keep(&cell);
        undo(step);
    }
    bench::require(cell == -1, "everything was undone");
    bench::items(s, size_t(n) * 2);
}

std::vector<Step> million(int perStep) {
    static int cell;
    std::vector<Step> steps;
    for (int i = 0; i < 1000000; i += perStep)
        steps.push_back(made(cell, perStep));
    return steps;
}

const bool registered = [] {
    for (int n : {1, 100, 10000}) {
        bench::reg("add_undo/vector/" + std::to_string(n), [n](State& s) { addAndUndo(s, n); });
        bench::reg("turn/vector/" + std::to_string(n), [n](State& s) { turn(s, n); });
    }
    for (int n : {1000000, 10, 1})
        bench::reg("memory/vector/" + std::to_string(n), [n](State& s) {
            bench::memory(s, [n] { return million(n); });
        })->Iterations(1);
    return true;
}();

} // namespace

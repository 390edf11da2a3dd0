// SPDX-License-Identifier: MIT

/// @file
/// The editor beside a model that knows no trick: a list of groups, and texts that are copied.

#pragma once

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Undo/zeUndoCommand.h"
#include "Base/Undo/zeUndoGroup.h"

#include "Shared/failure.h"
#include "notebook/editor.h"

/// What the history is, by the rules of the undo manager.
class ModelHistory {
public:
    using Lines = notebook::Lines;

    struct Group {
        bool isAdded;
        std::vector<notebook::Patch> edits;
        bool fails = false; ///< Its last command does.
    };

    Lines text;
    std::vector<Group> groups;
    std::size_t current = 0;
    static constexpr std::size_t textLimit = 200;

    bool exchange(notebook::Patch& edit) {
        if (edit.at + edit.count > text.size())
            return false;
        const auto first = text.begin() + std::ptrdiff_t(edit.at);
        const auto end = first + std::ptrdiff_t(edit.count);
        Lines result(text.begin(), first);
        result.insert(result.end(), edit.lines.begin(), edit.lines.end());
        result.insert(result.end(), end, text.end());
        if (notebook::sizeOf(result) > textLimit)
            return false;
        edit = {edit.at, edit.lines.size(), Lines(first, end)};
        text = result;
        return true;
    }

    void addGroup(bool isAdded) {
        groups.resize(current);
        groups.push_back({isAdded, {}});
        current = groups.size();
    }

    bool undo() {
        do
            if (!run(groups[--current], true))
                return clear();
        while (current > 0 && groups[current].isAdded);
        return true;
    }

    bool redo() {
        do
            if (!run(groups[current], false))
                return clear();
        while (++current < groups.size() && groups[current].isAdded);
        return true;
    }

private:
    bool run(Group& group, bool isBack) {
        const std::size_t count = group.edits.size();
        bool isGood = !(group.fails && isBack);
        for (std::size_t i = 0; isGood && i < count; ++i)
            isGood = exchange(group.edits[isBack ? count - 1 - i : i]);
        return isGood && !group.fails;
    }

    bool clear() {
        groups.clear();
        current = 0;
        return false;
    }
};

/// A command that cannot be undone.
class Stuck : public zeUndo::Command {
public:
    Stuck() : zeUndo::Command(nullptr, "stuck") { doIt(); }

    bool doCommand() override { return true; }
    bool undoCommand() override { return false; }
    int getNumBytesUsed() const override { return 0; }
};

/// Does the same at random to both, and compares them after each step.
class Replay {
public:
    explicit Replay(unsigned int seed) : random_(seed) {
        editor_.setStepLimit(0);
        editor_.setMemoryLimit(0);
    }

    struct Counts {
        int edits = 0, added = 0, refused = 0, undone = 0, redone = 0, failed = 0;
    };

    /// Stops at the first difference.
    Counts run(int operations) {
        for (int i = 0; i < operations && !testing::Test::HasFailure(); ++i) {
            step();
            compare(i);
        }
        return counts_;
    }

private:
    int upTo(std::size_t most) {
        return static_cast<int>(std::uniform_int_distribution<std::size_t>(0, most)(random_));
    }

    /// Whether the editor refuses it.
    static bool refuses(const std::function<void()>& call) {
        try {
            call();
            return false;
        } catch (const app::Failure&) {
            return true;
        }
    }

    void step() {
        const int kind = upTo(99);
        if (kind < 50)
            edit(kind < 12);
        else if (kind < 70)
            walk(&notebook::Editor::undo, &ModelHistory::undo, model_.current > 0, counts_.undone);
        else if (kind < 85)
            walk(&notebook::Editor::redo, &ModelHistory::redo,
                 model_.current < model_.groups.size(), counts_.redone);
        else if (kind < 92)
            toggleStep();
        else if (kind < 94)
            harm();
    }

    void edit(bool isAdded) {
        const std::size_t size = model_.text.size();
        const auto at = static_cast<std::size_t>(upTo(size));
        const auto count = static_cast<std::size_t>(upTo(std::min<std::size_t>(size - at, 3)));
        notebook::Patch patch{at, count, notebook::Lines(static_cast<std::size_t>(upTo(3)))};
        for (std::string& line : patch.lines)
            line.assign(static_cast<std::size_t>(upTo(upTo(9) == 0 ? 40 : 5)),
                        static_cast<char>('a' + upTo(25)));
        notebook::Patch twin = patch;
        const bool isWrong = isAdded && (isOpen_ || model_.current == 0);
        const bool isRefused = isWrong || !model_.exchange(twin);
        EXPECT_EQ(refuses([&] { editor_.edit("edit", patch, isAdded); }), isRefused);
        counts_.edits += !isRefused;
        counts_.added += isAdded && !isRefused;
        counts_.refused += isRefused && !isWrong;
        if (isRefused)
            return;
        if (!isOpen_ || !hasGroup_)
            model_.addGroup(isAdded);
        hasGroup_ = isOpen_;
        model_.groups.back().edits.push_back(std::move(twin));
    }

    void walk(void (notebook::Editor::*call)(), bool (ModelHistory::*twin)(), bool isPossible,
              int& count) {
        isPossible = isPossible && !isOpen_;
        const bool isGood = isPossible && (model_.*twin)();
        EXPECT_EQ(refuses([&] { (editor_.*call)(); }), !isGood);
        count += isGood;
        counts_.failed += isPossible && !isGood;
    }

    void toggleStep() {
        if (isOpen_)
            editor_.end();
        else
            editor_.begin("several");
        isOpen_ = !isOpen_;
        hasGroup_ = false;
    }

    /// One of the last groups that are done can no longer be undone.
    void harm() {
        if (model_.current == 0 || isOpen_)
            return;
        const std::size_t i =
            model_.current - 1 -
            static_cast<std::size_t>(upTo(std::min<std::size_t>(model_.current - 1, 2)));
        if (!std::exchange(model_.groups[i].fails, true))
            editor_.history().getGroup(static_cast<int>(i))->addCommand(new Stuck);
    }

    void compare(int i) {
        zeUndo::Manager& history = editor_.history();
        ASSERT_EQ(editor_.text().lines(), model_.text) << i;
        ASSERT_EQ(history.getNumGroups(false), static_cast<int>(model_.groups.size())) << i;
        ASSERT_EQ(history.undoAvailable(), model_.current > 0) << i;
        ASSERT_EQ(history.doAvailable(), model_.current < model_.groups.size()) << i;
    }

    std::mt19937 random_;
    notebook::Editor editor_{notebook::Text({}, ModelHistory::textLimit)};
    ModelHistory model_;
    bool isOpen_ = false;
    bool hasGroup_ = false;
    Counts counts_;
};

/// Of many operations, some of each kind took place.
inline void replay(unsigned int seed, int operations) {
    const Replay::Counts counts = Replay(seed).run(operations);
    for (const int count :
         {counts.edits, counts.added, counts.refused, counts.undone, counts.redone, counts.failed})
        EXPECT_GT(count, operations / 2000);
}

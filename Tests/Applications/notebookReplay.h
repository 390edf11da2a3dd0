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
        bool isValid = true;
        bool fails = false; ///< Its last command does.
    };

    Lines text;
    std::vector<Group> groups;
    std::size_t current = 0;
    int stepLimit = 1000;
    int memoryLimit = 10000000;
    static constexpr std::size_t textLimit = 200;
    std::size_t editSize = 0; ///< What an edit takes without its lines.

    /// A group that became invalid goes without being undone: what came before may not fit then.
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
        while (!groups.empty() && !groups.back().isValid)
            groups.pop_back();
        respectLimits(1);
        groups.push_back({isAdded, {}});
        current = groups.size();
    }

    void respectLimits(std::size_t room) {
        while (stepLimit > 0 && !groups.empty() && chains() + room > std::size_t(stepLimit))
            deleteFirst();
        while (memoryLimit > 0 && bytes() > std::size_t(memoryLimit))
            deleteFirst();
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

    std::size_t chains() const {
        const auto isStep = [](const Group& group) { return !group.isAdded; };
        return static_cast<std::size_t>(std::count_if(groups.begin(), groups.end(), isStep)) +
               (!groups.empty() && groups[0].isAdded);
    }

    std::size_t bytes() const {
        std::size_t sum = 0;
        for (const Group& group : groups)
            for (const notebook::Patch& edit : group.edits)
                sum += editSize + notebook::sizeOf(edit.lines) +
                       edit.lines.size() * sizeof(std::string);
        return sum;
    }

private:
    bool run(Group& group, bool isBack) {
        const std::size_t count = group.edits.size();
        bool isGood = group.isValid && !(group.fails && isBack);
        for (std::size_t i = 0; isGood && i < count; ++i)
            isGood = exchange(group.edits[isBack ? count - 1 - i : i]);
        return isGood && !group.fails;
    }

    bool clear() {
        groups.clear();
        current = 0;
        return false;
    }

    void deleteFirst() {
        const bool isAdded = groups[0].isAdded;
        do
            groups.erase(groups.begin());
        while (!isAdded && !groups.empty() && groups[0].isAdded);
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
        editor_.edit("measure", {0, 0, {"line"}});
        model_.editSize =
            static_cast<std::size_t>(editor_.history().getGroup(0)->getNumBytesUsed());
        model_.text = {"line"};
        model_.addGroup(false);
        model_.groups[0].edits.push_back({0, 1, {}});
    }

    struct Counts {
        int edits = 0, added = 0, refused = 0, undone = 0, redone = 0, failed = 0, limited = 0;
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
        else if (kind < 97)
            limit();
        else
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

    /// A limit acts at once if nothing is undone, or else at the next new group.
    void limit() {
        if (isOpen_) {
            EXPECT_TRUE(refuses([&] { editor_.setStepLimit(1); }));
            return;
        }
        const std::size_t before = model_.groups.size();
        const bool isSteps = upTo(1) == 0;
        const int most = upTo(isSteps ? 8 : 3000);
        (isSteps ? model_.stepLimit : model_.memoryLimit) = most;
        if (model_.current == model_.groups.size())
            model_.respectLimits(0);
        if (isSteps)
            editor_.setStepLimit(most);
        else
            editor_.setMemoryLimit(most);
        counts_.limited += model_.groups.size() < before;
    }

    /// Something dies that a group depends on, or a group that is done cannot be undone.
    void harm() {
        if (model_.groups.empty() || isOpen_)
            return;
        const int i = upTo(model_.groups.size() - 1);
        ModelHistory::Group& twin = model_.groups[static_cast<std::size_t>(i)];
        zeUndo::Group* const group = editor_.history().getGroup(i);
        if (upTo(1) == 0) {
            group->declarePtr(this);
            editor_.history().deletePtr(this);
            twin.isValid = false;
        } else if (static_cast<std::size_t>(i) < model_.current && !twin.fails) {
            group->addCommand(new Stuck);
            twin.fails = true;
        }
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
    for (const int count : {counts.edits, counts.added, counts.refused, counts.undone,
                            counts.redone, counts.failed, counts.limited})
        EXPECT_GT(count, operations / 2000);
    testing::Test::RecordProperty("edits", counts.edits);
}

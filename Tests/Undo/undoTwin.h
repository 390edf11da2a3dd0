// SPDX-License-Identifier: MIT

/// @file
/// The queue of groups once more, in vectors and positions and without a thought of speed, and
/// random operations that a manager must answer as this twin does.

#pragma once

#include <charconv>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Undo/zeUndoCommand.h"
#include "Base/Undo/zeUndoGroup.h"
#include "Base/Undo/zeUndoManager.h"

namespace twin {

/// What happened on one side, line by line, and how often commands were asked for their size.
struct Log {
    void note(const char* what, std::initializer_list<int> numbers) {
        text += what;
        char digits[12] = {' '};
        for (const int number : numbers)
            text.append(digits, std::to_chars(digits + 1, digits + 12, number).ptr);
        text += '\n';
    }

    std::string text;
    int sizesAsked = 0;
};

/// Fails in the run with this number, from 1; 0 for never.
class Command : public zeUndo::Command {
public:
    Command(Log& log, int tag, int bytes, int failingRun)
        : zeUndo::Command(nullptr, "command"),
          log_(log),
          tag_(tag),
          bytes_(bytes),
          runsLeft_(failingRun) {}
    ~Command() override { log_.note("delete", {tag_}); }
    bool doCommand() override { return log_.note("do", {tag_}), --runsLeft_ != 0; }
    bool undoCommand() override { return log_.note("undo", {tag_}), --runsLeft_ != 0; }
    void commit() override { log_.note("commit", {tag_}); }
    int getNumBytesUsed() const override { return ++log_.sizesAsked, bytes_; }

private:
    Log& log_;
    int tag_, bytes_, runsLeft_;
};

struct Group : zeUndo::State {
    int id;
    bool dynamic;
    bool freeable = true;
    std::set<const void*> pointers{};
    std::vector<std::unique_ptr<Command>> commands{};
};

struct Manager {
    int bytes(const Group& group) const {
        int sum = 0;
        for (const auto& command : group.commands)
            sum += command->getNumBytesUsed();
        return sum;
    }
    int bytes() const {
        int sum = 0;
        for (const Group& group : groups)
            sum += bytes(group);
        return sum;
    }
    int numChains() const {
        int count = !groups.empty() && groups[0].dynamic;
        for (const Group& group : groups)
            count += !group.dynamic;
        return count;
    }
    bool isAtEnd() const { return current == groups.size(); }
    void activity(bool begins) { log.note("activity", {begins, active, numGroups()}); }
    int numGroups() const { return static_cast<int>(groups.size()); }

    bool turn(bool forward) {
        bytes();
        if (forward ? isAtEnd() : current == 0)
            return true;
        active = true;
        activity(true);
        bool isEmpty = true, succeeded, goesOn;
        do {
            const std::size_t i = forward ? current : current - 1;
            isEmpty = isEmpty && groups[i].commands.empty();
            succeeded = turn(groups[i], forward);
            if (!succeeded) {
                clear();
                break;
            }
            current = forward ? i + 1 : i;
            goesOn = forward ? !isAtEnd() && groups[current].dynamic : i != 0 && groups[i].dynamic;
        } while (goesOn);
        activity(false);
        active = false;
        return isEmpty ? turn(forward) : succeeded;
    }
    bool turn(Group& group, bool forward) {
        bytes(group);
        if (!group.isValid() || (forward ? group.lastWasDoIt() : group.lastWasUndoIt()))
            return group.isValid();
        const std::size_t count = group.commands.size();
        for (std::size_t i = 0; i < count; ++i) {
            Command& command = *group.commands[forward ? i : count - 1 - i];
            if (!(forward ? command.doIt() : command.undoIt())) {
                group.stateInvalid();
                return false;
            }
        }
        forward ? group.stateDone() : group.stateUndone();
        return true;
    }

    bool newGroup(bool dynamic) {
        if (groupLimit < 0)
            return false;
        while (!isAtEnd())
            destroy(current);
        while (!groups.empty() && !groups.back().isValid() && groups.back().freeable)
            destroy(groups.size() - 1);
        respectLimits(groupLimit - 1);
        groups.push_back({{}, ++lastID, dynamic});
        current = groups.size();
        return true;
    }
    void respectLimits(int numGroups) {
        const auto mayGo = [&] { return !groups.empty() && groups[0].freeable; };
        while (groupLimit != 0 && numGroups < numChains() && mayGo())
            deleteFirstGroup();
        while (memoryLimit != 0 && memoryLimit < bytes() && mayGo())
            deleteFirstGroup();
        current = groups.size();
    }
    void setUndoGroupLimit(int limit) { setLimit(groupLimit, limit); }
    void setUndoMemoryLimit(int limit) { setLimit(memoryLimit, limit); }
    void setLimit(int& limit, int value) {
        limit = value;
        if (isAtEnd())
            respectLimits(groupLimit);
    }
    void deleteFirstGroup() {
        const bool wasDynamic = groups[0].dynamic;
        destroy(0);
        while (!wasDynamic && !groups.empty() && groups[0].dynamic)
            destroy(0);
    }
    void clear() {
        while (!groups.empty())
            destroy(0);
    }
    void destroy(std::size_t i) {
        bytes(groups[i]);
        activity(true);
        for (const auto& command : groups[i].commands)
            command->commit();
        for (auto& command : groups[i].commands)
            command.reset();
        groups.erase(groups.begin() + static_cast<std::ptrdiff_t>(i));
        current -= i < current;
        activity(false);
    }
    void deleteLastGroup() {
        if (isAtEnd() && !groups.empty() && groups.back().commands.empty())
            destroy(current - 1);
        else if (isAtEnd())
            clear();
    }
    void deletePtr(const void* p) {
        for (Group& group : groups)
            if (group.pointers.contains(p))
                group.stateInvalid();
    }
    void associateGroups(int first, int last) {
        bool dynamic = false;
        for (Group& group : groups)
            if (group.id >= first && group.id <= last)
                group.dynamic = std::exchange(dynamic, true);
    }
    bool willGroupBeUndone(int id) const {
        for (std::size_t i = current; i-- > 0;)
            if (groups[i].id <= id || !groups[i].dynamic)
                return groups[i].id <= id;
        return false;
    }

    Log log{};
    std::vector<Group> groups{};
    std::size_t current = 0;
    int lastID = 0;
    int groupLimit = 0;
    int memoryLimit = 10'000'000;
    bool active = false;
};

/// A manager and its twin, which get the same random operations.
class Trial {
public:
    explicit Trial(unsigned int seed) : random_(seed) {
        real_->activitySignal.connectOwned([this](bool begins) {
            log_.note("activity", {begins, real_->currentlyActive(), real_->getNumGroups(false)});
        });
    }

    void run(int steps) {
        for (int i = 0; i < steps; ++i) {
            step(below(100));
            describe();
            ASSERT_EQ(log_.text, twin_.log.text) << "step " << i;
            ASSERT_FALSE(testing::Test::HasFailure()) << "step " << i;
            log_ = twin_.log = {};
        }
    }

private:
    int below(int n) { return static_cast<int>(random_() % static_cast<unsigned int>(n)); }

    void step(int kind) {
        constexpr int groupLimits[] = {-1, 0, 0, 0, 1, 3, 8, 8},
                      memoryLimits[] = {-1, 0, 0, 9000, 30000};
        const int groupLimit = groupLimits[below(8)], memoryLimit = memoryLimits[below(5)];
        const int first = twin_.lastID - below(9), last = first + below(5) - 1;
        const char* p = &objects_[below(4)];
        if (kind < 30)
            newGroup(below(3) == 0);
        else if (kind < 62)
            EXPECT_EQ(kind < 45 ? real_->doIt() : real_->undoIt(), twin_.turn(kind < 45));
        else if (kind < 63)
            inBoth([=](auto& manager) { manager.setUndoGroupLimit(groupLimit); });
        else if (kind < 64)
            inBoth([=](auto& manager) { manager.setUndoMemoryLimit(memoryLimit); });
        else if (kind < 66)
            inBoth([=](auto& manager) { manager.deletePtr(p); });
        else if (kind < 69)
            inBoth([=](auto& manager) { manager.associateGroups(first, last); });
        else if (kind < 70)
            inBoth([](auto& manager) { manager.deleteLastGroup(); });
        else if (!twin_.groups.empty())
            stepOfGroup(kind, below(twin_.numGroups()));
    }

    template<class Operation>
    void inBoth(Operation operation) {
        operation(*real_);
        operation(twin_);
    }

    void newGroup(bool dynamic) {
        zeUndo::Group* real = real_->newGroup("step", dynamic);
        ASSERT_EQ(real != nullptr, twin_.newGroup(dynamic));
        for (int n = real ? below(4) : 0; n > 0; --n)
            addCommand(real, twin_.groups.back());
    }

    void stepOfGroup(int kind, int i) {
        zeUndo::Group* real = real_->getGroup(i);
        Group& group = twin_.groups[static_cast<std::size_t>(i)];
        const bool flag = below(3) == 0;
        if (kind < 80)
            addCommand(real, group);
        else if (kind < 84)
            real->setGroupDynamic(group.dynamic = flag);
        else if (kind < 88)
            real->setGroupFreeable(group.freeable = !flag);
        else if (kind < 95)
            real->declarePtr(*group.pointers.insert(&objects_[below(4)]).first);
        else if (kind < 98)
            EXPECT_EQ(flag ? real->doIt() : real->undoIt(), twin_.turn(group, flag));
        else
            delete real, twin_.destroy(static_cast<std::size_t>(i));
    }

    void addCommand(zeUndo::Group* real, Group& group) {
        const int tag = ++lastTag_, bytes = below(3000);
        const int failingRun = below(200) == 0 ? 1 + below(4) : 0;
        real->addCommand(new Command(log_, tag, bytes, failingRun));
        group.commands.push_back(std::make_unique<Command>(twin_.log, tag, bytes, failingRun));
    }

    void describe() {
        const int count = real_->getNumGroups(false), id = twin_.lastID - below(12);
        log_.note("state",
                  {log_.sizesAsked, count, real_->getNumGroups(true), real_->undoAvailable(),
                   real_->doAvailable(), real_->willGroupBeUndone(id)});
        for (int i = 0; zeUndo::Group* group = real_->getGroup(i); ++i) {
            log_.note("group", {group == real_->getCurrentGroup(), group->getID(),
                                group->isGroupDynamic(), group->isValid()});
            EXPECT_EQ(group, real_->getGroup(i - count));
            EXPECT_EQ(group, real_->findGroupWithID(group->getID()));
        }
        EXPECT_EQ(real_->getGroup(-count - 1), nullptr);
        twin_.log.note("state",
                       {twin_.log.sizesAsked, twin_.numGroups(), twin_.numChains(),
                        twin_.current != 0, !twin_.isAtEnd(), twin_.willGroupBeUndone(id)});
        for (std::size_t i = 0; const Group& group : twin_.groups)
            twin_.log.note("group",
                           {i++ == twin_.current, group.id, group.dynamic, group.isValid()});
    }

    std::mt19937 random_;
    Log log_; ///< Of the real history.
    std::unique_ptr<zeUndo::Manager> real_{zeUndo::newManager()};
    Manager twin_;
    const char objects_[4] = {};
    int lastTag_ = 0;
};

} // namespace twin

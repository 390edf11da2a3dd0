// SPDX-License-Identifier: MIT

/// @file
/// The undo history once more, in vectors and positions and without a thought of speed, and random
/// operations that a manager must answer as this twin does.

#pragma once

#include <algorithm>
#include <climits>
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

/// What a command does, on either side.
struct Script {
    std::string tag;
    unsigned int value;
    int bytes;
    int failingRun; ///< From 1; 0 for none.
};

/// What the commands of one side work on, and what happened to them.
struct World {
    /// Each run is one to one, and the order of runs shows in the result.
    void change(const Script& script, bool forward) {
        constexpr unsigned int factor = 31, inverse = 3186588639; // modulo 2^32
        document = forward ? document * factor + script.value : (document - script.value) * inverse;
    }
    bool run(const Script& script, int& runs, bool forward) {
        log += (forward ? "do " : "undo ") + script.tag + '\n';
        if (++runs == script.failingRun)
            return false;
        change(script, forward);
        return true;
    }
    void activity(bool begins, std::size_t numGroups, bool active) {
        log += (begins ? "begin " : "end ") + std::to_string(numGroups) + (active ? "*\n" : "\n");
    }

    unsigned int document = 0;
    std::string log;
    int sizesAsked = 0;
};

/// The flags of zeUndo::State.
struct State {
    bool isValid() const { return (flags & 0x10) != 0; }
    bool lastWas(bool forward) const { return (flags & (forward ? 0x04 : 0x08)) != 0; }
    void record(bool forward) { flags = forward ? (flags & ~0x08) | 0x05 : (flags & ~0x04) | 0x0A; }
    void stateInvalid() { flags &= ~0x10; }

    int flags = 0x10;
};

struct Command : State {
    explicit Command(Script itsScript) : script(std::move(itsScript)) {}

    Script script;
    int runs = 0;
};

struct Group : State {
    Group(int itsId, bool isDynamic) : id(itsId), dynamic(isDynamic) {}

    int id;
    bool dynamic;
    bool freeable = true;
    std::vector<Command> commands;
    std::set<const void*> pointers;
};

struct Manager {
    int bytes(const Group& group) {
        long long sum = 0;
        for (const Command& command : group.commands)
            sum += command.script.bytes;
        world.sizesAsked += static_cast<int>(group.commands.size());
        return static_cast<int>(std::min<long long>(sum, INT_MAX));
    }
    int bytes() {
        long long sum = 0;
        for (const Group& group : groups)
            sum += bytes(group);
        return static_cast<int>(std::min<long long>(sum, INT_MAX));
    }
    int numChains() const {
        const auto isFirst = [](const Group& group) { return !group.dynamic; };
        return static_cast<int>(std::count_if(groups.begin(), groups.end(), isFirst)) +
               (!groups.empty() && groups[0].dynamic);
    }
    bool isAtEnd() const { return current == groups.size(); }

    /// Does or undoes.
    bool turn(bool forward) {
        bytes();
        if (forward ? isAtEnd() : current == 0)
            return true;
        world.activity(true, groups.size(), active = true);
        std::size_t count = 0;
        bool succeeded, goesOn;
        do {
            const std::size_t i = forward ? current : current - 1;
            count += groups[i].commands.size();
            succeeded = turn(groups[i], forward);
            if (!succeeded) {
                clear();
                break;
            }
            current = forward ? current + 1 : i;
            goesOn = forward ? !isAtEnd() && groups[current].dynamic : i != 0 && groups[i].dynamic;
        } while (goesOn);
        world.activity(false, groups.size(), true);
        active = false;
        return count == 0 ? turn(forward) : succeeded;
    }
    bool turn(Group& group, bool forward) {
        bytes(group);
        if (!group.isValid() || group.lastWas(forward))
            return group.isValid();
        const std::size_t count = group.commands.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (!turn(group.commands[forward ? i : count - 1 - i], forward)) {
                group.stateInvalid();
                return false;
            }
        }
        group.record(forward);
        return true;
    }
    bool turn(Command& command, bool forward) {
        if (!command.isValid() || command.lastWas(forward))
            return command.isValid();
        ++world.sizesAsked;
        const bool succeeded = world.run(command.script, command.runs, forward);
        command.record(forward);
        if (!succeeded)
            command.stateInvalid();
        return succeeded;
    }

    bool newGroup(bool dynamic) {
        if (groupLimit < 0)
            return false;
        while (!isAtEnd())
            destroy(current);
        while (!groups.empty() && !groups.back().isValid() && groups.back().freeable)
            destroy(groups.size() - 1);
        respectLimits(true);
        groups.emplace_back(++lastID, dynamic);
        current = groups.size();
        return true;
    }
    void respectLimits(bool makeRoom) {
        const int limit = makeRoom ? groupLimit - 1 : groupLimit;
        const auto mayGo = [&] { return !groups.empty() && groups[0].freeable; };
        while (groupLimit != 0 && limit < numChains() && mayGo())
            deleteFirstGroup();
        while (memoryLimit != 0 && memoryLimit < bytes() && mayGo())
            deleteFirstGroup();
        current = groups.size();
    }
    void deleteFirstGroup() {
        const bool wasDynamic = groups[0].dynamic;
        destroy(0);
        while (!wasDynamic && !groups.empty() && groups[0].dynamic)
            destroy(0);
    }
    void setLimit(int& limit, int value) {
        limit = value;
        if (isAtEnd())
            respectLimits(false);
    }
    void deleteLastGroup() {
        if (!isAtEnd() || groups.empty())
            return;
        if (groups.back().commands.empty())
            destroy(groups.size() - 1);
        else
            clear();
    }
    void clear() {
        while (!groups.empty())
            destroy(0);
    }
    void destroy(std::size_t i) {
        bytes(groups[i]);
        world.activity(true, groups.size(), active);
        for (const char* last : {"commit ", "delete "})
            for (const Command& command : groups[i].commands)
                world.log += last + command.script.tag + '\n';
        groups.erase(groups.begin() + static_cast<std::ptrdiff_t>(i));
        if (i < current)
            --current;
        world.activity(false, groups.size(), active);
    }
    bool willGroupBeUndone(int id) const {
        for (std::size_t i = current; i-- > 0;)
            if (groups[i].id <= id || !groups[i].dynamic)
                return groups[i].id <= id;
        return false;
    }

    World world{};
    std::vector<Group> groups{};
    std::size_t current = 0;
    int lastID = 0;
    int groupLimit = 0;
    int memoryLimit = 10'000'000;
    bool active = false;
};

/// A command of the real history.
class RealCommand : public zeUndo::Command {
public:
    RealCommand(zeUndo::Group* group, World& world, const Script& script)
        : Command(group, script.tag.c_str()), world_(world), script_(script) {}
    ~RealCommand() override { world_.log += "delete " + script_.tag + '\n'; }
    bool doCommand() override { return world_.run(script_, runs_, true); }
    bool undoCommand() override { return world_.run(script_, runs_, false); }
    void commit() override { world_.log += "commit " + script_.tag + '\n'; }
    int getNumBytesUsed() const override {
        ++world_.sizesAsked;
        return script_.bytes;
    }

private:
    World& world_;
    const Script script_;
    int runs_ = 0;
};

/// A manager and its twin, which get the same random operations.
class Trial {
public:
    explicit Trial(unsigned int seed) : random_(seed) {
        real_->activitySignal.connectOwned([this](bool begins) {
            world_.activity(begins, std::size_t(real_->getNumGroups(false)),
                            real_->currentlyActive());
        });
    }

    void run(int steps) {
        for (int i = 0; i < steps; ++i) {
            step();
            compare();
            ASSERT_FALSE(testing::Test::HasFailure()) << "step " << i;
        }
    }

    /// How often undoing and doing failed.
    int failures() const { return failures_; }

private:
    int below(int n) { return static_cast<int>(random_() % static_cast<unsigned int>(n)); }
    int oneOf(std::initializer_list<int> all) { return all.begin()[below(int(all.size()))]; }
    const void* pointer() { return &objects_[below(12)]; }

    void step() {
        const int kind = below(100);
        if (kind < 25)
            addGroup(below(3) == 0, below(4));
        else if (kind < 50)
            note(real_->undoIt(), twin_.turn(false));
        else if (kind < 65)
            note(real_->doIt(), twin_.turn(true));
        else if (kind < 68)
            setLimit(&zeUndo::Manager::setUndoGroupLimit, twin_.groupLimit,
                     oneOf({-1, 0, 0, 0, 1, 3, 8}));
        else if (kind < 71)
            setLimit(&zeUndo::Manager::setUndoMemoryLimit, twin_.memoryLimit,
                     oneOf({-1, 0, 0, 9000, 30000}));
        else if (kind < 73)
            deletePtr(pointer());
        else if (kind < 76)
            associate(twin_.lastID - below(9), below(5) - 1);
        else if (kind < 78)
            real_->deleteLastGroup(), twin_.deleteLastGroup();
        else if (kind == 78)
            EXPECT_EQ(real_->newID(), ++twin_.lastID);
        else if (!twin_.groups.empty())
            stepOfGroup(kind, below(int(twin_.groups.size())));
    }

    void stepOfGroup(int kind, int i) {
        zeUndo::Group* real = real_->getGroup(i);
        Group& group = twin_.groups[std::size_t(i)];
        const bool flag = below(3) == 0;
        if (kind < 84)
            addCommand(real, group);
        else if (kind < 88)
            real->setGroupDynamic(flag), group.dynamic = flag;
        else if (kind < 91)
            real->setGroupFreeable(!flag), group.freeable = !flag;
        else if (kind < 95)
            real->declarePtr(*group.pointers.insert(pointer()).first);
        else if (kind < 97)
            note(flag ? real->doIt() : real->undoIt(), twin_.turn(group, flag));
        else if (kind < 99)
            delete real, twin_.destroy(std::size_t(i));
        else if (!group.commands.empty())
            real->getCommand(0)->stateInvalid(), group.commands[0].stateInvalid();
    }

    void note(bool result, bool expected) {
        EXPECT_EQ(result, expected);
        failures_ += !expected;
    }

    void setLimit(void (zeUndo::Manager::*set)(int), int& limit, int value) {
        (real_.get()->*set)(value);
        twin_.setLimit(limit, value);
    }

    void deletePtr(const void* p) {
        real_->deletePtr(p);
        for (Group& group : twin_.groups)
            if (group.pointers.contains(p))
                group.stateInvalid();
    }

    void associate(int first, int n) {
        real_->associateGroups(first, first + n);
        bool dynamic = false;
        for (Group& group : twin_.groups)
            if (group.id >= first && group.id <= first + n)
                group.dynamic = std::exchange(dynamic, true);
    }

    void addGroup(bool dynamic, int numCommands) {
        zeUndo::Group* real = real_->newGroup("step", dynamic);
        ASSERT_EQ(real != nullptr, twin_.newGroup(dynamic));
        for (; real && numCommands > 0; --numCommands)
            addCommand(real, twin_.groups.back());
    }

    /// In both ways. The change is made first.
    void addCommand(zeUndo::Group* real, Group& group) {
        const Script script{std::to_string(++lastTag_), unsigned(below(1000)),
                            below(1000) == 0 ? INT_MAX : below(3000),
                            below(100) == 0 ? 1 + below(4) : 0};
        world_.change(script, true);
        twin_.world.change(script, true);
        if (below(2) == 0)
            new RealCommand(real, world_, script);
        else
            real->addCommand(new RealCommand(nullptr, world_, script));
        group.commands.emplace_back(script);
    }

    void compare() {
        EXPECT_EQ(world_.log, twin_.world.log);
        EXPECT_EQ(world_.document, twin_.world.document);
        EXPECT_EQ(world_.sizesAsked, twin_.world.sizesAsked);
        const int count = static_cast<int>(twin_.groups.size());
        ASSERT_EQ(real_->getNumGroups(false), count);
        EXPECT_EQ(real_->getNumGroups(true), twin_.numChains());
        EXPECT_EQ(real_->undoAvailable(), twin_.current != 0);
        EXPECT_EQ(real_->doAvailable(), !twin_.isAtEnd());
        const int id = twin_.lastID - below(12);
        EXPECT_EQ(real_->willGroupBeUndone(id), twin_.willGroupBeUndone(id));
        EXPECT_TRUE(!real_->getGroup(count) && !real_->getGroup(-count - 1));
        const bool waits = !twin_.isAtEnd();
        EXPECT_EQ(real_->getCurrentGroup(), waits ? real_->getGroup(int(twin_.current)) : nullptr);
        for (int i = 0; i < count; ++i)
            compare(real_->getGroup(i), twin_.groups[std::size_t(i)], i - count);
        world_.log.clear();
        twin_.world.log.clear();
        world_.sizesAsked = twin_.world.sizesAsked;
    }

    void compare(zeUndo::Group* real, const Group& group, int fromEnd) {
        EXPECT_EQ(real, real_->getGroup(fromEnd));
        EXPECT_EQ(real, real_->findGroupWithID(group.id));
        EXPECT_EQ(flags(*real), group.flags);
        EXPECT_EQ(real->isGroupDynamic(), group.dynamic);
        EXPECT_EQ(real->getNumBytesUsed(), twin_.bytes(group));
        const int count = static_cast<int>(group.commands.size());
        ASSERT_EQ(real->getNumCommands(), count);
        EXPECT_TRUE(!real->getCommand(count) && !real->getCommand(-1));
        for (int i = 0; i < count; ++i) {
            EXPECT_EQ(real->getCommand(i)->getID(), i + 1);
            EXPECT_EQ(flags(*real->getCommand(i)), group.commands[std::size_t(i)].flags);
        }
    }

    static int flags(const zeUndo::State& state) {
        return state.hasBeenDone() | state.hasBeenUndone() << 1 | state.lastWasDoIt() << 2 |
               state.lastWasUndoIt() << 3 | state.isValid() << 4;
    }

    std::mt19937 random_;
    World world_; ///< Of the real history.
    std::unique_ptr<zeUndo::Manager> real_{zeUndo::newManager()};
    Manager twin_;
    const char objects_[12] = {};
    int lastTag_ = 0;
    int failures_ = 0;
};

} // namespace twin

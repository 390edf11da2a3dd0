// SPDX-License-Identifier: MIT

/// @file
/// The undo history once more, in vectors and positions and without a thought of speed, and random
/// operations that a manager must answer as this twin does.

#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <type_traits>
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

/// What the commands of one side work on, and what they were asked for.
struct World {
    /// Each run is one to one, and their order shows in the result.
    bool run(const Script& script, int& runs, bool forward) {
        constexpr unsigned int factor = 31, inverse = 3186588639; // modulo 2^32
        log += (forward ? "do " : "undo ") + script.tag + '\n';
        if (++runs == script.failingRun)
            return false;
        document = forward ? document * factor + script.value : (document - script.value) * inverse;
        return true;
    }

    unsigned int document = 0;
    std::string log;
    int sizesAsked = 0;
};

struct State {
    bool isValid() const { return (flags & 0x10) != 0; }
    bool lastWasDoIt() const { return (flags & 0x04) != 0; }
    bool lastWasUndoIt() const { return (flags & 0x08) != 0; }
    void done() { flags = (flags & ~0x08u) | 0x05; }
    void undone() { flags = (flags & ~0x04u) | 0x0A; }
    void stateInvalid() { flags &= ~0x10u; }

    unsigned int flags = 0x10;
};

struct Command : State {
    bool doIt() {
        if (!isValid() || lastWasDoIt())
            return isValid();
        ++world->sizesAsked;
        const bool succeeded = world->run(script, runs, true);
        done();
        if (!succeeded)
            stateInvalid();
        return succeeded;
    }
    bool undoIt() {
        if (!isValid() || lastWasUndoIt())
            return isValid();
        ++world->sizesAsked;
        const bool succeeded = world->run(script, runs, false);
        undone();
        if (!succeeded)
            stateInvalid();
        return succeeded;
    }
    int getID() const { return id; }

    World* world;
    Script script;
    int id;
    int runs = 0;
};

struct Group : State {
    int getID() const { return id; }
    bool isGroupDynamic() const { return dynamic; }
    void setGroupDynamic(bool is) { dynamic = is; }
    bool isGroupFreeable() const { return freeable; }
    void setGroupFreeable(bool is) { freeable = is; }
    int getNumCommands() const { return static_cast<int>(commands.size()); }
    Command* getCommand(int i) {
        return i >= 0 && i < getNumCommands() ? &commands[static_cast<std::size_t>(i)] : nullptr;
    }
    int getNumBytesUsed() const {
        long long sum = 0;
        for (const Command& command : commands) {
            ++world->sizesAsked;
            sum += command.script.bytes;
        }
        return static_cast<int>(std::min<long long>(sum, INT_MAX));
    }
    void declarePtr(const void* p) {
        if (p)
            pointers.insert(p);
    }
    bool isPointerPresent(const void* p) const { return pointers.count(p) != 0; }
    bool doIt() {
        getNumBytesUsed();
        if (!isValid() || lastWasDoIt())
            return isValid();
        for (Command& command : commands) {
            if (!command.doIt()) {
                stateInvalid();
                return false;
            }
        }
        done();
        return true;
    }
    bool undoIt() {
        getNumBytesUsed();
        if (!isValid() || lastWasUndoIt())
            return isValid();
        for (auto command = commands.rbegin(); command != commands.rend(); ++command) {
            if (!command->undoIt()) {
                stateInvalid();
                return false;
            }
        }
        undone();
        return true;
    }

    World* world;
    int id;
    bool dynamic;
    bool freeable = true;
    std::vector<Command> commands{};
    std::set<const void*> pointers{};
};

class Manager {
public:
    explicit Manager(World& world) : world_(world) {}

    bool doIt() {
        getNumBytesUsed();
        if (current_ == groups_.size())
            return true;
        activity(active_ = true);
        int count = 0;
        bool succeeded;
        for (;;) {
            count += groups_[current_].getNumCommands();
            succeeded = groups_[current_].doIt();
            if (!succeeded) {
                clearAllGroups();
                break;
            }
            ++current_;
            if (current_ == groups_.size() || !groups_[current_].dynamic)
                break;
        }
        activity(false);
        active_ = false;
        return count == 0 ? doIt() : succeeded;
    }
    bool undoIt() {
        getNumBytesUsed();
        if (current_ == 0)
            return true;
        activity(active_ = true);
        int count = 0;
        bool succeeded;
        for (;;) {
            --current_;
            count += groups_[current_].getNumCommands();
            succeeded = groups_[current_].undoIt();
            if (!succeeded) {
                clearAllGroups();
                break;
            }
            if (current_ == 0 || !groups_[current_].dynamic)
                break;
        }
        activity(false);
        active_ = false;
        return count == 0 ? undoIt() : succeeded;
    }
    Group* newGroup(const char*, bool dynamic) {
        if (groupLimit_ < 0)
            return nullptr;
        while (current_ < groups_.size())
            destroy(current_);
        while (!groups_.empty() && !groups_.back().isValid() && groups_.back().freeable)
            destroy(groups_.size() - 1);
        respectLimits(true);
        groups_.push_back({{}, &world_, newID(), dynamic});
        current_ = groups_.size();
        return &groups_.back();
    }
    Group* getGroup(int i) {
        const int count = static_cast<int>(groups_.size());
        const int position = i < 0 ? count + i : i;
        return position < 0 || position >= count ? nullptr : &groups_[std::size_t(position)];
    }
    Group* getCurrentGroup() { return getGroup(static_cast<int>(current_)); }
    int getNumGroups(bool distinct) const {
        if (!distinct)
            return static_cast<int>(groups_.size());
        int count = 0;
        for (const Group& group : groups_)
            if (!group.dynamic)
                ++count;
        return !groups_.empty() && groups_[0].dynamic ? count + 1 : count;
    }
    bool undoAvailable() const { return current_ != 0; }
    bool doAvailable() const { return current_ != groups_.size(); }
    Group* findGroupWithID(int id) {
        for (Group& group : groups_)
            if (group.id == id)
                return &group;
        return nullptr;
    }
    bool willGroupBeUndone(int id) const {
        if (current_ == 0)
            return false;
        for (std::size_t i = current_;;) {
            --i;
            if (groups_[i].id <= id)
                return true;
            if (i == 0 || !groups_[i].dynamic)
                return false;
        }
    }
    void deleteLastGroup() {
        if (current_ != groups_.size() || groups_.empty())
            return;
        if (groups_.back().commands.empty())
            destroy(groups_.size() - 1);
        else
            clearAllGroups();
    }
    void clearAllGroups() {
        while (!groups_.empty())
            destroy(0);
    }
    void associateGroups(int first, int last) {
        bool isFirst = true;
        for (Group& group : groups_) {
            if (group.id >= first && group.id <= last) {
                group.dynamic = !isFirst;
                isFirst = false;
            }
        }
    }
    void deletePtr(const void* p) {
        for (Group& group : groups_)
            if (group.isPointerPresent(p))
                group.stateInvalid();
    }
    int newID() { return ++lastGroupID_; }
    void setUndoGroupLimit(int limit) {
        groupLimit_ = limit;
        if (current_ == groups_.size())
            respectLimits(false);
    }
    void setUndoMemoryLimit(int limit) {
        memoryLimit_ = limit;
        if (current_ == groups_.size())
            respectLimits(false);
    }
    int getUndoGroupLimit() const { return groupLimit_; }
    int getUndoMemoryLimit() const { return memoryLimit_; }

    void destroy(std::size_t i) {
        groups_[i].getNumBytesUsed();
        activity(true);
        for (const Command& command : groups_[i].commands)
            world_.log += "commit " + command.script.tag + '\n';
        for (const Command& command : groups_[i].commands)
            world_.log += "delete " + command.script.tag + '\n';
        groups_.erase(groups_.begin() + static_cast<std::ptrdiff_t>(i));
        if (i < current_)
            --current_;
        activity(false);
    }

private:
    void activity(bool begins) {
        world_.log += (begins ? "begin " : "end ") + std::to_string(groups_.size()) +
                      (active_ ? " active\n" : "\n");
    }
    int getNumBytesUsed() const {
        long long sum = 0;
        for (const Group& group : groups_)
            sum += group.getNumBytesUsed();
        return static_cast<int>(std::min<long long>(sum, INT_MAX));
    }
    void respectLimits(bool makeRoom) {
        if (groupLimit_ != 0) {
            while ((makeRoom ? groupLimit_ - 1 : groupLimit_) < getNumGroups(true)) {
                if (groups_.empty() || !groups_[0].freeable)
                    break;
                deleteFirstGroup();
            }
        }
        if (memoryLimit_ != 0) {
            while (memoryLimit_ < getNumBytesUsed()) {
                if (groups_.empty() || !groups_[0].freeable)
                    break;
                deleteFirstGroup();
            }
        }
        current_ = groups_.size();
    }
    void deleteFirstGroup() {
        const bool wasDynamic = groups_[0].dynamic;
        destroy(0);
        while (!wasDynamic && !groups_.empty() && groups_[0].dynamic)
            destroy(0);
    }

    World& world_;
    std::vector<Group> groups_;
    std::size_t current_ = 0;
    int lastGroupID_ = 0;
    int groupLimit_ = 0;
    int memoryLimit_ = 10000000;
    bool active_ = false;
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
    Script script_;
    int runs_ = 0;
};

/// A manager and its twin, which get the same random operations.
class Trial {
public:
    explicit Trial(unsigned int seed) : random_(seed) {
        real_->activitySignal.connect(this, &Trial::observe);
    }

    void run(int steps) {
        for (int i = 0; i < steps && !testing::Test::HasFailure(); ++i) {
            step();
            ASSERT_EQ(realWorld_.log, twinWorld_.log) << "step " << i;
            ASSERT_EQ(realWorld_.document, twinWorld_.document) << "step " << i;
            ASSERT_EQ(realWorld_.sizesAsked, twinWorld_.sizesAsked) << "step " << i;
            const int id = lastID_ - below(12);
            ASSERT_EQ(seen(*real_, id), seen(twin_, id)) << "step " << i;
            realWorld_.log.clear();
            twinWorld_.log.clear();
            realWorld_.sizesAsked = twinWorld_.sizesAsked;
        }
    }

    /// How often undoIt() and doIt() failed.
    int failures() const { return failures_; }

private:
    int below(int n) { return static_cast<int>(random_() % static_cast<unsigned int>(n)); }

    void observe(bool begins) {
        realWorld_.log += (begins ? "begin " : "end ") +
                          std::to_string(real_->getNumGroups(false)) +
                          (real_->currentlyActive() ? " active\n" : "\n");
    }

    /// Does the same to both sides, which must give the same result.
    template<class Operation>
    void both(Operation operation) {
        if constexpr (std::is_void_v<decltype(operation(twin_))>) {
            operation(*real_);
            operation(twin_);
        } else {
            const auto result = operation(*real_);
            ASSERT_EQ(result, operation(twin_));
        }
    }

    /// The same to one group of both sides, if there is any.
    template<class Operation>
    void bothGroups(Operation operation) {
        const int count = twin_.getNumGroups(false);
        if (count == 0)
            return;
        const int i = below(2 * count) - count;
        both([&](auto& manager) { return operation(*manager.getGroup(i)); });
    }

    void step() {
        const int kind = below(100);
        const bool flag = below(2) == 0;
        if (kind < 25)
            newGroup();
        else if (kind < 30)
            addCommand(below(2 * (1 + twin_.getNumGroups(false))));
        else if (kind < 50)
            turn([](auto& manager) { return manager.undoIt(); });
        else if (kind < 64)
            turn([](auto& manager) { return manager.doIt(); });
        else if (kind < 67)
            both([n = pick({-1, 0, 0, 1, 2, 5, 8})](auto& m) { m.setUndoGroupLimit(n); });
        else if (kind < 70)
            both([n = pick({-1, 0, 2000, 9000, 30000})](auto& m) { m.setUndoMemoryLimit(n); });
        else if (kind < 74)
            bothGroups([p = pointer()](auto& group) { group.declarePtr(p); });
        else if (kind < 76)
            both([p = pointer()](auto& manager) { manager.deletePtr(p); });
        else if (kind < 79)
            bothGroups([is = below(3) != 0](auto& group) { group.setGroupFreeable(is); });
        else if (kind < 83)
            bothGroups([flag](auto& group) { group.setGroupDynamic(flag); });
        else if (kind < 86)
            both([first = lastID_ - below(9), n = below(5) - 1](auto& manager) {
                manager.associateGroups(first, first + n);
            });
        else if (kind < 88)
            both([](auto& manager) { manager.deleteLastGroup(); });
        else if (kind < 90)
            deleteOneGroup();
        else if (kind < 92)
            bothGroups([flag](auto& group) { return flag ? group.doIt() : group.undoIt(); });
        else if (kind == 92)
            bothGroups([](auto& group) {
                if (auto* command = group.getCommand(0))
                    command->stateInvalid();
            });
        else if (kind == 93)
            both([](auto& manager) { return manager.newID(); });
        else if (kind == 94 && below(10) == 0)
            both([](auto& manager) { manager.clearAllGroups(); });
    }

    int pick(std::vector<int> choices) {
        return choices[static_cast<std::size_t>(below(static_cast<int>(choices.size())))];
    }

    const void* pointer() {
        const int i = below(12);
        return i == 0 ? nullptr : &objects_[i];
    }

    template<class Operation>
    void turn(Operation operation) {
        both([&](auto& manager) {
            const bool succeeded = operation(manager);
            failures_ += !succeeded;
            return succeeded;
        });
    }

    void newGroup() {
        const bool isDynamic = below(3) == 0;
        both([&](auto& manager) { return manager.newGroup("step", isDynamic) != nullptr; });
        for (int n = below(4); n > 0; --n)
            addCommand(twin_.getNumGroups(false) - 1);
    }

    /// To the group at this position, in each of the ways; the change is made first.
    void addCommand(int i) {
        Group* group = twin_.getGroup(i);
        if (!group)
            return;
        zeUndo::Group* realGroup = real_->getGroup(i);
        const Script script{std::to_string(++lastTag_), static_cast<unsigned int>(below(1000)),
                            below(1000) == 0 ? INT_MAX : below(3000),
                            below(100) == 0 ? 1 + below(4) : 0};
        for (World* world : {&realWorld_, &twinWorld_}) {
            int runs = -2; // none that fails
            world->run(script, runs, true);
        }
        if (below(2) == 0)
            new RealCommand(realGroup, realWorld_, script);
        else
            realGroup->addCommand(new RealCommand(nullptr, realWorld_, script));
        group->commands.push_back({{}, &twinWorld_, script, group->getNumCommands() + 1});
    }

    void deleteOneGroup() {
        if (const int count = twin_.getNumGroups(false); count != 0) {
            const int i = below(count);
            delete real_->getGroup(i);
            twin_.destroy(static_cast<std::size_t>(i));
        }
    }

    static int word(const zeUndo::State& state) {
        return state.hasBeenDone() | state.hasBeenUndone() << 1 | state.lastWasDoIt() << 2 |
               state.lastWasUndoIt() << 3 | state.isValid() << 4;
    }
    static int word(const State& state) { return static_cast<int>(state.flags); }

    /// All that one side answers.
    template<class Side>
    std::vector<int> seen(Side& side, int id) {
        auto idOf = [](auto* group) { return group ? group->getID() : 0; };
        const int count = side.getNumGroups(false);
        std::vector<int> answers{count,
                                 side.getNumGroups(true),
                                 side.undoAvailable(),
                                 side.doAvailable(),
                                 idOf(side.getCurrentGroup()),
                                 idOf(side.findGroupWithID(id)),
                                 side.willGroupBeUndone(id),
                                 side.getUndoGroupLimit(),
                                 side.getUndoMemoryLimit(),
                                 idOf(side.getGroup(count)),
                                 idOf(side.getGroup(-count - 1))};
        for (int i = 0; i < count; ++i) {
            auto& group = *side.getGroup(i);
            lastID_ = group.getID();
            answers.insert(answers.end(),
                           {group.getID(), word(group), group.isGroupDynamic(),
                            group.isGroupFreeable(), group.getNumCommands(),
                            group.getNumBytesUsed(), idOf(side.getGroup(i - count)),
                            group.isPointerPresent(&objects_[1]), group.getCommand(-1) != nullptr});
            for (int c = 0; auto* command = group.getCommand(c); ++c)
                answers.insert(answers.end(), {command->getID(), word(*command)});
        }
        return answers;
    }

    std::mt19937 random_;
    World realWorld_;
    World twinWorld_;
    std::unique_ptr<zeUndo::Manager> real_{zeUndo::newManager()};
    Manager twin_{twinWorld_};
    char objects_[12] = {};
    int lastTag_ = 0;
    int lastID_ = 0;
    int failures_ = 0;
};

} // namespace twin

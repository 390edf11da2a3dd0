// SPDX-License-Identifier: MIT

#include "Base/Undo/zeUndoGroupImpl.h"

#include <algorithm>
#include <limits>

#include "Base/Undo/zeUndoManager.h"
#include "Base/Undo/zeUndoReportImpl.h"
#include "Base/Utility/zeUtilWrap.h"

namespace zeUndo {

int saturatedSize(long long bytes) {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<long long>(bytes, Limits::min(), Limits::max()));
}

GroupImpl::GroupImpl(Manager* manager, const char* name)
    : id_(manager->newID()), manager_(manager), name_(name) {
    report("  zeUndo::Group: new group (%s)\n", getName());
}

GroupImpl::~GroupImpl() {
    report("  zeUndo::Group: delete group (%s) - %d bytes\n", getName(), getNumBytesUsed());
    manager_->activitySignal.send(true);
    for (std::size_t i = 0; i < commands_.size(); ++i)
        commands_[i]->commit();
    deleteCommands();
    destroyedSignal.send(this);
    manager_->activitySignal.send(false);
}

// Whoever asks this group from a command's destructor meets an empty one, not commands that are
// gone.
void GroupImpl::deleteCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.swap(commands_);
    for (std::unique_ptr<Command>& command : commands)
        command.reset();
}

// In both directions the commands are counted anew at each step, since a command may, against the
// rules, add another one.
bool GroupImpl::doIt() {
    report("  + zeUndo::Group: doIt() - (%s) %d commands %d bytes.\n", getName(), getNumCommands(),
           getNumBytesUsed());
    if (!isValid()) {
        report("  ! zeUndo::Group: doIt() - (%s) invalid group.\n", getName());
        return false;
    }
    if (lastWasDoIt())
        return true;
    for (std::size_t i = 0; i < commands_.size(); ++i)
        if (!commands_[i]->doIt())
            return failed("  ! zeUndo::Group: 'do' of command %d (%s) returnedfailure status\n", i);
    stateDone();
    return true;
}

bool GroupImpl::undoIt() {
    report("  - zeUndo::Group: undoIt() - (%s) %d commands %d bytes.\n", getName(),
           getNumCommands(), getNumBytesUsed());
    if (!isValid()) {
        report("  ! zeUndo::Group: undoIt() - (%s) invalid group.\n", getName());
        return false;
    }
    if (lastWasUndoIt())
        return true;
    for (std::size_t i = commands_.size(); i-- > 0;)
        if (!commands_[i]->undoIt())
            return failed("  ! zeUndo::Group: 'undo' of command %d (%s) returnedfailure status\n",
                          i);
    stateUndone();
    return true;
}

// The commands that ran are not rolled back: another failure would not be far.
bool GroupImpl::failed(const char* format, std::size_t index) {
    report(format, static_cast<int>(index), commands_[index]->getName());
    report("  ! zeUndo::Group: marking group (%s) invalid.\n", getName());
    stateInvalid();
    return false;
}

void GroupImpl::addCommand(Command* command) {
    if (!command)
        return;
    if (command->getID() == 0) {
        command->addToGroup(this); // comes back with a number
        return;
    }
    validate();
    commands_.emplace_back(command);
}

// A negative position counts from the end in the wrong direction, and so lies beyond it: null.
Command* GroupImpl::getCommand(int i) const {
    const auto count = static_cast<long long>(commands_.size());
    const long long position = i < 0 ? count - i : i;
    return position < count ? commands_[static_cast<std::size_t>(position)].get() : nullptr;
}

int GroupImpl::getNumCommands() const {
    return static_cast<int>(commands_.size());
}

int GroupImpl::getNumBytesUsed() const {
    long long sum = 0;
    for (const std::unique_ptr<Command>& command : commands_)
        sum += command->getNumBytesUsed();
    return saturatedSize(sum);
}

const char* GroupImpl::getName() const {
    return name_.c_str();
}

int GroupImpl::getID() const {
    return id_;
}

int GroupImpl::newID() {
    return lastCommandID_ = zeUtil::wrappedSum(lastCommandID_, 1);
}

void GroupImpl::setGroupFreeable(bool freeable) {
    freeable_ = freeable;
}

bool GroupImpl::isGroupFreeable() const {
    return freeable_;
}

bool GroupImpl::isGroupDynamic() const {
    return dynamic_;
}

void GroupImpl::setGroupDynamic(bool dynamic) {
    dynamic_ = dynamic;
}

void GroupImpl::declarePtr(const void* p) {
    if (p)
        pointers_.insert(p);
}

bool GroupImpl::isPointerPresent(const void* p) const {
    return pointers_.contains(p);
}

void GroupImpl::deletePtr(const void* p) {
    if (!isPointerPresent(p))
        return;
    report("!   zeUndo::Group: pointer 0x%p declared by group has been destroyed\n", p);
    report("!   zeUndo::Group: marking group (%s) invalid.\n", getName());
    stateInvalid();
}

void GroupImpl::validate() {}

} // namespace zeUndo

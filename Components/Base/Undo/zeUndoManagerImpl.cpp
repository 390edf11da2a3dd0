// SPDX-License-Identifier: MIT

#include "Base/Undo/zeUndoManagerImpl.h"

#include <cassert>
#include <initializer_list>
#include <memory>

#include "Base/Undo/zeUndoReportImpl.h"
#include "Base/Utility/zeUtilWrap.h"

namespace zeUndo {

ManagerImpl::~ManagerImpl() {
    deleteAllGroups();
}

// One round for each chain: an empty one is followed by the next, in a loop, since there may be
// many of them.
bool ManagerImpl::undoIt() {
    assert(!active_);
    for (;;) {
        report("- zeUndo::Manager: undoIt() - %d groups, %d bytes used\n", getNumGroups(false),
               getNumBytesUsed());
        if (!undoAvailable()) {
            report("- zeUndo::Manager: undoIt() - at beginning of queue.\n");
            return true;
        }
        bool isEmpty = true;
        const bool succeeded = undoChain(isEmpty);
        if (!isEmpty)
            return succeeded;
        report("- zeUndo::Manager: undoIt() - empty group, undoing again.\n");
    }
}

bool ManagerImpl::doIt() {
    assert(!active_);
    for (;;) {
        report("+ zeUndo::Manager: doIt() - %d groups, %d bytes used\n", getNumGroups(false),
               getNumBytesUsed());
        if (!doAvailable()) {
            report("+ zeUndo::Manager: doIt() - at end of queue.\n");
            return true;
        }
        bool isEmpty = true;
        const bool succeeded = doChain(isEmpty);
        if (!isEmpty)
            return succeeded;
        report("+ zeUndo::Manager: doIt() - empty group, doing again.\n");
    }
}

// A chain is undone from its last group to its first, the one that is not dynamic.
bool ManagerImpl::undoChain(bool& isEmpty) {
    beginActivity();
    bool succeeded;
    do {
        current_ = beforeCurrent();
        if (current_->getNumCommands() != 0)
            isEmpty = false;
        succeeded = current_->undoIt();
        if (!succeeded)
            currentGroupIsInvalid();
    } while (succeeded && beforeCurrent() && current_->isGroupDynamic());
    endActivity();
    return succeeded;
}

// A chain is done up to the next group that is not dynamic, which is another chain's first.
bool ManagerImpl::doChain(bool& isEmpty) {
    beginActivity();
    bool succeeded;
    do {
        if (current_->getNumCommands() != 0)
            isEmpty = false;
        succeeded = current_->doIt();
        if (succeeded)
            current_ = current_->next();
        else
            currentGroupIsInvalid();
    } while (succeeded && current_ && current_->isGroupDynamic());
    endActivity();
    return succeeded;
}

void ManagerImpl::beginActivity() {
    active_ = true;
    activitySignal.send(true);
}

void ManagerImpl::endActivity() {
    activitySignal.send(false);
    active_ = false;
}

Group* ManagerImpl::newGroup(const char* name, bool dynamic) {
    assert(name && !active_);
    if (groupLimit_ < 0)
        return nullptr;
    report("--------------------------------------------------------\n");
    report("zeUndo::newGroup (%s, dynamic = %d)\n", name, dynamic);
    pruneUndoneGroups();
    pruneTrailingInvalidGroups();
    if (groups_.last())
        groups_.last()->validate();
    respectLimits(true);
    auto group = std::make_unique<GroupImpl>(this, name);
    group->setGroupDynamic(dynamic);
    group->destroyedSignal.connect(signalClient_, this, &ManagerImpl::unregisterGroup);
    groups_.insertBefore(nullptr, group.get());
    current_ = nullptr;
    return group.release();
}

Group* ManagerImpl::getGroup(int i) const {
    GroupImpl* group;
    if (i >= 0)
        for (group = groups_.first(); group && i > 0; --i)
            group = group->next();
    else
        for (group = groups_.last(); group && i < -1; ++i)
            group = group->prev();
    return group;
}

Group* ManagerImpl::getCurrentGroup() const {
    return current_;
}

int ManagerImpl::getNumGroups(bool distinct) const {
    if (distinct)
        return getNumDistinctGroupGroups();
    int count = 0;
    for (const GroupImpl* group = groups_.first(); group; group = group->next())
        ++count;
    return count;
}

int ManagerImpl::getNumDistinctGroupGroups() const {
    int count = groups_.first() && groups_.first()->isGroupDynamic();
    for (const GroupImpl* group = groups_.first(); group; group = group->next())
        count += !group->isGroupDynamic();
    return count;
}

int ManagerImpl::getNumBytesUsed() const {
    long long sum = 0;
    for (const GroupImpl* group = groups_.first(); group; group = group->next())
        sum += group->getNumBytesUsed();
    return saturatedSize(sum);
}

bool ManagerImpl::undoAvailable() const {
    return current_ != groups_.first();
}

bool ManagerImpl::doAvailable() const {
    return current_ != nullptr;
}

/// The last group that is done; null if there is none.
GroupImpl* ManagerImpl::beforeCurrent() const {
    return current_ ? current_->prev() : groups_.last();
}

Group* ManagerImpl::findGroupWithID(int id) const {
    GroupImpl* group = groups_.first();
    while (group && group->getID() != id)
        group = group->next();
    return group;
}

bool ManagerImpl::willGroupBeUndone(int id) const {
    for (const GroupImpl* group = beforeCurrent(); group; group = group->prev()) {
        if (group->getID() <= id)
            return true;
        if (!group->isGroupDynamic())
            return false;
    }
    return false;
}

void ManagerImpl::deleteLastGroup() {
    assert(!active_);
    if (doAvailable() || !groups_.last())
        return;
    report("zeUndo::Manager: deleteLastGroup()\n");
    if (groups_.last()->getNumCommands() == 0)
        delete groups_.last();
    else
        deleteAllGroups();
}

void ManagerImpl::clearAllGroups() {
    assert(!active_);
    deleteAllGroups();
}

void ManagerImpl::deleteAllGroups() {
    report("zeUndo::Manager: clearAllGroups()\n");
    while (groups_.first())
        delete groups_.first(); // leaves the queue by itself
    current_ = nullptr;
}

void ManagerImpl::associateGroups(int first, int last) {
    report("zeUndo::Manager: associateGroups (%d, %d)\n", first, last);
    bool isChainBegun = false;
    for (GroupImpl* group = groups_.first(); group; group = group->next()) {
        if (group->getID() < first || group->getID() > last)
            continue;
        group->setGroupDynamic(isChainBegun);
        isChainBegun = true;
    }
}

void ManagerImpl::deletePtr(const void* p) {
    for (GroupImpl* group = groups_.first(); group; group = group->next())
        group->deletePtr(p);
}

int ManagerImpl::newID() {
    return lastGroupID_ = zeUtil::wrappedSum(lastGroupID_, 1);
}

void ManagerImpl::setUndoGroupLimit(int limit) {
    assert(!active_);
    groupLimit_ = limit;
    if (!doAvailable())
        respectLimits(false);
}

void ManagerImpl::setUndoMemoryLimit(int limit) {
    assert(!active_);
    memoryLimit_ = limit;
    if (!doAvailable())
        respectLimits(false);
}

int ManagerImpl::getUndoGroupLimit() const {
    return groupLimit_;
}

int ManagerImpl::getUndoMemoryLimit() const {
    return memoryLimit_;
}

bool ManagerImpl::currentlyActive() const {
    return active_;
}

void ManagerImpl::unregisterGroup(Group* group) {
    GroupImpl* dying = foundInQueue(group);
    if (!dying)
        return;
    if (current_ == dying)
        current_ = dying->next();
    groups_.remove(dying);
}

/// The group at this address; null if it is not in the queue. The manager itself deletes at the
/// ends and at the position only, so that deleting many of many groups stays cheap.
GroupImpl* ManagerImpl::foundInQueue(const Group* group) const {
    for (GroupImpl* likely : {groups_.first(), current_, groups_.last()})
        if (likely == group)
            return likely;
    GroupImpl* found = groups_.first();
    while (found && found != group)
        found = found->next();
    return found;
}

void ManagerImpl::pruneUndoneGroups() {
    if (!current_)
        return;
    report("zeUndo::Manager: pruneUndoneGroups()\n");
    while (current_)
        delete current_; // the next one takes its place
}

void ManagerImpl::pruneTrailingInvalidGroups() {
    report("zeUndo::Manager: pruneTrailingInvalidGroups()\n");
    while (groups_.last() && !groups_.last()->isValid() && groups_.last()->isGroupFreeable()) {
        delete groups_.last();
        current_ = nullptr;
    }
}

void ManagerImpl::respectLimits(bool makeRoom) {
    if (groupLimit_ != 0)
        respectGroupLimit(makeRoom ? groupLimit_ - 1 : groupLimit_);
    if (memoryLimit_ != 0)
        respectMemoryLimit(memoryLimit_);
    current_ = nullptr;
}

// Counted anew after each deletion, since observers of it may change the queue.
void ManagerImpl::respectGroupLimit(int limit) {
    while (hasMoreChainsThan(limit) && canDeleteFirstGroup())
        deleteFirstGroup();
}

/// Counts no farther than it must: dropping most of a long queue then stays cheap.
bool ManagerImpl::hasMoreChainsThan(int limit) const {
    int count = groups_.first() && groups_.first()->isGroupDynamic();
    for (const GroupImpl* group = groups_.first(); group && count <= limit; group = group->next())
        count += !group->isGroupDynamic();
    return count > limit;
}

void ManagerImpl::respectMemoryLimit(int limit) {
    while (limit < getNumBytesUsed() && canDeleteFirstGroup())
        deleteFirstGroup();
}

/// A negative limit is passed by an empty queue, too.
bool ManagerImpl::canDeleteFirstGroup() const {
    return groups_.first() && groups_.first()->isGroupFreeable();
}

/// Deletes the oldest chain, or one group of a chain whose first one is gone already.
void ManagerImpl::deleteFirstGroup() {
    const bool wasDynamic = groups_.first()->isGroupDynamic();
    delete groups_.first();
    if (wasDynamic)
        return;
    while (groups_.first() && groups_.first()->isGroupDynamic())
        delete groups_.first();
}

// Nothing older or younger than what could not be made can be trusted.
void ManagerImpl::currentGroupIsInvalid() {
    if (!groups_.first())
        return;
    report("zeUndo::Manager: currentGroupIsInvalid()\n");
    deleteAllGroups();
}

} // namespace zeUndo

// SPDX-License-Identifier: MIT

/// @file
/// The undo history behind zeUndo::newManager().

#pragma once

#include "Base/Undo/zeUndoGroupImpl.h"
#include "Base/Undo/zeUndoManager.h"

namespace zeUndo {

class ManagerImpl final : public Manager {
public:
    ManagerImpl() = default;
    ~ManagerImpl() override;

    bool undoIt() override;
    bool doIt() override;
    Group* newGroup(const char* name, bool dynamic) override;
    Group* getGroup(int i) const override;
    Group* getCurrentGroup() const override;
    int getNumGroups(bool distinct) const override;
    bool undoAvailable() const override;
    bool doAvailable() const override;
    Group* findGroupWithID(int id) const override;
    bool willGroupBeUndone(int id) const override;
    void deleteLastGroup() override;
    void clearAllGroups() override;
    void associateGroups(int first, int last) override;
    void deletePtr(const void* p) override;
    int newID() override;
    void setUndoGroupLimit(int limit) override;
    void setUndoMemoryLimit(int limit) override;
    int getUndoGroupLimit() const override;
    int getUndoMemoryLimit() const override;
    bool currentlyActive() const override;

    /// Takes a group that is being destroyed out of the queue; one that is not in it is ignored. If
    /// it is `current_`, the next one takes that place.
    virtual void unregisterGroup(Group* group);

    /// The sum over the groups, at most 2,147,483,647.
    int getNumBytesUsed() const;

private:
    GroupImpl* beforeCurrent() const;
    GroupImpl* foundInQueue(const Group* group) const;
    int getNumDistinctGroupGroups() const;
    bool undoChain(bool& isEmpty);
    bool doChain(bool& isEmpty);
    void beginActivity();
    void endActivity();
    void pruneUndoneGroups();
    void pruneTrailingInvalidGroups();
    void respectLimits(bool makeRoom);
    void respectGroupLimit(int limit);
    bool hasMoreChainsThan(int limit) const;
    void respectMemoryLimit(int limit);
    bool canDeleteFirstGroup() const;
    void deleteFirstGroup();
    void currentGroupIsInvalid();
    void deleteAllGroups();

    zeRTB::SignalClient signalClient_;
    zeUtil::LinkedList<GroupImpl> groups_; ///< Owned; the oldest first.
    /// The groups before it are done, it and those after it undone; null if none is.
    GroupImpl* current_ = nullptr;
    int lastGroupID_ = 0;
    int groupLimit_ = 0; ///< In chains; 0 for no limit, negative for no undo.
    int memoryLimit_ = 10'000'000;
    bool active_ = false;
};

} // namespace zeUndo

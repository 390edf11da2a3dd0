// SPDX-License-Identifier: MIT

/// @file
/// The one kind of group that a manager makes.

#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Base/Undo/zeUndoCommand.h"
#include "Base/Undo/zeUndoGroup.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeUtilLinkedList.h"

namespace zeUndo {

class Manager;

/// What a sum of sizes can hold of this one.
int saturatedSize(long long bytes);

/// A group, which is an element of its manager's queue as well.
class GroupImpl final : public Group, public zeUtil::LinkedListNode<GroupImpl> {
public:
    GroupImpl(Manager* manager, const char* name);
    ~GroupImpl() override;

    bool doIt() override;
    bool undoIt() override;
    void addCommand(Command* command) override;
    Command* getCommand(int i) const override;
    int getNumCommands() const override;
    int getNumBytesUsed() const override;
    const char* getName() const override;
    int getID() const override;
    int newID() override;
    void setGroupFreeable(bool freeable) override;
    bool isGroupFreeable() const override;
    bool isGroupDynamic() const override;
    void setGroupDynamic(bool dynamic) override;
    void declarePtr(const void* p) override;
    bool isPointerPresent(const void* p) const override;
    void deletePtr(const void* p) override;
    void validate() override;

    /// Sent by the destructor, when the commands are gone: the manager takes the group out.
    zeRTB::SignalArg<Group*> destroyedSignal;

private:
    bool failed(const char* format, std::size_t index);
    void deleteCommands();

    std::vector<std::unique_ptr<Command>> commands_; ///< In the order of adding.
    std::set<const void*> pointers_;
    int id_;
    int lastCommandID_ = 0;
    Manager* manager_;
    std::string name_;
    bool dynamic_ = false;
    bool freeable_ = true;
};

} // namespace zeUndo

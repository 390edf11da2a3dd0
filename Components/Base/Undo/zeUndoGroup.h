// SPDX-License-Identifier: MIT

/// @file
/// One step of an undo history, an ordered list of commands: zeUndo::Group.
///
/// A group comes from zeUndo::Manager::newGroup(); the library has one kind, and does not show its
/// class. It is done from its first command to the last, and undone from the last to the first. If
/// a command fails, the group stops there, rolls nothing back and is invalid; the manager then
/// drops its whole history.
///
/// **Chains.** A dynamic group has no undo step of its own: it belongs to the group before it. A
/// group that is not dynamic and all dynamic groups that follow it directly are a chain, and the
/// manager undoes and does whole chains.
///
/// **Pointers.** A command may depend on an object that it does not own. The group declares the
/// object's address, and whoever destroys the object calls zeUndo::Manager::deletePtr(): every
/// group that declared the address becomes invalid, and no command runs on a destroyed object. The
/// address stays declared, also when another object takes its place.
///
/// **Ownership.** The manager owns its groups, and a group its commands. A pointer to a group is
/// valid until the manager drops it: in newGroup(), after a failed undoIt() or doIt(), in the
/// calls that delete groups and those that set limits. An application may delete a group by
/// itself: it leaves the queue. Groups go in this order: commit() of every command, first to last,
/// then the destructor of every command, then the group itself. The manager's activitySignal fires
/// before and after.
///
/// Threads: a group belongs to the thread of its manager.
///
/// @code
/// #include "Base/Undo/zeUndoCommand.h"
/// #include "Base/Undo/zeUndoManager.h"
/// struct Append : zeUndo::Command {
///     Append(zeUndo::Group* group, int& itsLength) : Command(group, "append"), length(itsLength) {
///         ++length;
///     }
///     bool doCommand() override { return ++length > 0; }
///     bool undoCommand() override { return length-- > 0; }
///     int& length;
/// };
/// zeUndo::Manager* manager = zeUndo::newManager();
/// int length = 0;
/// zeUndo::Group* group = manager->newGroup("type a word", false);
/// for (int i = 0; i < 4; ++i)
///     new Append(group, length); // the group owns it
/// group->declarePtr(&length);
/// assert(group->getNumCommands() == 4 && group->getCommand(3)->getID() == 4);
/// assert(group->undoIt() && length == 0);
/// manager->deletePtr(&length);
/// assert(!group->isValid() && !group->doIt() && length == 0);
/// delete manager;
/// @endcode

#pragma once

#include "Base/Undo/zeUndoState.h"
#include "Base/zeBaseExport.h"

namespace zeUndo {

class Command;

/// The interface of a group.
class ZEBASE_API Group : public State {
public:
    Group() = default;
    Group(const Group&) = delete; ///< A group is known by its address, and owns its commands.
    Group& operator=(const Group&) = delete;

    /// Commits and deletes the commands, and takes the group out of its manager's queue.
    virtual ~Group();

    /// Does the commands, first to last. True at once if the last operation was a do. False if the
    /// group is invalid, or if a command fails, which makes it so. Normally called by the manager.
    virtual bool doIt() = 0;

    /// The same backwards: undoes the commands, last to first.
    virtual bool undoIt() = 0;

    /// Appends a command, made by `new`, which the group owns from here on; null is ignored. A
    /// command without a number gets one, by Command::addToGroup(); one that has a number must not
    /// belong to any group yet. If memory runs out, std::bad_alloc is thrown and the command stays
    /// with the caller.
    virtual void addCommand(Command* command) = 0;

    /// The command at a position from 0; null for any other, negative ones included.
    virtual Command* getCommand(int i) const = 0;

    /// The number of commands.
    virtual int getNumCommands() const = 0;

    /// The sum of Command::getNumBytesUsed(), at most 2,147,483,647.
    virtual int getNumBytesUsed() const = 0;

    /// The name that Manager::newGroup() was given.
    virtual const char* getName() const = 0;

    /// The number within the manager, which grows from 1 in the order in which groups are made.
    virtual int getID() const = 0;

    /// A number for another command, from 1 upwards.
    virtual int newID() = 0;

    /// Whether limits, and the pruning of invalid groups at the end of the queue, may delete the
    /// group; true at first. Neither goes past a group that is not freeable, so that it also keeps
    /// the younger ones from a limit. All else deletes it as any other.
    virtual void setGroupFreeable(bool freeable) = 0;

    /// What setGroupFreeable() has set.
    virtual bool isGroupFreeable() const = 0;

    /// Whether the group belongs to the one before it.
    virtual bool isGroupDynamic() const = 0;

    /// Makes the group dynamic, or the first of its chain.
    virtual void setGroupDynamic(bool dynamic) = 0;

    /// Declares an object that the commands depend on. Null, and what is declared already, are
    /// ignored. The cost grows with the logarithm of the number of declared pointers.
    virtual void declarePtr(const void* p) = 0;

    /// Whether declarePtr() was called for this address.
    virtual bool isPointerPresent(const void* p) const = 0;

    /// Makes the group invalid if the address is declared. See Manager::deletePtr().
    virtual void deletePtr(const void* p) = 0;

    /// Called when the group is about to get a command, and when a group is to follow it. Does
    /// nothing here; it is there for other implementations of groups.
    virtual void validate() = 0;
};

} // namespace zeUndo

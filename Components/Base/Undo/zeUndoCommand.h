// SPDX-License-Identifier: MIT

/// @file
/// One change that can be undone and done again: zeUndo::Command, the base of an application's own.
///
/// A command holds what it takes to turn its change back and forth. The application performs the
/// change itself when it makes the command, so that the first thing that happens to a command is
/// normally undoCommand(). From then on the two operations alternate: a command whose last
/// operation was a do is not done again.
///
/// **Ownership.** A command is made by `new` and given to a group (see zeUndoGroup.h), by the
/// constructor or by zeUndo::Group::addCommand(). The group owns it from then on, and deletes it
/// when the group goes.
///
/// **Failure.** doCommand() and undoCommand() return false when the change cannot be made. They let
/// no exception out. A command that failed is invalid for good, so is its group, and the manager
/// drops its whole history: nothing that it holds can be trusted any more.
///
/// **What commands may call.** While a command runs, it may ask the manager and its groups
/// anything, and call deletePtr(), but must not change the queue: no newGroup(), no undoIt() in
/// undoIt(). The same holds for commit() and the destructor, and for getNumBytesUsed(), which is
/// called very often. An editor whose ordinary functions record commands asks
/// zeUndo::Manager::currentlyActive() first.
///
/// Threads: a command belongs to the thread of its manager.
///
/// @code
/// struct Assign : zeUndo::Command {
///     Assign(zeUndo::Group* group, int& itsTarget, int value)
///         : Command(group, "assign"), target(itsTarget), other(itsTarget) {
///         target = value; // the change itself
///     }
///     bool doCommand() override { return exchange(); }
///     bool undoCommand() override { return exchange(); }
///     int getNumBytesUsed() const override { return sizeof *this; }
///     bool exchange() {
///         const int value = target;
///         target = other;
///         other = value;
///         return true;
///     }
///     int& target;
///     int other; // the value that the target does not have just now
/// };
/// int answer = 41;
/// Assign command(nullptr, answer, 42);
/// assert(command.undoIt() && answer == 41);
/// assert(command.undoIt() && answer == 41); // undone already: nothing runs
/// assert(command.doIt() && answer == 42);
/// @endcode

#pragma once

#include "Base/Undo/zeUndoState.h"
#include "Base/zeBaseExport.h"

namespace zeUndo {

class Group;

/// Base of the commands. It holds a name for the trace file, and a number within its group.
class ZEBASE_API Command : public State {
public:
    /// Copies `name`, which may be null, and adds the command to `group` if that is not null. A
    /// constructor of a derived class that can throw passes null instead, and its caller calls
    /// Group::addCommand(): the group would keep a pointer to an object that never came to be.
    Command(Group* group, const char* name);
    Command(const Command&) = delete; ///< It is known by its address: make another one.
    Command& operator=(const Command&) = delete;

    /// Called by the group that owns the command, after commit().
    virtual ~Command();

    /// Makes the change again. Whether it could be made.
    virtual bool doCommand() = 0;

    /// Takes the change back. Whether it could be.
    virtual bool undoCommand() = 0;

    /// What the command costs, in the unit of Manager::setUndoMemoryLimit(), normally bytes: 1,024
    /// unless overridden. Asked for every command of the whole history by each of
    /// Manager::newGroup(), undoIt() and doIt(), traced or not, so it should be quick.
    virtual int getNumBytesUsed() const;

    /// The last word of a command: its group is going, and the change stays as it stands, done or
    /// undone. Releases what must be kept as long as the change can still be turned. Called once,
    /// before any command of the group is deleted. Does nothing unless overridden.
    virtual void commit();

    /// Runs doCommand(), unless the last operation was a do, which counts as success. False if the
    /// command is invalid, or fails and becomes so; a command that fails counts as done, too.
    bool doIt();

    /// The same with undoCommand().
    bool undoIt();

    /// Takes a number from `group`, which is not null, and adds this command to it. To be called
    /// once; Group::addCommand() does so for a command that has no number yet.
    void addToGroup(Group* group);

    /// The number within the group, from 1; 0 before the command has joined one.
    int getID() const { return id_; }

    /// The name, or "noname" without one.
    const char* getName() const;

private:
    ZEBASE_HIDDEN explicit Command(const char* name);

    int id_ = 0;
    char* name_ = nullptr; ///< Null, shortName_, or an owned block.
    char shortName_[16];   ///< Names of up to 15 bytes need no block.
};

} // namespace zeUndo

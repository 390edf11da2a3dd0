// SPDX-License-Identifier: MIT

/// @file
/// An application's undo history: zeUndo::Manager, a queue of groups and a position in it.
///
/// For each step that the user can undo, the application asks for a group, performs the change and
/// adds the commands that can turn it back. undoIt() and doIt() then walk through the queue. What
/// is before the position is done; what is after it is undone, waits to be done again, and is
/// deleted when newGroup() begins new work.
///
/// **What is thrown away.** Everything undone, at newGroup(). The oldest chains, when a limit of
/// number or memory is passed. Invalid groups at the end of the queue, at newGroup(). And the whole
/// queue as soon as one group fails: what lies beyond a step that could not be made cannot be
/// trusted.
///
/// **Chains.** A group and the dynamic groups that follow it directly are one step for the user
/// (see zeUndoGroup.h). Empty chains cost no step: undoIt() and doIt() go on to the next.
///
/// **While it is active.** During undoIt() and doIt(), commands and observers may ask anything and
/// call deletePtr(), but must not change the queue; an assertion says so. Nor may a command while
/// its group is being deleted.
///
/// **Ownership.** The manager owns its groups. A manager is deleted by the application, or by
/// installManager().
///
/// **Cost.** newGroup(), undoIt() and doIt() ask every command of the queue for its size, since
/// sizes may change. The limits keep the queue short; finding a group is linear in their number.
///
/// Threads: a manager, its groups and their commands belong to one thread at a time.
///
/// @code
/// #include "Base/Undo/zeUndoCommand.h"
/// #include "Base/Undo/zeUndoGroup.h"
/// struct Add : zeUndo::Command {
///     Add(zeUndo::Group* group, int& itsSum, int itsStep)
///         : Command(group, "add"), sum(itsSum), step(itsStep) {
///         sum += step; // the work itself; from now on the command only turns it back and forth
///     }
///     bool doCommand() override {
///         sum += step;
///         return true;
///     }
///     bool undoCommand() override {
///         sum -= step;
///         return true;
///     }
///     int& sum;
///     int step;
/// };
/// zeUndo::installManager(zeUndo::newManager());
/// zeUndo::Manager* manager = zeUndo::getInstalledManager();
/// int sum = 0;
/// new Add(manager->newGroup("add five", false), sum, 5); // the group owns it
/// new Add(manager->newGroup("add two", false), sum, 2);
/// assert(sum == 7);
/// assert(manager->undoIt() && sum == 5);
/// assert(manager->undoIt() && sum == 0 && !manager->undoAvailable());
/// assert(manager->doIt() && sum == 5);
/// new Add(manager->newGroup("add one", false), sum, 1); // "add two" cannot be done again now
/// assert(sum == 6 && !manager->doAvailable() && manager->getNumGroups(false) == 2);
/// zeUndo::installManager(nullptr); // deletes it
/// @endcode

#pragma once

#include "Base/Utility/zeRTBSignal.h"
#include "Base/zeBaseExport.h"

namespace zeUndo {

class Group;

/// The interface of the undo history. newManager() makes one.
class ZEBASE_API Manager {
public:
    /// Fired with true when undoIt() or doIt() begins a chain, and when the deletion of a group
    /// begins; with false when that ends. Deletions nest: an undo that fails sends true, then true
    /// and false for each group, then false. A callback must not throw.
    zeRTB::SignalArg<bool> activitySignal;

    Manager() = default;
    Manager(const Manager&) = delete; ///< The history is one: make another with newManager().
    Manager& operator=(const Manager&) = delete;

    /// Deletes all groups.
    virtual ~Manager();

    /// Undoes the last chain that is done, and those before it as long as they have no commands.
    /// True also if there was nothing to undo. False if a command failed or a group was invalid:
    /// all groups have been deleted then. (An invalid group without commands deletes them, too, but
    /// counts as an empty one: true.)
    virtual bool undoIt() = 0;

    /// The other direction: does the first chain again that is undone. The same results.
    virtual bool doIt() = 0;

    /// Begins a new step, or with `dynamic` a part of the last one, and returns its group, which is
    /// the newest and counts as done. `name`, not null, is copied; it is meant for the user, and
    /// appears in the trace file. Null if the limit of groups is negative. Before that, deletes
    /// what is undone, invalid freeable groups at the end, and the oldest chains as far as the
    /// limits require: one more chain must fit; the memory of the new group is not known yet.
    virtual Group* newGroup(const char* name, bool dynamic) = 0;

    /// The group at a position: 0 is the oldest, 1 the next; -1 is the newest, -2 the one before.
    /// Null beyond both ends.
    virtual Group* getGroup(int i) const = 0;

    /// The group that doIt() would do next, not the one that was done last. Null if nothing waits.
    virtual Group* getCurrentGroup() const = 0;

    /// The number of groups; if `distinct`, that of chains. Dynamic groups at the front whose first
    /// one is gone count as one more chain.
    virtual int getNumGroups(bool distinct) const = 0;

    /// Whether any group stands before the position.
    virtual bool undoAvailable() const = 0;

    /// Whether any group waits to be done again.
    virtual bool doAvailable() const = 0;

    /// The group with this number, done or undone; null if there is none.
    virtual Group* findGroupWithID(int id) const = 0;

    /// Whether the chain that undoIt() would undo next reaches back to a group numbered `id` or
    /// lower. Looks at one chain, even if that is empty and undoIt() would go on.
    virtual bool willGroupBeUndone(int id) const = 0;

    /// Drops a step that came to nothing: deletes the newest group if it has no commands. **If it
    /// has commands, deletes all groups.** Does nothing if the queue is empty, or if anything waits
    /// to be done again.
    virtual void deleteLastGroup() = 0;

    /// Deletes all groups, oldest first: what is done becomes final.
    virtual void clearAllGroups() = 0;

    /// Makes one chain of the groups numbered `first` to `last`, both included: the oldest becomes
    /// its first one, the others dynamic.
    virtual void associateGroups(int first, int last) = 0;

    /// Says that an object is being destroyed: every group that declared its address becomes
    /// invalid. Nothing is deleted yet. An undoIt() or doIt() that meets such a group fails, and
    /// costs the history.
    virtual void deletePtr(const void* p) = 0;

    /// A number for another group, from 1 upwards.
    virtual int newID() = 0;

    /// @{
    /// Sets how many chains, or how many bytes as Command::getNumBytesUsed() counts them, the queue
    /// may hold; 0 means no limit. Takes effect at once if nothing waits to be done again, or else
    /// with the next newGroup(). The oldest chains go, up to one whose first group is not freeable.
    /// A negative limit of groups switches undo off: newGroup() gives null from then on. Call
    /// clearAllGroups() first. With a negative limit of bytes, each newGroup() drops all that is
    /// older. At first there is no limit of groups, and one of 10,000,000 bytes.
    virtual void setUndoGroupLimit(int limit) = 0;
    virtual void setUndoMemoryLimit(int limit) = 0;
    /// @}

    /// @{
    /// What was set last.
    virtual int getUndoGroupLimit() const = 0;
    virtual int getUndoMemoryLimit() const = 0;
    /// @}

    /// Whether undoIt() or doIt() is at work, so that changes are not to be recorded. Deleting
    /// groups by itself does not count.
    virtual bool currentlyActive() const = 0;
};

/// A new, empty manager, which the caller owns.
ZEBASE_API Manager* newManager();

/// Makes `manager`, which may be null, the one of this process, and takes it over. One that was
/// installed before is deleted first, unless it is the same. Nothing is deleted at exit: install
/// null before, so that commands are committed.
ZEBASE_API void installManager(Manager* manager);

/// The one that was installed last, or null.
ZEBASE_API Manager* getInstalledManager();

} // namespace zeUndo

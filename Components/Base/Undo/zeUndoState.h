// SPDX-License-Identifier: MIT

/// @file
/// What has happened to an undo command or group: zeUndo::State, the base of both.
///
/// A fresh object is valid, and neither its last operation was a do nor an undo. Whatever happened
/// is remembered: an object that was done, undone and done again has been done and undone, and its
/// last operation was a do. Invalid is final: such an object is never run again.
///
/// Threads: a state belongs to one thread at a time.
///
/// @code
/// zeUndo::State state;
/// state.stateDone();
/// state.stateUndone();
/// assert(state.hasBeenDone() && state.lastWasUndoIt() && !state.lastWasDoIt());
/// state.stateInvalid();
/// state.stateDone();
/// assert(!state.isValid());
/// @endcode

#pragma once

namespace zeUndo {

/// Five flags in one word. Commands and groups maintain their own; a program usually only asks,
/// and calls stateInvalid() where it knows that an object can no longer be run.
class State {
public:
    /// Done at least once.
    bool hasBeenDone() const { return (flags_ & Done) != 0; }

    /// Undone at least once.
    bool hasBeenUndone() const { return (flags_ & Undone) != 0; }

    /// The last operation was a do.
    bool lastWasDoIt() const { return (flags_ & LastDo) != 0; }

    /// The last operation was an undo.
    bool lastWasUndoIt() const { return (flags_ & LastUndo) != 0; }

    /// May still be run.
    bool isValid() const { return (flags_ & Valid) != 0; }

    /// Records a do. Does not change whether the object is valid.
    void stateDone() { flags_ = (flags_ & ~LastUndo) | Done | LastDo; }

    /// Records an undo. Does not change whether the object is valid.
    void stateUndone() { flags_ = (flags_ & ~LastDo) | Undone | LastUndo; }

    /// Makes the object invalid, for good.
    void stateInvalid() { flags_ &= ~Valid; }

private:
    enum Flag : unsigned int {
        Done = 0x01,
        Undone = 0x02,
        LastDo = 0x04,
        LastUndo = 0x08,
        Valid = 0x10
    };

    unsigned int flags_ = Valid;
};

} // namespace zeUndo

// SPDX-License-Identifier: MIT

/// @file
/// The text with its history: every edit belongs to a step, and steps are undone and redone whole.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Base/Undo/zeUndoManager.h"

#include "notebook/text.h"

namespace notebook {

/// A step is a group of the history, or a chain: one group and those that were added to it. Its
/// group is made with its first edit, so that none is empty, and what was undone can be redone
/// until the text is really changed. Between begin() and end() there are only edits: all else
/// throws a Failure.
class Editor {
public:
    explicit Editor(Text text);
    Editor(const Editor&) = delete; ///< Commands of the history refer to the text.
    Editor& operator=(const Editor&) = delete;
    ~Editor();

    const Text& text() const { return text_; }
    /// The groups, to be looked at.
    zeUndo::Manager& history() { return *history_; }
    /// The newest ones, up to a thousand, oldest first. Where the last operation was an undo, the
    /// group is undone.
    std::vector<const zeUndo::Group*> newestGroups() const;

    /// Edits from here to end() belong to one step of this name.
    void begin(const std::string& name);
    void end();

    /// Replaces lines, as a part of the open step, or as a step of this name, which may be added to
    /// the step before. Throws a Failure, and changes nothing, if the text would become too large,
    /// or if there is no step before.
    void edit(const std::string& name, Patch patch, bool isAdded = false);

    /// @{
    /// One step back or forth. Throws a Failure if there is none, or if it fails. Then the text is
    /// as far as the step came, and the history is gone, since none of it fits any more.
    void undo();
    void redo();
    /// @}

    /// @{
    /// How many steps are kept, and the bytes of all of them; 0 is no limit.
    void setStepLimit(int limit);
    void setMemoryLimit(int limit);
    /// @}

private:
    void requireClosed() const;

    Text text_;
    std::unique_ptr<zeUndo::Manager> history_;
    zeUndo::Group* group_ = nullptr; ///< Of the open step, once it has an edit.
    std::string name_;
    bool isOpen_ = false;
};

} // namespace notebook

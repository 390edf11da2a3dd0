// SPDX-License-Identifier: MIT

/// @file
/// The text with its history: every edit belongs to a step, and steps are undone and redone whole.

#pragma once

#include <memory>
#include <string>

#include "Base/Undo/zeUndoManager.h"

#include "notebook/text.h"

namespace notebook {

/// A step is one group of the history, or a chain: one group and those that were added to it. It
/// comes into being with its first edit, so that there are no empty ones, and what was undone can
/// be redone until something is really changed. Between begin() and end() there are only edits: all
/// else throws a Failure.
class Editor {
public:
    Editor();
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;
    ~Editor();

    const Text& text() const { return text_; }
    /// The groups, to be looked at.
    zeUndo::Manager& history() { return *history_; }
    /// The newest ones, up to a thousand, oldest first. Whose last operation was an undo is undone.
    std::vector<const zeUndo::Group*> newestGroups() const;

    /// Another text takes the place of this one, which the history goes with.
    void replace(Text text);

    /// Edits belong to one step of this name from here to end().
    void begin(const std::string& name);
    void end();
    /// Throws a Failure between them.
    void requireClosed() const;

    /// Replaces `count` lines from `at` on by others, as a part of the open step, or as a step of
    /// this name, which can be added to the step before. Throws a Failure, and changes nothing, if
    /// the text would become larger than its limit, or if there is no step before.
    void edit(const std::string& name, std::size_t at, std::size_t count, Lines lines,
              bool isAdded = false);

    /// @{
    /// One step back or forth. Throws a Failure if there is none, or if it fails. Then the text is
    /// as far as the step came, and the history is gone, since none of it fits any more.
    void undo();
    void redo();
    /// @}

    /// What the text may grow to, in bytes. What is larger already may shrink.
    std::size_t textLimit() const { return textLimit_; }
    void setTextLimit(std::size_t limit) { textLimit_ = limit; }
    static constexpr std::size_t mostText = std::size_t{1} << 30;
    [[noreturn]] void refuseSize() const;
    /// The number of steps; 0 is no limit, and -1 switches the history off.
    void setStepLimit(int limit);
    /// The memory of all steps, in bytes; 0 is no limit.
    void setMemoryLimit(int limit);

private:
    Text text_;
    std::size_t textLimit_ = std::size_t{256} << 20;
    std::uint64_t lastVersion_ = 0;
    std::unique_ptr<zeUndo::Manager> history_;
    zeUndo::Group* group_ = nullptr; ///< Of the open step, once it has an edit.
    std::string name_;
    bool isOpen_ = false;
};

} // namespace notebook

// SPDX-License-Identifier: MIT

#include "notebook/editor.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "Base/Undo/zeUndoCommand.h"
#include "Base/Undo/zeUndoGroup.h"

#include "Shared/failure.h"
#include "Shared/message.h"

namespace notebook {

namespace {

using app::Failure;
using app::message;

/// One edit: doing and undoing it are the same exchange.
class Edit : public zeUndo::Command {
public:
    Edit(Text& text, Patch patch)
        : zeUndo::Command(nullptr, "edit"), text_(text), patch_(std::move(patch)) {}

    bool doCommand() override { return exchange(); }
    bool undoCommand() override { return exchange(); }
    int getNumBytesUsed() const override { return bytes_; }

private:
    bool exchange() {
        if (!text_.exchange(patch_))
            return false;
        const std::size_t bytes =
            sizeof *this + sizeOf(patch_.lines) + patch_.lines.size() * sizeof(std::string);
        bytes_ = static_cast<int>(std::min<std::size_t>(bytes, INT_MAX));
        return true;
    }

    Text& text_;
    Patch patch_;
    int bytes_ = 0;
};

} // namespace

Editor::Editor(Text text) : text_(std::move(text)), history_(zeUndo::newManager()) {
    setStepLimit(1000);
}

Editor::~Editor() = default;

std::vector<const zeUndo::Group*> Editor::newestGroups() const {
    std::vector<const zeUndo::Group*> groups;
    for (int i = std::min(history_->getNumGroups(false), 1000); i > 0; --i)
        groups.push_back(history_->getGroup(-i));
    return groups;
}

void Editor::requireClosed() const {
    if (isOpen_)
        throw Failure(message("notebook.step_open", "a step has begun: end it first"));
}

void Editor::begin(const std::string& name) {
    requireClosed();
    name_ = name;
    isOpen_ = true;
}

void Editor::end() {
    if (!isOpen_)
        throw Failure(message("notebook.step_closed", "no step has begun"));
    isOpen_ = false;
    group_ = nullptr;
}

void Editor::edit(const std::string& name, Patch patch, bool isAdded) {
    if (isAdded && (isOpen_ || !history_->undoAvailable()))
        throw Failure(message("notebook.no_step", "there is no step to add to"));
    auto edit = std::make_unique<Edit>(text_, std::move(patch));
    if (!edit->doIt())
        throw Failure(message("notebook.text_limit", "the text would become too large"));
    zeUndo::Group* group = group_;
    if (group == nullptr)
        group = history_->newGroup((isOpen_ ? name_ : name).c_str(), isAdded);
    group_ = isOpen_ ? group : nullptr;
    group->addCommand(edit.release());
}

void Editor::undo() {
    requireClosed();
    if (!history_->undoAvailable())
        throw Failure(message("notebook.nothing_done", "there is nothing to undo"));
    if (!history_->undoIt())
        throw Failure(message("notebook.undo_failed", "the undo failed: the history is gone"));
}

void Editor::redo() {
    requireClosed();
    if (!history_->doAvailable())
        throw Failure(message("notebook.nothing_undone", "there is nothing to redo"));
    if (!history_->doIt())
        throw Failure(message("notebook.redo_failed", "the redo failed: the history is gone"));
}

void Editor::setStepLimit(int limit) {
    requireClosed();
    history_->setUndoGroupLimit(limit);
}

void Editor::setMemoryLimit(int limit) {
    requireClosed();
    history_->setUndoMemoryLimit(limit);
}

} // namespace notebook

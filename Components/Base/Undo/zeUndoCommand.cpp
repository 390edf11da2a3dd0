// SPDX-License-Identifier: MIT

#include "Base/Undo/zeUndoCommand.h"

#include <cstddef>
#include <cstring>

#include "Base/Undo/zeUndoGroup.h"
#include "Base/Undo/zeUndoReportImpl.h"

namespace zeUndo {

Command::Command(const char* name) {
    if (!name)
        return;
    const std::size_t size = std::strlen(name) + 1;
    name_ = size <= sizeof shortName_ ? shortName_ : new char[size];
    std::memcpy(name_, name, size);
}

// Delegates, so that the destructor runs if the group runs out of memory.
Command::Command(Group* group, const char* name) : Command(name) {
    if (group)
        addToGroup(group);
}

Command::~Command() {
    if (id_ != 0)
        report("    zeUndo::Command: delete (%s, 0x%p)\n", name_, static_cast<void*>(this));
    if (name_ != shortName_)
        delete[] name_;
}

int Command::getNumBytesUsed() const {
    return 1024;
}

void Command::commit() {}

bool Command::doIt() {
    if (!isValid())
        return false;
    if (lastWasDoIt()) {
        stateDone();
        return true;
    }
    report("    + zeUndo::Command: doIt (%s, 0x%p), %d bytes\n", name_, static_cast<void*>(this),
           getNumBytesUsed());
    const bool succeeded = doCommand();
    stateDone(); // a command that failed counts as done, too
    if (!succeeded) {
        report("    - zeUndo::Command: 'do' of %s returned failure.  Marking invalid.\n", name_);
        stateInvalid();
    }
    return succeeded;
}

bool Command::undoIt() {
    if (!isValid())
        return false;
    if (lastWasUndoIt()) {
        stateUndone();
        return true;
    }
    report("    - zeUndo::Command: undoIt (%s, 0x%p), %d bytes\n", name_, static_cast<void*>(this),
           getNumBytesUsed());
    const bool succeeded = undoCommand();
    stateUndone();
    if (!succeeded) {
        report("    - zeUndo::Command: undo of %s returned failure.  Marking invalid.\n", name_);
        stateInvalid();
    }
    return succeeded;
}

void Command::addToGroup(Group* group) {
    id_ = group->newID();
    group->addCommand(this);
    report("    zeUndo::Command: new (%s, 0x%p)\n", name_, static_cast<void*>(this));
}

const char* Command::getName() const {
    return name_ ? name_ : "noname";
}

} // namespace zeUndo

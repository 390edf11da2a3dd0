// SPDX-License-Identifier: MIT

#include "Base/Undo/zeUndoCommand.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "Base/Undo/zeUndoGroup.h"
#include "Base/Undo/zeUndoReportImpl.h"

namespace zeUndo {

namespace {

char* copied(const char* text) {
    char* copy = strdup(text);
    if (!copy)
        throw std::bad_alloc();
    return copy;
}

} // namespace

Command::Command(const char* name) : name_(name ? copied(name) : nullptr) {}

// Delegates, so that the destructor runs if the group runs out of memory.
Command::Command(Group* group, const char* name) : Command(name) {
    if (group)
        addToGroup(group);
}

Command::~Command() {
    if (id_ != 0)
        report("    zeUndo::Command: delete (%s, 0x%p)\n", name_, static_cast<void*>(this));
    std::free(name_);
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

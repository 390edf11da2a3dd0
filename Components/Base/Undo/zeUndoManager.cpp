// SPDX-License-Identifier: MIT

#include "Base/Undo/zeUndoManager.h"

#include "Base/Undo/zeUndoManagerImpl.h"

namespace zeUndo {

namespace {

Manager* installed = nullptr;

} // namespace

Manager::~Manager() = default;

Manager* newManager() {
    return new ManagerImpl;
}

void installManager(Manager* manager) {
    if (installed != manager)
        delete installed;
    installed = manager;
}

Manager* getInstalledManager() {
    return installed;
}

} // namespace zeUndo

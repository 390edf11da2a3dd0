// SPDX-License-Identifier: MIT

#include "Base/Undo/zeUndoGroup.h"

namespace zeUndo {

Group::~Group() = default;

} // namespace zeUndo

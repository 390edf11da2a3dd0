// SPDX-License-Identifier: MIT

/// @file
/// Deleting local directories with all that they hold.
///
/// Entries are reached through descriptors of their directories, never by a path and never through
/// a symbolic link. So whoever exchanges a directory with a link, or moves it away, while it is
/// being deleted, cannot lead the deletion to anything that was not in the tree. Neither the stack
/// nor the number of open descriptors grows with the depth, and paths may be longer than the
/// system's limit. What cannot be deleted stays, and its directories with it.

#pragma once

#include "Base/Strings/zeStringIString.h"

namespace zeOS {

/// Deletes what the directory holds, but not the directory itself. `directory` may be a link to it.
void deleteLocalEntries(const zeString::IString& directory);

/// Deletes a file, a link, or a directory with all that it holds.
void deleteLocalTree(const zeString::IString& path);

} // namespace zeOS

// SPDX-License-Identifier: MIT

/// @file
/// Writing a file whole or not at all.

#pragma once

#include <functional>
#include <string>

namespace scenefile {

/// Calls `write` with the descriptor of an empty temporary file and, once it returns, puts that
/// file in the target's place, by a zeOS::ProtectedWrite. If anything fails, the temporary file is
/// removed, the target stays as it was, and a Failure that names the target is thrown. A target
/// that exists keeps its rights, and must be a file that may be written.
///
/// A signal that ends the program leaves the target as it was, too, or complete; SIGKILL leaves the
/// temporary file as well: see leftoverNotes().
void replaceFile(const std::string& target, const std::function<void(int)>& write);

} // namespace scenefile

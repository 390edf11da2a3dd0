// SPDX-License-Identifier: MIT

/// @file
/// The command line.

#pragma once

#include <string>
#include <vector>

namespace notebook {

/// Does what the arguments (without the program's name) ask for, with commands from standard input,
/// and returns the exit code: 0 for success, 1 if a command of a script failed, 2 for wrong use.
/// Results go to app::results(), messages to app::messages(): they must be open.
int run(const std::vector<std::string>& arguments);

} // namespace notebook

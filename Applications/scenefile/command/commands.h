// SPDX-License-Identifier: MIT

/// @file
/// The command line of scenefile.

#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace scenefile {

/// Does what the arguments (without the program's name) ask for, and returns the exit code: 0 for
/// success, 1 for bad input or a failed write, 2 for wrong use. Results are printed to `out`,
/// messages to `err`, both without control characters from outside. A file "-" is standard input
/// or output itself, not `out`.
int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

} // namespace scenefile

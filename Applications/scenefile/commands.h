// SPDX-License-Identifier: MIT

/// @file
/// The command line.

#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace scenefile {

/// Runs the program with the arguments behind its name and returns its exit code: 0 for success, 1
/// for bad input or a failed write, 2 for wrong use. Messages go to `err`.
int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

} // namespace scenefile

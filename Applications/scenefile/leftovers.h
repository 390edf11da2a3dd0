// SPDX-License-Identifier: MIT

/// @file
/// What a killed save leaves beside a file.

#pragma once

#include <string>
#include <vector>

namespace scenefile {

/// A note for each file beside `path`, or what it links to, whose name a save of it could have
/// chosen: what a save that was killed has left, or what another one is just writing. They are told
/// from the files of other documents by their first letters only.
std::vector<std::string> leftoverNotes(const std::string& path);

} // namespace scenefile

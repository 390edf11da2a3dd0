// SPDX-License-Identifier: MIT

/// @file
/// From an OBJ file to a scene.

#pragma once

#include <map>
#include <string>

#include "scene.h"

namespace scenefile {

/// What a model file held.
struct ObjModel {
    Scene scene;
    std::map<std::string, int> skipped; ///< statements passed over, by their keyword
};

/// Reads a model. Throws a Failure with file and line for whatever is malformed. Statements of OBJ
/// that a scene has no place for (curves, surfaces, display attributes) are passed over and counted
/// if `skipUnsupported` is set, and refused otherwise.
///
/// What is not obvious of the format:
///   - an element may name vertices that come later in the file, by their positive numbers;
///   - a name is the rest of its line, so that it may hold blanks; `g` alone takes each word as a
///     name; a bare `o`, `g` or `usemtl` goes back to having none;
///   - `v x y z w` gives weights (1 where they are left out), `v x y z r g b` colours, which all
///     vertices must have or none.
ObjModel readObj(const std::string& path, bool skipUnsupported);

} // namespace scenefile

// SPDX-License-Identifier: MIT

/// @file
/// Models in OBJ files, to and from scenes.

#pragma once

#include <map>
#include <string>
#include <string_view>

#include "scene/scene.h"

namespace scenefile {

/// What a model file held.
struct ObjModel {
    Scene scene;
    std::map<std::string, int> skipped; ///< Statements skipped, by their keyword.
};

/// Reads a model from a file, or from standard input for standardStream. Throws a Failure with file
/// and line for whatever is malformed. Statements of OBJ that a scene cannot hold (curves,
/// surfaces, display attributes) are skipped and counted if `skipUnsupported` is set, and refused
/// otherwise.
///
/// Details of the format:
///   - an element may name vertices that come later in the file, by their positive numbers;
///   - a name is the rest of its line, so that it may hold blanks; `g` alone takes each word as a
///     name; a bare `o`, `g` or `usemtl` goes back to having none;
///   - `v x y z w` gives weights (1 where they are left out), `v x y z r g b` colours, which all
///     vertices must have or none.
ObjModel readObj(const std::string& path, bool skipUnsupported);

/// Writes a scene that checkScene() finds nothing wrong with. Numbers are printed so that they read
/// back as they are, and the whole file so that readObj() makes the same scene of it again. The
/// descriptor stays the caller's. A comment names the program that wrote it. Throws a Failure if a
/// write fails.
void writeObj(const Scene& scene, int descriptor, std::string_view program = "scenefile");

} // namespace scenefile

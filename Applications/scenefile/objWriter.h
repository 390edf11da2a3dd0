// SPDX-License-Identifier: MIT

/// @file
/// From a scene to an OBJ file.

#pragma once

#include "scene.h"

namespace scenefile {

/// Writes a scene that checkScene() found nothing wrong with. Numbers are printed so that they read
/// back as they are, and the whole file so that readObj() makes the same scene of it again. The
/// descriptor stays the caller's. Throws a Failure if a write fails.
void writeObj(const Scene& scene, int descriptor);

} // namespace scenefile

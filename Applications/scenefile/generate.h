// SPDX-License-Identifier: MIT

/// @file
/// A model to try things out with.

#pragma once

#include "scene.h"

namespace scenefile {

/// A ring on a slab, with the ring's axis as a line and its centre as a point: quadrilaterals with
/// texture and normals, a polygon, materials, groups, smoothing. `segments` is the number of steps
/// around the ring, 3 or more; the number of faces grows with its square.
Scene generateModel(int segments);

} // namespace scenefile

// SPDX-License-Identifier: MIT

/// @file
/// What the transforms of nodes do to a scene that checkScene() finds nothing wrong with.

#pragma once

#include "Base/Linear/zeLinearRange.h"
#include "Base/Linear/zeLinearVector.h"

#include "scene/scene.h"

namespace scenefile {

/// The direction of a vector of any length, also of one whose square is out of range. Only that of
/// zero is not valid.
zeLinear::Normal direction(const zeLinear::Vector& vector);

/// The bounds of all that the node's mesh uses, in the coordinates of the scene.
zeLinear::Range3d meshBounds(const Node& node);

/// The bounds of all meshes; unbounded if there is none.
zeLinear::Range3d sceneBounds(const Scene& scene);

/// Applies the transforms to the vertices, and makes each node's the identity.
///
///   - Positions that no mesh uses take the root's transform. A position or a normal that nodes
///     with different transforms share becomes one for each; the copies follow the rest.
///   - Normals take the transpose of the inverse, and come out at unit length.
///   - Where a transform mirrors, the corners of a face come out in the opposite order, so that the
///     face shows the same side.
///
/// A vertex whose transform is the identity keeps every bit.
void applyTransforms(Scene& scene);

} // namespace scenefile

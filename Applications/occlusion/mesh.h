// SPDX-License-Identifier: MIT

/// @file
/// A model as rays meet it: points, triangles and normals.

#pragma once

#include <array>
#include <vector>

#include "Base/Linear/zeLinearPoint.h"
#include "Base/Linear/zeLinearVector.h"

namespace scenefile {
struct Scene;
}

namespace occlusion {

/// Its points are those of the model, in their order, moved and scaled evenly into the cube from -1
/// to 1: distances mean the same for models of all sizes.
struct Mesh {
    std::vector<zeLinear::Point> points;
    std::vector<std::array<int, 3>> triangles; ///< The numbers of their corners.
    /// Of unit length, one for each point: the mean of the triangles around it, weighted by area.
    /// Zero where no triangle has an area. The corners of a triangle run counterclockwise as seen
    /// from the side that its normal points to.
    std::vector<zeLinear::Vector> normals;
};

/// Faces of more than three corners become fans of triangles, which is exact for convex ones.
/// Throws an app::Failure for a model without faces.
Mesh makeMesh(const scenefile::Scene& scene);

} // namespace occlusion

// SPDX-License-Identifier: MIT

/// @file
/// What a ray hits: a tree of bounding volumes over the triangles of a mesh.

#pragma once

#include <optional>
#include <vector>

#include "Base/Linear/zeLinearRange.h"

#include "occlusion/mesh.h"

namespace zeUtil {
class Progress;
}

namespace occlusion {

/// The user does not want to wait any longer.
class Cancelled {};

/// What is hit lies at `origin + t * direction` with t > 0.
struct Ray {
    zeLinear::Point origin;
    zeLinear::Vector direction; ///< Of any length but zero.
};

struct Hit {
    double distance;      ///< In lengths of the direction.
    std::size_t triangle; ///< Its number in the mesh.
    double weights[3];    ///< Of the corners; their sum is 1.
};

/// A binary tree. Each range of triangles is split at its middle triangle along the longest side of
/// the bounds. So the shape of the tree follows from the number of triangles alone, and
/// each node has its place in one array before it is built: tasks need no lock, and the tree is
/// the same however many threads build it.
class Tree {
public:
    /// Builds it by tasks on zeUtil::ThreadedTaskQueue::get(): the bounds of a large range are
    /// found by tasks before it is split, and its halves are built by tasks after that. Throws
    /// Cancelled.
    Tree(const Mesh& mesh, zeUtil::Progress& progress);

    /// @{
    /// The first triangle that the ray hits, from either side; whether it hits any. Triangles reach
    /// a trifle beyond their edges, so that no ray slips through between neighbours.
    std::optional<Hit> firstHit(const Ray& ray) const;
    bool isBlocked(const Ray& ray) const;
    /// @}

private:
    friend class TreeBuilder;

    struct Node {
        zeLinear::Range3d bounds;
        int next;    ///< The second child, the first one being the next node; or the first face.
        short count; ///< Of the faces; 0 for a node with children.
        short axis;  ///< Along which the children lie, the first one lower.
    };

    /// A triangle by a corner and the sides from there.
    struct Face {
        zeLinear::Point corner;
        zeLinear::Vector sides[2];
        std::size_t triangle;

        bool meets(const Ray& ray, Hit& hit) const;
    };

    template<class Take>
    void walk(const Ray& ray, const double& farthest, Take take) const;

    std::vector<Node> nodes_;
    std::vector<Face> faces_;
};

} // namespace occlusion

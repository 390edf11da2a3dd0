// SPDX-License-Identifier: MIT

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "Base/Linear/zeLinearMatrix.h"
#include "Base/Linear/zeLinearPoint.h"

#include "scene/scene.h"

namespace scenefile {

using zeLinear::AffineMatrix;
using zeLinear::Normal;
using zeLinear::Point;
using zeLinear::Range3d;
using zeLinear::Vector;

Normal direction(const Vector& vector) {
    const double largest =
        std::max({std::fabs(vector.x), std::fabs(vector.y), std::fabs(vector.z)});
    if (largest == 0)
        return Normal();
    return Normal(vector.x / largest, vector.y / largest, vector.z / largest);
}

Range3d meshBounds(const Node& node) {
    const AffineMatrix matrix = node.toScene();
    const std::vector<double>& positions = node.mesh->vertices->positions;
    Range3d bounds;
    for (const Run& run : node.mesh->runs)
        for (int index : run.positions) {
            const Point point = Point(&positions[3 * static_cast<std::size_t>(index)]) * matrix;
            if (bounds.isUnbounded())
                bounds.set(point);
            else
                bounds.include(point);
        }
    return bounds;
}

Range3d sceneBounds(const Scene& scene) {
    Range3d bounds;
    for (const auto& node : scene.nodes) {
        if (node->mesh == nullptr)
            continue;
        if (bounds.isUnbounded())
            bounds = meshBounds(*node);
        else
            bounds.include(meshBounds(*node));
    }
    return bounds;
}

namespace {

/// A transform of positions, and what follows from it for normals and faces.
struct Placement {
    AffineMatrix positions;
    AffineMatrix normals;
    bool mirrors;

    explicit Placement(const Node& node) : positions(node.toScene()) {
        bool invertible; // of which checkScene() has made sure
        normals = positions.vectorMatrix(invertible);
        mirrors = positions.det3x3() < 0;
    }
};

/// Which placement applies to each item of a list. An item belongs to the first placement that uses
/// it; others get copies.
class Assignment {
public:
    explicit Assignment(std::size_t count) : placements_(count, nobody) {}

    /// Changes indices into the list so that they lead to the items of a placement.
    void assign(std::vector<int>& indices, int placement) {
        for (int& index : indices)
            index = assigned(index, placement);
    }

    /// Adds copies to the numbers of the items, `size` for each; nothing if there are no numbers.
    void addCopies(std::vector<double>& numbers, std::size_t size) const {
        if (numbers.empty())
            return;
        for (int source : sources_)
            for (std::size_t i = 0; i < size; ++i)
                numbers.push_back(numbers[size * static_cast<std::size_t>(source) + i]);
    }

    /// The first placement for an item that no mesh uses.
    std::size_t placementOf(std::size_t item) const {
        return static_cast<std::size_t>(std::max(placements_[item], 0));
    }

private:
    static constexpr int nobody = -1;

    int assigned(int index, int placement) {
        int& owner = placements_[static_cast<std::size_t>(index)];
        if (owner == nobody)
            owner = placement;
        if (owner == placement)
            return index;
        const int next = static_cast<int>(placements_.size());
        const auto [copy, isNew] = copies_.try_emplace({index, placement}, next);
        if (isNew) {
            placements_.push_back(placement);
            sources_.push_back(index);
        }
        return copy->second;
    }

    std::vector<int> placements_;
    std::vector<int> sources_; // of the copies, in order
    std::map<std::pair<int, int>, int> copies_;
};

/// The first corner of each element stays the first.
void turnRound(const std::vector<int>& sizes, std::vector<int>& corners) {
    auto first = corners.begin();
    for (auto size = sizes.begin(); first != corners.end(); first += *size++)
        std::reverse(first + 1, first + *size);
}

class Applier {
public:
    explicit Applier(Scene& scene)
        : scene_(scene),
          all_(*scene.vertices),
          placements_{Placement(*scene.root)},
          positions_(all_.positions.size() / 3),
          normals_(all_.normals.size() / 3) {}

    void apply() {
        for (const Node* node : scene_.root->children)
            if (node->mesh != nullptr)
                place(*node);
        positions_.addCopies(all_.positions, 3);
        positions_.addCopies(all_.weights, 1);
        positions_.addCopies(all_.colours, 3);
        normals_.addCopies(all_.normals, 3);
        movePositions();
        turnNormals();
        for (const auto& node : scene_.nodes)
            node->transform.identity();
    }

private:
    /// Nodes without a transform of their own share the root's.
    void place(const Node& node) {
        int placement = 0;
        if (node.transform != AffineMatrix::Identity) {
            placement = static_cast<int>(placements_.size());
            placements_.emplace_back(node);
        }
        const bool mirrors = placements_[static_cast<std::size_t>(placement)].mirrors;
        for (Run& run : node.mesh->runs) {
            positions_.assign(run.positions, placement);
            normals_.assign(run.normals, placement);
            if (mirrors && run.kind == ElementKind::face)
                for (auto* corners : {&run.positions, &run.texture, &run.normals})
                    turnRound(run.sizes, *corners);
        }
    }

    void movePositions() {
        for (std::size_t i = 0; i < all_.positions.size() / 3; ++i) {
            const AffineMatrix& matrix = placements_[positions_.placementOf(i)].positions;
            double* position = &all_.positions[3 * i];
            if (matrix != AffineMatrix::Identity)
                (Point(position) * matrix).get(position);
        }
    }

    void turnNormals() {
        for (std::size_t i = 0; i < all_.normals.size() / 3; ++i) {
            const AffineMatrix& matrix = placements_[normals_.placementOf(i)].normals;
            double* normal = &all_.normals[3 * i];
            if (matrix != AffineMatrix::Identity) // the sum makes no zero negative
                (direction(direction(Vector(normal)) * matrix) + Vector::zero).get(normal);
        }
    }

    Scene& scene_;
    Vertices& all_;
    std::vector<Placement> placements_; // that of the root is the first
    Assignment positions_;
    Assignment normals_;
};

} // namespace

void applyTransforms(Scene& scene) {
    const auto inPlace = [](const auto& node) { return node->transform == AffineMatrix::Identity; };
    if (!std::all_of(scene.nodes.begin(), scene.nodes.end(), inPlace))
        Applier(scene).apply();
}

} // namespace scenefile

// SPDX-License-Identifier: MIT

/// @file
/// What a document holds, in memory: objects that point at one another.
///
/// The root node has one child for each object of the model; a node has a mesh, a mesh has runs of
/// elements, and a run points at its material and its group. All indices go into one set of
/// vertices, as they do in an OBJ file. The transforms of a node and of the root apply to the
/// vertices that the node's mesh uses.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Linear/zeLinearMatrix.h"
#include "Base/Linear/zeLinearRange.h"
#include "Base/Linear/zeLinearVector.h"

namespace scenefile {

/// Base of everything that a reference in a document can lead to: a pointer that comes out of a
/// file is checked against it before it is trusted to be a node or a mesh.
struct SceneObject {
    virtual ~SceneObject() = default;
    int packet = 0; ///< Number of the packet that the object was read from, for messages.
};

struct Material : SceneObject {
    std::string name;
};

/// What a `g` statement names: elements belong to each of these groups.
struct Group : SceneObject {
    std::vector<std::string> names;
};

/// The vertices of a whole model. Weights and colours are there for all positions or for none, and
/// never both.
struct Vertices : SceneObject {
    std::vector<double> positions; ///< x y z of each.
    std::vector<double> weights;   ///< w of each.
    std::vector<double> colours;   ///< r g b of each.
    std::vector<double> texture;   ///< `textureSize` numbers each.
    int textureSize = 0;           ///< 1 to 3; 0 without texture coordinates.
    std::vector<double> normals;   ///< x y z of each.

    int positionCount() const { return static_cast<int>(positions.size() / 3); }
    int textureCount() const {
        return textureSize == 0 ? 0 : static_cast<int>(texture.size()) / textureSize;
    }
    int normalCount() const { return static_cast<int>(normals.size() / 3); }
};

enum class ElementKind : unsigned char { point = 1, line = 2, face = 3 };

/// The fewest corners that an element of this kind can have.
constexpr int fewestCorners(ElementKind kind) {
    return static_cast<int>(kind);
}

/// Consecutive elements that agree in kind, in the form of their corners, in material, group and
/// smoothing.
struct Run {
    ElementKind kind = ElementKind::face;
    bool hasTexture = false;
    bool hasNormals = false;
    const Material* material = nullptr; ///< Null: none.
    const Group* group = nullptr;       ///< Null: the default group.
    int smoothing = 0;                  ///< Smoothing group; 0: off.
    std::vector<int> sizes;             ///< Corners of each element.
    std::vector<int> positions;         ///< From 0, one for each corner.
    std::vector<int> texture;           ///< The same, or empty.
    std::vector<int> normals;           ///< The same, or empty.

    /// The number of corners that all elements share, or 0.
    int commonSize() const;
};

struct Mesh : SceneObject {
    const Vertices* vertices = nullptr;
    std::vector<Run> runs;
};

struct Node : SceneObject {
    std::string name; ///< Empty: none.
    Node* parent = nullptr;
    std::vector<Node*> children;
    Mesh* mesh = nullptr;
    zeLinear::AffineMatrix transform; ///< To the coordinates of the parent, or of the scene.

    /// To the coordinates of the scene: the node's transform, then its parent's, up to the root's.
    zeLinear::AffineMatrix toScene() const;
};

struct Scene {
    std::vector<std::string> libraries; ///< Of materials, as `mtllib` names them.
    Node* root = nullptr;
    Vertices* vertices = nullptr;

    // These own what the pointers lead to.
    std::vector<std::unique_ptr<Node>> nodes;
    std::vector<std::unique_ptr<Mesh>> meshes;
    std::vector<std::unique_ptr<Group>> groups;
    std::vector<std::unique_ptr<Material>> materials;
    std::vector<std::unique_ptr<Vertices>> vertexSets;
};

/// A new object at the end of its owner's list.
template<class T>
T* addTo(std::vector<std::unique_ptr<T>>& owner) {
    owner.push_back(std::make_unique<T>());
    return owner.back().get();
}

/// A scene with its root and its vertices, and nothing in them.
Scene makeScene();

/// A model to try things out with: a ring on a slab, with the ring's axis as a line and its centre
/// as a point. It has quadrilaterals with texture and normals, a polygon, materials, groups and
/// smoothing. `segments` is the number of steps around the ring, 3 or more; the number of faces
/// grows with its square.
Scene generateModel(int segments);

/// How much there is of everything. A document states these numbers beside what it holds.
struct SceneCounts {
    int nodes = 0;
    int meshes = 0;
    int groups = 0;
    int materials = 0;
    int runs = 0;
    std::int64_t elements = 0;
    std::int64_t corners = 0;

    friend bool operator==(const SceneCounts&, const SceneCounts&) = default;
};

SceneCounts countScene(const Scene& scene);

/// The most numbers that the vertices of a model, or one mesh, may hold. A packet is shorter than
/// 2^31 bytes, and a number takes up to 25 bytes in a text document.
inline constexpr std::size_t mostNumbers = 80'000'000;

/// The largest coordinate. Beyond it, the 16 digits of a text document may round to no number.
inline constexpr double largestCoordinate = 1.797693134862315e308;

/// The largest number in a transform: with those of the parents, and inverted, it is finite still.
inline constexpr double largestInTransform = 1e100;

/// Whether an OBJ file can state `text` as a name, so that it comes back as it is: no control
/// bytes, no blanks at its ends, no word that would begin a comment, no backslash at the end.
bool isName(std::string_view text);

/// What is wrong with a scene that came from outside, and where.
struct SceneFault {
    std::string text; ///< Empty: nothing is wrong.
    int packet = 0;   ///< Of the object that is wrong.
};

/// Checks everything that the other functions rely on: the tree, the names, the sizes of all
/// arrays, every index, every number, that each transform can be inverted, and that none takes
/// coordinates beyond the largest.
SceneFault checkScene(const Scene& scene);

// Transforms of a scene that checkScene() finds nothing wrong with.

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

// SPDX-License-Identifier: MIT

#include "scene/scene.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace scenefile {

int Run::commonSize() const {
    const bool agree =
        std::all_of(sizes.begin(), sizes.end(), [&](int n) { return n == sizes[0]; });
    return agree && !sizes.empty() ? sizes[0] : 0;
}

zeLinear::AffineMatrix Node::toScene() const {
    zeLinear::AffineMatrix result = transform;
    for (const Node* above = parent; above != nullptr; above = above->parent)
        result *= above->transform;
    return result;
}

Scene makeScene() {
    Scene scene;
    scene.root = addTo(scene.nodes);
    scene.vertices = addTo(scene.vertexSets);
    return scene;
}

SceneCounts countScene(const Scene& scene) {
    SceneCounts counts;
    counts.nodes = static_cast<int>(scene.nodes.size());
    counts.meshes = static_cast<int>(scene.meshes.size());
    counts.groups = static_cast<int>(scene.groups.size());
    counts.materials = static_cast<int>(scene.materials.size());
    for (const auto& mesh : scene.meshes)
        for (const Run& run : mesh->runs) {
            ++counts.runs;
            counts.elements += static_cast<std::int64_t>(run.sizes.size());
            counts.corners += static_cast<std::int64_t>(run.positions.size());
        }
    return counts;
}

bool isName(std::string_view text) {
    if (text.empty() || text.front() == ' ' || text.back() == ' ' || text.back() == '\\')
        return false;
    char before = ' ';
    for (char c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F || (before == ' ' && c == '#'))
            return false;
        before = c;
    }
    return true;
}

namespace {

bool isGroupName(std::string_view text) {
    return isName(text) && text.find(' ') == std::string_view::npos;
}

/// NaN is in no range.
bool allInRange(std::span<const double> numbers, double largest = largestCoordinate) {
    return std::all_of(numbers.begin(), numbers.end(),
                       [largest](double n) { return std::fabs(n) <= largest; });
}

std::string checkVertices(const Vertices& vertices) {
    const std::size_t count = vertices.positions.size() / 3;
    if (count == 0)
        return "there are no positions";
    if (!vertices.weights.empty() && vertices.weights.size() != count)
        return "the weights are not as many as the positions";
    if (!vertices.colours.empty() && vertices.colours.size() != 3 * count)
        return "the colours are not as many as the positions";
    if (!vertices.weights.empty() && !vertices.colours.empty())
        return "there are both weights and colours";
    for (const auto* numbers : {&vertices.positions, &vertices.weights, &vertices.colours,
                                &vertices.texture, &vertices.normals})
        if (!allInRange(*numbers))
            return "a coordinate is no number, or too large";
    return {};
}

/// Each index must be below `count`.
std::string checkIndices(const std::vector<int>& indices, int count, const char* what) {
    for (int index : indices)
        if (index < 0 || index >= count)
            return std::string(what) + " index " + std::to_string(index) + " is outside the " +
                   std::to_string(count) + " that there are";
    return {};
}

std::string checkRun(const Run& run, const Vertices& vertices) {
    if (run.sizes.empty())
        return "it has no elements";
    if (run.smoothing < 0)
        return "its smoothing group is negative";
    std::size_t corners = 0;
    for (int size : run.sizes) {
        if (size < fewestCorners(run.kind))
            return "an element has " + std::to_string(size) + " corners";
        corners += static_cast<std::size_t>(size);
    }
    if (run.positions.size() != corners)
        return "its elements have " + std::to_string(corners) + " corners, but there are " +
               std::to_string(run.positions.size());
    std::string fault = checkIndices(run.positions, vertices.positionCount(), "position");
    if (fault.empty())
        fault = checkIndices(run.texture, vertices.textureCount(), "texture");
    if (fault.empty())
        fault = checkIndices(run.normals, vertices.normalCount(), "normal");
    return fault;
}

std::string checkMesh(const Mesh& mesh, const Scene& scene) {
    if (mesh.vertices != scene.vertices)
        return "it has no vertices";
    if (mesh.runs.empty())
        return "it has no runs";
    int number = 0;
    for (const Run& run : mesh.runs) {
        ++number;
        if (std::string fault = checkRun(run, *scene.vertices); !fault.empty())
            return "run " + std::to_string(number) + ": " + fault;
    }
    return {};
}

/// Two levels: the root, which has neither name nor mesh, and its children.
SceneFault checkTree(const Scene& scene) {
    const Node* root = scene.root;
    if (root == nullptr)
        return {"there is no root node", 0};
    if (root->parent != nullptr || root->mesh != nullptr || !root->name.empty())
        return {"the root node has a parent, a mesh or a name", root->packet};
    if (root->children.size() + 1 != scene.nodes.size())
        return {"the root has " + std::to_string(root->children.size()) +
                    " children, but there are " + std::to_string(scene.nodes.size()) + " nodes",
                root->packet};
    std::vector<const Node*> children(root->children.begin(), root->children.end());
    std::sort(children.begin(), children.end());
    if (std::adjacent_find(children.begin(), children.end()) != children.end())
        return {"a node is the root's child twice", root->packet};
    for (const Node* child : root->children) {
        if (child->parent != root)
            return {"its parent is not the root, whose child it is", child->packet};
        if (!child->children.empty())
            return {"it has children, but is not the root", child->packet};
        if (!child->name.empty() && !isName(child->name))
            return {"its name cannot stand in an OBJ file", child->packet};
    }
    return {};
}

/// Each mesh belongs to one node.
SceneFault checkMeshes(const Scene& scene) {
    std::vector<const Mesh*> used;
    for (const auto& node : scene.nodes)
        if (node->mesh != nullptr)
            used.push_back(node->mesh);
    std::sort(used.begin(), used.end());
    if (std::adjacent_find(used.begin(), used.end()) != used.end() ||
        used.size() != scene.meshes.size())
        return {"the nodes do not have each mesh once", scene.root->packet};
    for (const auto& mesh : scene.meshes)
        if (std::string fault = checkMesh(*mesh, scene); !fault.empty())
            return {fault, mesh->packet};
    return {};
}

/// The largest coordinate on each axis, without its sign.
zeLinear::Point farthest(const std::vector<double>& positions) {
    double largest[3] = {};
    for (std::size_t i = 0; i < positions.size(); ++i)
        largest[i % 3] = std::max(largest[i % 3], std::fabs(positions[i]));
    return zeLinear::Point(largest);
}

bool allInRange(const zeLinear::AffineMatrix& matrix) {
    double entries[12];
    matrix.get(entries);
    return allInRange(entries, largestInTransform);
}

/// Whether positions up to `farthest` stay in range. With the magnitudes of all entries nothing
/// cancels, so that no position leads to a larger product or sum than the farthest one.
bool keepsInRange(const zeLinear::AffineMatrix& matrix, const zeLinear::Point& farthest) {
    double magnitudes[12];
    matrix.get(magnitudes);
    for (double& entry : magnitudes)
        entry = std::fabs(entry);
    double reach[3];
    (farthest * zeLinear::AffineMatrix(magnitudes)).get(reach);
    return allInRange(reach);
}

SceneFault checkTransforms(const Scene& scene) {
    const zeLinear::Point limit = farthest(scene.vertices->positions);
    for (const auto& node : scene.nodes) {
        const zeLinear::AffineMatrix matrix = node->toScene();
        if (!allInRange(node->transform) || !allInRange(matrix))
            return {"its transform has an entry that is no number, or too large", node->packet};
        if (zeLinear::AffineMatrix inverse = matrix; !inverse.invert())
            return {"its transform has no inverse", node->packet};
        if (!keepsInRange(matrix, limit))
            return {"its transform makes coordinates too large", node->packet};
    }
    return {};
}

SceneFault checkNames(const Scene& scene) {
    for (const auto& group : scene.groups)
        if (group->names.empty() ||
            !std::all_of(group->names.begin(), group->names.end(), isGroupName))
            return {"its names cannot stand in an OBJ file", group->packet};
    for (const auto& material : scene.materials)
        if (!isName(material->name))
            return {"its name cannot stand in an OBJ file", material->packet};
    for (const std::string& library : scene.libraries)
        if (!isName(library))
            return {"the name of a material library cannot stand in an OBJ file", 0};
    return {};
}

} // namespace

SceneFault checkScene(const Scene& scene) {
    if (SceneFault fault = checkTree(scene); !fault.text.empty())
        return fault;
    if (scene.vertices == nullptr || scene.vertexSets.size() != 1)
        return {"there is not one set of vertices", 0};
    if (std::string fault = checkVertices(*scene.vertices); !fault.empty())
        return {fault, scene.vertices->packet};
    if (SceneFault fault = checkMeshes(scene); !fault.text.empty())
        return fault;
    if (SceneFault fault = checkTransforms(scene); !fault.text.empty())
        return fault;
    return checkNames(scene);
}

} // namespace scenefile

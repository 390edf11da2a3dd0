// SPDX-License-Identifier: MIT

#include <cmath>
#include <numbers>

#include "scene/scene.h"

namespace scenefile {

namespace {

/// Rounds to six places, as most models are, and makes zeros positive.
void append(std::vector<double>& list, std::initializer_list<double> numbers) {
    for (double number : numbers)
        list.push_back(std::round(number * 1e6) / 1e6 + 0.0);
}

Material* addMaterial(Scene& scene, const char* name) {
    Material* material = addTo(scene.materials);
    material->name = name;
    return material;
}

Mesh& addObject(Scene& scene, const char* name) {
    Node* node = addTo(scene.nodes);
    node->name = name;
    node->parent = scene.root;
    scene.root->children.push_back(node);
    node->mesh = addTo(scene.meshes);
    node->mesh->vertices = scene.vertices;
    return *node->mesh;
}

/// An element that has positions only.
void addElement(Run& run, std::initializer_list<int> positions) {
    run.sizes.push_back(static_cast<int>(positions.size()));
    run.positions.insert(run.positions.end(), positions);
}

/// Vertices row by row: `across` steps around the tube for each of the `around` steps.
void addRing(Scene& scene, int around, int across) {
    Vertices& all = *scene.vertices;
    all.textureSize = 2;
    for (int i = 0; i < around; ++i)
        for (int k = 0; k < across; ++k) {
            const double u = static_cast<double>(i) / around;
            const double v = static_cast<double>(k) / across;
            const double a = 2 * std::numbers::pi * u;
            const double b = 2 * std::numbers::pi * v;
            const double radius = 1 + 0.3 * std::cos(b);
            append(all.positions, {radius * std::cos(a), radius * std::sin(a), 0.3 * std::sin(b)});
            append(all.texture, {u, v});
            append(all.normals,
                   {std::cos(a) * std::cos(b), std::sin(a) * std::cos(b), std::sin(b)});
        }

    Run run;
    run.hasTexture = run.hasNormals = true;
    run.material = addMaterial(scene, "brushed steel");
    Group* group = addTo(scene.groups);
    group->names = {"ring", "visible"};
    run.group = group;
    run.smoothing = 1;
    for (int i = 0; i < around; ++i)
        for (int k = 0; k < across; ++k) {
            const int nextRow = (i + 1) % around * across;
            const int nextColumn = (k + 1) % across;
            addElement(
                run, {i * across + k, nextRow + k, nextRow + nextColumn, i * across + nextColumn});
        }
    run.texture = run.normals = run.positions;
    addObject(scene, "ring").runs.push_back(run);
}

/// A hexagon and two triangles over its corners: faces of different sizes.
void addSlab(Scene& scene) {
    Vertices& all = *scene.vertices;
    const int first = all.positionCount();
    for (int i = 0; i < 6; ++i) {
        const double a = std::numbers::pi * i / 3;
        append(all.positions, {1.5 * std::cos(a), 1.5 * std::sin(a), -0.4});
    }
    Run run;
    run.material = addMaterial(scene, "slate");
    addElement(run, {first, first + 1, first + 2, first + 3, first + 4, first + 5});
    addElement(run, {first, first + 2, first + 4});
    addElement(run, {first + 1, first + 3, first + 5});
    addObject(scene, "slab").runs.push_back(run);
}

void addAxis(Scene& scene) {
    Vertices& all = *scene.vertices;
    const int first = all.positionCount();
    append(all.positions, {0, 0, -1, 0, 0, 0, 0, 0, 1});
    Mesh& mesh = addObject(scene, "axis of the ring");
    mesh.runs.resize(2);
    mesh.runs[0].kind = ElementKind::line;
    addElement(mesh.runs[0], {first, first + 1, first + 2});
    mesh.runs[1].kind = ElementKind::point;
    addElement(mesh.runs[1], {first + 1});
}

} // namespace

Scene generateModel(int segments) {
    Scene scene = makeScene();
    scene.libraries.push_back("ring.mtl");
    addRing(scene, segments, segments / 2 + 2);
    addSlab(scene);
    addAxis(scene);
    return scene;
}

} // namespace scenefile

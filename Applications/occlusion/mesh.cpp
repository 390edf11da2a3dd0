// SPDX-License-Identifier: MIT

#include "occlusion/mesh.h"

#include <algorithm>

#include "Base/Linear/zeLinearRange.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "scene/scene.h"

namespace occlusion {

namespace {

using zeLinear::Point;
using zeLinear::Range3d;
using zeLinear::Vector;

void addTriangles(const scenefile::Run& run, Mesh& mesh) {
    if (run.kind != scenefile::ElementKind::face)
        return;
    const int* corners = run.positions.data();
    for (const int size : run.sizes) {
        for (int i = 2; i < size; ++i)
            mesh.triangles.push_back({corners[0], corners[i - 1], corners[i]});
        corners += size;
    }
}

/// Of the points that triangles have: others must not make the model small. Halves cannot overflow.
Range3d halfBounds(const Mesh& mesh) {
    const auto half = [&](int i) {
        const Point& p = mesh.points[static_cast<std::size_t>(i)];
        return Point(p.x / 2, p.y / 2, p.z / 2);
    };
    Range3d bounds;
    bounds.set(half(mesh.triangles[0][0]));
    for (const auto& triangle : mesh.triangles)
        for (const int corner : triangle)
            bounds.include(half(corner));
    return bounds;
}

void scaleToCube(Mesh& mesh) {
    const Range3d half = halfBounds(mesh);
    const Vector size = half.size();
    const double extent = std::max({size.x, size.y, size.z}); // half of the longest side
    const auto scaled = [extent](double coordinate, double low, double high) {
        return extent > 0 ? (coordinate - (low + high)) / extent : 0;
    };
    for (Point& p : mesh.points)
        p.set(scaled(p.x, half.low.x, half.high.x), scaled(p.y, half.low.y, half.high.y),
              scaled(p.z, half.low.z, half.high.z));
}

/// The cross product of two sides is twice the area long: a sum of them is weighted by area.
void addNormals(Mesh& mesh) {
    mesh.normals.resize(mesh.points.size());
    for (const auto& triangle : mesh.triangles) {
        const auto point = [&](std::size_t i) {
            return mesh.points[static_cast<std::size_t>(triangle[i])];
        };
        const Vector area = cross(point(1) - point(0), point(2) - point(0));
        for (const int corner : triangle)
            mesh.normals[static_cast<std::size_t>(corner)] += area;
    }
    for (Vector& normal : mesh.normals)
        normal = scenefile::direction(normal);
}

} // namespace

Mesh makeMesh(const scenefile::Scene& scene) {
    Mesh mesh;
    for (const auto& each : scene.meshes)
        for (const scenefile::Run& run : each->runs)
            addTriangles(run, mesh);
    if (mesh.triangles.empty())
        throw app::Failure(app::message("occlusion.no_faces", "the model has no faces"));
    const std::vector<double>& positions = scene.vertices->positions;
    for (std::size_t i = 0; i < positions.size(); i += 3)
        mesh.points.emplace_back(&positions[i]);
    scaleToCube(mesh);
    addNormals(mesh);
    return mesh;
}

} // namespace occlusion

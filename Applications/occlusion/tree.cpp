// SPDX-License-Identifier: MIT

#include "occlusion/tree.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace occlusion {

namespace {

using zeLinear::Point;
using zeLinear::Range3d;
using zeLinear::Vector;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// A ray as boxes meet it.
struct Slabs {
    explicit Slabs(const Ray& ray)
        : origin(ray.origin),
          inverse(invert(ray.direction.x), invert(ray.direction.y), invert(ray.direction.z)) {}

    /// A ray along the side of a box would make zero times infinity.
    static double invert(double number) {
        return 1 / (std::fabs(number) > 1e-30 ? number : std::copysign(1e-30, number));
    }

    bool meets(const Range3d& box, double farthest) const {
        double near = 0;
        double far = farthest;
        cut(box.low.x - origin.x, box.high.x - origin.x, inverse.x, near, far);
        cut(box.low.y - origin.y, box.high.y - origin.y, inverse.y, near, far);
        cut(box.low.z - origin.z, box.high.z - origin.z, inverse.z, near, far);
        return near <= far;
    }

    static void cut(double low, double high, double inverse, double& near, double& far) {
        const double a = low * inverse;
        const double b = high * inverse;
        near = std::max(near, std::min(a, b));
        far = std::min(far, std::max(a, b));
    }

    Point origin;
    Vector inverse;
};

} // namespace

/// A hit that is nearer than the one in `hit` replaces it.
bool Tree::Face::meets(const Ray& ray, Hit& hit) const {
    constexpr double edge = -1e-12; // in lengths of a side
    const Vector p = cross(ray.direction, sides[1]);
    const double volume = dot(sides[0], p);
    if (volume == 0)
        return false; // along the face, or a face without area
    const Vector offset = ray.origin - corner;
    const double u = dot(offset, p) / volume;
    const Vector q = cross(offset, sides[0]);
    const double v = dot(ray.direction, q) / volume;
    const double distance = dot(sides[1], q) / volume;
    if (!(u >= edge && v >= edge && u + v <= 1 - edge && distance > 0 && distance < hit.distance))
        return false;
    hit = {distance, triangle, {1 - u - v, u, v}};
    return true;
}

/// Gives `take` the faces in all leaves that the ray meets before `farthest`, the nearer of two
/// children first, until it returns true.
template<class Take>
void Tree::walk(const Ray& ray, const double& farthest, Take take) const {
    const Slabs slabs(ray);
    const double* const direction = &ray.direction.x;
    const Node* stack[40]; // a level for each bit of the number of leaves
    int size = 0;
    stack[size++] = nodes_.data();
    while (size > 0) {
        const Node* const node = stack[--size];
        if (!slabs.meets(node->bounds, farthest))
            continue;
        if (node->count == 0) {
            const Node* const second = &nodes_[static_cast<std::size_t>(node->next)];
            const bool isForward = direction[node->axis] >= 0;
            stack[size++] = isForward ? second : node + 1;
            stack[size++] = isForward ? node + 1 : second;
        }
        for (int i = node->next; i < node->next + node->count; ++i)
            if (take(faces_[static_cast<std::size_t>(i)]))
                return;
    }
}

std::optional<Hit> Tree::firstHit(const Ray& ray) const {
    Hit hit = {infinity, 0, {}};
    walk(ray, hit.distance, [&](const Face& face) {
        face.meets(ray, hit);
        return false;
    });
    return hit.distance < infinity ? std::optional(hit) : std::nullopt;
}

bool Tree::isBlocked(const Ray& ray) const {
    Hit hit = {infinity, 0, {}};
    walk(ray, infinity, [&](const Face& face) { return face.meets(ray, hit); });
    return hit.distance < infinity;
}

} // namespace occlusion

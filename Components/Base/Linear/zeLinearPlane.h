// SPDX-License-Identifier: MIT

/// @file
/// Planes: zeLinear::Plane, through a point and at right angles to a normal, and
/// zeLinear::ParamPlane, which spans its plane by two vectors at right angles.
///
/// Threads: plain values, which any thread may use by itself.
///
/// @code
/// using namespace zeLinear;
/// Plane floor(Point(0, 0, 1), Normal::zAxis);
/// assert(floor.eval(Point(5, 5, 4)) == 3 && (-floor).eval(Point(5, 5, 4)) == -3);
/// ParamPlane sheet(Point(0, 0, 0), Vector(2, 0, 0), Vector(1, 3, 0), false);
/// assert(sheet.v == Vector(0, 3, 0)); // at right angles to u
/// @endcode

#pragma once

#include "Base/Linear/zeLinearPoint.h"

namespace zeLinear {

struct ParamPlane;

/// The plane through `point` at right angles to `normal`.
struct Plane {
    /// A point of the plane.
    Point point;
    /// Its unit normal.
    Normal normal;

    /// Through the origin, with an invalid normal.
    constexpr Plane() = default;
    /// Through `p` at right angles to `n`.
    constexpr Plane(const Point& p, const Normal& n) : point(p), normal(n) {}
    /// Through three points, counter-clockwise as seen from the side of the normal, which is
    /// invalid if they are collinear.
    Plane(const Point& a, const Point& b, const Point& c) : Plane(a, b - a, c - a) {}
    /// Through `p` along two vectors; the normal is that of cross(u, v).
    Plane(const Point& p, const Vector& u, const Vector& v) : point(p), normal(cross(u, v)) {}
    /// Without the parameters.
    explicit Plane(const ParamPlane& plane);

    /// Whether the normal is valid.
    constexpr bool isValid() const { return normal.valid; }
    /// The last coefficient of the equation normal · q + d = 0.
    constexpr double calculateD() const { return -dot(point, normal); }
    /// The distance of `q`, positive on the side of the normal.
    constexpr double eval(const Point& q) const { return dot(q - point, normal); }

    /// Compares point and normal exactly.
    constexpr bool operator==(const Plane&) const = default;
};

/// A plane with two parameters: `point` + s `u` + t `v`. The constructors make `v` orthogonal.
struct ParamPlane {
    /// The point where both parameters are 0.
    Point point;
    /// The unit normal.
    Normal normal;
    /// The displacement from 0 to 1 of the first parameter.
    Vector u;
    /// The displacement from 0 to 1 of the second parameter.
    Vector v;

    /// At the origin, with an invalid normal and zero vectors.
    constexpr ParamPlane() = default;
    /// Stores the four, and then orthogonalises.
    ParamPlane(const Point& p, const Normal& n, const Vector& u0, const Vector& v0, bool sameLength)
        : point(p), normal(n), u(u0), v(v0) {
        orthogonalize(sameLength);
    }
    /// The normal is that of cross(u0, v0).
    ParamPlane(const Point& p, const Vector& u0, const Vector& v0, bool sameLength)
        : ParamPlane(p, Normal(cross(u0, v0)), u0, v0, sameLength) {}
    /// `u` runs from `a` to `b`, and `v` towards the side of `c` with the length of `u`.
    ParamPlane(const Point& a, const Point& b, const Point& c)
        : ParamPlane(a, b - a, c - a, true) {}

    /// The normal.
    constexpr operator Normal() const { return normal; }

    /// @{
    /// The point at parameters s and t.
    constexpr Point eval(double s, double t) const { return point + s * u + t * v; }
    constexpr Point eval(const Point2& st) const { return eval(st.x, st.y); }
    /// @}

    /// Puts `v` at right angles to `u` in the plane, by projection; then, if `sameLength`, gives it
    /// the length of `u` (NaN if nothing of `v` was left).
    void orthogonalize(bool sameLength);

    /// Compares all four members exactly.
    constexpr bool operator==(const ParamPlane&) const = default;
};

inline Plane::Plane(const ParamPlane& plane) : point(plane.point), normal(plane.normal) {}

inline void ParamPlane::orthogonalize(bool sameLength) {
    v = project(v, Normal(cross(normal, u)));
    if (sameLength)
        v *= u.length() / v.length();
}

/// @{
/// The plane moved by a vector.
template<OneOf<Plane, ParamPlane> P>
constexpr P operator+(P plane, const Vector& v) {
    plane.point += v;
    return plane;
}

template<OneOf<Plane, ParamPlane> P>
constexpr P operator-(P plane, const Vector& v) {
    plane.point -= v;
    return plane;
}
/// @}

/// The same plane with the normal negated.
constexpr Plane operator-(const Plane& plane) {
    return Plane(plane.point, -plane.normal);
}

/// The same plane with the normal and `u` negated, so that the normal is still that of cross(u, v).
constexpr ParamPlane operator-(ParamPlane plane) {
    plane.normal.reverse();
    plane.u.reverse();
    return plane;
}

/// The distance of a point from a plane, never negative.
inline double distance(const Point& q, const Plane& plane) {
    return std::fabs(plane.eval(q));
}

/// Whether the normals are parallel (by parallelTol, either way round) and the point of `a` lies
/// within epsilonTol of `b`.
inline bool equivalent(const Plane& a, const Plane& b) {
    return isParallel(a.normal, b.normal) && distance(a.point, b) < epsilonTol;
}

/// Whether the normals are parallel, and points, `u` and `v` equivalent, by epsilonTol.
inline bool equivalent(const ParamPlane& a, const ParamPlane& b) {
    return isParallel(a.normal, b.normal) && equivalent(a.point, b.point) && equivalent(a.u, b.u) &&
           equivalent(a.v, b.v);
}

} // namespace zeLinear

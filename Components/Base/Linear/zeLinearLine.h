// SPDX-License-Identifier: MIT

/// @file
/// Infinite lines: zeLinear::Line with a unit direction, and zeLinear::ParamLine, whose parameter
/// runs from 0 at its point to 1 at the end of its vector.
///
/// Threads: plain values, which any thread may use by itself.
///
/// @code
/// using namespace zeLinear;
/// ParamLine segment(Point(0, 0, 0), Point(0, 0, 4));
/// assert(projectParam(Point(5, 5, 1), segment) == 0.25);
/// assert(segment.projectBounded(Point(5, 5, 9), 0, 1) == Point(0, 0, 4));
/// assert(distance(Point(3, 0, 7), Line(segment)) == 3);
/// @endcode

#pragma once

#include "Base/Linear/zeLinearNumeric.h"
#include "Base/Linear/zeLinearPoint.h"

namespace zeLinear {

struct ParamLine;

/// A line through `point` along `direction`. The direction of a default Line is invalid.
struct Line {
    /// A point of the line.
    Point point;
    /// Its unit direction.
    Normal direction;

    /// Through the origin, with an invalid direction.
    constexpr Line() = default;
    /// Through `p` along `n`.
    constexpr Line(const Point& p, const Normal& n) : point(p), direction(n) {}
    /// From `a` towards `b`. The direction is invalid if they are equal.
    Line(const Point& a, const Point& b) : point(a), direction(b - a) {}
    /// Without the parameter.
    explicit Line(const ParamLine& line);

    /// The point at distance `t` along the direction.
    constexpr Point eval(double t) const { return point + t * direction; }

    /// Compares point and direction exactly.
    constexpr bool operator==(const Line&) const = default;
};

/// A line with a parameter: `point` at 0, `point` + `vector` at 1. It converts to its vector, and
/// to the Normal made of it.
struct ParamLine {
    /// The point at parameter 0.
    Point point;
    /// The displacement from parameter 0 to 1.
    Vector vector;

    /// At the origin, with a zero vector.
    constexpr ParamLine() = default;
    /// Through `p` along `v`.
    constexpr ParamLine(const Point& p, const Vector& v) : point(p), vector(v) {}
    /// From `a` at 0 to `b` at 1.
    constexpr ParamLine(const Point& a, const Point& b) : point(a), vector(b - a) {}

    /// The vector. The implicit conversion is the constructor of Vector.
    constexpr explicit operator Vector() const { return vector; }
    /// The direction of the vector. The implicit conversion is the constructor of Normal.
    explicit operator Normal() const { return vector.normalized(); }

    /// The point at parameter `t`.
    constexpr Point eval(double t) const { return point + t * vector; }

    /// The projection of `q` on the part of the line between parameters `lo` and `hi`.
    Point projectBounded(const Point& q, double lo, double hi) const;

    /// Compares point and vector exactly.
    constexpr bool operator==(const ParamLine&) const = default;
};

constexpr Vector::Vector(const ParamLine& line) : Vector(line.vector) {}
inline Normal::Normal(const ParamLine& line) : Normal(line.vector) {}
inline Line::Line(const ParamLine& line) : point(line.point), direction(line.vector) {}

/// @{
/// The line moved by a vector.
template<OneOf<Line, ParamLine> L>
constexpr L operator+(L line, const Vector& v) {
    line.point += v;
    return line;
}

template<OneOf<Line, ParamLine> L>
constexpr L operator-(L line, const Vector& v) {
    line.point -= v;
    return line;
}
/// @}

/// The parameter of the projection of `q`; 0 if the vector is shorter than epsilonTol.
inline double projectParam(const Point& q, const ParamLine& line) {
    return projectParam(q - line.point, line.vector);
}

inline Point ParamLine::projectBounded(const Point& q, double lo, double hi) const {
    return eval(detail::greatest(detail::least(hi, projectParam(q, *this)), lo));
}

/// The distance of a point from a line.
inline double distance(const Point& q, const Line& line) {
    const Vector v = q - line.point;
    return (v - project(v, line.direction)).length();
}

/// Whether the directions are parallel (by parallelTol, either way round) and the point of `a`
/// lies within epsilonTol of `b`.
inline bool equivalent(const Line& a, const Line& b) {
    return isParallel(a.direction, b.direction) && distance(a.point, b) < epsilonTol;
}

} // namespace zeLinear

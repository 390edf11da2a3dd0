// SPDX-License-Identifier: MIT

/// @file
/// Infinite lines: zeLinear::Line with a unit direction, and zeLinear::ParamLine, whose parameter
/// runs from 0 at its point to 1 at the end of its vector.
///
/// @code
/// using namespace zeLinear;
/// ParamLine segment(Point(0, 0, 0), Point(0, 0, 4));
/// assert(projectParam(Point(5, 5, 1), segment) == 0.25);
/// assert(segment.projectBounded(Point(5, 5, 9), 0, 1) == Point(0, 0, 4));
/// assert(distance(Point(3, 0, 7), Line(segment)) == 3);
/// @endcode

#pragma once

#include <algorithm>

#include "Base/Linear/zeLinearPoint.h"

namespace zeLinear {

struct ParamLine;

/// A line through `point` along `direction`. The default runs nowhere: its direction is invalid.
struct Line {
    /// A point of the line, and its unit direction.
    Point point;
    Normal direction;

    constexpr Line() = default;
    constexpr Line(const Point& p, const Normal& n) : point(p), direction(n) {}
    /// From `a` towards `b`. The direction is invalid if they are equal.
    Line(const Point& a, const Point& b) : point(a), direction(b - a) {}
    explicit Line(const ParamLine& line);

    /// The point at distance `t` along the direction.
    constexpr Point eval(double t) const { return point + t * direction; }

    constexpr bool operator==(const Line&) const = default;
};

/// A line with a parameter: `point` at 0, `point` + `vector` at 1.
struct ParamLine {
    /// Where the parameter is 0, and the way from there to 1.
    Point point;
    Vector vector;

    constexpr ParamLine() = default;
    constexpr ParamLine(const Point& p, const Vector& v) : point(p), vector(v) {}
    /// From `a` at 0 to `b` at 1.
    constexpr ParamLine(const Point& a, const Point& b) : point(a), vector(b - a) {}

    /// The vector, and the direction made of it: explicit, since either may be meant.
    constexpr explicit operator Vector() const { return vector; }
    explicit operator Normal() const { return vector.normalized(); }

    /// The point at parameter `t`.
    constexpr Point eval(double t) const { return point + t * vector; }

    /// The projection of `q` on the part of the line between parameters `lo` and `hi`.
    Point projectBounded(const Point& q, double lo, double hi) const;

    constexpr bool operator==(const ParamLine&) const = default;
};

inline Line::Line(const ParamLine& line) : point(line.point), direction(line.vector) {}

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

/// The parameter of the projection of `q`; 0 if the vector is shorter than epsilonTol.
inline double projectParam(const Point& q, const ParamLine& line) {
    return projectParam(q - line.point, line.vector);
}

inline Point ParamLine::projectBounded(const Point& q, double lo, double hi) const {
    return eval(std::max(lo, std::min(projectParam(q, *this), hi)));
}

/// The distance at right angles.
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

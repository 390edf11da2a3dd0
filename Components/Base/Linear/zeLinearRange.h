// SPDX-License-Identifier: MIT

/// @file
/// Axis-aligned ranges: an interval, a rectangle, a box.
///
/// A range whose first axis has `low` greater than `high` is **unbounded**: it means all of space.
/// It contains everything and intersects everything, and including a point changes nothing. There
/// is no empty range: start from the first point with set(), then include() the rest.
///
/// Only the first axis is tested for this. setUnbounded() stores `low` 1 and `high` 0 on every
/// axis, and so does the default constructor; set() stores what it is given, in any order.
///
/// Threads: plain values, which any thread may use by itself.
///
/// @code
/// using namespace zeLinear;
/// Range3d box;
/// assert(box.isUnbounded() && box.contains(Point(1e9, 0, 0)));
/// box.set(Point(0, 0, 0));
/// box.include(Point(1, 2, -3));
/// assert(box.volume() == 6 && !box.contains(Point(1e9, 0, 0)));
/// assert(distance(Point(1, 2, 4), box) == 4);
/// @endcode

#pragma once

#include "Base/Linear/zeLinearNumeric.h"
#include "Base/Linear/zeLinearPoint.h"

namespace zeLinear {

struct Range1d;
struct Range2d;
struct Range3d;

/// A range of any dimension.
template<class T>
concept AnyRange = OneOf<T, Range1d, Range2d, Range3d>;

namespace detail {

// A corner is a number in one dimension and otherwise a point: what follows serves all three.

/// The distance of two intervals on one axis, neither of them inverted; 0 where they overlap.
constexpr double gap(double low, double high, double otherLow, double otherHigh) {
    return high < otherLow ? otherLow - high : otherHigh < low ? low - otherHigh : 0;
}

template<class C>
constexpr bool inverted(const C& low, const C& high) {
    if constexpr (dimension<C> == 1)
        return low > high;
    else
        return low.x > high.x;
}

template<class R, class C>
constexpr void widen(R& range, const C& low, const C& high) {
    if (range.isUnbounded())
        return;
    range.low = each<C>(least, low, range.low);
    range.high = each<C>(greatest, high, range.high);
}

template<class R>
constexpr void widen(R& range, const R& other) {
    if (other.isUnbounded())
        range.setUnbounded();
    else
        widen(range, other.low, other.high);
}

template<class R, class C>
constexpr bool containsPoint(const R& range, const C& point, double tol) {
    return range.isUnbounded() || all([tol](double low, double high,
                                            double p) { return low - tol <= p && p <= high + tol; },
                                      range.low, range.high, point);
}

template<class R>
constexpr bool containsRange(const R& range, const R& other, double tol) {
    return range.isUnbounded() || (!other.isUnbounded() && containsPoint(range, other.low, tol) &&
                                   containsPoint(range, other.high, tol));
}

template<class R>
constexpr bool intersects(const R& a, const R& b, double tol) {
    return a.isUnbounded() || b.isUnbounded() ||
           all([tol](double aLow, double aHigh, double bLow,
                     double bHigh) { return aLow - tol < bHigh && bLow < aHigh + tol; },
               a.low, a.high, b.low, b.high);
}

} // namespace detail

/// An interval.
struct Range1d {
    /// @{
    /// An end.
    double low = 1;
    double high = 0;
    /// @}

    /// Unbounded.
    constexpr Range1d() = default;
    /// From the ends, in any order.
    constexpr Range1d(double lowEnd, double highEnd) : low(lowEnd), high(highEnd) {}

    /// Whether the first axis is inverted, so that the range means all of space.
    constexpr bool isUnbounded() const { return detail::inverted(low, high); }
    /// Stores 1 and 0 on every axis.
    constexpr void setUnbounded() { *this = Range1d(); }
    /// Stores the ends, in any order.
    constexpr void set(double lowEnd, double highEnd) { *this = Range1d(lowEnd, highEnd); }
    /// @{
    /// Becomes a range of one value.
    constexpr void set(Number auto value) {
        set(static_cast<double>(value), static_cast<double>(value));
    }
    constexpr void set(const double* value) { set(*value); }
    constexpr void set(const float* value) { set(*value); }
    /// @}
    /// @{
    /// Reads the ends.
    constexpr void get(double& lowEnd, double& highEnd) const { lowEnd = low, highEnd = high; }
    constexpr void get(double* lowEnd, double* highEnd) const { get(*lowEnd, *highEnd); }
    /// @}

    /// Halfway between the ends, also of an unbounded range.
    constexpr double mid() const { return (low + high) * 0.5; }
    /// The length; -1.0 if unbounded.
    constexpr double size() const { return isUnbounded() ? -1.0 : high - low; }

    /// Widens to hold `value`; an unbounded range stays as it is.
    constexpr void include(double value) { detail::widen(*this, value, value); }
    /// Widens to hold `other`; becomes unbounded if that is.
    constexpr void include(const Range1d& other) { detail::widen(*this, other); }

    /// Whether `value` lies between the ends, or on them, after widening by `tol`.
    constexpr bool contains(double value, double tol = 0) const {
        return detail::containsPoint(*this, value, tol);
    }
    /// Whether `other` lies inside, after widening by `tol`. An unbounded range lies in an
    /// unbounded one only.
    constexpr bool contains(const Range1d& other, double tol = 0) const {
        return detail::containsRange(*this, other, tol);
    }
    /// Whether the ranges overlap by more than -tol: with 0, ranges that only touch do not.
    constexpr bool intersects(const Range1d& other, double tol = 0) const {
        return detail::intersects(*this, other, tol);
    }

    /// Compares the ends exactly.
    constexpr bool operator==(const Range1d&) const = default;
};

/// An axis-aligned rectangle.
struct Range2d {
    /// @{
    /// A corner.
    Point2 low = Point2(1, 1);
    Point2 high = Point2(0, 0);
    /// @}

    /// Unbounded.
    constexpr Range2d() = default;
    /// From the corners.
    constexpr Range2d(const Point2& lowCorner, const Point2& highCorner)
        : low(lowCorner), high(highCorner) {}

    /// Whether the first axis is inverted, so that the range means all of space.
    constexpr bool isUnbounded() const { return detail::inverted(low, high); }
    /// Stores 1 and 0 on every axis.
    constexpr void setUnbounded() { *this = Range2d(); }
    /// Stores the corners, two numbers each.
    constexpr void set(const double* lowCorner, const double* highCorner) {
        *this = Range2d(Point2(lowCorner), Point2(highCorner));
    }
    /// @{
    /// Becomes a range of one point.
    constexpr void set(const Point2& p) { *this = Range2d(p, p); }
    constexpr void set(const double* xy) { set(Point2(xy)); }
    constexpr void set(const float* xy) { set(Point2(Point2Flt(xy))); }
    constexpr void set(Number auto x, Number auto y) {
        set(Point2(static_cast<double>(x), static_cast<double>(y)));
    }
    /// @}
    /// Becomes the range between two opposite corners.
    constexpr void setUnordered(const Point2& a, const Point2& b) {
        set(a);
        include(b);
    }
    /// @{
    /// Reads the corners.
    constexpr void get(Point2& lowCorner, Point2& highCorner) const {
        lowCorner = low, highCorner = high;
    }
    constexpr void get(double* lowCorner, double* highCorner) const {
        low.get(lowCorner), high.get(highCorner);
    }
    /// @}

    /// Halfway between the corners, also of an unbounded range.
    constexpr Point2 mid() const { return combine(low, high); }
    /// From corner to corner.
    constexpr Vector2 size() const { return high - low; }
    /// The product of the sides; -1.0 if unbounded.
    constexpr double area() const { return isUnbounded() ? -1.0 : size().x * size().y; }

    /// @{
    /// Widens to hold a point; an unbounded range stays as it is.
    constexpr void include(const Point2& p) { detail::widen(*this, p, p); }
    constexpr void include(double x, double y) { include(Point2(x, y)); }
    /// @}
    /// Widens to hold `other`; becomes unbounded if that is.
    constexpr void include(const Range2d& other) { detail::widen(*this, other); }

    /// Whether `p` lies inside or on the border, after widening by `tol`.
    constexpr bool contains(const Point2& p, double tol = 0) const {
        return detail::containsPoint(*this, p, tol);
    }
    /// Whether `other` lies inside, after widening by `tol`. An unbounded range lies in an
    /// unbounded one only.
    constexpr bool contains(const Range2d& other, double tol = 0) const {
        return detail::containsRange(*this, other, tol);
    }
    /// Whether the ranges overlap by more than -tol: with 0, ranges that only touch do not.
    constexpr bool intersects(const Range2d& other, double tol = 0) const {
        return detail::intersects(*this, other, tol);
    }

    /// Becomes the part that lies in `other` too: `other` if this range is unbounded, unchanged if
    /// `other` is. Of ranges that are apart on the first axis the result is inverted, and therefore
    /// unbounded: test intersects() first.
    constexpr void clipTo(const Range2d& other);

    /// Compares the corners exactly.
    constexpr bool operator==(const Range2d&) const = default;
};

/// An axis-aligned box.
struct Range3d {
    /// @{
    /// A corner.
    Point low = Point(1, 1, 1);
    Point high = Point(0, 0, 0);
    /// @}

    /// Unbounded.
    constexpr Range3d() = default;
    /// From the corners.
    constexpr Range3d(const Point& lowCorner, const Point& highCorner)
        : low(lowCorner), high(highCorner) {}

    /// Whether the first axis is inverted, so that the range means all of space.
    constexpr bool isUnbounded() const { return detail::inverted(low, high); }
    /// Stores 1 and 0 on every axis.
    constexpr void setUnbounded() { *this = Range3d(); }
    /// Stores the corners, three numbers each.
    constexpr void set(const double* lowCorner, const double* highCorner) {
        *this = Range3d(Point(lowCorner), Point(highCorner));
    }
    /// @{
    /// Becomes a range of one point.
    constexpr void set(const Point& p) { *this = Range3d(p, p); }
    constexpr void set(const double* xyz) { set(Point(xyz)); }
    constexpr void set(const float* xyz) { set(Point(PointFlt(xyz))); }
    constexpr void set(double x, double y, double z) { set(Point(x, y, z)); }
    /// @}
    /// @{
    /// Reads the corners.
    constexpr void get(Point& lowCorner, Point& highCorner) const {
        lowCorner = low, highCorner = high;
    }
    constexpr void get(double* lowCorner, double* highCorner) const {
        low.get(lowCorner), high.get(highCorner);
    }
    /// @}

    /// Halfway between the corners, also of an unbounded range.
    constexpr Point mid() const { return combine(low, high); }
    /// From corner to corner.
    constexpr Vector size() const { return high - low; }
    /// The product of the sides; -1.0 if unbounded.
    constexpr double volume() const {
        return isUnbounded() ? -1.0 : size().x * size().y * size().z;
    }

    /// @{
    /// Widens to hold a point; an unbounded range stays as it is.
    constexpr void include(const Point& p) { detail::widen(*this, p, p); }
    constexpr void include(double x, double y, double z) { include(Point(x, y, z)); }
    /// @}
    /// Widens to hold `other`; becomes unbounded if that is.
    constexpr void include(const Range3d& other) { detail::widen(*this, other); }

    /// Whether `p` lies inside or on the border, after widening by `tol`.
    constexpr bool contains(const Point& p, double tol = 0) const {
        return detail::containsPoint(*this, p, tol);
    }
    /// Whether `other` lies inside, after widening by `tol`. An unbounded range lies in an
    /// unbounded one only.
    constexpr bool contains(const Range3d& other, double tol = 0) const {
        return detail::containsRange(*this, other, tol);
    }
    /// Whether the ranges overlap by more than -tol: with 0, ranges that only touch do not.
    constexpr bool intersects(const Range3d& other, double tol = 0) const {
        return detail::intersects(*this, other, tol);
    }

    /// Compares the corners exactly.
    constexpr bool operator==(const Range3d&) const = default;
};

constexpr void Range2d::clipTo(const Range2d& other) {
    if (other.isUnbounded())
        return;
    if (isUnbounded()) {
        *this = other;
        return;
    }
    low = detail::each<Point2>(detail::greatest, other.low, low);
    high = detail::each<Point2>(detail::least, other.high, high);
}

/// @{
/// The Euclidean distance of a value or a point from a range: 0 inside, and 0 for an unbounded one.
constexpr double distance(double value, const Range1d& range) {
    return range.isUnbounded() ? 0 : detail::gap(range.low, range.high, value, value);
}
inline double distance(const Point2& p, const Range2d& range) {
    return range.isUnbounded()
               ? 0
               : detail::each<Vector2>(detail::gap, range.low, range.high, p, p).length();
}
inline double distance(const Point& p, const Range3d& range) {
    return range.isUnbounded()
               ? 0
               : detail::each<Vector>(detail::gap, range.low, range.high, p, p).length();
}
/// @}

/// The gap between two intervals: 0 if they overlap or one is unbounded.
constexpr double distance(const Range1d& a, const Range1d& b) {
    return a.isUnbounded() || b.isUnbounded() ? 0 : detail::gap(a.low, a.high, b.low, b.high);
}

namespace detail {

/// The gap on one axis, where an inverted axis counts as unbounded.
constexpr double axisGap(double aLow, double aHigh, double bLow, double bHigh) {
    return distance(Range1d(aLow, aHigh), Range1d(bLow, bHigh));
}

} // namespace detail

/// @{
/// The Euclidean distance of two ranges, from the gap on each axis by itself.
inline double distance(const Range2d& a, const Range2d& b) {
    return detail::each<Vector2>(detail::axisGap, a.low, a.high, b.low, b.high).length();
}
inline double distance(const Range3d& a, const Range3d& b) {
    return detail::each<Vector>(detail::axisGap, a.low, a.high, b.low, b.high).length();
}
/// @}

/// Whether both corners differ by strictly less than `tol` on every axis.
template<AnyRange R>
bool equivalent(const R& a, const R& b, double tol = epsilonTol) {
    const auto within = [tol](double s, double t) { return std::fabs(s - t) < tol; };
    return detail::all(within, a.low, b.low) && detail::all(within, a.high, b.high);
}

} // namespace zeLinear

// SPDX-License-Identifier: MIT

/// @file
/// Positions: zeLinear::Point with its two-dimensional and single-precision forms, the rational
/// zeLinear::RPoint, and the homogeneous zeLinear::HPoint.
///
/// Points differ by vectors: `point - point` is a vector, `point + vector` a point. Points are not
/// added or scaled; combine() takes weighted means of them.
///
/// Threads: plain values, which any thread may use by itself.
///
/// @code
/// using namespace zeLinear;
/// Point a(1, 2, 3), b(1, 2, 7);
/// assert(b - a == Vector(0, 0, 4));
/// assert(combine(a, b) == Point(1, 2, 5) && distance(a, b) == 4);
/// assert(Point(HPoint(2, 4, 6, 2)) == a);
/// @endcode

#pragma once

#include <type_traits>

#include "Base/Linear/zeLinearVector.h"

namespace zeLinear {

/// A position in space.
struct Point {
    /// @{
    /// A component.
    double x = 0;
    double y = 0;
    double z = 0;
    /// @}

    /// All zero.
    static const Point origin;

    /// Zero.
    constexpr Point() = default;
    /// @{
    /// From the components, in order.
    constexpr Point(double x0, double y0, double z0) : x(x0), y(y0), z(z0) {}
    constexpr explicit Point(const double* xyz) : x(xyz[0]), y(xyz[1]), z(xyz[2]) {}
    /// @}
    /// Copies the components, exactly.
    constexpr Point(const PointFlt& p);
    /// In the plane z = 0.
    constexpr explicit Point(const Point2& p);
    /// Drops the weight.
    constexpr explicit Point(const RPoint& p);
    /// Multiplies by 1 / w, which is not tested: infinities or NaN for a `w` of 0.
    constexpr explicit Point(const HPoint& p);

    /// @{
    /// Stores what the constructor of the same arguments does.
    constexpr void set(double x0, double y0, double z0) { *this = Point(x0, y0, z0); }
    constexpr void set(const double* xyz) { *this = Point(xyz); }
    constexpr void set(const Point2& p) { *this = Point(p); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(double& x0, double& y0, double& z0) const { x0 = x, y0 = y, z0 = z; }
    constexpr void get(double* xyz) const { get(xyz[0], xyz[1], xyz[2]); }
    /// @}

    /// Compares the components exactly.
    constexpr bool operator==(const Point&) const = default;
};

/// A position in the plane.
struct Point2 {
    /// @{
    /// A component.
    double x = 0;
    double y = 0;
    /// @}

    /// All zero.
    static const Point2 origin;

    /// Zero.
    constexpr Point2() = default;
    /// @{
    /// From the components, in order.
    constexpr Point2(double x0, double y0) : x(x0), y(y0) {}
    constexpr explicit Point2(const double* xy) : x(xy[0]), y(xy[1]) {}
    /// @}
    /// Copies the components, exactly.
    constexpr Point2(const Point2Flt& p);

    /// @{
    /// Stores what the constructor of the same arguments does.
    constexpr void set(double x0, double y0) { *this = Point2(x0, y0); }
    constexpr void set(const double* xy) { *this = Point2(xy); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(double& x0, double& y0) const { x0 = x, y0 = y; }
    constexpr void get(double* xy) const { get(xy[0], xy[1]); }
    /// @}

    /// Compares the components exactly.
    constexpr bool operator==(const Point2&) const = default;
};

/// A position in space, in single precision.
struct PointFlt {
    /// @{
    /// A component.
    float x = 0;
    float y = 0;
    float z = 0;
    /// @}

    /// All zero.
    static const PointFlt origin;

    /// Zero.
    constexpr PointFlt() = default;
    /// @{
    /// From the components, in order.
    constexpr PointFlt(Number auto x0, Number auto y0, Number auto z0)
        : x(static_cast<float>(x0)), y(static_cast<float>(y0)), z(static_cast<float>(z0)) {}
    constexpr explicit PointFlt(const float* xyz) : x(xyz[0]), y(xyz[1]), z(xyz[2]) {}
    /// @}
    /// Rounds each component to single precision.
    constexpr explicit PointFlt(const Point& p) : PointFlt(p.x, p.y, p.z) {}
    /// In the plane z = 0.
    constexpr explicit PointFlt(const Point2Flt& p);

    /// @{
    /// Stores what the constructor of the same arguments does.
    constexpr void set(Number auto x0, Number auto y0, Number auto z0) {
        *this = PointFlt(x0, y0, z0);
    }
    constexpr void set(const float* xyz) { *this = PointFlt(xyz); }
    constexpr void set(const Point2Flt& p) { *this = PointFlt(p); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(float& x0, float& y0, float& z0) const { x0 = x, y0 = y, z0 = z; }
    constexpr void get(float* xyz) const { get(xyz[0], xyz[1], xyz[2]); }
    /// @}

    /// Compares the components exactly.
    constexpr bool operator==(const PointFlt&) const = default;
};

/// A position in the plane, in single precision.
struct Point2Flt {
    /// @{
    /// A component.
    float x = 0;
    float y = 0;
    /// @}

    /// All zero.
    static const Point2Flt origin;

    /// Zero.
    constexpr Point2Flt() = default;
    /// @{
    /// From the components, in order.
    constexpr Point2Flt(Number auto x0, Number auto y0)
        : x(static_cast<float>(x0)), y(static_cast<float>(y0)) {}
    constexpr explicit Point2Flt(const float* xy) : x(xy[0]), y(xy[1]) {}
    /// @}
    /// Rounds each component to single precision.
    constexpr explicit Point2Flt(const Point2& p) : Point2Flt(p.x, p.y) {}

    /// @{
    /// Stores what the constructor of the same arguments does.
    constexpr void set(Number auto x0, Number auto y0) { *this = Point2Flt(x0, y0); }
    constexpr void set(const float* xy) { *this = Point2Flt(xy); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(float& x0, float& y0) const { x0 = x, y0 = y; }
    constexpr void get(float* xy) const { get(xy[0], xy[1]); }
    /// @}

    /// Compares the components exactly.
    constexpr bool operator==(const Point2Flt&) const = default;
};

/// A rational point: `x`, `y`, `z` are Cartesian, and `w` is a weight beside them.
struct RPoint {
    /// @{
    /// A component.
    double x = 0;
    double y = 0;
    double z = 0;
    double w = 0;
    /// @}

    /// Zero.
    constexpr RPoint() = default;
    /// @{
    /// From the components, in order.
    constexpr RPoint(double x0, double y0, double z0, double w0) : x(x0), y(y0), z(z0), w(w0) {}
    constexpr explicit RPoint(const double* xyzw) : RPoint(xyzw[0], xyzw[1], xyzw[2], xyzw[3]) {}
    /// @}
    /// With weight 1.
    constexpr RPoint(const Point& p) : RPoint(p.x, p.y, p.z, 1) {}
    /// Multiplies by 1 / w, which is not tested, and keeps `w`.
    constexpr explicit RPoint(const HPoint& p);

    /// @{
    /// Stores what the constructor of the same arguments does.
    constexpr void set(double x0, double y0, double z0, double w0) {
        *this = RPoint(x0, y0, z0, w0);
    }
    constexpr void set(const double* xyzw) { *this = RPoint(xyzw); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(double& x0, double& y0, double& z0, double& w0) const {
        x0 = x, y0 = y, z0 = z, w0 = w;
    }
    constexpr void get(double* xyzw) const { get(xyzw[0], xyzw[1], xyzw[2], xyzw[3]); }
    /// @}

    /// Compares the components exactly.
    constexpr bool operator==(const RPoint&) const = default;
};

/// A homogeneous point: `x`, `y`, `z` are already multiplied by `w`.
struct HPoint {
    /// @{
    /// A component.
    double x = 0;
    double y = 0;
    double z = 0;
    double w = 0;
    /// @}

    /// Zero.
    constexpr HPoint() = default;
    /// @{
    /// From the components, in order.
    constexpr HPoint(double x0, double y0, double z0, double w0) : x(x0), y(y0), z(z0), w(w0) {}
    constexpr explicit HPoint(const double* xyzw) : HPoint(xyzw[0], xyzw[1], xyzw[2], xyzw[3]) {}
    /// @}
    /// With a `w` of 1.
    constexpr HPoint(const Point& p) : HPoint(p.x, p.y, p.z, 1) {}
    /// Multiplies by `w`, and keeps it.
    constexpr explicit HPoint(const RPoint& p) : HPoint(p.x * p.w, p.y * p.w, p.z * p.w, p.w) {}

    /// @{
    /// Stores what the constructor of the same arguments does.
    constexpr void set(double x0, double y0, double z0, double w0) {
        *this = HPoint(x0, y0, z0, w0);
    }
    constexpr void set(const double* xyzw) { *this = HPoint(xyzw); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(double& x0, double& y0, double& z0, double& w0) const {
        x0 = x, y0 = y, z0 = z, w0 = w;
    }
    constexpr void get(double* xyzw) const { get(xyzw[0], xyzw[1], xyzw[2], xyzw[3]); }
    /// @}

    /// Whether the point lies in the view volume of clip space: `x` and `y` within -w to w, `z` not
    /// below 0 and, if `testFar`, not above `w`.
    constexpr bool insideView(bool testFar) const {
        return -w <= x && x <= w && -w <= y && y <= w && z >= 0 && (!testFar || z <= w);
    }

    /// Compares the components exactly.
    constexpr bool operator==(const HPoint&) const = default;
};

// The constants

inline constexpr Point Point::origin(0, 0, 0);
inline constexpr Point2 Point2::origin(0, 0);
inline constexpr PointFlt PointFlt::origin(0, 0, 0);
inline constexpr Point2Flt Point2Flt::origin(0, 0);

// Members that need a sibling

constexpr Point::Point(const PointFlt& p) : x(p.x), y(p.y), z(p.z) {}
constexpr Point::Point(const Point2& p) : x(p.x), y(p.y), z(0) {}
constexpr Point::Point(const RPoint& p) : x(p.x), y(p.y), z(p.z) {}
constexpr Point::Point(const HPoint& p) : Point(RPoint(p)) {}
constexpr Point2::Point2(const Point2Flt& p) : x(p.x), y(p.y) {}
constexpr PointFlt::PointFlt(const Point2Flt& p) : x(p.x), y(p.y), z(0) {}
constexpr RPoint::RPoint(const HPoint& p) : w(p.w) {
    const double scale = 1 / p.w;
    x = p.x * scale;
    y = p.y * scale;
    z = p.z * scale;
}

/// The vector type of a point's precision and dimension.
template<AnyPoint P>
using DifferenceOf = std::conditional_t<
    std::same_as<P, Point>, Vector,
    std::conditional_t<std::same_as<P, Point2>, Vector2,
                       std::conditional_t<std::same_as<P, PointFlt>, VectorFlt, Vector2Flt>>>;

/// The vector from `b` to `a`.
template<AnyPoint P>
constexpr DifferenceOf<P> operator-(const P& a, const P& b) {
    return detail::each<DifferenceOf<P>>(detail::Minus(), a, b);
}

/// @{
/// The point moved by a vector.
template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr P operator+(const P& p, const V& v) {
    return detail::each<P>(detail::Plus(), p, v);
}

template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr P operator-(const P& p, const V& v) {
    return detail::each<P>(detail::Minus(), p, v);
}

template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr P& operator+=(P& p, const V& v) {
    return p = p + v;
}

template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr P& operator-=(P& p, const V& v) {
    return p = p - v;
}
/// @}

/// @{
/// The dot product of the position vector of `p` with `v`.
template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr Scalar<P> dot(const P& p, const V& v) {
    return detail::sumOfProducts(p, v);
}
template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr Scalar<P> dot(const V& v, const P& p) {
    return detail::sumOfProducts(v, p);
}
/// @}

/// The square of the distance.
template<AnyPoint P>
constexpr Scalar<P> distance2(const P& a, const P& b) {
    return (b - a).length2();
}
/// The distance.
template<AnyPoint P>
Scalar<P> distance(const P& a, const P& b) {
    return (b - a).length();
}

} // namespace zeLinear

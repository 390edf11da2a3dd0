// SPDX-License-Identifier: MIT

/// @file
/// Positions: zeLinear::Point with its two-dimensional and single-precision forms, the rational
/// zeLinear::RPoint, and the homogeneous zeLinear::HPoint.
///
/// Points differ by vectors: `point - point` is a vector, `point + vector` a point. Points are not
/// added or scaled; combine() takes weighted means of them.
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
    double x = 0;
    double y = 0;
    double z = 0;

    static const Point origin;

    constexpr Point() = default;
    constexpr Point(double x0, double y0, double z0) : x(x0), y(y0), z(z0) {}
    /// From three numbers.
    constexpr explicit Point(const double* xyz) : x(xyz[0]), y(xyz[1]), z(xyz[2]) {}
    constexpr Point(const PointFlt& p);
    /// In the plane z = 0.
    constexpr explicit Point(const Point2& p);
    /// Drops the weight.
    constexpr explicit Point(const RPoint& p);
    /// Multiplies by 1 / w, which is not tested: infinities or NaN for a `w` of 0.
    constexpr explicit Point(const HPoint& p);

    constexpr void set(double x0, double y0, double z0) { *this = Point(x0, y0, z0); }
    constexpr void set(const double* xyz) { *this = Point(xyz); }
    constexpr void set(const Point2& p) { *this = Point(p); }
    constexpr void get(double& x0, double& y0, double& z0) const { x0 = x, y0 = y, z0 = z; }
    constexpr void get(double* xyz) const { get(xyz[0], xyz[1], xyz[2]); }

    constexpr bool operator==(const Point&) const = default;
};

/// A position in the plane.
struct Point2 {
    double x = 0;
    double y = 0;

    static const Point2 origin;

    constexpr Point2() = default;
    constexpr Point2(double x0, double y0) : x(x0), y(y0) {}
    /// From two numbers.
    constexpr explicit Point2(const double* xy) : x(xy[0]), y(xy[1]) {}
    constexpr Point2(const Point2Flt& p);

    constexpr void set(double x0, double y0) { *this = Point2(x0, y0); }
    constexpr void set(const double* xy) { *this = Point2(xy); }
    constexpr void get(double& x0, double& y0) const { x0 = x, y0 = y; }
    constexpr void get(double* xy) const { get(xy[0], xy[1]); }

    constexpr bool operator==(const Point2&) const = default;
};

/// A position in space, in single precision.
struct PointFlt {
    float x = 0;
    float y = 0;
    float z = 0;

    static const PointFlt origin;

    constexpr PointFlt() = default;
    constexpr PointFlt(float x0, float y0, float z0) : x(x0), y(y0), z(z0) {}
    constexpr PointFlt(int x0, int y0, int z0)
        : x(static_cast<float>(x0)), y(static_cast<float>(y0)), z(static_cast<float>(z0)) {}
    /// From three numbers.
    constexpr explicit PointFlt(const float* xyz) : x(xyz[0]), y(xyz[1]), z(xyz[2]) {}
    constexpr explicit PointFlt(const Point& p)
        : x(static_cast<float>(p.x)), y(static_cast<float>(p.y)), z(static_cast<float>(p.z)) {}
    /// In the plane z = 0.
    constexpr explicit PointFlt(const Point2Flt& p);

    constexpr void set(float x0, float y0, float z0) { *this = PointFlt(x0, y0, z0); }
    constexpr void set(const float* xyz) { *this = PointFlt(xyz); }
    constexpr void set(const Point2Flt& p) { *this = PointFlt(p); }
    constexpr void get(float& x0, float& y0, float& z0) const { x0 = x, y0 = y, z0 = z; }
    constexpr void get(float* xyz) const { get(xyz[0], xyz[1], xyz[2]); }

    constexpr bool operator==(const PointFlt&) const = default;
};

/// A position in the plane, in single precision.
struct Point2Flt {
    float x = 0;
    float y = 0;

    static const Point2Flt origin;

    constexpr Point2Flt() = default;
    constexpr Point2Flt(float x0, float y0) : x(x0), y(y0) {}
    constexpr Point2Flt(int x0, int y0) : x(static_cast<float>(x0)), y(static_cast<float>(y0)) {}
    /// From two numbers.
    constexpr explicit Point2Flt(const float* xy) : x(xy[0]), y(xy[1]) {}
    constexpr explicit Point2Flt(const Point2& p)
        : x(static_cast<float>(p.x)), y(static_cast<float>(p.y)) {}

    constexpr void set(float x0, float y0) { *this = Point2Flt(x0, y0); }
    constexpr void set(const float* xy) { *this = Point2Flt(xy); }
    constexpr void get(float& x0, float& y0) const { x0 = x, y0 = y; }
    constexpr void get(float* xy) const { get(xy[0], xy[1]); }

    constexpr bool operator==(const Point2Flt&) const = default;
};

/// A rational point: `x`, `y`, `z` are Cartesian, and `w` is a weight beside them.
struct RPoint {
    double x = 0;
    double y = 0;
    double z = 0;
    double w = 0;

    constexpr RPoint() = default;
    constexpr RPoint(double x0, double y0, double z0, double w0) : x(x0), y(y0), z(z0), w(w0) {}
    /// From four numbers.
    constexpr explicit RPoint(const double* xyzw) : RPoint(xyzw[0], xyzw[1], xyzw[2], xyzw[3]) {}
    /// With weight 1.
    constexpr RPoint(const Point& p) : RPoint(p.x, p.y, p.z, 1) {}
    /// Multiplies by 1 / w, which is not tested, and keeps `w`.
    constexpr explicit RPoint(const HPoint& p);

    constexpr void set(double x0, double y0, double z0, double w0) {
        *this = RPoint(x0, y0, z0, w0);
    }
    constexpr void set(const double* xyzw) { *this = RPoint(xyzw); }
    constexpr void get(double& x0, double& y0, double& z0, double& w0) const {
        x0 = x, y0 = y, z0 = z, w0 = w;
    }
    constexpr void get(double* xyzw) const { get(xyzw[0], xyzw[1], xyzw[2], xyzw[3]); }

    constexpr bool operator==(const RPoint&) const = default;
};

/// A homogeneous point: `x`, `y`, `z` are already multiplied by `w`.
struct HPoint {
    double x = 0;
    double y = 0;
    double z = 0;
    double w = 0;

    constexpr HPoint() = default;
    constexpr HPoint(double x0, double y0, double z0, double w0) : x(x0), y(y0), z(z0), w(w0) {}
    /// From four numbers.
    constexpr explicit HPoint(const double* xyzw) : HPoint(xyzw[0], xyzw[1], xyzw[2], xyzw[3]) {}
    /// With a `w` of 1.
    constexpr HPoint(const Point& p) : HPoint(p.x, p.y, p.z, 1) {}
    /// Multiplies by `w`, and keeps it.
    constexpr explicit HPoint(const RPoint& p) : HPoint(p.x * p.w, p.y * p.w, p.z * p.w, p.w) {}

    constexpr void set(double x0, double y0, double z0, double w0) {
        *this = HPoint(x0, y0, z0, w0);
    }
    constexpr void set(const double* xyzw) { *this = HPoint(xyzw); }
    constexpr void get(double& x0, double& y0, double& z0, double& w0) const {
        x0 = x, y0 = y, z0 = z, w0 = w;
    }
    constexpr void get(double* xyzw) const { get(xyzw[0], xyzw[1], xyzw[2], xyzw[3]); }

    /// Whether the point lies in the view volume of clip space: `x` and `y` within -w to w, `z` not
    /// below 0 and, if `testFar`, not above `w`.
    constexpr bool insideView(bool testFar) const {
        return -w <= x && x <= w && -w <= y && y <= w && z >= 0 && (!testFar || z <= w);
    }

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

// What the points share

/// The vector type of a point's precision and dimension.
template<AnyPoint P>
using DifferenceOf = std::conditional_t<
    std::same_as<P, Point>, Vector,
    std::conditional_t<std::same_as<P, Point2>, Vector2,
                       std::conditional_t<std::same_as<P, PointFlt>, VectorFlt, Vector2Flt>>>;

template<AnyPoint P>
constexpr DifferenceOf<P> operator-(const P& a, const P& b) {
    return detail::each<DifferenceOf<P>>(std::minus<>(), a, b);
}

template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr P operator+(const P& p, const V& v) {
    return detail::each<P>(std::plus<>(), p, v);
}

template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr P operator-(const P& p, const V& v) {
    return detail::each<P>(std::minus<>(), p, v);
}

template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr P& operator+=(P& p, const V& v) {
    return p = p + v;
}

template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr P& operator-=(P& p, const V& v) {
    return p = p - v;
}

/// The dot product of the position vector of `p` with `v`, and the other way round.
template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr Scalar<P> dot(const P& p, const V& v) {
    return detail::sumOfProducts(p, v);
}
template<AnyPoint P, DisplacementLike<DifferenceOf<P>> V>
constexpr Scalar<P> dot(const V& v, const P& p) {
    return detail::sumOfProducts(v, p);
}

/// The square of the distance, and the distance.
template<AnyPoint P>
constexpr Scalar<P> distance2(const P& a, const P& b) {
    return (b - a).length2();
}
template<AnyPoint P>
Scalar<P> distance(const P& a, const P& b) {
    return (b - a).length();
}

} // namespace zeLinear

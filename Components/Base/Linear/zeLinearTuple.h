// SPDX-License-Identifier: MIT

/// @file
/// Bare groups of two, three or four doubles, without a geometric meaning. Points and vectors
/// convert to them; nothing converts back by itself.
///
/// Threads: plain values, which any thread may use by itself.
///
/// @code
/// using namespace zeLinear;
/// Tuple3 t = Point(1, 2, 3);
/// assert(t == Tuple3(1, 2, 3) && distance(Tuple3::zero, Tuple3(2, 3, 6)) == 7);
/// @endcode

#pragma once

#include "Base/Linear/zeLinearPoint.h"

namespace zeLinear {

/// Two numbers.
struct Tuple2 {
    /// @{
    /// A component.
    double x = 0;
    double y = 0;
    /// @}

    /// All zero.
    static const Tuple2 zero;

    /// Zero.
    constexpr Tuple2() = default;
    /// @{
    /// From the components, in order.
    constexpr Tuple2(double x0, double y0) : x(x0), y(y0) {}
    constexpr explicit Tuple2(const double* xy) : Tuple2(xy[0], xy[1]) {}
    /// @}
    /// @{
    /// Copies the components.
    constexpr Tuple2(const Point2& p) : Tuple2(p.x, p.y) {}
    constexpr Tuple2(const Vector2& v) : Tuple2(v.x, v.y) {}
    /// @}

    /// @{
    /// Stores the components.
    constexpr void set(double x0, double y0) { *this = Tuple2(x0, y0); }
    constexpr void set(const double* xy) { *this = Tuple2(xy); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(double& x0, double& y0) const { x0 = x, y0 = y; }
    constexpr void get(double* xy) const { get(xy[0], xy[1]); }
    /// @}

    /// Compares the components exactly.
    constexpr bool operator==(const Tuple2&) const = default;
};

/// Three numbers.
struct Tuple3 {
    /// @{
    /// A component.
    double x = 0;
    double y = 0;
    double z = 0;
    /// @}

    /// All zero.
    static const Tuple3 zero;

    /// Zero.
    constexpr Tuple3() = default;
    /// @{
    /// From the components, in order.
    constexpr Tuple3(double x0, double y0, double z0) : x(x0), y(y0), z(z0) {}
    constexpr explicit Tuple3(const double* xyz) : Tuple3(xyz[0], xyz[1], xyz[2]) {}
    /// @}
    /// @{
    /// Copies the components.
    constexpr Tuple3(const Point& p) : Tuple3(p.x, p.y, p.z) {}
    constexpr Tuple3(const Vector& v) : Tuple3(v.x, v.y, v.z) {}
    constexpr Tuple3(const Normal& n) : Tuple3(n.x, n.y, n.z) {}
    /// @}

    /// @{
    /// Stores the components.
    constexpr void set(double x0, double y0, double z0) { *this = Tuple3(x0, y0, z0); }
    constexpr void set(const double* xyz) { *this = Tuple3(xyz); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(double& x0, double& y0, double& z0) const { x0 = x, y0 = y, z0 = z; }
    constexpr void get(double* xyz) const { get(xyz[0], xyz[1], xyz[2]); }
    /// @}

    /// Compares the components exactly.
    constexpr bool operator==(const Tuple3&) const = default;
};

/// Four numbers.
struct Tuple4 {
    /// @{
    /// A component.
    double x = 0;
    double y = 0;
    double z = 0;
    double w = 0;
    /// @}

    /// All zero.
    static const Tuple4 zero;

    /// Zero.
    constexpr Tuple4() = default;
    /// @{
    /// From the components, in order.
    constexpr Tuple4(double x0, double y0, double z0, double w0) : x(x0), y(y0), z(z0), w(w0) {}
    constexpr explicit Tuple4(const double* xyzw) : Tuple4(xyzw[0], xyzw[1], xyzw[2], xyzw[3]) {}
    /// @}
    /// @{
    /// Copies the components.
    constexpr Tuple4(const RPoint& p) : Tuple4(p.x, p.y, p.z, p.w) {}
    constexpr Tuple4(const HPoint& p) : Tuple4(p.x, p.y, p.z, p.w) {}
    /// @}

    /// @{
    /// Stores the components.
    constexpr void set(double x0, double y0, double z0, double w0) {
        *this = Tuple4(x0, y0, z0, w0);
    }
    constexpr void set(const double* xyzw) { *this = Tuple4(xyzw); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(double& x0, double& y0, double& z0, double& w0) const {
        x0 = x, y0 = y, z0 = z, w0 = w;
    }
    constexpr void get(double* xyzw) const { get(xyzw[0], xyzw[1], xyzw[2], xyzw[3]); }
    /// @}

    /// Compares the components exactly.
    constexpr bool operator==(const Tuple4&) const = default;
};

inline constexpr Tuple2 Tuple2::zero(0, 0);
inline constexpr Tuple3 Tuple3::zero(0, 0, 0);
inline constexpr Tuple4 Tuple4::zero(0, 0, 0, 0);

/// @{
/// The Euclidean distance.
inline double distance(const Tuple2& a, const Tuple2& b) {
    return Vector2(b.x - a.x, b.y - a.y).length();
}
inline double distance(const Tuple3& a, const Tuple3& b) {
    return Vector(b.x - a.x, b.y - a.y, b.z - a.z).length();
}
/// @}

} // namespace zeLinear

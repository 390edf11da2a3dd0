// SPDX-License-Identifier: MIT

/// @file
/// zeLinear::Quaternion: a rotation as four numbers, of which the scalar part `w` comes last.
///
/// A rotation by an angle about an axis is (axis sin(angle / 2), cos(angle / 2)); q and -q are the
/// same rotation. The matrix of a quaternion maps row vectors, right-handed, as
/// AffineMatrix::rotate() of the same angle and axis does.
///
/// Threads: plain values, which any thread may use by itself.
///
/// @code
/// using namespace zeLinear;
/// Quaternion a, b(toRadians(90), Normal::zAxis);
/// AffineMatrix m;
/// slerp(a, b, 0.5).getMatrix(m);
/// double half = std::sqrt(0.5);
/// assert(equivalent(Vector::xAxis * m, Vector(half, half, 0)));
/// @endcode

#pragma once

#include "Base/Linear/zeLinearMatrix.h"

namespace zeLinear {

/// A rotation, if its length is 1. The default is the identity.
struct Quaternion {
    /// @{
    /// A component.
    double x = 0;
    double y = 0;
    double z = 0;
    double w = 1;
    /// @}

    /// The identity.
    constexpr Quaternion() = default;
    /// @{
    /// From the components, in order.
    constexpr Quaternion(double x0, double y0, double z0, double w0) : x(x0), y(y0), z(z0), w(w0) {}
    constexpr explicit Quaternion(const double* xyzw)
        : Quaternion(xyzw[0], xyzw[1], xyzw[2], xyzw[3]) {}
    /// @}
    /// The rotation by an angle in radians about an axis.
    Quaternion(double angle, const Normal& axis) { setAngleAxis(angle, axis); }

    /// @{
    /// Stores what the constructor of the same arguments does.
    constexpr void set(double x0, double y0, double z0, double w0) {
        *this = Quaternion(x0, y0, z0, w0);
    }
    constexpr void set(const double* xyzw) { *this = Quaternion(xyzw); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(double& x0, double& y0, double& z0, double& w0) const {
        x0 = x, y0 = y, z0 = z, w0 = w;
    }
    constexpr void get(double* xyzw) const { get(xyzw[0], xyzw[1], xyzw[2], xyzw[3]); }
    /// @}

    /// The rotation by an angle in radians about an axis.
    ZEBASE_API void setAngleAxis(double angle, const Normal& axis);
    /// The angle, 0 to 2 pi, and the axis. The identity (`w` within epsilonTol of 1) gives angle 0,
    /// the x axis, and false; a full turn (`w` of -1) has an angle, and an axis that is not valid.
    /// The quaternion must be of length 1.
    ZEBASE_API bool getAngleAxis(double& angle, Normal& axis) const;

    /// Scales to length 1. A length of 0 is not tested for: the result is NaN.
    void normalize();

    /// The rotation as a matrix without translation. The quaternion must be of length 1.
    constexpr void getMatrix(AffineMatrix& matrix) const;
    /// The rows of that matrix: the images of the axes.
    void getFrame(Normal& xRow, Normal& yRow, Normal& zRow) const;
    /// The rotation whose matrix has these rows, which must be orthogonal and right-handed; the
    /// result is as exact as they are, and is not normalised.
    ZEBASE_API void setFrame(const Normal& xRow, const Normal& yRow, const Normal& zRow);

    /// Compares the components exactly.
    constexpr bool operator==(const Quaternion&) const = default;
};

/// @{
/// Arithmetic, each component by itself. Division divides each component: unlike that of vectors,
/// it does not multiply by a reciprocal.
constexpr Quaternion operator+(const Quaternion& a, const Quaternion& b) {
    return detail::each<Quaternion>(detail::Plus(), a, b);
}

constexpr Quaternion operator-(const Quaternion& a, const Quaternion& b) {
    return detail::each<Quaternion>(detail::Minus(), a, b);
}

constexpr Quaternion operator-(const Quaternion& q) {
    return detail::each<Quaternion>(detail::Negate(), q);
}

constexpr Quaternion operator*(const Quaternion& q, double factor) {
    return detail::each<Quaternion>([factor](double s) { return s * factor; }, q);
}

constexpr Quaternion operator*(double factor, const Quaternion& q) {
    return q * factor;
}

constexpr Quaternion operator/(const Quaternion& q, double divisor) {
    return detail::each<Quaternion>([divisor](double s) { return s / divisor; }, q);
}

constexpr Quaternion& operator+=(Quaternion& a, const Quaternion& b) {
    return a = a + b;
}

constexpr Quaternion& operator-=(Quaternion& a, const Quaternion& b) {
    return a = a - b;
}

constexpr Quaternion& operator*=(Quaternion& q, double factor) {
    return q = q * factor;
}

constexpr Quaternion& operator/=(Quaternion& q, double divisor) {
    return q = q / divisor;
}
/// @}

/// The dot product over all four components.
constexpr double dot(const Quaternion& a, const Quaternion& b) {
    return detail::sumOfProducts(a, b);
}

inline void Quaternion::normalize() {
    *this *= 1 / std::sqrt(dot(*this, *this));
}

constexpr void Quaternion::getMatrix(AffineMatrix& matrix) const {
    matrix = AffineMatrix(Vector(1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)),
                          Vector(2 * (x * y - z * w), 1 - 2 * (z * z + x * x), 2 * (y * z + x * w)),
                          Vector(2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)),
                          Vector::zero);
}

inline void Quaternion::getFrame(Normal& xRow, Normal& yRow, Normal& zRow) const {
    AffineMatrix matrix;
    getMatrix(matrix);
    xRow = matrix.row(0);
    yRow = matrix.row(1);
    zRow = matrix.row(2);
}

/// Spherical interpolation: the rotation at `t` (0 is `a`, 1 is `b`) of the shorter turn from `a`
/// to `b`, at constant speed. If their dot product is negative, `a` is replaced by -a, which is the
/// result at 0. Nearly equal ones (dot product above parallelTol) are interpolated linearly, and
/// normalised.
ZEBASE_API Quaternion slerp(const Quaternion& a, const Quaternion& b, double t);

} // namespace zeLinear

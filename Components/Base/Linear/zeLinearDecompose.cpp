// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearDecompose.h"

#include <algorithm>

namespace zeLinear {

namespace {

constexpr double singularTolerance = 1e-9;

bool vanishes(double s) {
    return std::fabs(s) < singularTolerance;
}

double clampToUnit(double s) {
    return std::clamp(s, -1.0, 1.0);
}

/// The angle, in degrees, of a sine and a cosine that rounding may have carried beyond 1; 0 where
/// both vanish.
double angleOf(double sine, double cosine) {
    const double u = clampToUnit(sine);
    const double v = clampToUnit(cosine);
    return vanishes(u) && vanishes(v) ? 0 : toDegrees(std::atan2(u, v));
}

/// The Euler angles, in degrees, of a matrix with orthonormal rows.
Vector eulerAngles(const AffineMatrix& rotation) {
    const auto& r = rotation.m;
    const double s = clampToUnit(-r[0][2]);
    const double c = std::sqrt(1 - s * s);
    const double ry = toDegrees(std::asin(s));
    if (vanishes(c) || vanishes(std::fabs(s) - 1) || std::fabs(r[0][2]) > 1)
        return Vector(angleOf(r[1][0] / s, r[1][1]), ry, 0); // at the pole
    return Vector(angleOf(r[1][2] / c, r[2][2] / c), ry, angleOf(r[0][1] / c, r[0][0] / c));
}

} // namespace

bool stelioDecompose(const AffineMatrix& matrix, Point& translate, Vector& scale, Vector& rotate,
                     Vector& shear) {
    // Gram-Schmidt on the rows; a row that vanishes is not scaled.
    Vector a;
    Vector b;
    Vector c;
    matrix.getFrame(translate, a, b, c);
    scale.x = a.length();
    if (!vanishes(scale.x))
        a /= scale.x;

    shear.x = dot(a, b);
    b -= a * shear.x;
    scale.y = b.length();
    if (!vanishes(scale.y)) {
        b /= scale.y;
        shear.x /= scale.y;
    }

    shear.y = dot(a, c);
    c -= a * shear.y;
    shear.z = dot(b, c);
    c -= b * shear.z;
    scale.z = c.length();
    if (!vanishes(scale.z)) {
        c /= scale.z;
        shear.y /= scale.z;
        shear.z /= scale.z;
    }

    AffineMatrix rotation;
    rotation.setFrame(translate, a, b, c);
    const double d = rotation.det3x3();
    if (-1.000001 < d && d < -0.999999) {
        scale *= -1;
        rotation *= -1;
    }
    rotate = vanishes(d) ? Vector::zero : eulerAngles(rotation);
    return !vanishes(d);
}

} // namespace zeLinear

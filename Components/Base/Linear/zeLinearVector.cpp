// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearVector.h"

#include <algorithm>
#include <numbers>

namespace zeLinear {

using std::numbers::pi;

double angle(const Normal& a, const Normal& b) {
    return std::acos(std::clamp(dot(a, b), -1.0, 1.0));
}

bool angle(const Normal& a, const Normal& b, double& out) {
    const bool valid = a.valid && b.valid;
    out = valid ? angle(a, b) : pi / 2;
    return valid;
}

double unitCircleRotation(const Normal& v, const Normal& xAxis, const Normal& yAxis,
                          bool positive) {
    if (!v.valid)
        return 0;
    const double turn = std::atan2(dot(v, yAxis), dot(v, xAxis));
    return positive && turn < 0 ? turn + 2 * pi : turn;
}

Vector rotate(const Vector& v, const Normal& axis, double angle) {
    if (!axis.valid)
        return v;
    const Vector along = project(v, axis);
    const Vector across = v - along;
    return along + across * std::cos(angle) + cross(axis, across) * std::sin(angle);
}

Normal interpolate(const Normal& a, const Normal& b, double t) {
    if (!a.valid || !b.valid)
        return a;
    Normal axis(cross(a, b));
    const double theta = angle(a, b);
    if (!axis.valid) {
        if (theta <= pi / 2)
            return a;
        axis = a.orthogonalVector();
    }
    return Normal(rotate(a, axis, t * theta));
}

Vector interpolate(const Vector& a, const Vector& b, double t) {
    const Normal direction = interpolate(a.normalized(), b.normalized(), t);
    return direction * ((1 - t) * a.length() + t * b.length());
}

} // namespace zeLinear

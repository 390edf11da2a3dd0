// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearQuaternion.h"

#include <algorithm>

namespace zeLinear {

void Quaternion::setAngleAxis(double angle, const Normal& axis) {
    const Vector v = axis * std::sin(angle / 2);
    *this = Quaternion(v.x, v.y, v.z, std::cos(angle / 2));
    normalize();
}

bool Quaternion::getAngleAxis(double& angle, Normal& axis) const {
    if (std::fabs(w - 1) < epsilonTol) {
        angle = 0;
        axis = Normal::xAxis;
        return false;
    }
    const double half = std::acos(std::clamp(w, -1.0, 1.0));
    angle = 2 * half;
    axis = Vector(x, y, z) / std::sin(half);
    return true;
}

void Quaternion::setFrame(const Normal& xRow, const Normal& yRow, const Normal& zRow) {
    // The largest component comes from a root of at least 1, and the others from it.
    const double trace = xRow.x + yRow.y + zRow.z;
    if (trace > 0) {
        const double t = trace + 1;
        const double k = 0.5 / std::sqrt(t);
        set((yRow.z - zRow.y) * k, (zRow.x - xRow.z) * k, (xRow.y - yRow.x) * k, t * k);
    } else if (xRow.x > yRow.y && xRow.x > zRow.z) {
        const double t = 1 + xRow.x - yRow.y - zRow.z;
        const double k = 0.5 / std::sqrt(t);
        set(t * k, (xRow.y + yRow.x) * k, (zRow.x + xRow.z) * k, (yRow.z - zRow.y) * k);
    } else if (yRow.y > zRow.z) {
        const double t = 1 + yRow.y - zRow.z - xRow.x;
        const double k = 0.5 / std::sqrt(t);
        set((xRow.y + yRow.x) * k, t * k, (yRow.z + zRow.y) * k, (zRow.x - xRow.z) * k);
    } else {
        const double t = 1 + zRow.z - xRow.x - yRow.y;
        const double k = 0.5 / std::sqrt(t);
        set((zRow.x + xRow.z) * k, (yRow.z + zRow.y) * k, t * k, (xRow.y - yRow.x) * k);
    }
}

Quaternion slerp(const Quaternion& from, const Quaternion& b, double t) {
    Quaternion a = from;
    double d = dot(a, b);
    if (d < 0) {
        a = -a;
        d = -d;
    }
    if (d > parallelTol) {
        Quaternion q = a + (b - a) * t;
        q.normalize();
        return q;
    }
    const double phi = std::acos(std::clamp(d, -1.0, 1.0)) * t;
    Quaternion e = b - a * d;
    e.normalize();
    return a * std::cos(phi) + e * std::sin(phi);
}

} // namespace zeLinear

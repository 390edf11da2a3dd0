// SPDX-License-Identifier: MIT
// Measures a triangle.

#include <cstdio>

#include "Base/Linear/zeLinearPoint.h"

int main() {
    const zeLinear::Point a(0, 0, 0);
    const zeLinear::Point b(3, 0, 0);
    const zeLinear::Point c(0, 4, 0);
    const double area = cross(b - a, c - a).length() / 2;
    std::printf("area %g, longest side %g\n", area, distance(b, c));
    return area == 6 ? 0 : 1;
}

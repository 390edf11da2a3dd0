// SPDX-License-Identifier: MIT

// Places a box in a scene and aims a ray at it. Points are row vectors, p' = p M: in a product of
// matrices, the first one acts first.
//
//     $ geometry
//     turned and then moved, the corner (2 3 0) is at (7 2 0)
//     moved and then turned, it would be at (-3 12 0)
//     the box in the scene has the bounds (7 0 0) to (10 2 1)
//     a ray enters it at (7 0.5 0.5) and leaves it at (10 0.5 0.5)
//     a ray above it misses it
//     the point of the ray that is nearest to (8 3.5 4.5) is (8 0.5 0.5), at a distance of 5
//     in the coordinates of the box, the ray enters at (0.5 3 0.5)

#include <cmath>
#include <cstdio>

#include "Base/Linear/zeLinearIntersect.h"
#include "Base/Linear/zeLinearLine.h"
#include "Base/Linear/zeLinearMatrix.h"
#include "Base/Linear/zeLinearRange.h"
#include "Base/Linear/zeLinearTolerance.h"

namespace {

using zeLinear::AffineMatrix;
using zeLinear::ParamLine;
using zeLinear::Point;
using zeLinear::Range1d;
using zeLinear::Range3d;

/// To six places, without the last digits of sine and cosine; the sum makes a zero positive.
double rounded(double number) {
    return std::round(number * 1e6) / 1e6 + 0.0;
}

void print(const char* before, const Point& point, const char* after) {
    std::printf("%s(%g %g %g)%s", before, rounded(point.x), rounded(point.y), rounded(point.z),
                after);
}

/// Each corner of the box is transformed. A range begins with its first point: one that holds
/// nothing does not exist, and one without arguments means all of space.
Range3d bounds(const Range3d& box, const AffineMatrix& toScene) {
    Range3d result;
    for (int corner = 0; corner < 8; ++corner) {
        const Point point((corner & 1) != 0 ? box.high.x : box.low.x,
                          (corner & 2) != 0 ? box.high.y : box.low.y,
                          (corner & 4) != 0 ? box.high.z : box.low.z);
        if (corner == 0)
            result.set(point * toScene);
        else
            result.include(point * toScene);
    }
    return result;
}

/// Between the parameters 0 and 1 the ray runs through its vector. An unbounded result means that
/// there is no hit.
void shoot(const ParamLine& ray, const Range3d& box) {
    const Range1d hit = intersect(ray, box);
    if (hit.isUnbounded()) {
        std::printf("a ray above it misses it\n");
        return;
    }
    print("a ray enters it at ", ray.eval(hit.low), "");
    print(" and leaves it at ", ray.eval(hit.high), "\n");
}

} // namespace

int main() {
    AffineMatrix turn; // Without arguments, the identity.
    turn.rotateZ(zeLinear::toRadians(90));
    AffineMatrix move;
    move.translate(10, 0, 0);

    const Range3d box(Point(0, 0, 0), Point(2, 3, 1));
    const Point corner(2, 3, 0);
    const AffineMatrix toScene = turn * move;
    print("turned and then moved, the corner ", corner, "");
    print(" is at ", corner * toScene, "\n");
    print("moved and then turned, it would be at ", corner * (move * turn), "\n");

    const Range3d placed = bounds(box, toScene);
    print("the box in the scene has the bounds ", placed.low, "");
    print(" to ", placed.high, "\n");

    const ParamLine ray(Point(0, 0.5, 0.5), zeLinear::Vector(1, 0, 0));
    shoot(ray, placed);
    shoot(ray + zeLinear::Vector(0, 0, 2), placed);

    const Point beside(8, 3.5, 4.5);
    const Point nearest = ray.eval(projectParam(beside, ray));
    print("the point of the ray that is nearest to ", beside, "");
    print(" is ", nearest, ", at a distance of ");
    std::printf("%g\n", rounded((beside - nearest).length()));

    AffineMatrix toBox = toScene;
    if (!toBox.invert()) // A transform that makes things flat has no inverse.
        return 1;
    print("in the coordinates of the box, the ray enters at ", Point(7, 0.5, 0.5) * toBox, "\n");
    return 0;
}

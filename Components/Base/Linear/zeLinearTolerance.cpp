// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearTolerance.h"

#include <cmath>

namespace zeLinear {

namespace {

struct SinCos {
    double sin = 0;
    double cos = 0;

    explicit SinCos(double angle) { ::sincos(angle, &sin, &cos); }
};

} // namespace

double epsilonTol = 1e-12;
double epsilon2Tol = 1e-24;
float epsilonTolFlt = 1e-6F;
float epsilon2TolFlt = 1e-12F;

double degreeTol = 1e-5;
double parallelTol = SinCos(toRadians(degreeTol)).cos;
double parallel2Tol = parallelTol * parallelTol;
double perpendicularTol = SinCos(toRadians(degreeTol)).sin;
double perpendicular2Tol = perpendicularTol * perpendicularTol;

} // namespace zeLinear

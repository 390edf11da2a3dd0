// SPDX-License-Identifier: MIT

/// @file
/// The tolerances of zeLinear, and the units of angle.
///
/// The tolerances are plain writable globals, set once when the library is loaded. Changing one
/// does not change those that were computed from it.
///
/// Angles are in radians throughout, unless a name says degrees.
///
/// Threads: an application that needs other values assigns them before it starts a thread; they are
/// read everywhere without a lock.
///
/// @code
/// #include <cmath>
/// double right = zeLinear::toRadians(90);
/// assert(std::fabs(std::cos(right)) < zeLinear::epsilonTol);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeLinear {

/// 1e-12: the smallest length or pivot that counts as non-zero.
extern ZEBASE_API double epsilonTol;
/// 1e-24: the smallest squared length that counts as non-zero.
extern ZEBASE_API double epsilon2Tol;
/// 1e-6: the smallest length that counts as non-zero, in single precision.
extern ZEBASE_API float epsilonTolFlt;
/// 1e-12: the smallest squared length that counts as non-zero, in single precision.
extern ZEBASE_API float epsilon2TolFlt;

/// 1e-5: the angular tolerance, in degrees. The four that follow are computed from it at load time.
extern ZEBASE_API double degreeTol;
/// Cosine of degreeTol: unit vectors with `|a·b|` at or above it are parallel.
extern ZEBASE_API double parallelTol;
/// The square of parallelTol.
extern ZEBASE_API double parallel2Tol;
/// Sine of degreeTol: unit vectors with `|a·b|` at or below it are perpendicular.
extern ZEBASE_API double perpendicularTol;
/// The square of perpendicularTol.
extern ZEBASE_API double perpendicular2Tol;

/// Converts degrees to radians.
constexpr double toRadians(double degrees) {
    return degrees * 0.017453292519943295;
}
/// Converts radians to degrees.
constexpr double toDegrees(double radians) {
    return radians * 57.29577951308232;
}

} // namespace zeLinear

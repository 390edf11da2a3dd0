// SPDX-License-Identifier: MIT

/// @file
/// The tolerances of zeLinear, and the units of angle.
///
/// The tolerances are plain writable globals, set once when the library is loaded. An application
/// that needs others assigns them before it starts a thread: they are read everywhere without a
/// lock. Changing one does not change those that were computed from it.
///
/// Angles are in radians throughout, unless a name says degrees.
///
/// @code
/// double right = zeLinear::toRadians(90);
/// assert(std::fabs(std::cos(right)) < zeLinear::epsilonTol);
/// @endcode

#pragma once

#include <cmath>

#include "Base/zeBaseExport.h"

namespace zeLinear {

/// 1e-12: the smallest length or pivot that counts as non-zero.
extern ZEBASE_API double epsilonTol;
/// 1e-24: the smallest squared length that counts as non-zero.
extern ZEBASE_API double epsilon2Tol;
/// 1e-6 and 1e-12: the same for single precision.
extern ZEBASE_API float epsilonTolFlt;
extern ZEBASE_API float epsilon2TolFlt;

/// 1e-5: the angular tolerance, in degrees. The four below are computed from it at load time.
extern ZEBASE_API double degreeTol;
/// Cosine of degreeTol: unit vectors with `|a·b|` at or above it are parallel. And its square.
extern ZEBASE_API double parallelTol;
extern ZEBASE_API double parallel2Tol;
/// Sine of degreeTol: unit vectors with `|a·b|` at or below it are perpendicular. And its square.
extern ZEBASE_API double perpendicularTol;
extern ZEBASE_API double perpendicular2Tol;

/// Between degrees and radians.
constexpr double toRadians(double degrees) {
    return degrees * 0.017453292519943295;
}
constexpr double toDegrees(double radians) {
    return radians * 57.29577951308232;
}

} // namespace zeLinear

// SPDX-License-Identifier: MIT

/// @file
/// Splits a transformation into translation, scale, shear and Euler angles.
///
/// Threads: a pure function, callable from any thread.
///
/// @code
/// using namespace zeLinear;
/// AffineMatrix m;
/// m.translate(1, 2, 3);
/// m.rotateZ(toRadians(30));
/// m.scale(2, 2, 5);
/// Point translate;
/// Vector scale, rotate, shear;
/// assert(stelioDecompose(m, translate, scale, rotate, shear));
/// assert(translate == Point(1, 2, 3) && equivalent(scale, Vector(2, 2, 5)));
/// assert(equivalent(rotate, Vector(0, 0, 30)));
/// @endcode

#pragma once

#include "Base/Linear/zeLinearMatrix.h"

namespace zeLinear {

/// Splits `matrix` into factors whose product it is, the first of which acts first: scale, shear,
/// rotation about x, about y, about z, and translation. To multiply them together again (what is
/// called last acts first):
///
///     m.translate(translate - Point::origin);
///     m.rotateZ(rz); m.rotateY(ry); m.rotateX(rx);
///     m.preMult(AffineMatrix(Vector(1, 0, 0), Vector(shear.x, 1, 0),
///                            Vector(shear.y, shear.z, 1), Vector::zero));
///     m.scale(scale.x, scale.y, scale.z);
///
/// `rotate` holds rx, ry, rz in **degrees**; at the poles, where ry is 90 or -90, rz is 0. `shear`
/// holds xy, xz, yz. Of a matrix that mirrors all three of `scale` are negative, not one.
///
/// @return false if the matrix is singular (by 1e-9, not by epsilonTol): `rotate` is then zero; the
///     other results are stored all the same
ZEBASE_API bool stelioDecompose(const AffineMatrix& matrix, Point& translate, Vector& scale,
                                Vector& rotate, Vector& shear);

} // namespace zeLinear

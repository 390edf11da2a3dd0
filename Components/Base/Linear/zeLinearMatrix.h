// SPDX-License-Identifier: MIT

/// @file
/// The matrices: affine maps of space and of the plane, and projective maps.
///
/// **Points and vectors are row vectors, multiplied from the left: p' = p M.** The rows of a matrix
/// are the images of the axes, and the last row is the translation. In a product `A * B`, A is
/// applied first.
///
/// | Class           | Entries      | Meaning                                              |
/// |-----------------|--------------|------------------------------------------------------|
/// | AffineMatrix    | 4 x 3 double | rows x, y, z and translation; the last column is     |
/// |                 |              | implied to be 0, 0, 0, 1                             |
/// | AffineMatrix2   | 3 x 2 double | the same in the plane                                |
/// | AffineMatrixFlt | 4 x 3 float  | the same in single precision                         |
/// | ProjMatrix      | 4 x 4 double | any homogeneous map                                  |
/// | ProjMatrixFlt   | 4 x 4 float  | the same in single precision                         |
///
/// A matrix made without arguments is the identity. Building operations (`translate`, `scale`,
/// `rotate`, `mirror`) multiply **in front**: what is called last acts first.
///
/// `preMult(out, in)` of points, vectors and homogeneous points **does nothing if `out` and `in`
/// are the same object**: use another one, or `p = p * m`. Lines and planes follow from that: in
/// place, the point stays (and so do the vectors of the parametric forms), while the direction or
/// normal is transformed; a ParamPlane then makes its old `v` orthogonal to the new normal.
///
/// This header includes all of them: zeLinearAffineMatrix.h, zeLinearProjMatrix.h, and
/// zeLinearMatrixBase.h with what they share.
///
/// Threads: plain values, which any thread may use by itself. `Identity` is a constant.
///
/// @code
/// using namespace zeLinear;
/// AffineMatrix m;
/// m.translate(10, 0, 0);
/// m.rotateZ(toRadians(90)); // acts first
/// assert(equivalent(Point(1, 0, 0) * m, Point(10, 1, 0)));
/// assert(equivalent(Vector(1, 0, 0) * m, Vector(0, 1, 0)));
/// assert(equivalent(m * m.inverse(), AffineMatrix::Identity));
/// @endcode

#pragma once

#include "Base/Linear/zeLinearAffineMatrix.h"
#include "Base/Linear/zeLinearMatrixBase.h"
#include "Base/Linear/zeLinearProjMatrix.h"

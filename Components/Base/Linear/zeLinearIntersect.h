// SPDX-License-Identifier: MIT

/// @file
/// Where lines, planes, ranges, segments and triangles meet.
///
/// Functions that may find nothing say so in `ok`; each says what it returns then, which is not an
/// intersection. The default tolerances are those that the library itself passes.
///
/// Threads: pure functions, callable from any thread; they read the tolerances without a lock.
///
/// @code
/// using namespace zeLinear;
/// bool ok = false;
/// Line ray(Point(0, 0, 5), Normal(0, 0, -1));
/// assert(intersect(ray, Plane(Point(0, 0, 1), Normal::zAxis), ok) == Point(0, 0, 1) && ok);
/// Range1d hit = intersect(ParamLine(Point(-1, 0, 0), Point(1, 0, 0)),
///                         Range3d(Point(-0.5, -1, -1), Point(0.5, 1, 1)));
/// assert(!hit.isUnbounded() && hit == Range1d(0.25, 0.75));
/// @endcode

#pragma once

#include "Base/Linear/zeLinearLine.h"
#include "Base/Linear/zeLinearPlane.h"
#include "Base/Linear/zeLinearRange.h"
#include "Base/zeBaseExport.h"

namespace zeLinear {

/// The point of a line on a plane. `ok` is true if |normal · direction| is at least `tol`;
/// otherwise the two count as parallel, and the result is the point of the line.
ZEBASE_API Point intersect(const Line& line, const Plane& plane, bool& ok,
                           double tol = perpendicular2Tol);

/// The point of `b` that is nearest to `a`. Lines that pass each other at a distance give it too:
/// compare its distance from `a`. `ok` is true if the squared length of the cross product of the
/// directions is at least `tol`; otherwise they are parallel, and the result is the point of `a`.
ZEBASE_API Point intersect(const Line& a, const Line& b, bool& ok, double tol = perpendicular2Tol);

/// The line common to two planes. For parallel planes `ok` is false, and the result holds point and
/// normal of `a`.
ZEBASE_API Line intersect(const Plane& a, const Plane& b, bool& ok);

/// The point common to three planes. With `ok` false the result is undefined.
ZEBASE_API Point intersect(const Plane& a, const Plane& b, const Plane& c, bool& ok);

/// The parameters at which a line enters and leaves a box. **An unbounded result says that there is
/// no hit**: test isUnbounded() first. A line through the box gives its two parameters in order;
/// one that touches an edge gives a range of one value. The box must be bounded: it is taken by
/// its corners.
///
/// A point on a face counts if it lies in the box widened by epsilonTol, an **absolute** tolerance.
/// Rounding exceeds it where coordinates, of the box or of the line's point, are beyond about 1000:
/// of random lines through a box up to one in 1,000 is missed at 2,000, up to one in 10 at 10,000
/// and up to half at 100,000. Scale larger scenes down, or move them to the origin, first.
ZEBASE_API Range1d intersect(const ParamLine& line, const Range3d& box);

/// The parameters at which a line meets the infinite cylinder about `axis`, in rising order.
/// `t` has room for two.
/// @return the number of hits: 2; 1 if the two differ by less than epsilonTol; or 0, then with
///     nothing useful in `t`, also for a line parallel to the axis
ZEBASE_API int intersectCylinder(const ParamLine& line, const Line& axis, double radius, double* t);

/// What two ranges have in common; with an unbounded one, the other. Where they miss each other by
/// less than `tol`, the result is the gap between them; by more, it is (0, 0).
ZEBASE_API Range1d intersect(const Range1d& a, const Range1d& b, double tol = epsilonTol);

/// @{
/// What two ranges have in common, axis by axis as of two intervals; with an unbounded range, the
/// other. Of bounded ranges, an axis that is inverted by itself counts as unbounded.
ZEBASE_API Range2d intersect(const Range2d& a, const Range2d& b, double tol = epsilonTol);
ZEBASE_API Range3d intersect(const Range3d& a, const Range3d& b, double tol = epsilonTol);
/// @}

/// How a segment is placed relative to a bounded rectangle, judged only by where its ends are.
/// Points on the border are inside.
/// @return 0 wholly outside, beyond one side; 1 wholly inside; 2 one end inside; 3 straight through
///     from one side to the opposite one; 4 undecided
ZEBASE_API int classifySegmentRangeIntersection(const Range2d& range, const Point2& a,
                                                const Point2& b);

/// Whether the segments a-b and c-d meet. Segments without length meet nothing, and collinear ones
/// that touch in just one end do not meet. They are collinear if `c` and `d` both lie within `tol`
/// of the line of a-b.
///
/// `parameter` becomes where on a-b they meet, 0 at `a` and 1 at `b`; for collinear segments, where
/// they begin to overlap; otherwise -1. It can lie beyond an end by no more than epsilonTol in
/// distance. `hasPoint` becomes whether there is a single `point`, which is stored then: for lines
/// that cross, even outside the segments, and for collinear segments that overlap by almost
/// nothing.
ZEBASE_API bool doLineSegmentsIntersect(const Point2& a, const Point2& b, const Point2& c,
                                        const Point2& d, double& parameter, Point2& point,
                                        bool& hasPoint, double tol = epsilonTol);

/// Whether a ray runs through a rectangle between the parameters `tMin` and `tMax`, strictly.
///
/// Where a component of the direction is below epsilonTol, only the other axis is examined, so that
/// a vertical ray beside the rectangle counts as running through it. Kept for compatibility:
/// callers have already tested the axis along which the ray does not move.
ZEBASE_API bool doesRayIntersectRange2d(const Point2& origin, const Vector2& direction,
                                        const Range2d& range, double tMin, double tMax);

/// Whether a triangle and a box given by its centre and half its sides overlap, borders included;
/// by separating axes, in single precision.
ZEBASE_API bool triangleBoxOverlap(const Point2Flt& centre, const Point2Flt& halfSize,
                                   const Point2Flt& a, const Point2Flt& b, const Point2Flt& c);

/// A step of triangleBoxOverlap(), for a box about the origin: whether the axis at right angles to
/// `edge` fails to separate it from the points `p` and `q`.
ZEBASE_API bool testAxis(const Vector2Flt& edge, const Point2Flt& p, const Point2Flt& q,
                         const Point2Flt& halfSize);

/// A step of triangleBoxOverlap(), for an axis of the box: whether the span of `p`, `q` and `r`
/// meets -halfSize to halfSize.
ZEBASE_API bool testBorder(float p, float q, float r, float halfSize);

/// Whether three points lie on a line: two are equivalent (by epsilonTol), or the point opposite
/// the longest side lies no further from its line than `tol` times the side's length.
ZEBASE_API bool areCollinear(const Point& a, const Point& b, const Point& c,
                             double tol = epsilonTol);

} // namespace zeLinear

// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearIntersect.h"

#include <algorithm>
#include <utility>

#include "Base/Linear/zeLinearMatrix.h"
#include "Base/Linear/zeLinearNumeric.h"

namespace zeLinear {

namespace {

/// The parameters between which a line lies within one axis of a range.
struct Slab {
    double entry;
    double exit;

    Slab(double origin, double direction, double low, double high)
        : entry((low - origin) / direction), exit((high - origin) / direction) {
        if (exit < entry)
            std::swap(entry, exit);
    }

    bool overlaps(double tMin, double tMax) const { return entry < tMax && tMin < exit; }
};

enum Side : unsigned { Left = 1, Right = 2, Below = 4, Above = 8 };

unsigned sidesOf(const Point2& p, const Range2d& range) {
    return (p.x < range.low.x ? Left : 0U) | (p.x > range.high.x ? Right : 0U) |
           (p.y < range.low.y ? Below : 0U) | (p.y > range.high.y ? Above : 0U);
}

/// Whether `t`, the parameter of `point` on the line of a segment, lies within the segment, or
/// beyond an end that is equivalent to the point.
bool isWithin(double t, const Point& point, const Point2& first, const Point2& second) {
    if (t < 0)
        return equivalent(point, Point(first));
    if (t > 1)
        return equivalent(point, Point(second));
    return !std::isnan(t);
}

} // namespace

Point intersect(const Line& line, const Plane& plane, bool& ok, double tol) {
    const double d = dot(plane.normal, line.direction);
    ok = std::fabs(d) >= tol;
    if (!ok)
        return line.point;
    return line.eval(-(dot(plane.normal, line.point) + plane.calculateD()) / d);
}

Point intersect(const Line& a, const Line& b, bool& ok, double tol) {
    const Vector c = cross(a.direction, b.direction);
    ok = c.length2() >= tol;
    if (!ok)
        return a.point;
    bool hit; // Not needed: lines whose directions cross always give a point.
    return intersect(b, Plane(a.point, Normal(cross(c, a.direction))), hit, tol);
}

Line intersect(const Plane& a, const Plane& b, bool& ok) {
    const Normal d(cross(a.normal, b.normal));
    ok = d.valid;
    if (!ok)
        return Line(a.point, a.normal);
    // From b's point in b, square to the common line, until a is met.
    const Normal m(a.normal - project(a.normal, b.normal));
    return Line(intersect(Line(b.point, m), a, ok, epsilon2Tol), d);
}

Point intersect(const Plane& a, const Plane& b, const Plane& c, bool& ok) {
    const Line line = intersect(a, b, ok);
    return ok ? intersect(line, c, ok, perpendicular2Tol) : line.point;
}

Range1d intersect(const ParamLine& line, const Range3d& box) {
    const Line ray(line);
    const Plane faces[] = {{box.low, Normal::zAxis}, {box.high, Normal::zAxis},
                           {box.low, Normal::xAxis}, {box.high, Normal::xAxis},
                           {box.low, Normal::yAxis}, {box.high, Normal::yAxis}};
    Range1d result;
    int hits = 0;
    for (const Plane& face : faces) {
        bool ok;
        const Point p = intersect(ray, face, ok, perpendicular2Tol);
        if (!ok || !box.contains(p, epsilonTol))
            continue;
        const double t = projectParam(p, line);
        if (++hits == 1)
            result.set(t);
        else
            result.include(t);
    }
    return hits < 2 ? Range1d() : result;
}

int intersectCylinder(const ParamLine& line, const Line& axis, double radius, double* t) {
    // With the axis as z, a circle remains.
    AffineMatrix toAxis;
    toAxis.rotate(axis.direction, Normal::zAxis);
    toAxis.translate(Point::origin - axis.point);
    const ParamLine local = line * toAxis;
    const Point& p = local.point;
    const Vector& w = local.vector;
    double roots[2];
    const int count = solveQuadratic(w.x * w.x + w.y * w.y, 2 * (p.x * w.x + p.y * w.y),
                                     p.x * p.x + p.y * p.y - radius * radius, roots);
    if (count != 2)
        return 0;
    t[0] = roots[0];
    if (roots[1] - roots[0] < epsilonTol)
        return 1;
    t[1] = roots[1];
    return 2;
}

Range1d intersect(const Range1d& a, const Range1d& b, double tol) {
    if (a.isUnbounded())
        return b;
    if (b.isUnbounded())
        return a;
    const double lo = std::max(a.low, b.low);
    const double hi = std::min(a.high, b.high);
    if (lo <= hi)
        return Range1d(lo, hi);
    return lo - hi < tol ? Range1d(hi, lo) : Range1d(0, 0);
}

Range2d intersect(const Range2d& a, const Range2d& b, double tol) {
    if (a.isUnbounded())
        return b;
    if (b.isUnbounded())
        return a;
    const Range1d x = intersect(Range1d(a.low.x, a.high.x), Range1d(b.low.x, b.high.x), tol);
    const Range1d y = intersect(Range1d(a.low.y, a.high.y), Range1d(b.low.y, b.high.y), tol);
    return Range2d(Point2(x.low, y.low), Point2(x.high, y.high));
}

Range3d intersect(const Range3d& a, const Range3d& b, double tol) {
    if (a.isUnbounded())
        return b;
    if (b.isUnbounded())
        return a;
    const Range1d x = intersect(Range1d(a.low.x, a.high.x), Range1d(b.low.x, b.high.x), tol);
    const Range1d y = intersect(Range1d(a.low.y, a.high.y), Range1d(b.low.y, b.high.y), tol);
    const Range1d z = intersect(Range1d(a.low.z, a.high.z), Range1d(b.low.z, b.high.z), tol);
    return Range3d(Point(x.low, y.low, z.low), Point(x.high, y.high, z.high));
}

int classifySegmentRangeIntersection(const Range2d& range, const Point2& a, const Point2& b) {
    const unsigned sidesA = sidesOf(a, range);
    const unsigned sidesB = sidesOf(b, range);
    const unsigned both = sidesA | sidesB;
    if ((sidesA & sidesB) != 0)
        return 0;
    if (both == 0)
        return 1;
    if (sidesA == 0 || sidesB == 0)
        return 2;
    return both == (Left | Right) || both == (Below | Above) ? 3 : 4;
}

bool doLineSegmentsIntersect(const Point2& a, const Point2& b, const Point2& c, const Point2& d,
                             double& parameter, Point2& point, bool& hasPoint, double tol) {
    parameter = -1;
    hasPoint = false;
    const ParamLine p{Point(a), Point(b)};
    const ParamLine q{Point(c), Point(d)};
    const Line lineP(p);
    const Line lineQ(q);
    if (!lineP.direction.valid || !lineQ.direction.valid)
        return false;

    const double t1 = projectParam(Point(c), p);
    const double t2 = projectParam(Point(d), p);
    if (distance2(Point(c), p.eval(t1)) >= tol * tol ||
        distance2(Point(d), p.eval(t2)) >= tol * tol) {
        const Point crossing = intersect(lineP, lineQ, hasPoint, perpendicular2Tol);
        if (!hasPoint)
            return false;
        point.set(crossing.x, crossing.y);
        const double s = projectParam(crossing, p);
        const double r = projectParam(crossing, q);
        if (!isWithin(s, crossing, a, b) || !isWithin(r, crossing, c, d))
            return false;
        parameter = s;
        return true;
    }

    Range1d overlap;
    overlap.set(t1);
    overlap.include(t2);
    if (!overlap.intersects(Range1d(0, 1), 0))
        return false;
    const double lo = std::max(overlap.low, 0.0);
    const double hi = std::min(overlap.high, 1.0);
    parameter = lo;
    const Point first = p.eval(lo);
    if (hi - lo < 0.001 && equivalent(first, p.eval(hi))) {
        hasPoint = true;
        point.set(first.x, first.y);
    }
    return true;
}

bool doesRayIntersectRange2d(const Point2& origin, const Vector2& direction, const Range2d& range,
                             double tMin, double tMax) {
    if (range.isUnbounded())
        return true;
    const Slab x(origin.x, direction.x, range.low.x, range.high.x);
    const Slab y(origin.y, direction.y, range.low.y, range.high.y);
    if (std::fabs(direction.x) < epsilonTol)
        return y.overlaps(tMin, tMax);
    if (std::fabs(direction.y) < epsilonTol)
        return x.overlaps(tMin, tMax);
    if (x.exit < y.entry || y.exit < x.entry)
        return false;
    return std::max(x.entry, y.entry) < tMax && tMin < std::min(x.exit, y.exit);
}

bool triangleBoxOverlap(const Point2Flt& centre, const Point2Flt& halfSize, const Point2Flt& a,
                        const Point2Flt& b, const Point2Flt& c) {
    const Vector2Flt offset = centre - Point2Flt::origin;
    const Point2Flt p = a - offset;
    const Point2Flt q = b - offset;
    const Point2Flt r = c - offset;
    return testBorder(p.x, q.x, r.x, halfSize.x) && testBorder(p.y, q.y, r.y, halfSize.y) &&
           testAxis(q - p, q, r, halfSize) && testAxis(r - q, p, q, halfSize) &&
           testAxis(p - r, q, r, halfSize);
}

bool testAxis(const Vector2Flt& edge, const Point2Flt& p, const Point2Flt& q,
              const Point2Flt& halfSize) {
    const float mp = p.x * edge.y - p.y * edge.x;
    const float mq = q.x * edge.y - q.y * edge.x;
    const float radius = std::fabs(edge.y) * halfSize.x + std::fabs(edge.x) * halfSize.y;
    return std::min(mp, mq) <= radius && std::max(mp, mq) >= -radius;
}

bool testBorder(float p, float q, float r, float halfSize) {
    return std::min({p, q, r}) <= halfSize && std::max({p, q, r}) >= -halfSize;
}

bool areCollinear(const Point& a, const Point& b, const Point& c, double tol) {
    if (equivalent(a, b) || equivalent(b, c) || equivalent(c, a))
        return true;
    // Base and apex: the longest side, and the point that is left.
    const Point* base[] = {&a, &b};
    const Point* apex = &c;
    double longest = distance2(a, b);
    if (const double bc = distance2(b, c); bc > longest) {
        longest = bc;
        base[0] = &b, base[1] = &c, apex = &a;
    }
    if (const double ca = distance2(c, a); ca > longest) {
        longest = ca;
        base[0] = &c, base[1] = &a, apex = &b;
    }
    const Vector u = *base[1] - *base[0];
    const Vector w = *apex - combine(*base[0], *base[1]);
    return dot(w, w) * longest <= dot(u, w) * dot(u, w) + tol * longest * tol * longest;
}

} // namespace zeLinear

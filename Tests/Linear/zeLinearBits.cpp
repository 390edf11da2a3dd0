// SPDX-License-Identifier: MIT

// Prints the bits of results, as a digest for each family of functions. It is built with different
// compilers and levels of optimisation, and the outputs must be the same (compareBits.sh).
//
// Lines that begin with "arithmetic" hold no result of sin, acos and their kin, which differ
// between C libraries and processors: they are the same everywhere, and are checked in
// (zeLinearBits.txt).

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "Base/Linear/zeLinearDecompose.h"
#include "Base/Linear/zeLinearIntersect.h"
#include "Base/Linear/zeLinearNumeric.h"
#include "Base/Linear/zeLinearQuaternion.h"

namespace {

using namespace zeLinear;

/// A hash of the bits of all that is put in. NaNs are one value: their sign and payload depend on
/// the order in which the compiler puts the operands.
class Digest {
public:
    Digest& operator<<(double s) {
        const std::uint64_t bits = std::isnan(s) ? 0x7ff8U : std::bit_cast<std::uint64_t>(s);
        hash_ = (hash_ ^ bits) * 0x9e3779b97f4a7c15U;
        hash_ ^= hash_ >> 29;
        return *this;
    }
    template<AnyComponents T>
    Digest& operator<<(const T& t) {
        detail::all([this](double s) { return *this << s, true; }, t);
        return *this;
    }
    template<AnyMatrix M>
    Digest& operator<<(const M& m) {
        detail::allEntries([this](double s) { return *this << s, true; }, m);
        return *this;
    }
    template<AnyRange R>
    Digest& operator<<(const R& r) {
        return *this << r.low << r.high;
    }

    void print(const char* name) const {
        std::printf("%-32s %016llx\n", name, static_cast<unsigned long long>(hash_));
    }

private:
    std::uint64_t hash_ = 0;
};

/// Numbers of all sizes, and now and then a special one.
double number() {
    static std::uint64_t state = 3;
    static const double special[] = {0.0,    -0.0,   1.0,   -1.0,     1e-12,
                                     5e-324, 1e-310, 1e200, HUGE_VAL, NAN};
    state = state * 6364136223846793005U + 1442695040888963407U;
    const std::uint64_t top = state >> 11;
    if (top % 64 == 0)
        return special[top / 64 % std::size(special)];
    return std::ldexp(static_cast<double>(top) * 0x1p-52 - 1, static_cast<int>(top % 9) - 4);
}

// Braces and << evaluate from left to right, unlike the arguments of a call.

const auto vector = [] { return Vector{number(), number(), number()}; };
const auto point = [] { return Point{number(), number(), number()}; };
const auto point2 = [] { return Point2{number(), number()}; };
const auto normal = [] { return Normal(vector()); };
const auto line = [] { return Line{point(), normal()}; };
const auto paramLine = [] { return ParamLine{point(), vector()}; };
const auto plane = [] { return Plane{point(), normal()}; };
const auto range = [] { return Range3d{point(), point()}; };
const auto interval = [] { return Range1d{number(), number()}; };
const auto quaternion = [] { return Quaternion{number(), number(), number(), number()}; };
const auto rotation = [] { return Quaternion{number(), normal()}; };

ProjMatrix projMatrix() {
    ProjMatrix m;
    for (auto& row : m.m)
        for (double& entry : row)
            entry = number();
    return m;
}

const auto matrix = [] { return AffineMatrix(Promise(), projMatrix()); };

template<class F>
void family(const char* name, F f) {
    Digest digest;
    for (int i = 0; i < 20'000; ++i)
        f(digest);
    digest.print(name);
}

} // namespace

int main() {
    family("arithmetic vectors", [](Digest& d) {
        const Vector a = vector();
        const Vector b = vector();
        const double s = number();
        const Normal n(a);
        const VectorFlt f(a);
        d << n << a + b << a - n << a * s << a / s << f / static_cast<float>(s) << dot(a, b);
        d << cross(a, b) << cross(n, b) << a.orthogonalVector() << a.length() << f.length();
        d << projectParam(a, b) << project(b, n) << combine(a, b) << combine(s, a, 2 - s, b);
        d << Point(HPoint(a.x, a.y, a.z, s)) << max(a.x, a.y, a.z) << min(a.x, a.y, a.z, s);
        Vector2 v2(a.x, a.y);
        VectorFlt unit = f;
        d << v2.normalize() << v2 << unit.normalize() << unit;
    });
    family("arithmetic matrices", [](Digest& d) {
        const AffineMatrix a = matrix();
        AffineMatrix b = matrix();
        const AffineMatrixFlt f(a);
        d << a * b << a + b << a * number() << a.det3x3() << f * AffineMatrixFlt(b);
        d << point() * a << vector() * a << HPoint(point()) * a << PointFlt(point()) * f;
        d << range() * a << a.inverse() << b.invertFast() << b;
        bool ok;
        d << a.normalMatrix(ok) << ok;
        const Plane image = plane() * a;
        d << image.point << image.normal;
        AffineMatrix mirror = a;
        mirror.mirror(plane());
        d << mirror;
        AffineMatrix2 flat(Vector2(a.m[0]), Vector2(a.m[1]), Vector2(a.m[2]));
        d << flat.invert() << flat;
    });
    family("arithmetic projections", [](Digest& d) {
        ProjMatrix p = projMatrix();
        const ProjMatrix q = projMatrix();
        d << p * q << ProjMatrixFlt(p) * ProjMatrixFlt(q) << HPoint(point()) * q << p.det4x4();
        d << p.inverse() << p.invertFast() << p;
    });
    family("arithmetic intersections", [](Digest& d) {
        const Line a = line();
        const Line b = line();
        const Plane p = plane();
        const Plane q = plane();
        const Plane r = plane();
        bool ok;
        d << intersect(a, p, ok) << ok << intersect(a, b, ok) << ok;
        d << intersect(p, q, ok).point << ok;
        const Point corner = intersect(p, q, r, ok);
        d << ok << (ok ? corner : Point());
        d << distance(a.point, b) << distance(a.point, p);
        const ParamLine through = paramLine();
        d << intersect(through, range());
        const Range1d first = interval();
        d << intersect(first, interval(), 0.5);
        const Vector u = vector();
        const ParamPlane sheet(p.point, u, vector(), true);
        d << sheet.normal << sheet.v << areCollinear(a.point, b.point, p.point, 0.1);
        const double middle = number();
        const double last = number();
        double roots[2] = {0, 0};
        d << solveQuadratic(number(), middle, last, roots) << roots[0] << roots[1];
    });
    family("arithmetic segments", [](Digest& d) {
        const Point2 a = point2();
        const Point2 b = point2();
        const Point2 c = point2();
        const Point2 e = point2();
        double parameter;
        Point2 where;
        bool hasPoint;
        d << doLineSegmentsIntersect(a, b, c, e, parameter, where, hasPoint);
        d << parameter << where << hasPoint;
        d << triangleBoxOverlap(Point2Flt(a), Point2Flt(1, 2), Point2Flt(b), Point2Flt(c),
                                Point2Flt(e));
        d << doesRayIntersectRange2d(a, b - a, Range2d(c, e), -1, 1);
    });
    family("arithmetic quaternions", [](Digest& d) {
        Quaternion q = quaternion();
        d << q / number() << dot(q, q);
        q.normalize();
        AffineMatrix m;
        q.getMatrix(m);
        Normal x, y, z;
        q.getFrame(x, y, z);
        Quaternion r;
        r.setFrame(x, y, z);
        d << q << m << x << y << z << r;
    });
    family("arithmetic roots", [](Digest& d) {
        struct Polynomial : evalFunction {
            double c = number();
            double evaluate(double s) override { return s * s * s + s - c; }
        } f;
        int status;
        d << brentsIteration(f, -10, 10, 1e-12, status) << status;
    });

    family("library", [](Digest& d) {
        const Normal a = normal();
        const Normal b = normal();
        const double s = number();
        AffineMatrix m = matrix();
        m.rotateX(s);
        m.rotate(s, a);
        m.rotate(a, b);
        d << m << rotate(vector(), a, s) << interpolate(a, b, s) << angle(a, b);
        d << unitCircleRotation(normal(), a, b, true);

        Point translate;
        Vector scale, angles, shear;
        d << stelioDecompose(matrix(), translate, scale, angles, shear);
        d << translate << scale << angles << shear;

        const Quaternion p = rotation();
        const Quaternion q = rotation();
        double turn;
        Normal axis;
        d << slerp(p, q, number()) << p.getAngleAxis(turn, axis) << turn << axis;

        const ParamLine l = paramLine();
        const Line core = line();
        double t[2] = {0, 0};
        const int hits = intersectCylinder(l, core, number(), t);
        d << hits;
        for (int i = 0; i < hits; ++i)
            d << t[i];
    });
}

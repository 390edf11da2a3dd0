// SPDX-License-Identifier: MIT

#include "Linear/zeLinearLaws.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

#include <gtest/gtest.h>

#include "Base/Linear/zeLinearDecompose.h"
#include "Base/Linear/zeLinearIntersect.h"
#include "Base/Linear/zeLinearNumeric.h"
#include "Base/Linear/zeLinearQuaternion.h"

namespace {

using namespace zeLinear;
using std::numbers::pi;

/// The largest entry.
double size(const AffineMatrix& a) {
    double result = 0;
    for (const auto& row : a.m)
        for (double entry : row)
            result = std::max(result, std::fabs(entry));
    return result;
}

/// The same inputs on every machine: braces evaluate from left to right, the arguments of a call do
/// not.
class Random {
public:
    double in(double low, double high) { return low + (high - low) * unit(); }
    Vector vector(double size) { return Vector{in(-size, size), in(-size, size), in(-size, size)}; }
    Point point(double size) { return Point::origin + vector(size); }

    Normal normal() {
        Vector v;
        do
            v = vector(1);
        while (v.length2() > 1 || v.length2() < 0.01);
        return Normal(v);
    }

    /// Any matrix whose condition is good enough.
    AffineMatrix entries() {
        AffineMatrix m;
        do
            for (auto& row : m.m)
                for (double& entry : row)
                    entry = in(-1, 1);
        while (size(m.inverse()) * size(m) > 60 || m == m.inverse());
        return m;
    }

private:
    double unit() {
        std::uint64_t z = (state_ += 0x9e3779b97f4a7c15U);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
        return static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1p-53;
    }

    std::uint64_t state_ = 1;
};

double apart(const AffineMatrix& a, const AffineMatrix& b) {
    return size(a - b) / size(b);
}

double apart(const Vector& a, const Vector& b) {
    return (a - b).length() / std::max(1e-300, b.length());
}

/// As rotations: q and -q are the same.
double apart(const Quaternion& a, const Quaternion& b) {
    const Quaternion minus = a - b;
    const Quaternion plus = a + b;
    return std::sqrt(std::min(dot(minus, minus), dot(plus, plus)));
}

double size(const Point& p) {
    return 1 + distance(p, Point::origin);
}

/// Laws are functions of random input, which return the error, relative to the size of what is
/// compared. Matrices have a condition below 1e3. Input that a law does not cover (nearly parallel
/// lines, a line beside the box) gives drawAgain, and does not count.
constexpr double drawAgain = -1;

struct Law {
    const char* name;
    double tolerance;
    double (*error)(Random&);
};

const Law laws[] = {
    {"scale, shear, turn = M (decompose)", 1e-10,
     [](Random& r) {
         const AffineMatrix m = r.entries();
         Point translate;
         Vector scale, rotate, shear;
         if (!stelioDecompose(m, translate, scale, rotate, shear))
             return HUGE_VAL;
         AffineMatrix again;
         again.translate(translate - Point::origin);
         again.rotateZ(toRadians(rotate.z));
         again.rotateY(toRadians(rotate.y));
         again.rotateX(toRadians(rotate.x));
         again.preMult(AffineMatrix(Vector(1, 0, 0), Vector(shear.x, 1, 0),
                                    Vector(shear.y, shear.z, 1), Vector::zero));
         again.scale(scale.x, scale.y, scale.z);
         return apart(again, m);
     }},
    {"rotate: vector = matrix = quaternion", 1e-12,
     [](Random& r) {
         const Normal axis = r.normal();
         const double angle = r.in(-10, 10);
         const Vector v = r.vector(10);
         AffineMatrix turn;
         turn.rotate(angle, axis);
         AffineMatrix same;
         Quaternion(angle, axis).getMatrix(same);
         const Vector expected = rotate(v, axis, angle);
         return std::max(apart(v * turn, expected), apart(v * same, expected));
     }},
    {"rotate(from, to) takes from to to", 1e-10,
     [](Random& r) {
         const Normal from = r.normal();
         const Normal to = r.normal();
         AffineMatrix turn;
         turn.rotate(from, to);
         return apart(from * turn, to);
     }},
    {"slerp = rotation of the axis", 1e-10,
     [](Random& r) {
         const Normal axis = r.normal();
         const double start = r.in(-3, 3);
         const double turn = r.in(1e-3, pi - 1e-3);
         const double t = r.in(0, 1);
         const Quaternion q = slerp(Quaternion(start, axis), Quaternion(start + turn, axis), t);
         return apart(q, Quaternion(start + t * turn, axis));
     }},
    {"interpolate turns at constant speed", 1e-10,
     [](Random& r) {
         const Normal a = r.normal();
         const Normal b = r.normal();
         const double t = r.in(0, 1);
         const Normal c = interpolate(a, b, t);
         const double sine = cross(a, b).length();
         const double theta = std::atan2(sine, dot(a, b));
         // In the plane of the two, by the law of sines.
         const Vector expected =
             (a * std::sin((1 - t) * theta) + b * std::sin(t * theta)) / std::sin(theta);
         return sine < 1e-2 ? drawAgain : apart(c, expected);
     }},
    {"Quaternion: getAngleAxis", 1e-10,
     [](Random& r) {
         const Normal axis = r.normal();
         const double angle = r.in(1e-3, 2 * pi - 1e-3);
         double angleOut = 0;
         Normal axisOut;
         Quaternion(angle, axis).getAngleAxis(angleOut, axisOut);
         return std::max(std::fabs(angleOut - angle), apart(axisOut, axis));
     }},
    {"cylinder: hits at the radius", 1e-10,
     [](Random& r) {
         const Line axis{r.point(10), r.normal()};
         const double radius = r.in(0.1, 10);
         const Point inside = axis.eval(r.in(-10, 10)) + r.normal() * radius * r.in(0, 0.99);
         const ParamLine line{r.point(10), inside};
         if (cross(line.vector, axis.direction).length() < 0.1)
             return drawAgain;
         double t[2];
         if (intersectCylinder(line, axis, radius, t) != 2 || !(t[0] < 1 && 1 < t[1]))
             return HUGE_VAL;
         double error = 0;
         for (double s : t)
             error = std::max(error, std::fabs(distance(line.eval(s), axis) - radius) /
                                         size(line.eval(s)));
         return error;
     }},
};

} // namespace

void expectLaws(int inputs) {
    for (const Law& law : laws) {
        Random random;
        double worst = 0;
        for (int i = 0; i < inputs;) {
            const double error = law.error(random);
            if (error == drawAgain)
                continue;
            if (!(error <= worst)) // a NaN too
                worst = std::isnan(error) ? HUGE_VAL : error;
            ++i;
        }
        EXPECT_LE(worst, law.tolerance) << law.name;
    }
}

// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearMatrix.h"

#include <limits>
#include <numbers>
#include <sstream>
#include <type_traits>

#include <gtest/gtest.h>

#include "Base/Linear/zeLinearDecompose.h"
#include "Base/Linear/zeLinearQuaternion.h"
#include "Base/Linear/zeLinearStream.h"

namespace {

using namespace zeLinear;
using std::numbers::pi;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

static_assert(sizeof(AffineMatrix) == 96 && sizeof(AffineMatrix2) == 48);
static_assert(sizeof(AffineMatrixFlt) == 48 && sizeof(ProjMatrixFlt) == 64);
static_assert(std::is_trivially_copyable_v<AffineMatrix> && std::is_standard_layout_v<ProjMatrix>);
static_assert(std::is_empty_v<Promise> && sizeof(Quaternion) == 32);
// A bare 0 would be a number or a null pointer: neither converts by itself.
static_assert(!std::is_convertible_v<double, AffineMatrix>);

/// Rows (1 2 3), (4 5 6), (7 8 10), translation (1 1 2): determinant -3.
AffineMatrix sample() {
    return AffineMatrix(Vector(1, 2, 3), Vector(4, 5, 6), Vector(7, 8, 10), Vector(1, 1, 2));
}

TEST(AffineMatrix, MapsRowVectors) {
    const AffineMatrix m = sample();
    EXPECT_EQ(Point(1, 10, 100) * m, Point(742, 853, 1065));
    EXPECT_EQ(HPoint(1, 10, 100, 3) * m, HPoint(744, 855, 1069, 3));
    EXPECT_EQ(Normal::yAxis * m, Vector(4, 5, 6));
    EXPECT_EQ(Tuple4(0, 0, 1, 0) * ProjMatrix(m), Tuple4(7, 8, 10, 0));
    EXPECT_EQ(Point2(1, 10) * AffineMatrix2(Vector2(1, 2), Vector2(3, 4), Vector2(5, 6)),
              Point2(36, 48));
}

TEST(AffineMatrix, AppliesTheFirstFactorFirst) {
    const AffineMatrix m = sample();
    AffineMatrix shift;
    shift.translate(1, 2, 3);
    AffineMatrix r;
    m.preMult(r, shift);
    EXPECT_EQ(r, shift * m);
    r = m;
    r.preMult(shift);
    EXPECT_EQ(r, shift * m);
    r = shift;
    r *= m;
    EXPECT_EQ(r, shift * m);
    r *= r;
    EXPECT_EQ(r, shift * m * (shift * m));
}

TEST(AffineMatrix, LeavesAnOutputThatIsTheInputAlone) {
    const auto expectKept = [](const auto& m, auto x) {
        const auto before = x;
        m.preMult(x, x);
        EXPECT_EQ(x, before);
    };
    const AffineMatrix m = sample();
    expectKept(m, Point(1, 2, 3));
    expectKept(m, Vector(1, 2, 3));
    expectKept(m, HPoint(1, 2, 3, 4));
    expectKept(m, ParamLine(Point(1, 0, 0), Vector(1, 0, 0)));
    expectKept(ProjMatrix(m), HPoint(1, 2, 3, 4));
    expectKept(ProjMatrix(m), Tuple4(1, 2, 3, 4));
    expectKept(AffineMatrixFlt(m), PointFlt(1, 2, 3));

    // Of lines and planes only the point stays.
    AffineMatrix turn;
    turn.translate(5, 5, 5);
    turn.rotateZ(pi / 2);
    Line line(Point(1, 0, 0), Normal::xAxis);
    turn.preMult(line, line);
    EXPECT_EQ(line.point, Point(1, 0, 0));
    EXPECT_TRUE(equivalent(line.direction, Normal::yAxis));
    Plane plane(Point(1, 0, 0), Normal::xAxis);
    turn.preMult(plane, plane);
    EXPECT_EQ(plane.point, Point(1, 0, 0));
    EXPECT_TRUE(equivalent(plane.normal, Normal::yAxis));
    ParamPlane sheet(Point(1, 0, 0), Normal::zAxis, Vector(1, 0, 0), Vector(0, 1, 0), false);
    turn.preMult(sheet, sheet);
    EXPECT_EQ(sheet.point, Point(1, 0, 0));
    EXPECT_EQ(sheet.u, Vector(1, 0, 0));
    turn.identity();
    turn.rotateX(pi / 4);
    turn.preMult(sheet, sheet); // the old v is made orthogonal to the new normal
    EXPECT_TRUE(equivalent(sheet.v, Vector(0, 0.5, 0.5)));
    turn.identity();
    turn.translate(5, 5, 5);
    turn.rotateZ(pi / 2);
    Range3d box(Point(0, 0, 0), Point(1, 1, 1));
    turn.preMult(box, box); // ranges have no such guard
    EXPECT_TRUE(equivalent(box, Range3d(Point(4, 5, 5), Point(5, 6, 6))));
}

TEST(AffineMatrix, MapsRanges) {
    EXPECT_TRUE((Range3d() * sample()).isUnbounded());
    EXPECT_EQ(Range2d(Point2(0, 1), Point2(3, 4)) * AffineMatrix2(-2.0),
              Range2d(Point2(-6, -8), Point2(0, -2)));
}

TEST(AffineMatrix, CarriesPlanesByTheTransposedInverse) {
    AffineMatrix squash;
    squash.scale(1, 1, 0.5);
    const ParamPlane sheet =
        ParamPlane(Point(0, 0, 0), Vector(1, 0, -1), Vector(0, 1, 0), false) * squash;
    EXPECT_TRUE(equivalent(sheet.normal, Normal(1, 0, 2)));
    EXPECT_EQ(sheet.u, Vector(1, 0, -0.5));

    bool ok = false;
    AffineMatrix mirrored = sample();
    const AffineMatrix normals = mirrored.normalMatrix(ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(normals, mirrored.vectorMatrix(ok) * -1.0);
    EXPECT_EQ(normals.getTranslate(), Vector::zero);
    const AffineMatrix singular(Vector(1, 0, 0), Vector(0, 1, 0), Vector(0, 0, 0), Vector(1, 2, 3));
    EXPECT_EQ(singular.vectorMatrix(ok), singular); // translation included
    EXPECT_FALSE(ok);
    EXPECT_EQ(singular.normalMatrix(ok), singular);
    EXPECT_FALSE(ok);
}

TEST(AffineMatrix, BuildsInFront) {
    AffineMatrix m = sample();
    m.translate(1, 0, 0);
    EXPECT_EQ(Point::origin * m, Point(1, 0, 0) * sample());
    m = sample();
    m.scale(2, 3, 4);
    EXPECT_EQ(Point(1, 1, 1) * m, Point(2, 3, 4) * sample());
    EXPECT_EQ(m.getTranslate(), sample().getTranslate());

    const double s = std::sin(0.3);
    const double c = std::cos(0.3);
    struct Turn {
        void (AffineMatrix::*rotate)(double);
        Normal axis;
        Vector from, to;
    };
    for (const Turn& t : {Turn{&AffineMatrix::rotateX, Normal::xAxis, Vector::yAxis, {0, c, s}},
                          {&AffineMatrix::rotateY, Normal::yAxis, Vector::zAxis, {s, 0, c}},
                          {&AffineMatrix::rotateZ, Normal::zAxis, Vector::xAxis, {c, s, 0}}}) {
        AffineMatrix a = sample();
        AffineMatrix b = sample();
        (a.*t.rotate)(0.3);
        b.rotate(0.3, t.axis);
        EXPECT_TRUE(equivalent(a, b, 1e-14));
        EXPECT_TRUE(equivalent(t.from * a, t.to * sample(), 1e-14));
    }
    AffineMatrix about;
    about.rotate(pi / 2, Line(Point(1, 1, 0), Normal::zAxis));
    EXPECT_TRUE(equivalent(Point(2, 1, 7) * about, Point(1, 2, 7)));
    AffineMatrix2 plane(Vector2(1, 2), Vector2(3, 4), Vector2(5, 6));
    plane.translate(1, 1);
    plane.rotate(pi / 2);
    EXPECT_TRUE(equivalent(Point2(1, 0) * plane, Point2(12, 16)));
}

TEST(AffineMatrix, TurnsOneDirectionIntoAnother) {
    AffineMatrix m;
    m.rotate(Normal::xAxis, Normal::xAxis);
    EXPECT_EQ(m, AffineMatrix::Identity);
    m.rotate(Normal::zAxis, -Normal::zAxis);
    EXPECT_TRUE(equivalent(Vector::zAxis * m, -Vector::zAxis));
    EXPECT_NEAR(m.det3x3(), 1, 1e-14);
    // The direction without an orthogonal vector is reflected in the origin instead.
    const Normal odd(1, -1, 1);
    m.identity();
    m.rotate(odd, -odd);
    EXPECT_EQ(m, AffineMatrix(-1.0));
    m.identity();
    m.rotate(Normal(), odd); // not valid
    EXPECT_EQ(m, AffineMatrix::Identity);
    m.rotate(1, Normal()); // no axis
    EXPECT_EQ(m, AffineMatrix(std::cos(1.0)));
}

TEST(AffineMatrix, TransposeLosesTheTranslation) {
    AffineMatrix m = sample();
    m.transpose();
    EXPECT_EQ(m, AffineMatrix(Vector(1, 4, 7), Vector(2, 5, 8), Vector(3, 6, 10), Vector::zero));
    ProjMatrix p(sample());
    p.transpose();
    EXPECT_EQ(p.row(3), Tuple4(0, 0, 0, 1));
    EXPECT_EQ(p.row(0), Tuple4(1, 4, 7, 1));
    m = sample();
    m.outerProduct(Vector(1, 2, 3), Vector(4, 5, 6));
    EXPECT_EQ(m.row(1), Vector(8, 10, 12));
    EXPECT_EQ(m.getTranslate(), Vector(1, 1, 2));
    m.crossMatrix(Vector(1, 2, 3));
    EXPECT_EQ(Point(4, 5, 6) * m, Point::origin + cross(Vector(4, 5, 6), Vector(1, 2, 3)));
}

TEST(AffineMatrix, InvertersJudgePivotsOrTheDeterminant) {
    AffineMatrix m(1e-5);
    EXPECT_FALSE(m.isInvertible());
    EXPECT_FALSE(m.invertFast());
    EXPECT_EQ(m, AffineMatrix(1e-5));
    EXPECT_TRUE(m.invert());
    EXPECT_DOUBLE_EQ(m.m[1][1], 1e5);

    for (double smallest : {0.0, 9.9e-13}) {
        AffineMatrix tiny;
        tiny.scale(1, 1, smallest);
        tiny.m[3][0] = 7;
        const AffineMatrix before = tiny;
        EXPECT_FALSE(tiny.invert());
        EXPECT_FALSE(tiny.invertFast());
        EXPECT_EQ(tiny, before);
        EXPECT_EQ(tiny.inverse(), before);
    }
    // The first pivot is 0 and must be exchanged.
    AffineMatrix2 plane(Vector2(0, 2), Vector2(4, 0), Vector2(4, 2));
    EXPECT_EQ(plane.inverse(), AffineMatrix2(Vector2(0, 0.25), Vector2(0.5, 0), Vector2(-1, -1)));
    EXPECT_FALSE(AffineMatrix2(1e-13).invert());
    EXPECT_TRUE(isNaN(AffineMatrix(kNaN).inverse())); // a NaN is below no tolerance
}

TEST(ProjMatrix, Determinants) {
    ProjMatrix p(sample());
    EXPECT_EQ(sample().det4x4(), -3);
    EXPECT_EQ(p.det3x3(), -3);
    EXPECT_EQ(ProjMatrixFlt(p).det3x3(), -3);
    EXPECT_TRUE(p.isInvertible());
    EXPECT_FALSE(ProjMatrix(1e-4).isInvertible());
    EXPECT_TRUE(ProjMatrix(1e-4).invert());
    ProjMatrix singular(0.0);
    EXPECT_FALSE(singular.invert());
    EXPECT_FALSE(singular.invertFast());
    EXPECT_EQ(singular.inverse(), ProjMatrix(0.0));
}

TEST(ProjMatrix, IsAffineToLessThanTheTolerance) {
    ProjMatrix p(sample());
    EXPECT_TRUE(p.isAffine());
    EXPECT_EQ(AffineMatrix(Promise(), p), sample());
    p.m[1][3] = 0.9e-12;
    EXPECT_TRUE(p.isAffine());
    p.m[1][3] = 1e-12;
    EXPECT_FALSE(p.isAffine());
    EXPECT_EQ(AffineMatrix(Promise(), p), sample()); // a promise is not tested
    EXPECT_FALSE(ProjMatrix(2.0).isAffine());
}

TEST(Matrix, EntryByEntry) {
    const AffineMatrix m = sample();
    EXPECT_EQ(m * 3 - m, 2 * m);
    AffineMatrix n = m;
    n *= 2;
    n -= m;
    n += m;
    EXPECT_EQ(n, m * 2);
    EXPECT_FALSE(equivalent(m, m, 0));
    EXPECT_TRUE(equivalent(m, m + AffineMatrix(0.5), 0.6));
    EXPECT_FALSE(equivalent(m, m + AffineMatrix(0.5), 0.5));
    double entries[12];
    m.get(entries);
    EXPECT_EQ(AffineMatrix(entries), m);
    Point origin;
    Vector x, y, z;
    m.getFrame(origin, x, y, z);
    n.setFrame(origin, x, y, z);
    EXPECT_EQ(n, m);
}

TEST(Matrix, FindsNaNAndInfinityInEveryEntry) {
    const auto check = [](auto matrix) {
        EXPECT_TRUE(isFinite(matrix));
        EXPECT_FALSE(isNaN(matrix));
        for (auto& row : matrix.m)
            for (auto& entry : row) {
                const auto before = entry;
                using T = std::decay_t<decltype(entry)>;
                entry = std::numeric_limits<T>::infinity();
                EXPECT_FALSE(isFinite(matrix));
                EXPECT_FALSE(isNaN(matrix));
                entry = std::numeric_limits<T>::quiet_NaN();
                EXPECT_FALSE(isFinite(matrix));
                EXPECT_TRUE(isNaN(matrix));
                EXPECT_NE(matrix, matrix);
                entry = before;
            }
    };
    check(AffineMatrix());
    check(ProjMatrix());
    check(ProjMatrixFlt());
    check(AffineMatrix2());
}

struct Decomposed {
    Point translate;
    Vector scale, rotate, shear;
    bool ok;

    explicit Decomposed(const AffineMatrix& m)
        : ok(stelioDecompose(m, translate, scale, rotate, shear)) {}
};

TEST(Decompose, DegenerateAndMirroredMatrices) {
    const Decomposed zero(AffineMatrix(0.0));
    EXPECT_FALSE(zero.ok);
    EXPECT_EQ(zero.scale, Vector::zero);
    EXPECT_EQ(zero.rotate, Vector::zero);

    AffineMatrix mirror;
    mirror.scale(-2, 3, 4);
    const Decomposed mirrored(mirror);
    EXPECT_TRUE(mirrored.ok);
    EXPECT_EQ(mirrored.scale, Vector(-2, -3, -4)); // on all three axes rather than one
    EXPECT_DOUBLE_EQ(mirrored.rotate.x, -180);

    for (double angle : {90.0, -90.0}) {
        AffineMatrix pole;
        pole.rotateY(toRadians(angle));
        pole.rotateX(toRadians(20));
        const Decomposed atPole(pole);
        EXPECT_TRUE(atPole.ok);
        EXPECT_NEAR(atPole.rotate.y, angle, 1e-6);
        EXPECT_NEAR(atPole.rotate.x, 20, 1e-6);
        EXPECT_EQ(atPole.rotate.z, 0);
    }
    AffineMatrix unknown;
    unknown.m[0][2] = kNaN;
    EXPECT_TRUE(std::isnan(Decomposed(unknown).rotate.z)); // no pole
    // Its own tolerance: what invert() still takes is singular here.
    const Decomposed flat(AffineMatrix(5e-10));
    EXPECT_FALSE(flat.ok);
    EXPECT_EQ(flat.scale, Vector(5e-10, 5e-10, 5e-10));
}

TEST(Quaternion, AngleAndAxis) {
    double angle = 7;
    Normal axis;
    EXPECT_FALSE(Quaternion().getAngleAxis(angle, axis));
    EXPECT_EQ(angle, 0);
    EXPECT_EQ(axis, Normal::xAxis);
    EXPECT_TRUE(Quaternion(0, 0, 0, -1).getAngleAxis(angle, axis));
    EXPECT_DOUBLE_EQ(angle, 2 * pi);
    EXPECT_FALSE(axis.valid);
    EXPECT_EQ(Quaternion(1, Normal()), Quaternion(0, 0, 0, 1)); // no axis, no rotation
    Quaternion zero(0, 0, 0, 0);
    zero.normalize();
    EXPECT_TRUE(std::isnan(zero.w));
    EXPECT_EQ((Quaternion(5, 7, 1, 1) / 3).y, 7.0 / 3.0); // divided, not by a reciprocal
}

TEST(Quaternion, SlerpTakesTheShorterWayByTurningTheFirst) {
    const Quaternion q(1, Normal(1, 2, 3));
    // Of opposite ones the first is negated: the result is that of the second.
    EXPECT_TRUE(equivalent(slerp(q, -q, 0.25), -q, 1e-15));
    EXPECT_TRUE(equivalent(slerp(-q, q, 0.25), q, 1e-15));
    const Quaternion far(5.5, Normal::zAxis); // as -0.78 the other way round
    const Quaternion half = slerp(Quaternion(), far, 0.5);
    EXPECT_TRUE(equivalent(half, Quaternion((5.5 + 2 * pi) / 2, Normal::zAxis), 1e-14));
    const Quaternion near(1 + 1e-9, Normal(1, 2, 3));
    EXPECT_TRUE(equivalent(slerp(q, near, 0.5), Quaternion(1 + 5e-10, Normal(1, 2, 3)), 1e-15));
}

TEST(LinearStream, Forms) {
    const auto text = [](const auto& value) {
        std::ostringstream stream;
        stream << value;
        return stream.str();
    };
    EXPECT_EQ(text(Vector(1e-7, kInf, 0.1)), "Vector(1e-07,inf,0.1)");
    EXPECT_EQ(text(PointFlt(0.1F, 2.F, 3.F)), "PointFlt(0.1,2,3)");
    EXPECT_EQ(text(VectorFlt(1, 2, 3)), "VectorFlt(1,2,3)");
    EXPECT_EQ(text(Normal::zAxis), "Normal(0,0,1)");
    EXPECT_EQ(text(Point2(1, 2)), "Point2(1,2)");
    EXPECT_EQ(text(Line(Point(1, 2, 3), Normal::xAxis)), "Line(Point(1,2,3),Normal(1,0,0))");
    EXPECT_EQ(text(AffineMatrix()), "AffineMatrix(\n1,0,0\n0,1,0\n0,0,1\n0,0,0\n)");
    EXPECT_EQ(text(ProjMatrix()), "ProjMatrix(\n1,0,0,0\n0,1,0,0\n0,0,1,0\n0,0,0,1\n)");
    EXPECT_EQ(text(ProjMatrixFlt()), "ProjMatrixFlt(\n1,0,0,0\n0,1,0,0\n0,0,1,0\n0,0,0,1\n)");
}

} // namespace

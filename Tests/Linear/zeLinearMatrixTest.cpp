// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearMatrix.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <sstream>
#include <tuple>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "Base/Linear/zeLinearDecompose.h"
#include "Base/Linear/zeLinearQuaternion.h"
#include "Base/Linear/zeLinearStream.h"

namespace {

using namespace zeLinear;
using std::numbers::pi;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

// Plug-ins are compiled against these layouts: the base of the products takes no space.
template<class M, std::size_t Size>
constexpr bool isPlain = sizeof(M) == Size && alignof(M) == alignof(Entry<M>) &&
                         std::is_trivially_copyable_v<M>&& std::is_standard_layout_v<M>;
static_assert(isPlain<AffineMatrix, 96> && isPlain<AffineMatrix2, 48>);
static_assert(isPlain<AffineMatrixFlt, 48>);
static_assert(isPlain<ProjMatrix, 128> && isPlain<ProjMatrixFlt, 64>);
static_assert(std::is_empty_v<Promise> && sizeof(Quaternion) == 32);

/// Rows (1 2 3), (4 5 6), (7 8 10), translation (1 1 2): determinant -3.
constexpr AffineMatrix sample(Vector(1, 2, 3), Vector(4, 5, 6), Vector(7, 8, 10), Vector(1, 1, 2));
constexpr AffineMatrix2 sample2(Vector2(1, 2), Vector2(3, 4), Vector2(5, 6));

/// A copy of `matrix` after `change`.
template<AnyMatrix M>
constexpr M changed(M matrix, auto change) {
    change(matrix);
    return matrix;
}

// Formulas, by values worked out by hand.
static_assert(Tuple4(0, 0, 1, 0) * ProjMatrix(sample) == Tuple4(7, 8, 10, 0));
static_assert(Point2(1, 10) * sample2 == Point2(36, 48) &&
              Vector2(1, 10) * sample2 == Vector2(31, 42));
static_assert((Range3d() * sample).isUnbounded());
static_assert(Range2d(Point2(0, 1), Point2(3, 4)) * AffineMatrix2(-2.0) ==
              Range2d(Point2(-6, -8), Point2(0, -2)));
static_assert(sample.det4x4() == -3 && ProjMatrixFlt(ProjMatrix(sample)).det3x3() == -3);
static_assert(changed(sample, [](auto& m) { m.transpose(); }) ==
              AffineMatrix(Vector(1, 4, 7), Vector(2, 5, 8), Vector(3, 6, 10), Vector::zero));
static_assert(changed(ProjMatrix(sample), [](auto& m) { m.transpose(); }).row(0) ==
              Tuple4(1, 4, 7, 1));
static_assert(changed(sample, [](auto& m) { m.outerProduct(Vector(1, 2, 3), Vector(4, 5, 6)); }) ==
              AffineMatrix(Vector(4, 5, 6), Vector(8, 10, 12), Vector(12, 15, 18),
                           Vector(1, 1, 2)));
static_assert(Point(4, 5, 6) * changed(sample, [](auto& m) { m.crossMatrix(Vector(1, 2, 3)); }) ==
              Point::origin + cross(Vector(4, 5, 6), Vector(1, 2, 3)));
static_assert(changed(sample, [](auto& m) { m.translate(1, 0, 0), m.scale(2, 3, 4); }) ==
              AffineMatrix(Vector(2, 4, 6), Vector(12, 15, 18), Vector(28, 32, 40),
                           Vector(2, 3, 5)));
static_assert(changed(sample2, [](auto& m) { m.translate(1, 1); }).getTranslate() ==
              Vector2(9, 12));
static_assert(changed(sample2, [](auto& m) { m.scale(2, 10); }) ==
              AffineMatrix2(Vector2(2, 4), Vector2(30, 40), Vector2(5, 6)));

/// Whether products, sums and multiples of matrices of a type agree.
template<AnyMatrix M>
constexpr bool combines(const M& a, const M& b) {
    M product;
    b.preMult(product, a);
    return product == a * b && product != b * a &&
           changed(b, [&](M& m) { m.preMult(a); }) == product &&
           changed(a, [&](M& m) { m *= b; }) == product &&
           changed(a, [](M& m) { m *= m; }) == a * a && a * 3 - a == 2 * a &&
           changed(a, [&](M& m) { m *= 2, m += b, m -= a; }) == a + b &&
           changed(a, [](M& m) { m.identity(); }) == M::Identity && a * M::Identity == a;
}
constexpr AffineMatrix shift(Vector(2, 0, 0), Vector(0, 1, 0), Vector(0, 0, 1), Vector(1, 2, 3));
static_assert(combines(sample, shift));
static_assert(combines(sample2, AffineMatrix2(Vector2(2, 0), Vector2(0, 1), Vector2(1, 2))));
static_assert(combines(ProjMatrixFlt(ProjMatrix(sample)), ProjMatrixFlt(ProjMatrix(shift))));

struct Decomposed {
    Point translate;
    Vector scale, rotate, shear;
    bool ok;

    explicit Decomposed(const AffineMatrix& m)
        : ok(stelioDecompose(m, translate, scale, rotate, shear)) {}
};

} // namespace

TEST(AffineMatrix, LeavesAnOutputThatIsTheInputAlone) {
    const auto keeps = [](const auto& m, auto... xs) {
        const std::tuple before(xs...);
        (m.preMult(xs, xs), ...);
        return std::tuple(xs...) == before;
    };
    EXPECT_TRUE(keeps(sample, Point(1, 2, 3), Vector(1, 2, 3), HPoint(1, 2, 3, 4),
                      ParamLine(Point(1, 0, 0), Vector(1, 0, 0))));
    EXPECT_TRUE(keeps(ProjMatrix(sample), HPoint(1, 2, 3, 4), Tuple4(1, 2, 3, 4)));
    EXPECT_TRUE(keeps(AffineMatrixFlt(sample), PointFlt(1, 2, 3), VectorFlt(1, 2, 3)));
    EXPECT_TRUE(keeps(sample2, Point2(1, 2), Vector2(1, 2)));

    // Of lines and planes only the point and the vectors stay; ranges have no such guard.
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
    Range3d box(Point(0, 0, 0), Point(1, 1, 1));
    turn.preMult(box, box);
    EXPECT_TRUE(equivalent(box, Range3d(Point(4, 5, 5), Point(5, 6, 6))));
    ParamPlane sheet(Point(1, 0, 0), Normal::zAxis, Vector(1, 0, 0), Vector(0, 1, 0), false);
    turn.identity();
    turn.rotateX(pi / 4);
    turn.preMult(sheet, sheet);
    EXPECT_EQ(sheet.u, Vector(1, 0, 0));
    EXPECT_TRUE(equivalent(sheet.v, Vector(0, 0.5, 0.5))); // orthogonal to the new normal
}

TEST(AffineMatrix, CarriesPlanesByTheTransposedInverse) {
    AffineMatrix squash;
    squash.scale(1, 1, 0.5);
    const ParamPlane sheet =
        ParamPlane(Point(0, 0, 0), Vector(1, 0, -1), Vector(0, 1, 0), false) * squash;
    EXPECT_TRUE(equivalent(sheet.normal, Normal(1, 0, 2)));
    EXPECT_EQ(sheet.u, Vector(1, 0, -0.5));

    bool ok = false;
    const AffineMatrix normals = sample.normalMatrix(ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(normals, sample.vectorMatrix(ok) * -1.0);
    EXPECT_EQ(normals.getTranslate(), Vector::zero);
    const AffineMatrix singular(Vector(1, 0, 0), Vector(0, 1, 0), Vector(0, 0, 0), Vector(1, 2, 3));
    EXPECT_EQ(singular.vectorMatrix(ok), singular); // translation included
    EXPECT_FALSE(ok);
}

TEST(AffineMatrix, TurnsAboutLinesAndOneDirectionIntoAnother) {
    AffineMatrix m;
    m.rotate(pi / 2, Line(Point(1, 1, 0), Normal::zAxis));
    EXPECT_TRUE(equivalent(Point(2, 1, 7) * m, Point(1, 2, 7)));
    AffineMatrix2 plane = sample2;
    plane.rotate(pi / 2);
    EXPECT_TRUE(equivalent(Point2(1, 0) * plane, Point2(8, 10)));
    m.identity();
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

TEST(Matrix, InvertersJudgePivotsOrTheDeterminant) {
    AffineMatrix m(1e-5);
    EXPECT_FALSE(m.isInvertible() || m.invertFast());
    EXPECT_EQ(m, AffineMatrix(1e-5));
    EXPECT_TRUE(m.invert());
    EXPECT_DOUBLE_EQ(m.m[1][1], 1e5);
    for (double smallest : {0.0, 9.9e-13}) {
        AffineMatrix tiny;
        tiny.scale(1, 1, smallest);
        tiny.m[3][0] = 7;
        const AffineMatrix before = tiny;
        EXPECT_FALSE(tiny.invert() || tiny.invertFast());
        EXPECT_EQ(tiny, before);
        EXPECT_EQ(tiny.inverse(), before);
    }
    EXPECT_TRUE(AffineMatrix(1e-12).invert()); // the bound itself counts
    EXPECT_TRUE(AffineMatrix(-1.0).isInvertible() && ProjMatrix(-2.0).isInvertible());
    // The first pivot is 0 and must be exchanged.
    AffineMatrix2 plane(Vector2(0, 2), Vector2(4, 0), Vector2(4, 2));
    EXPECT_EQ(plane.inverse(), AffineMatrix2(Vector2(0, 0.25), Vector2(0.5, 0), Vector2(-1, -1)));
    EXPECT_FALSE(AffineMatrix2(1e-13).invert());
    ProjMatrix p(1e-4);
    EXPECT_TRUE(!p.isInvertible() && p.invert());
    ProjMatrix singular(0.0);
    EXPECT_FALSE(singular.invert() || singular.invertFast());
    EXPECT_EQ(singular.inverse(), ProjMatrix(0.0));
    EXPECT_TRUE(isNaN(AffineMatrix(notANumber).inverse())); // a NaN is below no tolerance
}

TEST(ProjMatrix, IsAffineToLessThanTheTolerance) {
    ProjMatrix p(sample);
    EXPECT_TRUE(p.isAffine());
    EXPECT_EQ(AffineMatrix(Promise(), p), sample);
    p.m[1][3] = 1e-12;
    EXPECT_FALSE(p.isAffine());
    EXPECT_EQ(AffineMatrix(Promise(), p), sample); // a promise is not tested
    EXPECT_FALSE(ProjMatrix(2.0).isAffine());
}

TEST(Matrix, FindsNaNAndInfinityInEveryEntry) {
    const auto check = [](auto matrix) {
        EXPECT_TRUE(isFinite(matrix) && !isNaN(matrix));
        for (auto& row : matrix.m)
            for (auto& entry : row) {
                const auto before = std::exchange(entry, HUGE_VALF);
                EXPECT_TRUE(!isFinite(matrix) && !isNaN(matrix));
                entry = NAN;
                EXPECT_TRUE(!isFinite(matrix) && isNaN(matrix) && matrix != matrix);
                entry = before;
            }
    };
    check(AffineMatrix());
    check(AffineMatrix2());
    check(ProjMatrixFlt());
}

TEST(Decompose, DegenerateAndMirroredMatrices) {
    const Decomposed zero(AffineMatrix(0.0));
    EXPECT_TRUE(!zero.ok && zero.scale == Vector::zero && zero.rotate == Vector::zero);
    // Its own tolerance: what invert() still takes is singular here.
    const Decomposed flat(AffineMatrix(5e-10));
    EXPECT_TRUE(!flat.ok && flat.scale == Vector(5e-10, 5e-10, 5e-10));

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
        EXPECT_TRUE(atPole.ok && equivalent(atPole.rotate, Vector(20, angle, 0), 1e-6));
        EXPECT_EQ(atPole.rotate.z, 0);
    }
    AffineMatrix unknown;
    unknown.m[0][2] = notANumber;
    EXPECT_TRUE(std::isnan(Decomposed(unknown).rotate.z)); // no pole
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

TEST(LinearStream, WritesNameAndNumbers) {
    std::ostringstream text;
    text << Vector(1e-7, infinity, 0.1) << PointFlt(0.1, 2, 3) << VectorFlt(1, 2, 3) << Point2(1, 2)
         << Line(Point(1, 2, 3), Normal::xAxis) << AffineMatrix() << ProjMatrixFlt();
    EXPECT_EQ(text.str(), "Vector(1e-07,inf,0.1)PointFlt(0.1,2,3)VectorFlt(1,2,3)Point2(1,2)"
                          "Line(Point(1,2,3),Normal(1,0,0))"
                          "AffineMatrix(\n1,0,0\n0,1,0\n0,0,1\n0,0,0\n)"
                          "ProjMatrixFlt(\n1,0,0,0\n0,1,0,0\n0,0,1,0\n0,0,0,1\n)");
}

// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearVector.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numbers>
#include <type_traits>

#include <gtest/gtest.h>

#include "Base/Linear/zeLinearMatrix.h"

namespace {

using namespace zeLinear;
using std::numbers::pi;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kDenormal = std::numeric_limits<double>::denorm_min();

TEST(LinearTolerance, HasTheStatedBits) {
    EXPECT_EQ(epsilonTol, 1e-12);
    EXPECT_EQ(epsilon2Tol, 1e-24);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(epsilonTolFlt), 0x358637BDU);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(epsilon2TolFlt), 0x2B8CBCCCU);
    EXPECT_EQ(degreeTol, 1e-5);
    EXPECT_EQ(parallelTol, 0.9999999999999848);
    EXPECT_EQ(parallel2Tol, 0.9999999999999696);
    EXPECT_EQ(perpendicularTol, 1.745329251994321e-07);
    EXPECT_EQ(perpendicular2Tol, 3.046174197867056e-14);
}

TEST(LinearTolerance, IsReadWhereItIsUsed) {
    const auto saved = std::array{epsilonTol, epsilon2Tol, parallelTol};
    epsilonTol = 0.5;
    epsilon2Tol = 0.25;
    parallelTol = 0.7;
    EXPECT_TRUE(equivalent(Vector(1, 1, 1), Vector(1.4, 1, 1)));
    EXPECT_FALSE(Normal(0.5, 0, 0).valid);
    EXPECT_FALSE(Vector2(0.4, 0).normalize());
    EXPECT_FALSE(AffineMatrix(0.4).invert());
    EXPECT_TRUE(isParallel(Normal::xAxis, Normal(1, 1, 0)));
    epsilonTol = saved[0];
    epsilon2Tol = saved[1];
    parallelTol = saved[2];
}

// Plug-ins are compiled against these layouts.
template<class T>
constexpr bool isPlain = std::is_trivially_copyable_v<T>&& std::is_standard_layout_v<T>&&
    std::is_trivially_destructible_v<T>;
static_assert(isPlain<Vector> && isPlain<Normal> && isPlain<PointFlt> && isPlain<HPoint>);
static_assert(sizeof(Vector) == 24 && sizeof(Vector2Flt) == 8 && sizeof(Normal) == 32);
static_assert(offsetof(Normal, valid) == 24 && offsetof(HPoint, w) == 24);
// What loses is explicit; a Normal counts as a Vector, and not the other way round.
static_assert(std::is_convertible_v<VectorFlt, Vector> &&
              !std::is_convertible_v<Vector, VectorFlt>);
static_assert(std::is_convertible_v<Normal, Vector> && !std::is_convertible_v<Vector, Normal>);
static_assert(!std::is_convertible_v<HPoint, Point> && !std::is_convertible_v<Point2, Point>);

struct Short {
    double length;
    bool normal;  // what Normal and Vector take for a direction
    bool vector2; // what Vector2 takes
};

TEST(LinearVector, TypesDifferInWhatIsTooShort) {
    for (const Short& s : {Short{0, false, false},
                           {kDenormal, false, false},
                           {1e-13, false, false},
                           {1e-12, false, true},
                           {1.001e-12, true, true},
                           {1, true, true}}) {
        SCOPED_TRACE(s.length);
        Vector v(0, s.length, 0);
        Normal n(v);
        EXPECT_EQ(n.valid, s.normal);
        EXPECT_EQ(v.normalize(), s.normal);
        EXPECT_EQ(v, s.normal ? Vector::yAxis : Vector::zero);
        EXPECT_EQ(Vector(n), v);

        Vector2 v2(s.length, 0);
        EXPECT_EQ(v2.normalize(), s.vector2);
        EXPECT_EQ(v2.x, s.vector2 ? 1 : s.length);
    }
    for (float length : {0.F, 1e-7F, 1e-6F, 2e-6F}) {
        // The bound itself, 1e-6, squares to a little less than epsilon2TolFlt.
        VectorFlt v(0.F, 0.F, length);
        EXPECT_EQ(v.normalize(), length > 1e-6F) << length;
        EXPECT_EQ(v.z, length > 1e-6F ? 1.F : 0.F);
        Vector2Flt v2(length, 0.F);
        EXPECT_EQ(v2.normalize(), length > 1e-6F);
        EXPECT_EQ(v2.x, v.z);
    }
}

TEST(LinearVector, NormalisingWhatIsNotFinite) {
    EXPECT_FALSE(Normal(kNaN, 0, 1).valid);
    EXPECT_EQ(Normal(kNaN, 0, 1), Normal());
    EXPECT_TRUE(Normal(kInf, 1, 0).valid); // as the arithmetic has it: infinity times zero
    EXPECT_TRUE(std::isnan(Normal(kInf, 1, 0).x));
    EXPECT_EQ(Vector(Normal(1e200, 0, 0)), Vector::zero); // the sum of squares overflows
    Vector2 v(kNaN, 0);
    EXPECT_TRUE(v.normalize());
    VectorFlt f(1e30F, 0.F, 0.F);
    EXPECT_TRUE(f.normalize());
    EXPECT_EQ(f, VectorFlt::zero);
}

TEST(LinearVector, DivisionMultipliesByTheReciprocal) {
    EXPECT_NE((Vector(5, 7, 11) / 3).x, 5.0 / 3.0);
    Vector v(1, 2, 3);
    v /= 7;
    EXPECT_EQ(v, Vector(1, 2, 3) * (1.0 / 7));
}

TEST(LinearVector, OrthogonalVectorMayBeZero) {
    EXPECT_EQ(Vector(2, -2, 2).orthogonalVector(), Vector::zero);
    EXPECT_EQ(Vector2(3, 4).orthogonalVector(), Vector2(-4, 3));
    EXPECT_EQ(Normal::xAxis.orthogonalVector(), Vector(1, 0, 0).orthogonalVector());
}

TEST(LinearNormal, ComparesComponentsAlone) {
    Normal flagged;
    flagged.valid = true;
    EXPECT_EQ(flagged, Normal(0, 0, 0));
    Normal n(0, 0, -4);
    EXPECT_EQ(-n, Normal::zAxis);
    EXPECT_TRUE((-n).valid);
    EXPECT_FALSE((-Normal()).valid);
    n = Vector(0, 0, 0);
    EXPECT_FALSE(n.valid);
    EXPECT_FALSE(Normal(Vector(kNaN, 0, 0)) != Normal());
    EXPECT_NE(Vector(kNaN, 0, 0), Vector(kNaN, 0, 0));
}

TEST(LinearNormal, MixesWithVectors) {
    EXPECT_EQ(cross(Normal::xAxis, Vector(0, 2, 0)), Vector(0, 0, 2));
    EXPECT_EQ(cross(Vector(0, 2, 0), Normal::xAxis), Vector(0, 0, -2));
    EXPECT_EQ(cross(VectorFlt::yAxis, VectorFlt::zAxis), VectorFlt::xAxis);
    EXPECT_EQ(Normal::xAxis * 2 - Normal::yAxis, Vector(2, -1, 0));
    EXPECT_EQ(VectorFlt(Normal::yAxis), VectorFlt(0, 1, 0));
}

TEST(LinearComponents, EquivalenceIsStrict) {
    EXPECT_FALSE(equivalent(Vector::zero, Vector::zero, 0));
    EXPECT_FALSE(equivalent(Point2(0, 0), Point2(0.5, 0), 0.5));
    EXPECT_TRUE(equivalent(Point2(0, 0), Point2(0.5, 0), 0.5000001));
    EXPECT_FALSE(equivalent(Tuple4(0, 0, 0, kNaN), Tuple4(0, 0, 0, kNaN), 1));
    EXPECT_FALSE(equivalent(VectorFlt(1, 2, 3), VectorFlt(1.F, 2.F, 3.00001F)));
    EXPECT_FALSE(equivalent(HPoint(0, 0, 0, 1), HPoint(0, 0, 0, 2), 1));
}

TEST(LinearVector, Projections) {
    const Vector v(3, 4, 5);
    EXPECT_EQ(projectMagnitude(v, Normal::yAxis), 4);
    EXPECT_EQ(projectParam(v, Normal::zAxis), 5);
    EXPECT_EQ(projectParam(v, Vector(2, 0, 0)), 1.5);
    EXPECT_EQ(projectParam(v, Vector(9e-13, 0, 0)), 0);
}

TEST(LinearVector, AnglesOfInvalidDirections) {
    const Normal none;
    double out = 0;
    EXPECT_FALSE(angle(none, Normal::xAxis, out));
    EXPECT_EQ(out, 1.5707963267948966);
    EXPECT_TRUE(angle(Normal::xAxis, -Normal::xAxis, out));
    EXPECT_EQ(out, pi);
    EXPECT_FALSE(isParallel(none, none));
    EXPECT_FALSE(isPerpendicular(none, Normal::xAxis));
    EXPECT_TRUE(isParallel(Normal::xAxis, Normal(-1, 1e-8, 0)));
    EXPECT_FALSE(isParallel(Normal::xAxis, Normal(1, 1e-6, 0)));
    EXPECT_TRUE(isPerpendicular(Normal::xAxis, Normal(1e-7, 1, 0)));
    EXPECT_FALSE(isPerpendicular(Normal::xAxis, Normal(1e-6, 1, 0)));
    EXPECT_TRUE(isParallel(Normal::xAxis, -Normal::xAxis, 1)); // a bound belongs to both
    EXPECT_TRUE(isPerpendicular(Normal::xAxis, Normal::yAxis, 0));
    EXPECT_EQ(rotate(Vector(1, 2, 3), none, 1), Vector(1, 2, 3));
    EXPECT_EQ(interpolate(Normal::xAxis, none, 1), Normal::xAxis);
    EXPECT_EQ(unitCircleRotation(none, Normal::xAxis, Normal::yAxis, true), 0);
}

TEST(LinearVector, AngleIsNeverNaN) {
    // Of these two the computed dot product exceeds 1.
    Normal n(1, 1, 1);
    n.x = n.y = n.z = 0.5773502691896260;
    ASSERT_GT(dot(n, n), 1);
    EXPECT_EQ(angle(n, n), 0);
    EXPECT_EQ(angle(n, -n), pi);
}

TEST(LinearVector, MeasuresTurnsOnTheUnitCircle) {
    const Normal down(0, -1, 0);
    EXPECT_DOUBLE_EQ(unitCircleRotation(down, Normal::xAxis, Normal::yAxis, false), -pi / 2);
    EXPECT_DOUBLE_EQ(unitCircleRotation(down, Normal::xAxis, Normal::yAxis, true), 1.5 * pi);
}

TEST(LinearVector, InterpolatesEqualAndOppositeDirections) {
    EXPECT_EQ(interpolate(Normal::xAxis, Normal::xAxis, 0.5), Normal::xAxis);
    // Opposite directions go round by the orthogonal vector, but for the one that has none.
    const Normal side = interpolate(Normal::zAxis, -Normal::zAxis, 0.5);
    EXPECT_TRUE(isPerpendicular(side, Normal::zAxis));
    const Normal odd(1, -1, 1);
    EXPECT_EQ(interpolate(odd, -odd, 0.5), odd);
    EXPECT_TRUE(equivalent(interpolate(Vector(2, 0, 0), Vector(0, 4, 0), 0.5),
                           Vector(1.5 * std::sqrt(2), 1.5 * std::sqrt(2), 0)));
}

TEST(LinearPoint, Conversions) {
    EXPECT_EQ(RPoint(HPoint(2, 4, 6, 2)), RPoint(1, 2, 3, 2));
    EXPECT_EQ(HPoint(RPoint(1, 2, 3, 2)), HPoint(2, 4, 6, 2));
    EXPECT_EQ(Point(RPoint(1, 2, 3, 2)), Point(1, 2, 3));
    EXPECT_EQ(HPoint(Point(1, 2, 3)), HPoint(1, 2, 3, 1));
    EXPECT_EQ(Point(HPoint(1, -1, 5, 0)).y, -kInf);
    EXPECT_TRUE(std::isnan(Point(HPoint(0, 0, 0, 0)).x));
    Point p(7, 8, 9);
    p.set(Point2(1, 2));
    EXPECT_EQ(p, Point(1, 2, 0));
    EXPECT_EQ(Point(PointFlt(Point2Flt(1, 2))), p);
    EXPECT_EQ(PointFlt(Point(0.1, 1e300, 0)),
              PointFlt(0.1F, std::numeric_limits<float>::infinity(), 0.F));
    EXPECT_EQ(Tuple4(HPoint(1, 2, 3, 4)), Tuple4(1, 2, 3, 4));
}

TEST(LinearPoint, Combinations) {
    const Point items[] = {{1, 2, 3}, {3, 4, 5}, {10, 20, 30}};
    const double weights[] = {2, 3, 4};
    EXPECT_EQ(combine(3, weights, items), Point(51, 96, 141));
    EXPECT_EQ(combine(1, weights, items), Point(2, 4, 6));
    EXPECT_EQ(combine(0, weights, items), Point(2, 4, 6)); // the first is always read
    EXPECT_EQ(combine(3, items), Point(14 * (1.0 / 3), 26 * (1.0 / 3), 38 * (1.0 / 3)));
    EXPECT_EQ(combine(0, items).x, kInf);
    EXPECT_EQ(combine(HPoint(0, 0, 0, 2), HPoint(2, 2, 2, 4)), HPoint(1, 1, 1, 3));
}

TEST(LinearPoint, Distances) {
    EXPECT_EQ(distance2(Point2Flt(0, 0), Point2Flt(3, 4)), 25.F);
    EXPECT_EQ(distance(Tuple2(0, 0), Tuple2(3, 4)), 5);
}

TEST(LinearPoint, LiesInTheViewVolumeOrNot) {
    EXPECT_TRUE(HPoint(1, -1, 1, 1).insideView(true));
    EXPECT_TRUE(HPoint(0, 0, 9, 1).insideView(false));
    EXPECT_FALSE(HPoint(0, 0, 9, 1).insideView(true));
    EXPECT_FALSE(HPoint(0, 0, -0.1, 1).insideView(false));
    EXPECT_FALSE(HPoint(1.1, 0, 0, 1).insideView(false));
    EXPECT_FALSE(HPoint(0, 0, 0, -1).insideView(false));
}

} // namespace

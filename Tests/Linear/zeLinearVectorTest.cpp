// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearVector.h"

#include <array>
#include <bit>
#include <cmath>
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

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

// Plug-ins are compiled against these layouts.
template<class T>
constexpr bool isPlain = std::is_trivially_copyable_v<T>&& std::is_standard_layout_v<T>&&
    std::is_trivially_destructible_v<T>;
static_assert(isPlain<Vector> && isPlain<Normal> && isPlain<PointFlt> && isPlain<HPoint>);
static_assert(sizeof(Vector) == 24 && sizeof(Vector2Flt) == 8 && sizeof(Normal) == 32);
static_assert(offsetof(Normal, valid) == 24 && offsetof(HPoint, w) == 24);

// Formulas, by values worked out by hand.
static_assert(Vector(2, -2, 2).orthogonalVector() == Vector::zero);
static_assert(Vector2(3, 4).orthogonalVector() == Vector2(-4, 3));
static_assert(projectMagnitude(Vector(3, 4, 5), Normal::yAxis) == 4);
static_assert(distance2(Point2Flt(0, 0), Point2Flt(3, 4)) == 25);
static_assert(combine(HPoint(0, 0, 0, 2), HPoint(2, 2, 2, 4)) == HPoint(1, 1, 1, 3));
constexpr Point items[] = {{1, 2, 3}, {3, 4, 5}, {10, 20, 30}};
constexpr double weights[] = {2, 3, 4};
static_assert(combine(3, weights, items) == Point(51, 96, 141));
static_assert(combine(0, weights, items) == Point(2, 4, 6)); // the first is always read
static_assert(combine(3, items) == Point(14 * (1.0 / 3), 26 * (1.0 / 3), 38 * (1.0 / 3)));

} // namespace

TEST(LinearTolerance, HasTheStatedBits) {
    EXPECT_EQ((std::array{epsilonTol, epsilon2Tol, degreeTol}), (std::array{1e-12, 1e-24, 1e-5}));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(std::array{epsilonTolFlt, epsilon2TolFlt}),
              0x2B8CBCCC358637BDU);
    EXPECT_EQ((std::array{parallelTol, parallel2Tol}),
              (std::array{0.9999999999999848, 0.9999999999999696}));
    EXPECT_EQ((std::array{perpendicularTol, perpendicular2Tol}),
              (std::array{1.745329251994321e-07, 3.046174197867056e-14}));
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

TEST(LinearVector, TypesDifferInWhatIsTooShort) {
    for (const double length : {0.0, 5e-324, 1e-13, 1e-12, 1.001e-12, 1.0}) {
        SCOPED_TRACE(length);
        Vector v(0, length, 0);
        Normal n(v);
        EXPECT_EQ(n.valid, length > 1e-12);
        EXPECT_EQ(v.normalize(), length > 1e-12);
        EXPECT_EQ(v, n.valid ? Vector::yAxis : Vector::zero);
        EXPECT_EQ(Vector(n), v);

        Vector2 v2(length, 0); // the bound itself counts
        EXPECT_EQ(v2.normalize(), length >= 1e-12);
        EXPECT_EQ(v2.x, length >= 1e-12 ? 1 : length);
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
    EXPECT_FALSE(Normal(notANumber, 0, 1).valid);
    EXPECT_EQ(Normal(notANumber, 0, 1), Normal());
    EXPECT_TRUE(Normal(infinity, 1, 0).valid); // as the arithmetic has it: infinity times zero
    EXPECT_TRUE(std::isnan(Normal(infinity, 1, 0).x));
    EXPECT_TRUE(Normal(1e155, 0, 0).valid); // the sum of squares overflows
    EXPECT_EQ(Vector(Normal(1e155, 0, 0)), Vector::zero);
    Vector2 v(notANumber, 0);
    EXPECT_TRUE(v.normalize());
    VectorFlt f(1e30F, 0.F, 0.F);
    EXPECT_TRUE(f.normalize());
    EXPECT_EQ(f, VectorFlt::zero);
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
    EXPECT_FALSE(Normal(Vector(notANumber, 0, 0)) != Normal());
    EXPECT_NE(Vector(notANumber, 0, 0), Vector(notANumber, 0, 0));
}

TEST(LinearComponents, EquivalenceIsStrict) {
    EXPECT_FALSE(equivalent(Vector::zero, Vector::zero, 0));
    EXPECT_FALSE(equivalent(AffineMatrix(), AffineMatrix(), 0));
    EXPECT_FALSE(equivalent(Point2(0, 0), Point2(0.5, 0), 0.5));
    EXPECT_FALSE(equivalent(Tuple4(0, 0, 0, notANumber), Tuple4(0, 0, 0, notANumber), 1));
    EXPECT_FALSE(equivalent(VectorFlt(1, 2, 3), VectorFlt(1, 2, 3.00001)));
    EXPECT_TRUE(equivalent(HPoint(0, 0, 0, 1), HPoint(0, 0, 0, 2), 1.1));
}

TEST(LinearVector, MeasuresDirectionsThatMayBeInvalid) {
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
    const Normal down(0, -1, 0);
    EXPECT_DOUBLE_EQ(unitCircleRotation(down, Normal::xAxis, Normal::yAxis, false), -pi / 2);
    EXPECT_DOUBLE_EQ(unitCircleRotation(down, Normal::xAxis, Normal::yAxis, true), 1.5 * pi);
    EXPECT_EQ(projectParam(Vector(3, 4, 5), Vector(9e-13, 0, 0)), 0);
    // Of these two the computed dot product exceeds 1: no angle is a NaN.
    Normal n(1, 1, 1);
    n.x = n.y = n.z = 0.5773502691896260;
    ASSERT_GT(dot(n, n), 1);
    EXPECT_EQ(angle(n, n), 0);
    EXPECT_EQ(angle(n, -n), pi);
}

TEST(LinearVector, InterpolatesEqualAndOppositeDirections) {
    EXPECT_EQ(interpolate(Normal::xAxis, Normal::xAxis, 0.5), Normal::xAxis);
    // Opposite directions turn about the orthogonal vector, which one direction does not have.
    const Normal side = interpolate(Normal::zAxis, -Normal::zAxis, 0.5);
    EXPECT_TRUE(isPerpendicular(side, Normal::zAxis));
    const Normal odd(1, -1, 1);
    EXPECT_EQ(interpolate(odd, -odd, 0.5), odd);
    EXPECT_TRUE(equivalent(interpolate(Vector(2, 0, 0), Vector(0, 4, 0), 0.5),
                           Vector(1.5 * std::sqrt(2), 1.5 * std::sqrt(2), 0)));
}

TEST(LinearPoint, WithoutAWeightIsInfinite) {
    EXPECT_EQ(Point(HPoint(1, -1, 5, 0)).y, -infinity);
    EXPECT_TRUE(std::isnan(Point(HPoint(0, 0, 0, 0)).x));
    EXPECT_EQ(combine(0, items).x, infinity);
    EXPECT_EQ(PointFlt(Point(0.1, 1e300, 0)),
              PointFlt(0.1F, std::numeric_limits<float>::infinity(), 0));
    EXPECT_EQ(distance(Tuple2(0, 0), Tuple2(3, 4)), 5);
}

TEST(LinearPoint, LiesInTheViewVolumeOrNot) {
    // One row for each side, just outside.
    for (const HPoint& p : {HPoint(1.1, 0, 0, 1), HPoint(-1.1, 0, 0, 1), HPoint(0, 1.1, 0, 1),
                            HPoint(0, -1.1, 0, 1), HPoint(0, 0, -0.1, 1), HPoint(0, 0, 0, -1)})
        EXPECT_FALSE(p.insideView(false)) << p.x << ' ' << p.y << ' ' << p.z;
    EXPECT_TRUE(HPoint(1, -1, 1, 1).insideView(true) && HPoint(-1, 1, 0, 1).insideView(true));
    EXPECT_TRUE(HPoint(0, 0, 9, 1).insideView(false) && !HPoint(0, 0, 9, 1).insideView(true));
}

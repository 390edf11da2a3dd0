// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearRange.h"

#include <limits>

#include <gtest/gtest.h>

#include "Base/Linear/zeLinearIntersect.h"

namespace {

using namespace zeLinear;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Ranges of each dimension, the same on every axis: all must behave alike.
template<class R>
struct LinearRange : testing::Test {
    using Corner = decltype(R::low);
    static Corner at(double s) {
        return detail::each<Corner>([s] { return s; });
    }
    static R make(double low, double high) { return R(at(low), at(high)); }
};
using AllRanges = testing::Types<Range1d, Range2d, Range3d>;
TYPED_TEST_SUITE(LinearRange, AllRanges);

// Formulas, by values worked out by hand.
static_assert(Range1d(9, 2).size() == -1 && Range1d(2, 9).size() == 7);
static_assert(distance(1, Range1d(3, 4)) == 2 && distance(Range1d(0, 1), Range1d(4, 5)) == 3 &&
              distance(Range1d(4, 5), Range1d(0, 4.5)) == 0);
static_assert(Range3d().volume() == -1 && Range3d(Point(1, 1, 1), Point(2, 3, 4)).volume() == 6);

// Clipping to what lies apart leaves an inverted range, which is all of space.
constexpr Range2d clipped(Range2d range, const Range2d& other) {
    range.clipTo(other);
    return range;
}
constexpr Range2d wide(Point2(0, 1), Point2(4, 3));
static_assert(clipped(wide, Range2d()) == wide && clipped(Range2d(), wide) == wide);
static_assert(clipped(wide, Range2d(Point2(7, 7), Point2(8, 8))) ==
              Range2d(Point2(7, 7), Point2(4, 3)));
static_assert(wide.area() == 8 && Range2d().area() == -1 && Range2d().size() == Vector2(-1, -1));

/// The range after `set(arguments...)`.
template<class R>
constexpr R stored(auto... arguments) {
    R range;
    range.set(arguments...);
    return range;
}
constexpr float narrow[] = {1, 2, 3};
constexpr double low[] = {1, 2, 3};
constexpr double high[] = {4, 5, 6};
// A literal 0 is a number here, not a null pointer.
static_assert(stored<Range1d>(0) == Range1d(0, 0) && stored<Range1d>(3L) == Range1d(3, 3) &&
              stored<Range1d>(low) == Range1d(1, 1) && stored<Range1d>(narrow) == Range1d(1, 1) &&
              stored<Range1d>(2, 1) == Range1d(2, 1));
static_assert(stored<Range2d>(1, 2.F) == stored<Range2d>(low) &&
              stored<Range2d>(narrow) == stored<Range2d>(Point2(1, 2)) &&
              stored<Range2d>(low, high) == Range2d(Point2(1, 2), Point2(4, 5)));
static_assert(stored<Range3d>(1, 2, 3) == stored<Range3d>(low) &&
              stored<Range3d>(narrow) == stored<Range3d>(Point(1, 2, 3)) &&
              stored<Range3d>(low, high) == Range3d(Point(1, 2, 3), Point(4, 5, 6)));

} // namespace

TYPED_TEST(LinearRange, UnboundedHoldsEverything) {
    using R = TypeParam;
    R r;
    EXPECT_TRUE(r.isUnbounded());
    const R box = this->make(2, 5);
    EXPECT_TRUE(r.contains(this->at(1e300)));
    EXPECT_TRUE(r.contains(this->at(notANumber)));
    EXPECT_FALSE(box.contains(r));
    EXPECT_TRUE(box.intersects(r) && r.intersects(box) && r.intersects(r));
    r.include(this->at(5));
    EXPECT_TRUE(r.isUnbounded());
    EXPECT_TRUE(equivalent(r, R()));
    EXPECT_EQ(r.mid(), this->at(0.5));
    EXPECT_EQ(distance(this->at(7), r), 0);
    EXPECT_EQ(distance(r, box), 0);

    R widened = box;
    widened.include(r);
    EXPECT_EQ(widened, R());
    widened = this->make(9, 3); // inverted, by whatever numbers
    EXPECT_TRUE(widened.contains(this->at(-1)));
    widened.setUnbounded();
    EXPECT_EQ(widened, R());
}

TYPED_TEST(LinearRange, WidensAndContains) {
    using R = TypeParam;
    R r;
    r.set(this->at(2));
    EXPECT_EQ(r, this->make(2, 2));
    r.include(this->at(5));
    r.include(this->at(-1));
    r.include(this->at(notANumber));
    EXPECT_EQ(r, this->make(-1, 5));
    r.include(this->make(4, 7));
    EXPECT_EQ(r, this->make(-1, 7));
    EXPECT_TRUE(r.contains(this->at(-1)) && r.contains(this->at(7)));
    EXPECT_FALSE(r.contains(this->at(7.1)));
    EXPECT_TRUE(r.contains(this->at(7.5), 0.5));
    EXPECT_FALSE(r.contains(this->at(notANumber)));
    EXPECT_FALSE(r.contains(this->make(0, 8), 0.5));
    EXPECT_EQ(r.mid(), this->at(3));
}

TYPED_TEST(LinearRange, RangesThatOnlyTouchDoNotIntersect) {
    using R = TypeParam;
    const R a = this->make(0, 1);
    EXPECT_FALSE(a.intersects(this->make(1, 2), 0));
    EXPECT_FALSE(equivalent(a, this->make(0, 1.25), 0.25)); // nor are these equivalent
    EXPECT_TRUE(a.intersects(this->make(1, 2), 1e-9));
    EXPECT_FALSE(a.intersects(this->make(0.5, 2), -0.5));
    // The intersection of what misses is the gap or nothing.
    EXPECT_EQ(intersect(a, this->make(1, 3), 0), this->make(1, 1));
    EXPECT_EQ(intersect(a, this->make(2, 3), 5), this->make(1, 2));
    EXPECT_EQ(intersect(a, this->make(2, 3), 1), this->make(0, 0));
    EXPECT_EQ(intersect(a, R(), 0), a);
    EXPECT_EQ(intersect(R(), a, 0), a);
}

TEST(LinearRanges, TestTheFirstAxisAlone) {
    const Range2d flat(Point2(0, 5), Point2(1, 2)); // inverted in y alone: bounded
    EXPECT_FALSE(flat.isUnbounded());
    EXPECT_FALSE(flat.contains(Point2(0.5, 3)));
    // Axis by axis an inverted one counts as unbounded.
    EXPECT_EQ(intersect(flat, Range2d(Point2(0, 7), Point2(1, 8)), 0),
              Range2d(Point2(0, 7), Point2(1, 8)));
    EXPECT_EQ(distance(flat, Range2d(Point2(4, 7), Point2(5, 8))), 3);
}

TEST(LinearRanges, HaveEuclideanDistancesAndCorners) {
    const Range3d box(Point(0, 0, 0), Point(1, 1, 1));
    EXPECT_EQ(distance(Point(3, 4, 7), box), 7);
    EXPECT_EQ(distance(box, Range3d(Point(3, 4, 7), Point(9, 9, 9))), 7);
    EXPECT_EQ(distance(Point2(-3, 5), Range2d(Point2(0, 0), Point2(1, 1))), 5);
    Range2d unordered;
    unordered.setUnordered(Point2(4, 1), Point2(0, 3));
    EXPECT_EQ(unordered, wide);
    double corners[6];
    box.get(corners, corners + 3);
    EXPECT_EQ(stored<Range3d>(corners + 0, corners + 3), box);
}

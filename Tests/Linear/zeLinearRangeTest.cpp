// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearRange.h"

#include <limits>

#include <gtest/gtest.h>

#include "Base/Linear/zeLinearIntersect.h"

namespace {

using namespace zeLinear;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

/// One range of each dimension, the same on every axis: what is said of one must hold for all.
template<class R>
struct Ranges;
template<>
struct Ranges<Range1d> {
    static Range1d make(double low, double high) { return Range1d(low, high); }
    static double at(double s) { return s; }
};
template<>
struct Ranges<Range2d> {
    static Range2d make(double low, double high) { return Range2d(at(low), at(high)); }
    static Point2 at(double s) { return Point2(s, s); }
};
template<>
struct Ranges<Range3d> {
    static Range3d make(double low, double high) { return Range3d(at(low), at(high)); }
    static Point at(double s) { return Point(s, s, s); }
};

template<class R>
class LinearRange : public testing::Test, public Ranges<R> {};
using AllRanges = testing::Types<Range1d, Range2d, Range3d>;
TYPED_TEST_SUITE(LinearRange, AllRanges);

TYPED_TEST(LinearRange, UnboundedHoldsEverything) {
    using R = TypeParam;
    R r;
    EXPECT_TRUE(r.isUnbounded());
    EXPECT_EQ(r, this->make(1, 0));
    const R box = this->make(2, 5);
    EXPECT_TRUE(r.contains(this->at(1e300)));
    EXPECT_TRUE(r.contains(this->at(kNaN)));
    EXPECT_TRUE(r.contains(box));
    EXPECT_TRUE(r.contains(r));
    EXPECT_FALSE(box.contains(r));
    EXPECT_TRUE(box.intersects(r) && r.intersects(box) && r.intersects(r));
    r.include(this->at(5));
    r.include(box);
    EXPECT_TRUE(r.isUnbounded());
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
    r.include(this->at(3));
    r.include(this->at(kNaN));
    EXPECT_EQ(r, this->make(-1, 5));
    r.include(this->make(4, 7));
    EXPECT_EQ(r, this->make(-1, 7));
    EXPECT_TRUE(r.contains(this->at(-1)) && r.contains(this->at(7)));
    EXPECT_FALSE(r.contains(this->at(7.1)));
    EXPECT_TRUE(r.contains(this->at(7.5), 0.5));
    EXPECT_FALSE(r.contains(this->at(kNaN)));
    EXPECT_TRUE(r.contains(this->make(0, 7)));
    EXPECT_FALSE(r.contains(this->make(0, 8), 0.5));
    EXPECT_EQ(r.mid(), this->at(3));
    EXPECT_TRUE(this->make(0, kInf).contains(this->at(1e308)));
}

TYPED_TEST(LinearRange, RangesThatOnlyTouchDoNotIntersect) {
    using R = TypeParam;
    const R a = this->make(0, 1);
    EXPECT_FALSE(a.intersects(this->make(1, 2), 0));
    EXPECT_TRUE(a.intersects(this->make(1, 2), 1e-9));
    EXPECT_TRUE(a.intersects(this->make(0.5, 2), 0));
    EXPECT_FALSE(a.intersects(this->make(0.5, 2), -0.5));
    EXPECT_FALSE(a.intersects(this->make(-3, -2), 0));
}

TYPED_TEST(LinearRange, IntersectionOfWhatMissesIsTheGapOrNothing) {
    using R = TypeParam;
    const R a = this->make(0, 1);
    EXPECT_EQ(intersect(a, this->make(0.5, 3), 0), this->make(0.5, 1));
    EXPECT_EQ(intersect(a, this->make(1, 3), 0), this->make(1, 1));
    EXPECT_EQ(intersect(a, this->make(2, 3), 5), this->make(1, 2));
    EXPECT_EQ(intersect(a, this->make(2, 3), 1), this->make(0, 0));
    EXPECT_EQ(intersect(a, R(), 0), a);
    EXPECT_EQ(intersect(R(), a, 0), a);
}

TYPED_TEST(LinearRange, EquivalenceIsStrict) {
    using R = TypeParam;
    EXPECT_TRUE(equivalent(this->make(0, 1), this->make(0, 1.25), 0.3));
    EXPECT_FALSE(equivalent(this->make(0, 1), this->make(0, 1.25), 0.25));
    EXPECT_TRUE(equivalent(R(), R()));
}

TEST(LinearRange1d, Size) {
    EXPECT_EQ(Range1d().size(), -1.0);
    EXPECT_EQ(Range1d(9, 2).size(), -1.0);
    EXPECT_EQ(Range1d(2, 9).size(), 7);
    EXPECT_EQ(distance(1, Range1d(3, 4)), 2);
    EXPECT_EQ(distance(Range1d(0, 1), Range1d(4, 5)), 3);
    EXPECT_EQ(distance(Range1d(4, 5), Range1d(0, 4.5)), 0);
    const float value = 3;
    Range1d r;
    r.set(&value);
    EXPECT_EQ(r, Range1d(3, 3));
}

TEST(LinearRange2d, OnlyTheFirstAxisIsTested) {
    const Range2d flat(Point2(0, 5), Point2(1, 2)); // inverted in y alone: bounded
    EXPECT_FALSE(flat.isUnbounded());
    EXPECT_FALSE(flat.contains(Point2(0.5, 3)));
    // Axis by axis an inverted one counts as unbounded.
    EXPECT_EQ(intersect(flat, Range2d(Point2(0, 7), Point2(1, 8)), 0),
              Range2d(Point2(0, 7), Point2(1, 8)));
    EXPECT_EQ(distance(flat, Range2d(Point2(4, 7), Point2(5, 8))), 3);
}

TEST(LinearRange2d, AreaAndClipping) {
    Range2d r;
    EXPECT_EQ(r.area(), -1.0);
    EXPECT_EQ(r.size(), Vector2(-1, -1));
    r.setUnordered(Point2(4, 1), Point2(0, 3));
    EXPECT_EQ(r, Range2d(Point2(0, 1), Point2(4, 3)));
    EXPECT_EQ(r.area(), 8);
    r.clipTo(Range2d());
    EXPECT_EQ(r.area(), 8);
    r.clipTo(Range2d(Point2(1, 0), Point2(9, 2)));
    EXPECT_EQ(r, Range2d(Point2(1, 1), Point2(4, 2)));
    Range2d all;
    all.clipTo(r);
    EXPECT_EQ(all, r);
    all.clipTo(Range2d(Point2(7, 7), Point2(8, 8)));
    EXPECT_TRUE(all.isUnbounded()); // as it stands: nothing in common, hence all of space
    EXPECT_EQ(all, Range2d(Point2(7, 7), Point2(4, 2)));
}

TEST(LinearRange3d, DistancesAreEuclidean) {
    const Range3d box(Point(0, 0, 0), Point(1, 1, 1));
    EXPECT_EQ(distance(Point(3, 4, 7), box), 7);
    EXPECT_EQ(distance(box, Range3d(Point(3, 4, 7), Point(9, 9, 9))), 7);
    EXPECT_EQ(distance(Point2(-3, 5), Range2d(Point2(0, 0), Point2(1, 1))), 5);
    EXPECT_EQ(Range3d().volume(), -1.0);
    double low[3];
    double high[3];
    box.get(low, high);
    Range3d copy;
    copy.set(low, high);
    EXPECT_EQ(copy, box);
}

} // namespace

// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilCircularRange.h"

#include <algorithm>
#include <bit>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Range = zeUtil::CircularRange;
using Set = unsigned int; ///< Bit i is position i.

/// The positions of a canonical run, one by one.
Set setOf(const Range& run) {
    if (run.start < 0)
        return 0;
    Set set = 1u << run.start;
    for (int i = run.start; i != run.end;)
        set |= 1u << (i = (i + 1) % run.size);
    return set;
}

bool has(const Range& run, int position) {
    return setOf(run) >> position & 1;
}

bool isWrapped(const Range& run) {
    return run.start > run.end;
}

bool isWhole(Set set, int size) {
    return set == (1u << size) - 1;
}

/// How many runs a set consists of on the ring.
int pieces(Set set, int size) {
    const Set behind = (set << 1 | set >> (size - 1)) & ((1u << size) - 1);
    return isWhole(set, size) ? 1 : std::popcount(set & ~behind);
}

/// Every run of a ring that has one canonical form.
std::vector<Range> runsOf(int size) {
    std::vector<Range> runs;
    for (int start = 0; start < size; ++start) {
        for (int end = 0; end < size; ++end) {
            if (start != end + 1)
                runs.emplace_back(start, end, size);
        }
    }
    return runs;
}

/// What is left of two runs that reach around the ring and further: merged as one run on a line,
/// they keep only what is more than the ring. Empty for other runs.
Range surplusOf(const Range& a, const Range& b) {
    const Range& wrapped = isWrapped(a) ? a : b;
    const Range& other = isWrapped(a) ? b : a;
    const Range surplus(std::min(a.start, b.start),
                        isWrapped(other) ? std::max(a.end, b.end) : wrapped.end, a.size);
    const bool reachesStart = isWrapped(other) || other.end + 1 >= wrapped.start;
    const bool hasFull = isWhole(setOf(a), a.size) || isWhole(setOf(b), a.size);
    return isWrapped(wrapped) && reachesStart && !hasFull && surplus.start <= surplus.end ? surplus
                                                                                          : Range();
}

/// Calls `check(a, b)` for every pair of runs on rings of 1 to 9.
template<class Check>
void forEveryPair(Check check) {
    for (int size = 1; size <= 9; ++size) {
        for (const Range& a : runsOf(size)) {
            for (const Range& b : runsOf(size)) {
                check(a, b);
                ASSERT_FALSE(testing::Test::HasFailure())
                    << testing::PrintToString(a) << " with " << testing::PrintToString(b);
            }
        }
    }
}

} // namespace

TEST(CircularRangePairs, OverlapAndContainAsSetsDo) {
    forEveryPair([](const Range& a, const Range& b) {
        EXPECT_EQ(a.overlaps(b), (setOf(a) & setOf(b)) != 0);
        // A linear run has no image that holds a wrapped one, not even the full run.
        EXPECT_EQ(a.contains(b), (setOf(b) & ~setOf(a)) == 0 && (isWrapped(a) || !isWrapped(b)));
    });
}

TEST(CircularRangePairs, MergeIntoTheirUnion) {
    forEveryPair([](const Range& a, const Range& b) {
        const Set both = setOf(a) | setOf(b);
        Range merged = a;
        const bool isMerged = merged.merge(b);
        EXPECT_EQ(isMerged, pieces(both, a.size) == 1);
        EXPECT_EQ(merged.size, a.size);
        if (!isMerged)
            EXPECT_EQ(merged, a);
        else if (const Range surplus = surplusOf(a, b); surplus.start >= 0)
            EXPECT_EQ(merged, surplus);
        else
            EXPECT_EQ(setOf(merged), both);
    });
}

TEST(CircularRangePairs, LeaveTheirDifference) {
    forEveryPair([](const Range& a, const Range& b) {
        Range out1;
        Range out2;
        a.subtract(b, out1, out2);
        Set expected = setOf(a) & ~setOf(b);
        // Of a run that a wrapped one overlaps at both ends, only one end is taken off: that behind
        // the start of the wrapped one, if this lies behind the run's own.
        if (isWrapped(b) && has(b, a.start) && has(b, a.end) && expected != 0)
            expected = setOf(b.start > a.start ? Range(a.start, b.start - 1, a.size)
                                               : Range(b.end + 1, a.end, a.size));
        EXPECT_EQ(setOf(out1) | setOf(out2), expected);
        EXPECT_EQ(setOf(out1) & setOf(out2), 0u);
        for (const Range& out : {out1, out2})
            EXPECT_EQ(out.size, out.start < 0 ? 0 : a.size) << "an output without a piece is kept";
    });
}

TEST(CircularRangePairs, IntersectWhereOnePieceIsLeft) {
    forEveryPair([](const Range& a, const Range& b) {
        const Set shared = setOf(a) & setOf(b);
        const Set gapOfA = ~setOf(a);
        const Set gapOfB = ~setOf(b) & ((1u << a.size) - 1);
        // Two wrapped runs have an answer only if their gaps overlap.
        const bool hasAnswer =
            isWrapped(a) && isWrapped(b) ? (gapOfA & gapOfB) != 0 : pieces(shared, a.size) == 1;
        Range intersection = a;
        EXPECT_EQ(intersection.intersect(b), hasAnswer);
        if (hasAnswer)
            EXPECT_EQ(setOf(intersection), shared);
        else
            EXPECT_EQ(intersection, Range(-1, -1, a.size));
    });
}

TEST(CircularRange, MeasuresAndHalvesEveryRun) {
    for (int size = 1; size <= 9; ++size) {
        for (const Range& run : runsOf(size)) {
            SCOPED_TRACE(testing::PrintToString(run));
            for (int x = 0; x < size; ++x) {
                EXPECT_EQ(run.contains(x), has(run, x));
                const int toStart = (run.start - x + size) % size;
                const int fromEnd = (x - run.end + size) % size;
                EXPECT_EQ(run.distance(x), has(run, x) ? 0 : std::min(toStart, fromEnd));
            }
            const Set first = setOf(run.firstHalf());
            const Set second = setOf(run.secondHalf());
            EXPECT_EQ(first | second, setOf(run));
            EXPECT_EQ(std::popcount(first), std::popcount(setOf(run)) / 2);
            EXPECT_EQ(std::popcount(second), (std::popcount(setOf(run)) + 1) / 2);
            EXPECT_EQ(run.secondHalf().end, run.end);
        }
    }
    const Range large(1073741820, 1073741810, 1073741823); // ends and size add up beyond an int
    EXPECT_EQ(large.firstHalf(), Range(1073741820, 536870903, 1073741823));
    EXPECT_EQ(large.secondHalf(), Range(536870904, 1073741810, 1073741823));
}

TEST(CircularRange, TreatsTheEmptyRunAsALinearOne) {
    const Range empty(-1, -1, 8);
    EXPECT_TRUE(empty.overlaps(Range(5, 7, 8)));
    EXPECT_FALSE(empty.overlaps(Range(0, 6, 8)));
    Range merged = empty;
    EXPECT_TRUE(merged.merge(Range(0, 1, 8)));
    EXPECT_EQ(merged, Range(-1, 1, 8));
    Range out1, out2;
    Range(6, 1, 8).subtract(empty, out1, out2);
    EXPECT_EQ(out1, Range(6, 6, 8));
    EXPECT_EQ(out2, Range(0, 1, 8));
    EXPECT_EQ(empty.firstHalf(), empty);
    EXPECT_EQ(empty.secondHalf(), Range(0, 7, 8));

    EXPECT_FALSE(merged.intersect(Range(0, 7, 8)));
    EXPECT_EQ(merged, Range(-1, 1, 8));
    EXPECT_FALSE(merged.intersect(Range()));
}

TEST(CircularRange, WorksOnALineToo) {
    Range run(1, 4, 100);
    EXPECT_TRUE(run.intersectLinear(Range(2, 9, 7)));
    EXPECT_EQ(run, Range(2, 4, 100));
    Range out1(-1, -1, 5), out2;
    run.subtractLinear(Range(2, 4, 100), out1, out2);
    EXPECT_EQ(out1, Range(-1, -1, 5)) << "nothing is left";
    run.subtractLinear(Range(3, 3, 100), run, out2); // an output may be the run itself
    EXPECT_EQ(run, Range(2, 2, 100));
    EXPECT_EQ(out2, Range(4, 4, 100));
    for (const Range& whole : {Range(3, 2, 8), Range(11, 10, 8), Range(0, -1, 8)}) {
        Range canonical = whole;
        canonical.canonicalize();
        EXPECT_EQ(canonical, Range(0, 7, 8));
    }
}

TEST(CircularRange, KeepsListsOfRunsThatDoNotMeet) {
    constexpr int size = 200;
    std::mt19937 random(12);
    std::vector<Range> list;
    std::vector<bool> expected(size); // never more than half full, so that no run closes the ring
    for (int step = 0; step < 1000; ++step) {
        const int start = static_cast<int>(random() % size);
        const int length = 1 + static_cast<int>(random() % 9);
        const bool adding = random() % 3 == 0;
        const Range run(start, (start + length - 1) % size, size);
        adding ? merge(list, run) : subtract(list, run);
        for (int i = 0; i < length; ++i)
            expected[static_cast<std::size_t>((start + i) % size)] = adding;

        for (int i = 0; i < size; ++i) {
            const auto holders = std::count_if(list.begin(), list.end(),
                                               [i](const Range& r) { return r.contains(i); });
            ASSERT_EQ(holders, expected[static_cast<std::size_t>(i)]) << "step " << step;
        }
    }
    std::vector<Range> order = {{0, 1, 100}, {10, 11, 100}, {20, 21, 100}, {30, 31, 100}};
    merge(order, {12, 29, 100});
    EXPECT_EQ(order, (std::vector<Range>{{0, 1, 100}, {10, 31, 100}}));
    subtract(order, {0, 20, 100});
    EXPECT_EQ(order, (std::vector<Range>{{21, 31, 100}}));
}

// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilPacking.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Utility/zeUtilPowerOfTwo.h"

namespace {

using zeUtil::IntRange2d;
using zeUtil::pack;
using Rects = std::vector<IntRange2d>;

/// Free space as a plain tree, in which every node with free space is visited: the slow twin.
struct Space {
    explicit Space(const IntRange2d& where) : rect(where) {}

    const IntRange2d* insert(const IntRange2d& r) {
        if (first) {
            const IntRange2d* placed = first->used ? nullptr : first->insert(r);
            if (!placed && !second->used)
                placed = second->insert(r);
            used = first->used && second->used;
            return placed;
        }
        const int dw = rect.size[0] - r.size[0];
        const int dh = rect.size[1] - r.size[1];
        if (used || dw < 0 || dh < 0)
            return nullptr;
        if (dw == 0 && dh == 0) {
            used = true;
            return &rect;
        }
        const int dim = dw > dh ? 0 : 1;
        first = std::make_unique<Space>(rect);
        second = std::make_unique<Space>(rect);
        first->rect.size[dim] = r.size[dim];
        second->rect.size[dim] -= r.size[dim];
        second->rect.origin[dim] += r.size[dim];
        return first->insert(r);
    }

    IntRange2d rect;
    std::unique_ptr<Space> first, second;
    bool used = false; ///< By one rectangle or more: nothing is free.
};

int area(const IntRange2d& r) {
    return r.size[0] * r.size[1];
}

int packSlowly(Rects& rects, const IntRange2d& bounds) {
    Space root(bounds);
    int left = 0;
    for (IntRange2d& rect : rects) {
        const IntRange2d* placed = left == 0 ? root.insert(rect) : nullptr;
        if (placed)
            rect = *placed;
        else
            left += area(rect);
    }
    return left;
}

int longest(const IntRange2d& r) {
    return std::max(r.size[0], r.size[1]);
}

/// For lists whose longest edges are all different and stand in falling order.
IntRange2d packSlowly(Rects& rects, bool powerOfTwo) {
    int most[2] = {0, 0};
    int total = 0;
    for (const IntRange2d& r : rects) {
        most[0] = std::max(most[0], r.size[0]);
        most[1] = std::max(most[1], r.size[1]);
        total += area(r);
    }
    const auto up = [&](int n) { return powerOfTwo ? zeUtil::ceilPowerOfTwo(n) : n; };
    const int side = static_cast<int>(std::sqrt(total));
    int w = up(side), h = up(side);
    if (most[0] >= side || most[1] >= side) {
        w = up(most[0]);
        h = up(most[1]);
        if (w > h)
            h = total / w > h ? up(total / w) : h;
        else
            w = total / h > w ? up(total / h) : w;
    }
    while (const int left = packSlowly(rects, IntRange2d(0, 0, w, h))) {
        if (powerOfTwo)
            (h <= w ? h : w) *= 2;
        else
            w = h = static_cast<int>(std::sqrt(left + w * h)) + 1;
    }
    IntRange2d box;
    for (const IntRange2d& r : rects)
        box.include(r);
    return powerOfTwo ? IntRange2d(0, 0, w, h) : IntRange2d(0, 0, longest(box), longest(box));
}

Rects randomRects(std::size_t count, int least, int most, unsigned int seed) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> side(least, most);
    Rects rects;
    while (rects.size() < count) {
        const int width = side(random);
        rects.emplace_back(-1, -1, width, side(random));
    }
    return rects;
}

} // namespace

TEST(Packing, PlacesAsAVisitOfEverySpaceDoes) {
    struct Case {
        std::size_t count;
        int least, most;
        IntRange2d bounds;
        bool sorted;
    };
    const Case cases[] = {
        {10000, 4, 64, {0, 0, 3600, 3600}, true},  // all fit
        {2000, 4, 64, {-7, 9, 2000, 2000}, false}, // all fit, in the order given
        {2000, 1, 300, {0, 0, 9000, 9000}, false}, // more widths than classes of them
        {1000, 0, 3, {0, 0, 47, 60}, false},       // sizes of 0, and many exact fits
        {1000, 0, 1, {0, 0, 9, 9}, false},         // few sizes
        {10, 5, 9, {0, 0, 8, 8}, false},           // the first may not fit
        {10, 2, 9, {0, 0, 0, 0}, false},
    };
    unsigned int seed = 100;
    for (const Case& c : cases) {
        for (int repetition = 0; repetition < (c.count > 1000 ? 1 : 20); ++repetition) {
            Rects fast = randomRects(c.count, c.least, c.most, ++seed);
            if (c.sorted)
                std::sort(fast.begin(), fast.end(),
                          [](auto& a, auto& b) { return longest(a) > longest(b); });
            Rects slow = fast;
            const int left = pack(fast, c.bounds);
            ASSERT_EQ(left, packSlowly(slow, c.bounds)) << seed;
            ASSERT_EQ(fast, slow) << seed;
            EXPECT_TRUE(left == 0 || c.count <= 1000);
        }
    }
}

TEST(Packing, ChoosesItsBoundAsAVisitOfEverySpaceDoes) {
    std::mt19937 random(5);
    for (unsigned int round = 0; round < 300; ++round) {
        const unsigned int step = 1 + round % 3 * 20; // how much longer each is than the next one
        Rects slow;
        for (auto longer = (1 + random() % 40) * step; longer > 0; longer -= step) {
            const int sides[2] = {static_cast<int>(longer),
                                  static_cast<int>(1 + random() % longer)};
            const bool isHigh = random() % 2;
            slow.emplace_back(0, 0, sides[isHigh], sides[!isHigh]);
        }
        for (bool powerOfTwo : {false, true}) {
            Rects fast(slow.rbegin(), slow.rend());
            ASSERT_EQ(pack(fast, powerOfTwo), packSlowly(slow, powerOfTwo)) << round;
            ASSERT_EQ(Rects(fast.rbegin(), fast.rend()), slow) << round;
        }
    }
}

TEST(Packing, EndsAtTheFirstThatDoesNotFit) {
    Rects rects = {{1, 1, 4, 4}, {2, 2, 8, 8}, {3, 3, 4, 4}};
    EXPECT_EQ(pack(rects, IntRange2d(0, 0, 8, 8)), 80);
    EXPECT_EQ(rects, (Rects{{0, 0, 4, 4}, {2, 2, 8, 8}, {3, 3, 4, 4}}));
    Rects huge = {{0, 0, 1 << 16, 1 << 16}, {0, 0, 3, 5}};
    EXPECT_EQ(pack(huge, IntRange2d(0, 0, 8, 8)), 15) << "areas are summed in 32 bits";
}

TEST(Packing, ChoosesSmallBounds) {
    struct Case {
        Rects rects;
        IntRange2d square, powerOfTwo;
    };
    const Case cases[] = {
        {{}, {}, {0, 0, 1, 1}},
        {{{0, 0, 5, 3}}, {0, 0, 5, 5}, {0, 0, 8, 4}},
        {{{0, 0, 0, 0}, {0, 0, 0, 0}}, {}, {0, 0, 1, 1}},
        // The first try is 100,000 by 2; from then on squares grow by the area that was left.
        {{{0, 0, 100000, 1}, {0, 0, 1, 2}}, {0, 0, 100000, 100000}, {0, 0, 131072, 2}},
    };
    for (const Case& c : cases) {
        Rects rects = c.rects;
        EXPECT_EQ(pack(rects, false), c.square);
        rects = c.rects;
        EXPECT_EQ(pack(rects, true), c.powerOfTwo);
    }
    Rects tooLarge = {{0, 0, 1 << 30, 1 << 30}, {0, 0, 1 << 30, 1 << 30}, {0, 0, 1 << 30, 1 << 30}};
    pack(tooLarge, true); // ends, with any result
    pack(tooLarge, false);
}

TEST(IntRange2d, TakesCoordinatesIn) {
    const IntRange2d range(0, 10, 0, 4); // y from 10 to 13
    for (int v = -30; v < 60; ++v) {
        EXPECT_EQ(range.contains(1, v), v >= 10 && v < 14);
        EXPECT_EQ(range.clamp(1, v), v < 10 ? 10 : v > 13 ? 13 : v);
        // Only values above, one period below, and whole periods below come in.
        EXPECT_EQ(range.wrap(1, v), v < 6 ? 10 + (v - 10) % 4 : 10 + (v - 6) % 4) << v;
    }
    EXPECT_EQ(range.wrap(1, 2147483647), 11);
    EXPECT_EQ(range.clamp(0, 0), -1) << "a size of 0";
    EXPECT_EQ(range.clamp(0, -5), 0);
}

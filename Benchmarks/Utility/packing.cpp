// SPDX-License-Identifier: MIT

// Packing rectangles of 4 to 64 by 4 to 64. pack: into a bound that holds all in any order; seek:
// into a bound of the packer's own choice; best: into the bound that seek has found, sorted as seek
// does it. The counter "fill" is the share of the square that is used.

#include "Base/Utility/zeUtilPacking.h"

#include "packingWorkload.h"

namespace {

using Rects = std::vector<zeUtil::IntRange2d>;

Rects randomRects(int n) {
    Rects rects;
    for (const auto& [width, height] : bench::rectSizes(n))
        rects.emplace_back(0, 0, width, height);
    return rects;
}

/// Sorted by one edge, no two rectangles next to each other may overlap in both dimensions.
void verify(Rects rects, int side) {
    std::sort(rects.begin(), rects.end(),
              [](auto& a, auto& b) { return a.origin[0] < b.origin[0]; });
    for (size_t i = 0; i < rects.size(); ++i) {
        const auto& a = rects[i];
        for (int dim : {0, 1})
            bench::require(a.origin[dim] >= 0 && a.origin[dim] + a.size[dim] <= side, "inside");
        for (size_t k = i + 1; k < rects.size() && a.contains(0, rects[k].origin[0]); ++k) {
            const auto& b = rects[k];
            bench::require(!a.contains(1, b.origin[1]) && !b.contains(1, a.origin[1]), "apart");
        }
    }
}

void pack(State& s, int n, bool intoBest) {
    Rects rects = randomRects(n);
    int side = bench::roomySide(n);
    if (intoBest) {
        Rects sought = rects;
        side = zeUtil::pack(sought, false).size[0];
    }
    Rects placed;
    for (auto _ : s) {
        placed = rects;
        if (intoBest) // the time of sorting belongs to it
            std::sort(placed.begin(), placed.end(), [](auto& a, auto& b) {
                return std::max(a.size[0], a.size[1]) > std::max(b.size[0], b.size[1]);
            });
        bench::keep(zeUtil::pack(placed, zeUtil::IntRange2d(0, 0, side, side)));
    }
    verify(placed, side);
    bench::items(s, size_t(n));
}

void seek(State& s, int n) {
    const Rects rects = randomRects(n);
    Rects placed;
    int side = 0;
    for (auto _ : s) {
        placed = rects;
        side = zeUtil::pack(placed, false).size[0];
    }
    verify(placed, side);
    double area = 0;
    for (const auto& rect : rects)
        area += double(rect.size[0]) * rect.size[1];
    s.counters["fill"] = area / (double(side) * side);
    bench::items(s, size_t(n));
}

const bool registered = [] {
    for (int n : {100, 1000, 10000, 100000, 1000000}) {
        const std::string size = "/" + std::to_string(n);
        bench::reg("pack/ours" + size, [n](State& s) { pack(s, n, false); });
        bench::reg("pack_seek/ours" + size, [n](State& s) { seek(s, n); });
        bench::reg("pack_best/ours" + size, [n](State& s) { pack(s, n, true); });
    }
    return true;
}();

} // namespace

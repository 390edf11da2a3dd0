// SPDX-License-Identifier: MIT

/// @file
/// The rectangles of packing.cpp and its peers.

#pragma once

#include <utility>

#include "Support/Workload.h"

namespace bench {

/// Widths and heights.
inline std::vector<std::pair<int, int>> rectSizes(int n) {
    Rng random(110);
    std::vector<std::pair<int, int>> sizes(static_cast<size_t>(n));
    for (auto& [width, height] : sizes) {
        width = 4 + int(random.below(61));
        height = 4 + int(random.below(61));
    }
    return sizes;
}

/// The side of a square that holds n of them in any order.
inline int roomySide(int n) {
    return n == 100 ? 512 : n == 1000 ? 1400 : int(41 * std::sqrt(double(n)));
}

} // namespace bench

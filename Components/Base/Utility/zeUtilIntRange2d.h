// SPDX-License-Identifier: MIT

/// @file
/// The integer rectangle: an origin and a size, in x (dimension 0) and y (dimension 1).
///
/// The far edges, `origin` + `size`, lie outside of the rectangle. Sizes are not negative, and the
/// far edges must be representable as int; nothing checks it.
///
/// Threads: as for any plain value, different objects may be used by different threads at once.
///
/// @code
/// zeUtil::IntRange2d range(10, 0, 4, 3);
/// assert(range.contains(0, 13) && !range.contains(0, 14));
/// assert(range.clamp(0, 99) == 13 && range.wrap(0, 15) == 11);
/// range.include(zeUtil::IntRange2d(2, 1, 1, 8));
/// assert(range == zeUtil::IntRange2d(2, 0, 12, 9));
/// @endcode

#pragma once

#include <algorithm>

namespace zeUtil {

/// An integer rectangle, all zero by default.
class IntRange2d {
public:
    int origin[2] = {0, 0}; ///< The corner with the smallest coordinates: x, y.
    int size[2] = {0, 0};   ///< Width, height.

    /// The rectangle without any area at 0, 0.
    constexpr IntRange2d() = default;

    /// A rectangle at `x`, `y`.
    constexpr IntRange2d(int x, int y, int width, int height) : origin{x, y}, size{width, height} {}

    /// Whether origins and sizes are equal.
    friend constexpr bool operator==(const IntRange2d&, const IntRange2d&) = default;

    /// Whether `v` lies between the edges in this dimension; the far edge is outside.
    constexpr bool contains(int dim, int v) const {
        return origin[dim] <= v && v < origin[dim] + size[dim];
    }

    /// The coordinate nearest to `v` that the rectangle contains. Where the size is 0 and `v` not
    /// below the origin, that is the origin less 1.
    constexpr int clamp(int dim, int v) const {
        return v < origin[dim] ? origin[dim] : std::min(v, origin[dim] + size[dim] - 1);
    }

    /// Takes `v` into the rectangle, which repeats without end in this dimension, if `v` lies above
    /// it, in the period just below it, or a whole number of periods below its origin. Other values
    /// give a coordinate less than one period below the origin. The size must not be 0.
    constexpr int wrap(int dim, int v) const {
        const long period = size[dim];
        const long distance = static_cast<long>(v) - origin[dim];
        return static_cast<int>(origin[dim] +
                                ((distance / period + 1) * period + distance) % period);
    }

    /// Grows this rectangle to the smallest one that holds both.
    constexpr void include(const IntRange2d& other) {
        for (int dim : {0, 1}) {
            const int far = std::max(origin[dim] + size[dim], other.origin[dim] + other.size[dim]);
            origin[dim] = std::min(origin[dim], other.origin[dim]);
            size[dim] = far - origin[dim];
        }
    }
};

} // namespace zeUtil

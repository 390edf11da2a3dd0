// SPDX-License-Identifier: MIT

/// @file
/// Packing rectangles into one rectangle without overlap, as texture atlases need it.
///
/// Each rectangle goes into the first free space that is large enough, which is then split: along
/// the dimension with more room to spare, or along y if there is the same, into a space of just the
/// rectangle's size in this dimension and the rest; and once more in the other dimension if there
/// is room to spare. What is left beside the rectangle stands before what is left by the first
/// split, in the place of the space that was used. Rectangles are never turned. The same input
/// always gives the same placement, except that pack() with a bound of its own choice puts
/// rectangles with equal longest edges in no fixed order.
///
/// Sizes must not be negative, and far edges of bounds must be representable as int.
///
/// Documentation/packing.md shows a picture of it.
///
/// Cost: about n log n for n rectangles; for more than some 100,000, whose widths are all
/// different, somewhat more. Nothing is reported but the result; running out of memory throws
/// std::bad_alloc and leaves some rectangles placed.
///
/// Threads: as for any plain value, but pack() with a bound of its own choice sorts on the pool of
/// zeUtil::ThreadPool, which only one thread may use at a time if an application has installed it.
///
/// @code
/// std::vector<zeUtil::IntRange2d> rects;
/// for (int side : {8, 4, 4, 2})
///     rects.emplace_back(0, 0, side, side);
/// const zeUtil::IntRange2d bound = zeUtil::pack(rects, true);
/// assert(bound == zeUtil::IntRange2d(0, 0, 16, 16));
/// assert(rects[0] == zeUtil::IntRange2d(0, 0, 8, 8)); // the longest edge goes first
///
/// assert(zeUtil::pack(rects, zeUtil::IntRange2d(0, 0, 8, 12)) == 4); // the area left over
/// @endcode

#pragma once

#include <vector>

#include "Base/Utility/zeUtilIntRange2d.h"
#include "Base/zeBaseExport.h"

namespace zeUtil {

/// Places the rectangles within `bounds`, in the order of the list, and writes their origins.
/// Stops at the first one that does not fit: it and all behind it keep their origins, even those
/// that would have fitted. Returns the sum of their areas (modulo 2^32): 0 if all were placed.
ZEBASE_API int pack(std::vector<IntRange2d>& rects, IntRange2d bounds);

/// Places the rectangles, those with the longest edge first, within a bound that grows from their
/// total area until everything fits, and writes their origins. Returns the bound, whose origin is
/// 0, 0. With `powerOfTwo` both sides are powers of two, 1 by 1 for an empty list; without, the
/// bound is the smallest square that holds the placement, all zero for an empty list. The result
/// must fit into sides of 2^30.
ZEBASE_API IntRange2d pack(std::vector<IntRange2d>& rects, bool powerOfTwo);

} // namespace zeUtil

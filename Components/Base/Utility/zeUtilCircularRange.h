// SPDX-License-Identifier: MIT

/// @file
/// Inclusive runs of integer positions on a ring, with their set operations.
///
/// A ring of size `n` has the positions 0 to `n` - 1, and 0 follows `n` - 1. A run goes from its
/// `start` to its `end`, both included:
///
/// | Form | Condition |
/// |---|---|
/// | empty | `start` and `end` are both -1 |
/// | linear | `start` <= `end` |
/// | wrapped | `start` > `end`: the run passes the end of the ring |
/// | full | `start` is 0 and `end` + 1 equals `size` |
///
/// Operations unroll the ring once into a line of twice its size. A wrapped run is one run there; a
/// linear one has two images, the low one and, `size` further, the high one. Both runs of an
/// operation should lie on rings of one size, with ends inside the ring; nothing checks it. A
/// result has the size of the run that it was made from, but for copies of a full run.
///
/// **Where results are not those of sets.** A run is one piece, and some operations look at one
/// pair of images only. Callers rely on these results:
/// - CircularRange::merge() of a wrapped run with another that reaches its start and overlaps its
///   end gives only that overlap: (6, 3) with (2, 7) on a ring of 8 gives (2, 3). Where the other
///   run just touches the end, the ring is closed, and the result is the full run.
/// - CircularRange::subtract() of a wrapped run that overlaps this one at both ends takes off only
///   one of the ends: (0, 5) less (4, 1) on a ring of 8 leaves (0, 3).
/// - CircularRange::contains() of a linear run is false for a wrapped one, even if the linear run
///   is full.
/// - CircularRange::intersect() has no answer, and gives the empty run, where two pieces remain;
///   also for two wrapped runs whose gaps touch, though one piece remains.
/// - The empty run counts as linear, and its high image is the position `size` - 1. So it overlaps
///   runs that hold this position, merges with their neighbours, and splits them on subtraction;
///   its second half is the full run. Test for it first where it may occur.
///
/// Threads: as for any plain value, different objects may be used by different threads at once.
///
/// @code
/// zeUtil::CircularRange run(6, 1, 8); // 6, 7, 0 and 1
/// assert(run.contains(7) && !run.contains(5) && run.distance(4) == 2);
/// assert(run.merge(zeUtil::CircularRange(2, 3, 8)));
/// assert(run == zeUtil::CircularRange(6, 3, 8));
///
/// zeUtil::CircularRange first, second; // empty: what is left empty was not needed
/// zeUtil::CircularRange(0, 7, 8).subtract(zeUtil::CircularRange(2, 3, 8), first, second);
/// assert(first == zeUtil::CircularRange(0, 1, 8) && second == zeUtil::CircularRange(4, 7, 8));
/// @endcode

#pragma once

#include <vector>

#include "Base/zeBaseExport.h"

namespace zeUtil {

/// A run of positions on a ring; empty by default. `size` must be at least 1 for every operation
/// that reduces positions to the ring, and twice `size` must be an int.
class ZEBASE_API CircularRange {
public:
    int start = -1; ///< The first position.
    int end = -1;   ///< The last position.
    int size = 0;   ///< The number of positions on the ring.

    /// The empty run, on no ring yet.
    constexpr CircularRange() = default;

    /// The run from `first` to `last` on a ring of `ringSize` positions.
    constexpr CircularRange(int first, int last, int ringSize)
        : start(first), end(last), size(ringSize) {}

    /// Whether all three fields are equal.
    friend constexpr bool operator==(const CircularRange&, const CircularRange&) = default;

    /// Whether the run holds `x`, a position of the ring, which is not reduced to it first.
    bool contains(int x) const;

    /// Steps from `x`, a position of the ring, to the nearest end of the run; 0 when contained.
    int distance(int x) const;

    /// Whether the runs have a position in common.
    bool overlaps(const CircularRange& other) const;

    /// Whether every position of `other` is in this run. False where `other` is wrapped and this
    /// run is linear, even full.
    bool contains(const CircularRange& other) const;

    /// Takes both ends modulo `size`, where the remainder of a negative position is negative or 0,
    /// and then turns a run that begins right behind its own end into the full form.
    void canonicalize();

    /// The first half of the run, the shorter one. Empty for a single position and for the empty
    /// run.
    CircularRange firstHalf() const;

    /// The rest. A single position is its own second half.
    CircularRange secondHalf() const;

    /// Makes this run the union if the two overlap or touch; else returns false and changes
    /// nothing.
    bool merge(const CircularRange& other);

    /// merge() on a line instead of a ring: the ends are plain numbers, and `size` is not used.
    bool mergeLinear(const CircularRange& other);

    /// Gives what remains of this run without `other`. Preset the outputs to the empty run: an
    /// output that gets no piece is left as it is.
    void subtract(const CircularRange& other, CircularRange& out1, CircularRange& out2) const;

    /// subtract() on a line. Pieces get the size of this run, and are reduced to it.
    void subtractLinear(const CircularRange& other, CircularRange& out1, CircularRange& out2) const;

    /// Makes this run the intersection; if that is not one run, the ends become -1 and the result
    /// is false.
    bool intersect(const CircularRange& other);

    /// intersect() on a line.
    bool intersectLinear(const CircularRange& other);
};

/// Adds a run to a list of runs, merged with those that it overlaps or touches, directly or through
/// others. The merged run stands last; the others keep their order.
ZEBASE_API void merge(std::vector<CircularRange>& list, const CircularRange& run);

/// Subtracts a run from each of a list. What remains of each stands in its place, up to two pieces.
ZEBASE_API void subtract(std::vector<CircularRange>& list, const CircularRange& run);

} // namespace zeUtil

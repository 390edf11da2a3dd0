// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilCircularRange.h"

#include <algorithm>
#include <cstddef>

namespace zeUtil {

namespace {

using Range = CircularRange;

bool isWrapped(const Range& run) {
    return run.start > run.end;
}

bool isFull(const Range& run) {
    return run.start == 0 && run.end + 1 == run.size;
}

/// A run on the line of twice the ring's size, which the empty run passes unchanged.
Range lifted(int start, int end, int ringSize) {
    Range lift(start, end, 2 * ringSize);
    if (start != -1 || end != -1)
        lift.canonicalize();
    return lift;
}

Range wrappedLift(const Range& run) {
    return lifted(run.start, run.end + run.size, run.size);
}

Range lowImage(const Range& run) {
    return lifted(run.start, run.end, run.size);
}

Range highImage(const Range& run) {
    return lifted(run.start + run.size, run.end + run.size, run.size);
}

/// What a run is on the line: its lift if it is wrapped, else both images, the low one first.
class Images {
public:
    explicit Images(const Range& run)
        : images_{isWrapped(run) ? wrappedLift(run) : lowImage(run), highImage(run)},
          end_(images_ + (isWrapped(run) ? 1 : 2)) {}
    Images(const Images&) = delete;
    Images& operator=(const Images&) = delete;

    const Range* begin() const { return images_; }
    const Range* end() const { return end_; }

private:
    Range images_[2];
    const Range* end_;
};

/// Whether `relation` holds for any pair of images, the low ones tried first.
template<class Relation>
bool anyPair(const Range& a, const Range& b, Relation relation) {
    const Images imagesOfB(b);
    for (const Range& imageOfA : Images(a)) {
        for (const Range& imageOfB : imagesOfB) {
            if (relation(imageOfA, imageOfB))
                return true;
        }
    }
    return false;
}

bool overlapOnLine(const Range& a, const Range& b) {
    return a.start <= b.end && b.start <= a.end;
}

bool isInsideOnLine(const Range& inner, const Range& outer) {
    return outer.start <= inner.start && inner.end <= outer.end;
}

/// `whole` without `part1`, and of that the first piece without `part2`.
void subtractBoth(const Range& whole, const Range& part1, const Range& part2, Range& out1,
                  Range& out2) {
    Range piece = out1; // stays as preset if nothing is left
    whole.subtractLinear(part1, piece, out2);
    if (overlapOnLine(piece, part2))
        piece.subtractLinear(part2, out1, out2);
    else
        out1 = piece;
}

Range canonical(int start, int end, int size) {
    Range run(start, end, size);
    run.canonicalize();
    return run;
}

/// The positions outside of a wrapped run.
Range gap(const Range& run) {
    return canonical(run.end + 1, run.start - 1, run.size);
}

/// For intersections without an answer.
bool makeEmpty(Range& run) {
    run.start = run.end = -1;
    return false;
}

/// Where the second half of a run begins, before it is taken to the ring. In 64 bits, as the sum
/// can be almost three times the size of the ring.
long middle(const Range& run) {
    return (long{run.start} + run.end + (isWrapped(run) ? run.size : 0) + 1) / 2;
}

/// A position of a wrapped run as one of the ring; that of a linear one is there already.
int onRing(long position, const Range& run) {
    return static_cast<int>(isWrapped(run) ? position % run.size : position);
}

} // namespace

bool CircularRange::contains(int x) const {
    if (!isWrapped(*this))
        return start <= x && x <= end;
    const Range lift = wrappedLift(*this);
    return (lift.start <= x && x <= lift.end) || (lift.start <= x + size && x + size <= lift.end);
}

int CircularRange::distance(int x) const {
    if (contains(x))
        return 0;
    if (isWrapped(*this))
        return std::min(x - end, start - x);
    if (x < start)
        return std::min(x + size - end, start - x);
    return std::min(x - end, start + size - x);
}

bool CircularRange::overlaps(const CircularRange& other) const {
    return anyPair(*this, other, overlapOnLine);
}

bool CircularRange::contains(const CircularRange& other) const {
    return anyPair(other, *this, isInsideOnLine);
}

void CircularRange::canonicalize() {
    start %= size;
    end %= size;
    if (start == end + 1) {
        start = 0;
        end = size - 1;
    }
}

CircularRange CircularRange::firstHalf() const {
    const int last = onRing(middle(*this) - 1, *this);
    if (start == end || (last == -1 && start == -1))
        return {-1, -1, size};
    return canonical(start, last, size);
}

CircularRange CircularRange::secondHalf() const {
    const int first = onRing(middle(*this), *this);
    if (first == -1 && end == -1)
        return {-1, -1, size};
    return canonical(first, end, size);
}

bool CircularRange::merge(const CircularRange& other) {
    if (isFull(*this))
        return true;
    if (isFull(other)) {
        *this = other;
        return true;
    }
    const auto mergeImages = [this](Range a, const Range& b) {
        if (!a.mergeLinear(b))
            return false;
        *this = canonical(a.start, a.end, size);
        return true;
    };
    // The lift of a wrapped run meets the images of the other run in turn. Two wrapped runs always
    // meet.
    const bool bothWrapped = isWrapped(*this) && isWrapped(other);
    const bool met =
        isWrapped(other) ? anyPair(other, *this, mergeImages) : anyPair(*this, other, mergeImages);
    return met || bothWrapped;
}

bool CircularRange::mergeLinear(const CircularRange& other) {
    if (end + 1 < other.start || other.end + 1 < start)
        return false;
    start = std::min(start, other.start);
    end = std::max(end, other.end);
    return true;
}

void CircularRange::subtract(const CircularRange& other, CircularRange& out1,
                             CircularRange& out2) const {
    const Range whole = *this; // an output may be this run or the other
    const Range part = other;
    if (!whole.overlaps(part)) {
        out1 = whole;
        return;
    }
    if (isFull(part))
        return;

    if (!isWrapped(whole) && !isWrapped(part)) {
        whole.subtractLinear(part, out1, out2);
    } else if (isWrapped(whole) && isWrapped(part)) {
        wrappedLift(whole).subtractLinear(wrappedLift(part), out1, out2);
    } else if (isWrapped(whole)) {
        const Range lift = wrappedLift(whole);
        if (overlapOnLine(lift, lowImage(part)))
            subtractBoth(lift, lowImage(part), highImage(part), out1, out2);
        else
            lift.subtractLinear(highImage(part), out1, out2);
    } else {
        const Range lift = wrappedLift(part);
        if (overlapOnLine(lowImage(whole), lift))
            subtractBoth(lowImage(whole), lift, lift, out1, out2);
        else
            highImage(whole).subtractLinear(lift, out1, out2);
    }
    for (Range* out : {&out1, &out2}) {
        if (out->start >= 0)
            *out = canonical(out->start, out->end, whole.size);
    }
}

void CircularRange::subtractLinear(const CircularRange& other, CircularRange& out1,
                                   CircularRange& out2) const {
    const Range whole = *this;
    const Range part = other;
    if (!overlapOnLine(whole, part)) {
        out1 = whole;
        return;
    }
    Range* out = &out1;
    if (part.start > whole.start) {
        *out = canonical(whole.start, part.start - 1, whole.size);
        out = &out2;
    }
    if (part.end < whole.end)
        *out = canonical(part.end + 1, whole.end, whole.size);
}

bool CircularRange::intersect(const CircularRange& other) {
    if (start < 0)
        return false;
    if (other.start < 0)
        return makeEmpty(*this);
    if (isFull(*this)) {
        *this = other;
        return true;
    }
    if (isFull(other))
        return true;
    if (!isWrapped(*this) && !isWrapped(other))
        return intersectLinear(other);
    if (isWrapped(*this) && isWrapped(other)) {
        if (!gap(*this).overlaps(gap(other)))
            return makeEmpty(*this); // two pieces are left, or one if the gaps touch
        start = std::max(start, other.start);
        end = std::min(end, other.end);
        return true;
    }
    const Range& linear = isWrapped(*this) ? other : *this;
    Range low = wrappedLift(isWrapped(*this) ? *this : other);
    Range high = low;
    const bool meetsLow = low.intersectLinear(lowImage(linear));
    const bool meetsHigh = high.intersectLinear(highImage(linear));
    if (meetsLow == meetsHigh)
        return makeEmpty(*this); // nothing is left, or two pieces
    const Range& met = meetsLow ? low : high;
    *this = canonical(met.start, met.end, size);
    return true;
}

bool CircularRange::intersectLinear(const CircularRange& other) {
    if (!overlapOnLine(*this, other))
        return makeEmpty(*this);
    start = std::max(start, other.start);
    end = std::min(end, other.end);
    return true;
}

void merge(std::vector<CircularRange>& list, const CircularRange& run) {
    CircularRange merged = run;
    for (std::size_t i = 0; i < list.size();) {
        if (!list[i].merge(merged)) {
            ++i;
            continue;
        }
        merged = list[i];
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(i));
        i = 0; // it may reach others now
    }
    list.push_back(merged);
}

void subtract(std::vector<CircularRange>& list, const CircularRange& run) {
    std::vector<CircularRange> rest;
    for (const CircularRange& element : list) {
        CircularRange out1;
        CircularRange out2;
        element.subtract(run, out1, out2);
        for (const CircularRange& out : {out1, out2}) {
            if (out.start >= 0)
                rest.push_back(out);
        }
    }
    list.swap(rest);
}

} // namespace zeUtil

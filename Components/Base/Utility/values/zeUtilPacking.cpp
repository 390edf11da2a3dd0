// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilPacking.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

#include "Base/Utility/zeUtilOrdering.h"
#include "Base/Utility/zeUtilPowerOfTwo.h"
#include "Base/Utility/zeUtilSMPSort.h"

namespace zeUtil {

namespace {

/// Sizes in one dimension that divide the rectangles into classes of about equal number, so that a
/// search can compare classes, which take a byte each, before it looks at a size.
class SizeClasses {
public:
    using Class = unsigned char;

    SizeClasses(const std::vector<IntRange2d>& rects, int dim, std::size_t mostClasses) {
        std::vector<int> sizes; // of a sample, which is all that a good division takes
        for (std::size_t i = 0; i < rects.size(); i += 1 + rects.size() / 512)
            sizes.push_back(rects[i].size[dim]);
        std::sort(sizes.begin(), sizes.end());
        sizes.erase(std::unique(sizes.begin(), sizes.end()), sizes.end());
        const std::size_t count = std::min(mostClasses, sizes.size());
        for (std::size_t i = 0; i < count; ++i)
            least_.push_back(sizes[i * sizes.size() / count]);
        for (const IntRange2d& rect : rects)
            least_[0] = std::min(least_[0], rect.size[dim]);
    }

    /// From 1 for the smallest rectangle; 0 for what is too small for any.
    Class classOf(int size) const {
        return static_cast<Class>(std::upper_bound(least_.begin(), least_.end(), size) -
                                  least_.begin());
    }

private:
    std::vector<int> least_; ///< The smallest size of each class.
};

/// The classes in both dimensions.
struct Classes {
    static constexpr std::size_t ofWidth = 64;
    static constexpr std::size_t ofHeight = 255;

    explicit Classes(const std::vector<IntRange2d>& rects)
        : widths(rects, 0, ofWidth), heights(rects, 1, ofHeight) {}

    SizeClasses widths, heights;
};

/// The free spaces of a bound, in the order in which they are offered to a rectangle.
///
/// They are the leaves of a balanced tree (the heights of siblings differ by at most 1), in which
/// each node knows the class of the tallest space under it for each class of widths. A search
/// passes by every subtree in which nothing is tall enough. Those that it enters in vain are too
/// small by less than a class, so that a search costs little more than the height of the tree.
class FreeSpaces {
public:
    FreeSpaces(const Classes& classes, const IntRange2d& bounds)
        : classes_(classes), root_(addLeaf(bounds)) {}

    /// Writes the origin of the first space that is large enough into `rect`, and leaves in its
    /// place what the rectangle leaves of it.
    bool place(IntRange2d& rect) {
        const Need need = {classes_.widths.classOf(rect.size[0]) - std::size_t{1},
                           classes_.heights.classOf(rect.size[1])};
        return root_ != none && take(root_, rect, need);
    }

private:
    using Link = int; ///< An index into nodes_.
    static constexpr Link none = -1;

    struct alignas(64) Node {
        /// The class of the tallest space that is at least as wide as each class; 0 for none.
        std::array<SizeClasses::Class, Classes::ofWidth> tallest;
        IntRange2d space; ///< Of a leaf.
        Link children[2]; ///< Of an inner node.
        int height;       ///< 0 for a leaf.
    };

    struct Need {
        std::size_t width; ///< An index into Node::tallest.
        SizeClasses::Class height;
    };

    bool take(Link& link, IntRange2d& rect, const Need& need) {
        const Node& node = nodes_[index(link)];
        if (node.tallest[need.width] < need.height)
            return false;
        if (node.height == 0) {
            if (node.space.size[0] < rect.size[0] || node.space.size[1] < rect.size[1])
                return false;
            link = split(link, rect);
            return true;
        }
        for (int side : {0, 1}) {
            Link child = nodes_[index(link)].children[side];
            if (take(child, rect, need)) {
                nodes_[index(link)].children[side] = child;
                link = restored(link);
                return true;
            }
        }
        return false;
    }

    /// Puts the rectangle into a leaf, and returns what stands in its place: nothing, a leaf, or a
    /// node with two.
    Link split(Link leaf, IntRange2d& rect) {
        IntRange2d space = nodes_[index(leaf)].space;
        unused_.push_back(leaf);
        std::copy_n(space.origin, 2, rect.origin);
        Link rest[2] = {none, none}; // that of the last split first
        while (space != rect) {
            const int spare[2] = {space.size[0] - rect.size[0], space.size[1] - rect.size[1]};
            const int dim = spare[0] > spare[1] ? 0 : 1;
            IntRange2d cutOff = space;
            cutOff.origin[dim] += rect.size[dim];
            cutOff.size[dim] = spare[dim];
            space.size[dim] = rect.size[dim];
            rest[1] = std::exchange(rest[0], addLeaf(cutOff));
        }
        return joined(rest[0], rest[1]);
    }

    /// A leaf for this space, or none if no rectangle can ever use it.
    Link addLeaf(const IntRange2d& space) {
        const SizeClasses::Class width = classes_.widths.classOf(space.size[0]);
        const SizeClasses::Class height = classes_.heights.classOf(space.size[1]);
        if (width == 0 || height == 0)
            return none;
        const Link leaf = newNode();
        Node& node = nodes_[index(leaf)];
        node.tallest.fill(0);
        std::fill_n(node.tallest.begin(), width, height);
        node.space = space;
        node.height = 0;
        return leaf;
    }

    Link joined(Link first, Link second) {
        if (first == none || second == none)
            return first == none ? second : first;
        const Link parent = newNode();
        nodes_[index(parent)].children[0] = first;
        nodes_[index(parent)].children[1] = second;
        update(parent);
        return parent;
    }

    /// What stands in the place of a node one of whose children has changed, and may be gone.
    Link restored(Link link) {
        const Node& node = nodes_[index(link)];
        for (int side : {0, 1}) {
            if (node.children[side] == none) {
                unused_.push_back(link);
                return node.children[1 - side];
            }
        }
        const int lean = heightOf(node.children[0]) - heightOf(node.children[1]);
        if (lean >= -1 && lean <= 1) {
            update(link);
            return link;
        }
        const int high = lean > 0 ? 0 : 1;
        const Link child = node.children[high];
        const Link* grandchildren = nodes_[index(child)].children;
        if (heightOf(grandchildren[1 - high]) > heightOf(grandchildren[high]))
            nodes_[index(link)].children[high] = raised(child, 1 - high);
        return raised(link, high);
    }

    /// Rotates a child of the node into its place.
    Link raised(Link link, int side) {
        const Link child = nodes_[index(link)].children[side];
        nodes_[index(link)].children[side] =
            std::exchange(nodes_[index(child)].children[1 - side], link);
        update(link);
        update(child);
        return child;
    }

    void update(Link link) {
        Node& node = nodes_[index(link)];
        const Node& first = nodes_[index(node.children[0])];
        const Node& second = nodes_[index(node.children[1])];
        for (std::size_t i = 0; i < Classes::ofWidth; ++i)
            node.tallest[i] = std::max(first.tallest[i], second.tallest[i]);
        node.height = 1 + std::max(first.height, second.height);
    }

    Link newNode() {
        if (unused_.empty()) {
            nodes_.emplace_back();
            return static_cast<Link>(nodes_.size() - 1);
        }
        const Link link = unused_.back();
        unused_.pop_back();
        return link;
    }

    int heightOf(Link link) const { return nodes_[index(link)].height; }

    static std::size_t index(Link link) { return static_cast<std::size_t>(link); }

    const Classes& classes_;
    std::vector<Node> nodes_;
    std::vector<Link> unused_; ///< Nodes to be used again.
    Link root_;
};

/// Places the rectangles in order; returns how many went in before the first that did not.
std::size_t placeInOrder(std::vector<IntRange2d>& rects, const Classes& classes,
                         const IntRange2d& bounds) {
    FreeSpaces spaces(classes, bounds);
    const auto failed = std::find_if(rects.begin(), rects.end(),
                                     [&](IntRange2d& rect) { return !spaces.place(rect); });
    return static_cast<std::size_t>(failed - rects.begin());
}

/// In 64 bits, in which the sum for any list that can be packed is exact.
unsigned long area(const IntRange2d& rect) {
    return static_cast<unsigned long>(rect.size[0]) * static_cast<unsigned long>(rect.size[1]);
}

template<class Iterator>
unsigned long totalArea(Iterator begin, Iterator end) {
    return std::accumulate(begin, end, 0ul, [](unsigned long sum, const IntRange2d& rect) {
        return sum + area(rect);
    });
}

int longestEdge(const IntRange2d& rect) {
    return std::max(rect.size[0], rect.size[1]);
}

int toInt(double n) {
    return static_cast<int>(std::min<double>(n, INT_MAX));
}

bool longestEdgeMetric(const IntRange2d& a, const IntRange2d& b) {
    return longestEdge(a) > longestEdge(b);
}

/// Makes `order` the indices of the rectangles, those with the longest edge first.
void sortByLongestEdge(Ordering& order, const std::vector<IntRange2d>& rects) {
    order.resize(rects.size());
    SMPSort(order.begin(), order.end(),
            Ordering::IndexedBinaryPredicate(rects.begin(), longestEdgeMetric));
}

/// The bound that is tried first: a square of the total area, or, where a rectangle is too long for
/// that, just as long and as wide as the area or the widest rectangle asks for.
IntRange2d firstBound(const std::vector<IntRange2d>& rects, unsigned long total, bool powerOfTwo) {
    const auto rounded = [powerOfTwo](int n) { return powerOfTwo ? ceilPowerOfTwo(n) : n; };
    int most[2] = {0, 0};
    for (const IntRange2d& rect : rects) {
        most[0] = std::max(most[0], rect.size[0]);
        most[1] = std::max(most[1], rect.size[1]);
    }
    const int side = toInt(std::sqrt(static_cast<double>(total)));
    if (most[0] < side && most[1] < side)
        return {0, 0, rounded(side), rounded(side)};

    most[0] = rounded(most[0]);
    most[1] = rounded(most[1]);
    const int longer = most[0] > most[1] ? 0 : 1;
    if (most[longer] > 0) {
        const unsigned long quotient = total / static_cast<unsigned long>(most[longer]);
        const int other = toInt(static_cast<double>(quotient));
        if (other > most[1 - longer])
            most[1 - longer] = rounded(other);
    }
    return {0, 0, most[0], most[1]};
}

/// The next bound to try, when `left` was the area that did not go in. False if there is none.
bool grow(IntRange2d& bound, unsigned long left, bool powerOfTwo) {
    constexpr int most = 1 << 30;
    if (powerOfTwo) {
        int& side = bound.size[bound.size[1] <= bound.size[0] ? 1 : 0];
        if (side > most / 2)
            return false;
        side *= 2;
        return true;
    }
    const int side = toInt(std::sqrt(static_cast<double>(left + area(bound))));
    if (side >= most)
        return false;
    bound.size[0] = bound.size[1] = side + 1;
    return true;
}

/// The bound into which all rectangles go, which are sorted by their longest edge.
IntRange2d packGrowing(std::vector<IntRange2d>& sorted, bool powerOfTwo) {
    const Classes classes(sorted);
    const unsigned long total = totalArea(sorted.begin(), sorted.end());
    IntRange2d bound = firstBound(sorted, total, powerOfTwo);
    for (;;) {
        // While even the first one is too long, there is no need to try.
        unsigned long left = total;
        if (longestEdge(sorted.front()) <= longestEdge(bound)) {
            const std::size_t placed = placeInOrder(sorted, classes, bound);
            left = totalArea(sorted.begin() + static_cast<std::ptrdiff_t>(placed), sorted.end());
        }
        if (left == 0 || !grow(bound, left, powerOfTwo))
            return bound;
    }
}

} // namespace

int pack(std::vector<IntRange2d>& rects, IntRange2d bounds) {
    if (rects.empty())
        return 0;
    const std::size_t placed = placeInOrder(rects, Classes(rects), bounds);
    const auto left = totalArea(rects.begin() + static_cast<std::ptrdiff_t>(placed), rects.end());
    return static_cast<int>(static_cast<unsigned int>(left));
}

IntRange2d pack(std::vector<IntRange2d>& rects, bool powerOfTwo) {
    if (rects.empty())
        return powerOfTwo ? IntRange2d(0, 0, 1, 1) : IntRange2d();
    Ordering order;
    sortByLongestEdge(order, rects);
    std::vector<IntRange2d> sorted;
    sorted.reserve(rects.size());
    for (int i : order)
        sorted.push_back(rects[static_cast<std::size_t>(i)]);
    const IntRange2d bound = packGrowing(sorted, powerOfTwo);
    const int* index = order.begin();
    for (const IntRange2d& rect : sorted)
        rects[static_cast<std::size_t>(*index++)] = rect;
    if (powerOfTwo)
        return bound;

    IntRange2d box = rects.front();
    for (const IntRange2d& rect : rects)
        box.include(rect);
    return {0, 0, longestEdge(box), longestEdge(box)};
}

} // namespace zeUtil

// SPDX-License-Identifier: MIT

#include <algorithm>
#include <utility>

#include "Base/Utility/zeUtilProgress.h"
#include "Base/Utility/zeUtilThreadedTaskQueue.h"

#include "occlusion/tree.h"

namespace occlusion {

using zeLinear::Point;
using zeLinear::Range3d;
using zeUtil::ThreadedTask;

namespace {

constexpr int leafSize = 4;        // triangles in each leaf but perhaps the last
constexpr int smallRange = 4096;   // built by one task: some milliseconds
constexpr int sliceSize = 1 << 15; // measured by one task

constexpr double margin = 1e-11; // as far as a triangle reaches beyond its edges, or more

int leafCount(int triangles) {
    return (triangles + leafSize - 1) / leafSize;
}

short longestAxis(const zeLinear::Vector& size) {
    if (size.x >= size.y && size.x >= size.z)
        return 0;
    return size.y >= size.z ? 1 : 2;
}

} // namespace

/// The steps of building, which know nothing of tasks, on ranges of triangles from `first` to
/// `last` - 1.
class TreeBuilder {
public:
    TreeBuilder(const Mesh& mesh, Tree& tree, zeUtil::Progress& progress)
        : mesh_(mesh), tree_(tree), progress_(progress) {
        items_.reserve(mesh.triangles.size());
        for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
            Range3d bounds(corner(i, 0), corner(i, 0));
            bounds.include(corner(i, 1));
            bounds.include(corner(i, 2));
            const zeLinear::Vector pad(margin, margin, margin);
            bounds = Range3d(bounds.low - pad, bounds.high + pad);
            items_.push_back({bounds, i});
        }
        tree.faces_.resize(items_.size());
        tree.nodes_.resize(static_cast<std::size_t>(2 * leafCount(size()) - 1));
    }

    int size() const { return static_cast<int>(items_.size()); }

    Range3d measure(int first, int last) const {
        Range3d bounds = items_[static_cast<std::size_t>(first)].bounds;
        for (int i = first + 1; i < last; ++i)
            bounds.include(items_[static_cast<std::size_t>(i)].bounds);
        return bounds;
    }

    /// The node of the upper part of a range. The lower part, which comes before, has full leaves
    /// only, and a node less above them than there are leaves.
    static int secondChild(int node, int first, int middle) {
        return node + 2 * leafCount(middle - first);
    }

    /// Makes the node of a range with more than a leaf, and moves the lower triangles to the front.
    /// Returns the first of the others.
    int split(int node, int first, int last, const Range3d& bounds) {
        const int middle = first + leafCount(last - first) / 2 * leafSize;
        const short axis = longestAxis(bounds.size());
        const auto key = [axis](const Item& item) { // twice the centre; no two keys are the same
            return std::pair((&item.bounds.low.x)[axis] + (&item.bounds.high.x)[axis],
                             item.triangle);
        };
        std::nth_element(items_.begin() + first, items_.begin() + middle, items_.begin() + last,
                         [&](const Item& a, const Item& b) { return key(a) < key(b); });
        nodeAt(node) = {bounds, secondChild(node, first, middle), 0, axis};
        return middle;
    }

    /// Builds all nodes of a range. The depth of the recursion is that of the tree.
    void build(int node, int first, int last) {
        const Range3d bounds = measure(first, last);
        if (last - first <= leafSize)
            return makeLeaf(node, first, last, bounds);
        const int middle = split(node, first, last, bounds);
        build(node + 1, first, middle);
        build(secondChild(node, first, middle), middle, last);
    }

    /// Counts triangles whose nodes are complete. On the thread that drives the queue.
    void reportDone(int count) {
        done_ += count;
        progress_.set(static_cast<double>(done_) / size());
    }

private:
    struct Item {
        Range3d bounds;
        std::size_t triangle;
    };

    const Point& corner(std::size_t triangle, std::size_t i) const {
        return mesh_.points[static_cast<std::size_t>(mesh_.triangles[triangle][i])];
    }

    Tree::Node& nodeAt(int node) { return tree_.nodes_[static_cast<std::size_t>(node)]; }

    void makeLeaf(int node, int first, int last, const Range3d& bounds) {
        nodeAt(node) = {bounds, first, static_cast<short>(last - first), 0};
        for (auto i = static_cast<std::size_t>(first); i < static_cast<std::size_t>(last); ++i) {
            const std::size_t triangle = items_[i].triangle;
            const Point& start = corner(triangle, 0);
            tree_.faces_[i] = {
                start, {corner(triangle, 1) - start, corner(triangle, 2) - start}, triangle};
        }
    }

    const Mesh& mesh_;
    Tree& tree_;
    zeUtil::Progress& progress_;
    std::vector<Item> items_;
    int done_ = 0;
};

namespace {

/// Measures a slice of a range.
class MeasureTask : public ThreadedTask {
public:
    MeasureTask(const TreeBuilder& builder, int first, int last, Range3d& result)
        : builder_(builder), first_(first), last_(last), result_(result) {}

    void execute(int) override { result_ = builder_.measure(first_, last_); }

private:
    const TreeBuilder& builder_;
    int first_;
    int last_;
    Range3d& result_;
};

/// Builds the nodes of a range: those of a small one itself, or else the topmost one.
class BuildTask : public ThreadedTask {
public:
    BuildTask(TreeBuilder& builder, int node, int first, int last)
        : builder_(builder), node_(node), first_(first), last_(last) {
        if (!isSmall())
            slices_.resize(static_cast<std::size_t>((last - first - 1) / sliceSize + 1));
    }

    /// Its nodes are complete, or the user has cancelled.
    ~BuildTask() override {
        if (isSmall())
            builder_.reportDone(last_ - first_);
    }

    /// Before the range is split, it is measured.
    ThreadedTask* preExecute(int index) override {
        const auto slice = static_cast<std::size_t>(index);
        if (slice >= slices_.size())
            return nullptr;
        const int first = first_ + index * sliceSize;
        return new MeasureTask(builder_, first, std::min(first + sliceSize, last_), slices_[slice]);
    }

    void execute(int) override {
        if (isSmall())
            return builder_.build(node_, first_, last_);
        Range3d bounds = slices_[0];
        for (const Range3d& slice : slices_)
            bounds.include(slice);
        middle_ = builder_.split(node_, first_, last_, bounds);
    }

    /// When it is split, its halves are built.
    ThreadedTask* postExecute(int index) override {
        if (isSmall() || index == 2)
            return nullptr;
        if (index == 0)
            return new BuildTask(builder_, node_ + 1, first_, middle_);
        return new BuildTask(builder_, TreeBuilder::secondChild(node_, first_, middle_), middle_,
                             last_);
    }

private:
    bool isSmall() const { return last_ - first_ <= smallRange; }

    TreeBuilder& builder_;
    int node_;
    int first_;
    int last_;
    int middle_ = 0;
    std::vector<Range3d> slices_; // bounds; of a large range only
};

} // namespace

Tree::Tree(const Mesh& mesh, zeUtil::Progress& progress) {
    TreeBuilder builder(mesh, *this, progress);
    zeUtil::ThreadedTaskQueue* const queue = zeUtil::ThreadedTaskQueue::get();
    queue->acquire();
    queue->setCancelObject(&progress);
    queue->submit(new BuildTask(builder, 0, 0, builder.size()));
    queue->release(); // waits
    if (progress.cancelled())
        throw Cancelled();
}

} // namespace occlusion

// SPDX-License-Identifier: MIT

/// @file
/// The machinery of the red-black tree, for keys and values of any type: ze::RBTreeImpl.
///
/// Include zeRBTree.h for this and the typed map.
///
/// @code
/// #include "Base/Utility/zeRBTreeMap.h"
/// using Types = ze::RBTreeTypes<int, void>; // a set
/// ze::RBTreeImpl set(Types::nodeSize);
/// set.initialize(&Types::typeUtil);
/// for (const int key : {2, 1, 2})
///     set.insertNodeUnique(&key);
/// assert(set.size() == 2 && Types::keyOf(set.begin()) == 1);
/// @endcode

#pragma once

#include <utility>

#include "Base/Utility/zeBlockAllocator.h"
#include "Base/zeBaseExport.h"

namespace ze {

/// A red-black tree of nodes whose types are known to a ze::RBTreeImpl::TypeUtil only.
///
/// It is compiled once for all types: it knows keys and values only through that table of
/// functions, which ze::RBTreeTypes makes for a given key, value and order. All key and value
/// pointers given must point to objects of the table's types.
///
/// The tree owns its nodes, which come from a ze::BlockAllocator of its own. A node, its key and
/// its value keep their address until that node is erased or the tree cleared. Erasing and
/// inserting leave pointers to other nodes valid. Searches and inserts cost O(log n) comparisons; a
/// step to a neighbour is O(1) amortised; clearing a tree of trivially destructible types costs one
/// free() for each block.
///
/// Threads: a tree belongs to one thread at a time; const operations may overlap each other.
class ZEBASE_API RBTreeImpl {
public:
    /// The colour of a node.
    enum Colour : int {
        red,   ///< Also the end's.
        black, ///< Every path down from a node passes as many of these.
    };

    /// The sides of a node, as an index into its children, so that a search chooses its next step
    /// without a branch, which the processor could not predict.
    enum Side : int {
        left, ///< Of lesser keys.
        right ///< Of greater keys, and of equal ones inserted later.
    };

    /// The head of a node; the key and the value follow at the offsets of the table. The end of a
    /// tree is a node without either.
    struct ZEBASE_API Node {
        /// The next node in order; after the last one, the end. Not for the end itself.
        Node* next() { return child[right] ? child[right]->outermost(left) : climb(right); }

        /// The previous node in order; before the first one, the end. Of the end, the last node.
        Node* prev() {
            if (isEnd())
                return child[right];
            return child[left] ? child[left]->outermost(right) : climb(left);
        }

        /// Exchanges the places of two nodes in their trees: links, colours and whatever links to
        /// them. Keys and values stay, so that the order is the caller's business.
        void swapHeaders(Node& other);

        Node* child[2]; ///< By side; null if there is none. The end's: the first and the last node.
        Node* parent;   ///< The root's is the end, the end's is the root.
        Colour colour;  ///< The end is red.

    private:
        friend class RBTreeImpl;

        bool isRoot() const { return parent->parent == this; }
        bool isEnd() const { return colour == red && (!parent || isRoot()); }

        Node* outermost(Side side) {
            Node* node = this;
            while (node->child[side])
                node = node->child[side];
            return node;
        }
        // From here up past every link of that side; the end if this is the outermost node.
        Node* climb(Side side) {
            Node* node = this;
            while (!node->isRoot() && node == node->parent->child[side])
                node = node->parent;
            return node->parent;
        }
        ZEBASE_HIDDEN Node*& linkToThis();
        ZEBASE_HIDDEN Node* endIfOutermost(Side side);
    };

    /// The operations on a tree's key and value types.
    struct TypeUtil {
        int keyOffset;   ///< Where a node's key lies.
        int valueOffset; ///< Where a node's value lies.
        /// Whether the first key comes before the second.
        bool (*less)(const void* key, const void* otherKey);
        void (*copyKey)(void* to, const void* key); ///< Constructs a key in a node.
        /// Constructs a value in a node that has its key. If it throws, it first destroys the key.
        /// Null: the default value is made instead.
        void (*copyValue)(void* to, const void* value);
        /// The same with a default value. Null: nothing is made.
        void (*defaultValue)(void* to);
        /// Destroys the keys and values of a subtree, without following links out of it. The tree
        /// frees the storage.
        void (*destroyAll)(RBTreeImpl* tree, Node* root);
        /// The first node whose key is not less, or the end.
        Node* (*lowerBound)(const RBTreeImpl* tree, const void* key);
        /// The first node whose key is greater, or the end.
        Node* (*upperBound)(const RBTreeImpl* tree, const void* key);
        /// The node below which a new key belongs, behind any equal ones, and whether on its left;
        /// the end, on its left, if the tree is empty.
        bool (*findInsertPosition)(const RBTreeImpl* tree, const void* key, Node** position);
    };

    /// An empty tree of nodes of `nodeSize` bytes, which must hold what the table puts there. It
    /// must be initialised before it is used.
    explicit RBTreeImpl(unsigned long nodeSize);
    RBTreeImpl(const RBTreeImpl&) = delete; ///< Use initialize().
    RBTreeImpl& operator=(const RBTreeImpl&) = delete;
    ~RBTreeImpl();

    /// Empties the tree and sets its table, which must outlive it.
    void initialize(const TypeUtil* typeUtil);

    /// Makes the tree a copy of `other`, table included, whose nodes must have the same size. Does
    /// nothing if given the tree itself.
    void initialize(const RBTreeImpl& other);

    /// Exchanges two trees; nodes keep their addresses.
    void swap(RBTreeImpl& other) noexcept;

    /// Inserts a copy of each element of `other`, a tree of the same types, beside those that are
    /// here. Equal keys are all kept. Does nothing if given the tree itself.
    void copy(const RBTreeImpl& other);

    /// @{
    /// Destroys all keys and values and frees all nodes.
    void clear();
    void destructAllNodes();
    /// @}

    /// Sets how many nodes are allocated at once. Ignored once a node was, until the tree is
    /// cleared.
    void setNumElementsInBlock(int elementsInBlock);

    /// The number of elements.
    int size() const { return count_; }

    /// The first node; the end if the tree is empty.
    Node* begin() const { return end_.child[left]; }

    /// The end node, behind the last. It lasts as long as the tree and has no key and no value.
    Node* end() const { return const_cast<Node*>(&end_); }

    /// The root, or null.
    Node* root() const { return end_.parent; }

    /// The key of a node other than the end.
    const void* keyOf(const Node* node) const {
        return reinterpret_cast<const char*>(node) + typeUtil_->keyOffset;
    }
    /// The value of a node other than the end.
    void* valueOf(Node* node) const {
        return reinterpret_cast<char*>(node) + typeUtil_->valueOffset;
    }

    /// The first node with that key, or the end.
    Node* findNode(const void* key) const {
        Node* node = lowerBound(key);
        return node == end() || typeUtil_->less(key, keyOf(node)) ? end() : node;
    }

    /// The number of elements with that key.
    int count(const void* key) const;

    /// The first node whose key is not less than the given one, or the end.
    Node* lowerBound(const void* key) const { return typeUtil_->lowerBound(this, key); }

    /// The first node whose key is greater than the given one, or the end.
    Node* upperBound(const void* key) const { return typeUtil_->upperBound(this, key); }

    /// The lower and the upper bound.
    std::pair<Node*, Node*> equalRange(const void* key) const;

    /// The value of the first element with that key, or null.
    void* getValuePtr(const void* key) const;

    /// Erases one element of this tree.
    void eraseNode(Node* node);

    /// Erases from `first` up to but without `last`.
    void eraseNodesRange(Node* first, Node* last);

    /// Erases every element with that key, which may lie in the tree; returns how many.
    int eraseNodesMatching(const void* key);

    /// Inserts a copy of the key, with a default value, unless the key is there; returns the node
    /// that has it. If a copy throws, the tree is as it was, here and in all that follow.
    Node* insertNodeUnique(const void* key);

    /// The same with a copy of the value. A value that is there already is left alone.
    Node* insertNodeUnique(const void* key, const void* value);

    /// @{
    /// The same, in O(1) if the key belongs directly before `hint`, a node or the end.
    Node* insertNodeUnique(Node* hint, const void* key);
    Node* insertNodeUnique(Node* hint, const void* key, const void* value);
    /// @}

    /// @{
    /// Inserts a copy of the key, behind equal ones, with a default value or a copy of the given
    /// one; returns the new node. A hint never changes the outcome, only the cost.
    Node* insertNodeNonUnique(const void* key);
    Node* insertNodeNonUnique(const void* key, const void* value);
    Node* insertNodeNonUnique(Node* hint, const void* key);
    Node* insertNodeNonUnique(Node* hint, const void* key, const void* value);
    /// @}

private:
    struct Position { // where to hang a new node
        Node* parent;
        Side side;
    };

    ZEBASE_HIDDEN void reset();
    ZEBASE_HIDDEN void reseatEnd();
    ZEBASE_HIDDEN Position position(const void* key) const;
    ZEBASE_HIDDEN Position position(Node* hint, const void* key) const;
    ZEBASE_HIDDEN Node* insertUnlessThere(const Position& where, const void* key,
                                          const void* value);
    ZEBASE_HIDDEN Node* insertAt(const Position& where, const void* key, const void* value);
    ZEBASE_HIDDEN Node* makeNode(const void* key, const void* value);
    ZEBASE_HIDDEN void link(Node* node, const Position& where);
    ZEBASE_HIDDEN void unlink(Node* node);
    ZEBASE_HIDDEN void restoreAfterInsert(Node* node);
    ZEBASE_HIDDEN void restoreAfterErase(Node* node, Node* parent);
    ZEBASE_HIDDEN static void rotate(Node* node, Side side);

    // An empty tree's leftmost and rightmost are the end itself, its root is null. The end is red,
    // and its parent's parent is itself: so prev() distinguishes it from the root, which is black.
    Node end_; // leftmost, rightmost, root and colour; the address is that of the tree
    int count_ = 0;
    const TypeUtil* typeUtil_ = nullptr;
    BlockAllocator allocator_;
};

} // namespace ze

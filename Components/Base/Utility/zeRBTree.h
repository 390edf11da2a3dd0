// SPDX-License-Identifier: MIT

/// @file
/// The red-black tree under associative containers.
///
/// ze::RBTreeMap is the typed front end and what applications use. ze::RBTreeImpl is the machinery,
/// compiled once for all types: it knows keys and values only through a table of functions, which
/// ze::RBTreeTypes fills in for a given key, value and order. The searches of that table are
/// compiled for the key type, so that no comparison of a descent is an indirect call.
///
/// Nodes come from a ze::BlockAllocator of the tree's own. A node, its key and its value keep their
/// address until that node is erased or the tree cleared. Erasing and inserting leave pointers to
/// other nodes valid. Searches and inserts cost O(log n) comparisons; a step to a neighbour is O(1)
/// amortised; clearing a tree of trivially destructible types costs one free() for each block.
///
/// A tree belongs to one thread at a time; const operations may overlap each other.
///
/// @code
/// ze::RBTreeMap<int, double> tree;
/// tree.insert(2, 0.5);
/// tree.insert(1, 0.25);
/// tree[3] = 0.75;
/// double sum = 0;
/// for (const auto& entry : tree) // in the order of the keys
///     sum += entry.key() * entry.value();
/// assert(sum == 3.5 && tree.size() == 3);
/// assert(!tree.insert(1, 9.0).second && *tree.getValuePtr(1) == 0.25);
/// @endcode

#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "Base/Utility/zeBlockAllocator.h"
#include "Base/zeBaseExport.h"

namespace ze {

/// A red-black tree of nodes whose types are known to a ze::RBTreeImpl::TypeUtil only. It owns its
/// nodes. All key and value pointers given must point to objects of the table's types.
class ZEBASE_API RBTreeImpl {
public:
    /// The colour of a node.
    enum Colour : int { red, black };

    /// The sides of a node, as an index into its children: a search takes its next step without a
    /// branch that the processor would have to guess.
    enum Side : int { left, right };

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
        /// The end is red.
        Colour colour;

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
        Node*& linkToThis();
        Node* endIfOutermost(Side side);
    };

    /// What a tree knows of its key and value types.
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
        /// Destroys the keys and values of a subtree, without a look at its links to elsewhere; the
        /// storage is left to the tree.
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
    RBTreeImpl(const RBTreeImpl&) = delete; // initialize() copies
    RBTreeImpl& operator=(const RBTreeImpl&) = delete;
    ~RBTreeImpl();

    /// Empties the tree and sets its table, which must outlive it.
    void initialize(const TypeUtil* typeUtil);

    /// Makes the tree a copy of `other`, table included, whose nodes must have the same size. Does
    /// nothing if given the tree itself.
    void initialize(const RBTreeImpl& other);

    /// Exchanges two trees; nodes keep their addresses.
    void swap(RBTreeImpl& other);

    /// Inserts a copy of each element of `other`, a tree of the same types, beside those that are
    /// here. Equal keys are all kept. Does nothing if given the tree itself.
    void copy(const RBTreeImpl& other);

    /// Destroys all keys and values and frees all nodes.
    void clear();

    /// The same as clear().
    void destructAllNodes();

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

    /// Key and value of a node other than the end.
    const void* keyOf(const Node* node) const {
        return reinterpret_cast<const char*>(node) + typeUtil_->keyOffset;
    }
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

    /// The first node whose key is not less than, or greater than, the given one; else the end.
    Node* lowerBound(const void* key) const { return typeUtil_->lowerBound(this, key); }
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

    /// The same, in O(1) if the key belongs directly before `hint`, a node or the end.
    Node* insertNodeUnique(Node* hint, const void* key);
    Node* insertNodeUnique(Node* hint, const void* key, const void* value);

    /// Inserts a copy of the key, behind equal ones, with a default value or a copy of the given
    /// one; returns the new node. A hint never changes the outcome, only the cost.
    Node* insertNodeNonUnique(const void* key);
    Node* insertNodeNonUnique(const void* key, const void* value);
    Node* insertNodeNonUnique(Node* hint, const void* key);
    Node* insertNodeNonUnique(Node* hint, const void* key, const void* value);

private:
    struct Position { // where to hang a new node
        Node* parent;
        Side side;
    };

    void reset();
    void reseatEnd();
    Position position(const void* key) const;
    Position position(Node* hint, const void* key) const;
    Node* insertUnlessThere(const Position& where, const void* key, const void* value);
    Node* insertAt(const Position& where, const void* key, const void* value);
    Node* makeNode(const void* key, const void* value);
    void link(Node* node, const Position& where);
    void unlink(Node* node);
    void restoreAfterInsert(Node* node);
    void restoreAfterErase(Node* node, Node* parent);
    static void rotate(Node* node, Side side);

    // An empty tree's leftmost and rightmost are the end itself, its root is null. The end is red,
    // and its parent's parent is itself: so prev() tells it from the root, which is black.
    Node end_; // leftmost, rightmost, root and colour; the address is that of the tree
    int count_ = 0;
    const TypeUtil* typeUtil_ = nullptr;
    BlockAllocator allocator_;
};

/// The table of a tree of keys of type `Key`, ordered by `Less` (stateless), with values of type
/// `Value`, which is void for a set. Keys must be copyable. Values that cannot be copied or that
/// have no default leave that entry null: without a default, every insert gives a value.
template<class Key, class Value, class Less = std::less<Key>>
class RBTreeTypes {
    using Node = RBTreeImpl::Node;
    static constexpr bool hasValue = !std::is_void_v<Value>;
    struct Nothing {};
    using Stored = std::conditional_t<hasValue, Value, Nothing>;

    static constexpr std::size_t roundUp(std::size_t size, std::size_t unit) {
        return (size + unit - 1) / unit * unit;
    }
    // The key may begin in the padding behind the colour.
    static constexpr std::size_t headSize = offsetof(Node, colour) + sizeof(Node::colour);
    static constexpr std::size_t keyOffset = roundUp(headSize, alignof(Key));
    static constexpr std::size_t keyEnd = keyOffset + sizeof(Key);
    static constexpr std::size_t valueOffset = roundUp(keyEnd, alignof(Stored));
    static constexpr std::size_t valueEnd = hasValue ? valueOffset + sizeof(Stored) : keyEnd;
    static constexpr std::size_t alignment =
        std::max({alignof(Node), alignof(Key), alignof(Stored)});
    static_assert(alignment <= 16, "nodes are aligned to 16 at most");

public:
    /// The bytes of a node, for the constructor of ze::RBTreeImpl.
    static constexpr unsigned long nodeSize = roundUp(std::max(valueEnd, sizeof(Node)), alignment);

    /// Key and value of a node other than the end.
    static Key& keyOf(const Node* node) {
        return *std::launder(
            reinterpret_cast<Key*>(reinterpret_cast<char*>(const_cast<Node*>(node)) + keyOffset));
    }
    static Stored& valueOf(const Node* node) {
        return *std::launder(reinterpret_cast<Stored*>(
            reinterpret_cast<char*>(const_cast<Node*>(node)) + valueOffset));
    }

private:
    static const Key& key(const void* p) { return *static_cast<const Key*>(p); }

    static bool less(const void* a, const void* b) { return Less()(key(a), key(b)); }
    static void copyKey(void* to, const void* from) { ::new (to) Key(key(from)); }

    // The value is made last: if that fails, the key beside it has to go.
    template<class... Arguments>
    static void makeValue(void* to, const Arguments&... arguments) {
        struct KeyGuard {
            void* value;
            bool done = false;
            ~KeyGuard() {
                if (!done)
                    keyOf(reinterpret_cast<Node*>(static_cast<char*>(value) - valueOffset)).~Key();
            }
        } guard{to};
        ::new (to) Stored(arguments...);
        guard.done = true;
    }
    static void copyValue(void* to, const void* from) {
        makeValue(to, *static_cast<const Stored*>(from));
    }
    static void defaultValue(void* to) { makeValue(to); }

    static void destroyAll(RBTreeImpl* tree, Node* root) {
        if constexpr (!std::is_trivially_destructible_v<Key> ||
                      !std::is_trivially_destructible_v<Stored>) {
            while (root) { // a step down on one side, a call on the other: depth O(log n)
                destroyAll(tree, root->child[RBTreeImpl::right]);
                Node* left = root->child[RBTreeImpl::left];
                std::destroy_at(&keyOf(root));
                if constexpr (hasValue)
                    std::destroy_at(&valueOf(root));
                root = left;
            }
        }
    }

    // One of the two comes next: fetching both hides most of the wait for memory in a large tree,
    // where comparisons are cheap and hardly a guess of the processor is right.
    static void prefetchChildren(const Node* node) {
        __builtin_prefetch(node->child[RBTreeImpl::left]);
        __builtin_prefetch(node->child[RBTreeImpl::right]);
    }

    static Node* lowerBound(const RBTreeImpl* tree, const void* keyPointer) {
        const Key& wanted = key(keyPointer);
        Node* bound = tree->end();
        for (Node* node = tree->root(); node;) {
            prefetchChildren(node);
            const bool right = Less()(keyOf(node), wanted);
            bound = right ? bound : node;
            node = node->child[right];
        }
        return bound;
    }
    static Node* upperBound(const RBTreeImpl* tree, const void* keyPointer) {
        const Key& wanted = key(keyPointer);
        Node* bound = tree->end();
        for (Node* node = tree->root(); node;) {
            prefetchChildren(node);
            const bool right = !Less()(wanted, keyOf(node));
            bound = right ? bound : node;
            node = node->child[right];
        }
        return bound;
    }
    static bool findInsertPosition(const RBTreeImpl* tree, const void* keyPointer,
                                   Node** position) {
        const Key& wanted = key(keyPointer);
        Node* found = tree->end();
        bool right = false;
        for (Node* node = tree->root(); node;) {
            prefetchChildren(node);
            found = node;
            right = !Less()(wanted, keyOf(node));
            node = node->child[right];
        }
        *position = found;
        return !right;
    }

public:
    /// The table that ze::RBTreeImpl takes.
    static constexpr RBTreeImpl::TypeUtil typeUtil = [] {
        RBTreeImpl::TypeUtil util{};
        util.keyOffset = static_cast<int>(keyOffset);
        util.valueOffset = static_cast<int>(valueOffset);
        util.less = less;
        util.copyKey = copyKey;
        if constexpr (hasValue && std::is_copy_constructible_v<Stored>)
            util.copyValue = copyValue;
        if constexpr (hasValue && std::is_default_constructible_v<Stored>)
            util.defaultValue = defaultValue;
        util.destroyAll = destroyAll;
        util.lowerBound = lowerBound;
        util.upperBound = upperBound;
        util.findInsertPosition = findInsertPosition;
        return util;
    }();
};

/// An ordered map over ze::RBTreeImpl, with unique or repeated keys as the caller inserts them.
/// Copies are deep; a moved-from map is empty. Iterators are valid until their element goes.
template<class Key, class Value, class Less = std::less<Key>>
class RBTreeMap {
    using Types = RBTreeTypes<Key, Value, Less>;
    using Node = RBTreeImpl::Node;
    static_assert(std::is_copy_constructible_v<Value> && std::is_default_constructible_v<Value>);

    /// An element in place: what an iterator points at. `V` is the value type, perhaps const.
    template<class V>
    class BasicEntry {
    public:
        const Key& key() const { return Types::keyOf(node_); }
        V& value() const { return Types::valueOf(node_); }
        const BasicEntry* operator->() const { return this; }

    private:
        friend class RBTreeMap;
        explicit BasicEntry(Node* node) : node_(node) {}
        Node* node_;
    };

    template<class V>
    class BasicIterator {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = BasicEntry<V>;
        using difference_type = std::ptrdiff_t;
        using pointer = value_type;
        using reference = value_type;

        BasicIterator() = default;
        reference operator*() const { return value_type(node_); }
        pointer operator->() const { return value_type(node_); }
        BasicIterator& operator++() { return *this = BasicIterator(node_->next()); }
        BasicIterator& operator--() { return *this = BasicIterator(node_->prev()); }
        BasicIterator operator++(int) { return BasicIterator(std::exchange(node_, node_->next())); }
        BasicIterator operator--(int) { return BasicIterator(std::exchange(node_, node_->prev())); }
        bool operator==(const BasicIterator& other) const = default;
        operator BasicIterator<const V>() const { return BasicIterator<const V>(node_); }

    private:
        friend class RBTreeMap;
        template<class W>
        friend class BasicIterator;
        explicit BasicIterator(Node* node) : node_(node) {}
        Node* node_ = nullptr;
    };

public:
    using Entry = BasicEntry<Value>;
    using Iterator = BasicIterator<Value>;
    using ConstIterator = BasicIterator<const Value>;

    RBTreeMap() : tree_(Types::nodeSize) { tree_.initialize(&Types::typeUtil); }
    RBTreeMap(const RBTreeMap& other) : RBTreeMap() { tree_.copy(other.tree_); }
    RBTreeMap(RBTreeMap&& other) noexcept : RBTreeMap() { swap(other); }
    RBTreeMap& operator=(RBTreeMap other) {
        swap(other);
        return *this;
    }
    void swap(RBTreeMap& other) { tree_.swap(other.tree_); }

    int size() const { return tree_.size(); }
    bool empty() const { return tree_.size() == 0; }
    void clear() { tree_.clear(); }

    /// Sets how many elements are allocated at once. Ignored once there are any.
    void setNumElementsInBlock(int elementsInBlock) {
        tree_.setNumElementsInBlock(elementsInBlock);
    }

    Iterator begin() { return Iterator(tree_.begin()); }
    Iterator end() { return Iterator(tree_.end()); }
    ConstIterator begin() const { return ConstIterator(tree_.begin()); }
    ConstIterator end() const { return ConstIterator(tree_.end()); }

    /// The first element with that key, or the end.
    Iterator find(const Key& key) { return Iterator(tree_.findNode(&key)); }
    ConstIterator find(const Key& key) const { return ConstIterator(tree_.findNode(&key)); }
    Iterator lowerBound(const Key& key) { return Iterator(tree_.lowerBound(&key)); }
    ConstIterator lowerBound(const Key& key) const { return ConstIterator(tree_.lowerBound(&key)); }
    Iterator upperBound(const Key& key) { return Iterator(tree_.upperBound(&key)); }
    ConstIterator upperBound(const Key& key) const { return ConstIterator(tree_.upperBound(&key)); }
    int count(const Key& key) const { return tree_.count(&key); }

    /// The value of the first element with that key, or null.
    Value* getValuePtr(const Key& key) { return static_cast<Value*>(tree_.getValuePtr(&key)); }
    const Value* getValuePtr(const Key& key) const {
        return static_cast<const Value*>(tree_.getValuePtr(&key));
    }

    /// The value of that key, made by default if the key is new.
    Value& operator[](const Key& key) { return Types::valueOf(tree_.insertNodeUnique(&key)); }

    /// Inserts unless the key is there; returns the element that has it, and whether it is new.
    std::pair<Iterator, bool> insert(const Key& key, const Value& value) {
        const int before = tree_.size();
        const Iterator place(tree_.insertNodeUnique(&key, &value));
        return {place, tree_.size() != before};
    }

    /// Inserts behind any elements with the same key.
    Iterator insertNonUnique(const Key& key, const Value& value) {
        return Iterator(tree_.insertNodeNonUnique(&key, &value));
    }

    /// Erases one element and returns the next.
    Iterator erase(Iterator position) {
        const Iterator next = std::next(position);
        tree_.eraseNode(position.node_);
        return next;
    }

    /// Erases every element with that key; returns how many.
    int erase(const Key& key) { return tree_.eraseNodesMatching(&key); }

private:
    RBTreeImpl tree_;
};

} // namespace ze

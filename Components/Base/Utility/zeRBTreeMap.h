// SPDX-License-Identifier: MIT

/// @file
/// The typed front end of the red-black tree: ze::RBTreeMap, an ordered map.

#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>

#include "Base/Utility/zeRBTreeCore.h"

namespace ze {

/// The order of keys by `<`; that of pointers is by address.
template<class Key>
struct RBTreeLess {
    /// Whether `a` comes before `b`.
    constexpr bool operator()(const Key& a, const Key& b) const {
        if constexpr (std::is_pointer_v<Key>)
            return reinterpret_cast<std::uintptr_t>(a) < reinterpret_cast<std::uintptr_t>(b);
        else
            return a < b;
    }
};

/// The table of a tree of keys of type `Key`, ordered by `Less` (stateless), with values of type
/// `Value`, which is void for a set. Keys must be copyable. Values that cannot be copied or that
/// have no default leave that entry null: without a default, every insert gives a value.
template<class Key, class Value, class Less = RBTreeLess<Key>>
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
    static constexpr std::size_t greater(std::size_t a, std::size_t b) { return a < b ? b : a; }
    static constexpr std::size_t alignment =
        greater(alignof(Node), greater(alignof(Key), alignof(Stored)));
    static_assert(alignment <= 16, "nodes are aligned to 16 at most");

public:
    /// The bytes of a node, for the constructor of ze::RBTreeImpl.
    static constexpr unsigned long nodeSize = roundUp(greater(valueEnd, sizeof(Node)), alignment);

    /// The key of a node other than the end.
    static Key& keyOf(const Node* node) {
        return *std::launder(
            reinterpret_cast<Key*>(reinterpret_cast<char*>(const_cast<Node*>(node)) + keyOffset));
    }
    /// The value of a node other than the end.
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
                keyOf(root).~Key();
                if constexpr (hasValue)
                    valueOf(root).~Stored();
                root = left;
            }
        }
    }

    // One of the two comes next: fetching both hides most of the wait for memory in a large tree,
    // where comparisons are cheap and branches are mispredicted half of the time.
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
///
/// A value: copies are deep; a moved-from map is empty. Elements keep their address, and iterators
/// stay valid, until their element is erased. The searches are compiled for the key type, so that
/// no comparison of a descent is an indirect call. If a copy of a key or value throws, the map is
/// as it was.
///
/// Threads: a map belongs to one thread at a time; const operations may overlap each other.
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
template<class Key, class Value, class Less = RBTreeLess<Key>>
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
    using Entry = BasicEntry<Value>;                  ///< An element in place.
    using Iterator = BasicIterator<Value>;            ///< Bidirectional; gives an Entry.
    using ConstIterator = BasicIterator<const Value>; ///< The same, for reading.

    /// An empty map.
    RBTreeMap() : tree_(Types::nodeSize) { tree_.initialize(&Types::typeUtil); }
    /// A copy of every element.
    RBTreeMap(const RBTreeMap& other) : RBTreeMap() { tree_.copy(other.tree_); }
    /// Takes the elements over; they keep their addresses.
    RBTreeMap(RBTreeMap&& other) noexcept : RBTreeMap() { swap(other); }
    /// Replaces the content.
    RBTreeMap& operator=(RBTreeMap other) {
        swap(other);
        return *this;
    }
    /// Exchanges the contents; elements keep their addresses.
    void swap(RBTreeMap& other) { tree_.swap(other.tree_); }

    /// The number of elements.
    int size() const { return tree_.size(); }
    /// Whether there is no element.
    bool empty() const { return tree_.size() == 0; }
    /// Erases every element.
    void clear() { tree_.clear(); }

    /// Sets how many elements are allocated at once. Ignored once there are any.
    void setNumElementsInBlock(int elementsInBlock) {
        tree_.setNumElementsInBlock(elementsInBlock);
    }

    /// @{
    /// The first element, or the end.
    Iterator begin() { return Iterator(tree_.begin()); }
    ConstIterator begin() const { return ConstIterator(tree_.begin()); }
    /// @}

    /// @{
    /// The place behind the last element.
    Iterator end() { return Iterator(tree_.end()); }
    ConstIterator end() const { return ConstIterator(tree_.end()); }
    /// @}

    /// @{
    /// The first element with that key, or the end.
    Iterator find(const Key& key) { return Iterator(tree_.findNode(&key)); }
    ConstIterator find(const Key& key) const { return ConstIterator(tree_.findNode(&key)); }
    /// @}

    /// @{
    /// The first element whose key is not less than the given one, or the end.
    Iterator lowerBound(const Key& key) { return Iterator(tree_.lowerBound(&key)); }
    ConstIterator lowerBound(const Key& key) const { return ConstIterator(tree_.lowerBound(&key)); }
    /// @}

    /// @{
    /// The first element whose key is greater than the given one, or the end.
    Iterator upperBound(const Key& key) { return Iterator(tree_.upperBound(&key)); }
    ConstIterator upperBound(const Key& key) const { return ConstIterator(tree_.upperBound(&key)); }
    /// @}

    /// The number of elements with that key.
    int count(const Key& key) const { return tree_.count(&key); }

    /// @{
    /// The value of the first element with that key, or null.
    Value* getValuePtr(const Key& key) { return static_cast<Value*>(tree_.getValuePtr(&key)); }
    const Value* getValuePtr(const Key& key) const {
        return static_cast<const Value*>(tree_.getValuePtr(&key));
    }
    /// @}

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
        tree_.eraseNode((position++).node_);
        return position;
    }

    /// Erases every element with that key; returns how many.
    int erase(const Key& key) { return tree_.eraseNodesMatching(&key); }

private:
    RBTreeImpl tree_;
};

} // namespace ze

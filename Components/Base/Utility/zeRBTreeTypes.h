// SPDX-License-Identifier: MIT

/// @file
/// What a red-black tree has to know about its keys and values: ze::RBTreeTypes makes the table of
/// functions that ze::RBTreeImpl takes.
///
/// Include zeRBTree.h for the typed map and set; this is for front ends of another kind.
///
/// Threads: the tables are constant; every thread may use them.
///
/// @code
/// using Types = ze::RBTreeTypes<int, double>;
/// ze::RBTreeImpl tree(Types::nodeSize);
/// tree.initialize(&Types::typeUtil);
/// const int key = 1;
/// const double value = 0.5;
/// assert(Types::valueOf(tree.insertNodeUnique(&key, &value)) == 0.5);
/// @endcode

#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>

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

/// Where a node holds its key and its value; `Value` is void for a set.
template<class Key, class Value>
class RBTreeLayout {
    template<class, class, class>
    friend class RBTreeTypes;
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
};

/// The table of a tree of keys of type `Key`, ordered by `Less` (stateless), with values of type
/// `Value`, which is void for a set. Keys must be copyable. Values that cannot be copied or that
/// have no default leave that entry null: without a default, every insert gives a value.
template<class Key, class Value, class Less = RBTreeLess<Key>>
class RBTreeTypes : public RBTreeLayout<Key, Value> {
    using Layout = RBTreeLayout<Key, Value>;
    using Layout::hasValue;
    using Layout::keyOffset;
    using Layout::valueOffset;
    using typename Layout::Node;
    using typename Layout::Stored;

public:
    using Layout::keyOf;
    using Layout::valueOf;

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

} // namespace ze

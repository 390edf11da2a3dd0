// SPDX-License-Identifier: MIT

/// @file
/// The typed front end of the red-black tree: ze::RBTreeMap, an ordered map.

#pragma once

#include <concepts>
#include <initializer_list>
#include <iterator>
#include <type_traits>
#include <utility>

#include "Base/Utility/zeRBTreeContainer.h"

namespace ze {

/// An ordered map over ze::RBTreeImpl, with unique or repeated keys as the caller inserts them.
///
/// A value: copies are deep; a moved-from map is empty. Elements keep their address, and iterators
/// stay valid, until their element is erased. The searches are compiled for the key type, so that
/// no comparison of a descent is an indirect call. If a copy of a key or value throws, the map is
/// as it was.
///
/// Searching, walking and erasing are those of ze::RBTreeContainer, which it shares with
/// ze::RBTreeSet.
///
/// Threads: a map belongs to one thread at a time; const operations may overlap each other.
///
/// @code
/// ze::RBTreeMap<int, double> tree{{2, 0.5}};
/// tree.insert(1, 0.25);
/// tree[3] = 0.75;
/// double sum = 0;
/// for (auto [key, value] : tree) // in the order of the keys
///     sum += key * value;
/// assert(sum == 3.5 && tree.size() == 3 && tree.begin()->value() == 0.25);
/// assert(!tree.insert(1, 9.0).second && *tree.getValuePtr(1) == 0.25);
/// @endcode
template<class Key, class Value, class Less = RBTreeLess<Key>>
class RBTreeMap : public RBTreeContainer<Key, Value, Less, RBTreeEntryAccess<Key, Value>> {
    using Container = RBTreeContainer<Key, Value, Less, RBTreeEntryAccess<Key, Value>>;
    using Container::tree_;
    using typename Container::Types;
    static_assert(std::is_copy_constructible_v<Value> && std::is_default_constructible_v<Value>);

public:
    using typename Container::ConstIterator;
    using typename Container::Iterator;
    using Entry = RBTreeEntry<Key, Value>; ///< An element in place.
    using mapped_type = Value;             ///< For the standard library.

    /// An empty map.
    RBTreeMap() = default;
    /// Of each key the first pair.
    RBTreeMap(std::initializer_list<std::pair<const Key, Value>> pairs)
        : RBTreeMap(pairs.begin(), pairs.end()) {}
    /// Of each key the first pair of a range, such as a `std::map`. In O(n) if it is sorted.
    template<std::input_iterator First, std::sentinel_for<First> Last>
    requires requires(First i) {
        { (*i).first } -> std::convertible_to<const Key&>;
        { (*i).second } -> std::convertible_to<const Value&>;
    }
    RBTreeMap(First first, Last last) {
        for (; first != last; ++first)
            insert(this->end(), (*first).first, (*first).second);
    }
    /// A copy of every element.
    RBTreeMap(const RBTreeMap& other) = default;
    /// Takes the elements over; they keep their addresses.
    RBTreeMap(RBTreeMap&& other) noexcept = default;
    /// Replaces the content.
    RBTreeMap& operator=(RBTreeMap other) noexcept {
        swap(other);
        return *this;
    }
    /// Exchanges the contents; elements keep their addresses.
    void swap(RBTreeMap& other) noexcept { tree_.swap(other.tree_); }

    /// @{
    /// The value of the first element with that key, or null.
    Value* getValuePtr(const Key& key) {
        auto* const node = this->findNode(key);
        return node == tree_.end() ? nullptr : &Types::valueOf(node);
    }
    const Value* getValuePtr(const Key& key) const {
        return const_cast<RBTreeMap*>(this)->getValuePtr(key);
    }
    /// @}

    /// The value of that key, made by default if the key is new.
    Value& operator[](const Key& key) { return Types::valueOf(tree_.insertNodeUnique(&key)); }

    /// Inserts unless the key is there; returns the element that has it, and whether it is new.
    std::pair<Iterator, bool> insert(const Key& key, const Value& value) {
        const int before = tree_.size();
        return this->inserted(tree_.insertNodeUnique(&key, &value), before);
    }
    /// The same, of a pair.
    std::pair<Iterator, bool> insert(const std::pair<const Key, Value>& pair) {
        return insert(pair.first, pair.second);
    }
    /// The same, in O(1) if the key belongs directly before `hint`.
    Iterator insert(ConstIterator hint, const Key& key, const Value& value) {
        return this->iteratorAt(tree_.insertNodeUnique(this->nodeOf(hint), &key, &value));
    }

    /// Inserts or, if the key is there, assigns to its first element, which it returns, and whether
    /// it is new.
    std::pair<Iterator, bool> insertOrAssign(const Key& key, const Value& value) {
        const Iterator place = this->lowerBound(key);
        if (place == this->end() || Less()(key, place->key()))
            return {insert(place, key, value), true};
        place->value() = value;
        return {place, false};
    }

    /// Inserts a value made of `arguments` unless the key is there; then none is made.
    template<class... Arguments>
    requires std::constructible_from<Value, Arguments...> std::pair<Iterator, bool>
    tryEmplace(const Key& key, Arguments&&... arguments) {
        const Iterator place = this->lowerBound(key);
        if (place != this->end() && !Less()(key, place->key()))
            return {place, false};
        return {insert(place, key, Value(std::forward<Arguments>(arguments)...)), true};
    }

    /// Inserts behind any elements with the same key.
    Iterator insertNonUnique(const Key& key, const Value& value) {
        return this->iteratorAt(tree_.insertNodeNonUnique(&key, &value));
    }
};

} // namespace ze

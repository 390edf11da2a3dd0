// SPDX-License-Identifier: MIT

/// @file
/// The typed front end of the red-black tree without values: ze::RBTreeSet, an ordered set.

#pragma once

#include <concepts>
#include <initializer_list>
#include <iterator>
#include <utility>

#include "Base/Utility/zeRBTreeContainer.h"

namespace ze {

/// An ordered set over ze::RBTreeImpl, with unique or repeated keys as the caller inserts them.
///
/// A value: copies are deep; a moved-from set is empty. Keys keep their address, and iterators stay
/// valid, until their key is erased. If a copy of a key throws, the set is as it was. Searching,
/// walking and erasing are those of ze::RBTreeContainer, which it shares with ze::RBTreeMap.
///
/// Threads: a set belongs to one thread at a time; const operations may overlap each other.
///
/// @code
/// ze::RBTreeSet<int> set{3, 1};
/// assert(set.insert(2).second && !set.insert(3).second);
/// assert(*set.begin() == 1 && set.contains(2) && set == ze::RBTreeSet<int>({1, 2, 3}));
/// @endcode
template<class Key, class Less = RBTreeLess<Key>>
class RBTreeSet : public RBTreeContainer<Key, void, Less, RBTreeKeyAccess<Key>> {
    using Container = RBTreeContainer<Key, void, Less, RBTreeKeyAccess<Key>>;
    using Container::tree_;

public:
    using typename Container::ConstIterator;
    using typename Container::Iterator;

    /// An empty set.
    RBTreeSet() = default;
    /// Each key once.
    RBTreeSet(std::initializer_list<Key> keys) : RBTreeSet(keys.begin(), keys.end()) {}
    /// Each key of a range once. In O(n) if it is sorted.
    template<std::input_iterator First, std::sentinel_for<First> Last>
    requires std::convertible_to < std::iter_reference_t<First>,
    const Key& > RBTreeSet(First first, Last last) {
        for (; first != last; ++first)
            insert(this->end(), *first);
    }
    /// A copy of every key.
    RBTreeSet(const RBTreeSet& other) = default;
    /// Takes the keys over; they keep their addresses.
    RBTreeSet(RBTreeSet&& other) noexcept = default;
    /// Replaces the content.
    RBTreeSet& operator=(RBTreeSet other) noexcept {
        swap(other);
        return *this;
    }
    /// Exchanges the contents; keys keep their addresses.
    void swap(RBTreeSet& other) noexcept { tree_.swap(other.tree_); }

    /// Inserts unless the key is there; returns the element that is equal, and whether it is new.
    std::pair<Iterator, bool> insert(const Key& key) {
        const int before = tree_.size();
        return this->inserted(tree_.insertNodeUnique(&key), before);
    }
    /// The same, in O(1) if the key belongs directly before `hint`.
    Iterator insert(ConstIterator hint, const Key& key) {
        return this->iteratorAt(tree_.insertNodeUnique(this->nodeOf(hint), &key));
    }

    /// Inserts behind any equal keys.
    Iterator insertNonUnique(const Key& key) {
        return this->iteratorAt(tree_.insertNodeNonUnique(&key));
    }
};

} // namespace ze

// SPDX-License-Identifier: MIT

/// @file
/// What ze::RBTreeMap and ze::RBTreeSet have in common: iterators, searching and erasing.
///
/// Include zeRBTreeMap.h or zeRBTreeSet.h.
///
/// Threads: a container belongs to one thread at a time; const operations may overlap each other.
///
/// @code
/// #include "Base/Utility/zeRBTreeSet.h"
/// const ze::RBTreeSet<int> set{3, 1, 2};
/// assert(set.contains(2) && *set.lowerBound(2) == 2 && *set.rbegin() == 3);
/// @endcode

#pragma once

#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <iterator>
#include <utility>

#include "Base/Utility/zeRBTreeTypes.h"

namespace ze {

/// An element of a map in place: what an iterator points at. `Value` is the value type, perhaps
/// const. Can be taken apart: `for (auto [key, value] : map)`, where `value` is the map's own.
template<class Key, class Value>
class RBTreeEntry {
    using Layout = RBTreeLayout<Key, std::remove_const_t<Value>>;

public:
    /// The element of a node other than the end.
    explicit RBTreeEntry(RBTreeImpl::Node* node) : node_(node) {}

    /// Never changes while the element lives.
    const Key& key() const { return Layout::keyOf(node_); }
    /// The value in the map.
    Value& value() const { return Layout::valueOf(node_); }
    /// For iterators.
    const RBTreeEntry* operator->() const { return this; }

    /// The key for 0, the value for 1.
    template<std::size_t I>
    requires(I < 2) decltype(auto) get() const {
        if constexpr (I == 0)
            return key();
        else
            return value();
    }

    /// Whether keys and values are equal.
    friend bool operator==(const RBTreeEntry& a, const RBTreeEntry& b) requires
        std::equality_comparable<Key> && std::equality_comparable<Value> {
        return a.key() == b.key() && a.value() == b.value();
    }

private:
    RBTreeImpl::Node* node_;
};

/// Writes `(key, value)` to a stream of the standard library.
template<class Traits, class Key, class Value>
requires requires(std::basic_ostream<char, Traits>& stream, const Key& key, const Value& value) {
    stream << key << value;
}
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream,
                                             const RBTreeEntry<Key, Value>& entry) {
    return stream << '(' << entry.key() << ", " << entry.value() << ')';
}

/// What the iterators of a map give: entries.
template<class Key, class V>
struct RBTreeEntryAccess {
    using Const = RBTreeEntryAccess<Key, const V>; ///< For reading.
    using Value = RBTreeEntry<Key, V>;             ///< What is iterated over.
    using Reference = Value;                       ///< What `*` gives.
    using Pointer = Value;                         ///< What `->` gives.
    /// The element of a node.
    static Reference at(RBTreeImpl::Node* node) { return Value(node); }
    /// The same, for `->`.
    static Pointer pointerTo(RBTreeImpl::Node* node) { return Value(node); }
};

/// What the iterators of a set give: keys, for reading.
template<class Key>
struct RBTreeKeyAccess {
    using Const = RBTreeKeyAccess; ///< For reading.
    using Value = Key;             ///< What is iterated over.
    using Reference = const Key&;  ///< What `*` gives.
    using Pointer = const Key*;    ///< What `->` gives.
    /// The element of a node.
    static Reference at(RBTreeImpl::Node* node) { return RBTreeLayout<Key, void>::keyOf(node); }
    /// The same, for `->`.
    static Pointer pointerTo(RBTreeImpl::Node* node) { return &at(node); }
};

/// A place in a map or a set: bidirectional, valid until its element is erased. `Access` says what
/// it gives.
template<class Access>
class RBTreeIterator {
    using Node = RBTreeImpl::Node;

public:
    using iterator_category = std::bidirectional_iterator_tag; ///< In the standard's terms.
    using value_type = typename Access::Value;                 ///< An element.
    using difference_type = std::ptrdiff_t;                    ///< A number of steps.
    using pointer = typename Access::Pointer;                  ///< What `->` gives.
    using reference = typename Access::Reference;              ///< What `*` gives.

    /// No place: for assigning to.
    RBTreeIterator() = default;
    /// The element.
    reference operator*() const { return Access::at(node_); }
    /// A part of the element.
    pointer operator->() const { return Access::pointerTo(node_); }
    /// @{
    /// The next element, or the end.
    RBTreeIterator& operator++() { return *this = RBTreeIterator(node_->next()); }
    RBTreeIterator operator++(int) { return RBTreeIterator(std::exchange(node_, node_->next())); }
    /// @}
    /// @{
    /// The element before; before the end, the last one.
    RBTreeIterator& operator--() { return *this = RBTreeIterator(node_->prev()); }
    RBTreeIterator operator--(int) { return RBTreeIterator(std::exchange(node_, node_->prev())); }
    /// @}
    /// Whether it is the same place.
    bool operator==(const RBTreeIterator& other) const = default;
    /// The same place, for reading.
    operator RBTreeIterator<typename Access::Const>() const {
        return RBTreeIterator<typename Access::Const>(node_);
    }

private:
    template<class, class, class, class>
    friend class RBTreeContainer;
    template<class>
    friend class RBTreeIterator;
    explicit RBTreeIterator(Node* node) : node_(node) {}
    Node* node_ = nullptr;
};

/// The common part of ze::RBTreeMap and ze::RBTreeSet (`Value` void), which are what applications
/// use. Names are the library's; `begin()`, `iterator` and what else the standard library's
/// algorithms ask for have the names that those expect.
template<class Key, class Value, class Less, class Access>
class RBTreeContainer {
protected:
    using Types = RBTreeTypes<Key, Value, Less>; ///< The table.
    using Node = RBTreeImpl::Node;               ///< Of the tree.

public:
    using Iterator = RBTreeIterator<Access>;                      ///< Bidirectional.
    using ConstIterator = RBTreeIterator<typename Access::Const>; ///< The same, for reading.

    using key_type = Key;                                      ///< What is searched for.
    using key_compare = Less;                                  ///< The order.
    using value_type = typename Access::Value;                 ///< An element.
    using size_type = int;                                     ///< As everywhere in the tree.
    using difference_type = std::ptrdiff_t;                    ///< A number of steps.
    using reference = typename Access::Reference;              ///< What `*` gives.
    using const_reference = typename Access::Const::Reference; ///< The same, for reading.
    using pointer = typename Access::Pointer;                  ///< What `->` gives.
    using const_pointer = typename Access::Const::Pointer;     ///< The same, for reading.
    using iterator = Iterator;                                 ///< The standard's name.
    using const_iterator = ConstIterator;                      ///< The standard's name.
    using reverse_iterator = std::reverse_iterator<Iterator>;  ///< From the last to the first.
    using const_reverse_iterator = std::reverse_iterator<ConstIterator>; ///< For reading.

    /// The number of elements.
    int size() const noexcept { return tree_.size(); }
    /// Whether there is no element.
    bool empty() const noexcept { return tree_.size() == 0; }
    /// Erases every element.
    void clear() { tree_.clear(); }

    /// Sets how many elements are allocated at once. Ignored once there are any.
    void setNumElementsInBlock(int elementsInBlock) {
        tree_.setNumElementsInBlock(elementsInBlock);
    }

    /// The first element, or the end.
    Iterator begin() { return Iterator(tree_.begin()); }
    /// The same, for reading.
    ConstIterator begin() const { return ConstIterator(tree_.begin()); }
    /// The same, for reading.
    ConstIterator cbegin() const { return begin(); }

    /// The place behind the last element.
    Iterator end() { return Iterator(tree_.end()); }
    /// The same, for reading.
    ConstIterator end() const { return ConstIterator(tree_.end()); }
    /// The same, for reading.
    ConstIterator cend() const { return end(); }

    /// The last element, for walking backwards, or rend().
    reverse_iterator rbegin() { return reverse_iterator(end()); }
    /// The same, for reading.
    const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
    /// The same, for reading.
    const_reverse_iterator crbegin() const { return rbegin(); }

    /// The place before the first element.
    reverse_iterator rend() { return reverse_iterator(begin()); }
    /// The same, for reading.
    const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }
    /// The same, for reading.
    const_reverse_iterator crend() const { return rend(); }

    /// The first element with that key, or the end.
    Iterator find(const Key& key) { return Iterator(findNode(key)); }
    /// The same, for reading.
    ConstIterator find(const Key& key) const { return ConstIterator(findNode(key)); }

    /// Whether there is an element with that key.
    bool contains(const Key& key) const { return findNode(key) != tree_.end(); }

    /// The number of elements with that key.
    int count(const Key& key) const { return tree_.count(&key); }

    /// The first element whose key is not less than the given one, or the end.
    Iterator lowerBound(const Key& key) { return Iterator(tree_.lowerBound(&key)); }
    /// The same, for reading.
    ConstIterator lowerBound(const Key& key) const { return ConstIterator(tree_.lowerBound(&key)); }

    /// The first element whose key is greater than the given one, or the end.
    Iterator upperBound(const Key& key) { return Iterator(tree_.upperBound(&key)); }
    /// The same, for reading.
    ConstIterator upperBound(const Key& key) const { return ConstIterator(tree_.upperBound(&key)); }

    /// The lower and the upper bound: all elements with that key.
    std::pair<Iterator, Iterator> equalRange(const Key& key) {
        return {lowerBound(key), upperBound(key)};
    }
    /// The same, for reading.
    std::pair<ConstIterator, ConstIterator> equalRange(const Key& key) const {
        return {lowerBound(key), upperBound(key)};
    }

    /// Erases one element and returns the next.
    Iterator erase(Iterator position) {
        tree_.eraseNode((position++).node_);
        return position;
    }
    /// The same.
    Iterator erase(ConstIterator position) requires(!std::same_as<Iterator, ConstIterator>) {
        return erase(Iterator(position.node_));
    }

    /// Erases from `first` up to but without `last`, and returns `last`.
    Iterator erase(ConstIterator first, ConstIterator last) {
        tree_.eraseNodesRange(first.node_, last.node_);
        return Iterator(last.node_);
    }

    /// Erases every element with that key; returns how many.
    int erase(const Key& key) { return tree_.eraseNodesMatching(&key); }

    /// Whether both have equal elements in the same order.
    friend bool operator==(const RBTreeContainer& a, const RBTreeContainer& b) requires
        std::equality_comparable<typename Access::Const::Value> {
        if (a.size() != b.size())
            return false;
        for (ConstIterator i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j) {
            if (!(*i == *j))
                return false;
        }
        return true;
    }

protected:
    /// Without elements.
    RBTreeContainer() : tree_(Types::nodeSize) { tree_.initialize(&Types::typeUtil); }
    /// A copy of every element.
    RBTreeContainer(const RBTreeContainer& other) : RBTreeContainer() { tree_.copy(other.tree_); }
    /// Takes the elements over.
    RBTreeContainer(RBTreeContainer&& other) noexcept : RBTreeContainer() {
        tree_.swap(other.tree_);
    }
    RBTreeContainer& operator=(const RBTreeContainer&) = delete; ///< The derived class swaps.
    ~RBTreeContainer() = default;

    /// The first node with that key, or the end: the tree's search, in reach of the compiler.
    Node* findNode(const Key& key) const {
        Node* const node = Types::typeUtil.lowerBound(&tree_, &key);
        return node == tree_.end() || Less()(key, Types::keyOf(node)) ? tree_.end() : node;
    }

    /// The place of a node.
    static Iterator iteratorAt(Node* node) { return Iterator(node); }
    /// The node of a place.
    static Node* nodeOf(ConstIterator place) { return place.node_; }

    /// What an insert gave, and whether it is new: the tree had `before` elements.
    std::pair<Iterator, bool> inserted(Node* node, int before) {
        return {Iterator(node), tree_.size() != before};
    }

    RBTreeImpl tree_; ///< The elements.
};

} // namespace ze

/// Entries can be taken apart into key and value.
template<class Key, class Value>
struct std::tuple_size<ze::RBTreeEntry<Key, Value>> : std::integral_constant<std::size_t, 2> {};
/// The key.
template<class Key, class Value>
struct std::tuple_element<0, ze::RBTreeEntry<Key, Value>> {
    using type = const Key; ///< Never changes.
};
/// The value.
template<class Key, class Value>
struct std::tuple_element<1, ze::RBTreeEntry<Key, Value>> {
    using type = Value; ///< Perhaps const.
};

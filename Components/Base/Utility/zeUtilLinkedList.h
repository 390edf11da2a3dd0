// SPDX-License-Identifier: MIT

/// @file
/// A doubly linked list through its own elements: inserting, removing and replacing cost a few
/// instructions and allocate nothing.
///
/// The list owns nothing. An element is in one list at a time, and must be removed before it is
/// destroyed.
///
/// Threads: a list and its elements belong to one thread at a time.
///
/// @code
/// struct Task : zeUtil::LinkedListNode<Task> {};
/// zeUtil::LinkedList<Task> tasks;
/// Task first, second;
/// tasks.insertBefore(nullptr, &second);
/// tasks.insertBefore(&second, &first);
/// assert(tasks.first() == &first && first.next() == &second && !second.next());
/// tasks.remove(&first);
/// assert(tasks.first() == &second && !second.prev());
/// tasks.remove(&second);
/// @endcode

#pragma once

#include <utility>

namespace zeUtil {

template<class T>
class LinkedList;

/// The base of the elements of a LinkedList: `T` derives from `LinkedListNode<T>`.
template<class T>
class LinkedListNode {
public:
    /// The element before this one; null for the first one.
    T* prev() const noexcept { return prev_; }

    /// The element after this one; null for the last one.
    T* next() const noexcept { return next_; }

private:
    friend class LinkedList<T>;

    T* prev_ = nullptr;
    T* next_ = nullptr;
};

/// The two ends of a list. Neither copied nor moved.
template<class T>
class LinkedList {
public:
    /// An empty list.
    LinkedList() noexcept = default;
    LinkedList(const LinkedList&) = delete;            ///< An element is in one list only.
    LinkedList& operator=(const LinkedList&) = delete; ///< An element is in one list only.

    /// The first element; null in an empty list.
    T* first() const noexcept { return first_; }

    /// The last element; null in an empty list.
    T* last() const noexcept { return last_; }

    /// Puts `element`, which is in no list, before `position`, or at the end if that is null.
    void insertBefore(T* position, T* element) noexcept {
        node(element).next_ = position;
        node(element).prev_ = position ? node(position).prev_ : last_;
        join(element);
    }

    /// Takes `element` out of this list.
    void remove(T* element) noexcept {
        linkBehind(node(element).prev_) = node(element).next_;
        linkBefore(node(element).next_) = node(element).prev_;
        node(element) = {};
    }

    /// Puts `substitute`, which is in no list, into the place of `element`.
    void replace(T* element, T* substitute) noexcept {
        node(substitute) = std::exchange(node(element), {});
        join(substitute);
    }

private:
    static LinkedListNode<T>& node(T* element) noexcept { return *element; }

    /// The link that leads to what follows `element`; that of the list if it is null.
    T*& linkBehind(T* element) noexcept { return element ? node(element).next_ : first_; }

    /// The link that leads to what precedes `element`; that of the list if it is null.
    T*& linkBefore(T* element) noexcept { return element ? node(element).prev_ : last_; }

    void join(T* element) noexcept {
        linkBehind(node(element).prev_) = element;
        linkBefore(node(element).next_) = element;
    }

    T* first_ = nullptr;
    T* last_ = nullptr;
};

} // namespace zeUtil

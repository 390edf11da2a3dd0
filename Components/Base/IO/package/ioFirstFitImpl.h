// SPDX-License-Identifier: MIT

#pragma once

#include <vector>

#include "Base/Utility/zeReferenceCount.h"

/// Finds the first free element of a list that is large enough, in logarithmic time: a binary tree
/// whose leaves are the elements' sizes and whose nodes hold the greatest size below them.
///
/// An element that is inserted or removed in the middle of the list moves those behind it. That is
/// noted only (invalidate()); the next search takes the whole list anew.
class ioFirstFitImpl : public ze::ImplBase {
public:
    /// The size of an element that is not free.
    static constexpr long taken = -1;

    /// Whether the list is known. It is not at first.
    bool isValid() const { return valid_; }
    /// Forgets the list.
    void invalidate() { valid_ = false; }

    /// Takes over a list: the size of each free element, `taken` for the others.
    void assign(const std::vector<long>& sizes);

    /// Changes an element, or adds one at the end. Ignored while the list is not known.
    void set(int index, long size);

    /// The index of the first element with at least `size`, which is not negative; -1 if there is
    /// none.
    int find(long size) const;

private:
    std::vector<long> greatest_; // node i has the children 2i and 2i + 1; the leaves come last
    bool valid_ = false;
};

// SPDX-License-Identifier: MIT

/// @file
/// Sorting by indices: zeUtil::Ordering.
///
/// An Ordering is an array of indices, at first 0, 1, 2 and so on. It is sorted in place of the
/// data that the indices belong to, which stay where they are: Ordering::IndexedBinaryPredicate
/// compares two indices by comparing the elements.
///
/// Threads: as for any plain value, different objects may be used by different threads at once.
///
/// @code
/// #include <algorithm>
/// #include <functional>
/// #include <vector>
/// const std::vector<double> data = {2.5, 0.5, 1.5};
/// zeUtil::Ordering order;
/// order.resize(data.size());
/// std::sort(order.begin(), order.end(),
///           zeUtil::Ordering::IndexedBinaryPredicate(data.begin(), std::less<double>()));
/// assert(std::equal(order.begin(), order.end(), std::vector<int>{1, 2, 0}.begin()));
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeUtil {

/// An array of indices.
class ZEBASE_API Ordering {
public:
    /// Compares indices by the elements that they stand for.
    template<class Iterator, class Compare>
    class IndexedBinaryPredicate {
    public:
        /// `first` is the random-access iterator of element 0, and `compare` a comparison of
        /// elements. Both are copied; the elements must stay.
        IndexedBinaryPredicate(Iterator first, Compare compare)
            : first_(first), compare_(compare) {}

        /// The comparison of the elements at `a` and `b`.
        bool operator()(int a, int b) const { return compare_(first_[a], first_[b]); }

    private:
        Iterator first_;
        Compare compare_;
    };

    /// Empty.
    Ordering() = default;
    Ordering(const Ordering&) = delete; ///< Sort another one, or copy the indices.
    Ordering& operator=(const Ordering&) = delete;
    ~Ordering();

    /// Makes it the indices from 0 to `size` - 1, in this order, even if it had this size before;
    /// then the array stays where it is. `size`, which is taken as an int, is at most 2147483647.
    /// Throws std::bad_alloc and changes nothing if memory runs out.
    void resize(unsigned long size);

    /// The first index; null before the first resize(). Valid until resize() changes the size.
    int* begin() { return indices_; }
    /// Behind the last index.
    int* end() { return indices_ + size_; }
    /// @{
    /// The same for reading.
    const int* begin() const { return indices_; }
    const int* end() const { return indices_ + size_; }
    /// @}

    /// The number of indices.
    int size() const { return size_; }

private:
    int* indices_ = nullptr; ///< Owned.
    int size_ = 0;
};

} // namespace zeUtil

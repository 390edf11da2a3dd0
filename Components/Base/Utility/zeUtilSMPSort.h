// SPDX-License-Identifier: MIT

/// @file
/// Sorting with two threads: zeUtil::SMPSort().
///
/// Two threads of the installed pool sort a half of the range each, then merge the halves together,
/// one from the front and one from the back. More threads than two do not help.
///
/// **Equal elements** have no fixed order, as with std::sort: an element of the first half comes
/// before one of the second half, and the halves are sorted by themselves.
///
/// Threads: as zeUtil::ThreadPool: if a pool is installed, only the thread that may use it.
///
/// @code
/// #include <algorithm>
/// #include <functional>
/// #include <vector>
/// std::vector<int> numbers = {4, 2, 5, 1, 3};
/// zeUtil::SMPSort(numbers.data(), numbers.data() + numbers.size(), std::less<int>());
/// assert(std::is_sorted(numbers.begin(), numbers.end()));
/// @endcode

#pragma once

#include <algorithm>
#include <cassert>
#include <memory>

#include "Base/Utility/zeUtilThreadPool.h"

namespace zeUtil {

/// Sorts the two halves of a range, each on a thread of its own. Of an odd number the first half
/// has one more.
template<class T, class Pred>
class SMPSortPiecewise : public ThreadedAlg {
public:
    /// Of the range from `begin` to `end`.
    SMPSortPiecewise(T* begin, T* end, Pred pred) : begin_(begin), end_(end), pred_(pred) {}

    /// Sorts the half of thread 0 or 1; other threads have nothing to do.
    void threadFunc(int threadId, int) override {
        T* middle = end_ - (end_ - begin_) / 2;
        if (threadId == 0)
            std::sort(begin_, middle, pred_);
        else if (threadId == 1)
            std::sort(middle, end_, pred_);
    }

private:
    T* begin_;
    T* end_;
    Pred pred_;
};

/// Merges the two sorted halves of a range. Each of two threads fills one half of the result, and
/// reads both halves of the range. They meet without waiting for each other, because both take the
/// element of the first half first where elements are equal.
template<class T, class Pred>
class SMPSortMerge : public ThreadedAlg {
public:
    /// Of the range from `begin` to `end`, by way of `scratch`, which has as many elements and
    /// stays with the caller.
    SMPSortMerge(T* begin, T* end, T* scratch, Pred pred)
        : begin_(begin), end_(end), scratch_(scratch), pred_(pred) {}

    /// Fills the half of thread 0 or 1; other threads have nothing to do.
    void threadFunc(int threadId, int) override {
        if (threadId == 0)
            mergeForward();
        else if (threadId == 1)
            mergeBackward();
    }

    /// Copies the result back over the range.
    void finalize() override { std::copy(scratch_, scratch_ + (end_ - begin_), begin_); }

private:
    void mergeForward() {
        const T* first = begin_;
        const T* second = middle();
        T* const outEnd = scratch_ + (middle() - begin_);
        T* out = scratch_;
        while (out != outEnd && second != end_)
            *out++ = pred_(*second, *first) ? *second++ : *first++;
        std::copy(first, first + (outEnd - out), out);
    }

    void mergeBackward() {
        const T* first = middle(); // behind the next element, as all three are
        const T* second = end_;
        T* const outEnd = scratch_ + (middle() - begin_);
        T* out = scratch_ + (end_ - begin_);
        while (out != outEnd && first != begin_)
            *--out = pred_(second[-1], first[-1]) ? *--first : *--second;
        std::copy_backward(second - (out - outEnd), second, out);
    }

    T* middle() const { return end_ - (end_ - begin_) / 2; }

    T* begin_;
    T* end_;
    T* scratch_;
    Pred pred_;
};

/// Sorts the range by `pred`, a strict weak order that threads may call at once, with the threads
/// of ThreadPool::get(), which must not have 0. With a pool of one thread it is std::sort.
/// Otherwise `T` must be default-constructible and copyable, and the cost is that of std::sort for
/// one half and of a copy of the range. A std::bad_alloc for the copy leaves the halves sorted;
/// what `pred`, or the assignment of an element, throws on a thread ends the process.
template<class T, class Pred>
void SMPSort(T* begin, T* end, Pred pred) {
    ThreadPool* pool = ThreadPool::get();
    assert(pool->numThreads > 0);
    if (pool->numThreads == 1) {
        std::sort(begin, end, pred);
        return;
    }
    SMPSortPiecewise<T, Pred> sort(begin, end, pred);
    pool->execute(sort);
    const std::unique_ptr<T[]> scratch(new T[static_cast<unsigned long>(end - begin)]);
    SMPSortMerge<T, Pred> merge(begin, end, scratch.get(), pred);
    pool->execute(merge);
}

} // namespace zeUtil

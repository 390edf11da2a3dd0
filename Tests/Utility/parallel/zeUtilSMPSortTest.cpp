// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilSMPSort.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <numeric>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadPool.h"
#include "Base/Utility/zeUtilOrdering.h"

namespace {

/// Runs its "threads" one after the other, the last one first: what one of them needs from another
/// would be missing.
class BackwardPool : public zeUtil::ThreadPool {
public:
    explicit BackwardPool(int threads) : ThreadPool(threads) { install(this); }
    ~BackwardPool() override { install(nullptr); }

    void execute(zeUtil::ThreadedAlg& algorithm) override {
        algorithm.initialize(numThreads);
        for (int id = numThreads; id-- > 0;)
            algorithm.threadFunc(id, numThreads);
        algorithm.finalize();
        ++runs;
    }
    void execute(zeUtil::ThreadedChunkAlg&) override { FAIL(); }

    int runs = 0;
};

/// A key, and where the element stood before, in memory that the element owns.
using Element = std::pair<int, std::vector<int>>;
using Elements = std::vector<Element>;

bool byKey(const Element& a, const Element& b) {
    return a.first < b.first;
}

/// What SMPSort promises: each half sorted by std::sort, then merged with ties to the first half.
void sortByTheRule(Elements& elements) {
    const auto middle = elements.begin() + static_cast<std::ptrdiff_t>((elements.size() + 1) / 2);
    std::sort(elements.begin(), middle, byKey);
    std::sort(middle, elements.end(), byKey);
    std::stable_sort(elements.begin(), elements.end(), byKey);
}

/// Sorts `count` elements with these keys on `threads` that are installed.
void checkSort(std::size_t count, int threads, const std::function<unsigned int()>& nextKey) {
    Elements elements;
    for (std::size_t i = 0; i < count; ++i)
        elements.emplace_back(static_cast<int>(nextKey()), std::vector{static_cast<int>(i)});
    Elements expected = elements;
    zeUtil::SMPSort(elements.data(), elements.data() + elements.size(), byKey);
    if (threads == 1)
        std::sort(expected.begin(), expected.end(), byKey);
    else
        sortByTheRule(expected);
    ASSERT_EQ(elements, expected) << threads << " threads";
}

} // namespace

TEST(SMPSort, SortsEveryShortRangeAsTheRuleSays) {
    BackwardPool pool(2);
    int ranges = 0;
    for (std::size_t count = 0; count <= 7; ++count)
        for (unsigned int pattern = 0; pattern < 1u << 2 * count; ++pattern, ++ranges) {
            unsigned int digits = pattern;
            checkSort(count, 2, [&] { return std::exchange(digits, digits / 4) % 4; });
        }
    EXPECT_EQ(pool.runs, 2 * ranges) << "one to sort, one to merge, however short the range";
}

TEST(SMPSort, SortsOnThreadsAsTheRuleSays) {
    std::mt19937 random(1);
    for (int threads : {1, 2, 8}) {
        zeThread::Pool pool(threads);
        zeUtil::ThreadPool::install(&pool);
        for (std::size_t count : {0u, 1u, 2u, 3u, 5u, 100u, 1001u, 10000u})
            for (unsigned int keys : {1u, 3u, 1000u, 1u << 30})
                checkSort(count, threads,
                          [&] { return static_cast<unsigned int>(random()) % keys; });
    }
}

TEST(Ordering, SortsIndicesByTheirElements) {
    std::mt19937 random(2);
    std::vector<int> data(1000);
    for (int& d : data)
        d = static_cast<int>(random() % 100);
    zeUtil::Ordering order;
    order.resize(data.size());
    const zeUtil::Ordering::IndexedBinaryPredicate byElement(data.cbegin(), std::greater<>());
    BackwardPool pool(2);
    zeUtil::SMPSort(order.begin(), order.end(), byElement);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end(), byElement));
    EXPECT_EQ(std::set<int>(order.begin(), order.end()).size(), data.size());

    const int* const before = order.begin();
    for (unsigned long size : {1000ul, 3ul, 0ul, (1ul << 32) + 2}) { // the last one as an int
        order.resize(size);
        EXPECT_TRUE(size != 1000 || order.begin() == before) << "the same size keeps the array";
        std::vector<int> identity(static_cast<unsigned int>(size));
        std::iota(identity.begin(), identity.end(), 0);
        EXPECT_EQ(std::vector<int>(order.begin(), order.end()), identity);
    }
}

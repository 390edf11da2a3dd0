// SPDX-License-Identifier: MIT

/// @file
/// The work of pool.cpp and its peers.

#pragma once

#include "Support/Workload.h"

namespace bench {

constexpr int chunkCount = 100000;
constexpr int treeDepth = 14;
constexpr int taskCount = (2 << treeDepth) - 1;

/// About a quarter of a nanosecond for each of `n`.
inline void work(int n) {
    for (int i = 0; i < n; ++i)
        asm volatile("" ::: "memory");
}

inline void workOfChunk() {
    work(300);
}
inline void workOfTask() {
    work(3000);
}

inline std::vector<int> randomInts(size_t n) {
    Rng random(70);
    std::vector<int> values(n);
    for (int& value : values)
        value = int(random());
    return values;
}

/// Sorts the same numbers each time, by `sort(begin, end)`.
template<class Sort>
void sortInts(State& s, size_t n, Sort sort) {
    const std::vector<int> numbers = randomInts(n);
    std::vector<int> sorted;
    for (auto _ : s) {
        s.PauseTiming();
        sorted = numbers;
        s.ResumeTiming();
        sort(sorted.data(), sorted.data() + n);
    }
    require(std::is_sorted(sorted.begin(), sorted.end()), "sorted");
    items(s, n);
}

/// Sorts indices by numbers that stay where they are, by `sort(begin, end, less)`.
template<class Sort>
void sortIndices(State& s, size_t n, Sort sort) {
    const std::vector<int> numbers = randomInts(n);
    const auto less = [&numbers](int a, int b) { return numbers[size_t(a)] < numbers[size_t(b)]; };
    std::vector<int> order(n);
    for (auto _ : s) {
        s.PauseTiming();
        for (size_t i = 0; i < n; ++i)
            order[i] = int(i);
        s.ResumeTiming();
        sort(order.data(), order.data() + n, less);
    }
    require(std::is_sorted(order.begin(), order.end(), less), "sorted");
    items(s, n);
}

} // namespace bench

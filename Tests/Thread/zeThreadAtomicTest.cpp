// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadAtomic.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <memory>
#include <numeric>
#include <type_traits>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadReferenceCount.h"
#include "Support/ThreadCalls.h"

#include "Thread/zeThreadTeam.h"

using zeThread::atomicDecrement;
using zeThread::atomicIncrement;

namespace {

std::atomic<int> alive = 0;

struct Shared : zeThread::ReferenceCount {
    Shared() { ++alive; }
    Shared(const Shared& other) : zeThread::ReferenceCount(other) { ++alive; }
    Shared& operator=(const Shared&) = default;
    ~Shared() override { --alive; }
};

} // namespace

TEST(Atomic, CountsAndWraps) {
    int n = std::numeric_limits<int>::max() - 1;
    EXPECT_EQ(atomicIncrement(n), std::numeric_limits<int>::max());
    EXPECT_EQ(atomicIncrement(n), std::numeric_limits<int>::min());
    EXPECT_EQ(atomicDecrement(n), std::numeric_limits<int>::max());
    EXPECT_EQ(n, std::numeric_limits<int>::max());
}

TEST(Atomic, GivesEachNumberToOneThread) {
    const ThreadsAndLocks none;
    const RandomYields yields;
    for (const StressTime time(0.2); time.isLeft();) {
        constexpr int threads = 4, each = 200;
        int numbers[20]{}; // every lock is used, three of them by two numbers
        std::vector<std::vector<int>> seen(threads);
        {
            const Team team(threads, [&](int thread) {
                for (int i = 0; i < each; ++i) {
                    seen[static_cast<std::size_t>(thread)].push_back(atomicIncrement(numbers[7]));
                    atomicIncrement(numbers[i % 20 == 7 ? 8 : i % 20]);
                    atomicDecrement(numbers[19]);
                }
            });
        }
        std::vector<int> all;
        for (const auto& some : seen) {
            EXPECT_TRUE(std::is_sorted(some.begin(), some.end()));
            all.insert(all.end(), some.begin(), some.end());
        }
        std::sort(all.begin(), all.end());
        std::vector<int> expected(threads * each);
        std::iota(expected.begin(), expected.end(), 1);
        EXPECT_EQ(all, expected);
        EXPECT_EQ(std::accumulate(std::begin(numbers), std::end(numbers), 0), threads * each);
    }
}

TEST(ThreadReferenceCount, IsOfTheObjectAndNotOfItsContent) {
    static_assert(!std::is_base_of_v<ze::ReferenceCount, zeThread::ReferenceCount>);
    {
        const ze::Reference<Shared> first(new Shared);
        const ze::Reference<Shared> second(first);
        EXPECT_EQ(first->refs(), 2);
        const ze::Reference<Shared> copy(new Shared(*first));
        EXPECT_EQ(copy->refs(), 1);
        *copy = *first;
        EXPECT_EQ(copy->refs(), 1);
        EXPECT_EQ(first->refs(), 2);
        EXPECT_EQ(alive, 2);
    }
    EXPECT_EQ(alive, 0);
}

TEST(ThreadReferenceCount, DeletesOnceWhoeverIsTheLast) {
    const ThreadsAndLocks none;
    const RandomYields yields;
    for (const StressTime time(0.3); time.isLeft();) {
        constexpr int threads = 4;
        std::vector<ze::Reference<Shared>> objects(100);
        for (auto& object : objects)
            object = new Shared;
        std::vector<std::vector<ze::Reference<Shared>>> shares(threads, objects);
        objects.clear();
        EXPECT_EQ(alive, 100);
        const Team team(threads, [&](int thread) {
            for (auto& mine : shares[static_cast<std::size_t>(thread)]) {
                const ze::Reference<Shared> again(mine);
                EXPECT_GE(again->refs(), 2);
                mine = nullptr;
            }
        });
    }
    EXPECT_EQ(alive, 0);
}

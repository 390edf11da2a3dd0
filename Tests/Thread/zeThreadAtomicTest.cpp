// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadAtomic.h"

#include <atomic>
#include <limits>
#include <memory>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadReferenceCount.h"
#include "Base/Utility/zeReferenceCount.h"
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

TEST(Atomic, GivesEachNumberToOneThread) {
    const ThreadsAndLocks none;
    const RandomYields yields;
    for (const StressTime time(0.2); time.isLeft();) {
        constexpr int threads = 4, each = 40;
        int numbers[20]{}; // every lock is used, three of them by two numbers
        std::vector<int> timesSeen(threads * each + 1);
        {
            const Team team(threads, [&](int) {
                for (int i = 0; i < each; ++i) {
                    ++timesSeen[static_cast<std::size_t>(atomicIncrement(numbers[7]))];
                    atomicIncrement(numbers[i % 20 == 7 ? 8 : i % 20]);
                    atomicDecrement(numbers[19]);
                }
            });
        }
        timesSeen[0] = 1;
        EXPECT_EQ(timesSeen, std::vector<int>(threads * each + 1, 1));
        EXPECT_EQ(std::accumulate(std::begin(numbers), std::end(numbers), 0), threads * each);
    }
    int most = std::numeric_limits<int>::max();
    EXPECT_EQ(atomicIncrement(most), std::numeric_limits<int>::min());
    EXPECT_EQ(atomicDecrement(most), std::numeric_limits<int>::max());
}

TEST(ThreadReferenceCount, DeletesOnceWhoeverIsTheLast) {
    const ThreadsAndLocks none;
    const RandomYields yields;
    for (const StressTime time(0.2); time.isLeft();) {
        constexpr int threads = 4;
        std::vector<ze::Reference<Shared>> objects(20);
        for (auto& object : objects)
            object = new Shared;
        std::vector<std::vector<ze::Reference<Shared>>> shares(threads, objects);
        objects.clear();
        EXPECT_EQ(alive, 20);
        const Team team(threads, [&](int thread) {
            for (auto& mine : shares[static_cast<std::size_t>(thread)]) {
                const ze::Reference<Shared> again(mine);
                EXPECT_GE(again->refs(), 2);
                mine = nullptr;
            }
        });
    }
    EXPECT_EQ(alive, 0);
    const ze::Reference<Shared> first(new Shared), second(first), copy(new Shared(*first));
    *copy = *first; // counts belong to the object and not to its content
    EXPECT_EQ(first->refs(), 2);
    EXPECT_EQ(copy->refs(), 1);
}

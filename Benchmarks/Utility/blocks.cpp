// SPDX-License-Identifier: MIT

// The block allocator with 100,000 elements of 32 bytes. fill: all taken, all given back in reverse
// order; random: all given back in shuffled order; churn: with all live, one given back and one
// taken, a million times at random places.

#include "Base/Utility/zeBlockAllocator.h"
#include "Support/Workload.h"

namespace {

constexpr size_t count = 100000;
constexpr size_t churns = 1000000;

void* take(ze::BlockAllocator& allocator) {
    void* element = allocator.alloc();
    *static_cast<size_t*>(element) = 1;
    return element;
}

void fill(State& s, bool shuffled) {
    std::vector<size_t> order(count);
    for (size_t i = 0; i < count; ++i)
        order[i] = count - 1 - i;
    if (shuffled)
        bench::shuffle(order, 80);
    std::vector<void*> elements(count);
    for (auto _ : s) {
        ze::BlockAllocator allocator(32, 1024);
        for (void*& element : elements)
            element = take(allocator);
        for (size_t i : order)
            allocator.free(elements[i]);
    }
    bench::items(s, count);
}

void churn(State& s) {
    ze::BlockAllocator allocator(32, 1024);
    std::vector<void*> elements(count);
    for (void*& element : elements)
        element = take(allocator);
    bench::Rng random(81);
    for (auto _ : s)
        for (size_t i = 0; i < churns; ++i) {
            void*& element = elements[random.below(count)];
            allocator.free(element);
            element = take(allocator);
        }
    bench::require(allocator.numAllocated() == int(count), "every element is live");
    bench::items(s, churns);
}

const bool registered = [] {
    bench::reg("pool_fill/ours", [](State& s) { fill(s, false); });
    bench::reg("pool_random/ours", [](State& s) { fill(s, true); });
    bench::reg("pool_churn/ours", churn);
    return true;
}();

} // namespace

// SPDX-License-Identifier: MIT

// The global cache with 100,000 items in one group. hit: a million look-ups of present keys at
// random, each of which moves its item to the front; churn: a million look-ups among twice as many
// keys, and on a miss an insertion and the eviction of the oldest.

#include "Base/Utility/zeUtilGlobalCache.h"
#include "Support/Workload.h"

namespace {

constexpr int count = 100000;
constexpr int steps = 1000000;
constexpr int bytesOfItem = 100;

struct Group : zeUtil::CacheGroupBase {
    void itemDeleted(zeUtil::CacheItem*) override {}
    bool lessThan(zeUtil::CacheItem* a, zeUtil::CacheItem* b) override;
};

struct Item : zeUtil::CacheItem {
    Item(zeUtil::CacheGroupBase* group, int key) : CacheItem(group), number(key) {}
    int numBytes() override { return bytesOfItem; }
    int number;
};

bool Group::lessThan(zeUtil::CacheItem* a, zeUtil::CacheItem* b) {
    return static_cast<Item*>(a)->number < static_cast<Item*>(b)->number;
}

/// The cache with keys from 0 to count - 1.
struct FullCache {
    FullCache() {
        for (int key = 0; key < count; ++key)
            cache.insertItem(new Item(&group, key));
    }
    ~FullCache() {
        bench::require(cache.numBytesUsed() == count * bytesOfItem, "the cache is full");
        zeUtil::deleteGlobalCache();
    }
    zeUtil::CacheItem* find(uint32_t key) {
        Item probe(&group, int(key));
        return cache.findItem(&probe);
    }

    Group group;
    zeUtil::GlobalCache& cache = *zeUtil::getGlobalCache();
};

void hit(State& s) {
    FullCache full;
    for (auto _ : s) {
        bench::Rng random(100);
        int64_t total = 0;
        for (int i = 0; i < steps; ++i)
            total += full.find(random.below(count))->numBytes();
        bench::require(total == int64_t(steps) * bytesOfItem, "every look-up hits");
    }
    bench::items(s, steps);
}

void churn(State& s) {
    FullCache full;
    for (auto _ : s) {
        bench::Rng random(101);
        int misses = 0;
        for (int i = 0; i < steps; ++i) {
            const uint32_t key = random.below(2 * count);
            if (full.find(key))
                continue;
            full.cache.insertItem(new Item(&full.group, int(key)));
            full.cache.deleteToSize(count * bytesOfItem);
            ++misses;
        }
        bench::keep(misses);
    }
    bench::items(s, steps);
}

const bool registered = [] {
    bench::reg("cache_hit/ours", hit);
    bench::reg("cache_churn/ours", churn);
    return true;
}();

} // namespace

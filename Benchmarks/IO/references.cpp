// SPDX-License-Identifier: MIT

// The reference map.
// insert: each pointer is looked up (a miss) and given the next number, from an empty map; in
//   shuffled order as objects of a long-lived program lie, and ascending as those of a fresh load.
// find: as many hits, in another shuffled order. teardown by itself.
// resolve: the reading side: as many definitions in ascending order, each used once before, a
//   forward reference, and once after.

#include "Base/IO/ioPacketFile.h"
#include "Base/Utility/zeReferenceCount.h"

#include "IO/referencesWorkload.h"

namespace {

using Map = ze::Reference<ioReferenceMap>;

void fill(ioReferenceMap& map, const std::vector<void*>& pointers) {
    for (void* pointer : pointers)
        if (map.findReference(pointer) < 0)
            map.newReference(pointer);
}

void insert(State& s, size_t n, uint64_t seed) {
    const std::vector<void*> pointers = bench::ptrs(n, seed);
    for (auto _ : s) {
        Map map(ioPacketFileNewReferenceMap());
        fill(*map, pointers);
        s.PauseTiming();
        bench::require(map->findReference(pointers.back()) == int(n), "numbers rise by one");
        map = Map();
        s.ResumeTiming();
    }
    bench::items(s, n);
}

void find(State& s, size_t n) {
    Map map(ioPacketFileNewReferenceMap());
    fill(*map, bench::ptrs(n, 11));
    const std::vector<void*> pointers = bench::ptrs(n, 12);
    int64_t sum = 0;
    for (auto _ : s) {
        sum = 0;
        for (void* pointer : pointers)
            sum += map->findReference(pointer);
        bench::keep(sum);
    }
    bench::require(sum == int64_t(n) * int64_t(n + 1) / 2, "each number was found once");
    bench::items(s, n);
}

void teardown(State& s, size_t n) {
    const std::vector<void*> pointers = bench::ptrs(n, 11);
    for (auto _ : s) {
        s.PauseTiming();
        Map map(ioPacketFileNewReferenceMap());
        fill(*map, pointers);
        s.ResumeTiming();
        map = Map();
    }
    bench::items(s, n);
}

void resolve(State& s, size_t n) {
    ioPacketType type("object");
    std::vector<void*> locations(2 * n);
    for (auto _ : s) {
        Map map(ioPacketFileNewReferenceMap());
        for (size_t i = 1; i <= n; ++i)
            map->resolveReferenceUsage(int(i), &locations[2 * i - 2], &type, 0);
        for (size_t i = 1; i <= n; ++i) {
            map->associatePtrWithReference(int(i), reinterpret_cast<void*>(i * 64), false);
            map->defineReference(int(i), &type);
            map->resolveReferenceUsage(int(i), &locations[2 * i - 1], &type, 0);
        }
        bench::keep(locations[n]);
    }
    for (size_t i = 1; i <= n; ++i)
        bench::require(locations[2 * i - 2] == reinterpret_cast<void*>(i * 64) &&
                           locations[2 * i - 2] == locations[2 * i - 1],
                       "every location was filled");
    bench::items(s, n);
}

const bool registered = [] {
    for (size_t n : bench::referenceCounts) {
        bench::regReferences("insert_shuffled", "ours", n, [n](State& s) { insert(s, n, 11); });
        bench::regReferences("insert_ascending", "ours", n, [n](State& s) { insert(s, n, 0); });
        bench::regReferences("find_shuffled", "ours", n, [n](State& s) { find(s, n); });
        bench::regReferences("teardown", "ours", n, [n](State& s) { teardown(s, n); });
        bench::regReferences("resolve", "ours", n, [n](State& s) { resolve(s, n); });
    }
    return true;
}();

} // namespace

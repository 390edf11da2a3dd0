// SPDX-License-Identifier: MIT

// tree: a map from 64-bit to 64-bit integers with 1000 and a million shuffled keys. insert: all
// into an
//   empty map; find: as many hits in another order; iterate: all in order; erase: all, one by one,
//   in another order; teardown: the destructor of a full map.
// hash: one byte string of 8, 32, 256 and 4096 bytes.

#include <memory>

#include "Base/Utility/zeHash.h"
#include "Base/Utility/zeRBTree.h"
#include "Support/Workload.h"

namespace {

using Map = ze::RBTreeMap<int64_t, int64_t>;

std::unique_ptr<Map> makeMap(const std::vector<int64_t>& keys) {
    auto map = std::make_unique<Map>();
    for (int64_t key : keys)
        map->insert(key, key);
    return map;
}

void insert(State& s, size_t n) {
    const std::vector<int64_t> keys = bench::keys(n, 21);
    for (auto _ : s) {
        auto map = makeMap(keys);
        bench::keep(map);
        s.PauseTiming();
        map.reset();
        s.ResumeTiming();
    }
    bench::items(s, n);
}

void find(State& s, size_t n) {
    const auto map = makeMap(bench::keys(n, 21));
    const std::vector<int64_t> keys = bench::keys(n, 22);
    for (auto _ : s) {
        int64_t difference = 0;
        for (int64_t key : keys)
            difference |= *map->getValuePtr(key) ^ key;
        bench::require(difference == 0, "each key has its value");
    }
    bench::items(s, n);
}

void iterate(State& s, size_t n) {
    const auto map = makeMap(bench::keys(n, 21));
    for (auto _ : s) {
        int64_t sum = 0;
        for (const auto& entry : *map)
            sum += entry.value();
        bench::keep(sum);
    }
    bench::items(s, n);
}

void erase(State& s, size_t n) {
    const std::vector<int64_t> keys = bench::keys(n, 22);
    for (auto _ : s) {
        s.PauseTiming();
        auto map = makeMap(bench::keys(n, 21));
        s.ResumeTiming();
        for (int64_t key : keys)
            map->erase(key);
        bench::require(map->empty(), "every key was erased");
    }
    bench::items(s, n);
}

void teardown(State& s, size_t n) {
    for (auto _ : s) {
        s.PauseTiming();
        auto map = makeMap(bench::keys(n, 21));
        s.ResumeTiming();
        map.reset();
    }
    bench::items(s, n);
}

void hash(State& s, size_t n) {
    static const std::string data = bench::text(8192);
    size_t offset = 0;
    for (auto _ : s) {
        bench::keep(
            ze::hashfunction(reinterpret_cast<const unsigned char*>(data.data()) + offset, int(n)));
        offset = (offset + 1) & 63;
    }
    bench::bytes(s, n);
}

const bool registered = [] {
    for (size_t n : {size_t(1000), size_t(1000000)}) {
        const std::string size = "/ours/" + std::to_string(n);
        bench::reg("tree_insert" + size, [n](State& s) { insert(s, n); });
        bench::reg("tree_find" + size, [n](State& s) { find(s, n); });
        bench::reg("tree_iterate" + size, [n](State& s) { iterate(s, n); });
        bench::reg("tree_erase" + size, [n](State& s) { erase(s, n); });
        // Filling a map takes 10,000 times as long as its teardown: a fixed count, not a fixed
        // time.
        bench::reg("tree_teardown" + size, [n](State& s) {
            teardown(s, n);
        })->Iterations(n == 1000 ? 1000 : 1);
    }
    for (size_t n : {8, 32, 256, 4096})
        bench::reg("hash/ours/" + std::to_string(n), [n](State& s) { hash(s, n); });
    return true;
}();

} // namespace

// SPDX-License-Identifier: MIT

// What others need for the work of treeAndHash.cpp, and the limits below which nothing can go.

#include <xxhash.h>

#include <map>
#include <memory_resource>
#include <string_view>

#include "Support/Workload.h"

#include <absl/container/btree_map.h>
#include <absl/hash/hash.h>
#include <boost/container/flat_map.hpp>
#include <boost/container/map.hpp>
namespace {
void items(State& s, size_t n) {
    s.SetItemsProcessed(int64_t(s.iterations() * n));
}
template<class M>
void peer(const std::string& name, size_t n) {
    auto t = "/" + name + "/" + std::to_string(n);
    auto fill = [n](M& m) {
        for (auto k : bench::keys(n, 21))
            m.emplace(k, k);
    };
    bench::reg("tree_insert" + t, [=](State& s) {
        auto ks = bench::keys(n, 21);
        for (auto _ : s) {
            auto m = new M;
            for (auto k : ks)
                m->emplace(k, k);
            bench::keep(m);
            s.PauseTiming();
            delete m;
            s.ResumeTiming();
        }
        items(s, n);
    });
    bench::reg("tree_find" + t, [=](State& s) {
        M m;
        fill(m);
        auto ks = bench::keys(n, 22);
        for (auto _ : s) {
            int64_t a = 0;
            for (auto k : ks)
                a += m.find(k)->second;
            bench::keep(a);
        }
        items(s, n);
    });
    bench::reg("tree_iterate" + t, [=](State& s) {
        M m;
        fill(m);
        for (auto _ : s) {
            int64_t a = 0;
            for (auto& e : m)
                a += e.second;
            bench::keep(a);
        }
        items(s, n);
    });
    bench::reg("tree_erase" + t, [=](State& s) {
        auto ks = bench::keys(n, 22);
        for (auto _ : s) {
            s.PauseTiming();
            M m;
            fill(m);
            s.ResumeTiming();
            for (auto k : ks)
                m.erase(k);
            bench::keep(m.size());
        }
        items(s, n);
    });
    bench::reg("tree_teardown" + t, [=](State& s) {
        for (auto _ : s) {
            s.PauseTiming();
            auto m = new M;
            fill(*m);
            s.ResumeTiming();
            delete m;
        }
        items(s, n);
    })->Iterations(n == 1000 ? 1000 : 1);
}
uint32_t T[4][256];
uint32_t table(const uint8_t* p, size_t n) {
    uint32_t r = 0;
    for (; n >= 15; n -= 15, p += 15) {
        uint32_t a = T[1][p[0]];
        a ^= T[2][p[1]];
        r ^= a + T[3][p[2]];
        a = T[1][p[3]];
        a -= T[2][p[4]];
        a += T[3][p[5]];
        r ^= a ^ T[0][p[6]];
        a = T[2][p[7]];
        a += T[3][p[8]];
        a ^= T[0][p[9]];
        r ^= a - T[1][p[10]];
        a = T[3][p[11]];
        a ^= T[0][p[12]];
        a -= T[1][p[13]];
        r ^= a + T[2][p[14]];
    }
    for (; n; --n, ++p)
        r ^= T[2][*p];
    return r;
}
struct PmrMap {
    std::pmr::monotonic_buffer_resource a;
    std::pmr::map<int64_t, int64_t> m{&a};
    auto begin() { return m.begin(); }
    auto end() { return m.end(); }
    auto find(int64_t k) { return m.find(k); }
    void emplace(int64_t k, int64_t v) { m.emplace(k, v); }
    void erase(int64_t k) { m.erase(k); }
    size_t size() { return m.size(); }
};
const bool registered = [] {
    for (size_t n : {size_t(1000), size_t(1000000)}) {
        peer<std::map<int64_t, int64_t>>("std_map", n);
        peer<PmrMap>("std_map_pool", n); // the fair twin: std::map over a block allocator
        peer<boost::container::map<int64_t, int64_t>>("boost_map", n);
        peer<absl::btree_map<int64_t, int64_t>>("absl_btree_map", n);
    }
    bench::Rng r(30);
    for (auto& t : T)
        for (auto& x : t)
            x = uint32_t(r());
    static std::string d = bench::text(8192);
    for (size_t n : {8, 32, 256, 4096}) {
        auto t = "/" + std::to_string(n);
        auto b = [n](State& s) { s.SetBytesProcessed(int64_t(s.iterations() * n)); };
        auto add = [&](const char* name, auto f) {
            bench::reg(std::string("hash/") + name + t, [=](State& s) {
                size_t o = 0;
                for (auto _ : s) {
                    bench::keep(f(d.data() + o, n));
                    o = (o + 1) & 63;
                }
                b(s);
            });
        };
        add("std_hash", [](const char* p, size_t k) {
            return std::hash<std::string_view>()({p, k});
        });
        add("absl_hash", [](const char* p, size_t k) {
            return absl::Hash<std::string_view>()({p, k});
        });
        add("xxh32", [](const char* p, size_t k) { return XXH32(p, k, 0); });
        add("xxh3", [](const char* p, size_t k) { return XXH3_64bits(p, k); });
        add("fnv1a", [](const char* p, size_t k) {
            uint64_t h = 14695981039346656037ull;
            while (k--)
                h = (h ^ uint8_t(*p++)) * 1099511628211ull;
            return h;
        });
        add("limit_table", [](const char* p, size_t k) { return table((const uint8_t*)p, k); });
    }
    return true;
}();
} // namespace

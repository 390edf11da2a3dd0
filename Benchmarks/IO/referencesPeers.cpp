// SPDX-License-Identifier: MIT

// What others need for the work of references.cpp, and the limits below which nothing can go.

#include <map>
#include <unordered_map>

#include "IO/referencesWorkload.h"
#include <absl/container/btree_map.h>
#include <absl/container/flat_hash_map.h>
namespace {
void items(State& s, size_t n) {
    s.SetItemsProcessed(int64_t(s.iterations() * n));
}
template<class M>
void fill(M& m, const std::vector<void*>& p) {
    int next = 0;
    for (void* x : p) {
        auto i = m.find(x);
        if (i == m.end())
            m[x] = ++next;
    }
}
template<class M>
void peer(const std::string& name, size_t n) {
    for (uint64_t seed : {11, 0})
        bench::regReferences(seed ? "insert_shuffled" : "insert_ascending", name, n, [=](State& s) {
            auto p = bench::ptrs(n, seed);
            for (auto _ : s) {
                auto m = new M;
                fill(*m, p);
                s.PauseTiming();
                delete m;
                s.ResumeTiming();
            }
            items(s, n);
        });
    bench::regReferences("find_shuffled", name, n, [=](State& s) {
        M m;
        fill(m, bench::ptrs(n, 11));
        auto q = bench::ptrs(n, 12);
        for (auto _ : s) {
            int64_t a = 0;
            for (void* x : q)
                a += m.find(x)->second;
            bench::keep(a);
        }
        items(s, n);
    });
    bench::regReferences("teardown", name, n, [=](State& s) {
        auto p = bench::ptrs(n, 11);
        for (auto _ : s) {
            s.PauseTiming();
            auto m = new M;
            fill(*m, p);
            s.ResumeTiming();
            delete m;
        }
        items(s, n);
    });
}
struct Def {
    bool accessed, defined, valid, alias;
    int usages;
    void* ptr;
    void* type;
    struct Use* pending;
};
struct Use {
    Use* next;
    void** loc;
    void* type;
    int off;
};
const bool registered = [] {
    for (size_t n : bench::referenceCounts) {
        if (n != bench::countRunOnce) { // a minute each, and far behind
            peer<std::map<void*, int>>("std_map", n);
            peer<absl::btree_map<void*, int>>("absl_btree_map", n);
        }
        peer<std::unordered_map<void*, int>>("std_unordered_map", n);
        peer<absl::flat_hash_map<void*, int>>("absl_flat_hash_map", n);
        bench::regReferences("find_shuffled", "limit_direct", n, [=](State& s) {
            std::vector<int> m(n * 16, 1);
            auto q = bench::ptrs(n, 12);
            for (auto _ : s) {
                int64_t a = 0;
                for (void* x : q)
                    a += m[(uintptr_t(x) & 0xffffffff) / 4];
                bench::keep(a);
            }
            items(s, n);
        });
        bench::regReferences("insert_shuffled", "limit_direct", n, [=](State& s) {
            auto q = bench::ptrs(n, 11);
            for (auto _ : s) {
                s.PauseTiming();
                auto m = new std::vector<int>(n * 16);
                s.ResumeTiming();
                int k = 0;
                for (void* x : q) {
                    int& e = (*m)[(uintptr_t(x) & 0xffffffff) / 4];
                    if (!e)
                        e = ++k;
                }
                s.PauseTiming();
                delete m;
                s.ResumeTiming();
            }
            items(s, n);
        });
        bench::regReferences("resolve", "limit_array_and_malloc", n, [=](State& s) {
            std::vector<void*> loc(2 * n);
            for (auto _ : s) {
                std::vector<Def> d(n + 1);
                for (size_t i = 1; i <= n; ++i) {
                    d[i].usages++;
                    loc[2 * i - 2] = nullptr;
                    auto u = (Use*)malloc(sizeof(Use));
                    *u = {d[i].pending, &loc[2 * i - 2], nullptr, 0};
                    d[i].pending = u;
                }
                for (size_t i = 1; i <= n; ++i) {
                    d[i].ptr = (void*)(i * 64);
                    d[i].defined = true;
                    for (Use* u = d[i].pending; u;) {
                        *u->loc = d[i].ptr;
                        Use* x = u->next;
                        free(u);
                        u = x;
                    }
                    d[i].pending = nullptr;
                    d[i].usages++;
                    loc[2 * i - 1] = d[i].ptr;
                }
                bench::keep(loc[n]);
            }
            items(s, n);
        });
        bench::regReferences("resolve", "unordered_map_of_vector", n, [=](State& s) {
            std::vector<void*> loc(2 * n);
            for (auto _ : s) {
                std::unordered_map<int, void*> def;
                std::unordered_map<int, std::vector<void**>> pend;
                for (size_t i = 1; i <= n; ++i)
                    pend[int(i)].push_back(&loc[2 * i - 2]);
                for (size_t i = 1; i <= n; ++i) {
                    def[int(i)] = (void*)(i * 64);
                    auto k = pend.find(int(i));
                    for (void** l : k->second)
                        *l = (void*)(i * 64);
                    pend.erase(k);
                    loc[2 * i - 1] = def.find(int(i))->second;
                }
                bench::keep(loc[n]);
            }
            items(s, n);
        });
    }
    return true;
}();
} // namespace

// SPDX-License-Identifier: MIT

// What others need for the work of blocks.cpp, and the limits below which nothing can go.

#include <memory_resource>

#include "Support/Workload.h"

#include <boost/pool/pool.hpp>
namespace {
constexpr size_t N = 100000, E = 32;
struct Malloc {
    void* get() { return malloc(E); }
    void put(void* p) { free(p); }
};
struct New {
    void* get() { return operator new(E); }
    void put(void* p) { operator delete(p); }
};
struct BoostPool {
    boost::pool<> p{E, 1024};
    void* get() { return p.malloc(); }
    void put(void* q) { p.free(q); }
};
struct Pmr {
    std::pmr::unsynchronized_pool_resource p;
    void* get() { return p.allocate(E); }
    void put(void* q) { p.deallocate(q, E); }
};
struct Limit {
    std::vector<char*> blocks;
    char *at = nullptr, *end = nullptr;
    void* fl = nullptr;
    void* get() {
        if (fl) {
            void* p = fl;
            fl = *(void**)p;
            return p;
        }
        if (at == end) {
            blocks.push_back(at = (char*)malloc(65536));
            end = at + 65536;
        }
        void* p = at;
        at += E;
        return p;
    }
    void put(void* p) {
        *(void**)p = fl;
        fl = p;
    }
    ~Limit() {
        for (auto b : blocks)
            free(b);
    }
};
template<class A>
void pool(const std::string& n) {
    auto it = [](State& s, size_t k) { s.SetItemsProcessed(int64_t(s.iterations() * k)); };
    for (bool rnd : {false, true})
        bench::reg((rnd ? "pool_random/" : "pool_fill/") + n, [=](State& s) {
            std::vector<size_t> o(N);
            for (size_t i = 0; i < N; ++i)
                o[i] = N - 1 - i;
            if (rnd)
                bench::shuffle(o, 80);
            std::vector<void*> p(N);
            for (auto _ : s) {
                A a;
                for (auto& x : p) {
                    x = a.get();
                    *(size_t*)x = 1;
                }
                for (auto i : o)
                    a.put(p[i]);
            }
            it(s, N);
        });
    bench::reg("pool_churn/" + n, [=](State& s) {
        std::vector<void*> p(N);
        A a;
        for (auto& x : p)
            x = a.get();
        bench::Rng r(81);
        for (auto _ : s)
            for (int i = 0; i < 1000000; ++i) {
                auto& x = p[r.below(N)];
                a.put(x);
                x = a.get();
                *(size_t*)x = 1;
            }
        for (auto x : p)
            a.put(x);
        it(s, 1000000);
    });
}
const bool registered = [] {
    pool<Malloc>("malloc");
    pool<New>("new");
    pool<BoostPool>("boost_pool");
    pool<Pmr>("pmr_unsynchronized_pool");
    pool<Limit>("limit_block_free_list");
    return true;
}();
} // namespace

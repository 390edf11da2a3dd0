// SPDX-License-Identifier: MIT

// What others need for the work of cache.cpp. The limits know no more of a key than ours does: a
// virtual comparison; the peers hash it.

#include <list>
#include <map>
#include <unordered_map>

#include "Support/Workload.h"

#include <absl/container/btree_map.h>
#include <boost/multi_index/hashed_index.hpp>
#include <boost/multi_index/sequenced_index.hpp>
#include <boost/multi_index_container.hpp>

namespace {
constexpr int N = 100000, STEPS = 1000000;
struct Item {
    explicit Item(int k) : key(k) {}
    virtual ~Item() {}
    int key;
    int bytes = 100;
};
template<class Index>
struct Lru { // list plus index: what a user writes
    std::list<Item*> order;
    Index index;
    Item* find(int k) {
        auto i = index.find(k);
        if (i == index.end())
            return nullptr;
        order.splice(order.begin(), order, i->second);
        return *i->second;
    }
    void insert(int k) {
        order.push_front(new Item(k));
        index[k] = order.begin();
    }
    void evict() {
        Item* i = order.back();
        index.erase(i->key);
        order.pop_back();
        delete i;
    }
    ~Lru() {
        while (!order.empty())
            evict();
    }
};
struct Group {
    virtual ~Group() {}
    virtual bool lessThan(Item* a, Item* b) { return a->key < b->key; }
};
Group* const G = new Group;
struct VItem : Item {
    using Item::Item;
    Group* g = G;
};
struct VLess {
    bool operator()(Item* a, Item* b) const {
        auto x = static_cast<VItem*>(a)->g, y = static_cast<VItem*>(b)->g;
        return x == y ? x->lessThan(a, b) : x < y;
    }
};
template<class Index>
struct VLru {
    std::list<Item*> order;
    Index index;
    Item* find(int k) {
        VItem probe(k);
        auto i = index.find(&probe);
        if (i == index.end())
            return nullptr;
        order.splice(order.begin(), order, i->second);
        return *i->second;
    }
    void insert(int k) {
        order.push_front(new VItem(k));
        index[order.front()] = order.begin();
    }
    void evict() {
        Item* i = order.back();
        index.erase(i);
        order.pop_back();
        delete i;
    }
    ~VLru() {
        while (!order.empty())
            evict();
    }
};
struct Multi {
    struct Key {
        using result_type = int;
        int operator()(Item* i) const { return i->key; }
    };
    boost::multi_index_container<
        Item*, boost::multi_index::indexed_by<boost::multi_index::sequenced<>,
                                              boost::multi_index::hashed_unique<Key>>>
        c;
    Item* find(int k) {
        auto& h = c.template get<1>();
        auto i = h.find(k);
        if (i == h.end())
            return nullptr;
        c.relocate(c.begin(), c.template project<0>(i));
        return *i;
    }
    void insert(int k) { c.push_front(new Item(k)); }
    void evict() {
        Item* i = c.back();
        c.pop_back();
        delete i;
    }
    ~Multi() {
        while (!c.empty())
            evict();
    }
};
template<class L>
void peer(const std::string& n) {
    bench::reg("cache_hit/" + n, [](State& s) {
        L l;
        for (int i = 0; i < N; ++i)
            l.insert(i);
        for (auto _ : s) {
            bench::Rng r(100);
            int64_t t = 0;
            for (int i = 0; i < STEPS; ++i)
                t += l.find(int(r.below(N)))->bytes;
            bench::require(t == int64_t(STEPS) * 100, "every look-up hits");
        }
        bench::items(s, STEPS);
    });
    bench::reg("cache_churn/" + n, [](State& s) {
        L l;
        for (int i = 0; i < N; ++i)
            l.insert(i);
        for (auto _ : s) {
            bench::Rng r(101);
            int miss = 0;
            for (int i = 0; i < STEPS; ++i) {
                int k = int(r.below(2 * N));
                if (!l.find(k)) {
                    l.insert(k);
                    l.evict();
                    ++miss;
                }
            }
            bench::keep(miss);
        }
        bench::items(s, STEPS);
    });
}
using It = std::list<Item*>::iterator;
const bool registered = [] {
    peer<Lru<std::unordered_map<int, It>>>("list_unordered_map");
    peer<Multi>("boost_multi_index");
    peer<VLru<std::map<Item*, It, VLess>>>("limit_std_map_virtual_less");
    peer<VLru<absl::btree_map<Item*, It, VLess>>>("limit_btree_virtual_less");
    return true;
}();
} // namespace

// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilGlobalCache.h"

#include <algorithm>
#include <list>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using zeUtil::CacheItem;
using zeUtil::getGlobalCache;

using Key = std::pair<int, int>; ///< The number of the group, and that of the item.
using Log = std::vector<Key>;    ///< What was dropped, in order.

int bytesOf(Key key) {
    return key.second % 7; // some items have no size
}

/// What a group does when it is told of a dropped item: it looks another one up, inserts one, or
/// drops one or more. The cache under test and its model are called alike.
template<class Cache>
void react(Cache& cache, Key key) {
    const Key other(1 - key.first, key.second + 3);
    const int choice = key.second % 11;
    if (choice == 0)
        cache.find(other);
    else if (choice == 1 && !cache.find(other))
        cache.insert(other);
    else if (choice == 2)
        cache.drop(other);
    else if (choice == 3)
        cache.shrink(key.second * 2);
}

/// The cache as a plain list, most recently used first.
struct Model {
    bool find(Key key) {
        const auto found = std::find(order.begin(), order.end(), key);
        if (found == order.end())
            return false;
        order.splice(order.begin(), order, found);
        return true;
    }
    void insert(Key key) { order.push_front(key); }
    void drop(Key key) {
        if (std::find(order.begin(), order.end(), key) == order.end())
            return;
        order.remove(key);
        log.push_back(key);
        react(*this, key);
    }
    void shrink(int limit) {
        while (used() > limit && !order.empty())
            drop(order.back());
    }
    void clear() {
        while (!order.empty())
            drop(order.front());
    }
    int used() const {
        int sum = 0;
        for (Key key : order)
            sum += bytesOf(key);
        return sum;
    }

    std::list<Key> order;
    Log log;
};

/// The global cache, with two groups whose items would be equal by their numbers.
class Cache {
public:
    ~Cache() { zeUtil::deleteGlobalCache(); }

    bool find(Key key) { return findItem(key) != nullptr; }
    void insert(Key key) { getGlobalCache()->insertItem(new Item(*this, key)); }
    void drop(Key key) {
        if (CacheItem* item = getGlobalCache()->findItem(std::make_unique<Item>(*this, key).get()))
            getGlobalCache()->deleteItem(item);
    }
    void shrink(int limit) { getGlobalCache()->deleteToSize(limit); }
    int used() const { return getGlobalCache()->numBytesUsed(); }

    CacheItem* findItem(Key key) {
        Item probe(*this, key);
        CacheItem* item = getGlobalCache()->findItem(&probe);
        EXPECT_NE(item, &probe);
        EXPECT_TRUE(!item || static_cast<Item*>(item)->key == key);
        return item;
    }

    Log log;
    int alive = 0;

private:
    struct Item : CacheItem {
        Item(Cache& home, Key itsKey)
            : CacheItem(&home.groups_[itsKey.first]), key(itsKey), cache(home) {
            ++cache.alive;
        }
        ~Item() override { --cache.alive; }
        int numBytes() override { return bytesOf(key); }

        const Key key;
        Cache& cache;
    };
    struct Group : zeUtil::CacheGroupBase {
        void itemDeleted(CacheItem* item) override {
            Cache& cache = static_cast<Item*>(item)->cache;
            const Key key = static_cast<Item*>(item)->key;
            cache.log.push_back(key);
            EXPECT_FALSE(cache.find(key)) << "it has left the cache";
            react(cache, key);
        }
        bool lessThan(CacheItem* a, CacheItem* b) override {
            return static_cast<Item*>(a)->key.second < static_cast<Item*>(b)->key.second;
        }
    };
    Group groups_[2];
};

} // namespace

TEST(GlobalCache, KeepsTheOrderOfUseThroughRandomWorkAndCallbacksThatEnterItAgain) {
    for (int keys : {5, 100, 5000}) { // the last one has several blocks of its index
        std::mt19937 random(static_cast<unsigned int>(keys));
        Cache cache;
        Model model;
        for (int step = 0; step < 20000; ++step) {
            const Key key(static_cast<int>(random() % 2),
                          static_cast<int>(random() % static_cast<unsigned int>(keys)));
            // Items without a size stay at a limit of 0, and go at -1.
            const int limit =
                step % 500 == 1 ? -(step / 500 % 2) : static_cast<int>(random() % 30000);
            const auto work = [&](auto& either) {
                if (step % 8 == 0)
                    either.drop(key);
                else if (step % 8 == 1)
                    either.shrink(limit);
                else if (!either.find(key))
                    either.insert(key);
            };
            work(cache);
            work(model);
            ASSERT_EQ(cache.log, model.log) << "step " << step;
            ASSERT_EQ(cache.alive, static_cast<int>(model.order.size()));
            ASSERT_TRUE(step % 16 || cache.used() == model.used());
            cache.log.clear();
            model.log.clear();
        }
        // Destruction goes from the most recently used one, and callbacks still find the cache.
        zeUtil::deleteGlobalCache();
        model.clear();
        EXPECT_EQ(cache.log, model.log);
        EXPECT_EQ(cache.alive, 0);
    }
}

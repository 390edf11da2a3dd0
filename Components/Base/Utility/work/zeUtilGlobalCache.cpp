// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilGlobalCache.h"

#include <cassert>
#include <cstddef>
#include <functional>
#include <list>
#include <utility>
#include <vector>

namespace zeUtil {

namespace {

using Order = std::list<CacheItem*>;

/// All items of one group stand together, the groups in an arbitrary order.
bool isLess(CacheItem* a, CacheItem* b) {
    if (a->group() != b->group())
        return std::less<>()(a->group(), b->group());
    return a->group()->lessThan(a, b);
}

/// The first of `count` sorted items for which `isBefore` is false. Items lie anywhere in memory,
/// and to look at one is what costs: so the two that may be next are fetched during each look.
template<class ItemAt, class IsBefore>
std::size_t partitionPoint(std::size_t count, ItemAt itemAt, IsBefore isBefore) {
    std::size_t first = 0;
    while (count > 0) {
        const std::size_t before = count / 2;
        const std::size_t behind = count - before - 1;
        __builtin_prefetch(itemAt(first + before / 2));
        if (behind > 0)
            __builtin_prefetch(itemAt(first + before + 1 + behind / 2));
        if (isBefore(itemAt(first + before))) {
            first += before + 1;
            count = behind;
        } else {
            count = before;
        }
    }
    return first;
}

/// The sorted map from an item's key to its position in the order of use: a sorted list of sorted
/// blocks, none of them empty. Blocks hold their entries side by side, so that a search meets fewer
/// cache lines than in a tree of single nodes.
class Index {
public:
    struct Place {
        std::size_t block;
        std::size_t entry;
    };

    /// Where the key of `item` is, or belongs.
    Place find(CacheItem* item) const {
        const std::size_t behind = partitionPoint(
            blocks_.size(), [this](std::size_t i) { return blocks_[i].front().key; },
            [item](CacheItem* key) { return !isLess(item, key); });
        if (behind == 0)
            return {0, 0};
        const Block& block = blocks_[behind - 1];
        return {behind - 1, partitionPoint(
                                block.size(), [&](std::size_t i) { return block[i].key; },
                                [item](CacheItem* key) { return isLess(key, item); })};
    }

    /// Whether the key of `item` stands at the place that find() gave for it.
    bool holds(Place place, CacheItem* item) const {
        return place.block < blocks_.size() && place.entry < blocks_[place.block].size() &&
               !isLess(item, blocks_[place.block][place.entry].key);
    }

    Order::iterator& position(Place place) { return blocks_[place.block][place.entry].position; }

    /// An exception leaves the index unchanged.
    void insert(Place place, CacheItem* item, Order::iterator position) {
        if (blocks_.empty())
            blocks_.push_back(emptyBlock());
        else if (blocks_[place.block].size() == mostInBlock)
            place = split(place);
        Block& block = blocks_[place.block];
        block.insert(block.begin() + difference(place.entry), {item, position});
    }

    void erase(Place place) {
        Block& block = blocks_[place.block];
        block.erase(block.begin() + difference(place.entry));
        const std::size_t next = place.block + 1;
        if (block.empty())
            eraseBlock(place.block);
        else if (next < blocks_.size() && block.size() + blocks_[next].size() < mostInBlock / 2) {
            block.insert(block.end(), blocks_[next].begin(), blocks_[next].end());
            eraseBlock(next);
        }
    }

private:
    struct Entry {
        CacheItem* key;
        Order::iterator position;
    };
    using Block = std::vector<Entry>; ///< With room for mostInBlock, so that it never reallocates.
    static constexpr std::size_t mostInBlock = 256;

    static std::ptrdiff_t difference(std::size_t n) { return static_cast<std::ptrdiff_t>(n); }

    static Block emptyBlock() {
        Block block;
        block.reserve(mostInBlock);
        return block;
    }

    void eraseBlock(std::size_t i) { blocks_.erase(blocks_.begin() + difference(i)); }

    /// Moves the second half of a full block into one of its own; returns where `place` is then.
    Place split(Place place) {
        Block half = emptyBlock();
        const auto middle = blocks_[place.block].begin() + mostInBlock / 2;
        half.assign(middle, blocks_[place.block].end());
        blocks_.insert(blocks_.begin() + difference(place.block) + 1, std::move(half));
        blocks_[place.block].resize(mostInBlock / 2);
        if (place.entry <= mostInBlock / 2)
            return place;
        return {place.block + 1, place.entry - mostInBlock / 2};
    }

    std::vector<Block> blocks_;
};

class GlobalCacheImpl final : public GlobalCache {
public:
    GlobalCacheImpl() = default;
    GlobalCacheImpl(const GlobalCacheImpl&) = delete;
    GlobalCacheImpl& operator=(const GlobalCacheImpl&) = delete;

    ~GlobalCacheImpl() override {
        while (!order_.empty())
            deleteItem(order_.front());
    }

    int numBytesUsed() override { return static_cast<int>(bytesUsed_); }

    CacheItem* findItem(CacheItem* probe) override {
        const Index::Place place = index_.find(probe);
        if (!index_.holds(place, probe))
            return nullptr;
        const Order::iterator position = index_.position(place);
        if (position != order_.begin())
            order_.splice(order_.begin(), order_, position);
        return *position;
    }

    void insertItem(CacheItem* item) override {
        Order node{item};
        const Index::Place place = index_.find(item);
        if (index_.holds(place, item))
            index_.position(place) = node.begin(); // the key stays that of the old item
        else
            index_.insert(place, item, node.begin());
        order_.splice(order_.begin(), node);
        bytesUsed_ += static_cast<unsigned int>(item->numBytes());
    }

    void deleteItem(CacheItem* item) override {
        const Index::Place place = index_.find(item);
        assert(index_.holds(place, item) && "the key of the item is in the cache");
        const Order::iterator position = index_.position(place);
        bytesUsed_ -= static_cast<unsigned int>((*position)->numBytes());
        index_.erase(place);
        order_.erase(position);
        item->group()->itemDeleted(item); // may call the cache, which no longer knows the item
        delete item;
    }

    void deleteToSize(int limit) override {
        while (numBytesUsed() > limit && !order_.empty())
            deleteItem(order_.back());
    }

private:
    Order order_; ///< Most recently used first.
    Index index_;
    unsigned int bytesUsed_ = 0; ///< A signed sum that wraps.
};

/// A plain pointer, since the cache is not destroyed at exit.
GlobalCache* theCache = nullptr;

} // namespace

CacheItem::~CacheItem() = default;

CacheGroupBase::~CacheGroupBase() = default;

GlobalCache::~GlobalCache() = default;

GlobalCache* getGlobalCache() {
    if (!theCache)
        theCache = new GlobalCacheImpl;
    return theCache;
}

void deleteGlobalCache() {
    delete theCache;
    theCache = nullptr; // only now: groups that are told of their items still find this cache
}

} // namespace zeUtil

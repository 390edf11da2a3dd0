// SPDX-License-Identifier: MIT

/// @file
/// One process-wide cache of objects that can be made again, kept in the order of their last use.
///
/// Clients derive items from zeUtil::CacheItem and a group from zeUtil::CacheGroupBase. The group
/// compares keys, and is told when an item of it is dropped. The cache never shrinks by itself: a
/// client calls GlobalCache::deleteToSize() when it wants the memory back.
///
/// **Ownership.** The cache deletes what was inserted. Probes and groups stay with the caller, and
/// a group must outlive its items. Nothing is destroyed at exit: an application that wants its
/// groups to be told calls zeUtil::deleteGlobalCache() while they live.
///
/// **Callbacks.** CacheGroupBase::itemDeleted() and destructors of items may call the cache: the
/// item is already out of it and out of its total. CacheItem::numBytes() and
/// CacheGroupBase::lessThan() must not call it, and must give the same answer as long as the item
/// is in the cache. No callback may call zeUtil::deleteGlobalCache() while that is running.
///
/// **Errors.** None are reported. If memory runs out while an item is inserted, the cache is
/// unchanged and the item stays with the caller.
///
/// Threads: one at a time for the whole cache; finding an item changes the order too.
///
/// @code
/// struct Tile : zeUtil::CacheItem {
///     Tile(zeUtil::CacheGroupBase* tiles, int key) : CacheItem(tiles), number(key) {}
///     int numBytes() override { return 4096; }
///     int number;
/// };
/// struct Tiles : zeUtil::CacheGroupBase {
///     void itemDeleted(zeUtil::CacheItem*) override { ++dropped; }
///     bool lessThan(zeUtil::CacheItem* a, zeUtil::CacheItem* b) override {
///         return static_cast<Tile*>(a)->number < static_cast<Tile*>(b)->number;
///     }
///     int dropped = 0;
/// };
/// Tiles tiles;
/// zeUtil::GlobalCache* cache = zeUtil::getGlobalCache();
/// Tile probe(&tiles, 7);
/// if (!cache->findItem(&probe))
///     cache->insertItem(new Tile(&tiles, 7));
/// assert(cache->findItem(&probe) != nullptr && cache->numBytesUsed() == 4096);
/// cache->deleteToSize(4095);
/// assert(tiles.dropped == 1 && cache->findItem(&probe) == nullptr);
/// zeUtil::deleteGlobalCache();
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeUtil {

class CacheGroupBase;

/// Base of what is cached, and of the probes that an item is looked up by.
class ZEBASE_API CacheItem {
public:
    /// An item, or a probe, of this group, which is not null.
    explicit CacheItem(CacheGroupBase* group) : group_(group) {}
    virtual ~CacheItem();

    /// The size of the item, which counts towards GlobalCache::numBytesUsed().
    virtual int numBytes() = 0;

    /// The group that the item belongs to.
    CacheGroupBase* group() const { return group_; }

private:
    CacheGroupBase* group_;
};

/// Base of the groups: one for each kind of item.
class ZEBASE_API CacheGroupBase {
public:
    virtual ~CacheGroupBase();

    /// Called when an item of this group has left the cache, just before the cache deletes it.
    virtual void itemDeleted(CacheItem* item) = 0;

    /// Whether the key of `a` comes before that of `b`: a strict weak order over the items of this
    /// group and its probes. Two items are the same key when neither is less.
    virtual bool lessThan(CacheItem* a, CacheItem* b) = 0;
};

/// The cache. Items of different groups are different keys. See zeUtilGlobalCache.h for what
/// callbacks may do.
class ZEBASE_API GlobalCache {
public:
    virtual ~GlobalCache();

    /// The sum of numBytes() of what was inserted and not deleted.
    virtual int numBytesUsed() = 0;

    /// The item with the key of `probe`, or null. A hit becomes the most recently used item. The
    /// cost is logarithmic in the number of items.
    virtual CacheItem* findItem(CacheItem* probe) = 0;

    /// Adds an item, made by `new`, as the most recently used one; the cache owns it from here on.
    /// The cache must not hold its key: call findItem() first, and insert only on a miss. (With a
    /// key that is present, findItem() gives the new item, and what happens when the old one would
    /// be dropped is not defined.)
    virtual void insertItem(CacheItem* item) = 0;

    /// Drops a stored item, not a probe: removes it, tells its group and deletes it. Its key must
    /// be in the cache.
    virtual void deleteItem(CacheItem* item) = 0;

    /// Drops the least recently used item, and the next, until numBytesUsed() is at most `limit`.
    virtual void deleteToSize(int limit) = 0;
};

/// The cache of this process, made on the first call. Never null.
ZEBASE_API GlobalCache* getGlobalCache();

/// Drops all items, most recently used first, and destroys the cache, if there is one. The next
/// getGlobalCache() makes a new one.
ZEBASE_API void deleteGlobalCache();

} // namespace zeUtil

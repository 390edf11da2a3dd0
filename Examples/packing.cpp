// SPDX-License-Identifier: MIT

// Packs small pictures into one page, and keeps the pixels that were drawn last. UniqueNames gives
// each picture a name of its own, pack() a place on the page, and the GlobalCache drops what has
// not been used for long when memory is short.
//
//     $ packing
//     a page of 64 by 64
//     made tree.png at 0, 20
//     made wall.png at 48, 20
//     made tree-1.png at 24, 20
//     made sky.png at 0, 0
//     cached wall.png at 48, 20
//     cached tree.png at 0, 20
//     dropped tree-1.png
//     dropped sky.png
//     1216 bytes are left
//     dropped tree.png
//     dropped wall.png

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "Base/Utility/zeUtilGlobalCache.h"
#include "Base/Utility/zeUtilPacking.h"
#include "Base/Utility/zeUtilUniqueNames.h"

namespace {

/// The pixels of one picture. They can be made again, so they may live in the cache.
struct Pixels : zeUtil::CacheItem {
    Pixels(zeUtil::CacheGroupBase* pictures, std::string itsName, int size)
        : CacheItem(pictures), name(std::move(itsName)), pixels(static_cast<std::size_t>(size)) {}

    int numBytes() override { return static_cast<int>(pixels.size()); }

    std::string name;
    std::vector<unsigned char> pixels;
};

/// All pictures are one group in the cache, and their names are the keys.
struct Pictures : zeUtil::CacheGroupBase {
    void itemDeleted(zeUtil::CacheItem* item) override {
        std::printf("dropped %s\n", static_cast<Pixels*>(item)->name.c_str());
    }
    bool lessThan(zeUtil::CacheItem* a, zeUtil::CacheItem* b) override {
        return static_cast<Pixels*>(a)->name < static_cast<Pixels*>(b)->name;
    }
};

/// Draws a picture, from the cache if it is there.
void draw(Pictures& pictures, const std::string& name, const zeUtil::IntRange2d& place) {
    zeUtil::GlobalCache* cache = zeUtil::getGlobalCache();
    Pixels probe(&pictures, name, 0);
    const bool isCached =
        cache->findItem(&probe) != nullptr; // it is the most recently used one now
    if (!isCached)                          // the cache takes it over
        cache->insertItem(new Pixels(&pictures, name, place.size[0] * place.size[1]));
    std::printf("%s %s at %d, %d\n", isCached ? "cached" : "made", name.c_str(), place.origin[0],
                place.origin[1]);
}

} // namespace

int main() {
    // Pictures come from several places, and some have the same name.
    zeUtil::UniqueNames unique(".png");
    std::vector<std::string> names;
    for (const char* name : {"tree.png", "wall.png", "tree.png", "sky.png"})
        names.push_back(unique.insert(name).asChar());

    // The page has sides that are powers of two, as small as the pictures allow.
    std::vector<zeUtil::IntRange2d> places = {
        {0, 0, 24, 40}, {0, 0, 16, 16}, {0, 0, 24, 32}, {0, 0, 60, 20}};
    const zeUtil::IntRange2d page = zeUtil::pack(places, true);
    std::printf("a page of %d by %d\n", page.size[0], page.size[1]);

    Pictures pictures;
    for (unsigned int i : {0u, 1u, 2u, 3u, 1u, 0u})
        draw(pictures, names[i], places[i]);

    // Memory is short: what was drawn first goes first.
    zeUtil::getGlobalCache()->deleteToSize(1500);
    std::printf("%d bytes are left\n", zeUtil::getGlobalCache()->numBytesUsed());
    zeUtil::deleteGlobalCache(); // before the group goes, which is told of the rest
    return 0;
}

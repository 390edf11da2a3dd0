// SPDX-License-Identifier: MIT

#include "Base/Utility/zeBlockAllocator.h"

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using ze::BlockAllocator;

/// Whether two elements taken in a row are neighbours in one block.
bool adjacent(BlockAllocator& allocator) {
    auto* first = static_cast<char*>(allocator.alloc());
    return static_cast<char*>(allocator.alloc()) == first + allocator.elementSize();
}

} // namespace

TEST(BlockAllocator, ElementsNeitherOverlapNorMoveWhateverTheirSize) {
    for (unsigned long size : {1ul, 8ul, 12ul, 40ul}) { // 12: links of freed elements lie askew
        SCOPED_TRACE(size);
        BlockAllocator allocator(size, 3);
        const unsigned long bytes = allocator.elementSize();
        EXPECT_EQ(bytes, size < 8 ? 8 : size);
        std::vector<char*> live;
        for (int i = 0; i < 20; ++i) {
            auto* element = static_cast<char*>(allocator.alloc());
            std::memset(element, i, bytes);
            live.push_back(element);
            if (i % 3 == 2) { // some go back and come out again
                allocator.free(live[live.size() - 2]);
                live.erase(live.end() - 2);
            }
        }
        EXPECT_EQ(allocator.numAllocated(), 14);
        for (char* element : live)
            EXPECT_EQ(std::string(element, bytes), std::string(bytes, element[0]));
    }
}

TEST(BlockAllocator, HandsOutTheLastFreedFirstAndSwapsEverything) {
    BlockAllocator allocator(64, 5), small(8, 2);
    void* a = allocator.alloc();
    void* b = allocator.alloc();
    allocator.free(nullptr);
    EXPECT_EQ(allocator.numFreed(), 0);
    allocator.free(a);
    allocator.free(b);
    EXPECT_EQ(allocator.numAllocated(), 0);
    EXPECT_EQ(allocator.numFreed(), 2);
    EXPECT_EQ(allocator.alloc(), b);
    small.swap(allocator);
    EXPECT_EQ(small.elementSize(), 64u);
    EXPECT_EQ(small.numAllocated(), 1);
    EXPECT_EQ(small.alloc(), a);
    EXPECT_EQ(small.numFreed(), 0) << "reuse takes it down";
    EXPECT_TRUE(allocator.numAllocated() == 0 && adjacent(allocator));
    small.free(a);
    small.freeEverything();
    EXPECT_EQ(small.numAllocated(), 0);
    EXPECT_EQ(small.numFreed(), 0);
    std::memset(small.alloc(), 1, 64);
}

TEST(BlockAllocator, BlockSizeIsFixedWhileThereIsABlock) {
    BlockAllocator allocator(4096, 0); // at least one element a block
    EXPECT_FALSE(adjacent(allocator));
    allocator.freeEverything();
    allocator.setNumElementsInBlock(1);
    allocator.free(allocator.alloc());
    allocator.setNumElementsInBlock(100); // ignored, although nothing is in use
    allocator.alloc();
    std::memset(allocator.alloc(), 1, 4096); // must not lie behind the block of one
    allocator.freeEverything();
    allocator.setNumElementsInBlock(100);
    EXPECT_TRUE(adjacent(allocator));
}

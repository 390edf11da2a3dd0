// SPDX-License-Identifier: MIT

#include "Base/Utility/zeBlockAllocator.h"

#include <cstdlib>
#include <utility>

namespace ze {

BlockAllocator::Block* BlockAllocator::addBlock(Block* previous, unsigned long bytes) {
    auto* block = static_cast<Block*>(std::malloc(bytes));
    block->handedOut = 0; // null is not tested for, by design: alloc() never fails but here
    block->previous = previous;
    return block;
}

void BlockAllocator::freeBlocks(Block* newest) {
    while (newest)
        std::free(std::exchange(newest, newest->previous));
}

void BlockAllocator::swap(BlockAllocator& other) noexcept {
    std::swap(blocks_, other.blocks_);
    std::swap(freeList_, other.freeList_);
    std::swap(elementSize_, other.elementSize_);
    std::swap(elementsInBlock_, other.elementsInBlock_);
    std::swap(blockBytes_, other.blockBytes_);
    std::swap(numAllocated_, other.numAllocated_);
    std::swap(numFreed_, other.numFreed_);
    std::swap(lazy_, other.lazy_);
}

} // namespace ze

// SPDX-License-Identifier: MIT

#include "Base/Utility/zeBlockAllocator.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace ze {

BlockAllocator::BlockAllocator(unsigned long elementSize, int elementsInBlock)
    : elementSize_(std::max<unsigned long>(elementSize, sizeof(void*))) {
    setNumElementsInBlock(elementsInBlock);
}

BlockAllocator::~BlockAllocator() {
    freeEverything();
}

void BlockAllocator::setNumElementsInBlock(int elementsInBlock) {
    if (blocks_) // numAllocated_ would not do: the block would be taken for a larger one
        return;
    elementsInBlock_ = std::max(elementsInBlock, 1);
    blockBytes_ = static_cast<unsigned long>(elementsInBlock_) * elementSize_ + sizeof(Block);
}

void BlockAllocator::setLazy() {
    lazy_ = true;
}

void BlockAllocator::addBlock() {
    auto* block = static_cast<Block*>(std::malloc(blockBytes_));
    block->handedOut = 0; // null is not tested for, by design: alloc() never fails but here
    block->previous = blocks_;
    blocks_ = block;
}

void BlockAllocator::freeEverything() {
    while (blocks_)
        std::free(std::exchange(blocks_, blocks_->previous));
    freeList_ = nullptr;
    numAllocated_ = 0;
    numFreed_ = 0;
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

// SPDX-License-Identifier: MIT

/// @file
/// Storage for many elements of one size, taken from large blocks: ze::BlockAllocator.
///
/// Threads: an allocator belongs to one thread at a time.
///
/// @code
/// ze::BlockAllocator allocator(sizeof(double), 64);
/// void* a = allocator.alloc();
/// allocator.free(a);
/// assert(allocator.alloc() == a); // the last one freed is the next one handed out
/// assert(allocator.numAllocated() == 1);
/// @endcode

#pragma once

#include <cstring>

#include "Base/zeBaseExport.h"

namespace ze {

/// Hands out elements of a fixed size from large blocks, which it owns.
///
/// Taking an element and giving it back cost a few instructions; memory returns to the system only
/// with freeEverything() or the destructor. The allocator hands out raw storage: its user
/// constructs and destroys what lies there, also before freeEverything(). Elements are aligned to
/// the greatest power of two, up to 16, that divides their size.
class ZEBASE_API BlockAllocator {
public:
    /// An element has at least 8 bytes, a block at least one element.
    BlockAllocator(unsigned long elementSize, int elementsInBlock)
        : elementSize_(elementSize < sizeof(void*) ? sizeof(void*) : elementSize) {
        setNumElementsInBlock(elementsInBlock);
    }
    BlockAllocator(const BlockAllocator&) = delete; ///< Use swap() to exchange two allocators.
    BlockAllocator& operator=(const BlockAllocator&) = delete;

    /// Frees all blocks.
    ~BlockAllocator() { freeEverything(); }

    /// Sets how many elements the coming blocks hold. Ignored once there is a block, even if all of
    /// its elements were given back.
    void setNumElementsInBlock(int elementsInBlock) {
        if (blocks_) // numAllocated_ would not do: the block would be taken for a larger one
            return;
        elementsInBlock_ = elementsInBlock < 1 ? 1 : elementsInBlock;
        blockBytes_ = static_cast<unsigned long>(elementsInBlock_) * elementSize_ + sizeof(Block);
    }

    /// Marks the allocator as lazy. The mark travels with swap() and has no effect of its own.
    void setLazy() { lazy_ = true; }

    /// An uninitialised element: the one freed last, or else the next of the newest block. When the
    /// system is out of memory, the process ends.
    void* alloc() {
        if (!freeList_)
            return allocFromBlock();
        ++numAllocated_;
        --numFreed_;
        void* element = freeList_;
        std::memcpy(&freeList_, element, sizeof freeList_); // perhaps not aligned to 8
        return element;
    }

    /// Takes back an element of this allocator. Null is ignored.
    void free(void* element) {
        if (!element)
            return;
        std::memcpy(element, &freeList_, sizeof freeList_);
        freeList_ = element;
        --numAllocated_;
        ++numFreed_;
    }

    /// Frees all blocks, and so every element.
    void freeEverything() {
        freeBlocks(blocks_);
        blocks_ = nullptr;
        freeList_ = nullptr;
        numAllocated_ = 0;
        numFreed_ = 0;
    }

    /// Exchanges two allocators; elements keep their addresses.
    void swap(BlockAllocator& other) noexcept;

    /// The number of elements that are in use.
    int numAllocated() const { return numAllocated_; }

    /// The number of elements that were given back and can be reused.
    int numFreed() const { return numFreed_; }

    /// The bytes of an element.
    unsigned long elementSize() const { return elementSize_; }

private:
    struct Block { // the elements follow
        int handedOut;
        Block* previous;
    };
    static_assert(sizeof(Block) == 16);

    void* allocFromBlock() {
        if (!blocks_ || blocks_->handedOut == elementsInBlock_)
            blocks_ = addBlock(blocks_, blockBytes_);
        ++numAllocated_;
        char* elements = reinterpret_cast<char*>(blocks_ + 1);
        return elements + static_cast<unsigned long>(blocks_->handedOut++) * elementSize_;
    }

    // Given values and not the allocator, so that a compiler can keep a local one in registers.
    static Block* addBlock(Block* previous, unsigned long bytes);
    static void freeBlocks(Block* newest);

    Block* blocks_ = nullptr;
    void* freeList_ = nullptr; // each freed element begins with a pointer to the next
    unsigned long elementSize_;
    int elementsInBlock_ = 1;
    unsigned long blockBytes_ = 0;
    int numAllocated_ = 0;
    int numFreed_ = 0;
    bool lazy_ = false;
};

} // namespace ze

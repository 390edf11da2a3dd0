// SPDX-License-Identifier: MIT

// The second level: chunks in mappings of the first.

#include <memory>

#include "Base/OS/memory/zeOSMMAllocatorImpl.h"
#include "Base/OS/zeOSMoveableMemory.h"

namespace zeOS {
namespace {

constexpr unsigned long largeThreshold = 256ul << 10;
constexpr unsigned long alignment = 32;
constexpr unsigned long blockSize = 1ul << 20;

struct AllocatorTypes {
    using Block = AllocatorBlock;
    using Chunk = MoveableChunk;
};

} // namespace

/// A mapping, and the chunks that tile it.
struct AllocatorBlock {
    AllocatorImpl* allocator;
    int mapCount = 0; ///< Chunks that are mapped.
    zeUtil::LinkedList<MoveableChunk> chunks;
    unsigned long size;
    ze::Reference<MoveableMapping> mapping;
};

class AllocatorImpl : public MMAllocator<AllocatorTypes> {
public:
    explicit AllocatorImpl(MoveableMemory& memory)
        : MMAllocator(largeThreshold, alignment, blockSize, false), memory_(&memory) {}

    AllocatorBlock* allocateBlock(unsigned long size) override {
        ze::Reference<MoveableMapping> mapping = memory_->allocate(size);
        return mapping ? new AllocatorBlock{this, 0, {}, size, std::move(mapping)} : nullptr;
    }
    MoveableChunk* allocateChunk(unsigned long size, AllocatorBlock* block, unsigned long offset,
                                 bool) override {
        return new MoveableChunk(size, block, offset);
    }
    void freeBlock(AllocatorBlock* block) override {
        if (isCached(block))
            unmapCached();
        delete block;
    }
    void freeChunk(MoveableChunk* chunk) override {
        chunk->isFree = true; // so that its destructor gives nothing back
        delete chunk;
    }

    /// Frees the place of a chunk whose object dies.
    void freePlaceOf(MoveableChunk& chunk) {
        MoveableChunk* const place = allocateChunk(chunk.size, chunk.block, chunk.offset, false);
        chunk.block->chunks.replace(&chunk, place);
        release(place);
    }

    /// The mapping of one block without mapped chunks is kept for the next map().
    /// @{
    bool isCached(const AllocatorBlock* block) const {
        return cachedCount_ > 0 && cachedBlocks_[0] == block;
    }
    void cache(AllocatorBlock* block) {
        if (isCached(block))
            return;
        unmapCached();
        cachedBlocks_[0] = block;
        cachedCount_ = 1;
    }
    void forgetCached() { cachedCount_ = 0; }
    void unmapCached() {
        if (cachedCount_ > 0)
            cachedBlocks_[0]->mapping->unmap();
        forgetCached();
    }
    /// @}

private:
    MoveableMemory* memory_;
    AllocatorBlock* cachedBlocks_[1] = {};
    int cachedCount_ = 0;
};

// MoveableChunk

MoveableChunk::MoveableChunk(unsigned long chunkSize, AllocatorBlock* owner, unsigned long start)
    : size(chunkSize), block(owner), offset(start) {}

MoveableChunk::~MoveableChunk() {
    if (isFree)
        return;
    unmap();
    block->allocator->freePlaceOf(*this);
}

void* MoveableChunk::map() {
    MoveableMapping& mapping = *block->mapping;
    if (!mapped_) {
        if (block->mapCount == 0 && block->allocator->isCached(block))
            block->allocator->forgetCached();
        ++block->mapCount;
        if (!mapping.getPtr())
            mapping.map();
        mapped_ = true; // also after a failure, so that unmap() is due in any case
    }
    void* const start = mapping.getPtr();
    return start ? static_cast<char*>(start) + offset : nullptr;
}

void MoveableChunk::unmap() {
    if (!mapped_)
        return;
    if (--block->mapCount == 0)
        block->allocator->cache(block);
    mapped_ = false;
}

bool MoveableChunk::isMapped() const {
    return mapped_;
}

// MoveableAllocator

MoveableAllocator::MoveableAllocator(MoveableMemory& memory) : impl_(new AllocatorImpl(memory)) {}

MoveableAllocator::~MoveableAllocator() {
    delete impl_;
}

MoveableChunk* MoveableAllocator::allocate(unsigned long size) {
    return impl_->allocate(size);
}

int MoveableAllocator::getNumAllocated() const {
    return impl_->numChunks();
}

void MoveableAllocator::unmapCachedMappings() {
    impl_->unmapCached();
}

} // namespace zeOS

// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <set>
#include <utility>

#include "Base/Utility/zeReferenceCount.h"
#include "Base/Utility/zeUtilLinkedList.h"

namespace zeOS {

/// A best-fit allocator of chunks in blocks, over block and chunk types of its user: `Types::Block`
/// has a `LinkedList<Chunk> chunks` and the size `size`; `Types::Chunk` is a node of that list with
/// `size`, `block`, `offset` and `isFree`.
///
/// The chunks of a block tile it: in order of offset, without gaps. Neighbouring free chunks are
/// merged at once. A free chunk is in `freeChunks`, a chunk in use is not. Its size and offset,
/// which are its key there, change only while it is out of the set.
///
/// If allocateBlock() or allocateChunk() throws, or memory for the set runs out, allocate() throws,
/// and nothing is lost: at most a free block stays for the next call.
///
/// A derived class that keeps a spare block calls freeSpareBlock() in its destructor.
template<class Types>
class MMAllocator : public ze::ImplBase {
public:
    using Block = typename Types::Block;
    using Chunk = typename Types::Chunk;

    /// A new block, or null.
    virtual Block* allocateBlock(unsigned long size) = 0;
    /// A chunk in use, which is in no list yet.
    virtual Chunk* allocateChunk(unsigned long size, Block* block, unsigned long offset,
                                 bool isWholeBlock) = 0;
    virtual void freeBlock(Block* block) = 0;
    virtual void freeChunk(Chunk* chunk) = 0;
    virtual void chunkAllocated(Chunk*) {}
    virtual void chunkFreed(Chunk*) {}

    /// A chunk of at least `size` bytes, in use; null for size 0 or without a block.
    Chunk* allocate(unsigned long size);

    /// Takes back a chunk in use. It, or a neighbour in its place, is a free chunk afterwards, or
    /// gone with its block.
    void release(Chunk* chunk);

    /// Frees the spare block, if there is one.
    void freeSpareBlock();

    /// Chunks in use.
    int numChunks() const { return numChunks_; }

protected:
    MMAllocator(unsigned long largeThreshold, unsigned long alignment, unsigned long blockSize,
                bool keepSpareBlock)
        : largeThreshold_(largeThreshold),
          alignment_(alignment),
          blockSize_(blockSize),
          keepSpareBlock_(keepSpareBlock) {}

private:
    /// By size, then block, then offset. A bare size stands before all chunks of that size.
    struct Order {
        using is_transparent = void;

        bool operator()(const Chunk* a, const Chunk* b) const {
            if (a->size != b->size)
                return a->size < b->size;
            if (a->block != b->block)
                return std::less<>()(a->block, b->block);
            return a->offset < b->offset;
        }
        bool operator()(const Chunk* a, unsigned long size) const { return a->size < size; }
        bool operator()(unsigned long size, const Chunk* a) const { return size <= a->size; }
    };

    using FreeChunks = std::multiset<Chunk*, Order>;
    using Node = typename FreeChunks::node_type;

    Block* takeBlock(unsigned long size);
    Chunk* addBlock(unsigned long size);
    Chunk* takeFreeChunk(unsigned long aligned);
    Node absorb(Chunk* chunk, Chunk* neighbour);
    void releaseChunk(Chunk* chunk);
    void releaseBlock(Block* block);

    unsigned long largeThreshold_;
    unsigned long alignment_;
    unsigned long blockSize_;
    bool keepSpareBlock_;
    int numChunks_ = 0;
    int numBlocks_ = 0;
    FreeChunks freeChunks_;
    Block* spareBlock_ = nullptr;
};

template<class Types>
auto MMAllocator<Types>::allocate(unsigned long size) -> Chunk* {
    if (size == 0)
        return nullptr;
    Chunk* const chunk = size > largeThreshold_
                             ? addBlock(size)
                             : takeFreeChunk((size + alignment_ - 1) / alignment_ * alignment_);
    if (chunk) {
        ++numChunks_;
        chunkAllocated(chunk);
    }
    return chunk;
}

/// The spare block if it has that size, or a new one.
template<class Types>
auto MMAllocator<Types>::takeBlock(unsigned long size) -> Block* {
    if (spareBlock_ && size == blockSize_)
        return std::exchange(spareBlock_, nullptr);
    ++numBlocks_; // and stays so if the block cannot be had
    return allocateBlock(size);
}

/// A block with one chunk, which is in use; null without a block.
template<class Types>
auto MMAllocator<Types>::addBlock(unsigned long size) -> Chunk* {
    Block* const block = takeBlock(size);
    if (!block)
        return nullptr;
    try {
        Chunk* const chunk = allocateChunk(size, block, 0, true);
        block->chunks.insertBefore(nullptr, chunk);
        return chunk;
    } catch (...) {
        releaseBlock(block);
        throw;
    }
}

/// Takes the smallest free chunk that fits, or a new block, and splits off what is more than the
/// alignment.
template<class Types>
auto MMAllocator<Types>::takeFreeChunk(unsigned long aligned) -> Chunk* {
    auto found = freeChunks_.lower_bound(aligned);
    if (found == freeChunks_.end()) {
        Chunk* const whole = addBlock(blockSize_);
        if (!whole)
            return nullptr;
        try {
            found = freeChunks_.insert(whole);
        } catch (...) {
            releaseChunk(whole);
            throw;
        }
        whole->isFree = true;
    }
    Chunk* const chunk = *found;
    if (chunk->size - aligned <= alignment_) {
        freeChunks_.erase(found);
        chunk->isFree = false;
        return chunk;
    }
    Chunk* const front = allocateChunk(aligned, chunk->block, chunk->offset, false);
    chunk->block->chunks.insertBefore(chunk, front);
    Node rest = freeChunks_.extract(found);
    chunk->offset += aligned;
    chunk->size -= aligned;
    freeChunks_.insert(std::move(rest));
    return front;
}

template<class Types>
void MMAllocator<Types>::release(Chunk* chunk) {
    chunkFreed(chunk);
    chunk->isFree = true;
    Node node; // of a neighbour, used again
    if (Chunk* const previous = chunk->prev(); previous && previous->isFree) {
        chunk->offset = previous->offset;
        node = absorb(chunk, previous);
    }
    if (Chunk* const next = chunk->next(); next && next->isFree)
        node = absorb(chunk, next);
    if (!chunk->prev() && !chunk->next()) {
        releaseChunk(chunk);
    } else if (node) {
        node.value() = chunk;
        freeChunks_.insert(std::move(node));
    } else {
        freeChunks_.insert(chunk);
    }
    --numChunks_;
}

/// Adds the size of a free neighbour, which goes. Returns its node in the set.
template<class Types>
auto MMAllocator<Types>::absorb(Chunk* chunk, Chunk* neighbour) -> Node {
    Node node = freeChunks_.extract(freeChunks_.find(neighbour));
    chunk->size += neighbour->size;
    chunk->block->chunks.remove(neighbour);
    freeChunk(neighbour);
    return node;
}

/// Frees the only chunk of a block, and the block.
template<class Types>
void MMAllocator<Types>::releaseChunk(Chunk* chunk) {
    Block* const block = chunk->block;
    block->chunks.remove(chunk);
    freeChunk(chunk);
    releaseBlock(block);
}

template<class Types>
void MMAllocator<Types>::releaseBlock(Block* block) {
    if (keepSpareBlock_ && !spareBlock_ && block->size == blockSize_) {
        spareBlock_ = block;
    } else {
        freeBlock(block);
        --numBlocks_;
    }
}

template<class Types>
void MMAllocator<Types>::freeSpareBlock() {
    if (!spareBlock_)
        return;
    freeBlock(std::exchange(spareBlock_, nullptr));
    --numBlocks_;
}

} // namespace zeOS

// SPDX-License-Identifier: MIT

#pragma once

#include "Base/OS/memory/zeOSMMAllocatorImpl.h"
#include "Base/OS/zeOSMemoryMappedFile.h"
#include "Base/OS/zeOSMoveableMemory.h"
#include "Base/Strings/zeStringIString.h"

namespace zeOS {

struct MemoryChunk;

/// A file, and the regions that tile it.
struct MemoryBlock {
    MemoryMappedFile file;
    zeUtil::LinkedList<MemoryChunk> chunks;
    unsigned long size = 0;
};

/// A region of a file.
struct MemoryChunk : zeUtil::LinkedListNode<MemoryChunk> {
    unsigned long size;
    MemoryBlock* block;
    unsigned long offset;
    bool isFree = false;

    MemoryChunk(unsigned long chunkSize, MemoryBlock* owner, unsigned long start)
        : size(chunkSize), block(owner), offset(start) {}
};

struct MemoryTypes {
    using Block = MemoryBlock;
    using Chunk = MemoryChunk;
};

/// The allocator of regions in files. Its alignment is a multiple of the page size, so that every
/// region can be mapped by itself.
class MoveableMemImpl : public MMAllocator<MemoryTypes> {
public:
    MoveableMemImpl();
    ~MoveableMemImpl() override;

    bool initializeFiles(const zeString::IString& directory, const zeString::IString& prefix);

    MemoryBlock* allocateBlock(unsigned long size) override;
    MemoryChunk* allocateChunk(unsigned long size, MemoryBlock* block, unsigned long offset,
                               bool isWholeBlock) override;
    void freeBlock(MemoryBlock* block) override;
    void freeChunk(MemoryChunk* chunk) override;
    void chunkAllocated(MemoryChunk* chunk) override;
    void chunkFreed(MemoryChunk* chunk) override;

private:
    bool filesReady_ = false;
    [[maybe_unused]] bool reserved_ = false; ///< Without a use, kept for compatibility.

public:
    MoveableMemory::Stats stats;

private:
    zeString::IString directory_;
    zeString::IString prefix_;
};

/// The mapping of a region, which it owns.
class MappingImpl : public MoveableMapping {
public:
    MappingImpl(MoveableMemImpl* memory, MemoryChunk* chunk) : memory_(memory), chunk_(chunk) {}
    ~MappingImpl() override;

    unsigned long getSize() const override { return chunk_->size; }
    void* map() override;
    void unmap() override;
    void* getPtr() const override { return mapping_.pointer; }
    void flush(unsigned long from, unsigned long to) override { mapping_.flush(from, to); }
    void load(unsigned long from, unsigned long to) override { mapping_.load(from, to); }

private:
    MoveableMemImpl* memory_;
    MemoryChunk* chunk_;
    FileMapping mapping_;
};

} // namespace zeOS

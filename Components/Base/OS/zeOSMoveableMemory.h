// SPDX-License-Identifier: MIT

/// @file
/// Memory that has an address only while it is mapped: for data of several times the size of what a
/// process wants to keep in its address space.
///
/// The data lies in unlinked temporary files. zeOS::MoveableMemory hands out large mappings of
/// them, and zeOS::MoveableAllocator takes small chunks from such mappings. map() gives an address
/// that is valid until unmap(); the next map() may give another. No bytes are copied: the system's
/// page cache moves them between memory and disk. The system frees the files when the process ends,
/// however it ends.
///
/// Order of use: MoveableMemory, initializeFiles(), MoveableAllocator, allocations. Destroy in the
/// reverse order: chunks and mappings before the object that they were taken from.
///
/// A failure is a null result: initializeFiles() has not succeeded, a file cannot be created, or
/// there is no address space. The files are sparse, so a full disk may show only when a page is
/// first written to: the process then ends with SIGBUS.
///
/// Threads: a MoveableMemory, its allocators, mappings and chunks belong to one thread at a time.
///
/// @code
/// #include "Base/Strings/zeStringIString.h"
/// zeOS::MoveableMemory memory;
/// assert(memory.initializeFiles(L".", L"example"));
/// {
///     zeOS::MoveableAllocator allocator(memory);
///     zeOS::MoveableChunk* chunk = allocator.allocate(1000);
///     static_cast<char*>(chunk->map())[999] = 'z';
///     chunk->unmap(); // from here on no pointer into it is valid
///     assert(static_cast<char*>(chunk->map())[999] == 'z');
///     delete chunk;
/// }
/// assert(memory.getStats().chunkCount == 0);
/// @endcode

#pragma once

#include "Base/Utility/zeReferenceCount.h"
#include "Base/Utility/zeUtilLinkedList.h"
#include "Base/zeBaseExport.h"

namespace zeString {
class IString;
}

namespace zeOS {

template<class Types>
class MMAllocator;
class AllocatorImpl;
class MoveableMemImpl;
struct AllocatorBlock;

/// A large region of a file, from MoveableMemory::allocate(). The last ze::Reference to it frees
/// the region. A region that is still mapped is unmapped then, but Stats::mappedBytes goes on
/// counting it: kept for compatibility.
class ZEBASE_API MoveableMapping : public ze::ReferenceCount {
public:
    ~MoveableMapping() override;

    /// In bytes; less than 128 KiB more than was asked for.
    virtual unsigned long getSize() const = 0;

    /// The address of the first byte, mapped if it was not; null if the system refuses.
    virtual void* map() = 0;

    /// Ends the mapping. Does nothing if there is none.
    virtual void unmap() = 0;

    /// The address of the first byte; null while unmapped.
    virtual void* getPtr() const = 0;

    /// As FileMapping::flush(); does nothing while unmapped.
    virtual void flush(unsigned long from, unsigned long to) = 0;

    /// As FileMapping::load(); does nothing while unmapped.
    virtual void load(unsigned long from, unsigned long to) = 0;
};

/// Hands out regions of files. A request above 32 MiB gets a file of its own, of exactly its size;
/// others share files of 128 MiB in steps of 64 KiB, best fit. One unused file of 128 MiB is kept
/// in reserve.
class ZEBASE_API MoveableMemory {
public:
    /// What getStats() reports.
    struct Stats {
        int granularity = 0;           ///< FileMapping::getGranularity().
        int fileCount = 0;             ///< Files held.
        unsigned long fileBytes = 0;   ///< Their sizes.
        int chunkCount = 0;            ///< Regions in use.
        unsigned long chunkBytes = 0;  ///< Their sizes.
        unsigned long mappedBytes = 0; ///< Regions that are mapped now: see MoveableMapping.
    };

    /// Makes no file until initializeFiles() succeeds.
    MoveableMemory();
    MoveableMemory(const MoveableMemory&) = delete;            ///< Owns files: pass a reference.
    MoveableMemory& operator=(const MoveableMemory&) = delete; ///< Owns files.
    ~MoveableMemory();

    /// Sets where files are made, and how their names begin. Returns false, and changes nothing, if
    /// either is empty or `directory` is no existing directory. Nobody else may be able to create
    /// files there: see MemoryMappedFile::createFile().
    bool initializeFiles(const zeString::IString& directory, const zeString::IString& prefix);

    /// A new region, unmapped, of at least `size` bytes with any content. Null for size 0 or on
    /// failure. Logarithmic in the number of free regions.
    ze::Reference<MoveableMapping> allocate(unsigned long size);

    /// Closes the file in reserve, and reports.
    Stats getStats();

private:
    MoveableMemImpl* impl_;
};

/// A small piece of memory, from MoveableAllocator::allocate(). Whoever asked for it deletes it.
class ZEBASE_API MoveableChunk : public zeUtil::LinkedListNode<MoveableChunk> {
public:
    MoveableChunk(const MoveableChunk&) = delete;            ///< Owns its bytes: pass a pointer.
    MoveableChunk& operator=(const MoveableChunk&) = delete; ///< Owns its bytes.

    /// Unmaps it if it is mapped, and gives its bytes back to the allocator.
    ~MoveableChunk();

    /// The address of the first byte, aligned to 32 and valid until unmap(). Null if the system
    /// refuses; isMapped() is true all the same, and unmap() must be called. Makes no system call
    /// while another chunk of the same block is mapped, nor for the block that was unmapped last.
    void* map();

    /// Makes the address invalid. One call undoes any number of calls of map(). Does nothing if the
    /// chunk is not mapped.
    void unmap();

    /// Whether map() was called, and unmap() not yet.
    bool isMapped() const;

private:
    template<class Types>
    friend class MMAllocator;
    friend class AllocatorImpl;

    ZEBASE_HIDDEN MoveableChunk(unsigned long chunkSize, AllocatorBlock* owner,
                                unsigned long start);

    // The allocator's template asks for these names. NOLINTBEGIN(readability-identifier-naming)
    unsigned long size;
    AllocatorBlock* block;
    unsigned long offset; // from the start of the block
    bool isFree = false;  // a place that belongs to the allocator
    // NOLINTEND(readability-identifier-naming)
    bool mapped_ = false;
};

/// Hands out chunks of memory, in steps of 32 bytes, best fit. A request above 256 KiB gets a
/// mapping of its own; others share mappings of 1 MiB, each of which goes with its last chunk.
class ZEBASE_API MoveableAllocator {
public:
    /// Takes its mappings from `memory`, which outlives it.
    explicit MoveableAllocator(MoveableMemory& memory);
    MoveableAllocator(const MoveableAllocator&) = delete; ///< Owns blocks: pass a reference.
    MoveableAllocator& operator=(const MoveableAllocator&) = delete; ///< Owns blocks.

    /// All of its chunks must have been deleted before.
    ~MoveableAllocator();

    /// A new chunk, unmapped, of at least `size` bytes with any content; the caller deletes it.
    /// Null for size 0 or on failure. Logarithmic in the number of free chunks.
    MoveableChunk* allocate(unsigned long size);

    /// The number of chunks in use.
    int getNumAllocated() const;

    /// Unmaps the block that was kept mapped for the next MoveableChunk::map().
    void unmapCachedMappings();

private:
    AllocatorImpl* impl_;
};

} // namespace zeOS

// SPDX-License-Identifier: MIT

/// @file
/// A pool of elements of one size, taken from blocks, which finds the block of an element by its
/// address.
///
/// alloc() takes constant time while the current block has room, and free() for an element of that
/// block; otherwise alloc() walks over the blocks, and free() takes logarithmic time in their
/// number. Memory returns to the system with freeAll() and the destructor only. The pool deals in
/// raw storage: constructing and destroying what lies in it is the caller's business.
/// ze::BlockAllocator, which does not look for blocks, is faster.
///
/// Threads: an allocator belongs to one thread at a time.
///
/// @code
/// zeOS::FSAllocator pool(sizeof(double), 1024);
/// void* a = pool.alloc();
/// pool.free(a);
/// assert(pool.alloc() == a);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeOS {

/// Hands out elements of a fixed size.
class ZEBASE_API FSAllocator {
public:
    /// An element has at least 8 bytes, and a block at least the size of one element. Elements are
    /// aligned to the greatest power of two, up to 16, that divides their size.
    FSAllocator(unsigned long elementSize, unsigned long blockSize);
    FSAllocator(const FSAllocator&) = delete;            ///< Owns blocks: pass a reference.
    FSAllocator& operator=(const FSAllocator&) = delete; ///< Owns blocks.

    /// Frees all blocks, whatever is still in use.
    ~FSAllocator();

    /// An uninitialised element: of the current block the one freed last, or else the next one.
    void* alloc();

    /// Takes back an element of this pool that is in use; any other address, null included, must
    /// not be given.
    void free(void* element);

    /// Frees all blocks. No element of them may be used any more.
    void freeAll();

    /// Marks the allocator as lazy, which has no effect. Kept for compatibility.
    void setLazy();

private:
    class FSAllocatorImpl;

    FSAllocatorImpl* impl_;
};

} // namespace zeOS

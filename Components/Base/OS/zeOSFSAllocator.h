// SPDX-License-Identifier: MIT

/// @file
/// A pool of elements of one size, taken from blocks, which finds the block of an element by its
/// address.
///
/// alloc() takes constant time while the current block has room, and free() for an element of that
/// block; otherwise alloc() walks over the blocks, and free() takes logarithmic time in their
/// number. Only freeAll() and the destructor release memory. The pool hands out raw storage: the
/// caller constructs and destroys the objects in it. ze::BlockAllocator is faster, as it does not
/// look for the block of an element.
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

    /// An uninitialised element: the one of the current block that was freed last, or else the next
    /// one of it that was never handed out. Throws std::bad_alloc if a new block cannot be had.
    void* alloc();

    /// Takes back an element of this pool that is in use. Any other address, null included, is
    /// undefined behaviour.
    void free(void* element);

    /// Frees all blocks, and with them all elements.
    void freeAll();

    /// Marks the allocator as lazy, which has no effect. Kept for compatibility.
    void setLazy();

private:
    class FSAllocatorImpl;

    FSAllocatorImpl* impl_;
};

} // namespace zeOS

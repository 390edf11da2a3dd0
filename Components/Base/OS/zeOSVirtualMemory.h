// SPDX-License-Identifier: MIT

/// @file
/// A walk over the regions of the address space, which is not available on this platform: the
/// iterator and the functions give fixed answers. Kept for compatibility.
///
/// Threads: an iterator belongs to one thread at a time; the functions may be called from any.
///
/// @code
/// zeOS::VirtualMemoryIterator region;
/// assert(!region.valid() && region.getState() == 3);
/// assert(zeOS::IsMemBlockFree(1ul << 40));
/// @endcode

#pragma once

#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// The iterator of that walk: never at a region here.
class ZEBASE_API VirtualMemoryIterator {
public:
    /// At the first region.
    VirtualMemoryIterator();
    VirtualMemoryIterator(const VirtualMemoryIterator&) = delete;            ///< Make another one.
    VirtualMemoryIterator& operator=(const VirtualMemoryIterator&) = delete; ///< Make another one.
    ~VirtualMemoryIterator();

    /// Goes back to the first region: here, does nothing.
    void reset();

    /// Goes on to the next region: here, does nothing.
    void next();

    /// Whether there is a region: here, false.
    bool valid() const;

    /// The size of the region in bytes: here, 0.
    unsigned long getSize() const;

    /// 0 for a free region; 3 where the walk is not available, as here.
    int getState() const;

private:
    class VirtualMemoryIteratorImpl;

    VirtualMemoryIteratorImpl* impl_;
};

/// Whether there may be a free region of at least `size` bytes: here, true, as nothing is known.
ZEBASE_API bool IsMemBlockFree(unsigned long size);

/// The size of the largest free region in bytes: here, 0, as nothing is known.
ZEBASE_API unsigned long GetMaxFreeMemBlockSize();

/// Does nothing, and returns success.
ZEBASE_API zeUtil::Error useWindowsLowFragmentationHeap();

} // namespace zeOS

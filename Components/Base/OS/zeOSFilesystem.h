// SPDX-License-Identifier: MIT

/// @file
/// How large the volume under a path is, and what is free.
///
/// stat() asks the system, and other processes use the volume meanwhile: the free size is good for
/// a message, but does not promise that a write succeeds.
///
/// Threads: a Filesystem belongs to one thread at a time.
///
/// @code
/// zeOS::Filesystem volume("/");
/// assert(volume.stat().code() == 0);
/// assert(volume.availableKB() <= volume.totalKB() && volume.blockSize() > 0);
/// @endcode

#pragma once

#include <cstdint>

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// The volume under one path.
class ZEBASE_API Filesystem {
public:
    /// Stores the path; sizes are 0 until stat().
    explicit Filesystem(const zeString::IString& path);

    /// Fills in the sizes. A failure is code 1 and leaves them as they were; its text names error
    /// -1 and not the reason, which `errno` has.
    zeUtil::Error stat();

    /// The path as it was given.
    const zeString::IString& path() const { return path_; }
    /// The size of a block in bytes.
    std::uint64_t blockSize() const { return blockSize_; }
    /// The size of the volume in units of 1024 bytes, rounded down. Exact up to 2^53.
    std::uint64_t totalKB() const { return totalKB_; }
    /// What a user without privileges can still write, in units of 1024 bytes.
    std::uint64_t availableKB() const { return availableKB_; }

private:
    zeString::IString path_;
    std::uint64_t blockSize_ = 0;
    std::uint64_t totalKB_ = 0;
    std::uint64_t availableKB_ = 0;
    [[maybe_unused]] bool reserved_ = false; ///< Part of the layout; without a meaning here.
};

} // namespace zeOS

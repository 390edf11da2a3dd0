// SPDX-License-Identifier: MIT

/// @file
/// How large the volume under a path is, and what is free.
///
/// A value, of one thread at a time. stat() asks the system, and other processes use the volume
/// meanwhile: a free size is a hint for messages, no promise that a write succeeds.
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
    /// Only keeps the path.
    explicit Filesystem(const zeString::IString& path);

    /// Fills in the sizes. A failure is code 1 and leaves them as they were; its text names error
    /// -1 and not the reason, which `errno` has.
    zeUtil::Error stat();

    /// As it was given.
    const zeString::IString& path() const { return path_; }
    /// In bytes; like the sizes 0 before the first stat().
    std::uint64_t blockSize() const { return blockSize_; }
    /// In units of 1024 bytes, rounded down. Exact up to 2^53.
    std::uint64_t totalKB() const { return totalKB_; }
    /// What a user without privileges can still write.
    std::uint64_t availableKB() const { return availableKB_; }

private:
    zeString::IString path_;
    std::uint64_t blockSize_ = 0;
    std::uint64_t totalKB_ = 0;
    std::uint64_t availableKB_ = 0;
    [[maybe_unused]] bool reserved_ = false; ///< part of the layout, without a meaning here
};

} // namespace zeOS

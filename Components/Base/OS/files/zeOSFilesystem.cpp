// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFilesystem.h"

#include <sys/statvfs.h>

#include <limits>

#include "Base/OS/zeOSError.h"

namespace zeOS {
namespace {

/// Blocks as units of 1024 bytes. A network volume may claim any size, and more than the type
/// holds must not be converted.
std::uint64_t kilobytes(fsblkcnt_t blocks, std::uint64_t blockSize) {
    const double size = static_cast<double>(blocks) / 1024.0 * static_cast<double>(blockSize);
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    return size < static_cast<double>(most) ? static_cast<std::uint64_t>(size) : most;
}

} // namespace

Filesystem::Filesystem(const zeString::IString& path) : path_(path) {}

zeUtil::Error Filesystem::stat() {
    struct statvfs volume;
    const int result = statvfs(path_.asUTF8(), &volume);
    // The text of the result, -1, and not of errno: kept for compatibility.
    if (result != 0)
        return zeUtil::Error(1, L"Filesystem::stat(): stat failed: %S",
                             errorText(result).asWChar());
    blockSize_ = volume.f_frsize;
    totalKB_ = kilobytes(volume.f_blocks, blockSize_);
    availableKB_ = kilobytes(volume.f_bavail, blockSize_);
    return zeUtil::Error();
}

} // namespace zeOS

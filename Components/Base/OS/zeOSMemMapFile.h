// SPDX-License-Identifier: MIT

/// @file
/// One whole named file, mapped for reading or for writing.
///
/// A file that is made shorter under its mapping, by this or another process, ends the process with
/// SIGBUS when the missing bytes are touched; so does a disk without room. `size` is the caller's
/// word: reading beyond the end of a shorter file does the same.
///
/// | Code | When |
/// |---|---|
/// | 1 | thrown by the constructors: a bad size or mode |
/// | 2 | a system call failed |
/// | 3 | the rights do not allow to open the file |
/// | 4 | unmap() without a mapping; no message |
///
/// Threads: an object belongs to one thread at a time; mapped bytes may be used from any thread.
///
/// @code
/// #include <cstdio>
/// zeOS::MemMapFile file("mapped-file-example.bin", 4096, 1); // made with that size if missing
/// auto [bytes, error] = file.map();
/// assert(error.code() == 0 && bytes);
/// static_cast<char*>(bytes)[0] = 'z';
/// assert(file.unmap().code() == 0);
/// std::remove("mapped-file-example.bin");
/// @endcode

#pragma once

#include <utility>

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// Maps a file from its start. The destructor unmaps.
class ZEBASE_API MemMapFile {
public:
    /// @{
    /// Stores name, size and mode, and touches nothing on disk. A `const char*` is in the locale's
    /// encoding, a CString in UTF-8. `size` is what map() maps, in bytes; `mode` 0 is for reading,
    /// 1 for reading and writing. Throws zeUtil::Error with code 1 if `size` is 0 or `mode`
    /// above 1.
    MemMapFile(const char* name, unsigned long size, int mode);
    MemMapFile(const zeString::CString& name, unsigned long size, int mode);
    MemMapFile(const zeString::IString& name, unsigned long size, int mode);
    /// @}
    MemMapFile(const MemMapFile&) = delete;            ///< Owns its mapping: pass a pointer.
    MemMapFile& operator=(const MemMapFile&) = delete; ///< Owns its mapping.
    ~MemMapFile();

    /// Opens the file, maps its first `size` bytes, shared, and closes it; the mapping stays. With
    /// mode 1 a missing file is created with mode 0666 less the process's mask, and the byte at
    /// `size - 1` becomes 0 in every file: kept for compatibility. Returns the first byte, or null
    /// and what failed.
    ///
    /// A failure of `mmap` itself is not noticed, kept for compatibility: the result is the address
    /// MAP_FAILED with code 0. Compare with it to be sure. A second call maps once more; the first
    /// mapping then stays until the process ends.
    std::pair<void*, zeUtil::Error> map();

    /// Ends the mapping of the last map(): code 4 if there is none, 2 if the system refuses, after
    /// which there is none either.
    zeUtil::Error unmap();

private:
    ZEBASE_HIDDEN MemMapFile(unsigned long size, int mode);
    ZEBASE_HIDDEN zeUtil::Error mapOpenFile(int descriptor);
    ZEBASE_HIDDEN zeUtil::Error provideSize(int descriptor) const;
    ZEBASE_HIDDEN zeUtil::Error openError(int reason) const;
    ZEBASE_HIDDEN zeUtil::Error systemError(const wchar_t* format) const;

    zeString::IString filename_;
    void* mapped_ = nullptr;
    unsigned long size_;
    int mode_;
    char* reserved_; ///< One byte without a use, kept for compatibility.
};

} // namespace zeOS

// SPDX-License-Identifier: MIT

/// @file
/// One whole named file, mapped for reading or for writing.
///
/// `size` is not checked against the length of the file. The process ends with SIGBUS when it
/// touches a page that lies wholly beyond the end of the file, which includes a file that was made
/// shorter after it was mapped, and when it first writes to a page of a sparse file while the disk
/// is full.
///
/// | Code | When |
/// |---|---|
/// | 1 | thrown by the constructors: a bad size or mode |
/// | 2 | a system call failed |
/// | 3 | permission to open the file was denied |
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
    /// Stores name, size and mode; no file is opened. A `const char*` is in the locale's
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
    /// A failure of `mmap` itself is not reported, kept for compatibility: the result is the
    /// address MAP_FAILED with code 0, so compare with that too. A second call maps the file again,
    /// and the first mapping stays until the process ends.
    std::pair<void*, zeUtil::Error> map();

    /// Unmaps what the last map() mapped: code 4 if nothing is mapped, 2 if `munmap` fails. Nothing
    /// is mapped afterwards in either case.
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
    char* reserved_; ///< One unused byte, kept for compatibility.
};

} // namespace zeOS

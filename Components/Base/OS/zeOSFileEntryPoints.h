// SPDX-License-Identifier: MIT

/// @file
/// Plain functions that copy, test and read the beginning of files, for callers without the
/// classes.
///
/// Paths are taken as they stand; in `char` they are in the locale's encoding. All go through
/// zeOS::File, so registered transports serve them too. Null counts as an empty path.
///
/// Threads: any thread may call these.
///
/// @code
/// char header[4];
/// assert(zeOS_ReadHeaderFromFile("/dev/zero", header, 4) == 4 && header[0] == 0);
/// assert(zeOS_DoesFileExist("/dev/zero") == 1 && zeOS_DoesFileExist("/no/such/file") == 0);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

extern "C" {

/// @{
/// Copies as zeOS::File::copyTo() does. Returns another value than 0 if that failed; 0 if it
/// succeeded, and also if there is no transport for one of the names.
ZEBASE_API int zeOS_CopyFileTo(const char* from, const char* to);
ZEBASE_API int zeOS_CopyFileToW(const wchar_t* from, const wchar_t* to);
/// @}

/// @{
/// Reads the first bytes of a file into `buffer` and returns their number. -1 for a null `buffer`,
/// a negative `count`, and any failure, the end of the file among them: a file shorter than
/// `count` gives -1, and `buffer` has its bytes. A local read that fails counts as a short one: 0
/// for a directory. A `count` of 0 gives 0, and the file is not opened.
ZEBASE_API int zeOS_ReadHeaderFromFile(const char* path, void* buffer, int count);
ZEBASE_API int zeOS_ReadHeaderFromFileW(const wchar_t* path, void* buffer, int count);
/// @}

/// @{
/// 1 if a query succeeds and the file exists, or may be written to; else 0.
ZEBASE_API int zeOS_DoesFileExist(const char* path);
ZEBASE_API int zeOS_DoesFileExistW(const wchar_t* path);
ZEBASE_API int zeOS_IsFileWriteable(const char* path);
ZEBASE_API int zeOS_IsFileWriteableW(const wchar_t* path);
/// @}

/// 1 if anything of that name exists, also a plain file; kept for compatibility.
ZEBASE_API int zeOS_DoesDirectoryExist(const char* path);

} // extern "C"

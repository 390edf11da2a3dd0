// SPDX-License-Identifier: MIT

/// @file
/// Copying, peeking and looking for callers without the class system.
///
/// Paths are taken as they stand; in `char` they are in the locale's encoding. All go through
/// zeOS::File, so registered transports serve them too. Null counts as an empty path.
///
/// @code
/// char header[4];
/// assert(zeOS_ReadHeaderFromFile("/dev/zero", header, 4) == 4 && header[0] == 0);
/// assert(zeOS_DoesFileExist("/dev/zero") == 1 && zeOS_DoesFileExist("/no/such/file") == 0);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

extern "C" {

/// Copies as zeOS::File::copyTo() does. Not 0 if that failed; 0 if it succeeded, and also if there
/// is no transport for either name.
ZEBASE_API int zeOS_CopyFileTo(const char* from, const char* to);
ZEBASE_API int zeOS_CopyFileToW(const wchar_t* from, const wchar_t* to);

/// Reads the first bytes of a file into `buffer` and returns their number. -1 for a null `buffer`,
/// a negative `count`, and any failure, the end of the file among them: a file shorter than
/// `count` gives -1, and `buffer` has its bytes. A local read that fails is none, and gives what it
/// brought: 0 for a directory. A `count` of 0 gives 0 without a look at the file.
ZEBASE_API int zeOS_ReadHeaderFromFile(const char* path, void* buffer, int count);
ZEBASE_API int zeOS_ReadHeaderFromFileW(const wchar_t* path, void* buffer, int count);

/// 1 if a query succeeds and says so, else 0.
ZEBASE_API int zeOS_DoesFileExist(const char* path);
ZEBASE_API int zeOS_DoesFileExistW(const wchar_t* path);
ZEBASE_API int zeOS_IsFileWriteable(const char* path);
ZEBASE_API int zeOS_IsFileWriteableW(const wchar_t* path);

/// 1 if there is anything of that name: a plain file, too.
ZEBASE_API int zeOS_DoesDirectoryExist(const char* path);

} // extern "C"

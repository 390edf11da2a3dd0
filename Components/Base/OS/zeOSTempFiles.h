// SPDX-License-Identifier: MIT

/// @file
/// Names for temporary files, and the sweep of old leftovers.
///
/// A name is only proposed: nothing is created, and somebody else may take it before you do. Open
/// it with `O_EXCL` where that matters.
///
/// **Where the name lies** is the C library's `tempnam` to say, which takes the first of these that
/// is a directory, whether or not you may write there: the environment's `TMPDIR`, what is asked
/// for, and "/tmp". So `TMPDIR` overrides setTempDirectory() here. The name itself is up to 5 bytes
/// of "PREFIX.PID" (whole characters of UTF-8), 6 characters that make it new there, and the
/// suffix.
///
/// Any thread may call these while none changes the environment or the temporary directory.
///
/// @code
/// #include "Base/OS/zeOSFileOperations.h"
/// const zeOS::Filename name = zeOS::createTmpFilename(L"txt", L"notes");
/// assert(name.baseSuffix() == L"txt" && name.basename().find(L"notes") == 0);
/// assert(!zeOS::doesFileExist(name));
/// @endcode

#pragma once

#include "Base/OS/zeOSFilename.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// A name in getTempDirectory(), with `suffix` behind a "." unless it is empty. A null `prefix` is
/// "ASTMP". Empty where there is no directory to be found.
ZEBASE_API Filename createTmpFilename(zeString::IString suffix, const wchar_t* prefix);

/// The same in `dir`, for a fresh name beside a document. A null `prefix` is "recover".
ZEBASE_API Filename createNewFilenameVariant(Filename dir, const wchar_t* prefix,
                                             zeString::IString suffix);

/// Deletes what certain programs left behind in `dir` seven days ago or earlier, and returns how
/// many files that were. They are known by their names; others are not looked at, nor are
/// directories, nor the files of createTmpFilename() and zeOS::ProtectedWrite.
///
/// | Begins | Ends | Characters at least |
/// |---|---|---|
/// | `eru` | `.unload` | 13 |
/// | `erubaTempWire.` | | 15 |
/// | | `.ac$` | 5 |
/// | `jam` | `out` and a digit | 10 |
/// | `jam` | `cmd`, a digit and `.bat` | 14 |
ZEBASE_API int cleanupTempDirectory(const zeString::IString& dir);
/// Sweeps getTempDirectory(), and "/tmp" as well where that is another one. The sum of both.
ZEBASE_API int cleanupTempDirectory();

} // namespace zeOS

/// The same for callers that hold plain strings, those in `char` in the locale's encoding. The
/// caller releases each result with `free`.
extern "C" {

/// getTempDirectory().
ZEBASE_API char* zeOS_GetTemporaryDirectory();
/// The same in wide characters.
ZEBASE_API wchar_t* zeOS_GetTemporaryDirectoryW();
/// createTmpFilename() without a prefix; null where that is empty.
ZEBASE_API char* zeOS_CreateTemporaryFileName(const char* suffix);
/// The same in wide characters.
ZEBASE_API wchar_t* zeOS_CreateTemporaryFileNameW(const wchar_t* suffix);

} // extern "C"

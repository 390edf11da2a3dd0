// SPDX-License-Identifier: MIT

/// @file
/// Names for temporary files, and the sweep of old leftovers.
///
/// A name is only proposed: nothing is created, and another process may take it first. Open it with
/// `O_EXCL` where that matters.
///
/// **The directory** is chosen by the C library's `tempnam`: the first of these that is a
/// directory, whether or not you may write there: the environment's `TMPDIR`, the directory that is
/// asked for, and "/tmp". So `TMPDIR` overrides setTempDirectory() here. The name itself consists
/// of up to 5 bytes of "PREFIX.PID" (whole characters of UTF-8), 6 characters that make it unique
/// there, and the suffix.
///
/// Threads: any thread may call these while none changes the environment or the temporary
/// directory.
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

/// A name in getTempDirectory(), followed by "." and `suffix` unless that is empty. A null `prefix`
/// means "ASTMP". Empty if none of the directories exists.
ZEBASE_API Filename createTmpFilename(zeString::IString suffix, const wchar_t* prefix);

/// The same in `dir`, for a fresh name beside a document. A null `prefix` means "recover".
ZEBASE_API Filename createNewFilenameVariant(Filename dir, const wchar_t* prefix,
                                             zeString::IString suffix);

/// Deletes what certain programs left behind in `dir` seven days ago or earlier, and returns how
/// many files that were. They are recognised by their names; other files stay, as do directories,
/// and the files of createTmpFilename() and zeOS::ProtectedWrite.
///
/// | Begins | Ends | Characters at least |
/// |---|---|---|
/// | `eru` | `.unload` | 13 |
/// | `erubaTempWire.` | | 15 |
/// | | `.ac$` | 5 |
/// | `jam` | `out` and a digit | 10 |
/// | `jam` | `cmd`, a digit and `.bat` | 14 |
ZEBASE_API int cleanupTempDirectory(const zeString::IString& dir);
/// Sweeps getTempDirectory(), and "/tmp" as well if that is another one. Returns the sum.
ZEBASE_API int cleanupTempDirectory();

} // namespace zeOS

/// The same for callers that hold plain strings, those in `char` in the locale's encoding. The
/// caller releases each result with `free`.
extern "C" {

/// getTempDirectory().
ZEBASE_API char* zeOS_GetTemporaryDirectory();
/// The same in wide characters.
ZEBASE_API wchar_t* zeOS_GetTemporaryDirectoryW();
/// createTmpFilename() without a prefix; null if that is empty.
ZEBASE_API char* zeOS_CreateTemporaryFileName(const char* suffix);
/// The same in wide characters.
ZEBASE_API wchar_t* zeOS_CreateTemporaryFileNameW(const wchar_t* suffix);

} // extern "C"

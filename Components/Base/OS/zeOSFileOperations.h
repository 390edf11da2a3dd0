// SPDX-License-Identifier: MIT

/// @file
/// Testing, deleting, copying, moving and renaming local files by name.
///
/// Except for doesFileExist() and isFileWritable(), which ask the zeOS::FileFactory, these work on
/// the local disk, whatever is registered. Names in `char` are in the locale's encoding, which is
/// ASCII until `setlocale(LC_ALL, "")` is called; "?" replaces what it cannot decode, so that two
/// names may become one. Prefer the others. All names are normalised as by zeOS::Filename.
///
/// **What survives.** fileDelete(), and fileRename() within one directory, are single steps of the
/// system: a killed process leaves the old state or the new one, and a power cut the old one until
/// the system has written its directories back. fileCopy(), and with it fileMove() and fileRename()
/// between directories, empties the destination first and fills it block by block: killed, it
/// leaves a part; failed, it deletes the destination, the old content of which is then gone. If the
/// destination is a symbolic link, it is the link that a failure deletes, while the file that it
/// points to stays, cut off: so it is after a full disk. None of them waits for the disk, and none
/// reports what the system finds out only in closing. Use zeOS::ProtectedWrite where an old file
/// must not be lost.
///
/// **When other users may write in the directory**, names mean what these users make of them. Each
/// function follows symbolic links in the directories of a path; fileCopy(), and what is built on
/// it, also follows a link in the place of the destination, and so may write wherever the caller
/// may write. fileDelete(), and fileRename() within one directory, work on the name itself and
/// follow no link there. What doesFileExist() and isFileWritable() say may be outdated when you act
/// on it.
///
/// Threads: any thread may call any of these; the system decides what two calls do to one file.
///
/// @code
/// #include "Base/OS/zeOSFilename.h"
/// using namespace zeOS;
/// assert(doesFileExist(Filename("/dev/null")) && isFileWritable(Filename("/dev/null")));
/// assert(fileDelete("/no/such/file").code() == 1);
/// assert(fileCopy("/dev/null", "/dev/null", true).code() == 5);
/// @endcode

#pragma once

#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

class Filename;

/// Whether a query succeeds and the file, or what a link leads to, exists. Costs one system call as
/// long as no transport factory is registered.
ZEBASE_API bool doesFileExist(const Filename& name);
/// Whether a query succeeds and the real user may write the file: see FileStatus::isWritable().
/// Costs two system calls as long as no transport factory is registered.
ZEBASE_API bool isFileWritable(const Filename& name);

/// @{
/// Removes the name of a file (`unlink`): open files keep their content until closed. Code 1, with
/// the system's message, if that fails; a directory always fails.
ZEBASE_API zeUtil::Error fileDelete(const Filename& name);
ZEBASE_API zeUtil::Error fileDelete(const char* name);
ZEBASE_API zeUtil::Error fileDelete(const wchar_t* name);
/// @}

/// @{
/// Copies the content of a file, but neither rights nor times. Links are followed.
///
/// | Code | When |
/// |---|---|
/// | 1 | either file cannot be opened, with nothing changed, or reading or writing failed |
/// | 2 | no `src`; the system's message |
/// | 3 | `dst` exists, and `overwrite` is false |
/// | 4 | `dst` is a directory |
/// | 5 | both are the same file, by whatever names |
///
/// A failed write, too, has the message "Error reading file". After a failed read or write `dst` is
/// deleted, whatever it was before. A directory as `src` is such a failure: the old `dst` is lost.
/// A FIFO is waited for.
ZEBASE_API zeUtil::Error fileCopy(const Filename& src, const Filename& dst, bool overwrite);
ZEBASE_API zeUtil::Error fileCopy(const char* src, const char* dst, bool overwrite);
ZEBASE_API zeUtil::Error fileCopy(const wchar_t* src, const wchar_t* dst, bool overwrite);
/// @}

/// @{
/// fileCopy(), then fileDelete() of the source. A failure to delete is not reported: both files
/// exist then.
ZEBASE_API zeUtil::Error fileMove(const Filename& src, const Filename& dst, bool overwrite);
ZEBASE_API zeUtil::Error fileMove(const char* src, const char* dst, bool overwrite);
ZEBASE_API zeUtil::Error fileMove(const wchar_t* src, const wchar_t* dst, bool overwrite);
/// @}

/// @{
/// If both names have the same zeOS::Filename::dirname() as text: the system's `rename`, which
/// replaces `dst` in one step. Every failure is code 6, "Unkown system error.", and `errno` has the
/// reason. Otherwise it is fileMove() with `overwrite`, with its codes and its risks: "a" to "./b"
/// is a copy.
ZEBASE_API zeUtil::Error fileRename(const Filename& src, const Filename& dst);
ZEBASE_API zeUtil::Error fileRename(const char* src, const char* dst);
ZEBASE_API zeUtil::Error fileRename(const wchar_t* src, const wchar_t* dst);
/// @}

} // namespace zeOS

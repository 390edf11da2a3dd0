// SPDX-License-Identifier: MIT

/// @file
/// Looking, deleting, copying, moving and renaming local files by name.
///
/// Except for doesFileExist() and isFileWritable(), which ask the zeOS::FileFactory, these work on
/// the local disk whatever is registered. Names in `char` are in the locale's encoding, and "?"
/// stands for what it cannot read: prefer the others. All names are normalised as zeOS::Filename
/// does it. Any thread may call any of them; what two of them do to one file at once is the
/// system's affair.
///
/// **What survives.** fileDelete(), and fileRename() within one directory, are single steps of the
/// system: a killed process leaves the old state or the new one, and a power cut the old one until
/// the system has written its directories back. fileCopy(), and with it fileMove() and fileRename()
/// between directories, empties the destination first and fills it block by block: killed, it
/// leaves a part; failed, it deletes the destination, the old content of which is then gone. None
/// of them waits for the disk, and none reports what the system finds out only in closing. Use
/// zeOS::ProtectedWrite where an old file must not be lost.
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

/// Whether a query succeeds and says so. Costs a `stat`, or two system calls, while no transport
/// factory is registered.
ZEBASE_API bool doesFileExist(const Filename& name);
ZEBASE_API bool isFileWritable(const Filename& name);

/// Removes the name of a file (`unlink`): open files keep their content until closed. Code 1, with
/// the system's message, if that fails; a directory always fails.
ZEBASE_API zeUtil::Error fileDelete(const Filename& name);
ZEBASE_API zeUtil::Error fileDelete(const char* name);
ZEBASE_API zeUtil::Error fileDelete(const wchar_t* name);

/// Copies the content of a file, following links; neither rights nor times.
///
/// | Code | When |
/// |---|---|
/// | 1 | either file cannot be opened (the source leaves all as it was), or reading or writing failed |
/// | 2 | no `src`; the system's message |
/// | 3 | `dst` exists, and `overwrite` is false |
/// | 4 | `dst` is a directory |
/// | 5 | both are the same file, by whatever names |
///
/// A failed write, too, says "Error reading file". After a failed read or write there is no `dst`,
/// whatever it was before. A directory as `src` is such a failure: its old `dst` is lost.
ZEBASE_API zeUtil::Error fileCopy(const Filename& src, const Filename& dst, bool overwrite);
ZEBASE_API zeUtil::Error fileCopy(const char* src, const char* dst, bool overwrite);
ZEBASE_API zeUtil::Error fileCopy(const wchar_t* src, const wchar_t* dst, bool overwrite);

/// fileCopy(), then fileDelete() of the source, whose failure is not reported: both files are there
/// then.
ZEBASE_API zeUtil::Error fileMove(const Filename& src, const Filename& dst, bool overwrite);
ZEBASE_API zeUtil::Error fileMove(const char* src, const char* dst, bool overwrite);
ZEBASE_API zeUtil::Error fileMove(const wchar_t* src, const wchar_t* dst, bool overwrite);

/// Within one directory, by the texts of zeOS::Filename::dirname(): the system's `rename`, which
/// replaces `dst` in one step; every failure is code 6, "Unkown system error.", and `errno` has the
/// reason. Otherwise fileMove() with `overwrite`, with its codes and its risks: "a" to "./b" is a
/// copy.
ZEBASE_API zeUtil::Error fileRename(const Filename& src, const Filename& dst);
ZEBASE_API zeUtil::Error fileRename(const char* src, const char* dst);
ZEBASE_API zeUtil::Error fileRename(const wchar_t* src, const wchar_t* dst);

} // namespace zeOS

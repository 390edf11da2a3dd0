// SPDX-License-Identifier: MIT

/// @file
/// A keyed digest of a file's name and content: tells later whether the file is still what it was
/// when the digest was stored.
///
/// **Good for** detecting any change, by accident or on purpose, by those who lack the key:
/// nobody without it can make the digest that fits another content or another name. Keep the
/// digest where you like; keep the key where those who may change the file cannot read it.
///
/// **Not good for** hiding anything (the content is not encrypted), for detecting that an *old*
/// file was put back together with its own old digest, against anyone who has the key, or for
/// passwords. A key that can be guessed protects nothing: use 32 random bytes rather than a word.
///
/// The digest is 64 lower-case hexadecimal digits: HMAC-SHA-256 (RFC 2104, FIPS 180-4) under the
/// key, over
///
/// | Bytes | What |
/// |---|---|
/// | 19 | `"zeBase file hash 1"` and a zero: this version of the digest |
/// | 8 | length of the name in bytes, the lowest byte first, so that name and content cannot mix |
/// | that many | the file's base name in UTF-8, without its directory: a folder may be moved |
/// | the rest | the content |
///
/// The speed is about that of plain SHA-256 in portable code.
///
/// Threads: any thread may call these.
///
/// @code
/// #include "Base/OS/zeOSFilename.h"
/// #include "Base/Strings/zeStringCString.h"
/// zeString::CString before, after;
/// assert(zeOS::CreateFileHash(zeOS::Filename("/dev/null"), "secret", 6, before).code() == 0);
/// assert(zeOS::CreateFileHash(zeOS::Filename("/dev/null"), "secret", 6, after).code() == 0);
/// assert(zeOS::EqualFileHash(before, after) && before.length() == 64);
/// @endcode

#pragma once

#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeString {
class CString;
}

namespace zeOS {

class Filename;

/// Puts the digest of `file` into `hash`, in one pass with 64 KiB of memory, whatever its size.
/// `file` goes to whatever transport serves its name. After a failure `hash` is empty.
///
/// Codes of zeOS::File:
///
/// | Code | When |
/// |---|---|
/// | `ErrNotImplemented` | there is no transport for the name |
/// | `ErrIO` | the content breaks off before its end: such a file never counts as complete |
/// | `ErrNotFile` | `file` is a directory |
/// | `ErrAuthenticationFailed` | the key is null or has no bytes |
/// | others | what opening or reading reports: `ErrDoesNotExist`, `ErrIO` |
[[nodiscard]] ZEBASE_API zeUtil::Error CreateFileHash(const Filename& file, const void* key,
                                                      unsigned long keyLength,
                                                      zeString::CString& hash);

/// Whether both are the same digest; false if either does not have the length of one. Use it in
/// place of `==`: it takes constant time, so that the duration does not reveal how much of a forged
/// digest was right.
[[nodiscard]] ZEBASE_API bool EqualFileHash(const zeString::CString& a, const zeString::CString& b);

} // namespace zeOS

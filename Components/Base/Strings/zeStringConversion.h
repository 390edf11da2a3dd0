// SPDX-License-Identifier: MIT

/// @file
/// Conversion between narrow and wide text. Bad text never throws: the four converters report
/// through `ok`, and put "?" where they can.
///
/// In all four, `srcLen` counts characters of the source, and 0xFFFFFFFF means that the source ends
/// at its terminator; the source must be terminated in either case. `destCap` counts characters of
/// the destination; a null `dest` (with a `destCap` of 0) makes the function count only. The result
/// is the number of characters. `ok` may be null. A null source gives 0.
///
/// The locale is the C library's (LC_CTYPE); in the "C" locale, which a program starts in, only
/// ASCII converts: call `setlocale(LC_ALL, "")` first. Text in ASCII has a fast path where the
/// locale's code set is known to extend ASCII.
///
/// Threads: any thread may call, while no thread changes the locale.
///
/// @code
/// wchar_t wide[16];
/// bool ok = false;
/// unsigned int n = zeString::UTF8toWCS("caf\xC3\xA9", 5, wide, 16, false, &ok);
/// assert(ok && n == 4 && wide[3] == 0xE9);
/// char narrow[16];
/// assert(zeString::WCStoUTF8(wide, n, narrow, 16, &ok) == 5 && ok);
/// @endcode

#pragma once

#include "Base/Strings/zeStringEncoding.h"
#include "Base/zeBaseExport.h"

namespace zeString {

/// The byte that stands for a wide character that cannot be written: "?".
ZEBASE_API char getDefaultMBChar();
/// The wide character that stands for a byte that cannot be read: "?".
ZEBASE_API wchar_t getDefaultWChar();

/// The C library's `mbstowcs(dest, src, n)`; 0xFFFFFFFF for bad text.
ZEBASE_API unsigned int getMultiByteStringSize(wchar_t* dest, const char* src, unsigned int n);

/// Locale multi-byte to wide, terminated. `dest` needs room for the terminator: with less the
/// result is 0 and nothing is written. A source longer than a stated `srcLen` is refused, not cut:
/// 0, with `ok` true. Each byte that cannot be read becomes "?", with `ok` false; with a `srcLen`
/// of 0xFFFFFFFF such a text gives nothing at all.
ZEBASE_API unsigned int MBStoWCS(const char* src, unsigned int srcLen, wchar_t* dest,
                                 unsigned int destCap, bool* ok);

/// Wide to locale multi-byte, terminated where there is room. `dest` and `srcLen` as for
/// MBStoWCS(). If any character cannot be written, `ok` is false and every character that is not a
/// single byte in the locale becomes "?"; a destination that ends before the bad character gets
/// the text up to its end.
ZEBASE_API unsigned int WCStoMBS(const wchar_t* src, unsigned int srcLen, char* dest,
                                 unsigned int destCap, bool* ok);

/// 3 if the text begins with a UTF-8 byte order mark, else 0. `len` is its length in bytes, or -1
/// for a terminated text.
ZEBASE_API unsigned int detectUTF8BOM(const char* src, int len);

/// UTF-8 to wide. A byte order mark at the start is dropped unless `keepBOM`. With a stated
/// `srcLen` no terminator is written; with 0xFFFFFFFF the terminator is converted and counted.
/// Text that is not valid, or does not fit, is repaired as MBStoWCS() would: decoded in the
/// locale's encoding, cut to fit, terminated, with `ok` false.
ZEBASE_API unsigned int UTF8toWCS(const char* src, unsigned int srcLen, wchar_t* dest,
                                  unsigned int destCap, bool keepBOM, bool* ok);

/// Wide to UTF-8. Terminator as for UTF8toWCS(). There is no repair: text with a surrogate or a
/// negative value, or that does not fit, gives 0 with `ok` false and an unspecified destination.
ZEBASE_API unsigned int WCStoUTF8(const wchar_t* src, unsigned int srcLen, char* dest,
                                  unsigned int destCap, bool* ok);

} // namespace zeString

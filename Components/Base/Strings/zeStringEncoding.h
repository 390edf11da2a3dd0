// SPDX-License-Identifier: MIT

/// @file
/// The encodings of narrow text.
///
/// Threads: plain constants, usable from any thread.
///
/// @code
/// zeString::Encoding encoding = zeString::EncodingUTF8;
/// assert(encoding == 1);
/// @endcode

#pragma once

namespace zeString {

/// Which encoding a narrow text is in. Any value but EncodingUTF8 behaves as EncodingMultibyte.
enum Encoding : int {
    EncodingMultibyte = 0, ///< That of the C library's current locale (LC_CTYPE).
    EncodingUTF8 = 1,      ///< UTF-8, whatever the locale.
};

} // namespace zeString

// SPDX-License-Identifier: MIT

/// @file
/// The encodings of narrow text.
///
/// @code
/// zeString::Encoding encoding = zeString::EncodingUTF8;
/// assert(encoding == 1);
/// @endcode

#pragma once

namespace zeString {

/// Which encoding a narrow text is in. Any value but EncodingUTF8 behaves as EncodingMultibyte.
enum Encoding : int {
    EncodingMultibyte = 0, ///< that of the C library's current locale (LC_CTYPE)
    EncodingUTF8 = 1,
};

} // namespace zeString

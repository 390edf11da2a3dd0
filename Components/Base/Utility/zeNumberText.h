// SPDX-License-Identifier: MIT

/// @file
/// Decimal text of 64-bit integers, for file formats.
///
/// The texts lie in static slots, three for signed and three for unsigned numbers, so that several
/// results can be live at once.
///
/// Threads: all threads share the slots, so that one thread at a time may ask for texts; any thread
/// may parse.
///
/// @code
/// const char* first = ze::int64ToAscii(-5, 0);
/// const char* second = ze::int64ToAscii(7, 1);
/// assert(ze::asciiToInt64(first) == -5 && ze::asciiToInt64(second) == 7);
/// assert(ze::asciiToInt64("no number") == 0);
/// @endcode

#pragma once

#include <cstdint>

#include "Base/zeBaseExport.h"

namespace ze {

/// The text of `value` in slot 0, 1 or 2, which lasts until that slot's next use.
ZEBASE_API const char* int64ToAscii(std::int64_t value, int slot);

/// The same for unsigned numbers, with slots of their own.
ZEBASE_API const char* uint64ToAscii(std::uint64_t value, int slot);

/// The number at the start of `text`, after white space and with an optional sign; 0 if there is
/// none. A number that does not fit becomes the nearest one that does.
ZEBASE_API std::int64_t asciiToInt64(const char* text);

/// The same for unsigned numbers. A minus sign is accepted and negates modulo 2 to the 64th, so
/// that "-1" is the greatest number.
ZEBASE_API std::uint64_t asciiToUInt64(const char* text);

} // namespace ze

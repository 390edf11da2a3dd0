// SPDX-License-Identifier: MIT

/// @file
/// Real numbers as the decimal text of the "C" locale, exactly as printf writes them.

#pragma once

namespace ioDecimalText {

/// The bytes that write() may touch, which are more than any text has.
inline constexpr int room = 40;

/// Writes what "%.*g" with `digits`, 7 or 16, gives for a finite `value`, without a terminator.
/// Returns the end of the text.
char* write(char* at, double value, int digits);

} // namespace ioDecimalText

// SPDX-License-Identifier: MIT

/// @file
/// Real numbers as the decimal text of the "C" locale, exactly as the C library writes and reads
/// them.

#pragma once

#include <cstdint>

namespace ioDecimalText {

/// The bytes that write() may touch, which are more than any text has.
inline constexpr int room = 40;

/// Writes what "%.*g" with `digits`, 7 or 16, gives for a finite `value`, without a terminator.
/// Returns the end of the text.
char* write(char* at, double value, int digits);

/// Appends the digits at `at` to `number`, which may overflow with the twentieth; returns their
/// end.
inline const char* readDigits(const char* at, std::uint64_t& number) {
    for (unsigned digit; (digit = static_cast<unsigned>(*at) - '0') <= 9; ++at)
        number = 10 * number + digit;
    return at;
}

/// Reads a number in the common form, to the value of strtod(): a minus sign or none, up to 19
/// digits with or without a point, and a blank. Returns the place of the blank; null for a text in
/// another form, and where the digits make a number above 2^53. Reads up to the first byte that
/// does not fit the form: a text without a blank needs a terminator.
const char* read(const char* at, double& value);

} // namespace ioDecimalText

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
    for (; *at >= '0' && *at <= '9'; ++at)
        number = 10 * number + static_cast<std::uint64_t>(*at - '0');
    return at;
}

/// Reads the value that strtod() gives for the text from `at` to `end`, behind which stands a 0.
/// Returns the end of the number; null for what is left to strtod(): white space, a plus sign,
/// hexadecimal numbers, "inf" and "nan", what is no number, and what is out of range.
const char* read(const char* at, const char* end, double& value);

} // namespace ioDecimalText

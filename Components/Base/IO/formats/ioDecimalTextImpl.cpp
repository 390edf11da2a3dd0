// SPDX-License-Identifier: MIT

#include "Base/IO/formats/ioDecimalTextImpl.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

// Writing: numbers of the usual magnitudes are scaled exactly, in 128 bits, and rounded once; short
// ones take as long as those that need all digits. to_chars() writes the others.
// Reading: one division of exact operands.

namespace {

__extension__ using Wide = unsigned __int128;

constexpr std::uint64_t tenTo7 = 10'000'000;
constexpr std::uint64_t tenTo8 = 100'000'000;
constexpr std::uint64_t tenTo9 = 1'000'000'000;
constexpr std::uint64_t tenTo16 = tenTo8 * tenTo8;

/// The values that are scaled: those from `lowest` to below `highest7` or `highest16`, by digits.
constexpr double lowest = 0x1p-56; // 1.4e-17
constexpr double highest7 = 0x1p23;
constexpr double highest16 = 0x1p49; // 5.6e14

/// 5 to the power of 0 to 32. A product with the 53 bits of a double is at most 0.62 of 2^128.
constexpr auto powersOfFive = [] {
    std::array<Wide, 33> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = 5 * powers[i - 1];
    return powers;
}();
static_assert(powersOfFive.back() < ~Wide{0} >> 53);

/// d.ddd times ten to the power of `exponent`, its digits as an integer of 16 digits.
struct Decimal {
    std::uint64_t digits;
    int exponent;
};

/// Rounds a value of those above to 7 or 16 digits, a tie to the even digit, as printf does.
///
/// With value = mantissa * 2^(binary - 52), value * 10^power = mantissa * 5^power / 2^shift. The
/// product is exact, so that the shift is the only rounding. Within the limits above, power is at
/// least 0 (with 16 digits 1) and at most 32, and shift from 3 to 85.
Decimal rounded(double value, int digits) {
    constexpr std::uint64_t hiddenBit = std::uint64_t{1} << 52;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const std::uint64_t mantissa = (bits & (hiddenBit - 1)) | hiddenBit;
    const int binary = static_cast<int>(bits >> 52) - 1023;
    const std::uint64_t limit = digits == 16 ? tenTo16 : tenTo7;

    // The decimal exponent of 2^binary: 1233 / 4096 is the logarithm of 2 less 0.000005, and up to
    // 56 times the logarithm comes no nearer to an integer than 0.01. Value has the same, or one
    // more.
    int exponent = binary * 1233 >> 12;
    for (;; ++exponent) {
        const int power = digits - 1 - exponent;
        const int shift = 52 - binary - power;
        const Wide product = powersOfFive[static_cast<std::size_t>(power)] * mantissa;
        const auto whole = static_cast<std::uint64_t>(product >> shift);
        if (whole >= limit)
            continue;
        const Wide half = Wide{1} << (shift - 1);
        auto result = static_cast<std::uint64_t>((product + half - 1 + (whole & 1)) >> shift);
        if (result == limit) { // 9.99... has become 10
            result /= 10;
            ++exponent;
        }
        return {digits == 16 ? result : result * tenTo9, exponent};
    }
}

/// The eight digits of a number below 10^8, a byte each, the first one lowest. The number becomes
/// two of four digits side by side, then four of two, then eight of one.
constexpr std::uint64_t digitBytes(std::uint64_t number) {
    std::uint64_t parts = number / 10000 | (number % 10000) << 32;
    const std::uint64_t hundreds = (parts * 10486 >> 20) & 0x7f0000007f; // exact up to 9999
    parts = hundreds | (parts - 100 * hundreds) << 16;
    const std::uint64_t tens = (parts * 103 >> 10) & 0xf000f000f000f; // exact up to 99
    return tens | (parts - 10 * tens) << 8;
}
static_assert(digitBytes(12345678) == 0x0807060504030201);
static_assert([] {
    for (std::uint64_t i = 0; i < 10000; ++i)
        if (i * 10486 >> 20 != i / 100 || (i < 100 && i * 103 >> 10 != i / 10))
            return false;
    return true;
}());

void store(char* at, Wide bytes) {
    std::memcpy(at, &bytes, sizeof bytes);
}

/// Writes a decimal as "%g" lays it out, without trailing zeros.
char* put(char* at, Decimal decimal) {
    const std::uint64_t high = digitBytes(decimal.digits / tenTo8);
    const std::uint64_t low = digitBytes(decimal.digits % tenTo8);
    const int length = low ? 16 - std::countl_zero(low) / 8 : 8 - std::countl_zero(high) / 8;
    constexpr std::uint64_t zeros = 0x3030303030303030; // "00000000"
    const Wide text = Wide{low | zeros} << 64 | (high | zeros);

    const int exponent = decimal.exponent;
    if (exponent >= 0) {
        const int before = exponent + 1; // digits before the point, at most 15
        store(at, text);
        at[before] = '.';
        store(at + before + 1, text >> (8 * before));
        return at + (length > before ? length + 1 : before);
    }
    if (exponent >= -4) {
        std::string_view("0.000").copy(at, 5);
        at += 1 - exponent;
        store(at, text);
        return at + length;
    }
    store(at + 1, text);
    at[0] = at[1];
    at[1] = '.';
    at += length > 1 ? length + 1 : 1;
    at[0] = 'e';
    at[1] = '-';
    at[2] = static_cast<char>('0' + -exponent / 10); // at least -17
    at[3] = static_cast<char>('0' + -exponent % 10);
    return at + 4;
}

/// The powers of ten that a double holds exactly, as far as a number of 19 digits needs them.
constexpr auto powersOfTen = [] {
    std::array<double, 20> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = 10 * powers[i - 1];
    return powers;
}();
static_assert(powersOfTen.back() == 1e19);

} // namespace

char* ioDecimalText::write(char* at, double value, int digits) {
    if (std::signbit(value))
        *at++ = '-';
    value = std::abs(value);
    if (value >= lowest && value < (digits == 16 ? highest16 : highest7))
        return put(at, rounded(value, digits));
    if (value == 0) {
        *at = '0';
        return at + 1;
    }
    return std::to_chars(at, at + room - 1, value, std::chars_format::general, digits).ptr;
}

// 19 digits fit into 64 bits. A double holds integers up to 2^53 exactly, and the power of ten too:
// their quotient is rounded once, to the double nearest to the number, as by strtod().
const char* ioDecimalText::read(const char* at, double& value) {
    const bool negative = *at == '-';
    const char* const start = at + negative;
    std::uint64_t number = 0;
    const char* end = readDigits(start, number);
    std::ptrdiff_t digits = end - start;
    std::ptrdiff_t places = 0;
    if (*end == '.') {
        const char* const fraction = end + 1;
        end = readDigits(fraction, number);
        places = end - fraction;
        digits += places;
    }
    if (*end != ' ' || digits < 1 || digits > 19 || number > std::uint64_t{1} << 53)
        return nullptr;
    const double size = static_cast<double>(number) / powersOfTen[static_cast<std::size_t>(places)];
    value = negative ? -size : size;
    return end;
}

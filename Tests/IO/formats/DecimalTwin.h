// SPDX-License-Identifier: MIT

/// @file
/// Numbers as printf writes and strtod reads them, to compare ioDecimalText with.

#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "Base/IO/formats/ioDecimalTextImpl.h"

namespace decimals {

/// A text with a blank at its end. False if it is left to strtod.
inline bool expectAsStrtod(const std::string& text) {
    double value;
    const char* const end = ioDecimalText::read(text.c_str(), value);
    if (!end)
        return false;
    EXPECT_EQ(end, text.c_str() + text.size() - 1) << text;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(value),
              std::bit_cast<std::uint64_t>(std::strtod(text.c_str(), nullptr)))
        << text;
    return true;
}

inline void expectAsPrintf(double value) {
    for (const int digits : {7, 16}) {
        char expected[64];
        std::snprintf(expected, sizeof expected, "%.*g", digits, value);
        char text[ioDecimalText::room];
        const char* const end = ioDecimalText::write(text, value, digits);
        ASSERT_EQ(std::string_view(text, static_cast<std::size_t>(end - text)), expected);
        expectAsStrtod(expected + std::string(" "));
    }
}

/// Up to 20 digits, with or without a minus sign and a point.
inline std::string decimal(std::mt19937_64& random) {
    std::string text = std::to_string(random() >> random() % 64);
    if (const std::size_t point = random() % 40; point <= text.size())
        text.insert(point, ".");
    return (random() % 2 ? "-" : "") + text + ' ';
}

/// A number half-way between two of `digits` digits: odd / 2^places has the decimal digits of
/// odd * 5^places, which are one too many, and the last is 5.
inline double tie(std::mt19937_64& random, int digits) {
    const int places = 1 + static_cast<int>(random() % 20);
    const double scale = std::pow(10, digits) / std::pow(5, places);
    const double odd = std::floor(scale * (1 + static_cast<double>(random() % 900) / 100));
    return std::ldexp(2 * std::floor(odd / 2) + 1, -places);
}

/// Any bits; the usual magnitudes; ties; and what documents mostly hold.
inline void expectRandomNumbers(int rounds, unsigned seed) {
    std::mt19937_64 random(seed);
    int read = 0;
    for (int i = 0; i < rounds && !testing::Test::HasFailure(); ++i) {
        const auto any = std::bit_cast<double>(random());
        expectAsPrintf(std::isfinite(any) ? any : 0);
        expectAsPrintf(
            std::ldexp(static_cast<double>(random()), -static_cast<int>(random() % 130)));
        expectAsPrintf(tie(random, random() % 2 ? 16 : 7));
        const auto number = static_cast<double>(random() % 100'000'000 >> random() % 20);
        expectAsPrintf(-number / std::pow(10, random() % 9));
        read += expectAsStrtod(decimal(random));
    }
    EXPECT_GT(read, rounds / 2);
}

} // namespace decimals

// SPDX-License-Identifier: MIT

/// @file
/// Numbers as printf writes them, to compare ioDecimalText with.

#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string_view>

#include <gtest/gtest.h>

#include "Base/IO/formats/ioDecimalTextImpl.h"

namespace decimals {

inline void expectAsPrintf(double value) {
    for (const int digits : {7, 16}) {
        char expected[64];
        std::snprintf(expected, sizeof expected, "%.*g", digits, value);
        char text[ioDecimalText::room];
        const char* const end = ioDecimalText::write(text, value, digits);
        ASSERT_EQ(std::string_view(text, static_cast<std::size_t>(end - text)), expected);
    }
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
inline void expectRandomAsPrintf(int rounds, unsigned seed) {
    std::mt19937_64 random(seed);
    for (int i = 0; i < rounds && !testing::Test::HasFatalFailure(); ++i) {
        const auto any = std::bit_cast<double>(random());
        expectAsPrintf(std::isfinite(any) ? any : 0);
        expectAsPrintf(
            std::ldexp(static_cast<double>(random()), -static_cast<int>(random() % 130)));
        expectAsPrintf(tie(random, random() % 2 ? 16 : 7));
        const auto number = static_cast<double>(random() % 100'000'000 >> random() % 20);
        expectAsPrintf(-number / std::pow(10, random() % 9));
    }
}

} // namespace decimals

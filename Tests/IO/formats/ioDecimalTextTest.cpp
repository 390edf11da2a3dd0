// SPDX-License-Identifier: MIT

#include <limits>

#include "IO/formats/DecimalTwin.h"

TEST(DecimalText, IsThatOfTheCLibrary) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double base : {2.0, 10.0}) // where the digits, and the ways to them, change
        for (int power = -70; power <= 70; ++power)
            for (const double value : {std::pow(base, power), 0.9999999 * std::pow(base, power)})
                for (const double sign : {-1.0, 1.0}) {
                    decimals::expectAsPrintf(sign * value);
                    decimals::expectAsPrintf(sign * std::nextafter(value, 0));
                    decimals::expectAsPrintf(sign * std::nextafter(value, infinity));
                }
    for (const double value : {0.0, -0.0, 5e-324, 2.2250738585072011e-308, 1.7976931348623157e308})
        decimals::expectAsPrintf(value);
    decimals::expectRandomNumbers(30'000, 1);
}

TEST(DecimalText, LeavesWhatNeedsMoreToTheCLibrary) {
    for (const char* text : {"0 ", "-0. ", ".5 ", "-12.50 ", "9007199254740992 ",
                             "000000000000000000.1 ", "900719925.4740992 "})
        EXPECT_TRUE(decimals::expectAsStrtod(text)) << text;
    for (const char* text : {" ", "- ", ". ", "-. ", "+1 ", "1e5 ", "0x1 ", "inf ", "5", "5\n ",
                             "1..2 ", "--1 ", "9007199254740993 ", "00000000000000000001 "})
        EXPECT_FALSE(decimals::expectAsStrtod(text)) << text;
}

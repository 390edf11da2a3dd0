// SPDX-License-Identifier: MIT

#include "Base/Utility/zeNumberText.h"

#include <cstdint>

#include <gtest/gtest.h>

TEST(NumberText, ReadsWhatScanfReadsAndWritesItBack) {
    const struct {
        const char* text;
        std::int64_t number;
        std::uint64_t unsignedNumber; // "-1" is the greatest
    } cases[] = {
        {"", 0, 0},
        {" \t\n+42nd", 42, 42},
        {"0x10", 0, 0},
        {"-1", -1, UINT64_MAX},
        {"18446744073709551615", INT64_MAX, UINT64_MAX},
        {"99999999999999999999999", INT64_MAX, UINT64_MAX},
        {"-9223372036854775808", INT64_MIN, 9223372036854775808u},
        {"-99999999999999999999999", INT64_MIN, UINT64_MAX},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(ze::asciiToInt64(c.text), c.number);
        EXPECT_EQ(ze::asciiToUInt64(c.text), c.unsignedNumber);
        for (int slot = 0; slot < 3; ++slot) {
            const char* text = ze::int64ToAscii(c.number, slot);
            const char* other = ze::int64ToAscii(5, (slot + 1) % 3); // another slot
            EXPECT_EQ(ze::asciiToInt64(text), c.number);
            EXPECT_EQ(ze::asciiToUInt64(ze::uint64ToAscii(c.unsignedNumber, slot)),
                      c.unsignedNumber);
            EXPECT_EQ(ze::asciiToInt64(text), c.number) << "unsigned numbers have their own slots";
            EXPECT_STREQ(other, "5");
        }
    }
}

// SPDX-License-Identifier: MIT

#include "Base/Utility/zeNumberText.h"

#include <cinttypes>
#include <cstdio>
#include <limits>

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t all = std::numeric_limits<std::uint64_t>::max();

TEST(NumberText, WritesWhatPrintfWrites) {
    for (std::int64_t value :
         {std::int64_t(0), std::int64_t(-1), std::int64_t(10), least, greatest}) {
        char expected[32];
        std::snprintf(expected, sizeof expected, "%" PRId64, value);
        EXPECT_STREQ(ze::int64ToAscii(value, 0), expected);
        std::snprintf(expected, sizeof expected, "%" PRIu64, std::uint64_t(value));
        EXPECT_STREQ(ze::uint64ToAscii(std::uint64_t(value), 2), expected);
    }
}

TEST(NumberText, KeepsSixResultsAtOnce) {
    const char* texts[6];
    for (int slot = 0; slot < 3; ++slot) {
        texts[slot] = ze::int64ToAscii(-slot, slot);
        texts[3 + slot] = ze::uint64ToAscii(std::uint64_t(slot) + 10, slot);
    }
    EXPECT_STREQ(texts[1], "-1");
    EXPECT_STREQ(texts[2], "-2");
    EXPECT_STREQ(texts[3], "10");
    EXPECT_STREQ(texts[5], "12");
    EXPECT_EQ(ze::int64ToAscii(5, 1), texts[1]);
}

TEST(NumberText, ReadsWhatScanfReads) {
    struct Case {
        const char* text;
        std::int64_t number;
        std::uint64_t unsignedNumber;
    };
    const Case cases[] = {
        {"", 0, 0},
        {"x1", 0, 0},
        {"-", 0, 0},
        {" \t\n+42nd", 42, 42},
        {"007", 7, 7},
        {"0x10", 0, 0},
        {"-1", -1, all},
        {"- 1", 0, 0},
        {"9223372036854775807", greatest, 9223372036854775807u},
        {"18446744073709551615", greatest, all},
        {"99999999999999999999999", greatest, all},
        {"-9223372036854775808", least, 9223372036854775808u},
        {"-99999999999999999999999", least, all},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(ze::asciiToInt64(c.text), c.number);
        EXPECT_EQ(ze::asciiToUInt64(c.text), c.unsignedNumber);
        std::int64_t scanned = 0;
        std::sscanf(c.text, "%" SCNd64, &scanned);
        EXPECT_EQ(ze::asciiToInt64(c.text), scanned);
    }
}

} // namespace

// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilInterval.h"

#include <limits>

#include <gtest/gtest.h>

#include "Base/Utility/zeUtilError.h"

using zeUtil::Interval;

namespace {

constexpr int most = std::numeric_limits<int>::max();

} // namespace

TEST(Interval, ReadsTextsAndTruncatesSeconds) {
    const struct {
        Interval interval;
        int seconds;
        int microseconds;
    } rows[] = {
        {"0s", 0, 0},
        {"1500ms", 1, 500000},
        {"2min", 120, 0},
        {"1h", 3600, 0},
        {"1000001us", 1, 1},
        {"007s", 7, 0},
        {"2147483647s", most, 0},
        {"2147483648s", -most - 1, 0},
        {"4294967297s", 1, 0},      // wraps
        {"4294967295ms", 0, -1000}, // -1 ms
        {"3000000000us", -1294, -967296},
        {"71582789min", 44, 0}, // 60 times it is 2^32 + 44
        {0.0, 0, 0},
        {-1.5, 1, 500000},
        {2.3, 2, 299999},
        {0.000249, 0, 248},
        {0.0000009, 0, 0},
        {2147483647.5, most, 500000},
        {2147483648.0, most, 999999},
        {-1e300, most, 999999},
        {std::numeric_limits<double>::infinity(), most, 999999},
        {std::numeric_limits<double>::quiet_NaN(), most, 999999},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.interval.seconds, row.seconds) << "row " << &row - rows;
        EXPECT_EQ(row.interval.microseconds, row.microseconds) << "row " << &row - rows;
    }
    EXPECT_EQ(Interval("1250ms").dseconds(), 1.25);
}

TEST(Interval, RefusesOtherTexts) {
    const char* const none = nullptr;
    for (const char* text : {none, "", "5", "5 s", " 5s", "5s ", "ms", "-5s", "+5s", "5.0s", "5S",
                             "5m", "5mins", "5sec", "5u", "0x5s"}) {
        try {
            Interval interval(text);
            ADD_FAILURE() << text << " is " << interval.dseconds();
        } catch (const zeUtil::Error& error) {
            EXPECT_EQ(error, zeUtil::Error(1, "Bad time string"));
        }
    }
}

TEST(Interval, ComparesSecondsFirst) {
    EXPECT_LT(Interval("1s"), Interval("1001ms"));
    EXPECT_LT(Interval("1999999us"), Interval("2s"));
    EXPECT_FALSE(Interval("2s") < Interval("1999999us") || Interval("1s") < Interval("1000ms"));
    EXPECT_TRUE(Interval("60s") == Interval("1min") && Interval("1us") != Interval());
}

// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSStopWatch.h"

#include <gtest/gtest.h>

#include "Support/FakeTime.h"

using zeOS::StopWatch;

TEST(StopWatch, AddsUpStretches) {
    FakeTime time;
    StopWatch watch;
    EXPECT_EQ(watch.stop(), 0);
    EXPECT_EQ(watch.start(), 0);
    time.advance(1500);
    EXPECT_TRUE(watch.running());
    EXPECT_DOUBLE_EQ(watch.check(), 1.5);
    time.advance(500);
    EXPECT_DOUBLE_EQ(watch.stop(), 2);
    time.advance(7000); // stopped
    EXPECT_DOUBLE_EQ(watch.stop(), 2);
    EXPECT_DOUBLE_EQ(watch.start(), 2);
    time.advance(1000);
    EXPECT_DOUBLE_EQ(watch.start(), 2); // the stretch so far is forgotten
    time.advance(250);
    EXPECT_DOUBLE_EQ(watch.clear(), 2.25);
    EXPECT_FALSE(watch.running());
    EXPECT_EQ(watch.check(), 0);
}

TEST(StopWatch, MeasuresAcrossTheEndOf32Bits) {
    FakeTime time;
    const StopWatch watch;
    StopWatch::CurTime from, to;
    time.now = 2147483647000000000;
    watch.now(from);
    time.advance(1250);
    watch.now(to);
    EXPECT_EQ(to.seconds, -2147483647 - 1);
    EXPECT_EQ(to.nanoseconds, 250000000);
    EXPECT_DOUBLE_EQ(watch.getDelta(from, to), 1.25);
    EXPECT_DOUBLE_EQ(watch.getDelta(to, from), -1.25);
}

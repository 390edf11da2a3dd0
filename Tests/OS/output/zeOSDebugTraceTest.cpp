// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSDebugTrace.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <regex>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSDebugChannel.h"
#include "Base/OS/zeOSDebugContextTime.h"
#include "Base/OS/zeOSDebugTraceManager.h"
#include "Base/OS/zeOSSleep.h"
#include "Support/FakeTime.h"

#include "OS/output/StatusCapture.h"

using zeOS::DebugChannel;
using zeOS::DebugChannelTab;
using zeOS::DebugContextTime;
using zeOS::DebugScopeTime;
using zeOS::DebugTrace;
using zeOS::DebugTraceManager;

namespace {

/// The text without the time since the program's start, which opens each line in 9 columns or more.
std::string blanked(const std::string& text) {
    static const std::regex time("^((?:    )*) {0,3}[0-9]+\\.[0-9]{4}", std::regex::multiline);
    return std::regex_replace(text, time, "$1<time>");
}

class DebugTraceTest : public testing::Test {
protected:
    StatusCapture capture;
    FakeTime time;
};

/// In a process of its own, since a category stays enabled for ever: writes the names of the traces
/// that are on to standard error.
[[noreturn]] void endWithSelectedTraces(void (*enable)(DebugTraceManager&)) {
    const StatusCapture capture;
    enable(DebugTraceManager::getInstance());
    DebugTrace traces[] = {{"none", 0},
                           {"io", 0, "io"},
                           {"net", 0, "net"},
                           {"io+net", 0, "io", "net"},
                           {"net+io", 0, "net", "io"}};
    for (DebugTrace& trace : traces)
        trace.print("");
    const std::regex line(" *[0-9.]+ trace: (.*)\\.  \n");
    std::fputs(std::regex_replace(capture.status(), line, "$1 ").c_str(), stderr);
    std::_Exit(0);
}

using DebugChannelTest = DebugTraceTest;
using DebugContextTimeTest = DebugTraceTest;

} // namespace

TEST_F(DebugTraceTest, PrintsWhatBeginsAndEnds) {
    DebugTrace load("load", 0);
    DebugTrace decode("decode", 0);
    load.start("scene.zd");
    time.advance(100);
    decode.start(nullptr);
    time.advance(20);
    EXPECT_DOUBLE_EQ(decode.tick(nullptr), 0.02);
    time.advance(30);
    EXPECT_DOUBLE_EQ(decode.tick("half"), 0.05);
    EXPECT_DOUBLE_EQ(decode.stop(), 0.05);
    load.print("sound");
    load.print(nullptr);
    load.start("again"); // within itself
    time.advance(200);
    EXPECT_DOUBLE_EQ(load.stop(), 0.2);
    EXPECT_DOUBLE_EQ(load.stop(), 0.35);
    EXPECT_EQ(load.stop(), 0); // and prints nothing
    EXPECT_EQ(load.tick(nullptr), 0);
    EXPECT_EQ(blanked(capture.status()),
              "<time> Start trace: load scene.zd\n"
              "    <time> Start trace: decode \n"
              "        <time> tick trace: decode now 0.0200\n"
              "        <time> tick trace: decode half now 0.0500\n"
              "    <time> End trace: decode elapsed 0.0500 total 0.0500 calls 1\n"
              "    <time> trace: load.  sound\n"
              "    <time> Start trace: load again\n"
              "    <time> End trace: load elapsed 0.2000 total 0.2000 calls 2\n"
              "<time> End trace: load elapsed 0.3500 total 0.5500 calls 2\n"
              "<time> tick trace: load now 0.0000\n");
}

TEST_F(DebugTraceTest, PrintsNothingWhileItIsOff) {
    DebugTrace trace("quiet", 0);
    trace.start("running");
    trace.setEnabled(false);
    trace.start(nullptr);
    trace.print("text");
    EXPECT_EQ(trace.tick("text"), 0);
    EXPECT_EQ(trace.stop(), 0);
    trace.setEnabled(true);
    time.advance(10);
    EXPECT_DOUBLE_EQ(trace.stop(), 0.01); // what was begun while it was on
    EXPECT_EQ(blanked(capture.status()),
              "<time> Start trace: quiet running\n"
              "<time> End trace: quiet elapsed 0.0100 total 0.0100 calls 1\n");
}

TEST_F(DebugTraceTest, ReadsTheLevelWhenItIsMade) {
    capture.output.status.setLevel(1);
    DebugTrace shown("shown", 1);
    DebugTrace hidden("hidden", 2);
    capture.output.status.setLevel(2);
    hidden.print("still hidden");
    capture.output.status.setLevel(0);
    zeOS::AppMain::getInstance().getElapsed(); // starts to count
    time.advance(12345);
    shown.print("still shown");
    char expected[64];
    std::snprintf(expected, sizeof expected, "%9.4f trace: shown.  still shown\n",
                  zeOS::AppMain::getInstance().getElapsed());
    EXPECT_EQ(capture.status(), expected);
}

TEST(DebugTrace, IsSelectedByItsCategories) {
    const auto expect = [](const char* selected, void (*enable)(DebugTraceManager&)) {
        EXPECT_EXIT(endWithSelectedTraces(enable), testing::ExitedWithCode(0),
                    testing::StrEq(selected));
    };
    expect("none io net io+net net+io ", [](DebugTraceManager&) {});
    expect("none io io+net net+io ", [](DebugTraceManager& m) { m.enableCategory("io"); });
    expect("none ", [](DebugTraceManager& m) { m.enableCategory("other"); });
    expect("none io net io+net net+io ", [](DebugTraceManager& m) {
        m.enableCategory("other");
        m.enableAllCategories();
    });
}

TEST_F(DebugChannelTest, PrintsOnlyWhileItIsOn) {
    DebugChannel a;
    DebugChannel b;
    const auto print = [&](const char* when) {
        a.print("%s a\n", when);
        a.print(1, "%s a1\n", when);
        b.print("%s b\n", when);
    };
    print("off");
    a.enable(true);
    {
        const DebugChannelTab shown(a, 0);
        const DebugChannelTab tooDetailed(a, 1);
        const DebugChannelTab silent(b, 0);
        print("tab");
        b.increaseIndentLevel(); // also while it is off
        print("two");
        b.decreaseIndentLevel();
    }
    capture.output.status.setLevel(1);
    print("level");
    a.enable(false);
    DebugChannel::enableEveryChannel(true);
    EXPECT_TRUE(b.enabled());
    print("every");
    DebugChannel::enableEveryChannel(false);
    EXPECT_FALSE(b.enabled());
    print("off");
    EXPECT_EQ(capture.status(), "    tab a\n        two a\n"
                                "level a\nlevel a1\nevery a\nevery a1\nevery b\n");
}

TEST_F(DebugContextTimeTest, SharesTheTimeOutOverOutermostScopes) {
    static const char names[] = "io\0link"; // in this order in memory
    DebugContextTime& operation = DebugContextTime::getInstance();
    {
        const DebugScopeTime early(names); // no operation runs: not counted
        operation.clearAndStart("forgotten");
    }
    time.advance(5000);
    operation.clearAndStart("load");
    time.advance(100);
    for (int i = 0; i < 2; ++i) {
        const DebugScopeTime link(names + 3);
        time.advance(100);
        const DebugScopeTime io(names); // within: counts for both
        const DebugScopeTime none(nullptr);
        time.advance(200);
    }
    time.advance(300);
    operation.stopAndReport(nullptr);
    EXPECT_FALSE(operation.push());
    operation.pop("late", 1);
    EXPECT_EQ(capture.status(), "Operation 1.00sec load:\n"
                                "  40% io\n"
                                "  60% link\n"
                                "  40% OTHER\n");
}

TEST_F(DebugContextTimeTest, ReportsByTheSwitchOfTheChannel) {
    static const char names[] = "x\0x"; // equal texts, two entries
    DebugContextTime& operation = DebugContextTime::getInstance();
    DebugChannel channel;
    operation.clearAndStart("quiet");
    operation.stopAndReport(&channel);
    channel.enable(true);
    operation.clearAndStart("loud");
    EXPECT_TRUE(operation.push());
    time.advance(8000);
    operation.pop(names, 1);
    EXPECT_TRUE(operation.push());
    operation.pop(names + 2, 2);
    operation.stopAndReport(&channel);
    operation.clearAndStart("nothing"); // whose shares are not numbers
    operation.stopAndReport(nullptr);
    EXPECT_THAT(capture.status(),
                testing::MatchesRegex("Operation 8.00sec loud:\n  12% x\n  25% x\n  0% OTHER\n"
                                      "Operation 0.00sec nothing:\n  -?nan% OTHER\n"));
}

TEST(Sleep, TakesMillisecondsBelowASecondForMicroseconds) {
    FakeTime time;
    const long cases[][3] = {
        {2000, 2, 0}, {1500, 1, 500000}, {999, 0, 999000}, {0, 0, 0}, {-1500, -1, -500000}};
    for (const auto& [milliseconds, seconds, nanoseconds] : cases) {
        zeOS::sleep(static_cast<int>(milliseconds));
        EXPECT_EQ(time.sleeps.back().tv_sec, seconds);
        EXPECT_EQ(time.sleeps.back().tv_nsec, nanoseconds);
    }
    EXPECT_EQ(time.sleeps.size(), 5u);
}

TEST(Sleep, SpinsUntilTheTimeIsOver) {
    FakeTime time;
    time.millisecondsPerReading = 250;
    const long start = time.now;
    zeOS::spin(2000); // a reading to start, and eight until two seconds are over
    EXPECT_EQ(time.now - start, 2250000000);
}

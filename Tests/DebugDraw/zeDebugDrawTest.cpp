// SPDX-License-Identifier: MIT

#include "Base/DebugDraw/zeDebugDraw.h"

#include <csignal>
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

TEST(DebugDrawDeathTest, ForwardsEachCallUntilTheEndOfTheProcess) {
    setenv("ZE_DEBUGDRAW_PLUGIN", DRAWING, 1);
    const zeLinear::Point a(1, 2, 3), b(4, 5, 6);
    EXPECT_EXIT(
        {
            zeDebugDraw::drawPoint(a);
            zeDebugDraw::drawAddPoint(b);
            zeDebugDraw::drawLine(a, b);
            zeDebugDraw::drawAddLine(b, a);
            zeDebugDraw::drawAnnotation(a, "here");
            zeDebugDraw::drawAddAnnotation(b, "there");
            zeDebugDraw::highlit();
            zeDebugDraw::clear();
            zeDebugDraw::show();
            zeDebugDraw::show("view");
            std::exit(0);
        },
        testing::ExitedWithCode(0),
        testing::Eq(std::string(
            "asked 0 0 \npoint 1 0 \naddPoint 4 0 \nline 1 4 \naddLine 4 1 \ntext 1 0 here\n"
            "add 4 0 there\nhighlit 0 0 \nclear 0 0 \nshow 0 0 \nshow 0 0 view\nclosed 0 0 \n"
            "destroyed 0 0 \n")));
}

TEST(DebugDrawDeathTest, EndsTheProcessWithoutAPlugin) {
    unsetenv("ZE_DEBUGDRAW_PLUGIN");
    EXPECT_EXIT(zeDebugDraw::clear(), testing::KilledBySignal(SIGABRT), "");
    for (const char* plugin : {"/no/such/plugin.so", LACKING}) {
        setenv("ZE_DEBUGDRAW_PLUGIN", plugin, 1);
        EXPECT_EXIT(zeDebugDraw::clear(), testing::KilledBySignal(SIGABRT), "") << plugin;
    }
}

// SPDX-License-Identifier: MIT

#include "Base/DebugDraw/zeDebugDraw.h"

#include <csignal>
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using zeLinear::Point;

TEST(DebugDrawDeathTest, ForwardsEachCallUntilTheEndOfTheProcess) {
    setenv("ZE_DEBUGDRAW_PLUGIN", DRAWING, 1);
    const Point a(1, 2, 3), b(4, 5, 6);
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
        testing::Eq(std::string("asked\ndrawPoint 1 2 3\ndrawAddPoint 4 5 6\n"
                                "drawLine 1 2 3\n to 4 5 6\ndrawAddLine 4 5 6\n to 1 2 3\n"
                                "here 1 2 3\nadded there 4 5 6\n"
                                "highlit\nclear\nshow\nshow view\nclosed\ndestroyed\n")));
}

TEST(DebugDrawDeathTest, EndsTheProcessWithoutAPlugin) {
    const struct {
        const char *plugin, *drawing;
    } cases[] = {
        {nullptr, nullptr},              // not set
        {"/no/such/plugin.so", nullptr}, // not there
        {LIBRARY, nullptr},              // lacks the function
        {DRAWING, "none"},               // gives null
    };
    for (const auto& [plugin, drawing] : cases) {
        plugin ? setenv("ZE_DEBUGDRAW_PLUGIN", plugin, 1) : unsetenv("ZE_DEBUGDRAW_PLUGIN");
        drawing ? setenv("NO_DRAWING", drawing, 1) : unsetenv("NO_DRAWING");
        EXPECT_EXIT(zeDebugDraw::clear(), testing::KilledBySignal(SIGABRT), "") << plugin;
    }
}

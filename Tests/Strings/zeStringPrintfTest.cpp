// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringPrintf.h"

#include <cstdlib>
#include <cwchar>

#include <gtest/gtest.h>

namespace {

TEST(Printf, CountsAnExactlyFilledBufferAsFailure) {
    const struct {
        std::size_t size;
        const char* text;
        int result;
    } cases[] = {{4, "abcd", -1}, {4, "abc", -1}, {4, "ab", 2}, {4, "", 0},
                 {2, "", 0},      {1, "", -1},    {0, "", -1},  {0, "abc", -1}};
    for (const auto& c : cases) {
        char narrow[8] = "";
        wchar_t wide[8] = L"";
        EXPECT_EQ(ZL_snprintf(narrow, c.size, "%s", c.text), c.result) << c.size << c.text;
        EXPECT_EQ(ZL_swprintf(wide, c.size, L"%s", c.text), c.result) << c.size << c.text;
        if (c.result >= 0) {
            EXPECT_STREQ(narrow, c.text);
            EXPECT_EQ(std::wcslen(wide), static_cast<std::size_t>(c.result));
        }
    }
}

TEST(Printf, TakesNarrowAndWideArgumentsInBothWidths) {
    char narrow[16];
    wchar_t wide[16];
    EXPECT_EQ(ZL_snprintf(narrow, 16, "%s|%S", "a", L"b"), 3);
    EXPECT_STREQ(narrow, "a|b");
    wchar_t* format = ZL_convert_string_format(L"%s|%S");
    EXPECT_EQ(ZL_swprintf(wide, 16, format, "a", L"b"), 3);
    EXPECT_STREQ(wide, L"a|b");
    std::free(format);
}

} // namespace

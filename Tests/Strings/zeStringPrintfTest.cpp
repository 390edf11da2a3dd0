// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringPrintf.h"

#include <cstdlib>
#include <string>
#include <utility>

#include <gtest/gtest.h>

TEST(Printf, CountsAnExactlyFilledBufferAsFailure) {
    const std::pair<std::size_t, int> cases[] = {{4, 2}, {3, -1}, {1, -1}, {0, -1}};
    wchar_t* format = ZL_convert_string_format(L"%s%S");
    for (const auto& [size, result] : cases) {
        char narrow[8] = "";
        wchar_t wide[8] = L"";
        EXPECT_EQ(ZL_snprintf(narrow, size, "%s%S", "a", L"b"), result) << size;
        EXPECT_EQ(ZL_swprintf(wide, size, format, "a", L"b"), result) << size;
        EXPECT_EQ(result < 0 || (narrow == std::string("ab") && wide == std::wstring(L"ab")), true);
    }
    std::free(format);
}

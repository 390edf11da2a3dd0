// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSEnvironment.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "Support/Locale.h"

using zeOS::GetEnv;
using zeOS::GetEnvExists;
using zeString::IString;

namespace {

constexpr const char* name = "ZE_TEST_VARIABLE";

/// The variable has a value while the object lives.
struct Variable {
    explicit Variable(const std::string& value) { setenv(name, value.c_str(), 1); }
    ~Variable() { unsetenv(name); }
};

using EnvironmentLocale = support::Utf8LocaleTest;

} // namespace

TEST(Environment, LeavesDefaultsWhereNothingIsSet) {
    IString text("before");
    int number = 1;
    bool flag = false;
    EXPECT_FALSE(GetEnv(name) || GetEnvExists(name) || GetEnv(name, text) ||
                 GetEnv(name, number, 42) || GetEnv(name, flag, true));
    EXPECT_TRUE(text == L"before");
    EXPECT_EQ(number, 42);
    EXPECT_TRUE(flag);
}

TEST(Environment, ReadsEachValueAsEveryType) {
    struct {
        std::string value;
        int number;
        bool flag;
    } const cases[] = {
        {"", 0, false},
        {" 1\t", 1, true},
        {"+12abc", 12, false},
        {"0x10", 0, false},
        {"010", 10, false},
        {"2147483648", -2147483647 - 1, false}, // the low 32 bits
        {"99999999999999999999999", -1, false}, // of the largest long
        {"-99999999999999999999999", 0, false}, // of the smallest
        {std::string(100000, ' ') + "yes", 0, true},
        {"true", 0, true},
        {"T", 0, true},
        {" \n\v\f\r On ", 0, true},
        {"yes!", 0, false},
        {"\xC3\xBC", 0, false},
    };
    for (const auto& c : cases) {
        const Variable variable(c.value);
        IString text;
        int number = 42;
        bool flag = !c.flag;
        EXPECT_TRUE(GetEnv(name) && GetEnvExists(name) && GetEnv(name, text) &&
                    GetEnv(name, number, 42) && GetEnv(name, flag, !c.flag));
        EXPECT_TRUE(text == IString(c.value.c_str()));
        EXPECT_EQ(number, c.number) << c.value.substr(0, 30);
        EXPECT_EQ(flag, c.flag) << c.value.substr(0, 30);
    }
}

TEST_F(EnvironmentLocale, DecodesValuesInTheEncodingOfTheLocale) {
    const Variable variable("gr\xC3\xBCn\xFF");
    IString text;
    EXPECT_TRUE(GetEnv(name, text));
    EXPECT_TRUE(text == L"gr\u00FCn?");
    setenv("ZE_GR\xC3\x9CN", "set", 1);
    EXPECT_TRUE(GetEnv(L"ZE_GR\u00DCN"));
    unsetenv("ZE_GR\xC3\x9CN");
}

// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilError.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringIString.h"

using zeString::IString;
using zeUtil::Error;

namespace {

template<class Char>
Error fromList(int code, const Char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Error error(code, format, arguments);
    va_end(arguments);
    return error;
}

} // namespace

TEST(Error, BuildsItsMessageFromEveryKindOfFormat) {
    const std::pair<Error, const char*> cases[] = {
        {Error(), ""},
        {Error(5, IString(L"plain")), "plain"},
        {Error(5, "%s and %S: %d", "narrow", L"wide", 3), "narrow and wide: 3"},
        {Error(5, L"%s and %S: %d", "narrow", L"wide", 3), "narrow and wide: 3"},
        {fromList(5, "%d%%", 99), "99%"},
        {fromList(5, L"%S", L"list"), "list"},
        // A bare literal 0 would be taken for a va_list.
        {Error(5, "%d", int(0)), "0"},
        {Error(5, "%s", "\xC3\xA9"), ""}, // not a character of the "C" locale
    };
    for (const auto& [error, message] : cases) {
        EXPECT_STREQ(error.message(), message);
        EXPECT_EQ(error.code(), error == Error() ? 0 : 5);
    }
}

TEST(Error, TellsAnEmptyMessageFromNone) {
    const Error none(5, "");
    EXPECT_EQ(none, Error(5, static_cast<const char*>(nullptr)));
    EXPECT_EQ(none, Error(5, static_cast<const wchar_t*>(nullptr)));
    EXPECT_NE(none, Error(5, IString()));
    const Error empty(5, IString());
    EXPECT_EQ(empty, Error(5, "%s", "\xC3\xA9")); // a format that fails in the "C" locale
    EXPECT_EQ(empty, Error(empty));
    EXPECT_EQ(none, Error(none));
    EXPECT_NE(none, Error(6, ""));
    EXPECT_NE(Error(5, "a"), Error(5, "b"));
}

TEST(Error, OwnsItsMessage) {
    Error original(7, "kept");
    Error copy = original;
    original = Error(8, "changed");
    Error& same = copy;
    EXPECT_EQ(copy = same, Error(7, "kept"));
    EXPECT_EQ(Error(std::move(original)), Error(8, "changed"));
    EXPECT_EQ(original, Error()); // NOLINT(bugprone-use-after-move): promised to be a success
}

TEST(Error, IsTrueForSuccessAndPrintsItsCodeAndMessage) {
    const std::pair<Error, const char*> cases[] = {
        {Error(), "0"},
        {Error(0, "done"), "0: done"},
        {Error(-1, ""), "-1"},
        {Error(2, IString()), "2"},
        {Error(2, IString(L"\u00e9\u20ac")), "2: \u00e9\u20ac"}, // UTF-8 in any locale
    };
    for (const auto& [error, text] : cases) {
        const char* const message = error.message();
        const std::string before = message;
        EXPECT_EQ(testing::PrintToString(error), text);
        EXPECT_EQ(message, before) << "stays valid";
        EXPECT_TRUE(error.ok() == (error.code() == 0) && bool(error) == error.ok());
    }
}

// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringCharacter.h"

#include <cctype>
#include <cwctype>

#include <gtest/gtest.h>

#include "Support/Locale.h"

namespace {

using CharacterUtf8 = support::Utf8LocaleTest;

} // namespace

TEST(Character, TakesAByteAsUnsigned) {
    EXPECT_FALSE(zeString::isAscii('\x80') || zeString::isAscii("caf\xC3\xA9"));
    EXPECT_TRUE(zeString::isAscii("plain\x7F"));
    EXPECT_TRUE(zeString::isAscii(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(zeString::isAlnum('\xE9'));
    EXPECT_EQ(zeString::toUpper('\xE9'), '\xE9');
    EXPECT_FALSE(zeString::isLetterModifier('\xFF'));
}

TEST(Character, HasTheLineEndsTheTabAndTheDigitsOnly) {
    const auto check = [](auto c) {
        EXPECT_EQ(zeString::isNewLine(c), c == 13 || c == 10) << int(c);
        EXPECT_EQ(zeString::isTab(c), c == 9) << int(c);
        EXPECT_EQ(zeString::isDigit(c), c >= '0' && c <= '9') << int(c);
    };
    for (int c = 0; c < 256; ++c) {
        check(static_cast<char>(c));
        check(static_cast<wchar_t>(c));
    }
}

TEST(Character, KnowsItsLetterModifiers) {
    int count = 0;
    for (wchar_t c = 0; c <= 0x10FFFF; ++c)
        count += zeString::isLetterModifier(c);
    EXPECT_EQ(count, 178);
    for (wchar_t c :
         {0x2103, 0x2190, 0x2193, 0x2460, 0x2473, 0x254B, 0x30FE, 0x33CD, 0xFF04, 0xFFE0, 0xFFE5})
        EXPECT_TRUE(zeString::isLetterModifier(c)) << std::hex << int(c);
    for (wchar_t c : {0x2102, 0x2104, 0x218F, 0x2194, 0x2474, 0x33CE, 0xFF03, 0xFFDF, 0xFFE6, -1})
        EXPECT_FALSE(zeString::isLetterModifier(c)) << std::hex << int(c);
}

TEST_F(CharacterUtf8, TreatsLetterModifiersAsLettersAndTheRestAsTheLocaleDoes) {
    for (wchar_t c = 0; c <= 0xFFFF; ++c) {
        const bool letter = zeString::isLetterModifier(c);
        const auto w = static_cast<std::wint_t>(c);
        const bool alnum = std::iswalnum(w) || letter;
        ASSERT_EQ(zeString::isAlnum(c), alnum) << int(c);
        ASSERT_EQ(zeString::isAlpha(c), alnum && !std::iswdigit(w)) << int(c);
        ASSERT_EQ(zeString::isPunct(c), std::iswpunct(w) && !letter) << int(c);
        ASSERT_EQ(zeString::isPrint(c), std::iswprint(w) || letter) << int(c);
        ASSERT_EQ(zeString::isGraph(c), std::iswgraph(w) || letter) << int(c);
    }
    EXPECT_TRUE(zeString::isUpper(L'\u00C9') && zeString::isLower(L'\u00E9'));
    EXPECT_EQ(zeString::toLower(L'\u00C9'), L'\u00E9');
    EXPECT_TRUE(zeString::isSpace(L'\u3000') && zeString::isXDigit(L'f'));
}

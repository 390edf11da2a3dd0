// SPDX-License-Identifier: MIT

// Expressions that programs have long held, and what they mean. Each compiled before strings had
// `+`, `<<`, iterators, views and moves: whatever is added must leave it alone.

#include <algorithm>
#include <functional>
#include <map>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/OS/zeOSFilename.h"
#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringCharacter.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Strings/zeUtilSplit.h"

using zeOS::Filename;
using zeString::CString;
using zeString::IString;

namespace {

template<class From, class To>
constexpr bool converts = std::is_convertible_v<From, To>;
template<class T, class Result>
constexpr bool is = std::is_same_v<T, Result>;

static_assert(converts<const char*, CString> && converts<const char*, IString> &&
              converts<const wchar_t*, IString> && converts<IString, Filename>);
static_assert(!converts<CString, IString> && !converts<IString, CString> &&
              !converts<char, CString> && !converts<wchar_t, IString> &&
              !converts<const char*, Filename>);
static_assert(!std::is_nothrow_move_constructible_v<IString>); // it copies
static_assert(is<decltype(true ? std::declval<CString&>() : "x"), CString>);
static_assert(is<decltype(true ? L"x" : std::declval<const IString&>()), const IString>);
static_assert(is<decltype(zeUtil::split("a b", ' ')), std::vector<CString>>);
static_assert(is<decltype(zeUtil::split("a b", L' ')), std::vector<IString>>);

/// The overload that an argument selects.
struct Overload {
    static char of(const CString&) { return 'c'; }
    static char of(const IString&) { return 'i'; }
    static char path(const Filename&) { return 'f'; }
    static char path(const CString&) { return 'c'; }
    static char flag(const IString&) { return 'i'; }
    static char flag(bool) { return 'b'; }
};

/// Goes both ways that an operand of a comparison could take.
struct BothWays {
    operator CString() const { return "string"; }
    operator const char*() const { return "pointer"; }
};

bool isComma(char character) {
    return character == ',';
}

} // namespace

TEST(OldExpressions, SelectTheirOverloads) {
    const CString bytes("b");
    const IString wide(L"w");
    const char* const narrow = "b"; // which becomes a bool before it becomes a string
    EXPECT_TRUE(Overload::of(bytes) == 'c' && Overload::of(wide) == 'i' &&
                Overload::of(L"w") == 'i');
    EXPECT_TRUE(Overload::path(wide) == 'f' && Overload::path("b") == 'c');
    EXPECT_TRUE(Overload::flag(narrow) == 'b' && Overload::flag(wide) == 'i');
}

TEST(OldExpressions, Compare) {
    const CString bytes("abc"), none;
    const IString wide(L"abc"), cut(L"a\0b", 3);
    char array[] = "abc";
    const char* null = nullptr;
    EXPECT_TRUE(bytes == array && "abc" == bytes && bytes < "abd" && "abd" > bytes &&
                bytes >= "ab");
    EXPECT_TRUE(none == nullptr && none == 0 && null == none && bytes > null);
    EXPECT_TRUE(bytes == "abc\0d" &&
                CString("abc\0d", 5) != "abc\0d");               // a literal ends at its terminator
    EXPECT_TRUE(("abd" <=> bytes) > 0 && CString("\xFF") > "a"); // bytes are unsigned
    EXPECT_TRUE(wide == L"abc" && L"ab" < wide && wide == "abc" &&
                "abd" > wide); // narrow text is decoded
    EXPECT_TRUE(cut > L"a\0b" && cut != L"a" && cut == cut);
    EXPECT_TRUE(CString("string") == BothWays() && BothWays() == CString("string"));
    EXPECT_TRUE((std::map<CString, int, std::less<>>{{"a", 1}}).contains("a"));
    EXPECT_EQ(std::max(CString("a"), CString("b")), "b");
}

TEST(OldExpressions, AssignAndExchange) {
    const IString whole(L"a\0b", 3);
    CString bytes("old");
    IString wide(L"old"), other;
    EXPECT_TRUE((bytes = {}).isEmpty() && (bytes = {"abc", 2}) == "ab" &&
                (bytes = nullptr).isEmpty());
    EXPECT_TRUE((wide = {}).isEmpty() && (wide = {L"abc", 2}) == L"ab" &&
                (wide = nullptr).isEmpty());
    EXPECT_TRUE((wide = {"\xC3\xB6", zeString::EncodingUTF8}) == L"\u00F6" &&
                (wide = "ab") == L"ab");
    EXPECT_TRUE((wide = whole).length() == 3 && (wide = IString(L"a\0b", 3)).length() == 3);
    other = whole;
    swap(wide, other); // what the left receives ends at its terminator
    EXPECT_TRUE(wide.length() == 1 && other.length() == 3);
    std::swap(other, wide); // by a copy of the left
    EXPECT_TRUE(wide.length() == 1 && other.length() == 1);
}

TEST(OldExpressions, Split) {
    bool (*isWideSpace)(wchar_t) = zeString::isSpace;
    EXPECT_EQ(zeUtil::split("a b", isWideSpace)[1], L"b");
    EXPECT_EQ(zeUtil::split(L"a b", zeString::isSpace)[1], L"b");
    EXPECT_EQ(zeUtil::split(
                  "a,,b", [](char c) { return c == ','; }, true)[1],
              "b");
    EXPECT_EQ(zeUtil::split(CString("a\0 b", 4), zeString::isSpace)[0].length(), 2u);
    EXPECT_TRUE(zeUtil::split({}, isComma).empty() && zeUtil::split(nullptr, isComma).empty());
    EXPECT_EQ((zeUtil::split({"a,b", 2}, isComma).size()), 1u);
}

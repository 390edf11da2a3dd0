// SPDX-License-Identifier: MIT

// Expressions that programs have long held, and what they mean. Whatever is added to the strings
// must leave them alone: each of these compiled before `+`, `<<`, iterators, views and moves were
// there.

#include <algorithm>
#include <clocale>
#include <functional>
#include <map>
#include <string>
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
using zeString::EncodingUTF8;
using zeString::isSpace;
using zeString::IString;

namespace {

template<class From, class To>
constexpr bool converts = std::is_convertible_v<From, To>;

static_assert(converts<const char*, CString> && converts<const char*, IString>);
static_assert(converts<const wchar_t*, IString> && converts<IString, Filename>);
static_assert(!converts<CString, IString> && std::is_constructible_v<IString, CString>);
static_assert(!converts<IString, CString> && !converts<char, CString> &&
              !converts<wchar_t, IString>);
static_assert(!converts<const wchar_t*, CString> && !converts<const char*, Filename>);
static_assert(std::is_nothrow_move_constructible_v<CString> &&
              std::is_nothrow_move_assignable_v<CString>);
static_assert(!std::is_nothrow_move_constructible_v<IString>); // it copies

template<class T, class Result>
constexpr bool is = std::is_same_v<T, Result>;

static_assert(is<decltype(true ? std::declval<CString&>() : "x"), CString>);
static_assert(is<decltype(true ? L"x" : std::declval<const IString&>()), const IString>);
static_assert(is<decltype(std::declval<CString&>().append("x")), CString&>);
static_assert(is<decltype(std::declval<CString&>()[0]), char&>);
static_assert(is<decltype(std::declval<const IString&>()[0]), wchar_t>);

/// The overload that an argument selects.
struct Overload {
    static char strings(const CString&) { return 'c'; }
    static char strings(const IString&) { return 'i'; }
    static char nameOrByte(const Filename&) { return 'f'; }
    static char nameOrByte(const CString&) { return 'c'; }
    static char textOrBool(const IString&) { return 'i'; }
    static char textOrBool(bool) { return 'b'; }
    template<class T>
    static char anything(const T&) {
        return 't';
    }
    static char anything(const CString&) { return 'c'; }
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
    EXPECT_EQ(Overload::strings(bytes), 'c');
    EXPECT_EQ(Overload::strings(wide), 'i');
    EXPECT_EQ(Overload::strings(L"w"), 'i');
    EXPECT_EQ(Overload::nameOrByte(wide), 'f');
    EXPECT_EQ(Overload::nameOrByte("b"), 'c');
    EXPECT_EQ(Overload::textOrBool("b"),
              'b'); // a pointer becomes a bool before it becomes a string
    EXPECT_EQ(Overload::textOrBool(wide), 'i');
    EXPECT_EQ(Overload::anything(bytes), 'c');
    EXPECT_EQ(Overload::anything("b"), 't');
}

TEST(OldExpressions, Compare) {
    const CString bytes("abc"), none;
    const IString wide(L"abc"), cut(L"a\0b", 3);
    char array[] = "abc";
    char* pointer = array;
    const char* null = nullptr;
    const wchar_t* wideNull = nullptr;
    EXPECT_TRUE(bytes == "abc" && "abc" == bytes && bytes == array && pointer == bytes);
    EXPECT_TRUE(bytes != "ab" && bytes < "abd" && "abd" > bytes && bytes >= "ab" && "a" <= bytes);
    EXPECT_TRUE(none == nullptr && none == 0 && none == null && null == none && bytes > null);
    EXPECT_TRUE(bytes == "abc\0d" &&
                CString("abc\0d", 5) != "abc\0d"); // a literal ends at its terminator
    EXPECT_TRUE((bytes <=> "abc") == 0 && ("abd" <=> bytes) > 0);
    EXPECT_TRUE(CString("\xFF") > "a"); // bytes are unsigned
    EXPECT_TRUE(wide == L"abc" && L"abc" == wide && wide < L"abd" && L"ab" < wide && wide != L"");
    EXPECT_TRUE(wide == "abc" && "abd" > wide && IString() == wideNull); // narrow text is decoded
    EXPECT_TRUE(cut > L"a\0b" && cut != L"a" && cut == cut && wide != cut);
    EXPECT_TRUE(CString("string") == BothWays() && BothWays() == CString("string"));
    EXPECT_TRUE(Filename(L"a//b").path() == L"a/b");
}

TEST(OldExpressions, Assign) {
    CString bytes("old");
    EXPECT_EQ((bytes = {}).length(), 0u);
    EXPECT_EQ((bytes = {"abc", 2}).length(), 2u);
    EXPECT_EQ((bytes = nullptr).length(), 0u);
    IString wide(L"old");
    EXPECT_EQ((wide = {}).length(), 0u);
    EXPECT_EQ((wide = {L"abc", 2}).length(), 2u);
    EXPECT_EQ((wide = {"Sch\xC3\xB6n", EncodingUTF8}).length(), 5u);
    EXPECT_EQ((wide = "narrow").length(), 6u);
    EXPECT_EQ((wide = nullptr).length(), 0u);
    const IString whole(L"a\0b", 3);
    EXPECT_EQ((wide = whole).length(), 3u);
    EXPECT_EQ(IString(whole).length(), 1u);
    EXPECT_EQ((wide = IString(L"a\0b", 3)).length(), 3u);
    EXPECT_EQ((IString{L"abc", 2}.length()), 2u);
    EXPECT_EQ((CString{"abc"}.length()), 3u);
    EXPECT_EQ((std::vector<CString>{"a", "b"}.size()), 2u);
}

TEST(OldExpressions, SwapAndMove) {
    const IString whole(L"a\0b", 3);
    IString a, b;
    a = whole, b = whole;
    swap(a, b); // what the left receives ends at its terminator
    EXPECT_TRUE(a.length() == 1 && b.length() == 3);
    a = whole, b = whole;
    std::swap(a, b); // by a copy of the left
    EXPECT_TRUE(a.length() == 3 && b.length() == 1);
    IString moved(std::move(a)); // copies
    EXPECT_EQ(moved.length(), 1u);
    CString c(1000, 'c'), d("d");
    const char* kept = c.asChar();
    std::swap(c, d);
    EXPECT_EQ(d.asChar(), kept);
    CString taken(std::move(d));
    EXPECT_TRUE(taken.asChar() == kept && c == "d");
}

TEST(OldExpressions, SortAndServeAsKeys) {
    std::vector<IString> words{L"b", "a", IString(L'c')};
    std::sort(words.begin(), words.end(), std::greater<>());
    EXPECT_EQ(words[0], L"c");
    std::map<CString, int> sizes{{"a", 1}, {"b", 2}};
    EXPECT_EQ(sizes["b"], 2);
    EXPECT_EQ(sizes.count("c"), 0u);
    std::map<CString, int, std::less<>> transparent{{"a", 1}};
    EXPECT_EQ(transparent.count("a"), 1u);
    EXPECT_EQ(std::max(CString("a"), CString("b")), "b");
}

TEST(OldExpressions, Split) {
    bool (*isWideSpace)(wchar_t) = isSpace;
    const auto comma = [](char character) { return character == ','; };
    static_assert(is<decltype(zeUtil::split("a b", ' ')), std::vector<CString>>);
    static_assert(is<decltype(zeUtil::split("a b", L' ')), std::vector<IString>>);
    static_assert(is<decltype(zeUtil::split("a b", isWideSpace)), std::vector<IString>>);
    static_assert(is<decltype(zeUtil::split("a,b", isComma)), std::vector<CString>>);
    EXPECT_EQ(zeUtil::split("a,,b", comma, true).size(), 2u);
    EXPECT_EQ(zeUtil::split("a b", isWideSpace)[1], L"b");
    EXPECT_EQ(zeUtil::split(L"a b", isSpace)[1], L"b");
    EXPECT_EQ(zeUtil::split(CString("a\0 b", 4), isSpace)[0].length(), 2u);
    EXPECT_TRUE(zeUtil::split({}, isComma).empty() && zeUtil::split(nullptr, isComma).empty());
    EXPECT_EQ((zeUtil::split({"a,b", 2}, isComma).size()), 1u);
}

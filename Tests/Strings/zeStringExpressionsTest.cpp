// SPDX-License-Identifier: MIT

// Expressions that programs have long held, and what they mean. Each compiled before strings had
// `+`, `<<`, iterators, views and moves: whatever is added must leave it alone.

#include <functional>
#include <map>
#include <sstream>
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
using zeString::IString;
using zeUtil::split;

namespace {

/// A program's own, which prints names as no library does.
std::ostream& operator<<(std::ostream& stream, const Filename&) {
    return stream << "own";
}
std::ostream& operator<<(std::ostream& stream, const IString&) {
    return stream << "own";
}

template<class From, class... To>
constexpr bool converts = (std::is_convertible_v<From, To> || ...);

static_assert(converts<const char*, CString> && converts<const char*, IString>);
static_assert(converts<const wchar_t*, IString> && converts<IString, Filename>);
static_assert(!converts<CString, IString> && !converts<IString, CString>);
static_assert(!converts<char, CString, IString> && !converts<wchar_t, CString, IString>);
static_assert(!converts<const char*, Filename> && !converts<const wchar_t*, CString>);
static_assert(std::is_same_v<decltype(true ? std::declval<CString&>() : "x"), CString>);
static_assert(std::is_same_v<decltype(split("a b", ' ')), std::vector<CString>>);
static_assert(std::is_same_v<decltype(split("a b", L' ')), std::vector<IString>>);

/// The overload that an argument selects.
struct Overload {
    static char of(const CString&) { return 'c'; }
    static char of(const IString&) { return 'i'; }
    static char path(const Filename&) { return 'f'; }
    static char path(const CString&) { return 'c'; }
};

/// Goes both ways that an operand could take.
struct BothWays {
    operator CString() const { return "s,tring"; }
    operator const char*() const { return "pointer"; }
};

/// A standard string that says what it becomes.
struct Named : std::string {
    operator const char*() const { return "named"; }
};

} // namespace

TEST(OldExpressions, CompareAndSelectOverloads) {
    const CString bytes("abc"), none;
    const IString wide(L"abc"), cut(L"a\0b", 3);
    char array[] = "abc";
    const char* null = nullptr;
    EXPECT_TRUE(bytes == array && "abc" == bytes && bytes < "abd" && "abd" > bytes);
    EXPECT_TRUE(none == nullptr && none == 0 && null == none && bytes > null);
    EXPECT_TRUE(bytes == "abc\0d" && CString("abc\0d", 5) != "abc\0d"); // ends at its terminator
    EXPECT_TRUE(("abd" <=> bytes) > 0 && CString("\xFF") > "a");        // bytes are unsigned
    EXPECT_TRUE(wide == L"abc" && L"ab" < wide);
    EXPECT_TRUE(wide == "abc" && "abd" > wide); // narrow text is decoded
    EXPECT_TRUE(cut > L"a\0b" && cut != L"a" && cut == cut);
    EXPECT_TRUE(CString("s,tring") == BothWays() && BothWays() == CString("s,tring"));
    EXPECT_TRUE((std::map<CString, int, std::less<>>{{"a", 1}}).contains("a"));
    EXPECT_TRUE(Overload::of(bytes) == 'c' && Overload::of(L"w") == 'i');
    EXPECT_TRUE(Overload::path(wide) == 'f' && Overload::path("b") == 'c');
}

TEST(OldExpressions, AssignAndExchange) {
    const IString whole(L"a\0b", 3);
    CString bytes("old");
    IString wide(L"old"), other;
    EXPECT_TRUE((bytes = {}).isEmpty() && (bytes = nullptr).isEmpty());
    EXPECT_TRUE((bytes = {"abc", 2}) == "ab" && (bytes = Named()) == "named");
    EXPECT_TRUE(CString(Named()) == "named" && IString(Named(), EncodingUTF8) == L"named");
    EXPECT_TRUE((wide = {}).isEmpty() && (wide = nullptr).isEmpty());
    EXPECT_TRUE((wide = {L"abc", 2}) == L"ab" && (wide = "ab") == L"ab");
    EXPECT_TRUE((wide = {"\xC3\xB6", EncodingUTF8}) == L"\u00F6");
    EXPECT_TRUE((wide = whole).length() == 3 && (wide = IString(L"a\0b", 3)).length() == 3);
    std::swap(wide, other); // by a copy of the left
    EXPECT_TRUE(wide.isEmpty() && other.length() == 1);
}

TEST(OldExpressions, Split) {
    const auto isComma = [](char c) { return c == ','; };
    EXPECT_EQ(split("a b", static_cast<bool (*)(wchar_t)>(zeString::isSpace))[1], L"b");
    EXPECT_EQ(split(L"a b", zeString::isSpace)[1], L"b");
    EXPECT_TRUE(split("a,,b", isComma, true)[1] == "b" && split({"a,b", 2}, isComma).size() == 1);
    EXPECT_TRUE(split({}, isComma).empty() && split(nullptr, isComma).empty());
    EXPECT_EQ(split(CString("a\0 b", 4), zeString::isSpace)[0].length(), 2u);
    EXPECT_EQ(split(BothWays(), isComma).size(), 2u);
}

TEST(OldExpressions, Print) {
    std::ostringstream stream;
    stream << Filename();
    stream << IString();
    EXPECT_EQ(stream.str(), "ownown");
}

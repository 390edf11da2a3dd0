// SPDX-License-Identifier: MIT

// The strings beside the standard library's: what compiles, what must not, and what it means. A
// std::basic_string is the twin of each string.

#include "Base/Strings/zeStringStandard.h"

#include <algorithm>
#include <clocale>
#include <compare>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <ranges>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringCharacter.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Strings/zeUtilSplit.h"
#include "Support/AllocationCount.h"

using zeString::CString;
using zeString::EncodingMultibyte;
using zeString::EncodingUTF8;
using zeString::IString;

namespace {

template<class S, class T>
concept Adds = requires(S s, const T& t) {
    s + t;
}
&&requires(S& s, const T& t) {
    s += t;
};
template<class S, class T>
concept Compares = requires(const S& s, const T& t) {
    s == t;
    t == s;
    s <=> t;
    t <= s;
};
template<class S, class T>
concept Prints = requires(S& stream, const T& t) {
    stream << t;
};

// What compiles.
static_assert(Adds<CString, CString> && Adds<CString, char[4]> && Adds<CString, const char*>);
static_assert(Adds<CString, char> && Adds<CString, std::string> && Adds<CString, std::string_view>);
static_assert(Adds<IString, IString> && Adds<IString, wchar_t[4]> && Adds<IString, wchar_t>);
static_assert(Adds<IString, std::wstring> && Adds<IString, std::wstring_view>);
static_assert(Adds<IString, const char*> && Adds<IString, char>); // in the locale's encoding
static_assert(Compares<CString, std::string> && Compares<CString, std::string_view>);
static_assert(Compares<CString, char*> && Compares<CString, char[4]>);
static_assert(Compares<IString, std::wstring> && Compares<IString, std::wstring_view>);
static_assert(Compares<IString, wchar_t*> && Compares<IString, const char*>);
static_assert(Prints<std::ostream, CString> && Prints<std::ofstream, IString>);
static_assert(std::is_convertible_v<CString, std::string_view> &&
              std::is_convertible_v<IString, std::wstring_view>);
static_assert(std::is_constructible_v<std::string, CString> &&
              std::is_assignable_v<IString&, std::wstring_view>);
static_assert(std::ranges::contiguous_range<CString> && std::ranges::sized_range<const IString>);
static_assert(std::is_constructible_v<std::span<const char>, const CString&> &&
              std::is_constructible_v<std::span<wchar_t>, IString&>);
static_assert(std::is_nothrow_move_assignable_v<IString>);

// What must not: numbers, the other width, and bytes whose encoding is not said.
static_assert(!Adds<CString, int> && !Adds<CString, wchar_t> && !Adds<IString, int>);
static_assert(!Adds<CString, std::nullptr_t> && !Adds<IString, std::nullptr_t>);
static_assert(!Adds<CString, IString> && !Adds<IString, CString> && !Adds<CString, std::wstring>);
static_assert(!Adds<IString, std::string> && !Adds<CString, wchar_t[4]>);
static_assert(!Compares<CString, IString> && !Compares<IString, std::string>);
static_assert(!Compares<CString, std::wstring_view> && !Compares<CString, char>);
static_assert(!Compares<CString, std::vector<char>>);
static_assert(!std::is_convertible_v<std::string, CString> &&
              !std::is_convertible_v<std::wstring, IString>);
static_assert(!std::is_constructible_v<IString, std::string> &&
              !std::is_constructible_v<CString, std::wstring> &&
              !std::is_assignable_v<IString&, std::string>);
static_assert(!std::is_convertible_v<CString, std::string> &&
              !std::is_constructible_v<std::wstring_view, CString> &&
              !std::is_constructible_v<std::string_view, IString>);
static_assert(!std::is_constructible_v<bool, CString> &&
              !std::is_constructible_v<const char*, CString>);
static_assert(!Prints<std::wostream, CString> && !Prints<std::wostream, IString> &&
              !Prints<std::istream, CString>);

template<class T>
using CharOf = std::remove_reference_t<decltype(std::declval<T&>()[0])>;
template<class T>
using ViewOf = std::basic_string_view<CharOf<T>>;

template<class T>
class StandardTwin : public testing::Test {
protected:
    static std::basic_string<CharOf<T>> standard(std::string_view ascii) {
        return {ascii.begin(), ascii.end()};
    }
};

using Strings = testing::Types<CString, IString>;
TYPED_TEST_SUITE(StandardTwin, Strings);

template<class T>
std::string printed(const T& value, void (*prepare)(std::ostream&)) {
    std::ostringstream stream;
    stream.fill('*');
    prepare(stream);
    stream << value << '|';
    return stream.str();
}

} // namespace

TYPED_TEST(StandardTwin, KeepsTheWholeText) {
    const auto whole = this->standard(std::string_view("a\0b", 3));
    TypeParam text(whole);
    EXPECT_TRUE(text == whole && ViewOf<TypeParam>(text) == whole && text.length() == 3);
    EXPECT_EQ(std::hash<TypeParam>()(text), std::hash<ViewOf<TypeParam>>()(whole));
    EXPECT_EQ(std::unordered_set<TypeParam>({text, text, TypeParam()}).size(), 2u);
    EXPECT_TRUE((text += whole) == whole + whole);
    EXPECT_TRUE((text = ViewOf<TypeParam>(whole).substr(1)) == whole.substr(1));
    EXPECT_TRUE((text = ViewOf<TypeParam>(text).substr(1)) ==
                this->standard("b")); // a view of the string itself
    EXPECT_TRUE((text += ViewOf<TypeParam>(text)) == this->standard("bb"));
    EXPECT_TRUE(text.append(whole).assign(this->standard("")).isEmpty());
    EXPECT_TRUE(TypeParam(ViewOf<TypeParam>()) == ViewOf<TypeParam>() &&
                (text += ViewOf<TypeParam>()).isEmpty());
}

TYPED_TEST(StandardTwin, ComparesAsTheTwinDoesAndAllocatesNothing) {
    const char* const ascii[] = {"", "a", "ab", "abc, which is longer than any small string", "b"};
    for (const char* a : ascii)
        for (const char* b : ascii) {
            const auto left = this->standard(a), right = this->standard(b);
            const TypeParam string(left);
            const auto order = left <=> right;
            const std::size_t before = allocationCount();
            EXPECT_EQ(string <=> right, order) << a << " " << b;
            EXPECT_EQ(string <=> ViewOf<TypeParam>(right), order);
            EXPECT_EQ(string <=> right.c_str(), order);
            EXPECT_TRUE((string == right) == (order == 0) && (right == string) == (order == 0));
            EXPECT_TRUE((right.c_str() != string) == (order != 0));
            EXPECT_EQ(allocationCount(), before);
        }
}

TYPED_TEST(StandardTwin, IsARangeForAlgorithms) {
    const auto abc = this->standard("cab");
    TypeParam text(abc);
    std::ranges::sort(text);
    EXPECT_TRUE(text == this->standard("abc"));
    for (auto& character : text)
        ++character;
    EXPECT_TRUE(std::ranges::equal(std::as_const(text), this->standard("bcd")));
    EXPECT_EQ(text.end() - text.begin(), 3);
    EXPECT_EQ(std::ranges::distance(TypeParam()), 0);
    text.clear();
    EXPECT_TRUE(text.isEmpty() && text.begin() == text.end());
    TypeParam other(abc);
    std::ranges::swap(text, other);
    EXPECT_TRUE(text == abc && other.isEmpty());
}

TYPED_TEST(StandardTwin, AddsWithoutChangingItsOperands) {
    const auto abc = this->standard("abc");
    const TypeParam text(abc);
    EXPECT_TRUE(text + text + abc.c_str() + CharOf<TypeParam>('d') + abc ==
                this->standard("abcabcabcdabc"));
    EXPECT_TRUE(abc.c_str() + text == plus(TypeParam(abc.c_str()), text) && text == abc);
    TypeParam self(abc);
    EXPECT_TRUE((self += self) == abc + abc);
    EXPECT_TRUE(text + '-' == this->standard("abc-"));
}

TYPED_TEST(StandardTwin, PrintsAsTheTwinDoes) {
    const std::string ascii = "abc";
    const TypeParam text(this->standard(ascii));
    for (auto prepare : {+[](std::ostream&) {}, +[](std::ostream& s) { s << std::setw(6); },
                         +[](std::ostream& s) { s << std::left << std::setw(6); },
                         +[](std::ostream& s) { s << std::internal << std::setw(5); },
                         +[](std::ostream& s) { s << std::setw(2); },
                         +[](std::ostream& s) { s.setstate(std::ios::failbit); }})
        EXPECT_EQ(printed(text, prepare), printed(ascii, prepare));
    std::ofstream nowhere("/dev/full");
    nowhere << text << std::flush;
    EXPECT_TRUE(nowhere.bad());
    // GoogleTest prints it so.
    EXPECT_EQ(testing::PrintToString(text), "abc");
    EXPECT_THAT(testing::PrintToString(std::vector{text}), "{ abc }");
}

TEST(StandardStrings, PrintEveryByteAndUtf8) {
    std::ostringstream stream;
    stream << CString("a\0\xFF", 3) << IString(L"\u00F6\U0001F600") << IString(L"\xD800");
    EXPECT_EQ(stream.str(),
              std::string("a\0\xFF\xC3\xB6\xF0\x9F\x98\x80", 9)); // a surrogate has no form
}

TEST(StandardStrings, AreDecodedInTheEncodingThatIsSaid) {
    const std::string_view view = std::string_view("Sch\xC3\xB6n\0x-", 9);
    bool ok = false;
    EXPECT_EQ(IString(view.substr(0, 6), EncodingUTF8, &ok), L"Sch\u00F6n");
    EXPECT_TRUE(ok);
    EXPECT_EQ(IString(view, EncodingUTF8), L"Sch\u00F6n"); // up to the terminator
    EXPECT_EQ(IString(view.substr(0, 4), EncodingUTF8, &ok), L"Sch?");
    EXPECT_FALSE(ok);
    IString text(L"old");
    EXPECT_EQ(text.assign(std::string("a"), EncodingMultibyte, &ok), L"a");
    EXPECT_TRUE(ok && text.assign(std::string_view(), EncodingUTF8, &ok).isEmpty() && ok);
    // As from a pointer, a text of which nothing remains empties the string.
    text = L"old";
    EXPECT_TRUE(text.assign(std::string("\xEF\xBB\xBF"), EncodingUTF8, &ok).isEmpty() && !ok);
}

TEST(StandardStrings, AnAssignedTemporaryGivesItsContentAndNoCache) {
    IString from(1000, L'x'), to(L"old");
    EXPECT_STREQ(to.asUTF8(), "old");
    from[0] = L'\0';
    const wchar_t* const content = from.asWChar();
    const std::size_t before = allocationCount();
    to = std::move(from);
    EXPECT_EQ(allocationCount(), before);
    EXPECT_TRUE(to.asWChar() == content && to.length() == 1000 && from.isEmpty());
    EXPECT_EQ(to.asUTF8StoreSize(), 1001u);
    EXPECT_STREQ(from.asUTF8(), "");
    IString& same = to;
    to = std::move(same);
    EXPECT_EQ(to.length(), 1000u);
}

TEST(StandardStrings, SplitALiteralAsBytes) {
    const std::vector<CString> words = zeUtil::split("a  b", zeString::isSpace, true);
    EXPECT_THAT(words, testing::ElementsAre("a", "b"));
}

/// What sorting costs beside the copies that a string without a move cannot avoid: nothing.
TEST(StandardStrings, SortAsOftenAllocatingAsTheyCopy) {
    constexpr unsigned int count = 100000;
    std::vector<CString> bytes;
    std::vector<IString> wide;
    for (unsigned int i = 0; i < count; ++i) {
        const std::string text = "a text of many bytes " + std::to_string(i * 2654435761u);
        bytes.emplace_back(text);
        wide.emplace_back(text, EncodingUTF8);
    }
    std::size_t before = allocationCount();
    std::sort(bytes.begin(), bytes.end());
    EXPECT_EQ(allocationCount() - before, 0u);
    before = allocationCount();
    std::ranges::sort(wide, [](std::wstring_view a, std::wstring_view b) { return a < b; });
    EXPECT_LT(allocationCount() - before, 2u * count + count / 10); // object and text of each copy
    EXPECT_TRUE(std::ranges::is_sorted(wide) && std::ranges::is_sorted(bytes));
}

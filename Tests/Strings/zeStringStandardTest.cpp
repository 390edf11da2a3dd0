// SPDX-License-Identifier: MIT

// The strings beside the standard library's, which are their twins: what compiles, what must not,
// and what it means. Documentation/from-the-standard-library.md, which is run too, shows the plain
// cases.

#include "Base/Strings/zeStringStandard.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <iomanip>
#include <ranges>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringIString.h"
#include "Support/AllocationCount.h"

using zeString::CString;
using zeString::EncodingUTF8;
using zeString::IString;

namespace {

struct Grows {
    template<class S, class T>
    auto operator()(S& string, const T& text) -> decltype(string += text);
};

/// How many of the texts an operation takes on the right.
template<class Operation, class S, class... T>
constexpr int takes = (int(std::is_invocable_v<Operation, S&, const T&>) + ...);
template<class S, class... T>
constexpr int adds = takes<std::plus<>, S, T...> + takes<Grows, S, T...>;
template<class S, class... T>
constexpr int compares = takes<std::equal_to<>, S, T...> + takes<std::less_equal<>, S, T...>;
template<class From, class... To>
constexpr int makes = (int(std::is_constructible_v<To, const From&>) + ...);

using Bytes = std::string;
using Wide = std::wstring;
using ByteView = std::string_view;
using WideView = std::wstring_view;

static_assert(adds<CString, CString, char[4], const char*, char, Bytes, ByteView> == 2 * 6);
static_assert(adds<IString, IString, wchar_t[4], wchar_t, Wide, WideView, char[4], char> == 2 * 7);
static_assert(compares<CString, Bytes, ByteView, char*, char[4]> == 2 * 4);
static_assert(compares<IString, Wide, WideView, wchar_t*, const char*> == 2 * 4);
static_assert(std::is_convertible_v<CString, ByteView> && std::is_convertible_v<IString, WideView>);
static_assert(std::is_nothrow_move_assignable_v<IString>);
static_assert(std::is_assignable_v<IString&, WideView>);
static_assert(std::ranges::contiguous_range<CString> && std::ranges::sized_range<const IString>);
static_assert(!std::ranges::borrowed_range<CString>);
static_assert(makes<CString, std::span<const char>, Bytes, ByteView> == 3);

// What must not compile: numbers, the other width, bytes whose encoding is not said, and silent
// copies.
static_assert(adds<CString, int, wchar_t, std::nullptr_t, IString, Wide, wchar_t[4]> == 0);
static_assert(adds<IString, int, std::nullptr_t, CString, Bytes, ByteView> == 0);
static_assert(compares<CString, IString, WideView, char, std::vector<char>> == 0);
static_assert(compares<IString, CString, Bytes, ByteView, wchar_t> == 0);
static_assert(makes<CString, bool, const char*, WideView, Wide> == 0 && makes<Wide, CString> == 0);
static_assert(makes<IString, bool, const wchar_t*, ByteView, Bytes> == 0);
static_assert(makes<Bytes, IString> == 0 && !std::is_assignable_v<IString&, Bytes>);
static_assert(!std::is_convertible_v<Bytes, CString> && !std::is_convertible_v<CString, Bytes>);
static_assert(!std::is_convertible_v<Wide, IString>);

template<class S>
using StandardOf = std::conditional_t<std::is_same_v<S, CString>, Bytes, Wide>;
template<class S>
using ViewOf = std::basic_string_view<typename StandardOf<S>::value_type>;

template<class S>
class StandardTwin : public testing::Test {
protected:
    static StandardOf<S> text(ByteView ascii) { return {ascii.begin(), ascii.end()}; }
};

using Strings = testing::Types<CString, IString>;
TYPED_TEST_SUITE(StandardTwin, Strings);

std::string printed(const auto& value, bool left, int width, bool failed) {
    std::ostringstream stream;
    stream << std::setfill('*') << (left ? std::left : std::right) << std::setw(width);
    stream.setstate(failed ? std::ios::failbit : std::ios::goodbit);
    stream << value << '|';
    return stream.str();
}

} // namespace

TYPED_TEST(StandardTwin, KeepsTheWholeText) {
    using Text = ViewOf<TypeParam>;
    const auto whole = this->text(ByteView("a\0b", 3));
    TypeParam string(whole);
    EXPECT_TRUE(string == whole && Text(string) == whole && string.length() == 3);
    EXPECT_EQ(std::hash<TypeParam>()(string), std::hash<Text>()(whole));
    EXPECT_EQ(string += whole, whole + whole);
    EXPECT_EQ(string = Text(string).substr(5), this->text("b")); // a view of the string itself
    EXPECT_TRUE((string += string) == this->text("bb") && (string += Text(string)).length() == 4);
    EXPECT_TRUE(string.assign(Text()).isEmpty() && TypeParam(Text()) == Text());
}

TYPED_TEST(StandardTwin, ComparesWithoutAnAllocation) {
    const ByteView texts[] = {"", "a", "ab", "abc, which is longer than any small string", "b"};
    for (const ByteView a : texts)
        for (const ByteView b : texts) {
            const auto left = this->text(a), right = this->text(b);
            const TypeParam string(left);
            const std::size_t before = allocationCount();
            EXPECT_TRUE(string <=> right == left <=> right) << a << " " << b;
            EXPECT_TRUE(right.c_str() <=> string == right <=> left) << a << " " << b;
            EXPECT_TRUE((string == right.c_str()) == (a == b) && (right == string) == (a == b));
            EXPECT_EQ(allocationCount(), before);
        }
}

TYPED_TEST(StandardTwin, IsARangeThatAlgorithmsChange) {
    TypeParam string(this->text("cab")), other;
    std::ranges::sort(string);
    for (auto& character : string)
        ++character;
    EXPECT_TRUE(std::ranges::equal(std::as_const(string), this->text("bcd")));
    std::ranges::swap(string, other);
    EXPECT_TRUE(string.begin() == string.end() && other + string + '-' == this->text("bcd-"));
    other.clear();
    EXPECT_TRUE(other.isEmpty());
}

TYPED_TEST(StandardTwin, PrintsAsTheTwinDoes) {
    const TypeParam string(this->text("abc"));
    for (const int width : {0, 2, 6})
        for (const bool left : {false, true})
            for (const bool failed : {false, true})
                EXPECT_EQ(printed(string, left, width, failed),
                          printed(Bytes("abc"), left, width, failed));
    std::ofstream nowhere("/dev/full");
    nowhere << string << std::flush;
    EXPECT_TRUE(nowhere.bad());
    EXPECT_EQ(testing::PrintToString(std::vector{string}), "{ abc }"); // GoogleTest
}

TEST(StandardStrings, PrintEveryByteAndAreDecodedUpToATerminator) {
    std::ostringstream stream;
    stream << CString("a\0\xFF", 3) << IString(L"\u00F6") << IString(L"\xD800"); // without a form
    EXPECT_EQ(stream.str(), Bytes("a\0\xFF\xC3\xB6", 5));
    bool ok = false;
    EXPECT_TRUE(IString(ByteView("\xC3\xB6n\0x", 5), EncodingUTF8, &ok) == L"\u00F6n" && ok);
    EXPECT_TRUE(IString(ByteView("h\xC3\xB6", 2), EncodingUTF8, &ok) == L"h?" && !ok);
    IString text(L"old"); // as from a pointer, a text of which nothing remains empties it
    EXPECT_TRUE(text.assign(Bytes("\xEF\xBB\xBF"), EncodingUTF8, &ok).isEmpty() && !ok);
}

// SPDX-License-Identifier: MIT

// The strings beside the standard library's, which are their twins: what compiles, what must not,
// and what it means. Documentation/from-the-standard-library.md, which is run too, shows the plain
// cases.

#include "Base/Strings/zeStringStandard.h"

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <ranges>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
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

template<class S, class T>
concept PlusWith = requires(S& s, const T& t) {
    s + t;
};
template<class S, class T>
concept GrowsBy = requires(S& s, const T& t) {
    s += t;
};
template<class S, class T>
concept EqualTo = requires(const S& s, const T& t) {
    s == t;
};
template<class S, class T>
concept OrderedWith = requires(const S& s, const T& t) {
    s <=> t, t <= s, t == s;
};

template<class S, class... T>
constexpr bool adds = ((PlusWith<S, T> && GrowsBy<S, T>)&&...);
template<class S, class... T>
constexpr bool addsAny = ((PlusWith<S, T> || GrowsBy<S, T>) || ...);
template<class S, class... T>
constexpr bool compares = ((EqualTo<S, T> && OrderedWith<S, T>)&&...);
template<class S, class... T>
constexpr bool comparesAny = ((EqualTo<S, T> || OrderedWith<S, T>) || ...);
template<class Stream, class T>
constexpr bool prints = requires(Stream& stream, const T& t) {
    stream << t;
};
template<class From, class... To>
constexpr bool makesAny = (std::is_constructible_v<To, const From&> || ...);

using Bytes = std::string;
using Wide = std::wstring;
using ByteView = std::string_view;
using WideView = std::wstring_view;

static_assert(adds<CString, CString, char[4], const char*, char, Bytes, ByteView>);
static_assert(adds<IString, IString, wchar_t[4], wchar_t, Wide, WideView, const char*, char>);
static_assert(compares<CString, Bytes, ByteView, char*, char[4]>);
static_assert(compares<IString, Wide, WideView, wchar_t*, const char*>);
static_assert(prints<std::ostream, CString> && prints<std::ofstream, IString>);
static_assert(std::is_convertible_v<CString, ByteView> && std::is_convertible_v<IString, WideView>);
static_assert(std::is_nothrow_move_assignable_v<IString> &&
              std::is_assignable_v<IString&, WideView>);
static_assert(std::ranges::contiguous_range<CString> && std::ranges::sized_range<const IString>);
static_assert(makesAny<CString, std::span<const char>> && makesAny<CString, Bytes>);

// What must not compile: numbers, the other width, bytes whose encoding is not said, and silent
// copies.
static_assert(!addsAny<CString, int, wchar_t, std::nullptr_t, IString, Wide, wchar_t[4]>);
static_assert(!addsAny<IString, int, std::nullptr_t, CString, Bytes, ByteView>);
static_assert(!comparesAny<CString, IString, WideView, char, std::vector<char>>);
static_assert(!comparesAny<IString, CString, Bytes, ByteView, wchar_t>);
static_assert(!makesAny<CString, bool, const char*, WideView, Wide> && !makesAny<Wide, CString>);
static_assert(!makesAny<IString, bool, const wchar_t*, ByteView, Bytes> &&
              !makesAny<Bytes, IString>);
static_assert(!std::is_convertible_v<Bytes, CString> && !std::is_convertible_v<CString, Bytes>);
static_assert(!std::is_convertible_v<Wide, IString> && !std::is_assignable_v<IString&, Bytes>);
static_assert(!prints<std::wostream, IString> && !prints<std::istream, CString>);

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
    using Text = ViewOf<TypeParam>;
    const auto whole = this->text(ByteView("a\0b", 3));
    TypeParam string(whole);
    EXPECT_TRUE(string == whole && Text(string) == whole && string.length() == 3);
    EXPECT_EQ(std::hash<TypeParam>()(string), std::hash<Text>()(whole));
    EXPECT_TRUE((string += whole) == whole + whole &&
                (string = Text(whole).substr(1)) == whole.substr(1));
    EXPECT_TRUE((string = Text(string).substr(1)) ==
                this->text("b")); // a view of the string itself
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
            EXPECT_EQ(string <=> right, left <=> right) << a << " " << b;
            EXPECT_EQ(right.c_str() <=> string, right <=> left);
            EXPECT_TRUE((string == right.c_str()) == (left == right) &&
                        (right == string) == (right == left));
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
    for (auto prepare : {+[](std::ostream&) {}, +[](std::ostream& s) { s << std::setw(6); },
                         +[](std::ostream& s) { s << std::left << std::setw(6); },
                         +[](std::ostream& s) { s << std::setw(2); },
                         +[](std::ostream& s) { s.setstate(std::ios::failbit); }})
        EXPECT_EQ(printed(string, prepare), printed(Bytes("abc"), prepare));
    std::ofstream nowhere("/dev/full");
    nowhere << string << std::flush;
    EXPECT_TRUE(nowhere.bad());
    EXPECT_EQ(testing::PrintToString(std::vector{string}), "{ abc }"); // GoogleTest
}

TEST(StandardStrings, PrintEveryByteAndUtf8) {
    std::ostringstream stream;
    stream << CString("a\0\xFF", 3) << IString(L"\u00F6")
           << IString(L"\xD800"); // which has no form
    EXPECT_EQ(stream.str(), Bytes("a\0\xFF\xC3\xB6", 5));
}

TEST(StandardStrings, AreDecodedUpToTheirTerminator) {
    const ByteView view("Sch\xC3\xB6n\0x", 8);
    bool ok = false;
    EXPECT_EQ(IString(view, EncodingUTF8, &ok), L"Sch\u00F6n");
    EXPECT_TRUE(ok && IString(view.substr(0, 4), EncodingUTF8, &ok) == L"Sch?" && !ok);
    IString text(L"old");
    // As from a pointer, a text of which nothing remains empties the string.
    EXPECT_TRUE(text.assign(Bytes("\xEF\xBB\xBF"), EncodingUTF8, &ok).isEmpty() && !ok);
}

TEST(StandardStrings, SortWithTheAllocationsOfTheirCopiesAlone) {
    constexpr unsigned int count = 100000;
    std::vector<CString> bytes;
    std::vector<IString> wide;
    for (unsigned int i = 0; i < count; ++i) {
        const Bytes text = "a text of many bytes " + std::to_string(i * 2654435761u);
        bytes.emplace_back(text);
        wide.emplace_back(text, EncodingUTF8);
    }
    const std::size_t before = allocationCount();
    std::sort(bytes.begin(), bytes.end());
    EXPECT_EQ(allocationCount(), before);
    std::sort(wide.begin(), wide.end());
    EXPECT_LE(allocationCount() - before, 2 * count); // the copy of each, and its text
    EXPECT_TRUE(std::ranges::equal(bytes, wide, {}, {},
                                   [](const IString& s) { return s.convertToCString(); }));
}

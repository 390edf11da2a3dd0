// SPDX-License-Identifier: MIT

// What the byte string and the wide string have in common, tested on both.

#include "Base/Strings/zeStringString.h"

#include <climits>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringCharacter.h"
#include "Base/Strings/zeStringIString.h"

using zeString::CString;
using zeString::IString;

namespace {

constexpr unsigned int npos = 0xFFFFFFFF;

struct Bytes {
    using String = CString;
    using Char = char;
    static const char* data(const CString& s) { return s.asChar(); }
    static char* copy(const CString& s) { return s.copyAsChar(); }
    static constexpr unsigned int maxSize = 0xFFFFFFF9;
};

struct Wide {
    using String = IString;
    using Char = wchar_t;
    static const wchar_t* data(const IString& s) { return s.asWChar(); }
    static wchar_t* copy(const IString& s) { return s.copyAsWChar(); }
    static constexpr unsigned int maxSize = 0xFFFFFFFE;
};

template<class Kind>
class StringTest : public testing::Test {
protected:
    using Made = typename Kind::String;
    using Text = std::basic_string<typename Kind::Char>;

    static Text text(const std::string& ascii) { return Text(ascii.begin(), ascii.end()); }
    /// Keeps embedded terminators.
    static Made make(const std::string& ascii) {
        return Made(text(ascii).data(), static_cast<int>(ascii.size()));
    }
    static std::string read(const Made& s) {
        return std::string(Kind::data(s), Kind::data(s) + s.length());
    }
    /// The content after a change, with "|" for each terminator; or what was thrown. The narrow
    /// form that was there before must be renewed.
    static std::string after(const std::string& before, const std::function<void(Made&)>& change) {
        Made s = make(before);
        EXPECT_EQ(s.asMultibyte(), before);
        try {
            change(s);
        } catch (const std::out_of_range& error) {
            return error.what();
        }
        std::string result = read(s);
        EXPECT_STREQ(s.asMultibyte(), result.c_str());
        for (char& c : result)
            c = c == 0 ? '|' : c;
        return result;
    }
};

using Kinds = testing::Types<Bytes, Wide>;
TYPED_TEST_SUITE(StringTest, Kinds);

} // namespace

TYPED_TEST(StringTest, StartsFromTextsCountsAndCharacters) {
    using String = typename TypeParam::String;
    using Char = typename TypeParam::Char;
    const auto abc = this->text("abc");
    const Char* null = nullptr;
    EXPECT_EQ(this->read(String(abc.c_str())), "abc");
    EXPECT_EQ(this->read(String(abc.c_str(), 2)), "ab");
    EXPECT_EQ(this->read(String(abc.c_str(), 4)), std::string("abc", 4));
    EXPECT_EQ(this->read(String(abc.c_str(), -1)), "");
    EXPECT_EQ(this->read(String(3u, Char('x'))), "xxx");
    EXPECT_EQ(this->read(String(null)), "");
    String s = this->make("old");
    EXPECT_EQ(this->read(s = abc.c_str()), "abc");
    EXPECT_EQ(this->read(s = s), "abc");
    EXPECT_EQ(this->read(s.assign(TypeParam::data(s) + 1)), "bc");
    EXPECT_EQ(this->read(s = null), "");
    EXPECT_EQ(this->read(s.append(null).prepend(null).insert(0, null)), "");
}

TYPED_TEST(StringTest, HasItsSizes) {
    using Base = zeString::String;
    auto s = this->make("four");
    const Base& base = s;
    EXPECT_EQ(base.maxSize(), TypeParam::maxSize);
    EXPECT_GE(s.reserve(1000), 1000u);
    EXPECT_EQ(s.capacity(), s.reserve(0));
    // The count is compared with the whole length, not with what remains after the position.
    EXPECT_TRUE(base.doBoundsCheck(3) && base.doBoundsCheck(3, 4) && base.doBoundsCheck(3, npos));
    EXPECT_FALSE(base.doBoundsCheck(4) || base.doBoundsCheck(3, 5) || base.doBoundsCheck(4, 0));
    s.erase();
    EXPECT_TRUE(base.isEmpty() && base.isNull());
    EXPECT_EQ(base.last(), 0u);
}

TYPED_TEST(StringTest, Edits) {
    using String = typename TypeParam::String;
    using Char = typename TypeParam::Char;
    const auto text = this->text("xy");
    const Char* xy = text.c_str();
    const Char dash('-');
    const String nul = this->make(std::string("<\0>", 3));
    const struct {
        const char* before;
        std::function<void(String&)> change;
        const char* after;
    } cases[] = {
        {"abc", [&](String& s) { s.append(xy); }, "abcxy"},
        {"abc", [&](String& s) { s.append(nul); }, "abc<|>"},
        {"abc", [&](String& s) { s.append(s); }, "abcabc"},
        {"abc", [&](String& s) { s.append(dash); }, "abc-"},
        {"abc", [&](String& s) { s.prepend(xy); }, "xyabc"},
        {"abc", [&](String& s) { s.prepend(nul); }, "<|>abc"},
        {"abc", [&](String& s) { s.prepend(dash); }, "-abc"},
        {"abc", [&](String& s) { s.insert(3, xy); }, "abcxy"},
        {"abc", [&](String& s) { s.insert(1, s); }, "aabcbc"},
        {"abc", [&](String& s) { s.insert(1, dash); }, "a-bc"},
        {"abc", [&](String& s) { s.insert(4, xy); }, "basic_string::insert"},
        {"abc", [&](String& s) { s.erase(1, 1); }, "ac"},
        {"abc", [&](String& s) { s.remove(0, 2); }, "c"},
        {"abc", [&](String& s) { s.erase(4, 0); }, "basic_string::erase"},
        {"", [&](String& s) { s.erase(4, 1); }, ""},
        {"abc", [&](String& s) { s.replace(1, 1, xy); }, "axyc"},
        {"abc", [&](String& s) { s.replace(1, npos, nul); }, "a<|>"},
        {"abc", [&](String& s) { s.replace(3, 2, dash); }, "abc-"},
        {"abc", [&](String& s) { s.replace(4, 0, xy); }, "basic_string::replace"},
        {"  a b ", [&](String& s) { s.stripSpaces(); }, "a b "},
        {"  a b ", [&](String& s) { s.rstripSpaces(); }, "  a b"},
        {"--a--", [&](String& s) { s.strip(dash); }, "a--"},
        {"--a--", [&](String& s) { s.rstrip(dash); }, "--a"},
        {"", [&](String& s) { s.strip(Char(0)).rstrip(Char(0)); }, ""},
        {"aBc1", [&](String& s) { s.toUpperCase(); }, "ABC1"},
        {"aBc1", [&](String& s) { s.toLowerCase(); }, "abc1"},
        {"abc", [&](String& s) { s = s.substr(3); }, ""},
        {"abc", [&](String& s) { s = s.substr(4); }, "basic_string::substr"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(this->after(c.before, c.change), c.after) << "case " << &c - cases;
}

TYPED_TEST(StringTest, Finds) {
    using Char = typename TypeParam::Char;
    const auto s = this->make("abcabc");
    const auto empty = this->make("");
    const struct {
        const char* pattern;
        unsigned int start;
        unsigned int find;
        unsigned int rfind;
    } cases[] = {{"bc", 0, 1, npos},  {"bc", 2, 4, 1},     {"bc", npos, npos, 4},
                 {"", 0, npos, npos}, {"", 6, npos, npos}, {"abcabcd", 0, npos, npos},
                 {"abc", 3, 3, 3},    {"abc", 99, npos, 3}};
    for (const auto& c : cases) {
        const auto pattern = this->text(c.pattern);
        EXPECT_EQ(s.find(pattern.c_str(), c.start), c.find) << c.pattern << c.start;
        EXPECT_EQ(s.rfind(pattern.c_str(), c.start), c.rfind) << c.pattern << c.start;
        EXPECT_EQ(s.find(this->make(c.pattern), c.start), c.find) << c.pattern << c.start;
        EXPECT_EQ(s.rfind(this->make(c.pattern), c.start), c.rfind) << c.pattern << c.start;
        EXPECT_EQ(empty.find(pattern.c_str(), c.start), npos);
    }
    EXPECT_EQ(s.find(Char('c')), 2u);
    EXPECT_EQ(s.rfind(Char('c'), 4), 2u);
    EXPECT_EQ(this->make(std::string("a\0b", 3)).find(Char(0)), 1u);
    EXPECT_EQ(s.find(static_cast<const Char*>(nullptr)), npos);
}

TYPED_TEST(StringTest, FindsByPredicate) {
    using Char = typename TypeParam::Char;
    bool (*isB)(Char) = [](Char c) { return c == 'b'; };
    bool (*isNul)(Char) = [](Char c) { return c == 0; };
    const auto s = this->make("abcabc");
    EXPECT_EQ(s.find(isB, 2), 4u);
    EXPECT_EQ(s.rfind(isB, 3), 1u);
    EXPECT_EQ(s.rfind(isNul), npos);
    EXPECT_EQ(s.rfind(isNul, 6), 6u); // a start at the length examines the terminator
    EXPECT_EQ(s.rfind(isB, INT_MAX), 4u);
    EXPECT_EQ(s.rfind(isB, 0x80000000), npos); // negative as a signed number
    EXPECT_EQ(this->make("").find(isNul), npos);
    EXPECT_EQ(this->make("").rfind(isNul, 0), npos);
}

TYPED_TEST(StringTest, Compares) {
    const auto sign = [](int order) { return order < 0 ? -1 : order > 0; };
    const struct {
        std::string a;
        std::string b;
        int compare;
        int compareNoCase;
    } cases[] = {{"abc", "abc", 0, 0}, {"abc", "abd", -1, -1}, {"abc", "ab", 1, 1},
                 {"", "", 0, 0},       {"abc", "ABC", 1, 0},   {"ABCD", "abc", -1, 1}};
    for (const auto& c : cases) {
        const auto a = this->make(c.a);
        const auto b = this->make(c.b);
        EXPECT_EQ(sign(a.compare(b)), c.compare) << c.a << c.b;
        EXPECT_EQ(sign(a.collate(b)), c.compare) << c.a << c.b; // the "C" locale
        EXPECT_EQ(sign(a.compareNoCase(b)), c.compareNoCase) << c.a << c.b;
        EXPECT_EQ(sign(a.collateNoCase(b)), c.compareNoCase) << c.a << c.b;
        EXPECT_EQ(equal(a, b), c.compare == 0);
        EXPECT_EQ(notEqual(a, b), c.compare != 0);
        EXPECT_EQ(less(a, b), c.compare < 0);
        EXPECT_EQ(greater(a, b), c.compare > 0);
        EXPECT_EQ(lessEqual(a, b), c.compare <= 0);
        EXPECT_EQ(greaterEqual(a, b), c.compare >= 0);
    }
    EXPECT_EQ(this->make("abcde").compare(this->make("ab")), 3); // the difference in length
    EXPECT_GT(CString("\xFF").compare("a"), 0);                  // unsigned
    const auto hidden = this->make(std::string("a\0b", 3));
    EXPECT_LT(hidden.compare(this->make(std::string("a\0c", 3))), 0);
    EXPECT_EQ(hidden.collate(this->make("a")), 0); // up to the first terminator
}

TYPED_TEST(StringTest, JoinsSwapsAndCopies) {
    using String = typename TypeParam::String;
    String a = this->make("left");
    String b = this->make("right");
    EXPECT_EQ(this->read(plus(a, b)), "leftright");
    EXPECT_EQ(this->read(plusEqual(a, b)), "leftright");
    swap(a, b);
    EXPECT_EQ(this->read(a) + ',' + this->read(b), "right,leftright");
    a.swap(a);
    EXPECT_EQ(this->read(a), "right");
    const String cut = this->make(std::string("a\0\x7F", 3));
    auto* block = TypeParam::copy(cut); // for the caller to free
    EXPECT_EQ(this->read(String(block, 3)), this->read(cut));
    std::free(block);
    EXPECT_TRUE(cut.isAscii() && String().isAscii());
    EXPECT_FALSE(b.append(static_cast<typename TypeParam::Char>(0xE9)).isAscii());
}

TYPED_TEST(StringTest, FormatsTextOfAnyLength) {
    const auto format = this->text("%0*d");
    for (int length : {1, 254, 255, 256, 257, 1023, 1024, 1279, 1280, 5000}) {
        const std::string expected = std::string(static_cast<std::size_t>(length - 1), '0') + '7';
        auto s = this->make("before");
        EXPECT_EQ(s.format(format.c_str(), length, 7), expected.size());
        EXPECT_EQ(this->read(s), expected);
        for (unsigned int initialSize : {0u, 1u, 300u, 0xFFFFFFFFu}) {
            s = this->make("before");
            EXPECT_EQ(s.format(initialSize, format.c_str(), length, 7), expected.size());
            EXPECT_EQ(this->read(s), expected) << initialSize;
        }
        const auto object = this->make("%0*d");
        EXPECT_EQ(s.format(&object, length, 7), expected.size());
        EXPECT_EQ(s.format(2, &object, length, 7), expected.size());
        EXPECT_EQ(this->read(s), expected);
    }
}

TYPED_TEST(StringTest, KeepsItsContentWhereAFormatGivesNothing) {
    using Char = typename TypeParam::Char;
    using String = typename TypeParam::String;
    String s = this->make("kept");
    const auto empty = this->text("");
    EXPECT_EQ(s.format(empty.c_str(), 1), npos);
    EXPECT_EQ(s.format(3, empty.c_str(), 1), npos);
    EXPECT_EQ(s.format(this->text("%s").c_str(), ""), npos);
    EXPECT_EQ(s.format(static_cast<const Char*>(nullptr)), npos);
    EXPECT_EQ(s.format(static_cast<const String*>(nullptr)), npos);
    // A character that the locale does not have.
    if constexpr (std::is_same_v<Char, char>)
        EXPECT_EQ(s.format("%S", L"\u20AC"), npos);
    else
        EXPECT_EQ(s.format(L"%s", "\xE2\x82\xAC"), npos);
    EXPECT_EQ(this->read(s), "kept");
}

TYPED_TEST(StringTest, FormatsItsOwnTextAndUpToATerminator) {
    const bool narrow = std::is_same_v<typename TypeParam::Char, char>;
    auto s = this->make(std::string(200, 'x'));
    const auto twice = this->text(narrow ? "%s%s" : "%S%S");
    EXPECT_EQ(s.format(twice.c_str(), TypeParam::data(s), TypeParam::data(s)), 400u);
    EXPECT_EQ(this->read(s), std::string(400, 'x'));
    EXPECT_EQ(s.format(this->text("a%cb%0300d").c_str(), 0, 1), 1u);
    EXPECT_EQ(s.format(this->text("%c").c_str(), 0), 0u); // one character was written: a success
    EXPECT_EQ(this->read(s), "");
}

TEST(CString, IsEmptyAndUsableOnceMovedFrom) {
    static_assert(std::is_nothrow_move_constructible_v<CString>);
    const std::pair<void (*)(CString&), const char*> cases[] = {
        {[](CString& s) { s.erase(7).strip(' ').toUpperCase().reserve(9); }, ""},
        {[](CString& s) { s.format("%d", 42); }, "42"},
        {[](CString& s) { s.append(s).assign(plus(s, s)).insert(0, s); }, ""},
        {[](CString& s) { CString("swapped").swap(s); }, "swapped"},
    };
    for (const auto& [change, after] : cases) {
        CString source("a text that is too long for the object itself");
        const char* bytes = source.asChar();
        CString first(std::move(source));
        CString target;
        target = std::move(first);
        CString& same = target;
        target = std::move(same);
        EXPECT_EQ(target.asChar(), bytes); // nothing was copied
        // NOLINTBEGIN(bugprone-use-after-move): promised to be empty
        EXPECT_TRUE(source.isEmpty() && source == "" && source.find("a") == npos);
        change(source);
        EXPECT_EQ(CString(source), after);
        // NOLINTEND
    }
}

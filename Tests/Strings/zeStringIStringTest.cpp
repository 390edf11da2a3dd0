// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringIString.h"

#include <cstdlib>
#include <new>
#include <optional>
#include <random>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringCharacter.h"
#include "Support/AllocationCount.h"
#include "Support/Locale.h"
#include "Support/MadeLocale.h"

using zeString::CString;
using zeString::EncodingMultibyte;
using zeString::EncodingUTF8;
using zeString::IString;

namespace {

constexpr unsigned int npos = 0xFFFFFFFF;

using IStringUtf8 = support::Utf8LocaleTest;

const IString withTerminator(L"ab\0cd", 5);

struct NarrowCase {
    const char* narrow;
    zeString::Encoding encoding;
    bool ok;
    std::wstring wide;
};

void expectFromNarrow(std::initializer_list<NarrowCase> cases) {
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.narrow));
        bool ok = !c.ok;
        const IString made(c.narrow, c.encoding, &ok);
        EXPECT_EQ(ok, c.ok);
        EXPECT_EQ(made, c.wide);
        ok = !c.ok;
        IString assigned(L"before");
        EXPECT_EQ(assigned.assign(c.narrow, c.encoding, &ok), c.wide);
        EXPECT_EQ(ok, c.ok);
        ok = !c.ok;
        EXPECT_EQ(IString(CString(c.narrow), c.encoding, &ok), c.wide);
        EXPECT_EQ(ok, c.ok);
    }
}

/// `n` times U+00F6 in UTF-8.
std::string narrowOf(int n) {
    std::string result;
    while (n-- > 0)
        result += "\xC3\xB6";
    return result;
}

struct WideCase {
    std::wstring wide;
    zeString::Encoding encoding;
    bool ok;
    std::string narrow;
};

void expectToNarrow(std::initializer_list<WideCase> cases) {
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.wide));
        const IString s(c.wide.data(), static_cast<int>(c.wide.size()));
        const auto narrow = [&] {
            return std::string(s.asMultibyte(c.encoding), s.asMultibyteStoreSize(c.encoding) - 1);
        };
        EXPECT_EQ(narrow(), c.narrow);
        bool ok = !c.ok;
        s.asMultibyte(c.encoding, &ok); // the outcome was not recorded: converts again
        EXPECT_EQ(ok, c.ok);
        ok = !c.ok;
        s.asMultibyte(c.encoding, &ok); // from the record
        EXPECT_EQ(ok, c.ok);
        EXPECT_EQ(narrow(), c.narrow);
        char* block = s.copyAsMultibyte(c.encoding, &ok);
        EXPECT_EQ(std::string(block), c.narrow.c_str());
        EXPECT_EQ(ok, c.ok);
        std::free(block);
    }
}

} // namespace

TEST(IString, ReadsNarrowText) {
    expectFromNarrow({
        {nullptr, EncodingUTF8, true, L""},
        {"plain", EncodingMultibyte, true, L"plain"},
        {"\xEF\xBB\xBFx\xC3\xB6", EncodingUTF8, true, L"x\u00F6"},
        {"\xEF\xBB\xBF", EncodingUTF8, false, L""},
        // In the "C" locale nothing but ASCII is text.
        {"a\xC3\xB6z", EncodingMultibyte, false, L"a??z"},
        {"a\xC3\xB6\xFF", EncodingUTF8, false, L"a???"},
        {"plain", zeString::Encoding(7), true, L"plain"},
    });
    bool ok = false;
    EXPECT_EQ(IString('x', EncodingUTF8, &ok), L"x");
    EXPECT_EQ(IString(3u, 'x', EncodingUTF8, &ok), L"xxx");
    EXPECT_TRUE(ok);
    EXPECT_EQ(IString('\xE9', EncodingUTF8, &ok), L"?");
    EXPECT_FALSE(ok);
    // A byte string of which nothing remains changes nothing.
    IString s(L"kept");
    EXPECT_EQ(s.assign(CString("\xEF\xBB\xBF"), EncodingUTF8, &ok), L"kept");
    EXPECT_FALSE(ok);
}

TEST(IString, GivesNarrowText) {
    expectToNarrow({
        {L"", EncodingMultibyte, true, ""},
        {L"a\u00F6z", EncodingMultibyte, false, "a?z"},
        {L"a\u00F6\u20AC\U0001F600", EncodingUTF8, true, "a\xC3\xB6\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {{L'a', 0xD800}, EncodingUTF8, false, ""},
        {{L'a', 0xD800}, EncodingMultibyte, false, "a?"},
        {{L'a', 0, L'b'}, EncodingMultibyte, true, "a"},
        {{L'a', 0, L'b'}, EncodingUTF8, true, std::string("a\0b", 3)},
        {{0, L'b'}, EncodingMultibyte, false, ""},
        // Long texts of which only the last character is not regular.
        {std::wstring(600, L'\u00F6') + wchar_t(0xD800), EncodingUTF8, false, ""},
        {std::wstring(600, L'\u00F6') + wchar_t(0x7FFFFFFF), EncodingUTF8, true,
         narrowOf(600) + "\xFD\xBF\xBF\xBF\xBF\xBF"},
    });
    EXPECT_EQ(IString(L"a\u00F6").convertToCString(), CString("a?"));
    EXPECT_EQ(IString(L"a\u00F6").asWCharStoreSize(), 12u);
}

TEST_F(IStringUtf8, ConvertsInTheLocaleBothWays) {
    expectFromNarrow({
        {"\xC3\xB6\xFF\xC3\xB6", EncodingUTF8, false, L"\u00F6?\u00F6"},
        {"\xEF\xBB\xBF\xFD\xBF\xBF\xBF\xBF\xBF", EncodingUTF8, true, {0x7FFFFFFF}},
        {narrowOf(500).c_str(), EncodingUTF8, true, std::wstring(500, L'\u00F6')},
    });
    expectToNarrow({
        {L"a\u00F6z", EncodingMultibyte, true, "a\xC3\xB6z"},
        // Longer than any working space on the stack.
        {std::wstring(500, L'\u00F6'), EncodingUTF8, true, narrowOf(500)},
        {std::wstring(500, L'\u00F6'), EncodingMultibyte, true, narrowOf(500)},
    });
    // No room even for the first character: the cache keeps what it had.
    IString s(L"old");
    EXPECT_STREQ(s.asUTF8(), "old");
    s = IString(std::wstring{0x1F600, 0xD800}.c_str());
    EXPECT_STREQ(s.asMultibyte(), "old");
    EXPECT_EQ(s.format(L"%s%S", "\xE2\x82\xAC", L"\u20AC"), 2u);
    EXPECT_EQ(s, L"\u20AC\u20AC");
}

TEST(IString, KeepsTheNarrowFormThroughWritingAndFormatting) {
    IString s(L"abc");
    EXPECT_STREQ(s.asUTF8(), "abc");
    s.at(0) = L'x';
    s[1] = L'y';
    EXPECT_STREQ(s.asUTF8(), "abc");
    EXPECT_STREQ(s.asMultibyte(), "xyc"); // another encoding converts
    s.format(L"%d", 42);
    EXPECT_STREQ(s.asMultibyte(), "xyc");
    s.strip(L' ').rstripSpaces().replace(L"none", L"some"); // nothing to change
    EXPECT_STREQ(s.asMultibyte(), "xyc");
    bool ok = false;
    EXPECT_STREQ(s.asMultibyte(EncodingMultibyte, &ok), "42"); // must know the outcome
    s[0] = L'5';
    EXPECT_STREQ(s.asMultibyte(EncodingMultibyte, &ok), "42"); // and knows it now
    // Of an empty text it is known at once.
    IString empty;
    EXPECT_STREQ(empty.asUTF8(), "");
    EXPECT_EQ(empty.format(L"%d", 42), 2u);
    ok = false;
    EXPECT_STREQ(empty.asUTF8(&ok), "");
    EXPECT_TRUE(ok);
}

TEST(IString, TakesAByteAsItsConstructorDoes) {
    for (const char* codeSet : {"", "UTF-8", "ISO-8859-1", "SHIFT_JIS"}) {
        std::optional<support::MadeLocale> locale;
        if (*codeSet && !locale.emplace(codeSet).isSet())
            GTEST_SKIP() << "localedef cannot make " << codeSet;
        for (int code = 1; code < 256; ++code) {
            const char c = static_cast<char>(code);
            SCOPED_TRACE(codeSet + std::to_string(code));
            const auto wide = std::wstring(IString(c));
            ASSERT_EQ(wide.size(), 1u);
            EXPECT_EQ(IString(L"ab").append(c), L"ab" + wide);
            EXPECT_EQ(IString(L"ab").prepend(c), wide + L"ab");
            EXPECT_EQ(IString(L"ab").insert(1, c), L"a" + wide + L"b");
            EXPECT_EQ(IString(L"ab").replace(0, 1, c), wide + L"b");
            const IString around((wide + L"\u4E00" + wide).c_str());
            EXPECT_EQ(around.find(c, 1), 2u);
            EXPECT_EQ(around.rfind(c, 1), 0u);
            EXPECT_EQ(IString(around).strip(c), L"\u4E00" + wide);
            EXPECT_EQ(IString(around).rstrip(c), wide + L"\u4E00");
        }
    }
    EXPECT_EQ(IString(L"a").append('\0').length(), 2u); // a terminator stays one
    EXPECT_EQ(withTerminator.find('\0'), 2u);
}

TEST(IString, ConvertsAnEmptyTextInEveryCodeSet) {
    const support::MadeLocale locale("SHIFT_JIS");
    if (!locale.isSet())
        GTEST_SKIP() << "localedef cannot make SHIFT_JIS";
    expectFromNarrow({{"", EncodingMultibyte, true, L""}});
    expectToNarrow({{L"", EncodingMultibyte, true, ""}});
    IString s(L"before");
    EXPECT_EQ(s.assign(CString()), L"");
}

// Numbers, and types that convert to a character, go where a wide character is wanted as they are.
TEST(IString, TakesEveryOtherNumberAsAWideCharacter) {
    enum Letter { letter = 0xE9 };
    struct Converts {
        operator char() const { return 'c'; }
    };
    IString s;
    s.append(L'w').append(0xE9).append(0xE9u).append(U'\u20AC').append(u'\u20AC').append(true);
    s.append(static_cast<unsigned char>(0xE9)).append(static_cast<signed char>('s')).append(letter);
    s.append(Converts());
    EXPECT_EQ(s, L"w\u00E9\u00E9\u20AC\u20AC\1\u00E9s\u00E9c");
    EXPECT_EQ(IString().insert(0, 0xE9).prepend(0x20AC).replace(1, 1, 0x3B1), L"\u20AC\u03B1");
    EXPECT_EQ(s.find(0x20AC), 3u);
    EXPECT_EQ(s.rfind(0x20AC), 4u);
    EXPECT_EQ(s.find(zeString::isSpace), npos);
    EXPECT_EQ(s.rfind([](wchar_t c) { return c == 1; }), 5u);
    EXPECT_EQ(IString(L"\u00E9a\u00E9").strip(0xE9).rstrip(0xE9), L"a");
    IString& (IString::*append)(wchar_t) = &IString::append;
    EXPECT_EQ((s.*append)(0xE9).substr(s.last()), L"\u00E9");
}

TEST(IString, IsMadeFromNarrowTextWhereItIsWanted) {
    IString s("a");
    EXPECT_EQ(s.append("b").prepend("c").insert(1, "d").replace("b", "e"), L"cdae");
    EXPECT_EQ(s.find("ae"), 2u);
    EXPECT_TRUE(s.compare("cdae") == 0 && equal(s, "cdae") && !equal("cd", s));
    EXPECT_TRUE(equal(CString("a"), "a") && less(CString("a"), "b")); // not taken for wide ones
}

// And so does every edit that CString has too, which is tested with those.
TEST(IString, EveryOtherChangeRenewsTheNarrowForm) {
    const std::pair<void (*)(IString&), const char*> cases[] = {
        {[](IString& s) { s = L"x"; }, "x"},
        {[](IString& s) { s = IString(L"x"); }, "x"},
        {[](IString& s) { s = "x"; }, "x"},
        {[](IString& s) { s.assign("x"); }, "x"},
        {[](IString& s) { s.assign(CString("x")); }, "x"},
        {[](IString& s) { s.assign(CString()); }, ""},
        {[](IString& s) { (s = std::wstring(L"x")) += 'y'; }, "xy"},
        {[](IString& s) { s.clear(); }, ""},
        {[](IString& s) { s.replace(L"a", L"x"); }, "-xBx-"},
        {[](IString& s) { s.replaceFirst(L"a", L"x"); }, "-xBa-"},
        {[](IString& s) { IString(L"-b-").substr(s, 1); }, "b-"},
        {[](IString& s) { s.substr(s, 1, 2); }, "aB"},
        {[](IString& s) { IString(L"x").swap(s); }, "x"},
    };
    for (const auto& c : cases) {
        IString s(L"-aBa-");
        ASSERT_STREQ(s.asUTF8(), "-aBa-");
        c.first(s);
        EXPECT_STREQ(s.asUTF8(), c.second) << "case " << &c - cases;
    }
}

TEST(IString, CopiesEndAtATerminatorAndAssignmentKeepsIt) {
    static_assert(!std::is_nothrow_move_constructible_v<IString>); // a move would keep it
    EXPECT_EQ(IString(withTerminator), L"ab");
    EXPECT_EQ(IString().assign(withTerminator).length(), 5u);
    EXPECT_EQ(withTerminator.substr(1), L"b");
    EXPECT_EQ(plus(withTerminator, withTerminator).length(), 7u);
    EXPECT_EQ(withTerminator.compareNoCase(L"AB"), 0);

    IString a(L"whole");
    a.append(withTerminator);
    IString b;
    b.assign(withTerminator);
    a.swap(b);
    EXPECT_EQ(a, L"ab");
    EXPECT_EQ(b.length(), 10u);
    b.swap(b);
    EXPECT_EQ(b, L"wholeab");
    const wchar_t* const content = b.asWChar();
    a = std::move(b);
    EXPECT_TRUE(a.asWChar() == content && b.isEmpty()); // NOLINT(bugprone-use-after-move)
    IString& same = a;
    a = std::move(same);
    EXPECT_EQ(a, L"wholeab");
}

// A short text lies in the block of the object that it was made with, and moves about with it.
TEST(IString, WorksAsAStandardStringWhereverItsTextLies) {
    const std::size_t before = allocationCount();
    const IString made("a text of twenty....");
    IString copied(made);
    EXPECT_EQ(allocationCount(), before + 2) << "one each";
    EXPECT_EQ(copied.erase(6), L"a text");

    IString strings[4];
    std::wstring twins[4];
    std::mt19937 random(20);
    const auto below = [&](std::size_t n) { return random() % n; };
    for (int round = 0; round < 5000; ++round) {
        const std::size_t i = below(4);
        const std::size_t j = (i + 1 + below(3)) % 4;
        IString& s = strings[i];
        IString& other = strings[j];
        std::wstring& twin = twins[i];
        std::wstring& otherTwin = twins[j];
        const std::wstring text(below(below(8) == 0 ? 200 : 70), static_cast<wchar_t>(L'a' + i));
        const auto pos = static_cast<unsigned int>(below(twin.size() + 1));
        const auto n = static_cast<unsigned int>(below(80));
        switch (below(9)) {
        case 0:
            s = IString(text.c_str());
            twin = text;
            break;
        case 1:
            s = std::move(other);
            twin = std::exchange(otherTwin, L"");
            break;
        case 2:
            s.swap(other);
            twin.swap(otherTwin);
            break;
        case 3:
            s.assign(IString(other));
            twin = otherTwin;
            break;
        case 4:
            s.append(other);
            twin.append(otherTwin);
            break;
        case 5:
            s.replace(pos, n, text.c_str());
            twin.replace(pos, n, text);
            break;
        case 6:
            s.assign(std::string(text.begin(), text.end()), EncodingUTF8);
            twin = text;
            break;
        case 7:
            s.replace(L"a", L"bc");
            for (std::size_t hit = 0; (hit = twin.find(L'a', hit)) != std::wstring::npos; hit += 2)
                twin.replace(hit, 1, L"bc");
            break;
        default:
            other.substr(s, 0, n);
            twin = otherTwin.substr(0, n);
        }
        if (twin.size() > 300) {
            s.erase(300);
            twin.erase(300);
        }
        // NOLINTNEXTLINE(bugprone-use-after-move): a string that was moved from is empty
        ASSERT_TRUE(s == twin && other == otherTwin) << round;
    }
}

TEST(IString, ConvertsAgainWhereMemoryRanOutHalfWay) {
    const IString s(std::wstring(600, L'\u00F6').c_str());
    for (std::size_t n = 1, failures = 1; failures > 0; ++n) {
        failures = 0;
        EXPECT_EQ(s.asMultibyte(), std::string(600, '?'));
        try {
            failAllocation(n);
            s.asUTF8();
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        failAllocation(0);
    }
    EXPECT_EQ(s.asUTF8(), narrowOf(600));
}

TEST(IString, ReplacesEveryOccurrenceOnce) {
    const struct {
        const wchar_t* before;
        const wchar_t* from;
        const wchar_t* to;
        const wchar_t* all;
        const wchar_t* first;
    } cases[] = {
        {L"aXbXc", L"X", L"--", L"a--b--c", L"a--bXc"},
        {L"XX", L"X", L"", L"", L"X"},
        {L"aaa", L"aa", L"b", L"ba", L"ba"},
        {L"ab", L"a", L"aa", L"aab", L"aab"}, // what was put in is not searched again
        {L"abc", L"", L"x", L"abc", L"abc"},
    };
    for (const auto& c : cases) {
        IString all(c.before);
        IString first(c.before);
        EXPECT_EQ(all.replace(c.from, c.to), c.all);
        EXPECT_EQ(first.replaceFirst(c.from, c.to), c.first);
    }
    IString s(L"ab");
    EXPECT_EQ(s.replace(s, L"xyz"), L"xyz");
    EXPECT_EQ(s.replace(L"y", s), L"xxyzz");
}

TEST(IString, FindsAnyOfASet) {
    const IString s(L"path/to\\file");
    EXPECT_EQ(s.findAny(L"/\\", 5), 7u);
    EXPECT_EQ(s.rfindAny(L"/\\", 6), 4u);
    EXPECT_EQ(s.findAny(L""), npos);
    EXPECT_EQ(s.rfindAny(L""), npos);
}

TEST(IString, TakesNarrowFormats) {
    IString s;
    EXPECT_EQ(s.format("%s|%S|%d", "narrow", L"wide", 3), 13u);
    EXPECT_EQ(s, L"narrow|wide|3");
    EXPECT_EQ(s.format(4, "%0300d", 1), 300u);
    EXPECT_EQ(s.format("\xC3\xB6%d", 1), 3u); // the format itself is repaired
    EXPECT_EQ(s, L"??1");
    EXPECT_EQ(s.format(static_cast<const char*>(nullptr)), npos);
    EXPECT_EQ(s.format("%c", 0xE9), npos); // not a character of this locale
    EXPECT_EQ(s, L"??1");
}

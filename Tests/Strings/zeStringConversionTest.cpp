// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringConversion.h"

#include <iconv.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringIString.h"
#include "Support/Locale.h"
#include "Support/MadeLocale.h"

using namespace std::string_literals;

namespace {

constexpr unsigned int terminated = 0xFFFFFFFF;

using ConversionUtf8 = support::Utf8LocaleTest;

/// iconv kept open: the slow, obvious twin of the UTF-8 converters.
template<class From, class To>
class Twin {
public:
    Twin(const char* to, const char* from) : converter_(iconv_open(to, from)) {}
    ~Twin() { iconv_close(converter_); }
    Twin(const Twin&) = delete;
    Twin& operator=(const Twin&) = delete;

    std::optional<std::basic_string<To>> operator()(std::basic_string<From> text) {
        std::basic_string<To> result(text.size() * 6, To());
        char* in = reinterpret_cast<char*>(text.data());
        char* out = reinterpret_cast<char*>(result.data());
        std::size_t inLeft = text.size() * sizeof(From);
        std::size_t outLeft = result.size() * sizeof(To);
        iconv(converter_, nullptr, nullptr, nullptr, nullptr);
        if (iconv(converter_, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1))
            return std::nullopt;
        result.resize(result.size() - outLeft / sizeof(To));
        return result;
    }

private:
    iconv_t converter_;
};

/// What the repair makes of a text in the "C" locale: every byte above ASCII is bad.
std::wstring repairedInC(const std::string& bytes) {
    std::wstring result;
    for (char c : bytes) {
        if (c == 0)
            break;
        result += static_cast<unsigned char>(c) < 0x80 ? static_cast<wchar_t>(c) : L'?';
    }
    return result;
}

template<bool keepBOM>
unsigned int fromUtf8(const char* src, unsigned int srcLen, wchar_t* dest, unsigned int destCap,
                      bool* ok) {
    return zeString::UTF8toWCS(src, srcLen, dest, destCap, keepBOM, ok);
}

/// Whether a converter counts and gives what iconv gave, or else this repair.
template<class From, class To>
bool agrees(auto convert, const std::basic_string<From>& source,
            const std::optional<std::basic_string<To>>& expected,
            const std::basic_string<To>& repaired) {
    const std::basic_string<To> text = expected.value_or(repaired);
    const auto size = static_cast<unsigned int>(source.size());
    std::basic_string<To> dest(source.size() * 6 + 1, '#');
    bool countOk = !expected;
    bool ok = !expected;
    const unsigned int count = convert(source.data(), size, nullptr, 0, &countOk);
    const unsigned int n = convert(source.data(), size, dest.data(), size * 6 + 1, &ok);
    if (count != text.size() || n != count || dest.compare(0, n, text) != 0 ||
        ok != expected.has_value() || countOk != ok)
        return false;
    if (!ok || n == 0)
        return true;
    // Nothing is written behind the result, and no more room is needed than it takes.
    std::basic_string<To> exact(n + 16, '#');
    return dest[n] == To('#') && convert(source.data(), size, exact.data(), n, &ok) == n && ok &&
           exact == text + std::basic_string<To>(16, '#') &&
           convert(source.data(), size, exact.data(), n - 1, &ok) != n && !ok;
}

/// Both in the "C" locale.
bool decodesLikeIconv(const std::string& bytes) {
    static Twin<char, wchar_t> twin("UCS-4LE", "UTF-8");
    return agrees(fromUtf8<true>, bytes, twin(bytes), repairedInC(bytes));
}

bool encodesLikeIconv(const std::wstring& wide) {
    static Twin<wchar_t, char> twin("UTF-8", "UCS-4LE");
    return agrees(zeString::WCStoUTF8, wide, twin(wide), std::string()); // it has no repair
}

template<class From, class To>
struct Case {
    std::basic_string<From> src;
    unsigned int srcLen;
    unsigned int destCap; ///< 0: count only
    unsigned int result;
    bool ok;
    std::basic_string<To> dest; ///< what the first characters become
};
using Decoding = Case<char, wchar_t>;
using Encoding = Case<wchar_t, char>;

template<class From, class To, class Convert>
void expectConversions(Convert convert, const std::vector<Case<From, To>>& cases) {
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.src) + " into " + std::to_string(c.destCap));
        std::basic_string<To> dest(129, '#');
        bool ok = !c.ok;
        EXPECT_EQ(
            convert(c.src.c_str(), c.srcLen, c.destCap ? dest.data() : nullptr, c.destCap, &ok),
            c.result);
        EXPECT_EQ(ok, c.ok);
        EXPECT_EQ(dest.substr(0, c.dest.size()), c.dest);
        EXPECT_EQ(dest.back(), To('#'));
    }
}

} // namespace

TEST(Conversion, TreatsCodePointsAsIconvDoes) {
    Twin<wchar_t, char> utf8("UTF-8", "UCS-4LE");
    for (wchar_t c = 1; c <= 0x110010; c += c < 0x900 || c % 0x800 > 0x7F0 ? 1 : 7) {
        ASSERT_TRUE(encodesLikeIconv({c})) << std::hex << int(c);
        if (const auto bytes = utf8({c})) {
            ASSERT_TRUE(decodesLikeIconv(*bytes)) << std::hex << int(c);
        }
    }
    for (wchar_t c : {0x1FFFFF, 0x200000, 0x3FFFFFF, 0x4000000, 0x7FFFFFFF, -1, -0x7FFFFFFF - 1})
        ASSERT_TRUE(encodesLikeIconv({L'a', c})) << std::hex << int(c);
}

TEST(Conversion, TreatsDamagedTextAsIconvDoes) {
    for (const char* bytes :
         {"\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
          "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x87\xBF\xBF\xBF",
          "\xFE\x83\xBF\xBF\xBF\xBF\xBF", "\xE2\x82"})
        EXPECT_TRUE(decodesLikeIconv(bytes)) << testing::PrintToString(bytes);
    std::mt19937 random(20);
    const auto below = [&](unsigned int n) { return static_cast<unsigned int>(random() % n); };
    const wchar_t limits[] = {0x7F, 0x7FF, 0xD7FF, 0x10FFFF};
    Twin<wchar_t, char> utf8("UTF-8", "UCS-4LE");
    for (int round = 0; round < 20000; ++round) {
        std::wstring wide(below(70), L'a');
        for (unsigned int changes = below(8); changes > 0 && !wide.empty(); --changes)
            wide[below(static_cast<unsigned int>(wide.size()))] = static_cast<wchar_t>(
                1 + below(static_cast<unsigned int>(limits[below(4)])) % 0x10FFFF);
        ASSERT_TRUE(encodesLikeIconv(wide)) << round;
        std::string bytes = utf8(wide).value_or("valid \xF4\x8F\xBF\xBF");
        if (!bytes.empty() && below(4) != 0)
            bytes[below(static_cast<unsigned int>(bytes.size()))] = static_cast<char>(below(256));
        bytes.resize(below(4) == 0 ? bytes.size() * 3 / 4 : bytes.size());
        ASSERT_TRUE(decodesLikeIconv(bytes)) << round;
    }
}

TEST(Conversion, Utf8GoesToWide) {
    const std::string bom = "\xEF\xBB\xBF";
    const std::string bad = "\xFF"
                            "bc";
    const std::vector<Decoding> cases = {
        // The terminator is converted only when it is the end of the source.
        {"abc", terminated, 4, 4, true, L"abc\0#"s},
        {"", terminated, 8, 0, true, L"#"},
        {"a\0b"s, 3, 8, 3, true, L"a\0b#"s},
        {bom + "x", 4, 8, 1, true, L"x#"},
        {bom, 3, 8, 0, true, L"#"},
        {bom, terminated, 8, 1, true, L"\0#"s},
        // Beyond Unicode, up to 31 bits, is still text.
        {"\xFD\xBF\xBF\xBF\xBF\xBF", 6, 8, 1, true, {0x7FFFFFFF, L'#'}},
        // Repair in the locale, here "C": cut to fit, terminated, and filled on to the terminator.
        {"abcdef", 6, 4, 3, false, L"abc\0#"s},
        {"a\xC3\xA9", 3, 1, 0, false, L"\0#"s},
        {"a\xFF\xC3\xA9", 4, 8, 4, false, L"a???\0\0\0\0"s},
        {bad, 1, 8, 3, false, L"?bc\0"s},
        {bad, 1, 0, 1, false, L""},
        {bad, terminated, 0, 0, false, L""},
    };
    expectConversions(fromUtf8<false>, cases);
    expectConversions<char, wchar_t>(fromUtf8<true>, {{bom + "x", 4, 8, 2, true, L"\uFEFFx#"}});
    bool ok = true;
    EXPECT_EQ(zeString::UTF8toWCS(nullptr, 3, nullptr, 0, false, &ok), 0u);
    EXPECT_FALSE(ok);
}

TEST(Conversion, WideGoesToUtf8OrNotAtAll) {
    const std::vector<Encoding> cases = {
        {L"abc", terminated, 4, 4, true, "abc\0#"s},
        {L"abc", terminated, 3, 0, false, ""},
        {L"", terminated, 0, 0, true, ""},
        {L"a\u00E9\u20AC\U0001F600", 4, 9, 0, false, ""},
        {{0x7FFFFFFF}, 1, 8, 6, true, "\xFD\xBF\xBF\xBF\xBF\xBF#"},
    };
    expectConversions(zeString::WCStoUTF8, cases);
    bool ok = true;
    EXPECT_EQ(zeString::WCStoUTF8(nullptr, 0, nullptr, 0, &ok), 0u);
    EXPECT_FALSE(ok);
}

TEST(Conversion, MultibyteInTheCLocale) {
    const std::vector<Decoding> toWide = {
        {"abc", terminated, 4, 3, true, L"abc\0#"s},
        {"abc", 3, 3, 0, true, L"#"}, // no room for the terminator
        {"abc", 2, 8, 0, true, L"#"}, // refused, not cut
        {"abc", 9, 0, 3, true, L""},
        {"a\xC3\xA9z", 4, 8, 4, false, L"a??z\0#"s},
        {"a\xC3\xA9z", 4, 0, 4, false, L""},
        {"a\xC3\xA9z", 4, 4, 0, false, L"#"},
        {"a\xC3\xA9z", terminated, 8, 0, false, L"\0#"s},
    };
    expectConversions(zeString::MBStoWCS, toWide);
    const std::vector<Encoding> fromWide = {
        {L"abc", 3, 3, 0, true, "#"},
        {L"abc", 2, 8, 0, true, "#"},
        {L"ab\0c"s, 4, 8, 2, true, "ab\0#"s},
        {L"a\u00E9z", 3, 0, 3, false, ""},
        {L"a\u00E9z", 3, 4, 3, false, "a?z\0#"s},
        {L"a\u00E9z", terminated, 3, 0, false, "#"},
    };
    expectConversions(zeString::WCStoMBS, fromWide);
}

TEST_F(ConversionUtf8, Multibyte) {
    const std::vector<Decoding> toWide = {
        {"a\xC3\xA9z", 4, 4, 3, true, L"a\u00E9z\0#"s},
        {"a\xC3\xA9z", 4, 3, 0, true, L"#"},
        {"\xC3\xA9\xFF\xC3\xA9", 5, 0, 3, false, L""},
        {"\xC3\xA9\xFF\xC3\xA9", 5, 8, 3, false, L"\u00E9?\u00E9\0#"s},
        {"\xC3\xA9\xC3", 3, 4, 2, false, L"\u00E9?\0#"s}, // ends within a character
    };
    expectConversions(zeString::MBStoWCS, toWide);
    const std::vector<Encoding> fromWide = {
        {L"a\u00E9z", 3, 5, 4, true, "a\xC3\xA9z\0#"s},
        {L"a\u00E9z", 3, 4, 0, true, "#"},
        // One bad character turns every other of more than one byte into "?" as well...
        {{L'a', 0xE9, 0xD800}, 3, 0, 3, false, ""},
        {{L'a', 0xE9, 0xD800}, 3, 8, 3, false, "a??\0#"s},
        // ...unless the destination ends before it.
        {{0xE9, 0xE9, 0xD800}, 3, 4, 4, false, "\xC3\xA9\xC3\xA9#"},
        {{0x20AC, 0x20AC, 0xD800}, 3, 5, 3, false, "\xE2\x82\xAC\0"s},
    };
    expectConversions(zeString::WCStoMBS, fromWide);
    // What is not UTF-8 is repaired in the locale.
    expectConversions<char, wchar_t>(
        fromUtf8<false>, {{"\xC3\xA9\xFF\xE2\x82\xAC", 6, 8, 3, false, L"\u00E9?\u20AC\0"s}});
}

TEST(Conversion, BytesBelow80AreWhatTheCodeSetSays) {
    std::string bytes;
    for (int c = 1; c < 0x80; ++c)
        bytes += static_cast<char>(c);
    for (const char* codeSet : {"SHIFT_JIS", "JOHAB", "ISO-8859-1", "EUC-JP", "KOI8-R"}) {
        const support::MadeLocale locale(codeSet);
        if (!locale.isSet())
            GTEST_SKIP() << "localedef cannot make " << codeSet;
        std::wstring wide(127, 0);
        std::mbstowcs(wide.data(), bytes.c_str(), 127);
        EXPECT_EQ(wide[0x5B] == L'\\', codeSet != "SHIFT_JIS"s && codeSet != "JOHAB"s);
        expectConversions<char, wchar_t>(zeString::MBStoWCS, {{bytes, 127, 128, 127, true, wide}});
        expectConversions<wchar_t, char>(zeString::WCStoMBS, {{wide, 127, 128, 127, true, bytes}});
        EXPECT_EQ(zeString::IString(bytes.c_str()).asWChar(), wide) << codeSet;
        EXPECT_EQ(zeString::IString(wide.c_str()).asMultibyte(), bytes) << codeSet;
        EXPECT_EQ(zeString::IString(bytes.c_str(), zeString::EncodingUTF8).asUTF8(), bytes);
    }
}

TEST(Conversion, FindsAByteOrderMarkOnlyInALongEnoughText) {
    EXPECT_EQ(zeString::detectUTF8BOM(nullptr, -1), 0u);
    EXPECT_EQ(zeString::detectUTF8BOM("\xEF\xBB\xBF", -1), 3u);
    EXPECT_EQ(zeString::detectUTF8BOM("\xEF\xBB\xBF", 2), 0u);
    EXPECT_EQ(zeString::detectUTF8BOM("\xEF\xBB\xBF", -2), 0u);
    EXPECT_EQ(zeString::detectUTF8BOM("\xEF\xBB", -1), 0u);
    EXPECT_EQ(zeString::getMultiByteStringSize(nullptr, "abc", 0), 3u);
    EXPECT_EQ(zeString::getMultiByteStringSize(nullptr, "\xFF", 0), 0xFFFFFFFFu);
}

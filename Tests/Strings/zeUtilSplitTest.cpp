// SPDX-License-Identifier: MIT

#include "Base/Strings/zeUtilSplit.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using zeString::CString;
using zeString::IString;

namespace {

using Texts = std::vector<std::string>;

template<class String>
Texts texts(const std::vector<String>& items) {
    Texts result;
    for (const String& item : items)
        result.emplace_back(item.asMultibyte(), item.asMultibyteStoreSize() - 1);
    return result;
}

template<class Char>
bool isComma(Char c) {
    return c == ',';
}

struct LineCase {
    const char* line;
    Texts items;
    int code = 0;
    const char* message = "";
};

using SplitLine = zeUtil::Error (*)(const CString&, std::vector<CString>&);

void expectItems(SplitLine splitLine, std::initializer_list<LineCase> cases) {
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        std::vector<CString> out = {"from before"};
        const zeUtil::Error error = splitLine(c.line, out);
        EXPECT_EQ(texts(out), c.items);
        EXPECT_EQ(error.code(), c.code);
        EXPECT_STREQ(error.message(), c.message);
    }
}

} // namespace

TEST(Split, TakesTextApartAtSeparators) {
    const struct {
        const char* text;
        Texts plain, skipping, keeping;
    } cases[] = {
        {"", {}, {}, {}},
        {",", {""}, {}, {","}},
        {"a,", {"a"}, {"a"}, {"a", ","}},
        {",,a,,", {"", "", "a", ""}, {"a"}, {",", ",", "a", ",", ","}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        for (const bool skip : {false, true})
            for (const bool keep : {false, true}) {
                const Texts& expected = keep ? c.keeping : skip ? c.skipping : c.plain;
                EXPECT_EQ(texts(zeUtil::split(CString(c.text), ',', skip, keep)), expected);
                EXPECT_EQ(texts(zeUtil::split(CString(c.text), isComma<char>, skip, keep)),
                          expected);
                EXPECT_EQ(texts(zeUtil::split(IString(c.text), L',', skip, keep)), expected);
                EXPECT_EQ(texts(zeUtil::split(IString(c.text), isComma<wchar_t>, skip, keep)),
                          expected);
            }
        EXPECT_EQ(texts(zeUtil::split(c.text, ',')), c.plain);
    }
    // Terminators are kept in a byte string only.
    EXPECT_EQ(texts(zeUtil::split(CString("a\0b,c", 5), ',')), (Texts{{"a\0b", 3}, "c"}));
    EXPECT_EQ(texts(zeUtil::split(IString(L"a,b\0c,d", 7), L',')), (Texts{"a", "b"}));
}

TEST(Join, PutsItemsTogetherWithNothingBetween) {
    EXPECT_EQ(zeUtil::join(std::vector<CString>{"a", "", "b,"}), "ab,");
    EXPECT_EQ(zeUtil::join(std::vector<IString>{L"a", L"", L"\u00F6"}), L"a\u00F6");
}

TEST(SplitWithQuotes, ReadsItemsThatAreQuotedAsAWhole) {
    expectItems(zeUtil::splitWithQuotes,
                {
                    {"", {}},
                    {" \t\n\v\f\r", {}},
                    {"\"\" \" \" a", {"", " ", "a"}},
                    {"a\\ \"b\\\"", {"a\\", "b\\"}},
                    // The code is the column of the quote, or of the character that touches it.
                    {"\"", {}, 1, "Unmatched double quote"},
                    {"a \"b c", {"a"}, 3, "Unmatched double quote"},
                    {"a b\"c\"", {"a"}, 3, "Unexpected character before a double quote: 'b'"},
                    {"a\"", {}, 1, "Unexpected character before a double quote: 'a'"},
                    {"x \"a\"b", {"x"}, 6, "Unexpected character after double quote: 'b'"},
                    {"\"a\"\"", {}, 4, "Unexpected character after double quote: '\"'"},
                    // A byte that the locale cannot convert loses the message, not the column.
                    {"a \"\"\xC3\xB6", {"a"}, 5, ""},
                });
}

TEST(SplitWithQuotesAndBackslash, ReadsQuotesAndEscapesAnywhere) {
    expectItems(zeUtil::splitWithQuotesAndBackslash,
                {
                    {"", {}},
                    {"\"one two\" \"\"", {"one two", ""}},
                    {"a\"b c\"d e", {"ab cd", "e"}},
                    {"\"a\"\"b\"", {"ab"}},
                    {"a\\\\b \\\" \"\\\" \\\\\"", {"a\\b", "\"", "\" \\"}},
                    {"\\\"a b\\\"", {"\"a", "b\""}},
                    {"\"", {}, 1, "Unmatched double quote"},
                    {"a b\"c d", {"a"}, 4, "Unmatched double quote"},
                    {"\"a\\\"", {}, 1, "Unmatched double quote"},
                    {"a \\", {"a"}, 3, "Single backslash character"},
                    {"\"\\", {}, 2, "Single backslash character"},
                    {"a \"b\\nc\"", {"a"}, 6, "Illegal escape of character 'n'"},
                    {"a\\ b", {}, 3, "Illegal escape of character ' '"},
                });
}

TEST(SplitMultiLines, EndsALineAtEachOfItsTwoCharacters) {
    const std::pair<const char*, Texts> cases[] = {
        {"", {""}},
        {"one", {"one"}},
        {"\none\rtwo", {"", "one", "two"}},
        {"a\v\fb", {"a\v\fb"}},
    };
    for (const auto& [text, lines] : cases) {
        SCOPED_TRACE(testing::PrintToString(text));
        EXPECT_EQ(texts(zeUtil::splitMultiLines(text)), lines);
        EXPECT_EQ(zeUtil::numMultiLines(text), lines.size());
    }
}

TEST(RemoveDuplicated, SortsByBytesAndKeepsOneOfEach) {
    using namespace std::string_literals;
    EXPECT_EQ(texts(zeUtil::removeDuplicated(
                  {"b", "\xC3", "a", "B", "", "ab", "a", CString("a\0", 2), "", "\xC3", "b"})),
              (Texts{"", "B", "a", "a\0"s, "ab", "b", "\xC3"}));
}

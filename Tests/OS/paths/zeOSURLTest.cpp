// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSURL.h"

#include <string>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringIString.h"
#include "Support/Locale.h"

using zeOS::URL;
using zeString::CString;

namespace {

using UrlUtf8 = support::Utf8LocaleTest;

struct Row {
    const char* text;
    const char* expected;
};

std::string text(const CString& bytes) {
    return std::string(bytes.asChar(), bytes.length());
}

/// Each field followed by a blank.
std::string parts(const URL& url) {
    std::string result;
    for (const CString& part : {url.getProtocol(), url.getAuthority(), url.getHost(),
                                CString(std::to_string(url.getPort()).c_str()), url.getPath(false),
                                url.getQuery(false), url.getRef(false)})
        result += text(part) + " ";
    return result;
}

std::string names(const URL& url) {
    return text(url.getName(false)) + " " + text(url.getDirname(false)) + " " +
           text(url.basename(false)) + (url.isAbsolute() ? " absolute" : "") +
           (url.isAbsolutePath() ? " absolute path" : "");
}

} // namespace

TEST(Url, IsTakenApart) {
    const Row rows[] = {
        // Local paths: protocol, authority, host, port, path, query, fragment.
        {"", "file   80    "},
        {"a//b///", "file   80 a/b   "},
        {"/a/b?c#d", "file   80 /a/b?c#d   "},
        {"http:/a", "file   80 http:/a   "},
        {"C://x", "file   80 C:/x   "},
        {"file://", "file   80 /   "},
        {"FILE:///a//b/", "file   80 /a/b   "},
        {"file:///C:/x", "file   80 C:/x   "},
        {"file:///:", "file   80 /:   "},
        // Authorities and ports.
        {"http://Host:8080/a?b=1#c", "http host:8080 host 8080 /a b=1 c "},
        {"telnet://host", "telnet host host 23 /   "},
        {"HTTPS://host:", "https host: host 443 /   "},
        {"ftp://:9/", "ftp :9  9 /   "},
        {"http://u:p@h:8/", "http u:p@h:8 u 0 /   "},
        {"http://[::-1]/", "http [::-1] [ 0 /   "}, // the first colon divides
        {"http://", "http   80 /   "},
        {"://x:-1", " x:-1 x -1 /   "},
        {"http://h?q=1#f", "http h?q=1#f h?q=1#f 80 /   "},
        {"http://?q=1", "http   80  q=1  "},
        {"ftp://#f", "ftp   21   f "},
        // Path, query and fragment.
        {"xy://h//a://b//", "xy h h 80 /a:/b/   "},
        {"xy://h/x?y", "xy h h 80 /x   "}, // one character at the end is dropped
        {"xy://h/x?", "xy h h 80 /x   "},
        {"xy://h/x?yz", "xy h h 80 /x yz  "},
        {"xy://h/x?y#", "xy h h 80 /x y  "},
        {"xy://h/x?#z", "xy h h 80 /x  z "},
        {"xy://h/x#z?yz", "xy h h 80 /x#z yz  "}, // "?" is looked for first
        {"xy://h/x?a//b?c#d#e", "xy h h 80 /x a//b?c d#e "},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(parts(URL(row.text)), row.expected) << row.text;
        EXPECT_EQ(isLocalFile(row.text), std::string(row.expected).starts_with("file "));
    }
    EXPECT_TRUE(URL("IMan://x/").IsIMan() && !URL("iman").IsIMan());
}

TEST(Url, GivesItsNamesBack) {
    const Row rows[] = {
        {"", "/ / "},
        {"x", "x / x"}, // the directory of a local name without one
        {"a//b/c.d", "a/b/c.d a/b/ c.d"},
        {"file:///a/b/", "/a/b /a/ b absolute absolute path"},
        {"file:///C:/x", "C:/x C:/ x"},
        {"/a/../../b", "/a/../../b / b"}, // parts are those of the normal form
        {"http://h", "http://h/ http://h  absolute path"},
        {"http://H:8/a/b/?q=1#r", "http://h:8/a/b/ http://h:8/a/ b absolute absolute path"},
        {"http://h/b", "http://h/b http://h/ b absolute absolute path"},
    };
    for (const Row& row : rows) {
        const URL url(row.text);
        EXPECT_EQ(names(url), row.expected) << row.text;
        EXPECT_EQ(isAbsolutePath(row.text), url.isAbsolutePath());
    }
    EXPECT_TRUE(URL("http://h/a?bc#d").comparePath(URL("HTTP://H//a")));
    EXPECT_FALSE(URL("http://h/a").comparePath(URL("http://h/a/")));
    EXPECT_EQ(URL("a//b").getFullURL(false), "file://a/b");
}

TEST(Url, KeepsEachPartInTwoForms) {
    const URL url("http://h//a b/<c>.t%20r.x y?q =1#r<");
    const char* const full = "http://h/a%20b/%3Cc%3E.t%2520r.x%20y?q%20=1#r%3C";
    EXPECT_EQ(url.getFullURL(true), full);
    EXPECT_EQ(url.getFullURL(false), "http://h/a b/<c>.t%20r.x y?q =1#r<");
    EXPECT_EQ(url.basename(false), "<c>.t%20r.x y");
    EXPECT_EQ(url.baseTrunk(true), "%3Cc%3E.t%2520r");
    EXPECT_EQ(url.baseSuffix(true), "x%20y");
    EXPECT_EQ(url.getDirname(true), "http://h/a%20b/");
    EXPECT_EQ(url.getCanonicalPath(true), url.getPath(true));
}

TEST_F(UrlUtf8, GivesPartsOfItsPathInUtf8) {
    EXPECT_EQ(URL("/\xC3\xA4/\xC3\xB6.\xC3\xBC").baseTrunk(false), "\xC3\xB6");
    std::setlocale(LC_CTYPE, "C"); // where the parts are decoded, and other letters lost
    EXPECT_EQ(URL("/\xC3\xA4/b").dirname(false), "/??");
    EXPECT_EQ(URL("/\xC3\xA4/b").getPath(false), "/\xC3\xA4/b");
}

TEST(Url, EncodesAndDecodes) {
    EXPECT_EQ(URL::encode("a b%<>\"#\xC3"), "a%20b%25%3C%3E\"#\xC3");
    const struct {
        const char* encoded;
        std::string plain;
    } rows[] = {
        {"a%20b%41%6a%6A", "a bAjj"},
        {"%c3%A4%", "\xC3\xA4"},
        {"%zz%4z%z4", std::string("\0\x40\x04", 3)}, // no digits: 0
        {"a%2", "a"},                                // the rest is lost
        {"%%41", std::string("\x04\x31")},           // "%4" after a "%"
    };
    for (const auto& row : rows) {
        EXPECT_EQ(text(URL::decode(row.encoded)), row.plain) << row.encoded;
        EXPECT_EQ(text(URL::decode(zeString::IString(row.encoded))), row.plain);
    }
    EXPECT_EQ(URL::decode(zeString::IString(L"\u00E4%20")), "\xC3\xA4 ");
    EXPECT_EQ(URL::decimalHexit2asciiHexit(-1), '\0');
    EXPECT_EQ(URL::decimalHexit2asciiHexit(16), '\0');
}

TEST(Url, CutsSeparatorsAtTheEnd) {
    for (const Row& row : {Row{"", ""}, {"/", "/"}, {"///", "/"}, {"//a//", "//a"}, {"a", "a"}})
        EXPECT_EQ(URL::removeTrailingSeparators(row.text, '/'), row.expected);
    EXPECT_EQ(URL::removeDuplicateSeparators("\\\\\\a//", '\\'), "\\a//");
}

TEST(Url, KnowsIllegalCharacters) {
    const std::string illegal = "\\ \"#$&+,;<=>?@^`{|}\x7F";
    for (int c = 0; c < 256; ++c) {
        const std::string one = {'a', static_cast<char>(c), 'b'};
        EXPECT_EQ(URL::hasIllegalCharacters(CString(one.data(), 3)),
                  c < 32 || illegal.find(one[1]) != illegal.npos)
            << c;
    }
    for (const char* good : {"/a b<%>", "http://h[1]/a", "http://h/a?b&c"})
        EXPECT_FALSE(URL(good).hasIllegalCharacters()) << good;
    for (const char* bad :
         {"/a:b", "/a[b]", "a;b", "http://h_&/a", "h:t://h/a", "h[]p://h/a", "h/p://h/a"})
        EXPECT_TRUE(URL(bad).hasIllegalCharacters()) << bad;
}

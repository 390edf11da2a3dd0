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

struct Parts {
    const char* text;
    const char* protocol;
    const char* authority;
    const char* host;
    int port;
    const char* path;
    const char* query;
    const char* ref;
};

struct Names {
    const char* text;
    const char* name;
    const char* directory;
    const char* full;
    const char* base;
    bool absolute;
    bool absolutePath;
};

std::string text(const CString& bytes) {
    return std::string(bytes.asChar(), bytes.length());
}

CString bytes(const std::string& s) {
    return CString(s.data(), static_cast<int>(s.size()));
}

} // namespace

TEST(Url, IsTakenApart) {
    const Parts rows[] = {
        // Local paths.
        {"", "file", "", "", 80, "", "", ""},
        {"/", "file", "", "", 80, "/", "", ""},
        {"a", "file", "", "", 80, "a", "", ""},
        {"/a/b/", "file", "", "", 80, "/a/b", "", ""},
        {"a//b///", "file", "", "", 80, "a/b", "", ""},
        {"a?b#c", "file", "", "", 80, "a?b#c", "", ""},
        {"http:/a", "file", "", "", 80, "http:/a", "", ""},
        {"C://x", "file", "", "", 80, "C:/x", "", ""},
        // The scheme "file".
        {"file://", "file", "", "", 80, "/", "", ""},
        {"FILE:///a//b/", "file", "", "", 80, "/a/b", "", ""},
        {"file://a", "file", "", "", 80, "a", "", ""},
        {"file:///C:/x", "file", "", "", 80, "C:/x", "", ""},
        {"file:///:", "file", "", "", 80, "/:", "", ""},
        {"file:///a?b#c", "file", "", "", 80, "/a?b#c", "", ""},
        // Authorities.
        {"http://Host:8080/a?b=1#c", "http", "host:8080", "host", 8080, "/a", "b=1", "c"},
        {"http://host", "http", "host", "host", 80, "/", "", ""},
        {"http://host:", "http", "host:", "host", 80, "/", "", ""},
        {"http://:9/", "http", ":9", "", 9, "/", "", ""},
        {"http://h:x/", "http", "h:x", "h", 0, "/", "", ""},
        {"http://h:-1/", "http", "h:-1", "h", -1, "/", "", ""},
        {"http://h:1:2/", "http", "h:1:2", "h", 1, "/", "", ""},
        {"http://u:p@h:8/", "http", "u:p@h:8", "u", 0, "/", "", ""},
        {"http://[::1]:8/", "http", "[::1]:8", "[", 0, "/", "", ""},
        {"http://", "http", "", "", 80, "/", "", ""},
        {"http:///a", "http", "", "", 80, "/a", "", ""},
        {"://x", "", "x", "x", 80, "/", "", ""},
        {"http://h#f", "http", "h#f", "h#f", 80, "/", "", ""},
        {"http://h?q=1", "http", "h?q=1", "h?q=1", 80, "/", "", ""},
        {"http://?q=1", "http", "", "", 80, "", "q=1", ""},
        {"http://#f", "http", "", "", 80, "", "", "f"},
        // Ports by default.
        {"HTTPS://h/", "https", "h", "h", 443, "/", "", ""},
        {"telnet://h", "telnet", "h", "h", 23, "/", "", ""},
        {"ftp://h/", "ftp", "h", "h", 21, "/", "", ""},
        {"gopher://h/", "gopher", "h", "h", 80, "/", "", ""},
        // Path, query and fragment.
        {"http://h//a//b//", "http", "h", "h", 80, "/a/b/", "", ""},
        {"http://h/a://b", "http", "h", "h", 80, "/a:/b", "", ""},
        {"http://h/?q", "http", "h", "h", 80, "/", "", ""}, // one character at the end
        {"https://h/x?y", "https", "h", "h", 443, "/x", "", ""},
        {"http://h/x?", "http", "h", "h", 80, "/x", "", ""},
        {"http://h/x?yz", "http", "h", "h", 80, "/x", "yz", ""},
        {"http://h/x?y#", "http", "h", "h", 80, "/x", "y", ""},
        {"http://h/x?y#z", "http", "h", "h", 80, "/x", "y", "z"},
        {"http://h/x?#z", "http", "h", "h", 80, "/x", "", "z"},
        {"http://h/x#z", "http", "h", "h", 80, "/x", "", "z"},
        {"http://h/x#", "http", "h", "h", 80, "/x", "", ""},
        {"http://h/x#z?yz", "http", "h", "h", 80, "/x#z", "yz", ""}, // "?" is looked for first
        {"http://h/x?a//b?c#d#e", "http", "h", "h", 80, "/x", "a//b?c", "d#e"},
    };
    for (const Parts& row : rows) {
        SCOPED_TRACE(row.text);
        const URL url(row.text);
        EXPECT_EQ(url.getProtocol(), row.protocol);
        EXPECT_EQ(url.getAuthority(), row.authority);
        EXPECT_EQ(url.getHost(), row.host);
        EXPECT_EQ(url.getPort(), row.port);
        EXPECT_EQ(url.getPath(false), row.path);
        EXPECT_EQ(url.getQuery(false), row.query);
        EXPECT_EQ(url.getRef(false), row.ref);
        EXPECT_EQ(url.getSeparator(), '/');
        EXPECT_EQ(url.isLocalFile(), std::string(row.protocol) == "file");
        EXPECT_EQ(isLocalFile(row.text), url.isLocalFile());
    }
    EXPECT_TRUE(URL("IMan://x/").IsIMan() && !URL("iman").IsIMan());
}

TEST(Url, GivesItsNamesBack) {
    const Names rows[] = {
        {"", "/", "/", "file://", "", false, false},
        {"x", "x", "/", "file://x", "x", false, false},
        {"/x", "/x", "/", "file:///x", "x", true, true},
        {"a//b/c.d", "a/b/c.d", "a/b/", "file://a/b/c.d", "c.d", false, false},
        {"/a/b/", "/a/b", "/a/", "file:///a/b", "b", true, true},
        {"file:///a/b/", "/a/b", "/a/", "file:///a/b", "b", true, true},
        {"file:///C:/x", "C:/x", "C:/", "file://C:/x", "x", false, false},
        // The part of the path is that of the normalised one.
        {"/a/../b", "/a/../b", "/", "file:///a/../b", "b", true, true},
        {"/a/../../b", "/a/../../b", "/", "file:///a/../../b", "b", false, false},
        {"http://h", "http://h/", "http://h", "http://h/", "", false, true},
        {"http://H:8/a/b/?q=1#r", "http://h:8/a/b/", "http://h:8/a/", "http://h:8/a/b/?q=1#r", "b",
         true, true},
        {"http://h/b", "http://h/b", "http://h/", "http://h/b", "b", true, true},
        {"http://?q=1", "http://", "http://", "http://?q=1", "", false, true},
    };
    for (const Names& row : rows) {
        SCOPED_TRACE(row.text);
        const URL url(row.text);
        EXPECT_EQ(url.getName(false), row.name);
        EXPECT_EQ(url.getDirname(false), row.directory);
        EXPECT_EQ(url.getFullURL(false), row.full);
        EXPECT_EQ(url.basename(false), row.base);
        EXPECT_EQ(url.isAbsolute(), row.absolute);
        EXPECT_EQ(url.isAbsolutePath(), row.absolutePath);
        EXPECT_EQ(isAbsolutePath(row.text), row.absolutePath);
    }
    EXPECT_TRUE(URL("http://h/a?bc#d").comparePath(URL("HTTP://H//a")));
    EXPECT_FALSE(URL("http://h/a").comparePath(URL("http://h/a/")));
    EXPECT_FALSE(URL("/a").comparePath(URL("a")));
}

TEST(Url, KeepsEachPartInTwoForms) {
    const URL url("http://h//a b/<c>.t%20r.x y?q =1#r<");
    EXPECT_EQ(url.getPath(true), "/a%20b/%3Cc%3E.t%2520r.x%20y");
    EXPECT_EQ(url.getQuery(true), "q%20=1");
    EXPECT_EQ(url.getRef(true), "r%3C");
    EXPECT_EQ(url.basename(false), "<c>.t%20r.x y");
    EXPECT_EQ(url.basename(true), "%3Cc%3E.t%2520r.x%20y");
    EXPECT_EQ(url.baseTrunk(true), "%3Cc%3E.t%2520r");
    EXPECT_EQ(url.baseSuffix(true), "x%20y");
    EXPECT_EQ(url.dirname(true), "/a%20b");
    EXPECT_EQ(url.getDirname(true), "http://h/a%20b/");
    EXPECT_EQ(url.getCanonicalPath(true), url.getPath(true));
    EXPECT_EQ(url.getFullURL(true), "http://h/a%20b/%3Cc%3E.t%2520r.x%20y?q%20=1#r%3C");
}

TEST_F(UrlUtf8, GivesPartsOfItsPathInUtf8) {
    EXPECT_EQ(URL("/\xC3\xA4/\xC3\xB6.\xC3\xBC").baseTrunk(false), "\xC3\xB6");
    EXPECT_EQ(URL("http://h/\xC3\xA4/b").getDirname(true), "http://h/\xC3\xA4/");
    std::setlocale(LC_CTYPE, "C"); // where the parts are decoded, and other letters lost
    EXPECT_EQ(URL("/\xC3\xA4/b").dirname(false), "/??");
    EXPECT_EQ(URL("/\xC3\xA4/b").getPath(false), "/\xC3\xA4/b");
}

TEST(Url, EncodesAndDecodes) {
    EXPECT_EQ(URL::encode("a b%<>\"#\xC3"), "a%20b%25%3C%3E\"#\xC3");
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    EXPECT_EQ(text(URL::decode(URL::encode(bytes(all)))), all);
    const struct {
        const char* encoded;
        std::string plain;
    } rows[] = {
        {"", ""},
        {"a%20b%41%6a%6A", "a bAjj"},
        {"%c3%A4", "\xC3\xA4"},
        {"a%00b", std::string("a\0b", 3)},
        {"%zz%4z%z4", std::string("\0\x40\x04", 3)}, // no digits: 0
        {"a%2", "a"},                                // the rest is lost
        {"a%", "a"},
        {"%25%", "%"},
        {"%%41", std::string("\x04"
                             "1",
                             2)}, // "%4" and what follows
    };
    for (const auto& row : rows) {
        EXPECT_EQ(text(URL::decode(row.encoded)), row.plain) << row.encoded;
        EXPECT_EQ(text(URL::decode(CString(row.encoded))), row.plain);
        EXPECT_EQ(text(URL::decode(zeString::IString(row.encoded))), row.plain);
    }
    EXPECT_EQ(URL::decode(zeString::IString(L"\u00E4%20")), "\xC3\xA4 ");
    for (int number = -128; number < 128; ++number) {
        const char digit = number >= 0 && number < 16 ? "0123456789ABCDEF"[number] : '\0';
        EXPECT_EQ(URL::decimalHexit2asciiHexit(static_cast<char>(number)), digit) << number;
        const std::string digits = "0123456789ABCDEF0123456789abcdef";
        const std::size_t value = digits.find(static_cast<char>(number));
        EXPECT_EQ(URL::asciiHexit2decimalHexit(static_cast<char>(number)),
                  value == digits.npos ? 0 : static_cast<int>(value % 16));
    }
}

TEST(Url, UndoublesAndCutsSeparators) {
    const struct {
        const char* text;
        const char* undoubled;
        const char* cut;
    } rows[] = {
        {"", "", ""},
        {"/", "/", "/"},
        {"//", "/", "/"},
        {"////", "/", "/"},
        {"a//b", "a/b", "a//b"},
        {"//a///", "/a/", "//a"},
        {"a\\\\", "a\\\\", "a\\\\"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(URL::removeDuplicateSeparators(row.text, '/'), row.undoubled);
        EXPECT_EQ(URL("").canonicalize(row.text, '/'), row.undoubled);
        EXPECT_EQ(URL::removeTrailingSeparators(row.text, '/'), row.cut);
    }
    EXPECT_EQ(URL::removeDuplicateSeparators("a\\\\b//", '\\'), "a\\b//");
}

TEST(Url, KnowsIllegalCharacters) {
    const std::string illegal = "\\ \"#$&+,;<=>?@^`{|}\x7F";
    for (int c = 0; c < 256; ++c) {
        const std::string one(1, static_cast<char>(c));
        EXPECT_EQ(URL::hasIllegalCharacters(bytes("a" + one + "b")),
                  c < 32 || illegal.find(one) != illegal.npos)
            << c;
    }
    const struct {
        const char* text;
        bool illegal;
    } rows[] = {
        {"/a/b.c", false},        {"/a b<%>", false}, // encoded
        {"/a:b", true},           {"/a[b]", true},           {"a;b", true},
        {"http://h[1]/a", false}, // brackets in a host
        {"http://h_&/a", true},   {"ht:tp://h/a", true},     {"h[]p://h/a", true},
        {"h/p://h/a", true},      {"http://h/a?b&c", false}, // the query is not looked at
    };
    for (const auto& row : rows)
        EXPECT_EQ(URL(row.text).hasIllegalCharacters(), row.illegal) << row.text;
    EXPECT_FALSE(URL::hasIllegalCharacters("http://[::1]/"));
}

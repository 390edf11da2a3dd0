// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFilename.h"

#include <filesystem>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Support/Locale.h"
#include "Support/TempFolder.h"

using zeOS::Filename;
using zeString::CString;
using zeString::IString;

namespace {

using FilenameUtf8 = support::Utf8LocaleTest;

// Normal form. The twins do each pass as it is defined, at any price: find one, change it, begin
// again.

std::wstring pattern(const wchar_t* forward, wchar_t sep) {
    std::wstring result(forward);
    if (sep == L'\\')
        for (wchar_t& c : result)
            c = c == L'/' ? L'\\' : c;
    return result;
}

std::wstring withoutDuplicates(std::wstring s, wchar_t sep) {
    const std::size_t hit = s.find(pattern(L"//", sep));
    return hit == s.npos ? s : withoutDuplicates(s.erase(hit, 1), sep);
}

std::wstring withoutTrailing(std::wstring s, wchar_t sep) {
    return s.size() < 2 || s.back() != sep ? s : withoutTrailing(s.erase(s.size() - 1), sep);
}

std::wstring withoutParents(const std::wstring& s, wchar_t sep) {
    const std::size_t hit = s.find(pattern(L"/../", sep));
    if (hit == s.npos)
        return s;
    const std::wstring before(s, 0, hit);
    const std::wstring after(s, hit + 4);
    if (const std::size_t last = before.rfind(sep); last != before.npos)
        return withoutParents(before.substr(0, last + 1) + after, sep);
    if (before == L"..")
        return s;
    return withoutParents(before == L"." ? std::wstring(L"..") + sep + after : after, sep);
}

using Pass = void (*)(IString&, wchar_t);

std::wstring after(Pass pass, const std::wstring& s, wchar_t sep) {
    IString result(s);
    result.asUTF8(); // a narrow form that a change must not leave behind
    pass(result, sep);
    EXPECT_EQ(IString(result.asUTF8(), zeString::EncodingUTF8), result);
    return std::wstring(result);
}

void expectSameAsTwins(const std::wstring& s, wchar_t sep) {
    SCOPED_TRACE(testing::PrintToString(s) + " with separator " + testing::PrintToString(sep));
    ASSERT_EQ(after(Filename::removeDuplicateSeparators, s, sep), withoutDuplicates(s, sep));
    ASSERT_EQ(after(Filename::removeTrailingSeparators, s, sep), withoutTrailing(s, sep));
    ASSERT_EQ(after(Filename::removeSlashDotDotSlash, s, sep), withoutParents(s, sep));
    const std::wstring normal =
        withoutParents(withoutTrailing(withoutDuplicates(s, sep), sep), sep);
    ASSERT_EQ(Filename(IString(s), sep).path(), normal);
    IString out(s);
    Filename::canonicalize(out, sep, out);
    ASSERT_EQ(out, normal);
}

struct Alphabet {
    std::wstring letters;
    wchar_t separator;
    unsigned int longest; ///< of the texts that are tried exhaustively
};

const std::initializer_list<Alphabet> alphabets = {
    {L"/.a", L'/', 8}, {L"\\./a", L'\\', 5}, {L":/.a", L':', 5}, {L"/.a", L'.', 7}};

struct PartsCase {
    const wchar_t* name;
    const wchar_t* dirname;
    const wchar_t* basename;
    const wchar_t* trunk;
    const wchar_t* suffix;
    bool absolute = false;
    wchar_t separator = L'/';
};

} // namespace

TEST(FilenameNormalForm, IsThatOfTheSlowTwinForAllShortTexts) {
    for (const Alphabet& alphabet : alphabets) {
        const std::size_t base = alphabet.letters.size();
        std::size_t texts = 1;
        for (unsigned int length = 0; length <= alphabet.longest; ++length, texts *= base)
            for (std::size_t number = 0; number < texts && !HasFatalFailure(); ++number) {
                std::wstring s;
                for (std::size_t rest = number; s.size() < length; rest /= base)
                    s += alphabet.letters[rest % base];
                expectSameAsTwins(s, alphabet.separator);
            }
    }
}

TEST(FilenameNormalForm, IsThatOfTheSlowTwinForLongTexts) {
    std::mt19937 random(1);
    for (int i = 0; i < 500 && !HasFatalFailure(); ++i)
        for (const Alphabet& alphabet : alphabets) {
            std::wstring s;
            while (s.size() < 20 + random() % 200) {
                static const wchar_t* const pieces[] = {L"/../", L"../", L"//", L"/./", L"dir/"};
                if (random() % 2)
                    s += pattern(pieces[random() % std::size(pieces)], alphabet.separator);
                else
                    s += alphabet.letters[random() % alphabet.letters.size()];
            }
            expectSameAsTwins(s, alphabet.separator);
        }
}

TEST(FilenameNormalForm, IsReachedInLinearTimeForLongPaths) {
    std::wstring steps;
    for (int i = 0; i < 300000; ++i)
        steps += L"a//../";
    EXPECT_EQ(Filename(IString(steps + L"/b")).path(), L"b");
    EXPECT_EQ(Filename(IString(std::wstring(1000000, L'/'))).path(), L"/");
}

TEST(Filename, SplitsIntoItsParts) {
    const PartsCase cases[] = {
        {L"", L"", L"", L"", L""},
        {L"/", L"/", L"", L"", L"", true},
        {L"/a", L"/", L"a", L"a", L"", true},
        {L"dir/sub/a.tar.gz", L"dir/sub", L"a.tar.gz", L"a.tar", L"gz"},
        {L"a.", L"", L"a.", L"a", L""},
        {L"/.profile", L"/", L".profile", L"", L"profile", true},
        {L"a.d/.", L"a.d", L".", L"", L""},
        {L"a.d/..", L"a.d", L"..", L".", L""},
        {L"...", L"", L"...", L"..", L""},
        // Its own separator splits, but an absolute path begins with a slash.
        {L"\\a\\b.c", L"\\a", L"b.c", L"b", L"c", false, L'\\'},
        {L"/a\\b", L"/a", L"b", L"b", L"", true, L'\\'},
        {L"/a/b", L"", L"/a/b", L"/a/b", L"", true, L'\\'},
        {L"x:y/z", L"x", L"y/z", L"y/z", L"", false, L':'},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.name));
        const Filename name(c.name, c.separator);
        EXPECT_EQ(name.dirname(), c.dirname);
        EXPECT_EQ(name.basename(), c.basename);
        EXPECT_EQ(name.baseTrunk(), c.trunk);
        EXPECT_EQ(name.baseSuffix(), c.suffix);
        EXPECT_EQ(name.prefix(), L"");
        EXPECT_EQ(name.isAbsolute(), c.absolute);
        const std::vector<IString> parts = name.components();
        const std::vector<IString> expected = {L"", c.dirname, c.basename, c.trunk, c.suffix};
        EXPECT_EQ(parts, expected);
    }
}

TEST(Filename, IsAssignedItsOwnParts) {
    Filename name(L"longer/than/any/buffer/within/name.suffix");
    name = name.dirname();
    EXPECT_EQ(name.path(), L"longer/than/any/buffer/within");
    name.assign(name.basename(), name.dirname());
    EXPECT_EQ(name.path(), L"within/longer/than/any/buffer");
    EXPECT_EQ(name.basename(), L"buffer");
    name.assign(name.path(), name.path());
    EXPECT_EQ(name.path(), L"within/longer/than/any/buffer/within/longer/than/any/buffer");
    name.assign(L"..", name.path());
    name.assign(name.path(), L"../end");
    name = name.path();
    const Filename& same = name;
    name = same;
    EXPECT_EQ(name.path(), L"../within/longer/than/any/buffer/within/longer/than/any/end");
}

TEST(Filename, TakesOverTheSeparatorByAssignmentButNotByCopy) {
    Filename original(L"a/x\\b", L'\\');
    original.split();
    const Filename copy(original);
    EXPECT_EQ(copy.basename(), L"x\\b");
    const Filename moved(std::move(original));
    EXPECT_EQ(moved.basename(), L"x\\b");
    // NOLINTNEXTLINE(bugprone-use-after-move): moving copies
    EXPECT_EQ(original.basename(), L"b");
    Filename assigned(L"c/d");
    assigned.split(); // what it knows by then does not count any more
    assigned = original;
    EXPECT_EQ(assigned.dirname(), L"a/x");
    // What stands is taken as it stands, also where it is not normal in the new separator.
    EXPECT_EQ(Filename(Filename(L"a//b", L'\\')).path(), L"a//b");
}

TEST(Filename, JoinsInSlashesAndNormalises) {
    const struct {
        const wchar_t *dir, *name, *path;
    } cases[] = {
        {L"", L"", L""},          {L"a//", L"", L"a"},         {L"", L"b/../c", L"c"},
        {L"a", L"b", L"a/b"},     {L"/x", L"/y", L"/x/y"},     {L"/", L"y", L"/y"},
        {L"a", L"../b", L"b"},    {L"a/b/", L"..", L"a/b/.."}, {L"..", L"../a", L"../../a"},
        {L"a\\", L"b", L"a\\/b"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.path));
        EXPECT_EQ(Filename::join(c.dir, c.name), c.path);
        EXPECT_EQ(Filename(IString(c.dir), IString(c.name)).path(), c.path);
        EXPECT_EQ(Filename(Filename(c.dir), Filename(c.name)).path(), c.path);
        Filename assigned(L"x\\y", L'\\');
        assigned.assign(c.dir, c.name);
        EXPECT_EQ(assigned.path(), c.path);
    }
    // Each step normalises: at once, "/../b" would take "x" away.
    EXPECT_EQ(Filename::join(L"x/y", L"..", L"b"), L"x/b");
    EXPECT_EQ(Filename::join(L"../x", L"..", L"..", L"b"), L"../../b");
    EXPECT_EQ(Filename::join(L"/", L"..", L"", L"b"), L"b");
}

TEST_F(FilenameUtf8, ReadsNarrowTextInTheLocalesEncoding) {
    const std::wstring path = L"d\u00F6r/\u65E5";
    EXPECT_EQ(Filename("d\xC3\xB6r//\xE6\x97\xA5").path(), path);
    EXPECT_EQ(Filename("d\xC3\xB6r//\xE6\x97\xA5", '/').path(), path);
    EXPECT_EQ(Filename(CString("d\xC3\xB6r//\xE6\x97\xA5"), '/').path(), path);
    // As a separator, a byte is the character of its number.
    EXPECT_EQ(Filename("a\xC3\xB6", '\xF6').path(), L"a");
}

TEST_F(FilenameUtf8, ServesCallersWithoutClasses) {
    const TempFolder folder;
    const std::string made = folder.path("d\xC3\xB6r");
    EXPECT_EQ(zeOS_FilenameMakeDir((made + "//").c_str()), 1);
    EXPECT_TRUE(std::filesystem::is_directory(made));
    EXPECT_EQ(zeOS_FilenameMakeDir(made.c_str()), 0);

    char out[4096];
    zeOS_FilenameJoin("d\xC3\xB6r", "../x.y", out);
    EXPECT_STREQ(out, "x.y");
    const struct {
        void (*part)(const char*, char*);
        const char* expected;
    } parts[] = {
        {zeOS_FilenamePrefix, ""},
        {zeOS_FilenameDirname, "/d\xC3\xB6r"},
        {zeOS_FilenameBasename, "a.b.\xC3\xB6"},
        {zeOS_FilenameBaseTrunk, "a.b"},
        {zeOS_FilenameBaseSuffix, "\xC3\xB6"},
    };
    for (const auto& p : parts) {
        char inPlace[4096] = "/d\xC3\xB6r/a.b.\xC3\xB6";
        p.part(inPlace, inPlace);
        EXPECT_STREQ(inPlace, p.expected);
    }
}

TEST(Filename, TellsNamesThatAreDevicesElsewhere) {
    const struct {
        const wchar_t* name;
        bool reserved;
    } cases[] = {
        {L"CON", true},   {L"prn.txt", true}, {L"dir/Aux", true},    {L"NUL", true},
        {L"com1", true},  {L"LPT9.x", true},  {L"dir/lpt5", true},   {L"", false},
        {L".con", false}, {L"a.con", false},  {L"con.txt.z", false}, {L"con/a", false},
        {L"COM0", false}, {L"LPT0", false},   {L"COM", false},       {L"LPT", false},
        {L"COMx", false}, {L"COM:", false},   {L"COM12", false},     {L"CONS", false},
        {L"CO", false},   {L"XCOM1", false},  {L"1COM", false},      {L"LPT\u0661", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(zeOS::isWindowsReservedDeviceName(Filename(c.name)), c.reserved)
            << testing::PrintToString(c.name);
}

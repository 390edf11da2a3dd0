// SPDX-License-Identifier: MIT

// Paths beside those of the standard library.

#include "Base/OS/zeOSFilenamePath.h"

#include <concepts>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/OS/zeOSFilename.h"
#include "Base/Strings/zeStringIString.h"
#include "Support/TempFolder.h"

using testing::ElementsAre;
using zeOS::Filename;
using zeOS::fromPath;
using zeOS::toPath;
using zeString::IString;

namespace {

static_assert(std::forward_iterator<zeOS::FilenameIterator>);
static_assert(std::totally_ordered<Filename>);
// No way around the functions that say the encoding, and a text is no path until it is made one.
static_assert(!std::is_constructible_v<Filename, std::filesystem::path>);
static_assert(!std::is_constructible_v<std::filesystem::path, Filename>);
static_assert(!std::equality_comparable_with<Filename, const wchar_t*>);

std::vector<IString> elements(const Filename& name) {
    return {name.begin(), name.end()};
}

/// All texts of up to `length` characters of which a path is made.
std::vector<std::string> pathTexts(std::size_t length) {
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; i < texts.size() && texts[i].size() < length; ++i)
        for (const char c : {'a', '.', '/'})
            texts.push_back(texts[i] + c);
    return texts;
}

} // namespace

TEST(FilenameElements, AreThoseOfAStandardPathOfTheSameText) {
    for (const std::string& text : pathTexts(7)) {
        const Filename name(IString(text.c_str()));
        std::vector<IString> expected;
        for (const std::filesystem::path& part : toPath(name))
            expected.emplace_back(part.c_str());
        ASSERT_EQ(elements(name), expected) << text;
    }
}

TEST(FilenameElements, AreSplitAtTheObjectsSeparator) {
    EXPECT_THAT(elements(Filename(L"C:\\a/b\\c", L'\\')), ElementsAre(L"C:", L"a/b", L"c"));
    EXPECT_THAT(elements(Filename(L"::a:::b", L':')), ElementsAre(L":", L"a", L"b"));
    EXPECT_THAT(elements(Filename(L":", L':')), ElementsAre(L":"));
}

TEST(Filename, ComparesHashesAndPrintsItsText) {
    const Filename a(L"a//b"), same(L"a/b", L'\\'), later(L"a/c");
    EXPECT_TRUE(a == same && a != later && a < later && later >= a);
    EXPECT_EQ(std::unordered_set<Filename>({a, same, later}).size(), 2u);
    EXPECT_EQ(testing::PrintToString(std::vector{Filename(L"a/\u00F6"), later}),
              "{ a/\xC3\xB6, a/c }");
}

/// In the "C" locale, which knows ASCII only.
TEST(FilenamePath, KeepsTheBytesOfNamesOnTheDisk) {
    const TempFolder folder;
    for (const char* name :
         {"plain", "Sch\xC3\xB6n", "\xEF\xBB\xBFmarked", "\xF0\x9F\x98\x80.txt", "a\nb"}) {
        const std::filesystem::path path = std::filesystem::path(folder.path()) / name;
        std::ofstream(path) << "x";
        bool ok = false;
        const Filename ours = fromPath(path, &ok);
        EXPECT_TRUE(ok);
        EXPECT_EQ(toPath(ours).native(), path.native());
        EXPECT_TRUE(std::filesystem::exists(ours.path().asUTF8())) << name;
    }
}

TEST(FilenamePath, NeverBecomesTheNameOfAnotherFile) {
    for (const char* name : {"Sch\xF6n", "a/\xFF", "\xC3", "\xED\xA0\x80"}) {
        bool ok = true;
        EXPECT_EQ(fromPath(name, &ok), Filename());
        EXPECT_FALSE(ok);
    }
    EXPECT_EQ(toPath(Filename(L"a/\xD800")), "");
    EXPECT_EQ(fromPath(""), Filename());
    EXPECT_EQ(fromPath("//a//./b/../").path(), L"/a/./b/.."); // the separator at the end goes first
    EXPECT_EQ(fromPath("/../x").path(), L"x");
}

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

using namespace std::string_literals;
using testing::ElementsAre;
using zeOS::Filename;
using zeOS::fromPath;
using zeOS::toPath;
using zeString::IString;

namespace {

static_assert(std::forward_iterator<zeOS::FilenameIterator> && std::totally_ordered<Filename>);
// No way around the functions that say the encoding, and a text is no path until it is made one.
static_assert(!std::is_constructible_v<Filename, std::filesystem::path>);
static_assert(!std::is_constructible_v<std::filesystem::path, Filename>);
static_assert(!std::equality_comparable_with<Filename, const wchar_t*>);

std::vector<IString> elements(const Filename& name) {
    return {name.begin(), name.end()};
}

} // namespace

TEST(FilenameElements, AreThoseOfAStandardPathOfTheSameText) {
    std::vector<std::string> texts{""}; // all of up to 7 characters
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const Filename name(IString(texts[i].c_str()));
        std::vector<IString> expected;
        for (const std::filesystem::path& part : toPath(name))
            expected.emplace_back(part.c_str());
        ASSERT_EQ(elements(name), expected) << texts[i];
        for (const char c : {'a', '.', '/'})
            if (texts[i].size() < 7)
                texts.push_back(texts[i] + c);
    }
}

TEST(FilenameElements, AreSplitAtTheObjectsSeparator) {
    EXPECT_THAT(elements(Filename(L"C:\\a/b\\c", L'\\')), ElementsAre(L"C:", L"a/b", L"c"));
    EXPECT_THAT(elements(Filename(L"::a:::b", L':')), ElementsAre(L":", L"a", L"b"));
    EXPECT_THAT(elements(Filename(L":", L':')), ElementsAre(L":"));
    // A copy holds "a//b/", which no assignment makes in slashes.
    const Filename original(L"a//b/", L'\\');
    EXPECT_THAT(elements(Filename(original)), ElementsAre(L"a", L"b"));
}

TEST(Filename, ComparesHashesAndPrintsItsText) {
    const Filename a(L"a//b"), same(L"a/b", L'\\'), later(L"a/c");
    EXPECT_TRUE(a == same && a != later && a < later && later >= a);
    EXPECT_EQ(std::unordered_set<Filename>({a, same, later}).size(), 2u);
    EXPECT_EQ(testing::PrintToString(Filename(L"a/\u00F6")), "a/\xC3\xB6");
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
        EXPECT_TRUE(ok && toPath(ours).native() == path.native());
        EXPECT_TRUE(std::filesystem::exists(ours.path().asUTF8())) << name;
    }
}

TEST(FilenamePath, NeverBecomesTheNameOfAnotherFile) {
    for (const std::string& name :
         {"Sch\xF6n"s, "a/\xFF"s, "\xC3"s, "\xED\xA0\x80"s, "a.ze\0.txt"s}) {
        bool ok = true;
        EXPECT_TRUE(fromPath(name, &ok) == Filename() && !ok) << name;
    }
    EXPECT_EQ(toPath(Filename(L"a/\xD800")), "");
    EXPECT_EQ(fromPath("//a//./b/../").path(), L"/a/./b/.."); // the separator at the end goes first
}

// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSSearchPath.h"

#include "Support/FaultTrial.h"

#include "OS/files/FileFixture.h"

using zeOS::SearchPath;
using zeString::IString;

namespace {

/// In a folder with directories `one` and `two`, which is the current one, too.
class SearchPathTest : public FileFixture {
protected:
    void SetUp() override {
        for (const char* name : {"one/sub", "two/sub"})
            makeFolder(name);
        for (const char* name : {"here", "one/a", "two/a", "two/b", "two/sub/c", "sub"})
            folder.write(name, "");
        std::filesystem::current_path(folder.path());
    }
    void TearDown() override { std::filesystem::current_path("/"); }

    static std::string directories(const SearchPath& path) {
        return path.getDirectories().asUTF8();
    }

    static SearchPath made(const wchar_t* list, wchar_t separator = L':') {
        SearchPath path;
        path.initialize(list, separator);
        return path;
    }
};

} // namespace

TEST_F(SearchPathTest, KeepsWhatExistsOfAList) {
    const struct {
        const wchar_t* given;
        wchar_t separator;
        const char* kept;
    } rows[] = {
        {L"", L':', ""},
        {L":one::two:", L':', "one:two"},
        {L"two;none;here;one", L';', "two;one"}, // no such directory; a file
        {L"one:two", L';', ""},
        {L"one\u2665one\u2665one/", L'\u2665', "one\u2665one\u2665one/"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(directories(made(row.given, row.separator)), row.kept);
    SearchPath twice = made(L"one:two");
    twice.initialize(L"sub;one", L';');
    EXPECT_EQ(directories(twice), "one;two;one") << "a second call adds";
    twice.initialize(twice.getDirectories(), L';');
    EXPECT_EQ(directories(twice), "one;two;one;one;two;one") << "even its own list";
}

TEST_F(SearchPathTest, IsChangedDirectoryByDirectory) {
    SearchPath path;
    EXPECT_TRUE(path.addDirectoryToPath("one") && path.insertDirectoryInPath("two"));
    EXPECT_EQ(directories(path), "two?one") << "the separator before initialize()";
    path.initialize();
    EXPECT_EQ(directories(path), "two:one");
    EXPECT_FALSE(path.addDirectoryToPath("none") || path.addDirectoryToPath("") ||
                 path.insertDirectoryInPath("here"));
    EXPECT_TRUE(path.addDirectoryToPath("two"));
    EXPECT_TRUE(path.hasDirectory("two") && !path.hasDirectory("two/"));
    EXPECT_TRUE(path.removeDirectoryFromPath("two") && !path.removeDirectoryFromPath("none"));
    EXPECT_EQ(directories(path), "one:two") << "the first is removed";

    path.actLikeShell(false);
    SearchPath copy;
    copy = SearchPath(path);
    path.clear();
    EXPECT_EQ(directories(path), "");
    EXPECT_EQ(directories(copy), "one:two");
    EXPECT_TRUE(copy.initialized() && !copy.actLikeShell());
    copy.reset();
    EXPECT_TRUE(copy.actLikeShell() && !copy.initialized() && directories(copy).empty());
}

TEST_F(SearchPathTest, FindsFilesAsAShellOrEverywhere) {
    const std::string root = folder.path();
    const std::string absolute = folder.path("here");
    const struct {
        std::string name;
        const char* asShell;    ///< what is found
        const char* everywhere; ///< the same with actLikeShell(false); null: the same
        const char* directory;  ///< of what a shell finds
    } rows[] = {
        {"a", "one/a", nullptr, "one"},
        {"b", "two/b", nullptr, "two"},
        {"here", "", nullptr, ""}, // the current directory is not in the list
        {"./here", "./here", "", "."},
        {"sub/c", "", "two/sub/c", ""},
        {"./b", "", "two/./b", ""},
        {"two//b", "two//b", "", "two"}, // as it was given
        {"b/", "two/b", nullptr, "two"}, // no directory part once it is normalised
        {"x/../b", "two/b", nullptr, "two"},
        {"", "one", nullptr, ""},
        {absolute, absolute.c_str(), nullptr, root.c_str()},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        SearchPath path = made(L"one:two");
        const IString name = wide(row.name);
        EXPECT_STREQ(path.findFile(name).asUTF8(), row.asShell);
        EXPECT_STREQ(path.findDirectory(name).asUTF8(), row.directory);
        path.actLikeShell(false);
        IString result = name;
        path.findFile(result, result);
        EXPECT_STREQ(result.asUTF8(), row.everywhere ? row.everywhere : row.asShell);
    }
    IString result;
    for (const char* name : {"b", "a"}) { // no further once there is a result
        made(L"one:two").searchFor(result, name);
        EXPECT_EQ(result, L"two/b");
    }
}

TEST_F(SearchPathTest, PassesByWhatCannotBeAsked) {
    std::string found;
    FaultTrial trial;
    trial.operation = [&] {
        const SearchPath path = made(L"one:two");
        found = directories(path) + " " + path.findFile("a").asUTF8();
    };
    trial.check = [&](const Fault& fault) {
        const char* const expected[] = {"one:two one/a", "two two/a", "one one/a", "one:two two/a"};
        const bool fails = fault.call == SystemFaults::onStat && fault.n <= 3;
        EXPECT_EQ(found, expected[fails ? fault.n : 0]);
    };
    EXPECT_EQ(trial.runAll(), "stat access");
    trial.report("searching a path");
}

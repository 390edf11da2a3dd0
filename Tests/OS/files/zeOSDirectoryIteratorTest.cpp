// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSDirectoryIterator.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <utility>

#include <gmock/gmock.h>

#include "Support/FaultTrial.h"
#include "Support/OrdinaryUser.h"

#include "OS/files/FileFixture.h"

using zeOS::DirectoryIterator;

namespace {

using Names = std::vector<std::string>;

Names walk(
    const std::string& root,
    const std::function<void(DirectoryIterator&)>& visit = [](DirectoryIterator&) {}) {
    Names names;
    const DirectoryIterator start(zeString::IString(root.c_str(), zeString::EncodingUTF8));
    for (DirectoryIterator it = start; it.valid(); it.next()) { // a copy walks by itself
        EXPECT_NE(it.onFile(), it.onDirectory());
        names.push_back(it.getName().asUTF8());
        visit(it);
    }
    return names;
}

/// The same by the standard library: a queue, and directories in the order of the disk.
Names twin(const std::string& root) {
    namespace fs = std::filesystem;
    Names names;
    std::error_code ignored;
    for (std::deque<fs::path> pending = {root}; !pending.empty(); pending.pop_front()) {
        names.push_back(pending.front());
        if (fs::is_directory(pending.front(), ignored))
            for (const auto& entry : fs::directory_iterator(pending.front(), ignored))
                if (fs::exists(entry.path(), ignored))
                    pending.push_back(entry.path());
    }
    return names;
}

std::ptrdiff_t times(const Names& names, const std::string& name) {
    return std::count(names.begin(), names.end(), name);
}

class DirectoryWalk : public FileFixture {
protected:
    DirectoryWalk() {
        for (const char* name : {"d/e/f", "d/empty", "g"})
            makeFolder(name);
        for (const char* name : {"a", "d/b", "d/e/c", "d/e/f/x", "g/y"})
            folder.write(name, "");
    }
};

} // namespace

TEST_F(DirectoryWalk, GoesLevelByLevelInTheOrderOfTheDisk) {
    for (const char* name :
         {"line\nbreak", "\xE6\x97\xA5 \xF0\x9F\x98\x80", "..name", "...", "a\\b"})
        folder.write(std::string("d/") + name, "");
    link("../g", "d/toDirectory");
    link("../a", "d/toFile");
    link("nowhere", "d/dangling");
    link(".", "g/loop");
    for (int i = 0; i < 10000; ++i)
        folder.write("d/empty/" + std::to_string(i), "");
    const Names names = walk(folder.path());
    EXPECT_EQ(names, twin(folder.path()));
    EXPECT_EQ(times(names, folder.path("d/dangling")), 0);
    std::string deepest = folder.path("g"); // the system follows 40 links
    for (int i = 0; i < 40; ++i)
        deepest += "/loop";
    EXPECT_EQ(times(names, deepest), 1);
    EXPECT_EQ(times(names, deepest + "/loop"), 0);
}

// Such names do not lead back to the file. One that decodes to nothing would be the directory once
// more, for ever.
TEST_F(DirectoryWalk, LeavesOutWhatItsDecodedNameDoesNotLeadTo) {
    const Names before = walk(folder.path("d"));
    const std::string mark = "\xEF\xBB\xBF";
    for (const std::string name : {"bad\xFF", "\xC3", "\xED\xA0\x80"})
        folder.write("d/" + name, "");
    folder.write("d/" + mark + "unknown", "");
    makeFolder("d/" + mark);
    EXPECT_EQ(walk(folder.path("d")), before);
    folder.write("d/" + mark + "b", "");
    EXPECT_EQ(times(walk(folder.path("d")), folder.path("d/b")), 2) << "the decoded name exists";
}

// Each of two links up doubles what lies below the other: 2^40 names for the system.
TEST_F(DirectoryWalk, EndsWhereLinksLeadInCircles) {
    link(".", "g/up");
    link("../g", "g/again");
    for (int i = 0; i < 100; ++i)
        folder.write("g/" + std::to_string(i) + std::string(250, 'x'), "");
    std::size_t characters = 0;
    Names first;
    for (DirectoryIterator it(at("g")); it.valid() && characters < 50'000'000; it.next()) {
        characters += it.getName().length();
        if (first.size() < 1500)
            first.push_back(it.getName().asUTF8());
    }
    EXPECT_GT(characters, 15'000'000U);
    EXPECT_LT(characters, 20'000'000U);
    EXPECT_EQ(times(first, folder.path("g/up/again/up/y")), 1) << "nothing is lost before";
}

TEST_F(DirectoryWalk, BeginsWithItsRoot) {
    link("empty", "d/toEmpty");
    const std::string root = folder.path() + "/";
    for (const char* found : {"a", "d/empty", "d/toEmpty"})
        for (const char* separators : {"", "/", "//\\/"})
            EXPECT_EQ(walk(root + found + separators), Names{root + found});
    for (const std::string& missing : {root + "missing", root + "a/below", std::string()})
        EXPECT_EQ(walk(missing), Names());
    // "file:" is taken off by the file layer, which gives the names below.
    EXPECT_EQ(walk("file:" + root + "g"), (Names{"file:" + root + "g", "/" + root + "g/y"}));
}

// Names of less than four characters are not tested for dots: callers know these lists.
TEST_F(DirectoryWalk, MeetsARootOfOneCharacterAgain) {
    std::filesystem::current_path(folder.path("g"));
    EXPECT_THAT(walk("."), testing::UnorderedElementsAre(".", "./.", "././y", "./y"));
    std::filesystem::current_path(folder.path());
    EXPECT_THAT(walk("g"), testing::UnorderedElementsAre("g", "g/.", "g/./y", "g/y"));
    EXPECT_EQ(walk("./g"), (Names{"./g", "./g/y"}));
    std::filesystem::current_path("/");
    const Names names = walk("/", [](DirectoryIterator& it) {
        if (it.getName() != L"/")
            it.prune();
    });
    EXPECT_EQ(times(names, "/") + times(names, "/.") + times(names, "/.."), 3);
}

TEST_F(DirectoryWalk, PassesByWhatIsPruned) {
    Names expected = twin(folder.path());
    std::erase_if(expected, [&](auto& name) { return name.starts_with(folder.path("d/e/")); });
    const auto prune = [&](DirectoryIterator& it) {
        if (it.onFile() || it.getName() == at("d/e"))
            it.prune(); // a file has nothing to be pruned
    };
    EXPECT_EQ(walk(folder.path(), prune), expected);
}

TEST_F(DirectoryWalk, SeesWhatTheUserMaySee) {
    using std::filesystem::perms;
    std::filesystem::permissions(folder.path(), perms(0755));
    for (const unsigned mode : {0U, 0444U, 0111U}) { // shut, list only, pass only
        SCOPED_TRACE(mode);
        std::filesystem::permissions(folder.path("g"), perms(mode));
        const auto found = [&] { return static_cast<int>(walk(folder.path("g")).size()); };
        EXPECT_EQ(asOrdinaryUser(found), 1);
        std::filesystem::permissions(folder.path("g"), perms(0755));
    }
}

// A call that fails costs what it would have shown, and nothing that was shown before.
TEST_F(DirectoryWalk, EndsWhateverFails) {
    const Names all = twin(folder.path());
    Names names;
    FaultTrial trial;
    trial.operation = [&] { names = walk(folder.path()); };
    trial.check = [&](const Fault& fault) {
        const bool noRoot = fault.n == 1 && fault.call == SystemFaults::onStat;
        const bool rootAlone = fault.n == 1 && fault.call == SystemFaults::onOpendir;
        if (fault.n == 0 || noRoot || rootAlone) {
            EXPECT_EQ(names, noRoot ? Names() : rootAlone ? Names{folder.path()} : all);
        }
        auto place = all.begin();
        for (const std::string& name : names) {
            place = std::find(place, all.end(), name);
            ASSERT_NE(place, all.end()) << name;
        }
    };
    EXPECT_EQ(trial.runAll(), "opendir readdir stat");
    trial.report("walking a tree");
}

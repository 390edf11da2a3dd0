// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSDirectoryIterator.h"

#include <algorithm>
#include <deque>
#include <functional>

#include "Support/FaultTrial.h"
#include "Support/OrdinaryUser.h"

#include "OS/files/FileFixture.h"

using zeOS::DirectoryIterator;

namespace {

using Names = std::vector<std::string>;

std::string nameOf(const DirectoryIterator& it) {
    return it.getName().asUTF8();
}

Names walk(
    const std::string& root,
    const std::function<void(DirectoryIterator&)>& visit = [](DirectoryIterator&) {}) {
    Names names;
    const zeString::IString name(root.c_str(), zeString::EncodingUTF8);
    for (DirectoryIterator it(name); it.valid(); it.next()) {
        EXPECT_NE(it.onFile(), it.onDirectory());
        names.push_back(nameOf(it));
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
    folder.write("d/line\nbreak", "");
    folder.write("d/e/\xE6\x97\xA5 \xF0\x9F\x98\x80", "");
    folder.write("d/..name", "");
    folder.write("d/...", "");
    folder.write("d/back\\slash", "");
    link("../g", "d/toDirectory");
    link("../a", "d/toFile");
    link("nowhere", "d/dangling");
    link(".", "g/loop");
    const Names names = walk(folder.path());
    EXPECT_EQ(names, twin(folder.path()));
    EXPECT_EQ(times(names, folder.path("d/line\nbreak")), 1);
    EXPECT_EQ(times(names, folder.path("d/toDirectory/y")), 1);
    EXPECT_EQ(times(names, folder.path("d/dangling")), 0);
    std::string deepest = folder.path("g"); // the system follows 40 links
    for (int i = 0; i < 40; ++i)
        deepest += "/loop";
    EXPECT_EQ(times(names, deepest), 1);
    EXPECT_EQ(times(names, deepest + "/loop"), 0);
}

TEST_F(DirectoryWalk, MeetsTenThousandNamesOnceEach) {
    for (int i = 0; i < 10000; ++i)
        folder.write("g/" + std::to_string(i), "");
    EXPECT_EQ(walk(folder.path("g")), twin(folder.path("g")));
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

TEST_F(DirectoryWalk, BeginsWithItsRoot) {
    const struct {
        const char* root;
        std::vector<std::string> names;
    } rows[] = {
        {"a", {"a"}},
        {"d/empty", {"d/empty"}},
        {"d/empty//\\/", {"d/empty"}},
        {"d/toEmpty", {"d/toEmpty"}},
        {"missing", {}},
        {"a/", {"a"}},
        {"a/below", {}},
    };
    link("empty", "d/toEmpty");
    for (const auto& row : rows) {
        Names names = row.names;
        for (std::string& name : names)
            name = folder.path(name);
        EXPECT_EQ(walk(folder.path() + "/" + row.root), names) << row.root;
    }
    EXPECT_EQ(walk(""), Names());
    EXPECT_EQ(walk("/dev/null/"), Names{"/dev/null"});
    // "file:" is taken off by the file layer, which gives the names below.
    EXPECT_EQ(walk("file:" + folder.path("g")),
              (Names{"file:" + folder.path("g"), "/" + folder.path("g/y")}));
}

// Names of less than four characters are not tested for dots: callers know these lists.
TEST_F(DirectoryWalk, MeetsARootOfOneCharacterAgain) {
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path("g"));
    Names names = walk(".");
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Names{".", "./.", "././y", "./y"}));
    std::filesystem::current_path(folder.path());
    names = walk("g");
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Names{"g", "g/.", "g/./y", "g/y"}));
    EXPECT_EQ(walk("./g"), (Names{"./g", "./g/y"}));
    std::filesystem::current_path(before);
    names = walk("/", [](DirectoryIterator& it) {
        if (it.getName() != L"/")
            it.prune();
    });
    EXPECT_EQ(names[0], "/");
    EXPECT_EQ(times(names, "/.") + times(names, "/.."), 2);
}

TEST_F(DirectoryWalk, PassesByWhatIsPruned) {
    Names expected = twin(folder.path());
    const std::string below = folder.path("d/e/");
    std::erase_if(expected, [&](const std::string& name) { return name.starts_with(below); });
    const auto prune = [&](DirectoryIterator& it) {
        if (it.onFile() || nameOf(it) == folder.path("d/e"))
            it.prune(); // a file has nothing to be pruned
    };
    EXPECT_EQ(walk(folder.path(), prune), expected);
}

TEST_F(DirectoryWalk, IsCopiedWithItsPlace) {
    DirectoryIterator first(at("d"));
    first.next();
    DirectoryIterator second(first);
    first.prune();
    const Names all = twin(folder.path("d"));
    Names rest;
    for (; second.valid(); second.next())
        rest.push_back(nameOf(second));
    EXPECT_EQ(rest, Names(all.begin() + 1, all.end()));
    EXPECT_EQ(nameOf(first), all[1]);
}

TEST_F(DirectoryWalk, SeesWhatTheUserMaySee) {
    for (const char* name : {"shut", "listOnly", "passOnly"})
        makeFolder(name), folder.write(std::string(name) + "/in", "");
    using std::filesystem::perms;
    std::filesystem::permissions(folder.path(), perms(0755));
    std::filesystem::permissions(folder.path("shut"), perms(0));
    std::filesystem::permissions(folder.path("listOnly"), perms(0444));
    std::filesystem::permissions(folder.path("passOnly"), perms(0111));
    EXPECT_EQ(asOrdinaryUser([this] {
                  const Names names = walk(folder.path());
                  const auto has = [&](const char* name) {
                      return static_cast<int>(times(names, folder.path(name)));
                  };
                  return has("shut") + has("listOnly") + has("passOnly") + has("g/y") +
                         10 * (has("shut/in") + has("listOnly/in") + has("passOnly/in"));
              }),
              4);
    for (const char* name : {"shut", "listOnly", "passOnly"})
        std::filesystem::permissions(folder.path(name), perms(0755));
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

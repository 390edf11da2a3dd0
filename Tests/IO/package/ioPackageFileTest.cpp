// SPDX-License-Identifier: MIT

#include "Base/IO/ioPackageFile.h"

#include <sys/stat.h>
#include <utime.h>

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "Base/OS/zeOSFileStatus.h"
#include "Support/OrdinaryUser.h"
#include "Support/SystemFaults.h"
#include "Support/TempFolder.h"

#include "IO/chain/TestLinks.h"
#include "IO/package/PackageSupport.h"

using packages::text;
using packages::wide;

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

constexpr const char* ok = "0 ";

/// A package in a folder of its own, and shorter words for what tests do with it.
class PackageTest : public testing::Test {
protected:
    PackageTest() { EXPECT_EQ(text(package.open(file)), ok); }

    std::string add(const std::string& name, const std::string& content, bool compress = false) {
        const std::string source = folder.write("source", content);
        const utimbuf times{1'000'000'000, 1'000'000'000};
        utime(source.c_str(), &times);
        return text(package.addEntry(wide(source), wide(name), compress));
    }
    /// Evaluated one after the other.
    static void succeed(std::initializer_list<std::string> outcomes) {
        for (const std::string& outcome : outcomes)
            EXPECT_EQ(outcome, ok);
    }
    std::string remove(const std::string& name) { return text(package.deleteEntry(wide(name))); }

    TempFolder folder;
    const zeString::IString file = wide(folder.path("p"));
    ioPackageFile package;
};

} // namespace

TEST_F(PackageTest, OpensWhatHasThisHeader) {
    const std::string start = packages::headerStart;
    const auto withHeader = [](const std::string& header, std::int64_t skipped = 0) {
        const std::int64_t data = 61 + 24 + skipped;
        return header + packages::pointer(std::to_string(data + 3)) + "abc" +
               packages::directory({{"a", data, 3}, {"", data + 3, -1}});
    };
    const std::string good = withHeader(start);
    const std::string noPackage = "17 The file is not a package file: ";
    const std::string noDirectory = "17 Error reading directory: ";
    const struct {
        const char* what;
        std::string bytes;
        std::string failure;
    } cases[] = {
        {"as it is written", good, ""},
        {"a full stop for a mark", "." + good.substr(1), ""},
        {"more in the header", withHeader(start.substr(0, 59) + "later: 1 2 3\n@\n", 13), ""},
        {"no directory yet", start + packages::pointer("-1"), noPackage},
        {"no end of the header", good.substr(0, 59) + std::string(5'000, 'x'), noPackage},
        {"a pointer to itself", start + packages::pointer("61") + "abc", noPackage},
        {"a pointer behind the file", start + packages::pointer("86"), noPackage},
        {"a pointer to the end", start + packages::pointer("85"), noDirectory},
        {"a pointer into itself", start + packages::pointer("62") + packages::directory({}),
         noDirectory},
    };
    for (const auto& [what, bytes, failure] : cases) {
        SCOPED_TRACE(what);
        const std::string path = folder.write("q", bytes);
        std::string refused;
        EXPECT_EQ(packages::reopened(path, &refused).count("a") == 1, failure.empty());
        EXPECT_EQ(refused, failure.empty() ? "" : failure + path);
        EXPECT_EQ(ioPackageFile::isFilePackageFile(wide(path)), failure != noPackage);
    }
    EXPECT_FALSE(ioPackageFile::isFilePackageFile(zeString::IString()));
    EXPECT_FALSE(ioPackageFile::isFilePackageFile(wide(folder.path("none"))));
}

TEST_F(PackageTest, CleansNamesUp) {
    const std::pair<const char*, const char*> cases[] = {
        {"a", "a"},         {"C:\\dir\\.\\file", "dir/./file"},
        {"../../x", "x"},   {"././/./x", "x"},
        {"/../x", "x"},     {"./", "./"},
        {"../", "../"},     {"..", ".."},
        {".", "."},         {"/", ""},
        {"c:", ""},         {"c:d:e", "d:e"}, // once in each round
        {"/c:/d", "d"},     {"a/../../b", "a/../../b"},
        {"..a/b", "..a/b"}, {"\\\\host\\x", "host/x"},
    };
    for (const auto& [name, cleaned] : cases)
        EXPECT_EQ(ioPackageFile::cleanupName(wide(name)).asUTF8(), cleaned + ""s) << name;
}

TEST_F(PackageTest, RefusesNamesThatItCannotKeep) {
    const std::string device = "11 File is using a windows reserved device name.  Please choose "
                               "another name: ";
    const std::string bad = "12 File is using a name which is not allowed: ";
    const std::pair<zeString::IString, std::string> cases[] = {
        {L"", "11 The name can not be empty."},
        {L"//", "11 The name can not be empty."},
        {L"con", device + "con"},
        {L"a/Lpt1.txt", device + "a/Lpt1.txt"},
        {L".", bad + "."},
        {L"./", bad + "./"},
        {L"a/..", bad + "a/.."},
        {L"\xFEFFx", bad + "?x"}, // would come back as "x"
        {L"x\xD800", bad + "x?"}, // has no form in UTF-8, and would be free space
    };
    EXPECT_EQ(add("x", "x"), ok);
    for (const auto& [name, failure] : cases) {
        EXPECT_EQ(text(package.addEntry(wide(folder.path("source")), name, false)), failure);
        EXPECT_EQ(text(package.addEntry(package.getEntry(L"x"), name)), failure);
    }
    EXPECT_EQ(add("\xC3\xA4/b c", "umlaut"), ok);
    EXPECT_EQ(text(package.update()), ok);
    EXPECT_EQ(packages::reopened(folder.path("p")), packages::contents(package));
}

TEST_F(PackageTest, SaysWhyNot) {
    const std::string path = folder.path("p");
    const std::string none = folder.path("no/p");
    const zeString::IString source = wide(folder.write("source", "abc"));
    fs::create_hard_link(path, folder.path("link"));
    ioPackageFile other;
    const std::string notOpen = "3 The package file has not been opened yet.";
    const std::string isNull = "7 The given package file entry is NULL.";
    const std::string mayNot = "4 The pacakge is not writable.";
    const std::pair<zeUtil::Error, std::string> cases[] = {
        {other.update(), notOpen},
        {other.write(file), notOpen},
        {other.deleteEntry(L"a"), notOpen},
        {other.addEntry(source, L"a", false), notOpen},
        {other.open(wide(none)), "2 Can not create file: " + none},
        {other.open(wide(folder.path("q"))), ok},
        {package.addEntry(wide(none), L"a", true), "6 File does not exist: " + none + '\n'},
        {package.addEntry(nullptr, L"a"), isNull},
        {package.extractEntry(nullptr, source), isNull},
        {package.deleteEntry(L"a"), "13 Can not delete named entry as it does not exist: a"},
        {package.addEntry(source, L"a", false), ok},
        {package.addEntry(package.getEntry(0), L"b"),
         "15 The source entry can not be in the package."},
        {other.addEntry(package.getEntry(0), L"/b"), ok},
        {other.addEntry(package.getEntry(0), L"b"),
         "14 The entry is already present in the package: b"},
        {package.extractEntry(package.getEntry(0), wide(folder.path())),
         "2 Can not create file: " + folder.path()},
        {package.write(file), mayNot}, // onto itself
        {package.write(wide(folder.path("link"))), mayNot},
        {package.write(wide(folder.path())), mayNot},
    };
    for (const auto& [error, expected] : cases)
        EXPECT_EQ(text(error), expected);
    EXPECT_EQ(packages::contents(other), (packages::Contents{{"b", "abc"}}));
    package.close();
    fs::remove(path);
    EXPECT_EQ(text(package.update()), "15 Could not open package for write: " + path);
    EXPECT_FALSE(fs::exists(path)) << "a new file would be no package";
}

TEST_F(PackageTest, CannotBeChangedWithoutTheRight) {
    succeed({add("a", "abc"), text(package.update())});
    fs::permissions(folder.path(), fs::perms(0755));
    fs::permissions(folder.path("p"), fs::perms(0644));
    const int failures = asOrdinaryUser([this] {
        ioPackageFile mine;
        const std::string mayNot = "4 This package file can not be modified as it is not writable.";
        return (text(mine.open(file)) != ok) + 2 * (packages::contents(mine).at("a") != "abc") +
               4 * (text(mine.update()) != "4 The package file is not writable.") +
               8 * (text(mine.deleteEntry(L"a")) != mayNot) +
               16 * (text(mine.addEntry(file, L"b", true)) != mayNot);
    });
    EXPECT_EQ(failures, 0);
}

// A source is read until its end is met, which takes one read more where it fills whole blocks.
TEST_F(PackageTest, KeepsSourcesOfEverySize) {
    packages::Contents expected;
    for (const std::size_t size : {0ul, 11ul, 12ul, 4095ul, 4096ul, 4097ul, 8192ul, 262'144ul})
        for (const bool compress : {false, true})
            for (const bool random : {false, true}) {
                const std::string name =
                    std::to_string(size) + (compress ? 'c' : 'p') + (random ? 'r' : 'z');
                expected[name] = random ? randomData(size) : std::string(size, 'z');
                ASSERT_EQ(add(name, expected[name], compress), ok) << name;
                const ioPackageFileEntry* entry = package.getEntry(wide(name));
                EXPECT_EQ(entry->getCompressed(), compress && !random && size >= 4095) << name;
                EXPECT_EQ(entry->getCompressed(), entry->getSize() < long(size)) << name;
                EXPECT_EQ(entry->getTimeStamp(), 1'000'000'000);
            }
    EXPECT_EQ(text(package.write(wide(folder.path("copy")))), ok);
    EXPECT_EQ(packages::contents(package), expected);
    EXPECT_EQ(text(package.expand(wide(folder.path("all/files")))), ok);
    for (const auto& [name, content] : expected)
        EXPECT_EQ(folder.read("all/files/" + name), content) << name;
}

// Promised, and the reason for the warning in the header.
TEST_F(PackageTest, UsesFreedBytesBeforeTheDirectorySaysSo) {
    succeed(
        {add("a", "old"), add("b", "end"), text(package.update()), remove("a"), add("c", "new")});
    const packages::Contents stale{{"a", "new"}, {"b", "end"}};
    EXPECT_EQ(packages::reopened(folder.path("p")), stale);
}

TEST_F(PackageTest, BecomesTheCopyThatItWrites) {
    const zeString::IString copy = wide(folder.write("copy", "to be replaced"));
    EXPECT_EQ(text(package.write(copy)), ok) << "also without an entry";
    ioPackageFile other;
    EXPECT_EQ(text(other.open(copy)), ok);
    for (const char* name : {"b", "a", "c"})
        EXPECT_EQ(add(name, std::string(10, *name)), ok);
    succeed({remove("b"), text(package.write(file))});
    EXPECT_TRUE(fs::exists(copy.asUTF8()));
    EXPECT_EQ(package.getEntry(L"c")->getOffset(), 95) << "in the order of the names, without gaps";
    EXPECT_EQ(add("d", "not in the directory yet"), ok);
    other.swap(package);
    EXPECT_EQ(package.getPackageFileName(), copy);
    EXPECT_EQ(other.getEntry(L"c")->getPackage(), &other);
    EXPECT_EQ(text(other.update()), ok);
    EXPECT_EQ(packages::reopened(folder.path("p")), packages::contents(other));
    EXPECT_EQ(other.open(wide(folder.path("none/x"))).code(), 2);
    EXPECT_EQ(other.size(), 0) << "a failed open leaves nothing of what was open";
}

// By text, "link/../p" is "p": a file that is there would be taken for one that is missing.
TEST_F(PackageTest, MeansWhatTheSystemMeansByAPath) {
    EXPECT_EQ(add("a", "abc"), ok);
    fs::create_directories(folder.path("away/inner"));
    fs::create_directory_symlink("away/inner", folder.path("link"));
    folder.write("q", "not touched");
    const zeString::IString path = wide(folder.path("link/../q"));
    succeed({text(package.write(path)), text(package.open(path))});
    EXPECT_EQ(folder.read("q"), "not touched");
    EXPECT_EQ(packages::reopened(folder.path("away/q")), (packages::Contents{{"a", "abc"}}));
}

TEST_F(PackageTest, TakesOnlyASourceThatKeepsItsSize) {
    const zeString::IString growing(L"/proc/self/status"); // with a size of 0
    EXPECT_EQ(text(package.addEntry(growing, L"c", true)),
              "8 While compressing file it changed size: /proc/self/status");
    EXPECT_EQ(add("a", "old"), ok);
    const SystemFaults shrinking(SystemFaults::onRead, {{0, 2}, {0, 0}});
    EXPECT_EQ(add("a", "new"), "16 While writing file for entry it changed size: a");
    EXPECT_EQ(package.size(), 0) << "the old entry is gone";
}

TEST_F(PackageTest, SeesAnEmptySliceWhereTheFileHasBeenCut) {
    succeed({add("a", "abc"), add("b", "def")});
    fs::resize_file(folder.path("p"), 90);
    EXPECT_EQ(packages::contents(package), (packages::Contents{{"a", "abc"}, {"b", ""}}));
    EXPECT_EQ(text(package.expand(wide(folder.path()))), ok);
    EXPECT_EQ(folder.read("b"), "");
    EXPECT_EQ(text(package.write(wide(folder.path("q")))),
              "16 While writing file for entry it changed size: b");
}

TEST_F(PackageTest, NeitherWaitsForNorDestroysWhatIsNoFile) {
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& source : {fifo, folder.path()})
        EXPECT_EQ(text(package.addEntry(wide(source), L"a", source == fifo)),
                  "7 Could not read file: " + source + '\n');
    succeed({add("a", "abc"), add("fifo", "def"), text(package.update())});
    fs::create_symlink("p", folder.path("link"));
    for (const char* own : {"p", "link"}) {
        EXPECT_EQ(text(package.extractEntry(package.getEntry(L"a"), wide(folder.path(own)))),
                  "2 Can not create file: " + folder.path(own));
        EXPECT_EQ(packages::reopened(folder.path("p")).size(), 2U) << own;
    }
    EXPECT_EQ(text(package.extractEntry(package.getEntry(L"a"), L"/dev/null")), ok);
    fs::create_directory(folder.path("out"));
    fs::rename(fifo, folder.path("out/fifo"));
    EXPECT_EQ(text(package.expand(wide(folder.path("out")))),
              "2 Can not create file: " + folder.path("out/fifo"));
    ioPackageFile other;
    for (const std::string& path : {folder.path(), folder.path("out/fifo")}) {
        EXPECT_EQ(text(other.open(wide(path))), "17 The file is not a package file: " + path);
        EXPECT_FALSE(ioPackageFile::isFilePackageFile(wide(path)));
    }
}

TEST(PackageExpansion, WritesNothingOutsideOfTheDirectory) {
    const std::string bad = "12 File is using a name which is not allowed: ";
    const struct {
        std::string name, inside, failure; // where it lies, or what the failure begins with
        std::string from{};                // the current directory, below what "../.." means
    } cases[] = {
        {"deep/er/down/here/a", "deep/er/down/here/a", ""},
        {"/x", "x", ""},
        {"a/../b", "b", ""},
        {"./a//b/", "a/b", ""},
        {"../out/c", "c", ""}, // a way back in
        {"../x", "", bad},
        {"..", "", bad},
        {"a/../..", "", bad},
        {"/../../../../../../../../../../tmp/x", "", bad},
        {"x/../../../victim", "", bad, "folder/deep"}, // the normal form keeps it as it is
        {"x/../../out/c", "", bad, "folder/deep"},
        {"x/../c", "c", "", "folder/deep"},
        {"folderlink/x", "", "5 "},
        {"filelink", "", "2 "},
        {"danglinglink", "", "2 "},
        {"file/x", "", "5 "},
        {"folder", "", "2 "},
        {"x/..", "", "2 "},
    };
    const fs::path before = fs::current_path();
    for (const auto& [name, inside, failure, from] : cases) {
        SCOPED_TRACE(name);
        const TempFolder place;
        fs::create_directories(place.path("work/out/folder/deep"));
        fs::create_directory(place.path("work/outer"));
        place.write("work/victim", "untouched");
        place.write("work/out/file", "file");
        fs::create_symlink("../outer", place.path("work/out/folderlink"));
        fs::create_symlink("../victim", place.path("work/out/filelink"));
        fs::create_symlink("../new", place.path("work/out/danglinglink"));
        const std::string path =
            place.write("p", packages::package("new", {{name, 85, 3}, {"", 88, -1}}));
        ioPackageFile hostile;
        ASSERT_EQ(text(hostile.open(wide(path))), ok);
        fs::current_path(place.path("work/out/" + from));
        const std::string outcome =
            text(hostile.expand(wide(from.empty() ? place.path("work/out") : "../..")));
        fs::current_path(before);
        EXPECT_EQ(outcome.substr(0, failure.size()), failure);
        EXPECT_EQ(outcome == ok, failure.empty()) << outcome;
        EXPECT_EQ(inside.empty() ? "new" : place.read("work/out/" + inside), "new");
        EXPECT_EQ(place.read("work/victim"), "untouched");
        for (const auto& [parent, entries] : {std::pair("", 2), {"work", 3}, {"work/outer", 0}})
            EXPECT_EQ(
                std::distance(fs::directory_iterator(place.path(parent)), fs::directory_iterator()),
                entries);
    }
}

TEST_F(PackageTest, ExpandsRelativePathsAndKeepsTheRuleForMissingDirectories) {
    EXPECT_EQ(add("a/b/c/d/e", "deep"), ok);
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    for (const wchar_t* place : {L"some/where", L"some", L"."})
        EXPECT_EQ(text(package.expand(place)), ok);
    for (const wchar_t* place : {L"", L"missing", L"100%s"})
        EXPECT_EQ(package.expand(place).code(), 5);
    EXPECT_EQ(text(package.extractEntry(package.getEntry(0), L"plain")), ok);
    fs::current_path(before);
    for (const char* place : {"some/where/a/b/c/d/e", "some/a/b/c/d/e", "a/b/c/d/e", "plain"})
        EXPECT_EQ(folder.read(place), "deep") << place;
}

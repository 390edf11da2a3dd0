// SPDX-License-Identifier: MIT

// The file handle upon the local disk.

#include "Base/OS/zeOSFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/OS/zeOSFileEntryPoints.h"
#include "Base/OS/zeOSFileOperations.h"
#include "Base/OS/zeOSFilesystem.h"
#include "Base/OS/zeOSLocalFileTransport.h"
#include "Base/OS/zeOSTempDirectory.h"
#include "Support/Locale.h"

#include "OS/files/FileFixture.h"

using testing::MatchesRegex;
using testing::UnorderedElementsAre;
using zeOS::File;
using zeString::IString;

namespace {

class LocalFile : public FileFixture {
protected:
    /// What a read of `count` bytes brings.
    static std::string readSome(File& file, unsigned long count, zeUtil::Error& error) {
        std::string bytes(count, '\0');
        unsigned long done = 0;
        error = file.read(bytes.data(), count, &done);
        bytes.resize(done);
        return bytes;
    }

    std::vector<std::string> namesIn(const IString& directory, bool fullNames) {
        std::vector<IString> names = {"stale"};
        EXPECT_EQ(text(File(directory).readDir(names, fullNames)), "");
        std::vector<std::string> result;
        for (const IString& name : names)
            result.emplace_back(name.asUTF8());
        return result;
    }
};

/// Makes the current directory the folder.
class LocalFileInFolder : public LocalFile {
protected:
    void SetUp() override { std::filesystem::current_path(folder.path()); }
    void TearDown() override { std::filesystem::current_path("/"); }
};

/// Narrow entry points read names in the locale's encoding.
using NarrowNames = support::Utf8LocaleTest;

} // namespace

TEST_F(LocalFile, OpensInOneOfFourWaysForEveryModeThereIs) {
    struct Way {
        int opens, reads, writes;
        const char* content; // afterwards
        const char* madeAnew;
    };
    const Way none = {File::ErrIO, File::ErrIO, File::ErrIO, "old", nullptr};
    const Way reading = {0, File::ErrEndOfFile, File::ErrIO, "old", nullptr};
    const Way writing = {0, 0, 0, "new", ""};
    const Way appending = {0, File::ErrEndOfFile, 0, "oldnew", ""};
    for (int mode = 0; mode < 64; ++mode) {
        SCOPED_TRACE(mode);
        const bool read = mode & 4;
        const bool write = mode & 8;
        const bool append = mode & 16;
        const Way& way = append ? appending : read ? reading : write ? writing : none;
        File file(wide(folder.write("there", "old")));
        char bytes[8];
        EXPECT_EQ(file.open(mode).code(), way.opens);
        EXPECT_EQ(file.read(bytes, 8, nullptr).code(), way.reads);
        EXPECT_EQ(file.write("new", 3, nullptr).code(), way.writes);
        EXPECT_EQ(file.close().code(), way.opens ? File::ErrNotOpen : 0);
        EXPECT_EQ(folder.read("there"), way.content);

        File missing(at("missing"));
        EXPECT_EQ(missing.open(mode).code(), way.madeAnew ? 0 : read ? 18 : 4);
        EXPECT_EQ(isThere("missing"), way.madeAnew != nullptr);
        std::filesystem::remove(folder.path("missing"));
    }
    EXPECT_EQ(text(File(at("missing")).open(File::ModeRead)), "18: File does not exist");
    EXPECT_EQ(File::getError(File::ErrNone), zeUtil::Error()); // with no message, not an empty one
}

TEST_F(LocalFile, TellsTheEndOnlyWhenAReadMeetsIt) {
    zeUtil::Error error;
    File file(wide(folder.write("a", "12345")));
    EXPECT_EQ(readSome(file, 1, error), "");
    EXPECT_EQ(text(error), "4: An I/O problem has occurred"); // not open
    file.open(File::ModeRead);
    EXPECT_EQ(readSome(file, 5, error), "12345");
    EXPECT_EQ(text(error), "");
    EXPECT_EQ(readSome(file, 5, error), "");
    EXPECT_EQ(text(error), "3: End Of File");
    file.close();
    file.open(File::ModeRead);
    EXPECT_EQ(readSome(file, 6, error), "12345");
    EXPECT_EQ(text(error), "3: End Of File");

    // A directory opens, and each read of it fails: with a short count, and success.
    File directory(at(""));
    EXPECT_EQ(text(directory.open(File::ModeRead)), "");
    EXPECT_EQ(readSome(directory, 5, error), "");
    EXPECT_EQ(text(error), "");
}

TEST_F(LocalFile, IsNamedByTheFactory) {
    const struct {
        const char* asked;
        const char* name;
        const char* title;
        const char* base;
    } rows[] = {
        {"/a/b", "/a/b", "/a/", "b"},
        {"a", "a", "", ""},
        {"", "", "", ""},
        {"file:/a/b", "//a/b", "//a/", "b"},
        {"file:///a/b/", "////a/b", "////a/", "b"},
        {"file:a", "/a", "/", "a"},
        {"file:", "/", "/", ""},
        {"http://a/b", "http://a/b", "http://a/", "b"},
        {":file:a/b", ":file:a/b", ":file:a/", "b"},
    };
    for (const auto& row : rows) {
        const File file(zeOS::LocalFileTransportFactory().create(row.asked));
        EXPECT_STREQ(file.getFullName().asUTF8(), row.name);
        EXPECT_STREQ(file.getNameTitle().asUTF8(), row.title) << row.asked;
        EXPECT_STREQ(file.getNameBase().asUTF8(), row.base) << row.asked;
    }
    EXPECT_EQ(zeOS::LocalFileTransportFactory::s_forceTransportLoad(), 1);
}

TEST_F(LocalFile, SaysWhatAQueryFinds) {
    folder.write("a", "12345");
    link("a", "link");
    link("nothing", "dangling");
    link("loop", "loop");
    const struct {
        const char* name;
        const char* result;
        bool exists, isFile, isDirectory;
    } rows[] = {
        {"a", "", true, true, false},
        {"link", "", true, true, false},
        {"", "", true, false, true},
        {"missing", "", false, false, false},
        {"dangling", "", false, false, false},
        {"a/b", "4: Not a directory", false, false, false},
        {"loop", "4: Too many levels of symbolic links", false, false, false},
    };
    for (const auto& row : rows) {
        zeOS::FileStatus status;
        status.setExists(true);
        EXPECT_EQ(text(File::query(zeOS::Filename(at(row.name)), status)), row.result);
        EXPECT_EQ(status.exists(), row.exists) << row.name;
        EXPECT_EQ(status.isFile(), row.isFile) << row.name;
        EXPECT_EQ(status.isDirectory(), row.isDirectory) << row.name;
        EXPECT_EQ(zeOS::doesFileExist(at(row.name)), row.exists) << row.name;
    }
    struct stat expected;
    ASSERT_EQ(::stat(folder.path("a").c_str(), &expected), 0);
    zeOS::FileStatus status;
    EXPECT_EQ(text(File(at("a")).query(status, true)), "");
    EXPECT_EQ(status.size(), 5);
    EXPECT_EQ(status.lastModification(), expected.st_mtime);
    EXPECT_EQ(status.creationDate(), expected.st_ctime);
}

// A File looks once what it is, and keeps to that.
TEST_F(LocalFile, RemembersForEverWhetherItIsADirectory) {
    File file(at("a/"));
    EXPECT_FALSE(file.isDirectory());
    EXPECT_EQ(text(file.makeDirectory()), "");
    EXPECT_TRUE(file.isDirectory()); // a failed look is not remembered
    std::filesystem::remove(folder.path("a"));
    folder.write("a", "");
    EXPECT_TRUE(file.isDirectory());
    EXPECT_FALSE(File(at("a/")).isDirectory());
    EXPECT_EQ(text(File(at("a/")).makeDirectory()), "2: File Exists");
    EXPECT_EQ(text(File(at("no/a")).makeDirectory()), "4: An I/O problem has occurred");
}

TEST_F(LocalFileInFolder, MakesDirectoriesTwoStepsAtATime) {
    const struct {
        const char* path;
        const char* result;
        const char* there; // afterwards
        const char* notThere;
    } rows[] = {
        {"there", "", "there", nullptr},
        {"a", "12: The path is too long", nullptr, "a"},
        {"a/", "2: File Exists", "a", nullptr},
        {"a/b", "", "a/b", nullptr},
        {"a/b/c", "12: The path is too long", nullptr, "a"},
        {"a/b/c/d", "", "a/b/c/d", nullptr},
        {"there/b/c/d/e/f", "", "there/b/c/d/e/f", nullptr},
        {"there/b/", "2: File Exists", "there/b", nullptr},
        {"file/b", "2: File Exists", "file", nullptr},
        {"/zeBase-no-such-directory/b/c", "12: The path is too long", nullptr, nullptr},
        {"", "12: The path is too long", nullptr, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        makeFolder("there");
        folder.write("file", "");
        EXPECT_EQ(text(File(row.path).makeDirectoryAll()), row.result);
        EXPECT_TRUE(!row.there || isThere(row.there));
        EXPECT_FALSE(row.notThere && isThere(row.notThere));
        for (const char* name : {"there", "a"})
            std::filesystem::remove_all(folder.path(name));
    }
}

TEST_F(LocalFile, ListsADirectoryAndTakesAnUnreadableOneForEmpty) {
    makeFolder("d");
    folder.write("d/a", "");
    folder.write("d/bad\xFF", "");
    EXPECT_THAT(namesIn(at("d"), false), UnorderedElementsAre(".", "..", "a", "bad?"));
    EXPECT_THAT(namesIn(at("d/"), true),
                UnorderedElementsAre(folder.path("d/."), folder.path("d/.."), folder.path("d/a"),
                                     folder.path("d/bad?")));
    std::vector<IString> names = {"stale"};
    EXPECT_EQ(text(File(at("d/a")).readDir(names, false)), "10: Resource is not a directory");
    EXPECT_EQ(names.size(), 1u);
    EXPECT_EQ(text(File(at("d/a")).getTransport()->readDir(names, false)), "");
    EXPECT_TRUE(names.empty());
}

TEST_F(LocalFile, DeletesATreeAndLeavesWhatItsLinksPointTo) {
    makeFolder("outside");
    folder.write("outside/kept", "content");
    makeFolder("tree");
    link("../outside/kept", "tree/file");
    link("nowhere", "tree/dangling");
    link("loop", "tree/loop");
    EXPECT_EQ(text(File(at("tree")).deleteSelf(File::DeleteNonRecursive)),
              "4: An I/O problem has occurred");
    EXPECT_EQ(text(File(at("tree")).deleteSelf(0)), "");
    EXPECT_FALSE(isThere("tree"));
    EXPECT_EQ(folder.read("outside/kept"), "content");

    // A link given itself is followed: what it points to is emptied, and both stay.
    link("outside", "link");
    EXPECT_EQ(text(File(at("link")).deleteSelf(0)), "4: An I/O problem has occurred");
    EXPECT_TRUE(isThere("link") && isThere("outside"));
    EXPECT_FALSE(isThere("outside/kept"));
}

TEST_F(LocalFile, MovesByRenamingWhereItCan) {
    const auto move = [&](const std::string& from, const std::string& to) {
        File target(at(to));
        return text(File(at(from)).moveTo(target));
    };
    folder.write("a", "a");
    EXPECT_EQ(move("a", "a"), ""); // only copyTo() refuses that
    EXPECT_EQ(move("missing", "b"), "2: File Exists");
    makeFolder("d/e");
    EXPECT_EQ(move("d", "f"), "");
    EXPECT_TRUE(isThere("f/e"));
    // A file to a directory is no renaming: the copy refuses it.
    EXPECT_EQ(move("a", "f"), "4: An I/O problem has occurred");
}

TEST_F(LocalFileInFolder, OpensTemporaryFilesInTheCurrentDirectory) {
    const struct {
        const char* name;
        const char* made;
    } rows[] = {
        {"scene.dat", "scene\\.datdat......"}, // the suffix twice: always so
        {"/no/such/directory/scene.dat", "scene\\.datdat......"},
        {"plain", "plain......"},
        {"", "ASTMP[0-9]+......"},
        {"/", "ASTMP[0-9]+......"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        File file(row.name);
        EXPECT_EQ(text(file.openTemp(File::ModeWrite)), "");
        file.write("content", 7, nullptr);
        file.close();
        const std::string made = file.getFullName().asUTF8();
        EXPECT_THAT(made, MatchesRegex(row.made));
        EXPECT_EQ(folder.read(made), "content");
        EXPECT_EQ(std::filesystem::status(made).permissions(), std::filesystem::perms(0600));
        EXPECT_EQ(text(file.deleteSelf(File::DeleteNonRecursive)), "");
    }
    File file("a");
    EXPECT_EQ(text(file.openTemp(0)),
              "4: An I/O problem has occurred"); // no stream has such a mode
    EXPECT_EQ(file.getFullName(), L"a");
    EXPECT_FALSE(file.isOpen());
}

TEST_F(LocalFile, MakesTemporaryDirectoriesNextToItOrWhereTheyBelong) {
    File beside(at("a"));
    EXPECT_EQ(text(beside.makeTempDirectory()), "");
    EXPECT_THAT(beside.getFullName().asUTF8(), MatchesRegex(folder.path("[a-y]{10}")));
    EXPECT_TRUE(beside.isDirectory());
    zeOS::setTempDirectory(at(""));
    File anywhere("a");
    EXPECT_EQ(text(anywhere.makeTempDirectory()), "");
    zeOS::setTempDirectory("");
    EXPECT_THAT(anywhere.getFullName().asUTF8(), MatchesRegex(folder.path("[a-y]{10}")));
    // The name that was tried last is kept.
    File nowhere(at("no/a"));
    EXPECT_EQ(text(nowhere.makeTempDirectory()), "4: An I/O problem has occurred");
    EXPECT_THAT(nowhere.getFullName().asUTF8(), MatchesRegex(folder.path("no/[a-y]{10}")));
}

TEST_F(LocalFile, FindsTheTemporaryDirectory) {
    const auto directory = [] { return std::string(zeOS::getTempDirectory().path().asUTF8()); };
    unsetenv("TMPDIR");
    EXPECT_EQ(directory(), "/tmp");
    setenv("TMPDIR", "/var//tmp/", 1);
    EXPECT_EQ(directory(), "/var/tmp");
    zeOS::setTempDirectory("/client");
    EXPECT_EQ(directory(), "/client");
    zeOS::setTempDirectory("");
    setenv("TMPDIR", "", 1);
    EXPECT_EQ(directory(), ""); // set, though to nothing
    unsetenv("TMPDIR");
}

TEST_F(LocalFile, ShowsTheSizeOfItsVolume) {
    zeOS::Filesystem volume(at(""));
    EXPECT_EQ(text(volume.stat()), "");
    const auto expected = std::filesystem::space(folder.path());
    EXPECT_NEAR(static_cast<double>(volume.totalKB()),
                static_cast<double>(expected.capacity) / 1024, 1);
    EXPECT_LE(volume.availableKB(), volume.totalKB());
    EXPECT_EQ(volume.path(), at(""));
}

TEST_F(LocalFile, GivesItsFirstBytesOnlyWhereItHasSoMany) {
    const std::string path = folder.write("a", "12345");
    const struct {
        const char* path;
        int count, result;
    } rows[] = {
        {path.c_str(), 3, 3},     {path.c_str(), 5, 5},
        {path.c_str(), 6, -1},    {path.c_str(), 0, 0},
        {path.c_str(), -1, -1},   {"/no/such/file", 0, 0},
        {"/no/such/file", 3, -1}, {"/", 3, 0},
    };
    for (const auto& row : rows) {
        char buffer[8] = {};
        EXPECT_EQ(zeOS_ReadHeaderFromFile(row.path, buffer, row.count), row.result);
        EXPECT_EQ(zeOS_ReadHeaderFromFileW(IString(row.path).asWChar(), buffer, row.count),
                  row.result);
        EXPECT_EQ(zeOS_ReadHeaderFromFile(row.path, nullptr, row.count), -1);
    }
    EXPECT_EQ(zeOS_DoesDirectoryExist(path.c_str()), 1); // a plain file as well
    EXPECT_EQ(zeOS_DoesDirectoryExist("/no/such/file"), 0);
    EXPECT_EQ(zeOS_DoesFileExistW(nullptr), 0);
}

TEST_F(NarrowNames, AreReadInTheLocalesEncoding) {
    const TempFolder folder;
    const std::string from = folder.write("Sch\xC3\xB6n", "content");
    const std::string to = folder.path("\xE6\xBC\xA2");
    EXPECT_EQ(zeOS_IsFileWriteable(from.c_str()), 1);
    EXPECT_EQ(zeOS_CopyFileTo(from.c_str(), to.c_str()), 0);
    EXPECT_EQ(folder.read("\xE6\xBC\xA2"), "content");
    EXPECT_EQ(text(zeOS::fileRename(to.c_str(), (to + "2").c_str())), "");
    EXPECT_EQ(text(zeOS::fileMove((to + "2").c_str(), to.c_str(), false)), "");
    EXPECT_EQ(text(zeOS::fileDelete(to.c_str())), "");
    EXPECT_EQ(text(zeOS::fileDelete(to.c_str())), "1: No such file or directory");
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(zeOS_DoesFileExist(from.c_str()), 0); // "?" for what it cannot read
}

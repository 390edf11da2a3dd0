// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSProtectedWrite.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "Base/OS/zeOSTempDirectory.h"
#include "Support/OrdinaryUser.h"
#include "Support/SystemFaults.h"

#include "OS/files/OtherProcess.h"
#include "OS/files/SaveFolder.h"

namespace {

using zeOS::ProtectedWrite;

/// Both strategies: by renaming (false) and by copying (true).
class ProtectedWriteBy : public testing::TestWithParam<bool> {
protected:
    bool copies() const { return GetParam(); }

    /// A new save of the document.
    ProtectedWrite& begin(const zeOS::Filename& name) {
        save.emplace(name);
        if (copies())
            save->useCopyStrategy();
        return *save;
    }
    ProtectedWrite& begin() { return begin(folder.mainName()); }

    SaveFolder folder;
    std::optional<ProtectedWrite> save;
};

INSTANTIATE_TEST_SUITE_P(Strategy, ProtectedWriteBy, testing::Bool(),
                         [](const auto& test) { return test.param ? "Copying" : "Renaming"; });

} // namespace

TEST_P(ProtectedWriteBy, PutsTheFirstFileInItsPlaceOnce) {
    std::filesystem::remove(folder.main);
    begin();
    EXPECT_TRUE(save->finalize()); // does nothing before init()
    EXPECT_TRUE(save->init());
    EXPECT_TRUE(save->init());
    EXPECT_EQ(folder.state(), ""); // the name is only proposed
    EXPECT_TRUE(writeFile(save->getTempFilename(), newContent));
    EXPECT_EQ(folder.state(), "temp new");
    EXPECT_TRUE(save->finalize());
    EXPECT_EQ(folder.state(), "main new");
    // The name is taken, so a second one has nothing to put in place.
    EXPECT_FALSE(save->finalize());
    EXPECT_EQ(save->getStatus(), ProtectedWrite::StatusTempMissing);
    EXPECT_EQ(folder.state(), "main new");
}

TEST_P(ProtectedWriteBy, KeepsTheOldFileWhenTheNewOneIsNotComplete) {
    for (const bool writes : {false, true}) {
        begin();
        ASSERT_TRUE(save->init());
        if (writes) {
            writeFile(save->getTempFilename(), newContent);
            save->invalidate();
        }
        EXPECT_FALSE(save->finalize());
        EXPECT_EQ(save->getStatus(),
                  writes ? ProtectedWrite::StatusInvalidated : ProtectedWrite::StatusTempMissing);
        EXPECT_EQ(folder.state(), "main old");
        EXPECT_FALSE(save->init()); // reports the same, and does nothing
    }
    // An early return, or an exception.
    begin();
    ASSERT_TRUE(save->init());
    writeFile(save->getTempFilename(), newContent);
    EXPECT_EQ(folder.state(), "main old, temp new");
    save.reset();
    EXPECT_EQ(folder.state(), "main old");
}

// It is the file's own right that counts at first: what the directory allows shows in the writing,
// and is no matter for copies.
TEST_P(ProtectedWriteBy, FindsOutInWritingWhetherTheDirectoryTakesFiles) {
    std::filesystem::permissions(folder.main, std::filesystem::perms::all);
    std::filesystem::permissions(folder.documents(), std::filesystem::perms(0555));
    EXPECT_EQ(asOrdinaryUser([&] {
                  const SaveResult result = saveNewContent(begin());
                  return result.initialized ? result.status : 100;
              }),
              copies() ? ProtectedWrite::StatusOk : ProtectedWrite::StatusInvalidated);
    EXPECT_EQ(folder.state(), copies() ? "main new" : "main old");
}

TEST_P(ProtectedWriteBy, ReplacesALinkAndLeavesWhatItPointsAt) {
    const std::string target = folder.documents() + "/target";
    std::filesystem::rename(folder.main, target);
    std::filesystem::create_symlink(target, folder.main);
    EXPECT_TRUE(saveNewContent(begin()).finalized);
    EXPECT_EQ(folder.state(), "main new, target old");
    // A copy goes through a link that points nowhere.
    std::filesystem::rename(folder.main, target);
    std::filesystem::create_symlink(folder.documents() + "/nowhere", folder.main);
    EXPECT_TRUE(saveNewContent(begin()).finalized);
    EXPECT_EQ(folder.state(),
              copies() ? "main link, nowhere new, target new" : "main new, target new");
}

TEST_P(ProtectedWriteBy, RefusesWhatIsNeitherFileNorDirectoryAtOnce) {
    const std::string pipe = folder.documents() + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
    alarm(10); // ends the test, should it wait for somebody at the other end
    for (const std::string& name : {pipe, std::string("/dev/null")}) {
        begin(zeOS::Filename(name.c_str()));
        EXPECT_FALSE(save->init());
        EXPECT_EQ(save->getStatus(), ProtectedWrite::StatusNotWritable);
        EXPECT_FALSE(save->finalize());
    }
    alarm(0);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST_P(ProtectedWriteBy, TakesTheSchemeOfLocalFilesOffTheName) {
    const std::string name = "file:" + folder.main;
    EXPECT_TRUE(saveNewContent(begin(zeOS::Filename(name.c_str()))).finalized);
    EXPECT_EQ(folder.state(), "main new");
    // A relative one is one in the root, as in zeOS::File.
    const std::string inRoot = "file:" + folder.main.substr(1);
    writeFile(folder.mainName(), oldContent);
    EXPECT_TRUE(saveNewContent(begin(zeOS::Filename(inRoot.c_str()))).finalized);
    EXPECT_EQ(folder.state(), "main new");
}

// Nobody saves over a directory on purpose. Nothing in it is lost.
TEST_P(ProtectedWriteBy, NeverDeletesADirectory) {
    std::filesystem::remove(folder.main);
    std::filesystem::create_directory(folder.main);
    const SaveResult result = saveNewContent(begin());
    EXPECT_EQ(result.finalized, !copies());
    EXPECT_EQ(result.status, copies() ? ProtectedWrite::StatusCannotBackup : 0);
    EXPECT_EQ(folder.state(), copies() ? "main directory" : "backup directory, main new");
}

TEST_P(ProtectedWriteBy, TakesABareNameInTheCurrentDirectory) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.documents());
    EXPECT_TRUE(saveNewContent(begin(zeOS::Filename(L"scene.zd"))).finalized);
    std::filesystem::current_path(before);
    EXPECT_EQ(folder.state(), "main new");
}

// The C library takes 5 bytes of the prefix, and would cut a character in two.
TEST_P(ProtectedWriteBy, NamesItsFilesAfterTheBeginningOfTheMainName) {
    const std::string process = std::to_string(getpid()) + "...";
    const struct {
        const char* name;
        std::string prefix;
    } cases[] = {
        {"x", "x." + process.substr(0, 3)},  {"scene.zd", "scene"},
        {"abcd\u00E4.zd", "abcd"},           {"\U0001F600\U0001F600", "\U0001F600"},
        {"two\nlines and blanks", "two\nl"},
    };
    for (const auto& test : cases) {
        const SaveFolder ours(test.name);
        EXPECT_TRUE(saveNewContent(begin(ours.mainName())).finalized);
        const std::string name = save->getTempFilename().basename().asUTF8();
        EXPECT_EQ(name.size(), test.prefix.size() + 6 + std::string(".0.tmp").size()) << name;
        EXPECT_TRUE(name.starts_with(test.prefix)) << name;
    }
}

// A name beside the main file would then be that of the directory, which is cleared like any link.
TEST_P(ProtectedWriteBy, TouchesNoLinkedDirectoryWithoutNamesForItsFiles) {
    const std::string link = folder.temporary() + "/link";
    std::filesystem::create_symlink(folder.documents(), link);
    for (const std::size_t n : {1U, 2U}) {
        std::vector<SystemFaults::Answer> answers(n);
        answers.back() = {ENOENT};
        const SystemFaults faults(SystemFaults::onTempnam, answers);
        EXPECT_FALSE(saveNewContent(begin(zeOS::Filename((link + "/scene.zd").c_str()))).finalized);
        save.reset();
        EXPECT_EQ(folder.state(), "link link, main old");
    }
}

TEST(ProtectedWriteByCopying, FailsOnceWhereItHadToMakeTheTemporaryDirectory) {
    const SaveFolder folder;
    const auto tryToSave = [&] { return saveOnce(folder.mainName(), true).status; };
    std::filesystem::remove(folder.temporary());
    EXPECT_EQ(tryToSave(), ProtectedWrite::StatusTempDirCreated);
    EXPECT_EQ(folder.state(), "main old");
    EXPECT_TRUE(std::filesystem::is_directory(folder.temporary()));
    EXPECT_EQ(tryToSave(), ProtectedWrite::StatusOk);
    EXPECT_EQ(folder.state(), "main new");

    std::filesystem::remove(folder.temporary());
    writeFile(zeOS::getTempDirectory(), "a file");
    EXPECT_EQ(tryToSave(), ProtectedWrite::StatusTempNotDirectory);

    // One that cannot be made is passed over: the C library then proposes names in "/tmp".
    zeOS::setTempDirectory((folder.temporary() + "/cannot/be").c_str());
    EXPECT_EQ(tryToSave(), ProtectedWrite::StatusOk);
    EXPECT_EQ(folder.state(), "main new");
}

TEST(ProtectedWriteByCopying, CopiesNothingThatIsNoFile) {
    const SaveFolder folder;
    ProtectedWrite save(folder.mainName());
    save.useCopyStrategy();
    ASSERT_TRUE(save.init());
    ASSERT_EQ(mkfifo(save.getTempFilename().path().asUTF8(), 0666), 0);
    EXPECT_FALSE(save.finalize());
    EXPECT_EQ(save.getStatus(), ProtectedWrite::StatusNotWritable);
    EXPECT_EQ(folder.state(), "main old");
}

TEST(ProtectedWriteByCopying, FollowsNoLinkThatIsPlantedInThePlaceOfTheMainFile) {
    const SaveFolder folder;
    const TempFolder outside(std::filesystem::path(folder.main).parent_path().parent_path());
    const std::string victim = outside.write("victim", "content");
    const OtherProcess planting(
        [&] { std::ignore = symlink(victim.c_str(), folder.main.c_str()); });
    repeatForAWhile([&] {
        std::filesystem::rename(outside.write("document", oldContent), folder.main);
        saveOnce(folder.mainName(), true);
        return outside.read("victim") == "content";
    });
    EXPECT_EQ(outside.read("victim"), "content");
}

TEST(ProtectedWriteByCopying, MixesNoTwoSavesOfOneFile) {
    const std::string contents[] = {std::string(300000, 'a'), std::string(200000, 'b')};
    repeatForAWhile([&] {
        // On a disk, where the waits are long between the steps.
        const SaveFolder folder("scene.zd", std::filesystem::temp_directory_path());
        const auto saveAs = [&](const std::string& content) {
            return saveOnce(folder.mainName(), true, content).status;
        };
        const pid_t child = fork();
        if (child == 0)
            _exit(saveAs(contents[1]));
        const bool firstWon = saveAs(contents[0]) == ProtectedWrite::StatusOk;
        int status = 0;
        waitpid(child, &status, 0);
        const bool secondWon = WEXITSTATUS(status) == ProtectedWrite::StatusOk;
        std::ifstream file(folder.main, std::ios::binary);
        const std::string main{std::istreambuf_iterator<char>(file), {}};
        const bool isWhole =
            (firstWon && main == contents[0]) || (secondWon && main == contents[1]);
        EXPECT_TRUE(isWhole) << main.size() << " bytes, " << firstWon << secondWon;
        return isWhole;
    });
}

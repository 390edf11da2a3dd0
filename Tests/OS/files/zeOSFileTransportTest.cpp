// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFileTransport.h"

#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/OS/zeOSFileEntryPoints.h"
#include "Base/OS/zeOSFileFactory.h"
#include "Base/OS/zeOSFileOperations.h"

#include "OS/files/FileFixture.h"
#include "OS/files/MemoryStorage.h"

using testing::ElementsAre;
using zeOS::File;

namespace {

class Transport : public FileFixture {
protected:
    void SetUp() override {
        MemoryFactory::registerOnce();
        memory = MemoryStorage();
    }

    MemoryTransport a{"mem:a"};
    MemoryTransport b{"mem:b"};
};

} // namespace

TEST_F(Transport, IsAskedForByTheFirstRegisteredFactoryThatKnowsTheName) {
    static struct : zeOS::FileTransportFactory {
        std::vector<std::string> asked;
        zeOS::FileTransport* create(const zeString::IString& name) override {
            asked.push_back(name.asMultibyte());
            return nullptr;
        }
    } declining;
    zeOS::FileFactory::getFileFactory()->registerTransport(&declining);
    EXPECT_EQ(File("mem:x").transportId(), L"MemoryTransport");
    EXPECT_THAT(declining.asked, ElementsAre());
    File other("other:x");
    EXPECT_EQ(other.transportId(), L"LocalFileTransport");
    EXPECT_EQ(other.getFullName(), L"other:x");
    EXPECT_THAT(declining.asked, ElementsAre("other:x"));

    memory.entries = {{"mem:x", "content"}};
    const zeOS::Filename known(L"mem:x");
    EXPECT_TRUE(zeOS::doesFileExist(known) && zeOS::isFileWritable(known));
    EXPECT_FALSE(zeOS::doesFileExist(zeOS::Filename(L"mem:y")));
    EXPECT_TRUE(zeOS::doesFileExist(zeOS::Filename(L"/tmp")));
}

TEST_F(Transport, RefusesEverythingButTheStreamWhileItIsOpen) {
    memory.entries = {{"mem:a", "content"}};
    File file("mem:a");
    File other("mem:b");
    zeOS::FileStatus status;
    EXPECT_EQ(text(file.close()), "8: File is not open");
    EXPECT_EQ(text(file.open(File::ModeRead)), "");
    for (const zeUtil::Error& error :
         {file.open(File::ModeRead), file.openTemp(File::ModeWrite), file.makeDirectory(),
          file.makeTempDirectory(), file.makeDirectoryAll(), file.copyTo(other), file.moveTo(other),
          file.deleteSelf(File::DeleteNonRecursive), other.copyTo(file),
          b.copyTo(*file.getTransport())})
        EXPECT_EQ(text(error), "9: File is open");
    EXPECT_EQ(text(file.query(status, false)), "");
    EXPECT_THAT(memory.log, ElementsAre("open mem:a 4"));
    EXPECT_EQ(text(file.close()), "");
}

TEST_F(Transport, CopiesABlockAtATimeAndClosesTheTargetLast) {
    memory.entries = {{"mem:a", std::string(4097, 'x')}};
    EXPECT_EQ(text(a.copyTo(b)), "");
    EXPECT_THAT(memory.log,
                ElementsAre("open mem:b 40", "open mem:a 6", "read mem:a", "write mem:b 4096",
                            "read mem:a", "write mem:b 1", "close mem:a", "close mem:b"));
    EXPECT_EQ(text(a.copyTo(a)), "7: No Overwrite permission");
    EXPECT_EQ(text(a.moveTo(a)), "7: No Overwrite permission");
}

// Only the last close speaks. The copies that call themselves a success with less than the whole
// content are known to callers, which compare sizes.
TEST_F(Transport, ReportsNothingOfAFileCopyButTheLastClose) {
    const std::string content(5000, 'x');
    const std::string block(4096, 'x');
    const struct {
        std::map<std::string, int> faults;
        const char* result;
        std::optional<std::string> copy;
    } rows[] = {
        {{}, "", content},
        {{{"open mem:b", File::ErrNoWrite}}, "4: An I/O problem has occurred", {}},
        {{{"open mem:a", File::ErrDoesNotExist}}, "", ""},
        {{{"open mem:a", File::ErrNoRead}, {"close mem:b", File::ErrNoWrite}},
         "5: No write permission",
         ""},
        {{{"read mem:a", File::ErrIO}}, "", ""},
        {{{"read mem:a", File::ErrNone}}, "", ""}, // would go on for ever
        {{{"write mem:b", File::ErrIO}}, "", ""},
        {{{"close mem:a", File::ErrIO}}, "", content},
        {{{"close mem:b", File::ErrIO}}, "4: An I/O problem has occurred", content},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        memory = {{{"mem:a", content}}, row.faults, {}};
        EXPECT_EQ(text(a.copyTo(b)), row.result);
        EXPECT_FALSE(a.isOpen() || b.isOpen());
        const auto copy = memory.entries.find("mem:b");
        EXPECT_EQ(copy == memory.entries.end() ? std::nullopt : copy->second, row.copy);
    }
}

TEST_F(Transport, MergesDirectoriesAndKeepsTheFirstFailure) {
    memory.entries = {{"mem:a", {}},     {"mem:a\\d", {}},  {"mem:a\\d\\x", "1"},
                      {"mem:a\\y", "2"}, {"mem:a\\z", "3"}, {"mem:b", {}},
                      {"mem:b\\d", {}},  {"mem:b\\y", "y"}, {"mem:b\\old", "o"}};
    memory.faults = {{"open mem:b\\d\\x", File::ErrNoWrite}, {"open mem:b\\y", File::ErrNoWrite}};
    EXPECT_EQ(text(a.moveTo(b)), "4: An I/O problem has occurred");
    EXPECT_EQ(memory.entries["mem:b\\z"], "3");
    EXPECT_EQ(memory.entries["mem:b\\y"], "y");
    EXPECT_EQ(memory.entries["mem:b\\old"], "o");

    memory.faults = {{"makeDirectory mem:b", File::ErrNoWrite}};
    EXPECT_EQ(text(a.copyTo(b)), "5: No write permission");
    memory.faults = {{"readDir mem:a", File::ErrNoRead}};
    EXPECT_EQ(text(a.copyTo(b)), "6: No read permission");
    EXPECT_EQ(text(a.recursiveDeleteSelf()), "6: No read permission");
    memory.faults = {};
    EXPECT_EQ(text(MemoryTransport("mem:a\\y").recreateDirStructure(b, false)),
              "10: Resource is not a directory");
}

// A directory that was copied still holds its entries: deleting it is refused, both copies stay.
TEST_F(Transport, LeavesBothCopiesOfADirectoryThatItMoves) {
    memory.entries = {{"mem:a", {}}, {"mem:a\\x", "1"}};
    EXPECT_EQ(text(a.moveTo(b)), "13: The directory is not empty");
    EXPECT_EQ(memory.entries["mem:b\\x"], "1");
    EXPECT_EQ(memory.entries["mem:a\\x"], "1");
    EXPECT_EQ(text(a.recreateDirStructure(b, true)), "");
    EXPECT_EQ(memory.entries.count("mem:a\\x"), 0u);
}

TEST_F(Transport, ShowsAChildThatStaysOnlyInTheDirectoryThatStays) {
    memory.entries = {{"mem:a", {}}, {"mem:a\\d", {}}, {"mem:a\\d\\x", "1"}, {"mem:a\\y", "2"}};
    memory.faults = {{"delete mem:a\\d\\x", File::ErrIO}};
    EXPECT_EQ(text(File("mem:a").deleteSelf(File::DeleteRecursive)),
              "13: The directory is not empty");
    EXPECT_EQ(memory.entries.size(), 3u);
    memory.faults = {};
    EXPECT_EQ(text(File("mem:a").deleteSelf(0)), "");
    EXPECT_THAT(memory.entries, testing::IsEmpty());
}

TEST_F(Transport, TranslatesTheSeparatorsOfWhatItCopies) {
    memory.entries = {{"mem:a", {}}, {"mem:a\\d", {}}, {"mem:a\\d\\x", "1"}};
    memory.marksDirectories = true;
    File disk(at("copy"));
    EXPECT_EQ(text(File("mem:a").copyTo(disk)), "");
    EXPECT_EQ(folder.read("copy/d/x"), "1");
    File back("mem:b");
    EXPECT_EQ(text(File(at("copy")).copyTo(back)), "");
    EXPECT_EQ(memory.entries["mem:b\\d\\x"], "1");
}

// An entry of a local directory, too, goes by the transport that claims its name.
TEST_F(Transport, DeletesAndCopiesWhatItClaimsInALocalTree) {
    makeFolder("tree/sub");
    folder.write("tree/sub/x.mem", "on disk");
    const std::string claimed = folder.path("tree/sub/x.mem");
    memory.entries = {{claimed, "in memory"}};
    File copy(at("copy"));
    EXPECT_EQ(text(File(at("tree")).copyTo(copy)), "");
    EXPECT_EQ(memory.entries[folder.path("copy/sub/x.mem")], "in memory");
    EXPECT_EQ(text(File(at("tree")).deleteSelf(0)), "4: An I/O problem has occurred");
    EXPECT_EQ(memory.entries.count(claimed), 0u);
    EXPECT_TRUE(isThere("tree/sub/x.mem")); // the transport's own affair
}

// SPDX-License-Identifier: MIT

// MemoryMappedFile with its FileMapping, and MemMapFile.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "Base/OS/zeOSMemMapFile.h"
#include "Base/OS/zeOSMemoryMappedFile.h"
#include "Base/Strings/zeStringCString.h"
#include "Support/FaultTrial.h"

#include "OS/files/FileFixture.h"

using zeOS::FileMapping;
using zeOS::MemMapFile;
using zeOS::MemoryMappedFile;

namespace {

using FileMappingDeathTest = FileFixture;
using FileMappingTest = FileFixture;
using MemMapFileTest = FileFixture;
using MemoryMappedFileTest = FileFixture;

constexpr long page = 4096;
constexpr unsigned long mebi = 1048576;

char& byteOf(const FileMapping& mapping, long at) {
    return static_cast<char*>(mapping.pointer)[at];
}

/// The pages of a mapping that are in memory.
unsigned long residentPages(const FileMapping& mapping) {
    std::vector<unsigned char> pages((mapping.size + page - 1) / page);
    EXPECT_EQ(mincore(mapping.pointer, mapping.size, pages.data()), 0);
    return static_cast<unsigned long>(
        std::count_if(pages.begin(), pages.end(), [](unsigned char flags) { return flags & 1; }));
}

} // namespace

TEST_F(MemoryMappedFileTest, SharesItsBytesAmongMappingsAndWithTheFile) {
    MemoryMappedFile file;
    EXPECT_FALSE(file.valid());
    ASSERT_TRUE(file.createFile(at("data"), 3 * page, false));
    EXPECT_TRUE(file.valid());
    EXPECT_EQ(file.getSize(), 3 * page);
    EXPECT_EQ(folder.read("data"), std::string(3 * page - 1, '\0') + "x");
    struct stat status;
    ASSERT_EQ(stat(folder.path("data").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);

    FileMapping whole = file.map(0, 3 * page);
    FileMapping second = file.map(page, page);
    byteOf(second, 5) = 'a';
    EXPECT_EQ(byteOf(whole, page + 5), 'a');
    second.flush(0, page);
    EXPECT_EQ(folder.read("data")[page + 5], 'a');

    EXPECT_EQ(file.map(1, page).pointer, nullptr) << "an offset within a page";
    for (FileMapping* mapping : {&whole, &second}) {
        mapping->unmap();
        EXPECT_EQ(mapping->pointer, nullptr);
        mapping->unmap();
        mapping->flush(0, page); // nothing to do
        mapping->load(0, page);
    }
}

TEST_F(MemoryMappedFileTest, LivesWithoutAName) {
    const std::string name = folder.path("data");
    MemoryMappedFile file;
    ASSERT_TRUE(file.createFile(wide(name), page, true));
    EXPECT_NE(access(name.c_str(), F_OK), 0);
    EXPECT_STREQ(file.getFilename().asUTF8(), name.c_str());
    FileMapping mapping = file.map(0, page);
    ASSERT_TRUE(file.createFile(wide(name), 2 * page, true)) << "a second file";
    EXPECT_EQ(byteOf(mapping, page - 1), 'x') << "mappings outlive their file";
    mapping.unmap();
    for (const long size : {0l, -1l, LONG_MIN})
        EXPECT_FALSE(file.createFile(wide(name), size, true));
    EXPECT_FALSE(file.valid());
    EXPECT_TRUE(file.getFilename().isEmpty());
    EXPECT_EQ(file.map(0, page).pointer, nullptr);
}

TEST_F(MemoryMappedFileTest, HoldsNothingAfterAnyFailure) {
    FaultTrial trial;
    std::unique_ptr<MemoryMappedFile> file;
    bool created = false;
    trial.operation = [&] {
        file = std::make_unique<MemoryMappedFile>();
        created = file->createFile(at("data"), page, true);
        const bool valid = file->valid();
        EXPECT_EQ(valid, created);
        file.reset();
    };
    trial.check = [&](const Fault& fault) {
        const bool harmless =
            fault.n == 0 || fault.call == SystemFaults::onClose ||
            (fault.answer.error == EINTR && fault.call != SystemFaults::onUnlink) ||
            fault.answer.error == 0;
        EXPECT_EQ(created, harmless) << SystemFaults::name(fault.call) << ' ' << fault.n;
    };
    EXPECT_EQ(trial.runAll(), "open close write unlink lseek");
    trial.report("creating a mapped file");
}

TEST_F(FileMappingTest, ReadsAByteOfEachPageWithinTheMapping) {
    const struct {
        unsigned long from, to, read;
    } cases[] = {
        {0, mebi - 1, 1},        {0, mebi, 257},        {5, mebi + 5, 257},
        {mebi, 2 * mebi, 257},   {mebi, 9 * mebi, 512}, {2 * mebi, 3 * mebi, 256},
        {3 * mebi, 3 * mebi, 0}, {mebi, 0, 0},
    };
    for (const auto& row : cases) {
        MemoryMappedFile file;
        ASSERT_TRUE(file.createFile(at("data"), 3 * mebi, true));
        FileMapping mapping = file.map(0, 3 * mebi);
        ASSERT_EQ(madvise(mapping.pointer, mapping.size, MADV_RANDOM), 0); // no reading ahead
        const unsigned long before = residentPages(mapping);
        mapping.accessPagesSequentially(row.from, row.to);
        // The last page is there from the start: the file got its length through it.
        const bool touchesLast = row.from < 3 * mebi && row.to >= 3 * mebi;
        EXPECT_EQ(residentPages(mapping) - before + touchesLast, row.read) << row.from;
        mapping.load(0, 3 * mebi);
        EXPECT_EQ(residentPages(mapping), 3 * mebi / page);
        mapping.unmap();
    }
}

TEST_F(FileMappingDeathTest, EndsTheProcessWhereTheFileBecameShorter) {
    MemoryMappedFile file;
    ASSERT_TRUE(file.createFile(at("data"), 2 * page, false));
    const FileMapping mapping = file.map(0, 2 * page);
    ASSERT_EQ(truncate(folder.path("data").c_str(), page), 0);
    EXPECT_EQ(byteOf(mapping, page - 1), 0);
    EXPECT_EXIT(
        {
            std::signal(SIGBUS, SIG_DFL); // sanitizers have a handler
            byteOf(mapping, page) = 1;
        },
        testing::KilledBySignal(SIGBUS), "");
}

TEST_F(MemMapFileTest, MapsAFileToReadOrToWrite) {
    const std::string name = folder.path("data");
    {
        MemMapFile file(name.c_str(), 10, 1);
        const auto [bytes, error] = file.map();
        EXPECT_EQ(error.code(), 0);
        std::memcpy(bytes, "0123456789", 10);
        EXPECT_EQ(text(file.unmap()), "");
        EXPECT_EQ(text(file.unmap()), "4: ") << "not mapped";
    }
    EXPECT_EQ(folder.read("data"), "0123456789");
    {
        MemMapFile file(zeString::CString(name.c_str()), 10, 0);
        EXPECT_EQ(std::memcmp(file.map().first, "0123456789", 10), 0);
    } // unmapped here
    MemMapFile(wide(name), 10, 1).map();
    EXPECT_EQ(folder.read("data"), std::string("012345678\0", 10)) << "the last byte, always";
    MemMapFile(wide(name), 4, 1).map();
    EXPECT_EQ(folder.read("data"), std::string("012\0"
                                               "45678\0",
                                               10));
}

TEST_F(MemMapFileTest, ReportsWhatFails) {
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::string missing = folder.path("missing");
    const std::string data = folder.write("data", "data");
    const struct {
        std::string name;
        unsigned long size;
        int mode, openError;
        std::string said;
    } cases[] = {
        {missing, 4, 0, 0, "2: Cannot open file " + missing + ": No such file or directory"},
        {folder.path(), 4, 1, 0, "2: Cannot open file " + folder.path() + ": Is a directory"},
        {data, 4, 0, EACCES, "3: Cannot read file: " + data + ": Permission denied"},
        {data, 4, 1, EACCES, "3: Cannot read/write file " + data + ": Permission denied"},
        {data, 4, 0, EINTR, ""},
        {fifo, 4, 1, 0, "2: Cannot seek in file " + fifo + ": Illegal seek"},
        {data, (1ul << 63) + 8, 1, 0, "2: Cannot seek to 7 in file " + data + ": Invalid argument"},
        {"/dev/full", 4, 1, 0, "2: Cannot write to file /dev/full: No space left on device"},
    };
    for (const auto& row : cases) {
        MemMapFile file(wide(row.name), row.size, row.mode);
        const SystemFaults faults(SystemFaults::onOpen, {{row.openError}});
        const auto [bytes, error] = file.map();
        EXPECT_EQ(text(error), row.said);
        EXPECT_EQ(bytes != nullptr, error.code() == 0);
    }
    for (const auto& [size, mode, message] :
         {std::tuple(4ul, 2, "1: Bad parameters to MemMapFile(): permissions"),
          std::tuple(0ul, 0, "1: Bad parameters to MemMapFile(): size")})
        try {
            MemMapFile file("name", size, mode);
            ADD_FAILURE() << message;
        } catch (const zeUtil::Error& error) {
            EXPECT_EQ(text(error), message);
        }
}

// Kept for compatibility: callers compare the address.
TEST_F(MemMapFileTest, GivesTheAddressMapFailedWithoutAnError) {
    MemMapFile file(at(""), 4, 0); // a directory opens, but cannot be mapped
    const auto [bytes, error] = file.map();
    EXPECT_EQ(bytes, MAP_FAILED);
    EXPECT_EQ(error.code(), 0);
    EXPECT_EQ(text(file.unmap()),
              "2: munmap() failed for file " + folder.path() + ": Invalid argument");
    EXPECT_EQ(file.unmap().code(), 4);
}

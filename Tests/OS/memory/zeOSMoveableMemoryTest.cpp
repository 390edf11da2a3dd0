// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSMoveableMemory.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "Base/OS/zeOSMemoryMappedFile.h"
#include "Base/Strings/zeStringIString.h"
#include "Support/FaultTrial.h"
#include "Support/TempFolder.h"

#include "OS/memory/MoveableWork.h"

using Mapping = ze::Reference<zeOS::MoveableMapping>;
using zeOS::MoveableMemory;

namespace {

constexpr unsigned long kibi = 1024;
constexpr unsigned long mebi = 1024 * kibi;

class MoveableMemoryTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(memory.initializeFiles(directory, L"test")); }

    /// Files and regions as "files/bytes regions/bytes mapped", in MiB and KiB.
    std::string statistics() {
        const MoveableMemory::Stats stats = memory.getStats();
        return std::to_string(stats.fileCount) + "/" + std::to_string(stats.fileBytes / mebi) +
               "M " + std::to_string(stats.chunkCount) + "/" +
               std::to_string(stats.chunkBytes / kibi) + "K " +
               std::to_string(stats.mappedBytes / kibi) + "K";
    }

    const TempFolder folder;
    const zeString::IString directory{folder.path().c_str(), zeString::EncodingUTF8};
    MoveableMemory memory;
};

} // namespace

TEST(MMAllocator, DoesWhatASlowTwinDoes) {
    compareWithTwin(40000);
}

TEST(MMAllocator, LosesNoBlockWhenMemoryRunsOut) {
    runOutOfMemory();
}

TEST(MoveableAllocator, KeepsEachContentApart) {
    keepContents(40000);
}

TEST_F(MoveableMemoryTest, NeedsAFolderForItsFiles) {
    MoveableMemory fresh;
    zeOS::MoveableAllocator allocator(fresh);
    EXPECT_FALSE(fresh.allocate(1));
    EXPECT_EQ(allocator.allocate(1), nullptr);
    EXPECT_FALSE(fresh.initializeFiles(L"", L"test"));
    EXPECT_FALSE(fresh.initializeFiles(directory, L""));
    EXPECT_FALSE(fresh.initializeFiles(L"/nowhere", L"test"));
    EXPECT_FALSE(fresh.allocate(1));
    EXPECT_TRUE(fresh.initializeFiles(directory, L"test"));
    EXPECT_FALSE(fresh.allocate(0));
    EXPECT_FALSE(fresh.allocate(~0ul)) << "no file is that long";
    EXPECT_TRUE(fresh.allocate(1));
    const Mapping region = fresh.allocate(1);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << "its file has no name";
}

TEST_F(MoveableMemoryTest, CutsRegionsFromFiles) {
    const struct {
        unsigned long asked, size;
        const char* statistics;
    } rows[] = {
        {1, 64 * kibi, "1/128M 1/64K 0K"},
        {64 * kibi + 1, 128 * kibi, "1/128M 1/128K 0K"},
        {32 * mebi, 32 * mebi, "1/128M 1/32768K 0K"},
        {32 * mebi + 1, 32 * mebi + 1, "1/32M 1/32768K 0K"}, // a file of its own, of just this size
        {128 * mebi, 128 * mebi, "1/128M 1/131072K 0K"},
    };
    for (const auto& row : rows) {
        const Mapping region = memory.allocate(row.asked);
        EXPECT_EQ(region->getSize(), row.size);
        EXPECT_EQ(statistics(), row.statistics);
    }
    EXPECT_EQ(statistics(), "0/0M 0/0K 0K");

    // What is left of a file is not split off if it is no more than 64 KiB.
    Mapping parts[] = {memory.allocate(32 * mebi), memory.allocate(32 * mebi),
                       memory.allocate(32 * mebi), memory.allocate(32 * mebi - 128 * kibi)};
    const Mapping last = memory.allocate(64 * kibi);
    EXPECT_EQ(last->getSize(), 128 * kibi);
    EXPECT_EQ(statistics(), "1/128M 5/131072K 0K");
    parts[2] = parts[1] = nullptr; // one free region now
    EXPECT_EQ(memory.allocate(32 * mebi)->getSize(), 32 * mebi);
    EXPECT_EQ(statistics(), "1/128M 3/65536K 0K");
}

TEST_F(MoveableMemoryTest, KeepsOneFileInReserve) {
    memory.allocate(1);
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit none{0, limit.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
    EXPECT_TRUE(memory.allocate(128 * mebi)) << "the file in reserve";
    EXPECT_EQ(statistics(), "0/0M 0/0K 0K"); // asking closes it
    EXPECT_FALSE(memory.allocate(1)) << "no new file can be made";
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_TRUE(memory.allocate(1));
}

TEST_F(MoveableMemoryTest, CountsExactlyButForTheDrift) {
    std::vector<Mapping> regions;
    std::mt19937 random(5);
    unsigned long bytes = 0, mapped = 0;
    for (int step = 0; step < 5000; ++step) {
        const std::size_t i = random() % 40;
        if (i >= regions.size()) {
            regions.push_back(memory.allocate(1 + random() % (40 * mebi)));
            ASSERT_TRUE(regions.back());
            bytes += regions.back()->getSize();
        } else if (random() % 4) {
            const unsigned long size = regions[i]->getSize();
            const bool wasMapped = regions[i]->getPtr();
            for (int time = 0; time < 2; ++time) // the second time does nothing
                wasMapped ? regions[i]->unmap() : static_cast<void>(regions[i]->map());
            mapped = wasMapped ? mapped - size : mapped + size;
        } else { // if it is mapped, its bytes stay counted
            bytes -= regions[i]->getSize();
            regions[i] = regions.back();
            regions.pop_back();
        }
        const MoveableMemory::Stats stats = memory.getStats();
        ASSERT_EQ(stats.chunkCount, static_cast<int>(regions.size()));
        ASSERT_EQ(stats.chunkBytes, bytes);
        ASSERT_EQ(stats.mappedBytes, mapped);
        ASSERT_GE(stats.fileBytes, bytes);
    }
}

TEST_F(MoveableMemoryTest, KeepsTheBlockMappedThatWasUsedLast) {
    zeOS::MoveableAllocator allocator(memory);
    zeOS::MoveableChunk* const a = allocator.allocate(1);
    zeOS::MoveableChunk* const b = allocator.allocate(mebi); // another block
    zeOS::MoveableChunk* const c = allocator.allocate(1);
    char* const first = static_cast<char*>(a->map());
    EXPECT_EQ(static_cast<char*>(c->map()) - first, 32);
    a->unmap();
    a->unmap(); // once is enough
    EXPECT_EQ(statistics(), "1/128M 2/2048K 1024K");
    c->unmap();
    b->map();
    EXPECT_EQ(statistics(), "1/128M 2/2048K 2048K");
    b->unmap(); // takes the place of the other block
    EXPECT_EQ(statistics(), "1/128M 2/2048K 1024K");
    allocator.unmapCachedMappings();
    EXPECT_EQ(statistics(), "1/128M 2/2048K 0K");
    b->map();
    delete b; // mapped
    delete a;
    delete c;
    EXPECT_EQ(statistics(), "0/0M 0/0K 0K");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define NO_LIMIT_OF_ADDRESSES
#endif
#endif
#ifndef NO_LIMIT_OF_ADDRESSES
// Without address space map() gives null, and the chunk wants its unmap() all the same.
TEST_F(MoveableMemoryTest, GivesNoAddressWhereThereIsNone) {
    zeOS::MoveableAllocator allocator(memory);
    zeOS::MoveableChunk* const chunk = allocator.allocate(512 * mebi);
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &limit), 0);
    const rlimit little{256 * mebi, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &little), 0);
    EXPECT_EQ(chunk->map(), nullptr);
    EXPECT_EQ(chunk->map(), nullptr);
    EXPECT_TRUE(chunk->isMapped());
    EXPECT_EQ(statistics(), "1/512M 1/524288K 0K");
    chunk->unmap();
    ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
    EXPECT_NE(chunk->map(), nullptr);
    delete chunk;
    EXPECT_EQ(statistics(), "0/0M 0/0K 0K");
}
#endif
#endif

TEST_F(MoveableMemoryTest, HoldsNothingAfterAFailedAllocation) {
    FaultTrial trial;
    bool allocated = false;
    trial.operation = [&] {
        allocated = static_cast<bool>(memory.allocate(mebi));
        EXPECT_EQ(statistics(), "0/0M 0/0K 0K");
    };
    trial.check = [&](const Fault& fault) {
        const bool fatal = fault.n > 0 && fault.answer.error &&
                           fault.call != SystemFaults::onClose &&
                           (fault.answer.error != EINTR || fault.call == SystemFaults::onUnlink);
        EXPECT_EQ(allocated, !fatal);
    };
    EXPECT_EQ(trial.runAll(), "open close write unlink lseek");
    trial.report("allocating moveable memory");
}

// SPDX-License-Identifier: MIT

// MemoryIOStream and FSAllocator, each against a plain container.

#include <algorithm>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/OS/zeOSFSAllocator.h"
#include "Base/OS/zeOSMemoryIOStream.h"
#include "Base/OS/zeOSMoveableMemory.h"
#include "Base/Strings/zeStringIString.h"

#include "OS/files/FileFixture.h"

using zeOS::FSAllocator;
using zeOS::MemoryIOStream;

namespace {

class MemoryStream : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        ASSERT_TRUE(memory.initializeFiles(
            zeString::IString(folder.path().c_str(), zeString::EncodingUTF8), L"test"));
        allocator = GetParam() ? &chunks : nullptr;
    }

    const TempFolder folder;
    zeOS::MoveableMemory memory;
    zeOS::MoveableAllocator chunks{memory};
    zeOS::MoveableAllocator* allocator = nullptr;
    std::mt19937 random{7};
};

std::string readAll(MemoryIOStream& stream, unsigned long piece) {
    std::string all, part(piece, '\0');
    unsigned long done = 0;
    stream.openForRead();
    while (stream.read(part.data(), piece, &done).code() == 0)
        all.append(part, 0, done);
    EXPECT_EQ(done, 0u);
    stream.close();
    return all;
}

} // namespace

TEST_P(MemoryStream, GivesBackWhatWasWrittenInPiecesOfAnySize) {
    for (const unsigned long blockSize : {0ul, 1ul, 7ul, 64ul, 4096ul}) {
        MemoryIOStream stream(blockSize, allocator);
        for (int round = 0; round < 20; ++round) {
            std::string written;
            stream.openForWrite();
            for (unsigned long pieces = random() % 20; pieces > 0; --pieces) {
                std::string piece(random() % 300, '\0');
                for (char& byte : piece)
                    byte = static_cast<char>(random());
                unsigned long done = 999;
                ASSERT_EQ(stream.write(piece.data(), piece.size(), &done).code(), 0);
                ASSERT_EQ(done, piece.size());
                written += piece;
            }
            stream.close();
            ASSERT_EQ(stream.getSize(), written.size());
            ASSERT_EQ(readAll(stream, 1 + random() % 400), written);
        }
        stream.openForWrite();
    }
    EXPECT_EQ(chunks.getNumAllocated(), 0);
}

TEST_P(MemoryStream, HandsItsBlocksOver) {
    MemoryIOStream a(10, allocator);
    MemoryIOStream b(10, allocator);
    a.openForWrite();
    a.write("0123456789abcde", 15, nullptr);
    a.close();
    MemoryIOStream::BlockList blocks = a.getBlocks();
    EXPECT_EQ(blocks.size(), 2u);
    a.releaseBlocks(blocks);
    EXPECT_EQ(a.getSize(), 0u);
    EXPECT_EQ(readAll(a, 10), "");
    b.openForWrite(); // an open stream goes on behind what it is given
    b.setBlocks(blocks);
    EXPECT_TRUE(blocks.empty());
    b.write("XY", 2, nullptr);
    b.close();
    EXPECT_EQ(readAll(b, 100), "0123456789abcdeXY");

    char read[4];
    b.openForRead(); // and reads from the start of it
    b.read(read, 3, nullptr);
    b.releaseBlocks(blocks);
    EXPECT_EQ(b.read(read, 3, nullptr).code(), 1);
    b.setBlocks(blocks);
    EXPECT_EQ(b.read(read, 3, nullptr).code(), 0);
    EXPECT_EQ(std::memcmp(read, "012", 3), 0);
    b.close();
    b.setBlocks(blocks); // none
    EXPECT_EQ(b.getSize(), 0u);
}

TEST_P(MemoryStream, RefusesTheDirectionThatIsNotOpen) {
    MemoryIOStream stream(10, allocator);
    char byte = 0;
    unsigned long done = 9;
    EXPECT_EQ(text(stream.read(&byte, 1, &done)), "1: Stream is not open for read");
    EXPECT_EQ(done, 0u);
    done = 9;
    EXPECT_EQ(text(stream.write(&byte, 1, &done)), "1: Stream not open for write");
    EXPECT_EQ(done, 0u);
    stream.openForRead();
    EXPECT_EQ(text(stream.read(&byte, 1, &done)), "1: EOF");
    stream.openForWrite();
    EXPECT_EQ(stream.write("a", 1, nullptr).code(), 0);
    stream.openForRead();
    EXPECT_EQ(text(stream.read(&byte, 0, nullptr)), "1: EOF") << "a read of no bytes";
    EXPECT_EQ(stream.read(&byte, 1, nullptr).code(), 0);
}

INSTANTIATE_TEST_SUITE_P(Memory, MemoryStream, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "Moveable" : "Plain"; });

TEST(MemoryStreamMapping, MapsOneBlockAtATime) {
    const TempFolder folder;
    zeOS::MoveableMemory memory;
    ASSERT_TRUE(memory.initializeFiles(
        zeString::IString(folder.path().c_str(), zeString::EncodingUTF8), L"test"));
    zeOS::MoveableAllocator chunks(memory);
    constexpr unsigned long blockSize = 1 << 20; // each is a mapping of its own
    MemoryIOStream stream(blockSize, &chunks);
    const std::string piece(100000, 'p');
    const auto check = [&] { EXPECT_LE(memory.getStats().mappedBytes, 2 * blockSize); };
    stream.openForWrite();
    for (int i = 0; i < 100; ++i, check())
        stream.write(piece.data(), piece.size(), nullptr);
    std::string read(piece.size(), '\0');
    stream.openForRead();
    for (int i = 0; i < 100; ++i, check())
        EXPECT_EQ(stream.read(read.data(), read.size(), nullptr).code(), 0);
    stream.close();
    chunks.unmapCachedMappings();
    EXPECT_EQ(memory.getStats().mappedBytes, 0u);
}

TEST(FSAllocator, HandsOutEachElementOnce) {
    std::mt19937 random(3);
    for (const unsigned long size : {1ul, 8ul, 12ul, 31ul, 200ul}) {
        FSAllocator pool(size, 1000);
        const unsigned long stride = std::max(size, 8ul);
        std::set<char*> used;
        for (int step = 0; step < 20000; ++step) {
            if (random() % 1000 == 0) {
                pool.freeAll();
                used.clear();
            } else if (random() % 100 < (step / 2000 % 2 ? 30 : 70) || used.empty()) {
                char* const element = static_cast<char*>(pool.alloc());
                const auto [place, isNew] = used.insert(element);
                ASSERT_TRUE(isNew);
                ASSERT_TRUE(std::next(place) == used.end() ||
                            *std::next(place) - element >= long(stride));
                ASSERT_TRUE(place == used.begin() || element - *std::prev(place) >= long(stride));
                std::memset(element, static_cast<int>(random()), stride);
            } else {
                auto element = used.lower_bound(*used.begin() + random() % 20000);
                if (element == used.end())
                    element = used.begin();
                pool.free(*element);
                used.erase(element);
            }
        }
    }
}

TEST(FSAllocator, FillsABlockAndUsesWhatIsFreedFirst) {
    FSAllocator pool(1, 1024);
    char* const first = static_cast<char*>(pool.alloc());
    for (int i = 1; i < 128; ++i)
        EXPECT_EQ(pool.alloc(), first + 8 * i);
    char* const other = static_cast<char*>(pool.alloc());
    pool.free(first + 8);
    EXPECT_EQ(pool.alloc(), other + 8) << "the current block has room";
    pool.free(other);
    EXPECT_EQ(pool.alloc(), other);
    FSAllocator single(100, 50); // room for one at least
    void* const only = single.alloc();
    EXPECT_NE(single.alloc(), only);
}

// SPDX-License-Identifier: MIT

#include "OS/memory/MoveableWork.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/OS/memory/zeOSMMAllocatorImpl.h"
#include "Base/OS/zeOSMoveableMemory.h"
#include "Base/Strings/zeStringIString.h"
#include "Support/TempFolder.h"

namespace {

constexpr unsigned long alignment = 16;
constexpr unsigned long threshold = 1000;
constexpr unsigned long blockSize = 2000;
constexpr int maxBlocks = 16;

struct Block;
struct Chunk : zeUtil::LinkedListNode<Chunk> {
    unsigned long size;
    Block* block;
    unsigned long offset;
    bool isFree = false;

    Chunk(unsigned long chunkSize, Block* owner, unsigned long start)
        : size(chunkSize), block(owner), offset(start) {}
};
struct Block {
    zeUtil::LinkedList<Chunk> chunks;
    unsigned long size = 0; // 0: not in use
};
struct Types {
    using Block = ::Block;
    using Chunk = ::Chunk;
};

/// Takes its blocks from an array, the first one free: so the twin knows the order of addresses.
class Allocator : public zeOS::MMAllocator<Types> {
public:
    explicit Allocator(bool keepSpare) : MMAllocator(threshold, alignment, blockSize, keepSpare) {}
    ~Allocator() override { freeSpareBlock(); }

    Block* allocateBlock(unsigned long size) override {
        const auto place = std::find_if(blocks.begin(), blocks.end(),
                                        [](const Block& block) { return block.size == 0; });
        if (place == blocks.end())
            return nullptr;
        place->size = size;
        return &*place;
    }
    Chunk* allocateChunk(unsigned long size, Block* block, unsigned long offset,
                         bool whole) override {
        EXPECT_EQ(whole, size == block->size);
        if (chunksUntilFailure-- == 0)
            throw std::bad_alloc();
        return new Chunk(size, block, offset);
    }
    void freeBlock(Block* block) override { block->size = 0; }
    void freeChunk(Chunk* chunk) override { delete chunk; }
    void chunkAllocated(Chunk* chunk) override { bytes += chunk->size; }
    void chunkFreed(Chunk* chunk) override { bytes -= chunk->size; }

    std::array<Block, maxBlocks> blocks;
    unsigned long bytes = 0;
    long chunksUntilFailure = -1; // none fails
};

/// The same by plain means: the pieces of each block in order.
class Twin {
public:
    struct Piece {
        unsigned long offset, size;
        bool isFree;
        friend bool operator==(const Piece&, const Piece&) = default;
    };
    using Pieces = std::vector<Piece>;

    explicit Twin(bool keepSpare) : keepSpare_(keepSpare) {}

    /// Block and offset; block -1 if there is none. The loops run over plain pointers: the ten
    /// million steps are to be quick without optimisation, too.
    std::pair<int, unsigned long> allocate(unsigned long size) {
        if (size > threshold) {
            const int block = takeBlock(size);
            if (block >= 0)
                blocks[static_cast<unsigned>(block)] = {{0, size, false}};
            return {block, 0};
        }
        const unsigned long aligned = (size + alignment - 1) / alignment * alignment;
        int best = -1;
        std::size_t place = 0;
        unsigned long bestSize = ~0ul;
        for (int block = 0; block < maxBlocks; ++block) {
            const Piece* const first = pieces(block).data();
            for (std::size_t i = 0, n = pieces(block).size(); i < n; ++i)
                if (first[i].isFree && first[i].size >= aligned && first[i].size < bestSize)
                    best = block, place = i, bestSize = first[i].size;
        }
        if (best < 0) {
            best = takeBlock(blockSize);
            if (best < 0)
                return {-1, 0};
            pieces(best) = {{0, blockSize, true}};
            place = 0;
        }
        Pieces& all = pieces(best);
        const Piece found = all[place];
        all[place].isFree = false;
        if (found.size - aligned > alignment) {
            all[place].size = aligned;
            all.insert(all.begin() + static_cast<long>(place) + 1,
                       {found.offset + aligned, found.size - aligned, true});
        }
        return {best, found.offset};
    }

    void free(int block, unsigned long offset) {
        Pieces& all = pieces(block);
        Piece* const first = all.data();
        for (std::size_t i = 0, n = all.size(); i < n; ++i)
            first[i].isFree = first[i].isFree || first[i].offset == offset;
        for (std::size_t i = all.size() - 1; i > 0; --i)
            if (first[i].isFree && first[i - 1].isFree) {
                first[i - 1].size += first[i].size;
                all.erase(all.begin() + static_cast<long>(i));
            }
        if (all.size() > 1 || !all[0].isFree)
            return;
        const bool isOrdinary = all[0].size == blockSize;
        all.clear();
        if (keepSpare_ && spare_ < 0 && isOrdinary)
            spare_ = block;
    }

    std::array<Pieces, maxBlocks> blocks;

private:
    Pieces& pieces(int block) { return blocks[static_cast<unsigned>(block)]; }

    int takeBlock(unsigned long size) {
        if (size == blockSize && spare_ >= 0)
            return std::exchange(spare_, -1);
        for (int block = 0; block < maxBlocks; ++block)
            if (pieces(block).empty() && block != spare_)
                return block;
        return -1;
    }

    bool keepSpare_;
    int spare_ = -1;
};

/// Small sizes as a rule, and those around each limit.
unsigned long randomSize(std::mt19937& random, unsigned long limit, unsigned long block) {
    switch (random() % 64) {
    case 0:
        return block - 1 + random() % 3;
    case 1:
        return limit - 1 + random() % 3;
    case 2:
        return 1 + random() % (2 * limit);
    default:
        return 1 + random() % 300;
    }
}

} // namespace

void compareWithTwin(int steps) {
    for (const bool keepSpare : {false, true}) {
        Allocator allocator(keepSpare);
        Twin twin(keepSpare);
        std::vector<Chunk*> used;
        std::mt19937 random(keepSpare);
        unsigned long bytes = 0;
        const auto release = [&](std::size_t i) {
            Chunk* const chunk = std::exchange(used[i], used.back());
            used.pop_back();
            bytes -= chunk->size;
            twin.free(static_cast<int>(chunk->block - allocator.blocks.data()), chunk->offset);
            allocator.release(chunk);
        };
        for (int step = 0; step < steps / 2; ++step) {
            // The number of chunks swings, so that blocks come and go.
            if (random() % 100 < (step / 500 % 2 ? 35u : 65u) || used.empty()) {
                const unsigned long size = randomSize(random, threshold, blockSize);
                const auto [block, offset] = twin.allocate(size);
                Chunk* const chunk = allocator.allocate(size);
                ASSERT_EQ(chunk != nullptr, block >= 0);
                if (!chunk)
                    continue;
                ASSERT_EQ(chunk->block - allocator.blocks.data(), block) << "step " << step;
                ASSERT_EQ(chunk->offset, offset) << "step " << step;
                ASSERT_GE(chunk->size, size);
                bytes += chunk->size;
                used.push_back(chunk);
            } else {
                release(random() % used.size());
            }
            ASSERT_EQ(allocator.bytes, bytes);
            ASSERT_EQ(allocator.numChunks(), static_cast<int>(used.size()));
            if (step % 64)
                continue;
            for (std::size_t i = 0; i < allocator.blocks.size(); ++i) {
                Twin::Pieces pieces;
                for (const Chunk* chunk = allocator.blocks[i].chunks.first(); chunk;
                     chunk = chunk->next())
                    pieces.push_back({chunk->offset, chunk->size, chunk->isFree});
                ASSERT_EQ(pieces, twin.blocks[i]) << "step " << step << " block " << i;
            }
        }
        while (!used.empty())
            release(used.size() - 1);
    }
}

void runOutOfMemory() {
    for (const unsigned long size : {threshold + 1, blockSize, 20ul})
        for (long successes = 0; successes < (size > threshold ? 1 : 2); ++successes) {
            Allocator allocator(true);
            allocator.chunksUntilFailure = successes;
            EXPECT_THROW(allocator.allocate(size), std::bad_alloc);
            EXPECT_EQ(allocator.numChunks(), 0);
            Chunk* const chunk = allocator.allocate(size);
            ASSERT_TRUE(chunk);
            EXPECT_EQ(chunk->block, allocator.blocks.data()) << "no block was lost";
            EXPECT_EQ(allocator.bytes, chunk->size);
            allocator.release(chunk);
            EXPECT_EQ(allocator.blocks[0].chunks.first(), nullptr);
        }
}

namespace {

/// A chunk and what it must hold.
struct Held {
    std::unique_ptr<zeOS::MoveableChunk> chunk;
    unsigned long size;
    std::uint64_t stamp;
    bool wasWritten = false;

    /// Writes or checks its first and last bytes: any overlap shows.
    void touch(char* bytes) {
        const unsigned long n = std::min(size, sizeof stamp);
        char* const ends[] = {bytes, bytes + (size < 2 * n ? 0 : size - n)};
        for (char* end : ends) {
            if (wasWritten) {
                ASSERT_EQ(std::memcmp(end, &stamp, n), 0);
            }
        }
        ++stamp;
        for (char* end : ends)
            std::memcpy(end, &stamp, n);
        wasWritten = true;
    }
};

} // namespace

void keepContents(int steps) {
    const TempFolder folder;
    zeOS::MoveableMemory memory;
    ASSERT_TRUE(memory.initializeFiles(
        zeString::IString(folder.path().c_str(), zeString::EncodingUTF8), L"test"));
    zeOS::MoveableAllocator allocator(memory);
    std::vector<Held> held;
    std::map<char*, char*> mapped; // first byte to the one behind the last
    std::mt19937 random(11);
    std::uint64_t stamp = 0;
    for (int step = 0; step < steps; ++step) {
        const unsigned long action = random() % 100;
        if (action < (step / 20000 % 2 ? 20u : 30u) || held.empty()) {
            const unsigned long size = randomSize(random, 262144, 1048576);
            held.push_back({std::unique_ptr<zeOS::MoveableChunk>(allocator.allocate(size)), size,
                            stamp += 1ul << 32});
            ASSERT_TRUE(held.back().chunk);
            ASSERT_FALSE(held.back().chunk->isMapped());
        } else {
            Held& one = held[random() % held.size()];
            const bool isMapped = one.chunk->isMapped();
            char* const bytes = static_cast<char*>(one.chunk->map());
            ASSERT_TRUE(bytes);
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % 32, 0u);
            if (isMapped) {
                ASSERT_EQ(mapped.count(bytes), 1u) << "the address holds until unmap()";
            } else {
                const auto [place, isNew] = mapped.emplace(bytes, bytes + one.size);
                ASSERT_TRUE(isNew);
                ASSERT_TRUE(std::next(place) == mapped.end() ||
                            std::next(place)->first >= place->second);
                ASSERT_TRUE(place == mapped.begin() || std::prev(place)->second <= bytes);
            }
            one.touch(bytes);
            if (action < 40)
                continue; // stays mapped
            mapped.erase(bytes);
            if (action < 95) {
                one.chunk->unmap();
                ASSERT_FALSE(one.chunk->isMapped());
            }
            if (action >= 75) {
                std::swap(one, held.back());
                held.pop_back();
            }
        }
        ASSERT_EQ(allocator.getNumAllocated(), static_cast<int>(held.size()));
    }
    held.clear();
    allocator.unmapCachedMappings();
    const zeOS::MoveableMemory::Stats stats = memory.getStats();
    EXPECT_EQ(stats.chunkCount + stats.fileCount, 0);
    EXPECT_EQ(stats.chunkBytes + stats.fileBytes + stats.mappedBytes, 0u);
}

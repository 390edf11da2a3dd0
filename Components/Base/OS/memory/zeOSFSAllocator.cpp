// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFSAllocator.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "Base/Utility/zeReferenceCount.h"

namespace zeOS {

class FSAllocator::FSAllocatorImpl : public ze::ImplBase {
public:
    FSAllocatorImpl(unsigned long element, unsigned long block)
        : elementSize(std::max(element, 8ul)),
          blockSize(std::max(block, elementSize)),
          perBlock(static_cast<long>(blockSize / elementSize)) {}

    void* alloc() {
        if (!current)
            current = findRoom();
        Record& block = *current;
        void* element = block.freeList;
        if (element)
            std::memcpy(&block.freeList, element, sizeof block.freeList); // may be unaligned
        else
            element = block.start.get() + elementSize * static_cast<unsigned long>(block.used++);
        --freeCount;
        if (--block.room == 0)
            current = nullptr;
        return element;
    }

    void free(void* element) {
        Record& block = current && holds(*current, element) ? *current : find(element);
        std::memcpy(element, &block.freeList, sizeof block.freeList);
        block.freeList = element;
        ++block.room;
        if (!current)
            current = &block;
        ++freeCount;
    }

    void freeAll() {
        blocks.clear();
        freeCount = 0;
        current = lastFound = nullptr;
    }

    bool lazy = false;

private:
    struct Record {
        std::unique_ptr<char[]> start;
        void* freeList = nullptr; ///< The element freed last, which holds the one before.
        long used = 0;            ///< Elements that were ever handed out.
        long room;                ///< Elements that are free or were never handed out.
    };

    bool holds(const Record& block, const void* element) const {
        return address(element) - address(block.start.get()) < blockSize;
    }

    static std::uintptr_t address(const void* pointer) {
        return reinterpret_cast<std::uintptr_t>(pointer);
    }

    /// A block with room. Out of line, so that alloc() stays short.
    [[gnu::noinline]] Record* findRoom() {
        if (freeCount == 0)
            return addBlock();
        return &*std::find_if(blocks.begin(), blocks.end(),
                              [](const Record& block) { return block.room > 0; });
    }

    /// All blocks are full and may move in memory: `current` is null.
    Record* addBlock() {
        Record block{std::make_unique_for_overwrite<char[]>(blockSize), nullptr, 0, perBlock};
        const auto behind =
            std::upper_bound(blocks.begin(), blocks.end(), address(block.start.get()),
                             [](std::uintptr_t wanted, const Record& other) {
                                 return wanted < address(other.start.get());
                             });
        lastFound = nullptr;
        const auto added = blocks.insert(behind, std::move(block));
        freeCount += perBlock;
        return &*added;
    }

    /// The block of an element: tries the one found last, as neighbours are often freed together.
    Record& find(const void* element) {
        if (!lastFound || !holds(*lastFound, element))
            lastFound = &search(element);
        assert(holds(*lastFound, element));
        return *lastFound;
    }

    /// Binary search without branches, which random addresses would make unpredictable.
    Record& search(const void* element) {
        Record* first = blocks.data();
        for (std::size_t count = blocks.size(); count > 1; count -= count / 2) {
            Record* const middle = first + count / 2;
            first = address(middle->start.get()) <= address(element) ? middle : first;
        }
        return *first;
    }

    unsigned long elementSize;
    unsigned long blockSize;
    long perBlock;
    long freeCount = 0;
    Record* current = nullptr;   ///< Has room; null for none.
    Record* lastFound = nullptr; ///< Null for none.
    std::vector<Record> blocks;  ///< In the order of their addresses.
};

FSAllocator::FSAllocator(unsigned long elementSize, unsigned long blockSize)
    : impl_(new FSAllocatorImpl(elementSize, blockSize)) {}

FSAllocator::~FSAllocator() {
    delete impl_;
}

void* FSAllocator::alloc() {
    return impl_->alloc();
}

void FSAllocator::free(void* element) {
    impl_->free(element);
}

void FSAllocator::freeAll() {
    impl_->freeAll();
}

void FSAllocator::setLazy() {
    impl_->lazy = true;
}

} // namespace zeOS

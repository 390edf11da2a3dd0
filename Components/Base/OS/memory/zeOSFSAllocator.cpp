// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFSAllocator.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <functional>
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
        if (freeCount == 0)
            addBlock();
        else if (current == none)
            current = findRoom();
        Record& block = blocks[current];
        void* element = block.freeList;
        if (element)
            std::memcpy(&block.freeList, element, sizeof block.freeList); // perhaps not aligned
        else
            element = block.start.get() + elementSize * static_cast<unsigned long>(block.used++);
        --freeCount;
        if (!hasRoom(block))
            current = none;
        return element;
    }

    void free(void* element) {
        std::size_t place = current;
        if (place == none || !holds(blocks[place], element))
            place = countUpTo(element) - 1;
        assert(place < blocks.size() && holds(blocks[place], element));
        Record& block = blocks[place];
        std::memcpy(element, &block.freeList, sizeof block.freeList);
        block.freeList = element;
        if (current == none)
            current = place;
        ++freeCount;
    }

    void freeAll() {
        blocks.clear();
        freeCount = 0;
        current = none;
    }

    bool lazy = false;

private:
    struct Record {
        std::unique_ptr<char[]> start;
        void* freeList = nullptr; ///< The first free element, which holds the next.
        long used = 0;            ///< Elements that were ever handed out.
    };

    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    bool hasRoom(const Record& block) const { return block.freeList || block.used < perBlock; }

    bool holds(const Record& block, const void* element) const {
        const void* const start = block.start.get();
        return !std::less<>()(element, start) &&
               std::less<>()(element, static_cast<const void*>(block.start.get() + blockSize));
    }

    void addBlock() {
        Record block{std::make_unique_for_overwrite<char[]>(blockSize)};
        const std::size_t place = countUpTo(block.start.get());
        blocks.insert(blocks.begin() + static_cast<std::ptrdiff_t>(place), std::move(block));
        current = place;
        freeCount += perBlock;
    }

    std::size_t findRoom() const {
        const auto found = std::find_if(blocks.begin(), blocks.end(),
                                        [this](const Record& block) { return hasRoom(block); });
        return static_cast<std::size_t>(found - blocks.begin());
    }

    /// How many blocks begin at or before an address. The last of them holds it, if any does.
    std::size_t countUpTo(const void* address) const {
        const auto behind = std::upper_bound(
            blocks.begin(), blocks.end(), address, [](const void* wanted, const Record& block) {
                return std::less<>()(wanted, static_cast<const void*>(block.start.get()));
            });
        return static_cast<std::size_t>(behind - blocks.begin());
    }

    unsigned long elementSize;
    unsigned long blockSize;
    long perBlock;
    long freeCount = 0;
    std::size_t current = none; ///< In `blocks`.
    std::vector<Record> blocks; ///< In the order of their addresses.
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

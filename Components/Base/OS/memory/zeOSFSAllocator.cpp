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
        : elementSize_(std::max(element, 8ul)),
          blockSize_(std::max(block, elementSize_)),
          perBlock_(static_cast<long>(blockSize_ / elementSize_)) {}

    void* alloc() {
        if (!current_)
            current_ = findRoom();
        Record& block = *current_;
        void* element = block.freeList;
        if (element)
            std::memcpy(&block.freeList, element, sizeof block.freeList); // may be unaligned
        else
            element = block.start.get() + elementSize_ * static_cast<unsigned long>(block.used++);
        --freeCount_;
        if (--block.room == 0)
            current_ = nullptr;
        return element;
    }

    void free(void* element) {
        Record& block = current_ && holds(*current_, element) ? *current_ : find(element);
        std::memcpy(element, &block.freeList, sizeof block.freeList);
        block.freeList = element;
        ++block.room;
        if (!current_)
            current_ = &block;
        ++freeCount_;
    }

    void freeAll() {
        blocks_.clear();
        freeCount_ = 0;
        current_ = lastFound_ = nullptr;
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
        return address(element) - address(block.start.get()) < blockSize_;
    }

    static std::uintptr_t address(const void* pointer) {
        return reinterpret_cast<std::uintptr_t>(pointer);
    }

    /// A block with room. Out of line, so that alloc() stays short.
    [[gnu::noinline]] Record* findRoom() {
        if (freeCount_ == 0)
            return addBlock();
        return &*std::find_if(blocks_.begin(), blocks_.end(),
                              [](const Record& block) { return block.room > 0; });
    }

    /// All blocks_ are full and may move in memory: `current_` is null.
    Record* addBlock() {
        Record block{std::make_unique_for_overwrite<char[]>(blockSize_), nullptr, 0, perBlock_};
        lastFound_ = nullptr;
        const std::size_t place = countUpTo(block.start.get());
        blocks_.insert(blocks_.begin() + static_cast<std::ptrdiff_t>(place), std::move(block));
        const std::uintptr_t span =
            address(blocks_.back().start.get()) - firstAddress() + blockSize_;
        blocksPerByte_ = static_cast<double>(blocks_.size()) / static_cast<double>(span);
        freeCount_ += perBlock_;
        return &blocks_[place];
    }

    /// The block of an element: tries the one found last, as neighbours are often freed together.
    Record& find(const void* element) {
        if (!lastFound_ || !holds(*lastFound_, element))
            lastFound_ = &search(element);
        assert(holds(*lastFound_, element));
        return *lastFound_;
    }

    /// Blocks often lie one behind the other: tries the place in proportion to the address first.
    Record& search(const void* element) {
        assert(!blocks_.empty());
        const auto distance = static_cast<double>(address(element) - firstAddress());
        const auto guess = static_cast<std::size_t>(distance * blocksPerByte_);
        if (guess < blocks_.size() && holds(blocks_[guess], element))
            return blocks_[guess];
        const std::size_t count = countUpTo(element);
        assert(count > 0);
        return blocks_[count - 1];
    }

    std::uintptr_t firstAddress() const { return address(blocks_.front().start.get()); }

    /// How many blocks_ begin at or before an address. A binary search without branches, which
    /// random addresses would make unpredictable.
    std::size_t countUpTo(const void* element) const {
        std::size_t found = 0;
        for (std::size_t count = blocks_.size(); count > 0; count -= (count + 1) / 2) {
            const std::size_t next = found + (count + 1) / 2;
            found = address(blocks_[next - 1].start.get()) <= address(element) ? next : found;
        }
        return found;
    }

    unsigned long elementSize_;
    unsigned long blockSize_;
    long perBlock_;
    long freeCount_ = 0;
    Record* current_ = nullptr;   ///< Has room; null for none.
    Record* lastFound_ = nullptr; ///< Null for none.
    double blocksPerByte_ = 0;    ///< From the first block's start to the last one's end.
    std::vector<Record> blocks_;  ///< In the order of their addresses.
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

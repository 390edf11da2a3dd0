// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSMemoryIOStream.h"

#include <algorithm>
#include <cstring>

#include "Base/OS/zeOSMoveableMemory.h"

namespace zeOS {

// MemoryIOStream::Block

MemoryIOStream::Block::Block(unsigned long size, MoveableAllocator* allocator) : size_(size) {
    if (size == 0)
        return;
    if (allocator)
        chunk_ = allocator->allocate(size);
    else
        data_ = new char[size];
}

MemoryIOStream::Block::~Block() {
    if (!chunk_)
        delete[] static_cast<char*>(data_);
    delete chunk_;
}

void MemoryIOStream::Block::map() {
    if (chunk_)
        data_ = chunk_->map();
}

void MemoryIOStream::Block::unmap() {
    if (!chunk_)
        return;
    chunk_->unmap();
    data_ = nullptr;
}

// MemoryIOStream

MemoryIOStream::MemoryIOStream(unsigned long blockSize, MoveableAllocator* allocator)
    : blockSize_(std::max(blockSize, 1ul)), readBlock_(blocks_.end()), allocator_(allocator) {}

MemoryIOStream::~MemoryIOStream() = default;

void MemoryIOStream::openForWrite() {
    close();
    blocks_.clear();
    writable_ = true;
}

void MemoryIOStream::openForRead() {
    close();
    readable_ = true;
    readBlock_ = blocks_.begin();
}

void MemoryIOStream::close() {
    if (writable_ && !blocks_.empty())
        blocks_.back()->reduceSize(position_);
    unmapBlocks();
    readable_ = writable_ = false;
    position_ = 0;
}

zeUtil::Error MemoryIOStream::read(void* buffer, unsigned long count, unsigned long* done) {
    unsigned long got = 0;
    while (readable_ && got < count && readBlock_ != blocks_.end()) {
        Block& block = **readBlock_;
        if (position_ >= block.getSize()) {
            block.unmap();
            ++readBlock_;
            position_ = 0;
            continue;
        }
        block.map();
        const unsigned long n = std::min(count - got, block.getSize() - position_);
        std::memcpy(static_cast<char*>(buffer) + got,
                    static_cast<const char*>(block.getData()) + position_, n);
        position_ += n;
        got += n;
    }
    if (done)
        *done = got;
    if (!readable_)
        return zeUtil::Error(1, "Stream is not open for read");
    return got > 0 ? zeUtil::Error() : zeUtil::Error(1, "EOF");
}

zeUtil::Error MemoryIOStream::write(const void* buffer, unsigned long count, unsigned long* done) {
    if (done)
        *done = writable_ ? count : 0;
    if (!writable_)
        return zeUtil::Error(1, "Stream not open for write");
    const char* source = static_cast<const char*>(buffer);
    while (count > 0) {
        if (blocks_.empty() || position_ >= blocks_.back()->getSize()) {
            if (!blocks_.empty())
                blocks_.back()->unmap();
            blocks_.push_back(new Block(blockSize_, allocator_));
            position_ = 0;
        }
        Block& block = *blocks_.back();
        block.map();
        const unsigned long n = std::min(count, block.getSize() - position_);
        std::memcpy(static_cast<char*>(block.getData()) + position_, source, n);
        position_ += n;
        source += n;
        count -= n;
    }
    return zeUtil::Error();
}

unsigned long MemoryIOStream::getSize() const {
    unsigned long size = 0;
    for (const auto& block : blocks_)
        size += block->getSize();
    return size;
}

void MemoryIOStream::releaseBlocks(BlockList& list) {
    unmapBlocks();
    list.clear();
    list.swap(blocks_);
    restart();
}

void MemoryIOStream::setBlocks(BlockList& list) {
    unmapBlocks();
    blocks_.clear();
    blocks_.swap(list);
    restart();
}

/// Unmaps the blocks that may be mapped.
void MemoryIOStream::unmapBlocks() {
    if (readable_ && readBlock_ != blocks_.end())
        (*readBlock_)->unmap();
    if (!blocks_.empty())
        blocks_.back()->unmap();
}

/// The list is another one: finds the place in it.
void MemoryIOStream::restart() {
    readBlock_ = blocks_.begin();
    position_ = writable_ && !blocks_.empty() ? blocks_.back()->getSize() : 0;
}

} // namespace zeOS

// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferLink.h"

#include <algorithm>
#include <utility>

#include "Base/Utility/zeUtilWrap.h"

ioBuffer::ioBuffer(bool reading, int size)
    : block_(new char[static_cast<unsigned>(size)]), size_(size), reading_(reading) {}

ioBuffer::~ioBuffer() {
    delete[] block_;
    delete next_;
    next_ = nullptr;
}

bool ioBuffer::seek(long) {
    return false;
}

long ioBuffer::tell() {
    return 0;
}

void ioBuffer::unchainHook() {}

ioBuffer* ioBuffer::unchain() {
    unchainHook();
    return std::exchange(next_, nullptr);
}

void ioBuffer::fillBuffer() {
    if (good())
        readBlock(block_);
}

void ioBuffer::flushBuffer() {
    if (!good())
        return;
    if (reading_) {
        position_ = 0;
        count_ = 0;
    } else if (position_ > 0) {
        writeBlock(block_, position_);
    }
}

void ioBuffer::flush() {
    flushBuffer();
    if (next_) {
        next_->flush();
        promoteNextBufferStatus(true);
    }
}

void ioBuffer::promoteNextBufferStatus(bool includeEnd) {
    if (!next_ || next_->good())
        return;
    const bufferStatus below = next_->getStatus();
    const bool end = below == bufferEOF || below == bufferCompressEnd;
    if (!end || includeEnd)
        status_ = below;
}

int ioBuffer::readBlocks(char* destination, int n) {
    if (n < 1)
        return 0;
    int left = n;
    while (left > 0 && good()) {
        // The count is -1 after a failed read.
        const int taken = std::min(left, std::max(count_ - position_, 0));
        std::memcpy(destination, block_ + position_, static_cast<unsigned>(taken));
        position_ += taken;
        destination += taken;
        left -= taken;
        if (left == 0)
            break;
        if (left >= size_ && movesBlocksDirectly_) {
            readBlock(destination);
            position_ = std::max(count_, 0);
            destination += position_;
            left -= position_;
        } else {
            fillBuffer();
        }
    }
    return n - left;
}

void ioBuffer::writeBlocks(const char* source, int n) {
    int left = n;
    while (left > 0 && good()) {
        if (position_ == 0 && left > size_ && !reading_ && movesBlocksDirectly_) {
            writeBlock(source, size_);
            source += size_;
            left -= size_;
            continue;
        }
        const int taken = std::min(left, size_ - position_);
        std::memcpy(block_ + position_, source, static_cast<unsigned>(taken));
        position_ += taken;
        source += taken;
        left -= taken;
        if (left > 0)
            flushBuffer();
    }
}

void ioBuffer::readBlock(char* destination) {
    position_ = 0;
    count_ = read(destination, size_);
    addToTotal(count_);
}

void ioBuffer::writeBlock(const char* source, int n) {
    write(source, n);
    position_ = 0;
    count_ = 0;
    addToTotal(n);
}

void ioBuffer::addToTotal(int n) {
    total_ = zeUtil::wrappedSum(total_, n);
    if (progress_)
        progress_(total_);
}

// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileBuffer.h"

#include <algorithm>

namespace {

constexpr int initialLevels = 10;

} // namespace

ioPacketFileBuffer::ioPacketFileBuffer()
    : chunkFlags_(new char[initialLevels]()), capacity_(initialLevels) {}

ioPacketFileBuffer::~ioPacketFileBuffer() = default;

void ioPacketFileBuffer::pushSubPacket() {
    if (++level_ == capacity_) {
        const unsigned int doubled = 2 * static_cast<unsigned int>(capacity_);
        auto grown = std::make_unique<char[]>(doubled);
        std::copy_n(chunkFlags_.get(), capacity_, grown.get());
        chunkFlags_ = std::move(grown);
        capacity_ *= 2;
    }
    setChunkOpen(false);
}

void ioPacketFileBuffer::popSubPacket() {
    if (level_ > 0)
        --level_;
}

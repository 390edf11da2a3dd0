// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileBuffer.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int initialLevels = 10;

} // namespace

ioPacketFileBuffer::ioPacketFileBuffer()
    : chunkFlags_(new char[initialLevels]()), capacity_(initialLevels) {}

ioPacketFileBuffer::~ioPacketFileBuffer() {
    delete[] chunkFlags_;
}

void ioPacketFileBuffer::pushSubPacket() {
    if (level_ + 1 == capacity_) {
        const unsigned int doubled = 2 * static_cast<unsigned int>(capacity_);
        auto* const grown = new char[doubled]();
        std::copy_n(chunkFlags_, capacity_, grown);
        delete[] std::exchange(chunkFlags_, grown);
        capacity_ *= 2;
    }
    ++level_;
    setChunkOpen(false);
}

void ioPacketFileBuffer::popSubPacket() {
    if (level_ > 0)
        --level_;
}

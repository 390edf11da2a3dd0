// SPDX-License-Identifier: MIT

// The link, and its writing side; ioBufferUncompress.cpp has the reading side.

#include "Base/IO/ioBufferCompress.h"

#include <limits>

#include "Base/IO/ioBufferCompressImpl.h"

using namespace ioCompressFormat;

namespace {

constexpr int blockSize = 4096;
constexpr int hashSize = 69001;
constexpr int checkGap = 10000;

// --- The table of strings ----------------------------------------------------------------------
//
// Open addressing. A key is a byte and, below it, the code of the string before that byte. A slot
// is one word:
//
//   bits  0 to 15   the code of the string
//   bits 16 to 38   which bytes may follow the string: bit 16 + byte % 23 is set if one does
//   bits 39 to 63   the key plus `taken`; 0 in a free slot
//
// The 256 strings of one byte have slots of their own behind the table, with no key. The bits of
// the followers spare most of the long searches for strings that are not there, which in a full
// table take some 20 probes.

using Slot = std::uint64_t;

constexpr unsigned keyShift = 39;
constexpr unsigned taken = 1u << 24;
constexpr unsigned followers = 23;

int codeOf(Slot slot) {
    return static_cast<int>(slot & 0xFFFF);
}

unsigned keyOf(Slot slot) {
    return static_cast<unsigned>(slot >> keyShift);
}

unsigned keyFor(int byte, int code) {
    return taken | (static_cast<unsigned>(byte) << 16) | static_cast<unsigned>(code);
}

Slot followerBit(int byte) {
    return Slot{1} << (16 + static_cast<unsigned>(byte) % followers);
}

/// The slot of the string with `key`, or the one that it will take.
///
/// The order of probes is part of the format, because of one string: that of two zero bytes, with
/// key 0. A search that meets it at its first probe goes on, but one that meets it later stops, as
/// if the slot were free. The new string then takes the slot, and the string of two zero bytes is
/// forgotten (or, in a full table, a string further on is not found). Readers follow whatever codes
/// come, but any other search gives another stream.
int findSlot(const Slot* table, unsigned key, int first) {
    if (table[first] == 0 || keyOf(table[first]) == key)
        return first;
    const int step = first == 0 ? 1 : hashSize - first;
    int i = first;
    do {
        i -= step;
        if (i < 0)
            i += hashSize;
    } while (keyOf(table[i]) > taken && keyOf(table[i]) != key);
    return i;
}

int plus(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

} // namespace

ioBufferCompress::ioBufferCompress(bool reading) : ioBuffer(reading, blockSize) {}

ioBufferCompress::~ioBufferCompress() = default;

void ioBufferCompress::unchainHook() {
    finished();
}

int ioBufferCompress::getType() {
    return 1;
}

void ioBufferCompress::close() {
    finished();
    next_->close();
}

void ioBufferCompress::write(const char* source, int n) {
    data_ = const_cast<char*>(source); // only read
    dataSize_ = n;
    dataPosition_ = 0;
    compress();
    promoteNextBufferStatus(true);
}

void ioBufferCompress::finished() {
    if (reading_)
        return;
    flushBuffer();
    doneCompress();
    flushBuffer();
    next_->flush();
    promoteNextBufferStatus(true);
}

void ioBufferCompress::initCompress() {
    started_ = true;
    hashTable_ = std::make_unique<Slot[]>(hashSize + 256);
    cl_hash(hashSize);
    currentCode_ = static_cast<unsigned char>(data_[0]);
    currentSlot_ = hashSize + currentCode_;
    dataPosition_ = 1;
    inCount_ = 1;
    next_->writeData(magic, sizeof magic);
}

void ioBufferCompress::compress() {
    if (!started_)
        initCompress();
    Slot* const table = hashTable_.get();
    Slot* current = table + currentSlot_;
    const int inCountBefore = plus(inCount_, -dataPosition_);
    while (dataPosition_ < dataSize_) {
        const int byte = static_cast<unsigned char>(data_[dataPosition_++]);
        const int code = codeOf(*current);
        const unsigned key = keyFor(byte, code);
        const bool mayFollow = (*current & followerBit(byte)) != 0;
        int i = 0;
        if (mayFollow || freeCode_ < maxMaxCode_) {
            i = findSlot(table, key, (byte << 8) ^ code);
            if (keyOf(table[i]) == key) {
                current = table + i;
                continue;
            }
        }
        output(code);
        if (freeCode_ < maxMaxCode_) {
            *current |= followerBit(byte); // before the slot is taken: it may be this very one
            table[i] = Slot{key} << keyShift | static_cast<unsigned>(freeCode_++);
        } else {
            inCount_ = plus(inCountBefore, dataPosition_);
            if (inCount_ >= checkPoint_)
                cl_block();
        }
        current = table + hashSize + byte;
    }
    inCount_ = plus(inCountBefore, dataPosition_);
    currentSlot_ = static_cast<int>(current - table);
    currentCode_ = codeOf(*current);
}

/// A negative code writes what is left in the group.
void ioBufferCompress::output(int code) {
    if (code < 0) {
        if (bitOffset_ > 0)
            writeCodeBuf(codeBits_);
        outCount_ = plus(outCount_, codeBits_);
        bitOffset_ = 0;
        return;
    }
    unsigned char* const place = group_ + bitOffset_ / 8;
    const unsigned shift = static_cast<unsigned>(bitOffset_) % 8;
    const unsigned mask = (1u << codeBits_) - 1;
    std::uint32_t word;
    std::memcpy(&word, place, sizeof word);
    word = (word & ~(mask << shift)) | (static_cast<unsigned>(code) & mask) << shift;
    std::memcpy(place, &word, sizeof word);
    bitOffset_ += codeBits_;
    if (bitOffset_ == codeBits_ * 8) {
        outCount_ = plus(outCount_, codeBits_);
        writeCodeBuf(codeBits_);
        bitOffset_ = 0;
    }
    if (freeCode_ <= maxCode_ && clearFlag_ == 0)
        return;
    // The width changes. What the group holds goes out at its full size, stale bits included.
    if (bitOffset_ > 0) {
        writeCodeBuf(codeBits_);
        outCount_ = plus(outCount_, codeBits_);
    }
    bitOffset_ = 0;
    codeBits_ = clearFlag_ > 0 ? minBits : codeBits_ + 1;
    maxCode_ = largestCode(codeBits_);
    clearFlag_ = 0;
}

void ioBufferCompress::doneCompress() {
    output(currentCode_);
    output(endCode);
    output(-1);
}

/// Looks at the ratio of input to output since the start, times 256: the table is emptied once it
/// no longer grows.
void ioBufferCompress::cl_block() {
    checkPoint_ = plus(inCount_, checkGap);
    // The numbers wrap, and so may be negative. In 64 bits no division overflows.
    const bool small = inCount_ < 8388608;
    const long input = small ? static_cast<int>(static_cast<unsigned>(inCount_) << 8) : inCount_;
    const long written = small ? outCount_ : outCount_ >> 8;
    const int ratio =
        written == 0 ? std::numeric_limits<int>::max() : static_cast<int>(input / written);
    if (ratio > ratio_) {
        ratio_ = ratio;
        return;
    }
    ratio_ = 0;
    cl_hash(hashSize);
    freeCode_ = firstFreeCode;
    clearFlag_ = 1;
    output(clearCode);
}

/// Empties the table.
void ioBufferCompress::cl_hash(int size) {
    Slot* const table = hashTable_.get();
    std::memset(table, 0, static_cast<std::size_t>(size) * sizeof(Slot));
    for (int byte = 0; byte < 256; ++byte)
        table[size + byte] = static_cast<unsigned>(byte);
}

/// Moves the first `n` bytes of the group into the block below.
void ioBufferCompress::writeCodeBuf(int n) {
    if (next_->good() && next_->size_ - next_->position_ >= maxBits) {
        std::memcpy(next_->block_ + next_->position_, group_, maxBits); // of a fixed size: fast
        next_->position_ += n;
    } else {
        next_->writeData(reinterpret_cast<const char*>(group_), n);
    }
}

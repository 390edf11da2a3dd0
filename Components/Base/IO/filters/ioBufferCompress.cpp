// SPDX-License-Identifier: MIT

// The link, and its writing side. ioBufferUncompress.cpp holds the reading side.

#include "Base/IO/ioBufferCompress.h"

#include <limits>

#include "Base/IO/filters/ioBufferCompressImpl.h"
#include "Base/IO/filters/ioCompressTableImpl.h"
#include "Base/Utility/zeUtilWrap.h"

using namespace ioCompressFormat;
using zeUtil::wrappedSum;

namespace {

using Match = ioCompressTableImpl::Match;

constexpr int blockSize = 4096;
constexpr int checkGap = 10000;

} // namespace

ioBufferCompress::ioBufferCompress(bool reading) : ioBuffer(reading, blockSize) {}

ioBufferCompress::~ioBufferCompress() {
    delete table_;
    delete[] stringTable_;
    delete[] decodeStack_;
}

void ioBufferCompress::unchainHook() {
    finished();
}

int ioBufferCompress::getType() {
    return 1;
}

void ioBufferCompress::close() {
    finished();
    next_->close();
    promoteNextBufferStatus(false);
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
    flush();
}

void ioBufferCompress::initCompress() {
    table_ = new ioCompressTableImpl;
    started_ = true;
    table_->matched = Match::ofByte(static_cast<unsigned char>(data_[0]));
    dataPosition_ = 1;
    inCount_ = 1;
    next_->writeData(magic, sizeof magic);
}

void ioBufferCompress::compress() {
    if (!started_)
        initCompress();
    ioCompressTableImpl& table = *table_;
    const char* const end = data_ + dataSize_;
    const int inCountAtEnd = wrappedSum(inCount_, dataSize_ - dataPosition_);
    Match match = table.matched;
    for (const char* at = data_ + dataPosition_; at != end;) {
        const unsigned byte = static_cast<unsigned char>(*at++);
        if (table.extend(match, byte))
            continue;
        output(static_cast<int>(match.code));
        if (freeCode_ < maxMaxCode) {
            table.add(match, byte, static_cast<unsigned>(freeCode_++));
        } else {
            inCount_ = wrappedSum(inCountAtEnd, static_cast<int>(at - end));
            if (inCount_ >= checkPoint_)
                cl_block();
        }
        match = Match::ofByte(byte);
    }
    inCount_ = inCountAtEnd;
    table.matched = match;
    currentCode_ = static_cast<int>(match.code);
}

/// Puts a code into the group. The bits behind it keep what they held before.
void ioBufferCompress::putIntoGroup(int code) {
    const auto offset = static_cast<unsigned>(bitOffset_);
    unsigned char* const place = group_ + offset / 8;
    if (codeBits_ == maxBits) { // two whole bytes, so that none need be loaded first
        const auto bytes = static_cast<std::uint16_t>(code);
        std::memcpy(place, &bytes, sizeof bytes);
        return;
    }
    const unsigned mask = (1u << codeBits_) - 1;
    std::uint32_t word;
    std::memcpy(&word, place, sizeof word);
    word = (word & ~(mask << offset % 8)) | static_cast<unsigned>(code) << offset % 8;
    std::memcpy(place, &word, sizeof word);
}

/// A negative code writes what is left in the group.
void ioBufferCompress::output(int code) {
    if (code < 0) {
        if (bitOffset_ > 0)
            writeCodeBuf(codeBits_);
        outCount_ = wrappedSum(outCount_, codeBits_);
        bitOffset_ = 0;
        return;
    }
    putIntoGroup(code);
    bitOffset_ += codeBits_;
    if (bitOffset_ == codeBits_ * 8) {
        outCount_ = wrappedSum(outCount_, codeBits_);
        writeCodeBuf(codeBits_);
        bitOffset_ = 0;
    }
    if (freeCode_ <= maxCode_ && clearFlag_ == 0)
        return;
    // The width changes. What the group holds goes out at its full size, stale bits included.
    if (bitOffset_ > 0) {
        writeCodeBuf(codeBits_);
        outCount_ = wrappedSum(outCount_, codeBits_);
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

/// Checks the ratio of input to output since the start, times 256, and empties the table when it no
/// longer grows.
void ioBufferCompress::cl_block() {
    checkPoint_ = wrappedSum(inCount_, checkGap);
    // The counts wrap and may be negative. In 64 bits no division overflows.
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
    table_->clear();
    freeCode_ = firstFreeCode;
    clearFlag_ = 1;
    output(clearCode);
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

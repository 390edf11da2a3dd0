// SPDX-License-Identifier: MIT

// The reading side of the compression filter.

#include <algorithm>

#include "Base/IO/ioBufferCompressImpl.h"

using namespace ioCompressFormat;

namespace {

constexpr int stackSize = 65536; ///< No string of a regular stream is longer.

} // namespace

int ioBufferCompress::read(char* destination, int n) {
    data_ = destination;
    dataSize_ = n;
    dataPosition_ = 0;
    if (lastCode_ == endCode) {
        setStatus(bufferCompressEnd);
        lastCode_ = -1;
        return 0;
    }
    if (good() && lastCode_ >= 0)
        uncompress();
    if (dataPosition_ > 0) {
        promoteNextBufferStatus(false);
        return dataPosition_;
    }
    promoteNextBufferStatus(true);
    // A section without an end is broken, whatever the reason.
    if (getStatus() == bufferEOF || (good() && lastCode_ < 0))
        setStatus(bufferIOError);
    return dataPosition_;
}

/// Whether there is a first byte.
bool ioBufferCompress::initUncompress() {
    started_ = true;
    stringTable_ = std::make_unique<String[]>(maxMaxCode);
    decodeStack_ = std::make_unique_for_overwrite<char[]>(stackSize);
    stackTop_ = decodeStack_.get();
    char start[sizeof magic] = {};
    next_->readData(start, sizeof start);
    if (std::memcmp(start, magic, sizeof magic) != 0) {
        setStatus(bufferIOError);
        return false;
    }
    for (unsigned byte = 0; byte < 256; ++byte) {
        const auto c = static_cast<std::uint8_t>(byte);
        stringTable_[byte] = {c, 0, 1, 0, c, c};
    }
    // No writer uses the code of a clear as a string. As one it is two zero bytes.
    stringTable_[clearCode].length = 2;
    oldCode_ = getcode();
    if (oldCode_ == endCode || oldCode_ < 0)
        return false;
    regular_ = oldCode_ <= clearCode;
    finChar_ = oldCode_;
    data_[0] = static_cast<char>(finChar_);
    dataPosition_ = 1;
    return true;
}

void ioBufferCompress::uncompress() {
    if (!started_ && !initUncompress())
        return;
    unstack();
    while (dataPosition_ < dataSize_) {
        int code = getcode();
        if (code == clearCode) {
            clearFlag_ = 1;
            freeCode_ = firstFreeCode - 1; // the next string gets no code
            regular_ = true;
            code = getcode();
        }
        if (code < 0 || code == endCode)
            return;
        if (!expand(code)) {
            lastCode_ = -1;
            return;
        }
        if (freeCode_ < maxMaxCode_)
            addString();
        oldCode_ = code;
    }
}

int ioBufferCompress::getcode() {
    if (clearFlag_ > 0 || bitOffset_ >= groupBits_ || freeCode_ > maxCode_) {
        if (freeCode_ > maxCode_)
            maxCode_ = largestCode(++codeBits_);
        if (clearFlag_ > 0) {
            codeBits_ = minBits;
            maxCode_ = largestCode(minBits);
            clearFlag_ = 0;
        }
        bitOffset_ = 0;
        groupBits_ = readCodeBuf(codeBits_) * 8 + 1 - codeBits_; // where no further code fits
        if (groupBits_ <= 0)
            return lastCode_ = -1;
    }
    std::uint32_t word;
    std::memcpy(&word, group_ + bitOffset_ / 8, sizeof word);
    bitOffset_ += codeBits_;
    lastCode_ = static_cast<int>(word >> (static_cast<unsigned>(bitOffset_ - codeBits_) % 8)) &
                ((1 << codeBits_) - 1);
    return lastCode_;
}

/// Moves the next `n` bytes from the block below into the group, and returns their number.
int ioBufferCompress::readCodeBuf(int n) {
    if (next_->good() && next_->count_ - next_->position_ >= maxBits) {
        std::memcpy(group_, next_->block_ + next_->position_, maxBits); // of a fixed size: fast
        next_->position_ += n;
        return n;
    }
    return next_->readData(reinterpret_cast<char*>(group_), n);
}

/// Delivers the string of a code; false if it has no end.
bool ioBufferCompress::expand(int code) {
    // A string may be defined by itself: the one before and its own first byte once more.
    const bool known = code < freeCode_;
    regular_ = regular_ && code <= freeCode_;
    const String& string = stringTable_[static_cast<unsigned>(known ? code : oldCode_)];
    const int length = string.length + (known ? 0 : 1);
    if (!regular_ || dataSize_ - dataPosition_ < length + String::pieceSize) {
        if (!push(code))
            return false;
        unstack();
        return true;
    }
    char* const place = data_ + dataPosition_;
    const String* last = &string;
    for (;;) {
        const int at = (last->length - 1) & -String::pieceSize;
        std::memcpy(place + at, &last->piece, String::pieceSize);
        if (at == 0)
            break;
        last = &stringTable_[last->pieces];
    }
    finChar_ = string.first;
    if (!known)
        place[length - 1] = static_cast<char>(finChar_);
    dataPosition_ += length;
    return true;
}

/// Puts the string of a code on the stack, last byte first; false if it has no end. Gives every
/// code a meaning, whatever came before.
bool ioBufferCompress::push(int code) {
    const String* const strings = stringTable_.get();
    char* const end = decodeStack_.get() + stackSize;
    char* top = decodeStack_.get();
    auto c = static_cast<unsigned>(code);
    if (code >= freeCode_) {
        *top++ = static_cast<char>(finChar_);
        c = static_cast<unsigned>(oldCode_);
    }
    while (c > 255) {
        if (top == end)
            return false;
        *top++ = static_cast<char>(strings[c].suffix);
        c = strings[c].prefix;
    }
    if (top == end)
        return false;
    finChar_ = strings[c].suffix;
    *top++ = static_cast<char>(finChar_);
    stackTop_ = top;
    return true;
}

/// The string before with the first byte of this one becomes the next string.
void ioBufferCompress::addString() {
    String& added = stringTable_[static_cast<unsigned>(freeCode_)];
    const auto oldCode = static_cast<std::uint16_t>(oldCode_);
    const String old = stringTable_[oldCode];
    const auto suffix = static_cast<std::uint8_t>(finChar_);
    const unsigned used = old.length % String::pieceSize;
    added.piece = used == 0 ? suffix : old.piece | std::uint64_t{suffix} << (8 * used);
    added.pieces = used == 0 ? oldCode : old.pieces;
    added.length = static_cast<std::uint16_t>(old.length + 1);
    added.prefix = oldCode;
    added.first = old.first;
    added.suffix = suffix;
    ++freeCode_;
}

/// Delivers what the stack holds, as far as the caller's memory reaches.
void ioBufferCompress::unstack() {
    while (stackTop_ > decodeStack_.get() && dataPosition_ < dataSize_)
        data_[dataPosition_++] = *--stackTop_;
}

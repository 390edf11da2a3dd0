// SPDX-License-Identifier: MIT

// The reading side of ioBufferCompress. Two decoders share its state: uncompress() reads every
// stream, expandUsualCodes() the usual parts of it fast.

#include <memory>

#include "Base/IO/filters/ioBufferCompressImpl.h"

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

/// Returns whether there is a first byte.
bool ioBufferCompress::initUncompress() {
    auto strings = std::make_unique<String[]>(maxMaxCode);
    stackTop_ = decodeStack_ = new char[stackSize];
    stringTable_ = strings.release();
    started_ = true;
    // Filled before anything can fail: a caller may reset the status and read on.
    for (unsigned byte = 0; byte < 256; ++byte)
        stringTable_[byte] = String::ofByte(static_cast<std::uint8_t>(byte));
    // No writer uses the clear code as a string. Used as one, it stands for two zero bytes.
    stringTable_[clearCode] = stringTable_[0].extended(0, 0);
    char start[sizeof magic] = {};
    next_->readData(start, sizeof start);
    if (std::memcmp(start, magic, sizeof magic) != 0) {
        setStatus(bufferIOError);
        return false;
    }
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
        if (regular_)
            expandUsualCodes();
        int code = getcode();
        if (code == clearCode) {
            clearFlag_ = 1;
            freeCode_ = firstFreeCode - 1; // the next string gets no code
            regular_ = true;
            code = getcode();
        }
        if (code < 0 || code == endCode)
            return;
        if (!push(code)) {
            lastCode_ = -1;
            return;
        }
        unstack();
        regular_ = regular_ && code <= freeCode_;
        if (freeCode_ < maxMaxCode)
            addString();
        oldCode_ = code;
    }
}

/// The fast decoder: keeps its state in locals and writes strings straight to where they belong.
/// Stops before a code that is not a usual one, before a string that might not fit into the
/// caller's memory, and where the block below holds no whole group.
///
/// The invariant that ties it to uncompress(): the two hand over between two codes, and whichever
/// decoded the codes so far, the state is then the same. The stack is empty; oldCode_ is the last
/// code and finChar_ the first byte of its string; freeCode_ is the code that the next string gets;
/// group_, bitOffset_ and groupBits_ give the place of the next code.
///
/// uncompress() follows prefixes and suffixes alone, which have a meaning for any codes. This
/// function relies on the pieces and lengths too. While regular_ is true these are right for all
/// codes below freeCode_, since each string was made by String::extended() from one below it. A
/// code above freeCode_ ends that until the next clear: the string made from it has no known
/// prefix.
void ioBufferCompress::expandUsualCodes() {
    String* const strings = stringTable_;
    const auto codeBits = static_cast<unsigned>(codeBits_);
    const auto maxCode = static_cast<unsigned>(maxCode_);
    const unsigned mask = (1u << codeBits) - 1;
    char* out = data_ + dataPosition_;
    const char* const end = data_ + dataSize_;
    auto bitOffset = static_cast<unsigned>(bitOffset_);
    auto groupBits = static_cast<unsigned>(groupBits_);
    auto freeCode = static_cast<unsigned>(freeCode_);
    auto oldCode = static_cast<unsigned>(oldCode_);
    while (freeCode <= maxCode) {
        if (bitOffset >= groupBits) {
            if (!next_->good() || next_->count_ - next_->position_ < maxBits)
                break;
            readCodeBuf(codeBits_);
            groupBits = 7 * codeBits + 1;
            bitOffset = 0;
        }
        std::uint32_t word;
        std::memcpy(&word, group_ + bitOffset / 8, sizeof word);
        const unsigned code = word >> bitOffset % 8 & mask;
        if (code >= freeCode) {
            if (code > freeCode)
                break;
            // A string is defined by itself: the one before and its own first byte once more.
            strings[code] = strings[oldCode].extended(oldCode, strings[oldCode].first);
        } else if (code == clearCode || code == endCode) {
            break;
        }
        const String string = strings[code];
        if (end - out < string.length + long{String::pieceSize})
            break;
        bitOffset += codeBits;
        string.write(out, strings);
        out += string.length;
        if (freeCode < maxMaxCode)
            strings[freeCode++] = strings[oldCode].extended(oldCode, string.first);
        oldCode = code;
    }
    dataPosition_ = static_cast<int>(out - data_);
    bitOffset_ = static_cast<int>(bitOffset);
    groupBits_ = static_cast<int>(groupBits);
    freeCode_ = static_cast<int>(freeCode);
    oldCode_ = static_cast<int>(oldCode);
    finChar_ = strings[oldCode].first;
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
        groupBits_ = readCodeBuf(codeBits_) * 8 + 1 - codeBits_; // no code starts in the last bits
        if (groupBits_ <= 0)
            return lastCode_ = -1;
    }
    lastCode_ = static_cast<int>(codeAt(bitOffset_) & ((1u << codeBits_) - 1));
    bitOffset_ += codeBits_;
    return lastCode_;
}

/// The bits of the group from `bitOffset` on, as far as a code can reach.
std::uint32_t ioBufferCompress::codeAt(int bitOffset) const {
    std::uint32_t word;
    std::memcpy(&word, group_ + bitOffset / 8, sizeof word);
    return word >> (static_cast<unsigned>(bitOffset) % 8);
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

/// The string before and the first byte of this one become the next string.
void ioBufferCompress::addString() {
    const auto oldCode = static_cast<unsigned>(oldCode_);
    stringTable_[static_cast<unsigned>(freeCode_++)] =
        stringTable_[oldCode].extended(oldCode, static_cast<std::uint8_t>(finChar_));
}

/// Puts the string of a code on the stack, last byte first; false if it has no end. Every code has
/// a meaning, whatever came before.
bool ioBufferCompress::push(int code) {
    const String* const strings = stringTable_;
    char* const end = decodeStack_ + stackSize;
    char* top = decodeStack_;
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
    finChar_ = static_cast<int>(c);
    *top++ = static_cast<char>(finChar_);
    stackTop_ = top;
    return true;
}

/// Delivers what the stack holds, as far as the caller's memory reaches.
void ioBufferCompress::unstack() {
    while (stackTop_ > decodeStack_ && dataPosition_ < dataSize_)
        data_[dataPosition_++] = *--stackTop_;
}

// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileBinary.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <climits>
#include <cstdlib>
#include <deque>
#include <new>
#include <utility>

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioPacketType.h"
#include "Base/Utility/zeUtilWrap.h"

namespace {

constexpr int initialCapacity = 50000;
constexpr int headSize = 12;      // id, hasReference, length
constexpr int lengthPosition = 8; // of the length in the head
constexpr char chunkMarker = 44;
constexpr char subPacketMarker = 46;

/// How far a length from a file is believed before as many bytes have come. It costs addresses more
/// than memory: pages that nothing has touched take none.
constexpr int trustedLength = 16 << 20;

/// Zeros, from `calloc`: of a large block it touches no page before somebody writes to it.
char* allocate(int capacity, int slack) {
    return static_cast<char*>(
        std::calloc(static_cast<std::size_t>(capacity) + static_cast<std::size_t>(slack), 1));
}

} // namespace

/// The innermost is the last. The nodes of a deque hold many, so that a packet allocates none.
struct ioPacketFileBinaryBuffer::Frames : std::deque<ioSubPacket> {};

ioPacketFileBinaryBuffer::ioPacketFileBinaryBuffer()
    : data_(nullptr), capacity_(initialCapacity), frames_(new Frames) {
    data_ = allocate(initialCapacity, slack);
    if (!data_) {
        delete frames_;
        throw std::bad_alloc();
    }
}

ioPacketFileBinaryBuffer::~ioPacketFileBinaryBuffer() {
    delete frames_;
    std::free(data_);
}

// Writing

void ioPacketFileBinaryBuffer::writePacketStart(ioWriteContext*, int hasReference,
                                                ioPacketType* type) {
    writeHeadField(0, type ? type->getId() : -1);
    writeHeadField(4, hasReference);
    writeHeadField(lengthPosition, 0);
    position_ = headSize;
    frames_->emplace_back();
}

void ioPacketFileBinaryBuffer::writePacketEnd(ioWriteContext* context,
                                              ioBufferedStreamOutput& stream) {
    popFrame();
    writeHeadField(lengthPosition, position_ - headSize);
    if (isValid())
        stream.writeData(data_, position_);
    else if (!getType())
        context->setStatus(ioError);
}

void ioPacketFileBinaryBuffer::writeHeadField(int position, int value) {
    std::memcpy(data_ + position, &value, sizeof value); // the head always fits
}

void ioPacketFileBinaryBuffer::writeChunkStart(ioWriteContext* context) {
    startMeasured(context, chunkMarker, frames_->back().chunkLengthPosition);
}

void ioPacketFileBinaryBuffer::writeChunkEnd(ioWriteContext* context) {
    endMeasured(context, frames_->back().chunkLengthPosition);
}

void ioPacketFileBinaryBuffer::writeSubPacketStart(ioWriteContext* context) {
    startMeasured(context, subPacketMarker, frames_->back().subPacketLengthPosition);
    frames_->emplace_back();
}

void ioPacketFileBinaryBuffer::writeSubPacketEnd(ioWriteContext* context) {
    popFrame();
    endMeasured(context, frames_->back().subPacketLengthPosition);
}

/// The length goes through the context, which may add to it: it counts from there.
void ioPacketFileBinaryBuffer::startMeasured(ioWriteContext* context, char marker, int& lengthAt) {
    write1Byte(marker);
    lengthAt = position_;
    context->writeInt(0);
}

void ioPacketFileBinaryBuffer::endMeasured(ioWriteContext* context, int lengthAt) {
    const int end = position_;
    seekPos(lengthAt);
    context->writeInt(end - lengthAt);
    seekPos(end);
}

void ioPacketFileBinaryBuffer::writeBuffer(const char* bytes, int size) {
    if (size > 0)
        writeBuffer(bytes, static_cast<unsigned long>(size));
}

void ioPacketFileBinaryBuffer::writeBuffer(const char* bytes, unsigned long size) {
    if (size == 0 || !makeRoom(size))
        return;
    std::memcpy(data_ + position_, bytes, size);
    position_ += static_cast<int>(size);
}

// Reading

int ioPacketFileBinaryBuffer::readPacketStart(ioReadContext* context,
                                              ioBufferedStreamInput& stream) {
    const int id = context->readUnbufferedInt(stream);
    const int hasReference = context->readUnbufferedInt(stream);
    const int length = context->readUnbufferedInt(stream);
    setType(nullptr);
    if (length < 0 || id < 0)
        return 0;
    setType(context->lookupType(id));
    if (!readBody(stream, length))
        setType(nullptr);
    position_ = 0;
    frames_->emplace_back().end = length;
    return hasReference;
}

/// Reads in one piece what fits the array or is of modest length, and anything longer in pieces, so
/// that memory grows with the bytes that arrive and not with the number that the file states.
bool ioPacketFileBinaryBuffer::readBody(ioBufferedStreamInput& stream, int length) {
    if (length > 0 && length <= capacity_) [[likely]] {
        stream.readData(data_, length);
        return true;
    }
    int done = 0;
    int target = std::min(length, std::max(capacity_, trustedLength));
    while (done < length) {
        if (!resize(target))
            return false;
        done += stream.readData(data_ + done, target - done);
        if (done < target)
            return true; // the stream's status says why
        target = length / 2 < target ? length : 2 * target;
    }
    return true;
}

std::int64_t ioPacketFileBinaryBuffer::packetSize() const {
    return frames_->empty() ? 0 : std::int64_t{headSize} + frames_->back().end;
}

void ioPacketFileBinaryBuffer::readPacketEnd(ioReadContext*) {
    popFrame();
}

void ioPacketFileBinaryBuffer::readChunkStart(ioReadContext* context) {
    ioSubPacket& frame = frames_->back();
    if (position_ >= frame.end) {
        position_ = frame.end;
        frame.validChunk = false;
        return;
    }
    frame.chunkEnd = readMeasured(context);
    frame.validChunk = position_ < frame.chunkEnd;
}

bool ioPacketFileBinaryBuffer::isValidChunk() {
    return !frames_->empty() && frames_->back().validChunk;
}

void ioPacketFileBinaryBuffer::readChunkEnd(ioReadContext*) {
    if (isValidChunk())
        position_ = frames_->back().chunkEnd;
}

void ioPacketFileBinaryBuffer::readSubPacketStart(ioReadContext* context) {
    ioSubPacket& frame = frames_->emplace_back();
    frame.end = readMeasured(context);
}

void ioPacketFileBinaryBuffer::readSubPacketEnd(ioReadContext*) {
    if (!frames_->empty())
        position_ = frames_->back().end;
    popFrame();
}

/// Reads a marker, which is not looked at, and a length; returns the position at its end.
int ioPacketFileBinaryBuffer::readMeasured(ioReadContext* context) {
    read1Byte();
    const int start = position_;
    return zeUtil::wrappedSum(start, context->readInt());
}

const char* ioPacketFileBinaryBuffer::readBuffer(int size) {
    if (size < 0)
        return nullptr;
    const int start = position_;
    position_ = zeUtil::wrappedSum(start, size);
    return start >= 0 && size <= capacity_ - start ? data_ + start : nullptr;
}

void ioPacketFileBinaryBuffer::readBuffer(char* bytes, unsigned long size) {
    const bool within = position_ >= 0 && position_ < capacity_;
    const auto left = within ? static_cast<unsigned long>(capacity_ - position_) : 0;
    const unsigned long held = std::min(size, left);
    if (held > 0)
        std::memcpy(bytes, data_ + position_, held);
    if (held < size)
        std::memset(bytes + held, 0, size - held);
    position_ = zeUtil::wrappedSum(position_, static_cast<int>(size));
}

const char* ioPacketFileBinaryBuffer::readText() {
    const bool within = position_ >= 0 && position_ <= capacity_;
    const char* text = data_ + (within ? position_ : capacity_);
    position_ = zeUtil::wrappedSum(position_, static_cast<int>(std::strlen(text) + 1));
    return text;
}

void ioPacketFileBinaryBuffer::read4BytesStream(ioBufferedStreamInput& stream, char* bytes) {
    std::memset(bytes, 0, 4);
    stream.readData(bytes, 4);
}

void ioPacketFileBinaryBuffer::read4BytesStreamSwapped(ioBufferedStreamInput& stream, char* bytes) {
    read4BytesStream(stream, bytes);
    std::reverse(bytes, bytes + 4);
}

// The array

bool ioPacketFileBinaryBuffer::resize(int size) {
    if (capacity_ >= size)
        return true;
    int grown = capacity_;
    while (grown < size)
        grown = grown > INT_MAX / 2 ? INT_MAX : 2 * grown;
    char* const data = allocate(grown, slack);
    if (!data)
        return false;
    std::memcpy(data, data_, static_cast<std::size_t>(capacity_));
    std::free(std::exchange(data_, data));
    capacity_ = grown;
    return true;
}

/// Makes room for `size` bytes at the cursor and one to spare.
bool ioPacketFileBinaryBuffer::makeRoom(unsigned long size) {
    assert(position_ >= 0);
    if (static_cast<long>(size) < capacity_ - position_) [[likely]]
        return true;
    if (!isValid() && !getType())
        return false; // has failed to grow before
    const auto limit = static_cast<unsigned long>(INT_MAX - position_);
    if (size < limit && resize(position_ + static_cast<int>(size) + 1))
        return true;
    setInvalid();
    setType(nullptr);
    return false;
}

/// The slow path of put().
void ioPacketFileBinaryBuffer::putGrowing(std::uint64_t word, unsigned long size) {
    static_assert(std::endian::native ==
                  std::endian::little); // the value is the word's first bytes
    writeBuffer(reinterpret_cast<const char*>(&word), size);
}

void ioPacketFileBinaryBuffer::popFrame() {
    if (!frames_->empty())
        frames_->pop_back();
}

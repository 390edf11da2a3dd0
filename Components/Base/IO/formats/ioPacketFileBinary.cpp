// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileBinary.h"

#include <sys/mman.h>

#include <algorithm>
#include <bit>
#include <cassert>
#include <climits>
#include <cstdlib>
#include <deque>
#include <new>
#include <typeinfo>
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

/// From this size on an array asks for huge pages.
constexpr std::size_t largeArray = 4 << 20;

/// The first packet of megabytes, in memory that nothing has touched yet, then meets a handful of
/// page faults in place of thousands. The system may decline.
void preferHugePages(char* data, std::size_t size) {
    constexpr std::size_t page = 4096;
    const std::size_t toPage = -reinterpret_cast<std::uintptr_t>(data) % page;
    madvise(data + toPage, size - toPage, MADV_HUGEPAGE);
}

/// Zeros, from `calloc`: of a large block it touches no page before somebody writes to it.
char* allocate(int capacity, int slack) {
    const auto size = static_cast<std::size_t>(capacity) + static_cast<std::size_t>(slack);
    auto* const data = static_cast<char*>(std::calloc(size, 1));
    if (data && size >= largeArray)
        preferHugePages(data, size);
    return data;
}

/// The three numbers of a packet's head.
struct Head {
    int id, hasReference, length;
};

int numberAt(const char* bytes, bool swapped) {
    std::uint32_t number;
    std::memcpy(&number, bytes, sizeof number);
    return static_cast<int>(swapped ? __builtin_bswap32(number) : number);
}

/// Whether the whole head lies in the stream's block, and nothing keeps the stream from reading it.
bool holdsHead(ioBufferedStreamInput& stream) {
    stream.promoteBufferStatus();
    return stream.buffered().size() >= headSize && stream.getStatus() == streamOK;
}

/// Reads a head by the context's readUnbufferedInt(), which a derived class may override. That of
/// the library's own contexts reads four bytes: where the block holds all twelve, they are taken
/// from there at once.
Head readHead(ioReadContext& context, ioBufferedStreamInput& stream) {
    const std::type_info& type = typeid(context);
    const bool sameEndian = type == typeid(ioReadContextBinarySameEndian);
    if ((sameEndian || type == typeid(ioReadContextBinarySwapped)) && holdsHead(stream)) {
        const char* const bytes = stream.buffered().data();
        stream.skip(headSize);
        return {numberAt(bytes, !sameEndian), numberAt(bytes + 4, !sameEndian),
                numberAt(bytes + 8, !sameEndian)};
    }
    const int id = context.readUnbufferedInt(stream);
    const int hasReference = context.readUnbufferedInt(stream);
    return {id, hasReference, context.readUnbufferedInt(stream)};
}

} // namespace

/// The frame of the packet, or of the innermost sub-packet that is open in it, and those around it.
/// It is all zero while no packet is open.
struct ioPacketFileBinaryBuffer::Frames {
    void push() {
        if (open > 0)
            keep(); // may throw, and has then changed nothing
        ++open;
    }
    void pop() {
        innermost = {};
        if (open > 0 && --open > 0)
            restore();
    }

    [[gnu::noinline]] void keep() {
        around.push_back(innermost);
        innermost = {};
    }
    [[gnu::noinline]] void restore() {
        innermost = around.back();
        around.pop_back();
    }

    ioSubPacket innermost;
    int open = 0;
    std::deque<ioSubPacket> around;
};

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
    frames_->push();
}

void ioPacketFileBinaryBuffer::writePacketEnd(ioWriteContext* context,
                                              ioBufferedStreamOutput& stream) {
    frames_->pop();
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
    startMeasured(context, chunkMarker, frames_->innermost.chunkLengthPosition);
}

void ioPacketFileBinaryBuffer::writeChunkEnd(ioWriteContext* context) {
    endMeasured(context, frames_->innermost.chunkLengthPosition);
}

void ioPacketFileBinaryBuffer::writeSubPacketStart(ioWriteContext* context) {
    startMeasured(context, subPacketMarker, frames_->innermost.subPacketLengthPosition);
    frames_->push();
}

void ioPacketFileBinaryBuffer::writeSubPacketEnd(ioWriteContext* context) {
    frames_->pop();
    endMeasured(context, frames_->innermost.subPacketLengthPosition);
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
    const Head head = readHead(*context, stream);
    setType(nullptr);
    if (head.length < 0 || head.id < 0)
        return 0;
    setType(context->lookupType(head.id));
    if (head.length > capacity_) [[unlikely]] {
        if (!readLongBody(stream, head.length))
            setType(nullptr);
    } else if (head.length > 0) {
        stream.readData(data_, head.length);
    }
    position_ = 0;
    frames_->push();
    frames_->innermost.end = head.length;
    return head.hasReference;
}

/// Reads a body that exceeds the array in one piece if it is of modest length, and anything longer
/// in pieces, so that memory grows with the bytes that arrive and not with the number that the file
/// states.
bool ioPacketFileBinaryBuffer::readLongBody(ioBufferedStreamInput& stream, int length) {
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
    return frames_->open == 0 ? 0 : std::int64_t{headSize} + frames_->innermost.end;
}

void ioPacketFileBinaryBuffer::readPacketEnd(ioReadContext*) {
    frames_->pop();
}

void ioPacketFileBinaryBuffer::readChunkStart(ioReadContext* context) {
    ioSubPacket& frame = frames_->innermost;
    if (position_ >= frame.end) {
        position_ = frame.end;
        frame.validChunk = false;
        return;
    }
    frame.chunkEnd = readMeasured(context);
    frame.validChunk = position_ < frame.chunkEnd;
}

bool ioPacketFileBinaryBuffer::isValidChunk() {
    return frames_->innermost.validChunk;
}

void ioPacketFileBinaryBuffer::readChunkEnd(ioReadContext*) {
    if (isValidChunk())
        position_ = frames_->innermost.chunkEnd;
}

void ioPacketFileBinaryBuffer::readSubPacketStart(ioReadContext* context) {
    frames_->push();
    frames_->innermost.end = readMeasured(context);
}

void ioPacketFileBinaryBuffer::readSubPacketEnd(ioReadContext*) {
    if (frames_->open > 0)
        position_ = frames_->innermost.end;
    frames_->pop();
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

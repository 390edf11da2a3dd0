// SPDX-License-Identifier: MIT

#include <bit>
#include <climits>
#include <type_traits>
#include <typeinfo>

#include "Base/IO/ioPacketFileBinary.h"

// No typed operation calls another here, but for the arrays of bool, which go element by element:
// a context that adds to each value depends on it.

namespace {

void swap(std::uint16_t& word) {
    word = __builtin_bswap16(word);
}
void swap(std::uint32_t& word) {
    word = __builtin_bswap32(word);
}
void swap(std::uint64_t& word) {
    word = __builtin_bswap64(word);
}

/// The unsigned integer of the size of `T`.
template<class T>
using WordOf = std::conditional_t<sizeof(T) == 2, std::uint16_t,
                                  std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>>;

template<bool Swapped, class T>
T readValue(ioPacketFileBinaryBuffer& buffer) {
    auto word = buffer.readNumber<WordOf<T>>();
    if (Swapped)
        swap(word);
    return std::bit_cast<T>(word);
}

template<class T>
void readBytes(ioPacketFileBinaryBuffer& buffer, T* values, int count) {
    if (count > 0)
        buffer.readBuffer(reinterpret_cast<char*>(values),
                          static_cast<unsigned long>(count) * sizeof(T));
}

/// One copy of the whole, which swaps on its way where it must.
template<bool Swapped, class T>
void readArray(ioPacketFileBinaryBuffer& buffer, T* values, int count) {
    if (!Swapped || count <= 0)
        return readBytes(buffer, values, count);
    const unsigned long size = static_cast<unsigned long>(count) * sizeof(T);
    const int start = buffer.tellPos();
    const char* from = size <= INT_MAX ? buffer.readBuffer(static_cast<int>(size)) : nullptr;
    if (!from) { // it reaches out of the packet's memory
        buffer.seekPos(start);
        readBytes(buffer, values, count);
        from = reinterpret_cast<const char*>(values);
    }
    for (int i = 0; i < count; ++i) {
        WordOf<T> word;
        std::memcpy(&word, from + static_cast<std::size_t>(i) * sizeof word, sizeof word);
        swap(word);
        std::memcpy(values + i, &word, sizeof word);
    }
}

} // namespace

// ioReadContextBinary

ioReadContextBinary::ioReadContextBinary(ioReadMethod method, ioBufferedStreamInput& stream)
    : ioReadContext(method, stream) {}

ioReadContextBinary::~ioReadContextBinary() = default;

bool ioReadContextBinary::isValidChunk() {
    return buffer_ && buffer_->isValidChunk();
}

bool ioReadContextBinary::readBool() {
    return buffer_->read1Byte() != 0;
}

unsigned char ioReadContextBinary::readChar() {
    return static_cast<unsigned char>(buffer_->read1Byte());
}

unsigned char ioReadContextBinary::readUChar() {
    return static_cast<unsigned char>(buffer_->read1Byte());
}

const char* ioReadContextBinary::readCString() {
    return buffer_->readText();
}

void ioReadContextBinary::readBoolArray(bool* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = readBool();
}

void ioReadContextBinary::readCharArray(char* values, int count) {
    readBytes(*buffer_, values, count);
}

void ioReadContextBinary::readUCharArray(unsigned char* values, int count) {
    readBytes(*buffer_, values, count);
}

signed char ioReadContextBinary::readRawByte() {
    return static_cast<signed char>(buffer_->read1Byte());
}

void ioReadContextBinary::readBuffer(char* bytes, unsigned long size) {
    buffer_->readBuffer(bytes, size);
}

ioPacketFileBuffer* ioReadContextBinary::allocPacket() {
    return new ioPacketFileBinaryBuffer;
}

void ioReadContextBinary::setPacket(ioPacketFileBuffer* packet) {
    buffer_ = static_cast<ioPacketFileBinaryBuffer*>(packet);
    plainPacket_ = typeid(*this) == typeid(ioReadContextBinarySameEndian) ? buffer_ : nullptr;
}

// ioReadContextBinaryOrdered

template<bool Swapped>
ioReadContextBinaryOrdered<Swapped>::ioReadContextBinaryOrdered(ioReadMethod method,
                                                                ioBufferedStreamInput& stream)
    : ioReadContextBinary(method, stream) {}

template<bool Swapped>
ioReadContextBinaryOrdered<Swapped>::~ioReadContextBinaryOrdered() = default;

template<bool Swapped>
short ioReadContextBinaryOrdered<Swapped>::readShort() {
    return readValue<Swapped, short>(buffer());
}

template<bool Swapped>
unsigned short ioReadContextBinaryOrdered<Swapped>::readUShort() {
    return readValue<Swapped, unsigned short>(buffer());
}

template<bool Swapped>
int ioReadContextBinaryOrdered<Swapped>::readInt() {
    return readValue<Swapped, int>(buffer());
}

template<bool Swapped>
unsigned int ioReadContextBinaryOrdered<Swapped>::readUInt() {
    return readValue<Swapped, unsigned int>(buffer());
}

template<bool Swapped>
std::int64_t ioReadContextBinaryOrdered<Swapped>::readInt64() {
    return readValue<Swapped, std::int64_t>(buffer());
}

template<bool Swapped>
std::uint64_t ioReadContextBinaryOrdered<Swapped>::readUInt64() {
    return readValue<Swapped, std::uint64_t>(buffer());
}

template<bool Swapped>
float ioReadContextBinaryOrdered<Swapped>::readFloat() {
    return readValue<Swapped, float>(buffer());
}

template<bool Swapped>
double ioReadContextBinaryOrdered<Swapped>::readDouble() {
    return readValue<Swapped, double>(buffer());
}

template<bool Swapped>
void ioReadContextBinaryOrdered<Swapped>::readShortArray(short* values, int count) {
    readArray<Swapped>(buffer(), values, count);
}

template<bool Swapped>
void ioReadContextBinaryOrdered<Swapped>::readUShortArray(unsigned short* values, int count) {
    readArray<Swapped>(buffer(), values, count);
}

template<bool Swapped>
void ioReadContextBinaryOrdered<Swapped>::readIntArray(int* values, int count) {
    readArray<Swapped>(buffer(), values, count);
}

template<bool Swapped>
void ioReadContextBinaryOrdered<Swapped>::readUIntArray(unsigned int* values, int count) {
    readArray<Swapped>(buffer(), values, count);
}

template<bool Swapped>
void ioReadContextBinaryOrdered<Swapped>::readInt64Array(std::int64_t* values, int count) {
    readArray<Swapped>(buffer(), values, count);
}

template<bool Swapped>
void ioReadContextBinaryOrdered<Swapped>::readUInt64Array(std::uint64_t* values, int count) {
    readArray<Swapped>(buffer(), values, count);
}

template<bool Swapped>
void ioReadContextBinaryOrdered<Swapped>::readFloatArray(float* values, int count) {
    readArray<Swapped>(buffer(), values, count);
}

template<bool Swapped>
void ioReadContextBinaryOrdered<Swapped>::readDoubleArray(double* values, int count) {
    readArray<Swapped>(buffer(), values, count);
}

template<bool Swapped>
int ioReadContextBinaryOrdered<Swapped>::readUnbufferedInt(ioBufferedStreamInput& stream) {
    int value;
    auto* const bytes = reinterpret_cast<char*>(&value);
    Swapped ? buffer().read4BytesStreamSwapped(stream, bytes)
            : buffer().read4BytesStream(stream, bytes);
    return value;
}

template class ioReadContextBinaryOrdered<false>;
template class ioReadContextBinaryOrdered<true>;

// ioReadContextBinarySameEndian, ioReadContextBinarySwapped

ioReadContextBinarySameEndian::ioReadContextBinarySameEndian(ioBufferedStreamInput& stream,
                                                             ioReadMethod method)
    : ioReadContextBinaryOrdered(method, stream) {}

ioReadContextBinarySameEndian::~ioReadContextBinarySameEndian() = default;

ioReadContextBinarySwapped::ioReadContextBinarySwapped(ioBufferedStreamInput& stream,
                                                       ioReadMethod method)
    : ioReadContextBinaryOrdered(method, stream) {}

ioReadContextBinarySwapped::~ioReadContextBinarySwapped() = default;

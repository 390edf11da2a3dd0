// SPDX-License-Identifier: MIT

#include <algorithm>

#include "Base/IO/ioPacketFileBinary.h"

// No typed operation calls another here, but for the arrays of bool, which go element by element:
// a context that adds to each value depends on it.

namespace {

std::uint16_t swapped(std::uint16_t word) {
    return __builtin_bswap16(word);
}
std::uint32_t swapped(std::uint32_t word) {
    return __builtin_bswap32(word);
}
std::uint64_t swapped(std::uint64_t word) {
    return __builtin_bswap64(word);
}

template<class T>
void readArray(ioReadContextBinary& context, T* values, int count) {
    if (count > 0)
        context.readBuffer(reinterpret_cast<char*>(values),
                           static_cast<unsigned long>(count) * sizeof(T));
}

template<class Word, class T>
void swapInPlace(T* values, int count) {
    for (int i = 0; i < count; ++i) {
        Word word;
        std::memcpy(&word, values + i, sizeof word);
        word = swapped(word);
        std::memcpy(values + i, &word, sizeof word);
    }
}

/// `Word` is the unsigned integer of the elements' size. It goes piece by piece, so that each is
/// swapped while it is near.
template<class Word, class T>
void readSwappedArray(ioReadContextBinary& context, T* values, int count) {
    static_assert(sizeof(Word) == sizeof(T));
    constexpr int piece = 1024;
    for (; count > 0; values += piece, count -= piece) {
        const int n = std::min(count, piece);
        readArray(context, values, n);
        swapInPlace<Word>(values, n);
        if (n < piece)
            break;
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
    readArray(*this, values, count);
}

void ioReadContextBinary::readUCharArray(unsigned char* values, int count) {
    readArray(*this, values, count);
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
}

// ioReadContextBinarySameEndian

ioReadContextBinarySameEndian::ioReadContextBinarySameEndian(ioBufferedStreamInput& stream,
                                                             ioReadMethod method)
    : ioReadContextBinary(method, stream) {}

ioReadContextBinarySameEndian::~ioReadContextBinarySameEndian() = default;

short ioReadContextBinarySameEndian::readShort() {
    short value;
    buffer().read2Bytes(reinterpret_cast<char*>(&value));
    return value;
}

unsigned short ioReadContextBinarySameEndian::readUShort() {
    unsigned short value;
    buffer().read2Bytes(reinterpret_cast<char*>(&value));
    return value;
}

int ioReadContextBinarySameEndian::readInt() {
    int value;
    buffer().read4Bytes(reinterpret_cast<char*>(&value));
    return value;
}

unsigned int ioReadContextBinarySameEndian::readUInt() {
    unsigned int value;
    buffer().read4Bytes(reinterpret_cast<char*>(&value));
    return value;
}

std::int64_t ioReadContextBinarySameEndian::readInt64() {
    std::int64_t value;
    buffer().read8Bytes(reinterpret_cast<char*>(&value));
    return value;
}

std::uint64_t ioReadContextBinarySameEndian::readUInt64() {
    std::uint64_t value;
    buffer().read8Bytes(reinterpret_cast<char*>(&value));
    return value;
}

float ioReadContextBinarySameEndian::readFloat() {
    float value;
    buffer().read4Bytes(reinterpret_cast<char*>(&value));
    return value;
}

double ioReadContextBinarySameEndian::readDouble() {
    double value;
    buffer().read8Bytes(reinterpret_cast<char*>(&value));
    return value;
}

void ioReadContextBinarySameEndian::readShortArray(short* values, int count) {
    readArray(*this, values, count);
}

void ioReadContextBinarySameEndian::readUShortArray(unsigned short* values, int count) {
    readArray(*this, values, count);
}

void ioReadContextBinarySameEndian::readIntArray(int* values, int count) {
    readArray(*this, values, count);
}

void ioReadContextBinarySameEndian::readUIntArray(unsigned int* values, int count) {
    readArray(*this, values, count);
}

void ioReadContextBinarySameEndian::readInt64Array(std::int64_t* values, int count) {
    readArray(*this, values, count);
}

void ioReadContextBinarySameEndian::readUInt64Array(std::uint64_t* values, int count) {
    readArray(*this, values, count);
}

void ioReadContextBinarySameEndian::readFloatArray(float* values, int count) {
    readArray(*this, values, count);
}

void ioReadContextBinarySameEndian::readDoubleArray(double* values, int count) {
    readArray(*this, values, count);
}

int ioReadContextBinarySameEndian::readUnbufferedInt(ioBufferedStreamInput& stream) {
    int value;
    buffer().read4BytesStream(stream, reinterpret_cast<char*>(&value));
    return value;
}

// ioReadContextBinarySwapped

ioReadContextBinarySwapped::ioReadContextBinarySwapped(ioBufferedStreamInput& stream,
                                                       ioReadMethod method)
    : ioReadContextBinary(method, stream) {}

ioReadContextBinarySwapped::~ioReadContextBinarySwapped() = default;

short ioReadContextBinarySwapped::readShort() {
    short value;
    buffer().read2BytesSwapped(reinterpret_cast<char*>(&value));
    return value;
}

unsigned short ioReadContextBinarySwapped::readUShort() {
    unsigned short value;
    buffer().read2BytesSwapped(reinterpret_cast<char*>(&value));
    return value;
}

int ioReadContextBinarySwapped::readInt() {
    int value;
    buffer().read4BytesSwapped(reinterpret_cast<char*>(&value));
    return value;
}

unsigned int ioReadContextBinarySwapped::readUInt() {
    unsigned int value;
    buffer().read4BytesSwapped(reinterpret_cast<char*>(&value));
    return value;
}

std::int64_t ioReadContextBinarySwapped::readInt64() {
    std::int64_t value;
    buffer().read8BytesSwapped(reinterpret_cast<char*>(&value));
    return value;
}

std::uint64_t ioReadContextBinarySwapped::readUInt64() {
    std::uint64_t value;
    buffer().read8BytesSwapped(reinterpret_cast<char*>(&value));
    return value;
}

float ioReadContextBinarySwapped::readFloat() {
    float value;
    buffer().read4BytesSwapped(reinterpret_cast<char*>(&value));
    return value;
}

double ioReadContextBinarySwapped::readDouble() {
    double value;
    buffer().read8BytesSwapped(reinterpret_cast<char*>(&value));
    return value;
}

void ioReadContextBinarySwapped::readShortArray(short* values, int count) {
    readSwappedArray<std::uint16_t>(*this, values, count);
}

void ioReadContextBinarySwapped::readUShortArray(unsigned short* values, int count) {
    readSwappedArray<std::uint16_t>(*this, values, count);
}

void ioReadContextBinarySwapped::readIntArray(int* values, int count) {
    readSwappedArray<std::uint32_t>(*this, values, count);
}

void ioReadContextBinarySwapped::readUIntArray(unsigned int* values, int count) {
    readSwappedArray<std::uint32_t>(*this, values, count);
}

void ioReadContextBinarySwapped::readInt64Array(std::int64_t* values, int count) {
    readSwappedArray<std::uint64_t>(*this, values, count);
}

void ioReadContextBinarySwapped::readUInt64Array(std::uint64_t* values, int count) {
    readSwappedArray<std::uint64_t>(*this, values, count);
}

void ioReadContextBinarySwapped::readFloatArray(float* values, int count) {
    readSwappedArray<std::uint32_t>(*this, values, count);
}

void ioReadContextBinarySwapped::readDoubleArray(double* values, int count) {
    readSwappedArray<std::uint64_t>(*this, values, count);
}

int ioReadContextBinarySwapped::readUnbufferedInt(ioBufferedStreamInput& stream) {
    int value;
    buffer().read4BytesStreamSwapped(stream, reinterpret_cast<char*>(&value));
    return value;
}

// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileBinary.h"

// No typed operation calls another here, but for the arrays of bool, which go element by element:
// a context that adds to each value depends on it.

namespace {

template<class T>
const char* bytesOf(const T* values) {
    return reinterpret_cast<const char*>(values);
}

template<class T>
void writeArray(ioPacketFileBinaryBuffer& buffer, const T* values, int count) {
    if (count > 0)
        buffer.writeBuffer(bytesOf(values), static_cast<unsigned long>(count) * sizeof(T));
}

} // namespace

ioWriteContextBinary::ioWriteContextBinary(ioBufferedStreamOutput& stream)
    : ioWriteContext(stream) {}

ioWriteContextBinary::~ioWriteContextBinary() = default;

void ioWriteContextBinary::writeBool(bool value) {
    buffer_->write1Byte(value ? 1 : 0);
}

void ioWriteContextBinary::writeChar(char value) {
    buffer_->write1Byte(value);
}

void ioWriteContextBinary::writeUChar(unsigned char value) {
    buffer_->write1Byte(static_cast<char>(value));
}

void ioWriteContextBinary::writeShort(short value) {
    buffer_->write2Bytes(bytesOf(&value));
}

void ioWriteContextBinary::writeUShort(unsigned short value) {
    buffer_->write2Bytes(bytesOf(&value));
}

void ioWriteContextBinary::writeInt(int value) {
    buffer_->write4Bytes(bytesOf(&value));
}

void ioWriteContextBinary::writeUInt(unsigned int value) {
    buffer_->write4Bytes(bytesOf(&value));
}

void ioWriteContextBinary::writeInt64(std::int64_t value) {
    buffer_->write8Bytes(bytesOf(&value));
}

void ioWriteContextBinary::writeUInt64(std::uint64_t value) {
    buffer_->write8Bytes(bytesOf(&value));
}

void ioWriteContextBinary::writeFloat(float value) {
    buffer_->write4Bytes(bytesOf(&value));
}

void ioWriteContextBinary::writeDouble(double value) {
    buffer_->write8Bytes(bytesOf(&value));
}

void ioWriteContextBinary::writeCString(const char* text) {
    if (!text)
        text = "";
    buffer_->writeBuffer(text, std::strlen(text) + 1);
}

void ioWriteContextBinary::writeBoolArray(const bool* values, int count) {
    for (int i = 0; i < count; ++i)
        writeBool(values[i]);
}

void ioWriteContextBinary::writeCharArray(const char* values, int count) {
    writeArray(*buffer_, values, count);
}

void ioWriteContextBinary::writeUCharArray(const unsigned char* values, int count) {
    writeArray(*buffer_, values, count);
}

void ioWriteContextBinary::writeShortArray(const short* values, int count) {
    writeArray(*buffer_, values, count);
}

void ioWriteContextBinary::writeUShortArray(const unsigned short* values, int count) {
    writeArray(*buffer_, values, count);
}

void ioWriteContextBinary::writeIntArray(const int* values, int count) {
    writeArray(*buffer_, values, count);
}

void ioWriteContextBinary::writeUIntArray(const unsigned int* values, int count) {
    writeArray(*buffer_, values, count);
}

void ioWriteContextBinary::writeInt64Array(const std::int64_t* values, int count) {
    writeArray(*buffer_, values, count);
}

void ioWriteContextBinary::writeUInt64Array(const std::uint64_t* values, int count) {
    writeArray(*buffer_, values, count);
}

void ioWriteContextBinary::writeFloatArray(const float* values, int count) {
    writeArray(*buffer_, values, count);
}

void ioWriteContextBinary::writeDoubleArray(const double* values, int count) {
    writeArray(*buffer_, values, count);
}

void ioWriteContextBinary::writeRawByte(signed char byte) {
    buffer_->write1Byte(static_cast<char>(byte));
}

ioHeader ioWriteContextBinary::getHeader() {
    return ioHeader(ioWriteBinary);
}

ioPacketFileBuffer* ioWriteContextBinary::allocPacket() {
    return new ioPacketFileBinaryBuffer;
}

void ioWriteContextBinary::setPacket(ioPacketFileBuffer* packet) {
    buffer_ = static_cast<ioPacketFileBinaryBuffer*>(packet);
}

// SPDX-License-Identifier: MIT

#include "Base/IO/formats/ioPacketFileAsciiBufferImpl.h"
#include "Base/IO/ioPacketFileAscii.h"

// No typed operation calls another here, but for the arrays, which go element by element: a context
// that adds to each value depends on it.

ioWriteContextAscii::ioWriteContextAscii(ioBufferedStreamOutput& stream) : ioWriteContext(stream) {}

ioWriteContextAscii::~ioWriteContextAscii() = default;

void ioWriteContextAscii::writeBool(bool value) {
    buffer_->outputChar(value ? '1' : '0');
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeChar(char value) {
    buffer_->outputInt(static_cast<unsigned char>(value));
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeUChar(unsigned char value) {
    buffer_->outputInt(value);
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeShort(short value) {
    buffer_->outputInt(value);
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeUShort(unsigned short value) {
    buffer_->outputUInt(value);
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeInt(int value) {
    buffer_->outputInt(value);
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeUInt(unsigned int value) {
    buffer_->outputUInt(value);
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeInt64(std::int64_t value) {
    buffer_->outputLong(value);
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeUInt64(std::uint64_t value) {
    buffer_->outputULong(value);
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeFloat(float value) {
    buffer_->outputReal(value, 7);
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeDouble(double value) {
    buffer_->outputReal(value, 16);
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeCString(const char* text) {
    buffer_->outputQuoted(text ? text : "");
    buffer_->outputChar(' ');
}

void ioWriteContextAscii::writeBoolArray(const bool* values, int count) {
    for (int i = 0; i < count; ++i)
        writeBool(values[i]);
}

void ioWriteContextAscii::writeCharArray(const char* values, int count) {
    for (int i = 0; i < count; ++i)
        writeChar(values[i]);
}

void ioWriteContextAscii::writeUCharArray(const unsigned char* values, int count) {
    for (int i = 0; i < count; ++i)
        writeUChar(values[i]);
}

void ioWriteContextAscii::writeShortArray(const short* values, int count) {
    for (int i = 0; i < count; ++i)
        writeShort(values[i]);
}

void ioWriteContextAscii::writeUShortArray(const unsigned short* values, int count) {
    for (int i = 0; i < count; ++i)
        writeUShort(values[i]);
}

void ioWriteContextAscii::writeIntArray(const int* values, int count) {
    for (int i = 0; i < count; ++i)
        writeInt(values[i]);
}

void ioWriteContextAscii::writeUIntArray(const unsigned int* values, int count) {
    for (int i = 0; i < count; ++i)
        writeUInt(values[i]);
}

void ioWriteContextAscii::writeInt64Array(const std::int64_t* values, int count) {
    for (int i = 0; i < count; ++i)
        writeInt64(values[i]);
}

void ioWriteContextAscii::writeUInt64Array(const std::uint64_t* values, int count) {
    for (int i = 0; i < count; ++i)
        writeUInt64(values[i]);
}

void ioWriteContextAscii::writeFloatArray(const float* values, int count) {
    for (int i = 0; i < count; ++i)
        writeFloat(values[i]);
}

void ioWriteContextAscii::writeDoubleArray(const double* values, int count) {
    for (int i = 0; i < count; ++i)
        writeDouble(values[i]);
}

void ioWriteContextAscii::writeRawByte(signed char byte) {
    buffer_->outputEscaped(static_cast<char>(byte));
}

ioHeader ioWriteContextAscii::getHeader() {
    return ioHeader(ioWriteAscii);
}

void ioWriteContextAscii::outputChar(char byte) {
    buffer_->outputChar(byte);
}

void ioWriteContextAscii::outputCharArray(const char* bytes, int size) {
    buffer_->outputCharArray(bytes, size);
}

void ioWriteContextAscii::outputInt(int value) {
    buffer_->outputInt(value);
}

void ioWriteContextAscii::outputUInt(unsigned int value) {
    buffer_->outputUInt(value);
}

void ioWriteContextAscii::outputString(const char* text) {
    buffer_->outputString(text);
}

ioPacketFileBuffer* ioWriteContextAscii::allocPacket() {
    return new ioPacketFileAsciiBuffer;
}

void ioWriteContextAscii::setPacket(ioPacketFileBuffer* packet) {
    buffer_ = static_cast<ioPacketFileAsciiBuffer*>(packet);
}

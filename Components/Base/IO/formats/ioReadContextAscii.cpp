// SPDX-License-Identifier: MIT

#include "Base/IO/formats/ioPacketFileAsciiBufferImpl.h"
#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioPacketFileAscii.h"

// No typed operation calls another here, but for the arrays, which go element by element: a context
// that adds to each value depends on it.

ioReadContextAscii::ioReadContextAscii(ioBufferedStreamInput& stream, ioReadMethod method)
    : ioReadContext(method, stream) {}

ioReadContextAscii::~ioReadContextAscii() = default;

bool ioReadContextAscii::isValidChunk() {
    return buffer_ && buffer_->isValidChunk();
}

bool ioReadContextAscii::readBool() {
    return static_cast<unsigned char>(buffer_->readLong()) != 0; // the low byte alone
}

unsigned char ioReadContextAscii::readChar() {
    return static_cast<unsigned char>(buffer_->readLong());
}

unsigned char ioReadContextAscii::readUChar() {
    return static_cast<unsigned char>(buffer_->readLong());
}

short ioReadContextAscii::readShort() {
    return static_cast<short>(buffer_->readLong());
}

unsigned short ioReadContextAscii::readUShort() {
    return static_cast<unsigned short>(buffer_->readLong());
}

int ioReadContextAscii::readInt() {
    return static_cast<int>(buffer_->readLong());
}

unsigned int ioReadContextAscii::readUInt() {
    return static_cast<unsigned int>(buffer_->readULong());
}

std::int64_t ioReadContextAscii::readInt64() {
    return buffer_->readLong();
}

std::uint64_t ioReadContextAscii::readUInt64() {
    return buffer_->readULong();
}

float ioReadContextAscii::readFloat() {
    return static_cast<float>(buffer_->readReal());
}

double ioReadContextAscii::readDouble() {
    return buffer_->readReal();
}

const char* ioReadContextAscii::readCString() {
    return buffer_->readQuoted();
}

void ioReadContextAscii::readBoolArray(bool* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = readBool();
}

void ioReadContextAscii::readCharArray(char* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = static_cast<char>(readChar());
}

void ioReadContextAscii::readUCharArray(unsigned char* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = readUChar();
}

void ioReadContextAscii::readShortArray(short* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = readShort();
}

void ioReadContextAscii::readUShortArray(unsigned short* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = readUShort();
}

void ioReadContextAscii::readIntArray(int* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = readInt();
}

void ioReadContextAscii::readUIntArray(unsigned int* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = readUInt();
}

void ioReadContextAscii::readInt64Array(std::int64_t* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = readInt64();
}

void ioReadContextAscii::readUInt64Array(std::uint64_t* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = readUInt64();
}

void ioReadContextAscii::readFloatArray(float* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = readFloat();
}

void ioReadContextAscii::readDoubleArray(double* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = readDouble();
}

signed char ioReadContextAscii::readRawByte() {
    return static_cast<signed char>(buffer_->readEscaped());
}

int ioReadContextAscii::readUnbufferedInt(ioBufferedStreamInput& stream) {
    return static_cast<int>(stream.readInt());
}

ioPacketFileBuffer* ioReadContextAscii::allocPacket() {
    return new ioPacketFileAsciiBuffer;
}

void ioReadContextAscii::setPacket(ioPacketFileBuffer* packet) {
    buffer_ = static_cast<ioPacketFileAsciiBuffer*>(packet);
}

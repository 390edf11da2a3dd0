// SPDX-License-Identifier: MIT

/// @file
/// What client code holds while it reads and writes packets: thin handles through which it reaches
/// the values of a context, and which it extends with state of its own.
///
/// A handle does not own its context, which must outlive it. Each operation forwards to the
/// context's operation of that name, where it is described. Numbers in binary files of this
/// machine's byte order are read inline.
///
/// Threads: a handle belongs to the thread of its context.
///
/// @code
/// #include "Base/IO/ioPacketFile.h"
/// struct SceneReader : ioClientReadContext {
///     using ioClientReadContext::ioClientReadContext;
///     void postPacketRead() override { ++objects; } // after each packet
///     int objects = 0;
/// };
/// ioBufferedStreamInput stream;
/// ioReadContextAscii context(stream);
/// SceneReader reader(&context);
/// reader.readFile(); // there is no registry
/// assert(reader.getContext().getStatus() == ioError && reader.objects == 0);
/// @endcode

#pragma once

#include <cstdint>
#include <utility>

#include "Base/IO/ioPacketFileBinary.h"
#include "Base/IO/ioReadContext.h"
#include "Base/IO/ioWriteContext.h"
#include "Base/zeBaseExport.h"

/// Given to ioPacketType::read(). Derive from it to hand state to the types' read(), which gets it
/// back by a static_cast.
class ZEBASE_API ioClientReadContext {
public:
    /// The context must outlive the handle.
    explicit ioClientReadContext(ioReadContext* context) : context_(context) {}
    /// Leaves the context alone.
    virtual ~ioClientReadContext();

    /// Called before each packet's read(). The base does nothing.
    virtual void prePacketRead();
    /// Called after each packet's read(). The base does nothing.
    virtual void postPacketRead();

    /// The context behind this handle.
    ioReadContext& getContext() const { return *context_; }

    /// Reads the whole file with this handle; its result is the context's status.
    ioStatus readFile() {
        context_->readFile(*this);
        return context_->getStatus();
    }

    /// @name Giving up
    /// @{

    /// As ioReadContext has it: gives up the file, or the current packet.
    void halt() { context_->halt(); }
    void invalidPacket() { context_->invalidPacket(); }
    /// @}

    /// @name Chunks and sub-packets
    /// @{

    /// As ioReadContext has it.
    bool nextChunk() { return context_->nextChunk(); }
    bool isValidChunk() { return context_->isValidChunk(); }
    void startSubPacket() { context_->startSubPacket(); }
    void endSubPacket() { context_->endSubPacket(); }
    /// @}

    /// @name References
    /// @{

    /// As ioReadContext has it.
    int getPacketReference() const { return context_->getPacketReference(); }
    void definePacketReference(void* pointer) { context_->definePacketReference(pointer); }
    void* readReferenceUsage() { return context_->readReferenceUsage(); }
    void* readReferenceUsage(int& reference) { return context_->readReferenceUsage(reference); }
    void readReferenceUsage(void* location, int offset) {
        context_->readReferenceUsage(location, offset);
    }
    void readReferenceDefinition(void* pointer) { context_->readReferenceDefinition(pointer); }
    int readReference() { return context_->readReference(); }
    void defineReference(int reference, void* pointer) {
        context_->defineReference(reference, pointer);
    }
    void defineReference(int reference, void* pointer, bool alias) {
        context_->defineReference(reference, pointer, alias);
    }
    void defineReferenceAlias(int reference, void* pointer) {
        context_->defineReferenceAlias(reference, pointer);
    }
    void resolveReference(int reference, void* location, int offset) {
        context_->resolveReference(reference, location, offset);
    }
    void useReference(int reference) { context_->useReference(reference); }
    void useReference(void* pointer) { context_->useReference(pointer); }
    void undefineReference(void* pointer) { context_->undefineReference(pointer); }
    void undefineReference(int reference) { context_->undefineReference(reference); }
    /// @}

    /// @name Single values
    /// @{

    /// The next value, as ioReadContext reads it.
    bool readBool() { return readNumber<&ioReadContext::readBool, unsigned char>() != 0; }
    unsigned char readChar() { return readNumber<&ioReadContext::readChar>(); }
    unsigned char readUChar() { return readNumber<&ioReadContext::readUChar>(); }
    short readShort() { return readNumber<&ioReadContext::readShort>(); }
    unsigned short readUShort() { return readNumber<&ioReadContext::readUShort>(); }
    int readInt() { return readNumber<&ioReadContext::readInt>(); }
    unsigned int readUInt() { return readNumber<&ioReadContext::readUInt>(); }
    std::int64_t readInt64() { return readNumber<&ioReadContext::readInt64>(); }
    std::uint64_t readUInt64() { return readNumber<&ioReadContext::readUInt64>(); }
    float readFloat() { return readNumber<&ioReadContext::readFloat>(); }
    double readDouble() { return readNumber<&ioReadContext::readDouble>(); }
    const char* readCString() { return context_->readCString(); }
    /// @}

    /// @name Arrays
    /// @{

    /// Reads `count` values, as ioReadContext does.
    void readBoolArray(bool* values, int count) { context_->readBoolArray(values, count); }
    void readCharArray(char* values, int count) { context_->readCharArray(values, count); }
    void readUCharArray(unsigned char* values, int count) {
        context_->readUCharArray(values, count);
    }
    void readShortArray(short* values, int count) { context_->readShortArray(values, count); }
    void readUShortArray(unsigned short* values, int count) {
        context_->readUShortArray(values, count);
    }
    void readIntArray(int* values, int count) { context_->readIntArray(values, count); }
    void readUIntArray(unsigned int* values, int count) { context_->readUIntArray(values, count); }
    void readInt64Array(std::int64_t* values, int count) {
        context_->readInt64Array(values, count);
    }
    void readUInt64Array(std::uint64_t* values, int count) {
        context_->readUInt64Array(values, count);
    }
    void readFloatArray(float* values, int count) { context_->readFloatArray(values, count); }
    void readDoubleArray(double* values, int count) { context_->readDoubleArray(values, count); }
    /// @}

    /// The byte that writeRawByte() wrote.
    signed char readRawByte() { return context_->readRawByte(); }

private:
    /// What the context's `operation` reads: from its plain packet without a virtual call.
    template<auto operation, class Number = decltype((std::declval<ioReadContext&>().*operation)())>
    Number readNumber() {
        ioPacketFileBinaryBuffer* const packet = context_->plainPacket_;
        return packet ? packet->readNumber<Number>() : (context_->*operation)();
    }

    ioReadContext* context_;
};

/// The counterpart for writing: what a program's save functions may be given.
class ioClientWriteContext {
public:
    /// The context must outlive the handle.
    explicit ioClientWriteContext(ioWriteContext* context) : context_(context) {}

    /// The context behind this handle.
    ioWriteContext& getContext() const { return *context_; }

    /// @name Packets
    /// @{

    /// As ioWriteContext has it.
    void startPacket(const ioPacketType* type, const void* reference) {
        context_->startPacket(type, reference);
    }
    void startPacket(const char* typeName, const void* reference) {
        context_->startPacket(typeName, reference);
    }
    void endPacket() { context_->endPacket(); }
    void invalidPacket() { context_->invalidPacket(); }
    void writeCStringPacket(const char* text) { context_->writeCStringPacket(text); }
    /// @}

    /// @name Chunks and sub-packets
    /// @{

    /// As ioWriteContext has it.
    void startChunk() { context_->startChunk(); }
    void endChunk() { context_->endChunk(); }
    void startSubPacket() { context_->startSubPacket(); }
    void endSubPacket() { context_->endSubPacket(); }
    /// @}

    /// @name References
    /// @{

    /// As ioWriteContext has it.
    void writeReference(const void* pointer, bool define) {
        context_->writeReference(pointer, define);
    }
    void writeReference(int reference, bool define) { context_->writeReference(reference, define); }
    void undefineReference(void* pointer) { context_->undefineReference(pointer); }
    void undefineReference(int reference) { context_->undefineReference(reference); }
    /// @}

    /// @name Single values
    /// @{

    /// Writes one value, as ioWriteContext does.
    void writeBool(bool value) { context_->writeBool(value); }
    void writeChar(char value) { context_->writeChar(value); }
    void writeUChar(unsigned char value) { context_->writeUChar(value); }
    void writeShort(short value) { context_->writeShort(value); }
    void writeUShort(unsigned short value) { context_->writeUShort(value); }
    void writeInt(int value) { context_->writeInt(value); }
    void writeUInt(unsigned int value) { context_->writeUInt(value); }
    void writeInt64(std::int64_t value) { context_->writeInt64(value); }
    void writeUInt64(std::uint64_t value) { context_->writeUInt64(value); }
    void writeFloat(float value) { context_->writeFloat(value); }
    void writeDouble(double value) { context_->writeDouble(value); }
    void writeCString(const char* text) { context_->writeCString(text); }
    /// @}

    /// @name Arrays
    /// @{

    /// Writes `count` values, as ioWriteContext does.
    void writeBoolArray(const bool* values, int count) { context_->writeBoolArray(values, count); }
    void writeCharArray(const char* values, int count) { context_->writeCharArray(values, count); }
    void writeUCharArray(const unsigned char* values, int count) {
        context_->writeUCharArray(values, count);
    }
    void writeShortArray(const short* values, int count) {
        context_->writeShortArray(values, count);
    }
    void writeUShortArray(const unsigned short* values, int count) {
        context_->writeUShortArray(values, count);
    }
    void writeIntArray(const int* values, int count) { context_->writeIntArray(values, count); }
    void writeUIntArray(const unsigned int* values, int count) {
        context_->writeUIntArray(values, count);
    }
    void writeInt64Array(const std::int64_t* values, int count) {
        context_->writeInt64Array(values, count);
    }
    void writeUInt64Array(const std::uint64_t* values, int count) {
        context_->writeUInt64Array(values, count);
    }
    void writeFloatArray(const float* values, int count) {
        context_->writeFloatArray(values, count);
    }
    void writeDoubleArray(const double* values, int count) {
        context_->writeDoubleArray(values, count);
    }
    /// @}

    /// One byte of text, as ioWriteContext has it.
    void writeRawByte(signed char byte) { context_->writeRawByte(byte); }

private:
    ioWriteContext* context_;
};

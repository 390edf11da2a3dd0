// SPDX-License-Identifier: MIT

/// @file
/// The text packet format, which a person can read and a text tool can compare. A file is the
/// header, the registry, and packets:
///
///     packet     = "{ " id " " hasReference " " [reference] element* "}\n"
///     element    = value | chunk | sub-packet
///     chunk      = "\n  [ " element* "] "
///     sub-packet = "\n  < " element* "> "
///
/// Each value is followed by one blank. Numbers are decimal (float with 7 digits, double with 16,
/// so that not every bit returns), a bool is 0 or 1, a character its number from 0 to 255, an array
/// its elements. A string stands between double quotes, with a backslash before each bracket (of
/// the four kinds), double quote and backslash in it; line ends in it stay as they are.
///
/// The decimal point of numbers is that of the process's locale: write and read under one locale,
/// which must not change within a packet.
///
/// Threads: contexts belong to one thread at a time.
///
/// @code
/// #include <cstdio>
/// #include <fstream>
/// #include <string>
/// #include "Base/IO/ioPacketFile.h"
/// #include "Base/Strings/zeStringIString.h"
/// ioSimplePacketRegistry types(false);
/// types.add("point");
/// ioBufferedStreamOutput output;
/// output.openFile(L"text-example.zp");
/// ioWriteContextAscii context(output);
/// context.associateRegistry(&types);
/// context.startFile();
/// context.startPacket("point", nullptr);
/// context.writeDouble(0.5);
/// context.writeCString("a[0]");
/// context.endPacket();
/// context.endFile();
/// output.close();
///
/// std::ifstream file("text-example.zp");
/// std::string line;
/// while (std::getline(file, line) && line[0] != '{') {
/// }
/// assert(line == "{ 0 0 0.5 \"a\\[0\\]\" }");
/// std::remove("text-example.zp");
/// @endcode

#pragma once

#include <cstdint>

#include "Base/IO/ioReadContext.h"
#include "Base/IO/ioWriteContext.h"
#include "Base/zeBaseExport.h"

class ioPacketFileAsciiBuffer;

/// Writes files in the text format.
class ZEBASE_API ioWriteContextAscii : public ioWriteContext {
public:
    /// The stream stays the caller's.
    explicit ioWriteContextAscii(ioBufferedStreamOutput& stream);
    ~ioWriteContextAscii() override;

    void writeBool(bool value) override;
    void writeChar(char value) override;
    void writeUChar(unsigned char value) override;
    void writeShort(short value) override;
    void writeUShort(unsigned short value) override;
    void writeInt(int value) override;
    void writeUInt(unsigned int value) override;
    void writeInt64(std::int64_t value) override;
    void writeUInt64(std::uint64_t value) override;
    void writeFloat(float value) override;
    void writeDouble(double value) override;
    void writeCString(const char* text) override;
    void writeBoolArray(const bool* values, int count) override;
    void writeCharArray(const char* values, int count) override;
    void writeUCharArray(const unsigned char* values, int count) override;
    void writeShortArray(const short* values, int count) override;
    void writeUShortArray(const unsigned short* values, int count) override;
    void writeIntArray(const int* values, int count) override;
    void writeUIntArray(const unsigned int* values, int count) override;
    void writeInt64Array(const std::int64_t* values, int count) override;
    void writeUInt64Array(const std::uint64_t* values, int count) override;
    void writeFloatArray(const float* values, int count) override;
    void writeDoubleArray(const double* values, int count) override;
    void writeRawByte(signed char byte) override;
    ioHeader getHeader() override;

    /// @{
    /// Writes text into the packet as it is, a number in decimal.
    void outputChar(char byte);
    void outputCharArray(const char* bytes, int size);
    void outputInt(int value);
    void outputUInt(unsigned int value);
    void outputString(const char* text);
    /// @}

protected:
    ioPacketFileBuffer* allocPacket() override;
    void setPacket(ioPacketFileBuffer* packet) override;

private:
    ioPacketFileAsciiBuffer* buffer_ = nullptr;
};

/// Reads files in the text format.
class ZEBASE_API ioReadContextAscii : public ioReadContext {
public:
    /// The stream stays the caller's. Debug contexts give a method of their own.
    explicit ioReadContextAscii(ioBufferedStreamInput& stream, ioReadMethod method = ioReadAscii);
    ~ioReadContextAscii() override;

    bool isValidChunk() override;
    bool readBool() override;
    unsigned char readChar() override;
    unsigned char readUChar() override;
    short readShort() override;
    unsigned short readUShort() override;
    int readInt() override;
    unsigned int readUInt() override;
    std::int64_t readInt64() override;
    std::uint64_t readUInt64() override;
    float readFloat() override;
    double readDouble() override;
    const char* readCString() override;
    void readBoolArray(bool* values, int count) override;
    void readCharArray(char* values, int count) override;
    void readUCharArray(unsigned char* values, int count) override;
    void readShortArray(short* values, int count) override;
    void readUShortArray(unsigned short* values, int count) override;
    void readIntArray(int* values, int count) override;
    void readUIntArray(unsigned int* values, int count) override;
    void readInt64Array(std::int64_t* values, int count) override;
    void readUInt64Array(std::uint64_t* values, int count) override;
    void readFloatArray(float* values, int count) override;
    void readDoubleArray(double* values, int count) override;
    signed char readRawByte() override;
    int readUnbufferedInt(ioBufferedStreamInput& stream) override;

protected:
    ioPacketFileBuffer* allocPacket() override;
    void setPacket(ioPacketFileBuffer* packet) override;

private:
    ioPacketFileAsciiBuffer* buffer_ = nullptr;
};

// SPDX-License-Identifier: MIT

/// @file
/// The debug forms of the two packet formats, which find a reader out of step with its writer.
///
/// A packet carries no types, so that a reader that asks for another type than was written reads
/// nonsense and says nothing. In a debug file a tag stands before each value, one byte that names
/// its type, and the reader stops at the first that is not what it asks for. The same client code
/// runs unchanged: write a file by `ioWriteBinaryDebug` or `ioWriteAsciiDebug`, and read it again.
/// It is an aid for development, never the default: a file is larger by a byte for each value, and
/// reading costs a check for each.
///
/// A mismatch ends the process: ioPacketFileError() prints what came and what was expected, by name
/// and tag, and then follows ioContext::fatalError(). A damaged file is such a mismatch: whoever
/// reads debug files that others made sets the hooks of ioPacketFileError.h.
///
///     Packet file type mismatch:
///        got: Short (68)
///        expected: Int (69)
///
/// Where an operation of a format calls another one, each writes its tag, and a reader expects
/// both: a reference is a Reference and the UInt that it is written as; the length of a chunk or
/// sub-packet in a binary file is an Int, and counts from its tag (5 is an empty one); an array has
/// one tag, and where the format writes it element by element (in binary those of bool, in text
/// all) one more for each element. An array without elements is its tag alone, and a chunk that
/// holds it is not empty. Bytes of writeRawByte() and the start of a packet have none. Text has the
/// tag directly before the value, with no blank.
///
/// Threads: contexts belong to one thread at a time.
///
/// @code
/// #include <cstdio>
/// #include <fstream>
/// #include <memory>
/// #include <string>
/// #include "Base/IO/ioPacketFile.h"
/// #include "Base/Strings/zeStringIString.h"
/// ioSimplePacketRegistry types(false);
/// types.add("point");
/// ioBufferedStreamOutput output;
/// output.openFile(L"debug-example.zp");
/// std::unique_ptr<ioWriteContext> context(ioWriteContextAlloc(output, ioWriteAsciiDebug, &types));
/// context->startFile();
/// context->startPacket("point", nullptr);
/// context->writeDouble(0.5);
/// const short pair[] = {7, 8};
/// context->writeShortArray(pair, 2);
/// context->endPacket();
/// context->endFile();
/// output.close();
///
/// std::ifstream file("debug-example.zp");
/// std::string line;
/// while (std::getline(file, line) && line[0] != '{') {
/// }
/// assert(line == "{ 0 0 d0.5 3h7 h8 }");
/// std::remove("debug-example.zp");
/// @endcode

#pragma once

#include <concepts>
#include <cstdint>

#include "Base/IO/ioPacketFileAscii.h"
#include "Base/IO/ioPacketFileBinary.h"
#include "Base/IO/ioPacketFileError.h"
#include "Base/zeBaseExport.h"

/// The tags. A value from a file may be any byte.
enum ioDebugType : signed char {
    ioDebugTypeBool = 'b',        ///< Of a Bool.
    ioDebugTypeChar = 'c',        ///< Of a Char.
    ioDebugTypeUChar = 'C',       ///< Of a UChar.
    ioDebugTypeShort = 'h',       ///< Of a Short.
    ioDebugTypeUShort = 'H',      ///< Of a UShort.
    ioDebugTypeInt = 'i',         ///< Of an Int.
    ioDebugTypeUInt = 'I',        ///< Of a UInt.
    ioDebugTypeInt64 = 'l',       ///< Of an Int64.
    ioDebugTypeUInt64 = 'L',      ///< Of a UInt64.
    ioDebugTypeFloat = 'f',       ///< Of a Float.
    ioDebugTypeDouble = 'd',      ///< Of a Double.
    ioDebugTypeCString = 's',     ///< Of a CString.
    ioDebugTypeBoolArray = 'B',   ///< Of an array of Bool.
    ioDebugTypeCharArray = '1',   ///< Of an array of Char.
    ioDebugTypeUCharArray = '2',  ///< Of an array of UChar.
    ioDebugTypeShortArray = '3',  ///< Of an array of Short.
    ioDebugTypeUShortArray = '4', ///< Of an array of UShort.
    ioDebugTypeIntArray = '5',    ///< Of an array of Int.
    ioDebugTypeUIntArray = '6',   ///< Of an array of UInt.
    ioDebugTypeInt64Array = '7',  ///< Of an array of Int64.
    ioDebugTypeUInt64Array = '8', ///< Of an array of UInt64.
    ioDebugTypeFloatArray = '9',  ///< Of an array of Float.
    ioDebugTypeDoubleArray = '0', ///< Of an array of Double.
    ioDebugTypeReference = 'r'    ///< Of a Reference.
};

/// The name of a type, as "Int64Array"; "(invalid type)" for what is none.
ZEBASE_API const char* ioPacketFileDebugType(ioDebugType type);

/// Writes each value of `Base`, a context of either format, with its tag. `Method` goes into the
/// header.
template<std::derived_from<ioWriteContext> Base, ioWriteMethod Method>
class ioWriteContextDebug : public Base {
public:
    /// The stream stays the caller's.
    explicit ioWriteContextDebug(ioBufferedStreamOutput& stream) : Base(stream) {}

    using Base::writeReference;

    /// @{
    /// Writes the tag of the operation's name, and then what `Base` writes.
    void writeReference(int reference, bool define) override {
        tag(ioDebugTypeReference);
        Base::writeReference(reference, define);
    }
    void writeBool(bool value) override {
        tag(ioDebugTypeBool);
        Base::writeBool(value);
    }
    void writeChar(char value) override {
        tag(ioDebugTypeChar);
        Base::writeChar(value);
    }
    void writeUChar(unsigned char value) override {
        tag(ioDebugTypeUChar);
        Base::writeUChar(value);
    }
    void writeShort(short value) override {
        tag(ioDebugTypeShort);
        Base::writeShort(value);
    }
    void writeUShort(unsigned short value) override {
        tag(ioDebugTypeUShort);
        Base::writeUShort(value);
    }
    void writeInt(int value) override {
        tag(ioDebugTypeInt);
        Base::writeInt(value);
    }
    void writeUInt(unsigned int value) override {
        tag(ioDebugTypeUInt);
        Base::writeUInt(value);
    }
    void writeInt64(std::int64_t value) override {
        tag(ioDebugTypeInt64);
        Base::writeInt64(value);
    }
    void writeUInt64(std::uint64_t value) override {
        tag(ioDebugTypeUInt64);
        Base::writeUInt64(value);
    }
    void writeFloat(float value) override {
        tag(ioDebugTypeFloat);
        Base::writeFloat(value);
    }
    void writeDouble(double value) override {
        tag(ioDebugTypeDouble);
        Base::writeDouble(value);
    }
    void writeCString(const char* text) override {
        tag(ioDebugTypeCString);
        Base::writeCString(text);
    }
    void writeBoolArray(const bool* values, int count) override {
        tag(ioDebugTypeBoolArray);
        Base::writeBoolArray(values, count);
    }
    void writeCharArray(const char* values, int count) override {
        tag(ioDebugTypeCharArray);
        Base::writeCharArray(values, count);
    }
    void writeUCharArray(const unsigned char* values, int count) override {
        tag(ioDebugTypeUCharArray);
        Base::writeUCharArray(values, count);
    }
    void writeShortArray(const short* values, int count) override {
        tag(ioDebugTypeShortArray);
        Base::writeShortArray(values, count);
    }
    void writeUShortArray(const unsigned short* values, int count) override {
        tag(ioDebugTypeUShortArray);
        Base::writeUShortArray(values, count);
    }
    void writeIntArray(const int* values, int count) override {
        tag(ioDebugTypeIntArray);
        Base::writeIntArray(values, count);
    }
    void writeUIntArray(const unsigned int* values, int count) override {
        tag(ioDebugTypeUIntArray);
        Base::writeUIntArray(values, count);
    }
    void writeInt64Array(const std::int64_t* values, int count) override {
        tag(ioDebugTypeInt64Array);
        Base::writeInt64Array(values, count);
    }
    void writeUInt64Array(const std::uint64_t* values, int count) override {
        tag(ioDebugTypeUInt64Array);
        Base::writeUInt64Array(values, count);
    }
    void writeFloatArray(const float* values, int count) override {
        tag(ioDebugTypeFloatArray);
        Base::writeFloatArray(values, count);
    }
    void writeDoubleArray(const double* values, int count) override {
        tag(ioDebugTypeDoubleArray);
        Base::writeDoubleArray(values, count);
    }

    /// @}

    /// The header of `Method`.
    ioHeader getHeader() override { return ioHeader(Method); }

private:
    void tag(ioDebugType type) { this->writeRawByte(type); }
};

/// Reads each value of `Base`, a context of either format, after its tag. A tag that is another one
/// ends the process; one below 0, which no writer makes, passes.
template<std::derived_from<ioReadContext> Base>
class ioReadContextDebug : public Base {
public:
    /// The stream stays the caller's.
    explicit ioReadContextDebug(ioBufferedStreamInput& stream) : Base(stream, method()) {}

    /// @{
    /// Expects the tag of the operation's name, and then reads what `Base` reads.
    int readReference() override {
        expect(ioDebugTypeReference);
        return Base::readReference();
    }
    bool readBool() override {
        expect(ioDebugTypeBool);
        return Base::readBool();
    }
    unsigned char readChar() override {
        expect(ioDebugTypeChar);
        return Base::readChar();
    }
    unsigned char readUChar() override {
        expect(ioDebugTypeUChar);
        return Base::readUChar();
    }
    short readShort() override {
        expect(ioDebugTypeShort);
        return Base::readShort();
    }
    unsigned short readUShort() override {
        expect(ioDebugTypeUShort);
        return Base::readUShort();
    }
    int readInt() override {
        expect(ioDebugTypeInt);
        return Base::readInt();
    }
    unsigned int readUInt() override {
        expect(ioDebugTypeUInt);
        return Base::readUInt();
    }
    std::int64_t readInt64() override {
        expect(ioDebugTypeInt64);
        return Base::readInt64();
    }
    std::uint64_t readUInt64() override {
        expect(ioDebugTypeUInt64);
        return Base::readUInt64();
    }
    float readFloat() override {
        expect(ioDebugTypeFloat);
        return Base::readFloat();
    }
    double readDouble() override {
        expect(ioDebugTypeDouble);
        return Base::readDouble();
    }
    const char* readCString() override {
        expect(ioDebugTypeCString);
        return Base::readCString();
    }
    void readBoolArray(bool* values, int count) override {
        expect(ioDebugTypeBoolArray);
        Base::readBoolArray(values, count);
    }
    void readCharArray(char* values, int count) override {
        expect(ioDebugTypeCharArray);
        Base::readCharArray(values, count);
    }
    void readUCharArray(unsigned char* values, int count) override {
        expect(ioDebugTypeUCharArray);
        Base::readUCharArray(values, count);
    }
    void readShortArray(short* values, int count) override {
        expect(ioDebugTypeShortArray);
        Base::readShortArray(values, count);
    }
    void readUShortArray(unsigned short* values, int count) override {
        expect(ioDebugTypeUShortArray);
        Base::readUShortArray(values, count);
    }
    void readIntArray(int* values, int count) override {
        expect(ioDebugTypeIntArray);
        Base::readIntArray(values, count);
    }
    void readUIntArray(unsigned int* values, int count) override {
        expect(ioDebugTypeUIntArray);
        Base::readUIntArray(values, count);
    }
    void readInt64Array(std::int64_t* values, int count) override {
        expect(ioDebugTypeInt64Array);
        Base::readInt64Array(values, count);
    }
    void readUInt64Array(std::uint64_t* values, int count) override {
        expect(ioDebugTypeUInt64Array);
        Base::readUInt64Array(values, count);
    }
    void readFloatArray(float* values, int count) override {
        expect(ioDebugTypeFloatArray);
        Base::readFloatArray(values, count);
    }
    void readDoubleArray(double* values, int count) override {
        expect(ioDebugTypeDoubleArray);
        Base::readDoubleArray(values, count);
    }
    /// @}

private:
    static constexpr ioReadMethod method() {
        if (std::derived_from<Base, ioReadContextAscii>)
            return ioReadAsciiDebug;
        return std::derived_from<Base, ioReadContextBinarySwapped> ? ioReadBinarySwappedDebug
                                                                   : ioReadBinarySameEndianDebug;
    }

    void expect(ioDebugType expected) {
        const auto got = static_cast<ioDebugType>(this->readRawByte());
        if (got < 0 || got == expected) [[likely]]
            return;
        ioPacketFileError("Packet file type mismatch:\n");
        ioPacketFileError("   got: %s (%02x)\n", ioPacketFileDebugType(got),
                          static_cast<unsigned int>(got));
        ioPacketFileError("   expected: %s (%02x)\n", ioPacketFileDebugType(expected),
                          static_cast<unsigned int>(expected));
        this->fatalError();
    }
};

/// The forms that ioWriteContextAlloc() and ioReadContextAlloc() make.
extern template class ZEBASE_API ioWriteContextDebug<ioWriteContextBinary, ioWriteBinaryDebug>;
extern template class ZEBASE_API ioWriteContextDebug<ioWriteContextAscii, ioWriteAsciiDebug>;
extern template class ZEBASE_API ioReadContextDebug<ioReadContextBinarySameEndian>;
extern template class ZEBASE_API ioReadContextDebug<ioReadContextBinarySwapped>;
extern template class ZEBASE_API ioReadContextDebug<ioReadContextAscii>;

// SPDX-License-Identifier: MIT

/// @file
/// The binary packet format. A file is the header, the registry as text, and packets without
/// padding, in the writer's byte order:
///
///     packet     = id:int32 hasReference:int32 length:int32 body
///     body       = [reference:uint32] element*
///     element    = value | chunk | sub-packet
///     chunk      = "," length:int32 element*
///     sub-packet = "." length:int32 element*
///
/// A packet's length counts its body, that of a chunk or sub-packet itself and the elements: 4 is
/// an empty one. There is a reference where hasReference is 1; packets with another value than 0
/// and 1 are skipped. A bool is a byte of 0 or 1, numbers are their bytes in memory, a string
/// its bytes and a 0, an array its elements without a count, a reference a uint32. The last packet
/// is of the end-of-file type: its id, 0, 0.
///
/// Threads: buffers and contexts belong to one thread at a time.
///
/// @code
/// #include "Base/IO/ioPacketFile.h"
/// ioPacketFileBinaryBuffer buffer;
/// buffer.write4Bytes("\1\2\3\4");
/// buffer.seekPos(0);
/// char bytes[4];
/// buffer.read4BytesSwapped(bytes);
/// assert(bytes[0] == 4 && bytes[3] == 1 && buffer.tellPos() == 4);
/// @endcode

#pragma once

#include <cstdint>
#include <cstring>

#include "Base/IO/ioPacketFileBuffer.h"
#include "Base/IO/ioReadContext.h"
#include "Base/IO/ioWriteContext.h"
#include "Base/zeBaseExport.h"

/// One packet as bytes, with one cursor for writing and reading.
///
/// The array starts with 50000 bytes, doubles as it must and is kept for the packets that follow.
/// Reads are not held at the end of the packet: they go on into what the array held before. Outside
/// the array they give zeros, wherever the lengths of a damaged file have put the cursor. A packet
/// that cannot be held in memory, or exceeds 2 GiB, becomes invalid and loses its type.
class ZEBASE_API ioPacketFileBinaryBuffer : public ioPacketFileBuffer {
public:
    /// The state of a packet, or of one open sub-packet in it.
    struct ioSubPacket {
        int subPacketLengthPosition = 0; ///< Writer: where the length of the open sub-packet lies.
        int chunkLengthPosition = 0;     ///< Writer: where the length of the open chunk lies.
        int end = 0;                     ///< Reader: where this packet or sub-packet ends.
        int chunkEnd = 0;                ///< Reader: where the open chunk ends.
        bool validChunk = false;         ///< Reader: the open chunk exists and is not empty.
    };

    /// An empty packet.
    ioPacketFileBinaryBuffer();
    ~ioPacketFileBinaryBuffer() override;

    void writePacketStart(ioWriteContext* context, int hasReference, ioPacketType* type) override;
    void writePacketEnd(ioWriteContext* context, ioBufferedStreamOutput& stream) override;
    void writeChunkStart(ioWriteContext* context) override;
    void writeChunkEnd(ioWriteContext* context) override;
    void writeSubPacketStart(ioWriteContext* context) override;
    void writeSubPacketEnd(ioWriteContext* context) override;
    int readPacketStart(ioReadContext* context, ioBufferedStreamInput& stream) override;
    void readPacketEnd(ioReadContext* context) override;
    void readChunkStart(ioReadContext* context) override;
    bool isValidChunk() override;
    void readChunkEnd(ioReadContext* context) override;
    void readSubPacketStart(ioReadContext* context) override;
    void readSubPacketEnd(ioReadContext* context) override;

    /// The bytes of the packet that was read, with its head, while no sub-packet is open in it.
    std::int64_t packetSize() const;

    /// The cursor: a position in the packet.
    int tellPos() const { return position_; }
    /// Moves the cursor. A writer must stay within what it has written.
    void seekPos(int position) { position_ = position; }

    /// @{
    /// Writes so many bytes as they are.
    void write1Byte(char byte) { put<std::uint8_t>(&byte); }
    void write2Bytes(const char* bytes) { put<std::uint16_t>(bytes); }
    void write4Bytes(const char* bytes) { put<std::uint32_t>(bytes); }
    void write8Bytes(const char* bytes) { put<std::uint64_t>(bytes); }
    /// @}
    /// @{
    /// Writes `size` bytes; a size of 0 or less writes nothing.
    void writeBuffer(const char* bytes, int size);
    void writeBuffer(const char* bytes, unsigned long size);
    /// @}

    /// Reads a number of this machine's byte order; 0 outside the array. Not for bool, of which
    /// most bytes are no value.
    template<class Number>
    Number readNumber() {
        Number number;
        get<sizeof(Number)>(reinterpret_cast<char*>(&number));
        return number;
    }
    /// @{
    /// Reads so many bytes as they are; zeros outside the array.
    char read1Byte() { return readNumber<char>(); }
    void read2Bytes(char* bytes) { get<2>(bytes); }
    void read4Bytes(char* bytes) { get<4>(bytes); }
    void read8Bytes(char* bytes) { get<8>(bytes); }
    /// @}
    /// @{
    /// Reads so many bytes in reverse order.
    void read2BytesSwapped(char* bytes) { getSwapped<std::uint16_t>(bytes); }
    void read4BytesSwapped(char* bytes) { getSwapped<std::uint32_t>(bytes); }
    void read8BytesSwapped(char* bytes) { getSwapped<std::uint64_t>(bytes); }
    /// @}
    /// The next `size` bytes where they lie, valid until the packet's end; null if they do not lie
    /// within the array. The cursor moves past them either way.
    const char* readBuffer(int size);
    /// Copies the next `size` bytes, with zeros for those outside the array.
    void readBuffer(char* bytes, unsigned long size);

    /// @{
    /// Reads four bytes straight from the stream; zeros from its end on.
    void read4BytesStream(ioBufferedStreamInput& stream, char* bytes);
    void read4BytesStreamSwapped(ioBufferedStreamInput& stream, char* bytes);
    /// @}

    /// The terminated text at the cursor, which moves past its terminator.
    const char* readText();

private:
    /// The array is this much longer than its capacity, and zero there: reads from outside the
    /// capacity are made here, reads across its end need no test, and every text ends.
    static constexpr int slack = 8;

    template<class Word>
    void put(const char* bytes) {
        Word word;
        std::memcpy(&word, bytes, sizeof word);
        if (capacity_ - position_ <= static_cast<int>(sizeof word)) [[unlikely]]
            return putGrowing(word, sizeof word);
        std::memcpy(data_ + position_, &word, sizeof word);
        position_ += static_cast<int>(sizeof word);
    }
    template<int N>
    void get(char* bytes) {
        static_assert(N <= slack);
        const auto at = static_cast<unsigned int>(position_);
        const auto end = static_cast<unsigned int>(capacity_);
        std::memcpy(bytes, data_ + (at < end ? at : end), N);
        position_ = static_cast<int>(at + N);
    }
    template<class Word>
    void getSwapped(char* bytes) {
        char stored[sizeof(Word)];
        get<sizeof(Word)>(stored);
        for (unsigned int i = 0; i < sizeof(Word); ++i)
            bytes[i] = stored[sizeof(Word) - 1 - i];
    }

    struct Frames;

    // What is rare is not inlined: it would cost what is frequent registers and a guarded stack.
    [[gnu::noinline]] ZEBASE_HIDDEN bool resize(int size);
    ZEBASE_HIDDEN bool makeRoom(unsigned long size);
    [[gnu::noinline]] void putGrowing(std::uint64_t word, unsigned long size);
    [[gnu::noinline]] ZEBASE_HIDDEN bool readLongBody(ioBufferedStreamInput& stream, int length);
    ZEBASE_HIDDEN void writeHeadField(int position, int value);
    ZEBASE_HIDDEN void startMeasured(ioWriteContext* context, char marker, int& lengthPosition);
    ZEBASE_HIDDEN void endMeasured(ioWriteContext* context, int lengthPosition);
    ZEBASE_HIDDEN int readMeasured(ioReadContext* context);

    char* data_; // owned, from calloc
    int capacity_;
    int position_ = 0;
    Frames* frames_; // owned
};

/// Writes files in the binary format.
class ZEBASE_API ioWriteContextBinary : public ioWriteContext {
public:
    /// The stream stays the caller's.
    explicit ioWriteContextBinary(ioBufferedStreamOutput& stream);
    ~ioWriteContextBinary() override;

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

protected:
    ioPacketFileBuffer* allocPacket() override;
    void setPacket(ioPacketFileBuffer* packet) override;

private:
    ioPacketFileBinaryBuffer* buffer_ = nullptr;
};

/// Reads files in the binary format: what does not depend on the byte order. Classes that derive
/// from it and from those below may override any operation. Compile them with run-time type
/// information, by which they are told from the library's own.
class ZEBASE_API ioReadContextBinary : public ioReadContext {
public:
    /// The stream stays the caller's; `method` is the one that the header asked for.
    ioReadContextBinary(ioReadMethod method, ioBufferedStreamInput& stream);
    ~ioReadContextBinary() override;

    bool isValidChunk() override;
    bool readBool() override;
    unsigned char readChar() override;
    unsigned char readUChar() override;
    const char* readCString() override;
    void readBoolArray(bool* values, int count) override;
    void readCharArray(char* values, int count) override;
    void readUCharArray(unsigned char* values, int count) override;
    signed char readRawByte() override;

    /// Copies the next `size` bytes of the packet as they are.
    void readBuffer(char* bytes, unsigned long size);

protected:
    ioPacketFileBuffer* allocPacket() override;
    void setPacket(ioPacketFileBuffer* packet) override;

    /// The packet that is open.
    ioPacketFileBinaryBuffer& buffer() const { return *buffer_; }

private:
    ioPacketFileBinaryBuffer* buffer_ = nullptr;
};

/// @cond
/// What depends on the byte order: `Swapped` says whether it is the other one than this machine's.
template<bool Swapped>
class ioReadContextBinaryOrdered : public ioReadContextBinary {
public:
    /// `method` goes to the base.
    ioReadContextBinaryOrdered(ioReadMethod method, ioBufferedStreamInput& stream);
    ~ioReadContextBinaryOrdered() override;

    short readShort() override;
    unsigned short readUShort() override;
    int readInt() override;
    unsigned int readUInt() override;
    std::int64_t readInt64() override;
    std::uint64_t readUInt64() override;
    float readFloat() override;
    double readDouble() override;
    void readShortArray(short* values, int count) override;
    void readUShortArray(unsigned short* values, int count) override;
    void readIntArray(int* values, int count) override;
    void readUIntArray(unsigned int* values, int count) override;
    void readInt64Array(std::int64_t* values, int count) override;
    void readUInt64Array(std::uint64_t* values, int count) override;
    void readFloatArray(float* values, int count) override;
    void readDoubleArray(double* values, int count) override;
    int readUnbufferedInt(ioBufferedStreamInput& stream) override;
};

extern template class ZEBASE_API ioReadContextBinaryOrdered<false>;
extern template class ZEBASE_API ioReadContextBinaryOrdered<true>;
/// @endcond

/// Reads binary files of this machine's byte order.
class ZEBASE_API ioReadContextBinarySameEndian : public ioReadContextBinaryOrdered<false> {
public:
    /// The stream stays the caller's. Debug contexts give a method of their own.
    explicit ioReadContextBinarySameEndian(ioBufferedStreamInput& stream,
                                           ioReadMethod method = ioReadBinarySameEndian);
    ~ioReadContextBinarySameEndian() override;
};

/// Reads binary files of the other byte order.
class ZEBASE_API ioReadContextBinarySwapped : public ioReadContextBinaryOrdered<true> {
public:
    /// The stream stays the caller's. Debug contexts give a method of their own.
    explicit ioReadContextBinarySwapped(ioBufferedStreamInput& stream,
                                        ioReadMethod method = ioReadBinarySwapped);
    ~ioReadContextBinarySwapped() override;
};

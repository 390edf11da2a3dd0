// SPDX-License-Identifier: MIT

/// @file
/// The image in memory of one packet of text.

#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "Base/IO/ioPacketFileBuffer.h"

/// One packet as text, with one cursor for writing and reading.
///
/// The array starts with 50000 bytes, doubles as it must and is kept for the packets that follow. A
/// packet that cannot be held in memory, or exceeds 2 GiB, becomes invalid and loses its type. What
/// cannot be parsed reads as 0; whoever lost the place in a packet finds it again at the end of the
/// chunk, of the sub-packet or of the packet.
class ioPacketFileAsciiBuffer : public ioPacketFileBuffer {
public:
    ioPacketFileAsciiBuffer();
    ~ioPacketFileAsciiBuffer() override;

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

    /// The two steps of readPacketStart(). The first consumes the stream up to the next left brace,
    /// and returns how many bytes lay before it; -1 if the stream ends first.
    std::int64_t findPacket(ioBufferedStreamInput& stream);
    int readFoundPacket(ioReadContext* context, ioBufferedStreamInput& stream);
    /// The bytes of the packet that was read, with its braces.
    std::int64_t packetSize() const { return length_; }

    /// Text into the packet as it is.
    void outputChar(char byte) {
        if (makeRoom(1))
            text_.get()[position_++] = byte;
    }
    void outputCharArray(const char* bytes, int size);
    void outputString(const char* text);
    void outputInt(int value);             ///< "%d"
    void outputUInt(unsigned int value);   ///< "%u"
    void outputLong(long value);           ///< "%ld"
    void outputULong(unsigned long value); ///< "%lu"
    /// "%.7g" or "%.16g", by `digits`.
    void outputReal(double value, int digits);
    /// One byte of a string, with a backslash before it where it has a meaning of its own.
    void outputEscaped(char byte);
    /// A string in double quotes, each byte as by outputEscaped().
    void outputQuoted(const char* text);

    long readLong();           ///< as strtol() in base 10, and to the next value
    unsigned long readULong(); ///< as strtoul() in base 10, and to the next value
    double readReal();         ///< as strtod(), and to the next value
    char readEscaped();        ///< the byte that outputEscaped() wrote
    /// The string between the next two double quotes, valid until the next call on this thread;
    /// null if there is none.
    const char* readQuoted();

private:
    bool readText(ioBufferedStreamInput& stream);
    /// Goes behind the first blank from `at` on, which lies in the packet.
    void advanceFrom(const char* at) {
        if (*at == ' ') [[likely]]
            setCursor(at + 1);
        else
            advanceToBlank(at);
    }
    void advanceToBlank(const char* at);
    double readOtherReal();
    void moveBehind(int size);

    /// The rest of the packet that is being read; empty behind its end.
    std::string_view rest() const;
    bool startsWith(std::string_view text) const { return rest().starts_with(text); }

    bool resize(int size);
    bool makeRoom(unsigned long size) {
        return static_cast<long>(size) < target_ - position_ || grow(size);
    }
    bool grow(unsigned long size);
    void append(std::string_view text);
    char* cursor() const { return text_.get() + position_; }
    void setCursor(const char* at) { position_ = static_cast<int>(at - text_.get()); }

    std::unique_ptr<char[]> text_;
    int capacity_;
    int length_ = 0;
    int position_ = 0;
    int last_ = -1;
    int target_;
    bool validChunk_ = false;
    bool decimalPoint_ = true; // numbers are written with "." in the current locale
};

// SPDX-License-Identifier: MIT

#include "Base/IO/formats/ioPacketFileAsciiBufferImpl.h"

#include <langinfo.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "Base/IO/formats/ioDecimalTextImpl.h"
#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioPacketType.h"
#include "Base/IO/ioReadContext.h"
#include "Base/IO/ioWriteContext.h"

namespace {

constexpr int initialCapacity = 50000;
constexpr int longestInteger = 20; // of 64 bits

constexpr std::string_view chunkStart = "\n  [ ";
constexpr std::string_view chunkEnd = "] ";
constexpr std::string_view subPacketStart = "\n  < ";
constexpr std::string_view subPacketEnd = "> ";
constexpr std::string_view packetEnd = "}\n";

/// The bytes that have a meaning of their own in a packet.
constexpr auto structural = [] {
    std::array<bool, 256> table{};
    for (const char byte : {'"', '\\', '[', ']', '{', '}', '<', '>'})
        table[static_cast<unsigned char>(byte)] = true;
    return table;
}();

/// Writes a byte of a string to `at` and returns the end of it, at most two bytes on.
char* putEscaped(char* at, char byte) {
    *at = '\\';
    at += structural[static_cast<unsigned char>(byte)];
    *at = byte;
    return at + 1;
}

/// Reads one to 18 digits, which cannot overflow, and returns their end; null where there are none,
/// or more: those, and everything else, are the C library's.
const char* readNatural(const char* at, std::uint64_t& value) {
    value = 0;
    const char* const end = ioDecimalText::readDigits(at, value);
    return end != at && end - at <= 18 ? end : nullptr;
}

/// Whether numbers are written with "." now. Then the fast conversions, which know no locale, give
/// what printf and strtod give.
bool localeHasPoint() {
    const char* point = nl_langinfo(RADIXCHAR);
    return point[0] == '.' && point[1] == 0;
}

/// Whether from_chars() reads the terminated text as strtod() does: no white space, no plus sign,
/// nothing hexadecimal, no "inf" or "nan".
bool isPlainReal(const char* text) {
    text += *text == '-';
    if ((*text < '0' || *text > '9') && *text != '.')
        return false;
    return *text != '0' || (text[1] != 'x' && text[1] != 'X');
}

/// The string that was read last on this thread. Not inlined: GCC would look up the thread's copy
/// again, by a call, at each use.
[[gnu::noinline]] std::string& quotedText() {
    static thread_local std::string text;
    return text;
}

/// What a block of the file holds of the packet that is being read.
struct PacketPart {
    std::size_t size = 0; // with the right brace
    bool closed = false;  // by the right brace
    bool escape = false;  // its last byte takes the byte behind it as it is
};

PacketPart packetPart(std::string_view block) {
    std::size_t brace = block.find('}');
    std::size_t at = 0;
    for (;;) {
        const std::size_t end = std::min(brace, block.size());
        const std::size_t backslash = block.substr(0, end).find('\\', at);
        if (backslash == std::string_view::npos)
            return {.size = std::min(end + 1, block.size()), .closed = end < block.size()};
        at = backslash + 2;
        if (at > block.size())
            return {.size = block.size(), .escape = true};
        if (brace < at)
            brace = block.find('}', at);
    }
}

} // namespace

ioPacketFileAsciiBuffer::ioPacketFileAsciiBuffer()
    : text_(new char[initialCapacity]), capacity_(initialCapacity), target_(initialCapacity) {}

ioPacketFileAsciiBuffer::~ioPacketFileAsciiBuffer() = default;

// Writing

void ioPacketFileAsciiBuffer::writePacketStart(ioWriteContext*, int hasReference,
                                               ioPacketType* type) {
    position_ = 0;
    decimalPoint_ = localeHasPoint();
    append("{ ");
    outputInt(type ? type->getId() : -1);
    outputChar(' ');
    outputInt(hasReference);
    outputChar(' ');
}

void ioPacketFileAsciiBuffer::writePacketEnd(ioWriteContext* context,
                                             ioBufferedStreamOutput& stream) {
    append(packetEnd);
    if (isValid())
        stream.writeData(text_.get(), position_);
    else if (!getType())
        context->setStatus(ioError);
}

void ioPacketFileAsciiBuffer::writeChunkStart(ioWriteContext*) {
    append(chunkStart);
}

void ioPacketFileAsciiBuffer::writeChunkEnd(ioWriteContext*) {
    append(chunkEnd);
}

void ioPacketFileAsciiBuffer::writeSubPacketStart(ioWriteContext*) {
    append(subPacketStart);
}

void ioPacketFileAsciiBuffer::writeSubPacketEnd(ioWriteContext*) {
    append(subPacketEnd);
}

void ioPacketFileAsciiBuffer::outputCharArray(const char* bytes, int size) {
    if (size > 0)
        append({bytes, static_cast<std::size_t>(size)});
}

void ioPacketFileAsciiBuffer::outputString(const char* text) {
    append(text);
}

void ioPacketFileAsciiBuffer::outputInt(int value) {
    outputLong(value);
}

void ioPacketFileAsciiBuffer::outputUInt(unsigned int value) {
    outputULong(value);
}

void ioPacketFileAsciiBuffer::outputLong(long value) {
    if (makeRoom(longestInteger))
        setCursor(std::to_chars(cursor(), cursor() + longestInteger, value).ptr);
}

void ioPacketFileAsciiBuffer::outputULong(unsigned long value) {
    if (makeRoom(longestInteger))
        setCursor(std::to_chars(cursor(), cursor() + longestInteger, value).ptr);
}

void ioPacketFileAsciiBuffer::outputReal(double value, int digits) {
    if (!makeRoom(ioDecimalText::room))
        return;
    if (decimalPoint_ && std::isfinite(value))
        setCursor(ioDecimalText::write(cursor(), value, digits));
    else
        position_ += std::snprintf(cursor(), ioDecimalText::room, "%.*g", digits, value);
}

void ioPacketFileAsciiBuffer::outputEscaped(char byte) {
    if (makeRoom(2))
        setCursor(putEscaped(cursor(), byte));
}

void ioPacketFileAsciiBuffer::outputQuoted(const char* text) {
    constexpr unsigned long piece = 4096;
    outputChar('"');
    const std::string_view whole = text;
    for (std::size_t start = 0; start < whole.size(); start += piece) {
        const std::string_view part = whole.substr(start, piece);
        if (!makeRoom(2 * part.size()))
            return;
        char* at = cursor();
        for (const char byte : part)
            at = putEscaped(at, byte);
        setCursor(at);
    }
    outputChar('"');
}

// Reading

int ioPacketFileAsciiBuffer::readPacketStart(ioReadContext* context,
                                             ioBufferedStreamInput& stream) {
    while (findPacket(stream) < 0) { // for ever at the end of a stream: see readFile()
    }
    return readFoundPacket(context, stream);
}

std::int64_t ioPacketFileAsciiBuffer::findPacket(ioBufferedStreamInput& stream) {
    for (std::int64_t passed = 0;; ++passed) {
        const std::string_view block = stream.buffered();
        const std::size_t brace = block.find('{');
        const bool found = brace != std::string_view::npos;
        stream.skip(static_cast<int>(found ? brace + 1 : block.size()));
        passed += static_cast<std::int64_t>(found ? brace : block.size());
        if (found || stream.readChar() == '{') // the next byte fetches another block
            return passed;
        if (stream.getStatus() != streamOK)
            return -1;
    }
}

int ioPacketFileAsciiBuffer::readFoundPacket(ioReadContext* context,
                                             ioBufferedStreamInput& stream) {
    setType(nullptr);
    if (!readText(stream) || stream.getStatus() != streamOK)
        return 0;
    decimalPoint_ = localeHasPoint();
    while (*cursor() == ' ' || *cursor() == '\n')
        ++position_;
    const int id = static_cast<int>(readLong());
    const int hasReference = static_cast<int>(readLong());
    setType(context->lookupType(id));
    return hasReference;
}

/// Takes the packet's text up to its right brace, with a terminating 0 behind it. False if it does
/// not fit into memory.
bool ioPacketFileAsciiBuffer::readText(ioBufferedStreamInput& stream) {
    position_ = 0;
    validChunk_ = false;
    for (bool closed = false; !closed;) {
        const std::string_view block = stream.buffered();
        const PacketPart part = packetPart(block);
        append(block.substr(0, part.size));
        stream.skip(static_cast<int>(part.size));
        closed = part.closed;
        if (!closed) { // the block is used up: the next byte fetches another
            const char byte = static_cast<char>(stream.readChar());
            outputChar(byte);
            closed = !part.escape && byte == '}';
            if (!part.escape && byte == '\\')
                outputChar(static_cast<char>(stream.readChar()));
        }
        if (!isValid() || stream.getStatus() != streamOK)
            break;
    }
    outputChar(0);
    length_ = position_;
    last_ = length_ - 2;
    position_ = 0;
    return isValid();
}

void ioPacketFileAsciiBuffer::readPacketEnd(ioReadContext*) {
    position_ = last_ + 1;
}

void ioPacketFileAsciiBuffer::readChunkStart(ioReadContext*) {
    validChunk_ = false;
    if (!startsWith(chunkStart))
        return;
    position_ += static_cast<int>(chunkStart.size());
    validChunk_ = !startsWith("]");
}

bool ioPacketFileAsciiBuffer::isValidChunk() {
    return validChunk_;
}

/// Goes behind the chunk's closing bracket, whether or not a chunk was met: a reader that has lost
/// its place finds it again. The end of the sub-packet that holds the chunk stops the search.
void ioPacketFileAsciiBuffer::readChunkEnd(ioReadContext*) {
    validChunk_ = false;
    int depth = 0; // of sub-packets
    while (position_ < last_) {
        switch (*cursor()) {
        case '\\':
            position_ += 2;
            break;
        case '<':
            ++depth;
            ++position_;
            break;
        case '>':
            if (depth == 0)
                return;
            --depth;
            ++position_;
            break;
        case ']':
            position_ += 2; // with the blank behind it
            if (depth == 0)
                return;
            break;
        default:
            ++position_;
        }
    }
}

void ioPacketFileAsciiBuffer::readSubPacketStart(ioReadContext*) {
    moveBehind(static_cast<int>(subPacketStart.size()));
}

/// Goes behind the sub-packet's closing bracket.
void ioPacketFileAsciiBuffer::readSubPacketEnd(ioReadContext*) {
    int subPackets = 0;
    int chunks = 0;
    for (bool found = false; !found && position_ < last_;) {
        switch (*cursor()) {
        case '\\':
            ++position_;
            break;
        case '<':
            ++subPackets;
            break;
        case '[':
            ++chunks;
            break;
        case ']':
            chunks = std::max(chunks - 1, 0);
            break;
        case '>':
            found = subPackets == 0 && chunks == 0;
            subPackets = std::max(subPackets - 1, 0);
            break;
        default:
            break;
        }
        position_ += !found;
    }
    moveBehind(static_cast<int>(subPacketEnd.size()));
}

// The packet's right brace and the 0 behind it end whatever is parsed in place.

long ioPacketFileAsciiBuffer::readLong() {
    if (position_ > last_)
        return 0;
    const char* text = cursor();
    std::uint64_t digits;
    if (const char* end = readNatural(text, digits)) {
        advanceFrom(end);
        return static_cast<long>(digits);
    }
    if (*text == '-')
        if (const char* end = readNatural(text + 1, digits)) {
            advanceFrom(end);
            return -static_cast<long>(digits);
        }
    advanceFrom(text);
    return std::strtol(text, nullptr, 10);
}

unsigned long ioPacketFileAsciiBuffer::readULong() {
    if (position_ > last_)
        return 0;
    const char* text = cursor();
    std::uint64_t digits;
    if (const char* end = readNatural(text, digits)) {
        advanceFrom(end);
        return digits;
    }
    advanceFrom(text);
    return std::strtoul(text, nullptr, 10);
}

double ioPacketFileAsciiBuffer::readReal() {
    if (position_ > last_)
        return 0;
    if (decimalPoint_) {
        double value;
        if (const char* end = ioDecimalText::read(cursor(), value)) {
            setCursor(end + 1);
            return value;
        }
    }
    return readOtherReal();
}

/// What is not in the common form, or follows the locale.
double ioPacketFileAsciiBuffer::readOtherReal() {
    const char* text = cursor();
    if (decimalPoint_ && isPlainReal(text)) {
        double value;
        const auto [end, error] = std::from_chars(text, text_.get() + length_, value);
        if (error == std::errc()) {
            advanceFrom(end);
            return value;
        }
    }
    advanceFrom(text);
    return std::strtod(text, nullptr);
}

void ioPacketFileAsciiBuffer::advanceToBlank(const char* at) {
    setCursor(at);
    const std::string_view text = rest();
    moveBehind(static_cast<int>(std::min(text.find(' '), text.size()) + 1));
}

char ioPacketFileAsciiBuffer::readEscaped() {
    std::string_view text = rest();
    if (text.starts_with('\\') && text.size() > 1) {
        text.remove_prefix(1);
        ++position_;
    }
    if (text.empty())
        return 0;
    ++position_;
    return text[0];
}

const char* ioPacketFileAsciiBuffer::readQuoted() {
    std::string& result = quotedText();
    result.clear();
    const char* at = cursor();
    const char* const end = text_.get() + last_ + 1;
    setCursor(end); // unless the string is complete
    while (at < end && *at != '"')
        ++at;
    while (++at < end) {
        const char* const start = at;
        while (at < end && *at != '"' && *at != '\\')
            ++at;
        result.append(start, static_cast<std::size_t>(at - start));
        if (at < end && *at == '"') {
            setCursor(at);
            moveBehind(2); // the quote and the blank
            return result.c_str();
        }
        if (++at < end) // behind a backslash
            result += *at;
    }
    return nullptr;
}

// The array

std::string_view ioPacketFileAsciiBuffer::rest() const {
    if (position_ > last_)
        return {};
    return {text_.get() + position_, static_cast<std::size_t>(last_ - position_) + 1};
}

/// Moves on by `size` bytes, but no further than just behind the packet.
void ioPacketFileAsciiBuffer::moveBehind(int size) {
    if (position_ > last_ || size > last_ - position_)
        position_ = last_ + 1;
    else
        position_ += size;
}

void ioPacketFileAsciiBuffer::append(std::string_view text) {
    if (text.empty() || !makeRoom(text.size()))
        return;
    std::memcpy(cursor(), text.data(), text.size());
    position_ += static_cast<int>(text.size());
}

bool ioPacketFileAsciiBuffer::resize(int size) {
    int grown = target_;
    while (grown < size)
        grown = grown > INT_MAX / 2 ? INT_MAX : 2 * grown;
    if (grown > capacity_) {
        std::unique_ptr<char[]> text(new (std::nothrow) char[static_cast<std::size_t>(grown)]);
        if (!text)
            return false;
        std::memcpy(text.get(), text_.get(), static_cast<std::size_t>(position_));
        text_ = std::move(text);
        capacity_ = grown;
    }
    target_ = grown;
    return true;
}

/// Makes room for `size` bytes at the cursor and one to spare.
bool ioPacketFileAsciiBuffer::grow(unsigned long size) {
    if (!isValid() && !getType())
        return false; // has failed to grow before
    const auto limit = static_cast<unsigned long>(INT_MAX - position_);
    if (size < limit && resize(position_ + static_cast<int>(size) + 1))
        return true;
    setInvalid();
    setType(nullptr);
    return false;
}

// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferChecksum.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace {

constexpr int blockSize = 4096;
constexpr int firstRoom = 65536; ///< For a frame that is larger than the reader's block.

} // namespace

ioBufferChecksum::ioBufferChecksum(bool reading) : ioBuffer(reading, blockSize) {}

ioBufferChecksum::~ioBufferChecksum() {
    delete[] readBuffer_;
}

void ioBufferChecksum::unchainHook() {
    if (!reading_)
        flush();
}

int ioBufferChecksum::getType() {
    return 2;
}

void ioBufferChecksum::close() {
    next_->close();
    promoteNextBufferStatus(false);
}

int ioBufferChecksum::read(char* destination, int n) {
    if (readCount_ > readPosition_) {
        const int taken = std::min(n, readCount_ - readPosition_);
        std::memcpy(destination, readBuffer_ + readPosition_, static_cast<unsigned>(taken));
        readPosition_ += taken;
        return taken;
    }
    const int size = readBufferInt();
    const int complement = readBufferInt();
    const unsigned short checksum = readBufferChecksum();
    bool valid = (size ^ complement) == -1 && size > 0;
    int delivered = 0;
    if (valid && next_->good()) {
        if (n < size) {
            readLargeFrame(size);
            if (checksum == sum_ && readCount_ == size)
                return read(destination, n);
            valid = false;
        } else {
            delivered = next_->readData(destination, size);
            valid = checksum16(reinterpret_cast<const unsigned char*>(destination), delivered) ==
                        checksum &&
                    delivered == size;
        }
    }
    // A file that ends where no byte is delivered is an ordinary end, not damage.
    if (delivered == 0 && !next_->good()) {
        promoteNextBufferStatus(true);
        return 0;
    }
    if (!valid)
        setStatus(bufferChecksumError);
    return delivered;
}

void ioBufferChecksum::write(const char* source, int n) {
    checksum16(reinterpret_cast<const unsigned char*>(source), n);
    writeBufferInt(n);
    writeBufferInt(~n);
    writeBufferChecksum(sum_);
    next_->writeData(source, n);
    promoteNextBufferStatus(true);
}

/// Adds the bytes to the sum, an end-around-carry sum of native 16-bit words, and returns it. A
/// last odd byte is added as it is. Neither the order of additions nor the time of the carries
/// matters: the sum stays 0 only for zeros, and any other sum is the one number from 1 to 65535
/// with its remainder modulo 65535. So words are added in pairs, in 64 bits, and folded once.
unsigned short ioBufferChecksum::checksum16(const unsigned char* data, int n) {
    const int pairs = n / 4;
    std::uint64_t sum = sum_;
    for (int i = 0; i < pairs; ++i) {
        std::uint32_t pair;
        std::memcpy(&pair, data + 4 * i, sizeof pair);
        sum += pair;
    }
    const unsigned char* const rest = data + 4 * pairs;
    if (n & 2) {
        std::uint16_t word;
        std::memcpy(&word, rest, sizeof word);
        sum += word;
    }
    if (n & 1)
        sum += data[n - 1];
    while (sum > 0xFFFF)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return sum_ = static_cast<unsigned short>(sum);
}

/// Most significant byte first.
void ioBufferChecksum::writeBufferInt(int value) {
    const char bytes[] = {static_cast<char>(value >> 24), static_cast<char>(value >> 16),
                          static_cast<char>(value >> 8), static_cast<char>(value)};
    next_->writeData(bytes, sizeof bytes);
}

/// A missing byte reads as 0.
int ioBufferChecksum::readBufferInt() {
    unsigned char bytes[4] = {};
    next_->readData(reinterpret_cast<char*>(bytes), sizeof bytes);
    unsigned value = 0;
    for (const unsigned byte : bytes)
        value = value << 8 | byte;
    return static_cast<int>(value);
}

/// In the byte order of the machine, like the words that are summed.
void ioBufferChecksum::writeBufferChecksum(unsigned short checksum) {
    char bytes[sizeof checksum];
    std::memcpy(bytes, &checksum, sizeof checksum);
    next_->writeData(bytes, sizeof bytes);
}

unsigned short ioBufferChecksum::readBufferChecksum() {
    char bytes[2] = {};
    next_->readData(bytes, sizeof bytes);
    unsigned short checksum;
    std::memcpy(&checksum, bytes, sizeof checksum);
    return checksum;
}

/// Makes room for `n` bytes, and keeps what was read of them.
void ioBufferChecksum::growReadBuffer(int n) {
    char* const grown = new char[static_cast<unsigned>(n)];
    if (readCount_ > 0)
        std::memcpy(grown, readBuffer_, static_cast<unsigned>(readCount_));
    delete[] std::exchange(readBuffer_, grown);
    readCapacity_ = n;
}

/// Reads a frame that is larger than the caller's memory into the link's own, and adds it to the
/// sum. The size may be damaged, so the buffer grows as the bytes arrive.
void ioBufferChecksum::readLargeFrame(int size) {
    readPosition_ = 0;
    readCount_ = 0;
    while (readCount_ < size && next_->good()) {
        if (readCount_ == readCapacity_)
            growReadBuffer(static_cast<int>(
                std::min<long>(size, std::max<long>(firstRoom, 2L * readCapacity_))));
        const int wanted = std::min(size, readCapacity_) - readCount_;
        readCount_ += next_->readData(readBuffer_ + readCount_, wanted);
    }
    checksum16(reinterpret_cast<const unsigned char*>(readBuffer_), readCount_);
}

// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferEncrypt.h"

#include <algorithm>

#include "Base/IO/filters/ioBlockCipherImpl.h"

using namespace ioBlockCipher;

namespace {

constexpr int blockSize = 4096;
constexpr int frameSize = 240;
constexpr char version = 1;

// --- The key, and the constants of its expansion -----------------------------------------------
//
// Part of the format: files written with others cannot be read. The constants are the fractional
// bits of the square roots of 2 and 3, in place of those that are usual for the cipher.

constexpr Constants constants = {0x6A09E667, 0xBB67AE85};

/// Each byte is combined with the one before it, so that the library does not contain the key in
/// the form in which it is used.
constexpr unsigned char scrambledKey[keyBytes] = {
    0xF4, 0x19, 0x89, 0xEA, 0x1C, 0x29, 0x01, 0x6C, 0x76, 0xD6, 0xA0, 0x98, 0x26, 0xA1, 0x84, 0x89,
    0x6A, 0x1C, 0xEA, 0xC3, 0x7B, 0x89, 0x7E, 0x52, 0xCE, 0x23, 0x7D, 0x15, 0xAF, 0xC3, 0x2D, 0x03,
};

void unscrambleKey(unsigned char (&key)[keyBytes]) {
    unsigned char before = 0x5A;
    for (unsigned i = 0; i < keyBytes; ++i) {
        key[i] = static_cast<unsigned char>(scrambledKey[i] ^ before ^ i);
        before = scrambledKey[i];
    }
}

/// Reverses the bytes of each word, between the two byte orders.
void swapWords(char* data, unsigned n) {
    for (unsigned i = 0; i < n; i += 4)
        std::reverse(data + i, data + i + 4);
}

} // namespace

ioBufferEncrypt::ioBufferEncrypt(bool reading) : ioBuffer(reading, blockSize) {}

ioBufferEncrypt::~ioBufferEncrypt() = default;

void ioBufferEncrypt::unchainHook() {
    if (!reading_)
        flush();
}

int ioBufferEncrypt::getType() {
    return 4;
}

void ioBufferEncrypt::close() {
    next_->close();
    promoteNextBufferStatus(false);
}

int ioBufferEncrypt::read(char* destination, int n) {
    if (!started_)
        initEncrypt();
    if (!good())
        return 0;
    if (framePosition_ == frameLength_)
        readFrame();
    const int taken = std::min(n, frameLength_ - framePosition_);
    std::memcpy(destination, frame_ + framePosition_, static_cast<unsigned>(taken));
    framePosition_ += taken;
    return taken;
}

void ioBufferEncrypt::write(const char* source, int n) {
    if (!started_)
        initEncrypt();
    char* data = const_cast<char*>(source); // the link's own block
    while (n > 0 && good()) {
        const int length = std::min(n, frameSize);
        encrypt(data, length);
        const char lengthByte = static_cast<char>(length);
        next_->writeData(&lengthByte, 1);
        next_->writeData(data, length);
        promoteNextBufferStatus(true);
        data += length;
        n -= length;
    }
}

void ioBufferEncrypt::initEncrypt() {
    started_ = true;
    unsigned char key[keyBytes];
    unscrambleKey(key);
    expandKey(schedule_, key, constants);
    if (!reading_) {
        next_->writeData(&version, 1);
        return;
    }
    char found = version;
    next_->readData(&found, 1);
    if (static_cast<unsigned char>(found) > version)
        setStatus(bufferIOError);
    else
        swap_ = found == 0;
}

/// Enciphers the whole blocks of a frame. The bytes behind them are stored as they are.
void ioBufferEncrypt::encrypt(char* data, int n) const {
    encipher(data, static_cast<unsigned>(n) / blockBytes, schedule_);
}

void ioBufferEncrypt::decrypt(char* data, int n) const {
    const unsigned blocks = static_cast<unsigned>(n) / blockBytes;
    if (swap_)
        swapWords(data, blocks * blockBytes);
    decipher(data, blocks, schedule_);
    if (swap_)
        swapWords(data, blocks * blockBytes);
}

/// Fetches the next frame; on failure leaves an empty one.
void ioBufferEncrypt::readFrame() {
    framePosition_ = frameLength_ = 0;
    unsigned char length = 0;
    const int got = next_->readData(reinterpret_cast<char*>(&length), 1);
    if (got == 0 || length == 0 || !next_->good()) {
        promoteNextBufferStatus(true);
        return;
    }
    if (length > frameSize || next_->readData(frame_, length) != length) {
        setStatus(bufferIOError);
        return;
    }
    decrypt(frame_, length);
    promoteNextBufferStatus(false);
    frameLength_ = length;
}

// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferIOStream.h"

#include "Base/IO/chain/ioStreamCallImpl.h"

namespace {

constexpr int blockSize = 4096;

} // namespace

ioBufferIOStream::ioBufferIOStream(bool reading) : ioBuffer(reading, blockSize) {}

ioBufferIOStream::~ioBufferIOStream() = default;

int ioBufferIOStream::getType() {
    return 5;
}

void ioBufferIOStream::close() {
    stream_ = nullptr;
}

int ioBufferIOStream::read(char* destination, int n) {
    if (!stream_) {
        setStatus(bufferIOError);
        return 0;
    }
    const int got = ioReadFrom(*stream_, destination, n, lastError_);
    // Streams have no common code for their end: any failure without a byte is one.
    if (lastError_.code() != 0 && got == 0)
        setStatus(bufferEOF);
    else if (got < 0)
        setStatus(bufferIOError);
    return got;
}

void ioBufferIOStream::write(const char* source, int n) {
    if (!stream_) {
        setStatus(bufferIOError);
        return;
    }
    ioWriteTo(*stream_, source, n, lastError_);
    if (lastError_.code() != 0)
        setStatus(bufferIOError);
}

void ioBufferIOStream::open(zeOS::IOStream* stream) {
    stream_ = stream;
}

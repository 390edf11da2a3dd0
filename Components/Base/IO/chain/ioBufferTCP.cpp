// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferTCP.h"

#include "Base/IO/chain/ioStreamCallImpl.h"
#include "Base/TCP/zeTCPSocket.h"

namespace {

constexpr int blockSize = 4096;

} // namespace

ioBufferTCP::ioBufferTCP(bool reading) : ioBuffer(reading, blockSize) {}

ioBufferTCP::~ioBufferTCP() = default;

int ioBufferTCP::getType() {
    return 3;
}

void ioBufferTCP::close() {
    socket_ = nullptr;
}

int ioBufferTCP::read(char* destination, int n) {
    if (!socket_) {
        setStatus(bufferIOError);
        return 0;
    }
    const int got = ioReadFrom(*socket_, destination, n, lastError_);
    // A connection may have broken: its end is never an orderly end of a file.
    if (got < 0 || (lastError_.code() != 0 && got == 0))
        setStatus(bufferIOError);
    return got;
}

void ioBufferTCP::write(const char* source, int n) {
    if (!socket_) {
        setStatus(bufferIOError);
        return;
    }
    ioWriteTo(*socket_, source, n, lastError_);
    if (lastError_.code() != 0)
        setStatus(bufferIOError);
}

void ioBufferTCP::open(zeTCP::Socket* socket) {
    socket_ = socket;
    if (!socket_)
        setStatus(bufferIOError);
}

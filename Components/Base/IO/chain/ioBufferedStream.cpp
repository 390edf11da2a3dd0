// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferedStream.h"

#include <sys/stat.h>

#include <utility>

#include "Base/IO/ioBufferChecksum.h"
#include "Base/IO/ioBufferCompress.h"
#include "Base/IO/ioBufferEncrypt.h"
#include "Base/Strings/zeStringIString.h"

ioBufferedStream::~ioBufferedStream() {
    delete top_;
}

void ioBufferedStream::close() {
    if (!top_)
        return;
    top_->close();
    promoteBufferStatus();
    delete std::exchange(top_, nullptr);
}

void ioBufferedStream::addBufferToChain(ioBuffer* link) {
    link->chain(top_);
    top_ = link;
}

void ioBufferedStream::popBufferChain() {
    if (!top_)
        return;
    ioBuffer* const below = top_->unchain();
    delete std::exchange(top_, below);
}

void ioBufferedStream::compress(bool on) {
    setFilter(on ? new ioBufferCompress(input_) : nullptr);
    // The end of a compressed section is the normal way out of it.
    if (!on && status_ == streamCompressEnd)
        resetStatus();
}

void ioBufferedStream::checksum(bool on) {
    setFilter(on ? new ioBufferChecksum(input_) : nullptr);
}

void ioBufferedStream::encrypt(bool on) {
    setFilter(on ? new ioBufferEncrypt(input_) : nullptr);
}

void ioBufferedStream::associateProgressFunction(void (*progress)(int)) {
    if (top_)
        top_->associateProgressFunction(progress);
}

long ioBufferedStream::tell() {
    if (!top_)
        return 0;
    top_->flush();
    return top_->tell();
}

bool ioBufferedStream::seek(long position) {
    if (!top_)
        return false;
    top_->flush();
    const bool reached = top_->seek(position);
    promoteBufferStatus();
    return reached;
}

long ioBufferedStream::fileSize(const zeString::IString& path) {
    // An empty path names nothing, and stat() says so.
    struct stat status;
    return stat(path.asUTF8(), &status) == 0 ? static_cast<long>(status.st_size) : -1;
}

void ioBufferedStream::startChain(ioBuffer* sink) {
    delete std::exchange(top_, sink);
    status_ = streamOK;
}

void ioBufferedStream::dropChainOnFailure() {
    promoteBufferStatus();
    if (status_ != streamOK)
        delete std::exchange(top_, nullptr);
}

void ioBufferedStream::swapChain(ioBufferedStream& other) noexcept {
    std::swap(status_, other.status_);
    std::swap(top_, other.top_);
}

/// Pushes a filter, or pops the top link if it is null. On a closed stream there is nothing that a
/// filter could work on.
void ioBufferedStream::setFilter(ioBuffer* filter) {
    if (!filter)
        popBufferChain();
    else if (top_)
        addBufferToChain(filter);
    else
        delete filter;
}

void ioBufferedStream::promoteFailure() {
    switch (top_->getStatus()) {
    case ioBuffer::bufferOK:
        break;
    case ioBuffer::bufferOpenError:
        status_ = streamOpenError;
        break;
    case ioBuffer::bufferEOF:
        status_ = streamEOF;
        break;
    case ioBuffer::bufferDiskFull:
        status_ = streamDiskFull;
        break;
    case ioBuffer::bufferChecksumError:
        status_ = streamChecksumError;
        break;
    case ioBuffer::bufferCompressEnd:
        status_ = streamCompressEnd;
        break;
    case ioBuffer::bufferIOError:
        status_ = streamIOError;
        break;
    }
}

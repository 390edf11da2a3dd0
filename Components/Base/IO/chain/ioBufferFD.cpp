// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferFD.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace {

constexpr int blockSize = 262144;

} // namespace

ioBufferFD::ioBufferFD(bool reading) : ioBuffer(reading, blockSize) {
    movesBlocksDirectly_ = true;
}

ioBufferFD::~ioBufferFD() = default;

bool ioBufferFD::seek(long position) {
    const off_t reached = position < 0 ? lseek(fd_, 0, SEEK_END) : lseek(fd_, position, SEEK_SET);
    return reached != -1;
}

long ioBufferFD::tell() {
    return lseek(fd_, 0, SEEK_CUR);
}

int ioBufferFD::getType() {
    return 0;
}

void ioBufferFD::close() {
    if (fd_ < 0)
        return;
    if (owned_ && zeUtil::retried([this] { return ::close(fd_); }) == -1)
        setStatus(bufferIOError);
    fd_ = -1;
}

int ioBufferFD::read(char* destination, int n) {
    if (fd_ < 0)
        setStatus(bufferIOError);
    while (good()) {
        errno = 0;
        const ssize_t got = ::read(fd_, destination, static_cast<size_t>(n));
        if (got == 0)
            setStatus(bufferEOF);
        if (got != -1)
            return static_cast<int>(got);
        if (errno != EINTR && errno != EAGAIN)
            setStatus(bufferIOError);
    }
    return -1;
}

void ioBufferFD::write(const char* source, int n) {
    if (fd_ < 0)
        setStatus(bufferIOError);
    while (n > 0 && good()) {
        errno = 0;
        const ssize_t done = ::write(fd_, source, static_cast<size_t>(n));
        if (done != -1) {
            source += done;
            n -= static_cast<int>(done);
        } else if (errno == ENOSPC) {
            setStatus(bufferDiskFull);
        } else if (errno != EINTR && errno != EAGAIN) {
            setStatus(bufferIOError);
        }
    }
}

void ioBufferFD::open(const zeString::IString& path) {
    const int forWriting = O_WRONLY | O_CREAT | (truncate_ ? O_TRUNC : 0);
    const int flags = O_CLOEXEC | (reading_ ? O_RDONLY : forWriting);
    errno = 0;
    fd_ = zeUtil::retried([&] { return ::open(path.asUTF8(), flags, 0666); });
    if (fd_ == -1)
        setStatus(bufferOpenError);
    else
        owned_ = true;
}

void ioBufferFD::useFD(int fd) {
    if (fd < 0) {
        setStatus(bufferOpenError);
        return;
    }
    fd_ = fd;
    owned_ = true;
}

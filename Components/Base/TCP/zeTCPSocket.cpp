// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPSocket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <utility>

#include "Base/OS/zeOSError.h"
#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/TCP/zeTCPDescriptor.h"
#include "Base/TCP/zeTCPDescriptorSetImpl.h"
#include "Base/TCP/zeTCPSocketImpl.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeTCP {

using zeString::CString;
using zeString::IString;

namespace {

constexpr unsigned maxTextSize = 65535; // what the two bytes before a text can say

/// The error of a call that just failed. `format` takes the system's text by "%S".
zeUtil::Error failure(const char* format) {
    return {1, format, zeOS::getLastError().asWChar()};
}

zeUtil::Error noSocket() {
    return {2, "No socket has been created"};
}

/// Throws `error`, or passes it on.
zeUtil::Error reported(zeUtil::Error error, bool throwMode) {
    if (throwMode && error.code() != 0)
        throw zeUtil::Error(error);
    return error;
}

/// The address that `call` (getsockname, getpeername) tells of `fd`, stored in `cache`.
AddressResult addressOf(int fd, int (*call)(int, sockaddr*, socklen_t*),
                        std::unique_ptr<Address>& cache) {
    sockaddr_in address{}; // of IPv6 the port arrives whole, and the host as zeroes
    socklen_t size = sizeof address;
    if (call(fd, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return {nullptr, failure("%S")};
    char host[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &address.sin_addr, host, sizeof host);
    cache = std::make_unique<Address>(IString(host), ntohs(address.sin_port));
    return {cache.get(), {}};
}

} // namespace

Socket::Socket() : impl_(new SocketImpl) {
    initialize();
}

Socket::~Socket() {
    try {
        close(3);
    } catch (...) { // no memory for an error that nobody would see; the descriptor is closed
    }
    delete impl_;
    impl_ = nullptr;
}

zeUtil::Error Socket::read(void* buffer, unsigned long count, unsigned long* done) {
    const auto wanted = static_cast<std::uint32_t>(count);
    std::uint32_t remaining = wanted;
    auto* position = static_cast<char*>(buffer);
    zeUtil::Error error;
    do { // also for no bytes at all: recv then tells whether the peer has closed
        const ssize_t n =
            zeUtil::retried([&] { return ::recv(impl_->fd, position, remaining, 0); });
        if (n <= 0) {
            error = n < 0 ? failure("%S") : zeUtil::Error(4, "connection closed");
            break;
        }
        position += n;
        remaining -= static_cast<std::uint32_t>(n);
    } while (remaining > 0);
    if (done)
        *done = wanted - remaining;
    return reported(std::move(error), impl_->throwMode);
}

zeUtil::Error Socket::write(const void* buffer, unsigned long count, unsigned long* done) {
    const auto wanted = static_cast<std::uint32_t>(count);
    std::uint32_t remaining = wanted;
    const auto* position = static_cast<const char*>(buffer);
    zeUtil::Error error;
    do { // without MSG_NOSIGNAL: SIGPIPE is up to the application
        const ssize_t n =
            zeUtil::retried([&] { return ::send(impl_->fd, position, remaining, 0); });
        if (n < 0) {
            error = failure("send() failed: %S");
            break;
        }
        position += n;
        remaining -= static_cast<std::uint32_t>(n);
    } while (remaining > 0);
    if (done)
        *done = wanted - remaining;
    return reported(std::move(error), impl_->throwMode);
}

zeUtil::Error Socket::read(CString& text) {
    unsigned char prefix[2];
    zeUtil::Error error = read(prefix, sizeof prefix, nullptr);
    if (error.code() != 0)
        return error;
    const unsigned size = static_cast<unsigned>(prefix[0]) << 8 | prefix[1];
    const auto buffer = std::make_unique<char[]>(size + 1); // ends in a zero byte
    if (size > 0)
        error = read(buffer.get(), size, nullptr);
    if (error.code() == 0)
        text = buffer.get(); // up to its first zero byte
    return error;
}

zeUtil::Error Socket::write(const CString& text) {
    const unsigned size = text.length();
    if (size > maxTextSize)
        return reported({3, "buffer passed to Socket::write() is too long"}, impl_->throwMode);
    const unsigned char prefix[2] = {static_cast<unsigned char>(size >> 8),
                                     static_cast<unsigned char>(size & 0xFF)};
    // Two writes, each of which a derived class may replace. Nagle's algorithm: see setNoDelay().
    zeUtil::Error error = write(prefix, sizeof prefix, nullptr);
    if (error.code() == 0 && size > 0)
        error = write(text.asChar(), size, nullptr);
    return error;
}

zeUtil::Error Socket::read(IString& text) {
    CString bytes;
    zeUtil::Error error = read(bytes);
    if (error.code() == 0)
        text = IString(bytes, zeString::EncodingUTF8);
    return error;
}

zeUtil::Error Socket::write(const IString& text) {
    const char* const bytes = text.asUTF8();
    return write(CString(bytes, static_cast<int>(text.asUTF8StoreSize() - 1)));
}

zeUtil::Error Socket::write(const char* text) {
    return write(CString(text));
}

bool Socket::connected() const {
    return impl_->connected;
}

int Socket::descriptor() const {
    return impl_->fd;
}

zeUtil::Interval Socket::getTimeout() const {
    return impl_->timeout;
}

void Socket::setTimeout(const zeUtil::Interval& timeout) {
    impl_->timeout = timeout;
}

bool Socket::getThrowMode() const {
    return impl_->throwMode;
}

void Socket::setThrowMode(bool throwing) {
    impl_->throwMode = throwing;
}

bool Socket::dataAvailable() const {
    return impl_->fd != -1 && doSelect(impl_->fd, zeUtil::Interval()) > 0; // zero: no limit
}

zeUtil::Error Socket::wait() {
    if (impl_->fd == -1)
        return {1, zeOS::errorText(EBADF)}; // an empty set would never end
    DescriptorSetImpl set;
    set.add(impl_->fd);
    timeval timeout = asTimeval(impl_->timeout);
    // Not repeated, so that a signal can end the wait of a program that wants to stop.
    if (set.selectOnce(impl_->timeout.dseconds() == 0 ? nullptr : &timeout) == -1 && errno != EINTR)
        return failure("%S");
    return {};
}

AddressResult Socket::localAddress() {
    if (impl_->localAddress)
        return {impl_->localAddress.get(), {}};
    if (impl_->fd == -1)
        return {nullptr, noSocket()};
    return addressOf(impl_->fd, ::getsockname, impl_->localAddress);
}

AddressResult Socket::remoteAddress() {
    if (impl_->remoteAddress)
        return {impl_->remoteAddress.get(), {}};
    if (!impl_->connected)
        return {nullptr, {4, "Socket not connected"}};
    return addressOf(impl_->fd, ::getpeername, impl_->remoteAddress);
}

StreamResult Socket::getCStream() {
    if (impl_->stream || impl_->fd == -1) // the second call gives both the stream and the error
        return {impl_->stream, {2, "socket is not connected"}};
    impl_->stream = ::fdopen(impl_->fd, "rb+");
    if (!impl_->stream)
        return {nullptr, failure("fdopen() failed for socket: %S")};
    return {impl_->stream, {}};
}

zeUtil::Error Socket::getCStream(std::FILE*& stream) {
    const StreamResult result = getCStream();
    if (result.error.code() == 0)
        stream = result.stream;
    return result.error;
}

zeUtil::Error Socket::setNoDelay(bool on) {
    if (impl_->fd == -1)
        return noSocket();
    const int value = on;
    if (::setsockopt(impl_->fd, IPPROTO_TCP, TCP_NODELAY, &value, sizeof value) != 0)
        return failure("setsockopt() failed: %S");
    return {};
}

zeUtil::Error Socket::close(int how) {
    if (impl_->fd == -1)
        return {};
    const unsigned sides = static_cast<unsigned>(how) & SocketImpl::bothSides;
    if ((sides | impl_->closed) == SocketImpl::bothSides)
        return closeBoth();
    const unsigned closing = sides & ~impl_->closed;
    if (closing == SocketImpl::readSide)
        return closeReading();
    if (closing == SocketImpl::writeSide)
        return closeWriting();
    return {};
}

// Whether shutdown failed is reported the wrong way round for the reading side and for both, with
// the errno that was left. Callers rely on no result there, and it is kept for compatibility.

zeUtil::Error Socket::closeReading() {
    impl_->closed |= SocketImpl::readSide;
    if (::shutdown(impl_->fd, SHUT_RD) != 0)
        return {};
    return failure("shutdown(socket,0) failed: %S");
}

zeUtil::Error Socket::closeWriting() {
    impl_->closed |= SocketImpl::writeSide;
    if (impl_->stream)
        std::fflush(impl_->stream);
    if (::shutdown(impl_->fd, SHUT_WR) == 0)
        return {};
    return failure("shutdown(socket,1) failed: %S");
}

zeUtil::Error Socket::closeBoth() {
    if (impl_->stream)
        std::fflush(impl_->stream);
    const int open = impl_->closed == SocketImpl::readSide    ? SHUT_WR
                     : impl_->closed == SocketImpl::writeSide ? SHUT_RD
                                                              : SHUT_RDWR;
    const bool shutDown = ::shutdown(impl_->fd, open) == 0;
    const int reason = errno;

    // All is closed before the first error is made, which takes memory.
    std::FILE* const stream = std::exchange(impl_->stream, nullptr);
    const int fd = std::exchange(impl_->fd, -1);
    impl_->closed = SocketImpl::bothSides;
    const bool closed = (stream ? std::fclose(stream) : ::close(fd)) == 0;
    if (shutDown)
        return {1, zeOS::errorText(reason)};
    if (closed)
        return {};
    return stream ? zeUtil::Error(1, "fclose() on socket stream failed") : failure("%S");
}

} // namespace zeTCP

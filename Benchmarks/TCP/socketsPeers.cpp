// SPDX-License-Identifier: MIT

// The same as sockets.cpp by the system's calls, with two sends for a message as ours has, and by
// asio, which gathers length and payload into one. The limit does that by hand.

#include <sys/uio.h>

#include "TCP/socketsWorkload.h"
#include <boost/asio.hpp>

namespace {

namespace asio = boost::asio;

/// The length of a frame, the higher byte first.
struct Head {
    explicit Head(size_t size = 0)
        : bytes{static_cast<unsigned char>(size >> 8), static_cast<unsigned char>(size)} {}
    size_t size() const { return size_t(bytes[0]) << 8 | bytes[1]; }

    unsigned char bytes[2];
};

class RawEnd {
public:
    using Message = std::string;

    explicit RawEnd(int fd) : fd_(fd) {}
    RawEnd(const RawEnd&) = delete;
    RawEnd& operator=(const RawEnd&) = delete;
    ~RawEnd() { close(fd_); }

    bool send(const std::string& message) {
        const Head head(message.size());
        return sendAll(head.bytes, 2) && sendAll(message.data(), message.size());
    }
    bool receive(std::string& message) {
        Head head;
        if (recv(fd_, head.bytes, 2, MSG_WAITALL) != 2)
            return false;
        message.resize(head.size());
        return recv(fd_, message.data(), message.size(), MSG_WAITALL) == ssize_t(message.size());
    }
    bool sendBytes(const std::string& bytes) { return sendAll(bytes.data(), bytes.size()); }

protected:
    bool sendAll(const void* bytes, size_t n) {
        const char* at = static_cast<const char*>(bytes);
        while (n > 0) {
            const ssize_t sent = ::send(fd_, at, n, MSG_NOSIGNAL);
            if (sent < 0)
                return false;
            at += sent;
            n -= size_t(sent);
        }
        return true;
    }

    int fd_;
};

/// Sends length and payload by one call, which takes all of so small a message.
class GatheringEnd : public RawEnd {
public:
    using RawEnd::RawEnd;

    bool send(const std::string& message) {
        Head head(message.size());
        const iovec parts[] = {{head.bytes, 2},
                               {const_cast<char*>(message.data()), message.size()}};
        return writev(fd_, parts, 2) == ssize_t(message.size() + 2);
    }
};

class AsioEnd {
public:
    using Message = std::string;

    explicit AsioEnd(int fd) : socket_(io_, asio::ip::tcp::v4(), fd) {}

    bool send(const std::string& message) {
        const Head head(message.size());
        const std::array parts = {asio::buffer(head.bytes), asio::buffer(message)};
        boost::system::error_code error;
        asio::write(socket_, parts, error);
        return !error;
    }
    bool receive(std::string& message) {
        Head head;
        boost::system::error_code error;
        asio::read(socket_, asio::buffer(head.bytes), error);
        message.resize(head.size());
        if (!error)
            asio::read(socket_, asio::buffer(message), error);
        return !error;
    }
    bool sendBytes(const std::string& bytes) {
        boost::system::error_code error;
        asio::write(socket_, asio::buffer(bytes), error);
        return !error;
    }

private:
    asio::io_context io_;
    asio::ip::tcp::socket socket_;
};

const bool registered = [] {
    bench::regRoundTrip<RawEnd>("raw");
    bench::regRoundTrip<AsioEnd>("asio");
    bench::regRoundTrip<GatheringEnd>("limit_one_send");
    bench::regBulk<RawEnd>("raw");
    bench::regBulk<AsioEnd>("asio");
    return true;
}();

} // namespace

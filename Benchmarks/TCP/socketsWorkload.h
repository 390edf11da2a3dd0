// SPDX-License-Identifier: MIT

/// @file
/// Connections over the loopback interface, and what is sent over them. A thread of each benchmark
/// is the peer. Times are those of the clock: the work is the system's.

#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "Support/Workload.h"

namespace bench {

/// The two ends of a connection; whoever takes an end closes it. TCP_NODELAY is for dialogues.
struct Connection {
    explicit Connection(bool noDelay) {
        const int listening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        require(bind(listening, generic, size) == 0 && listen(listening, 1) == 0 &&
                    getsockname(listening, generic, &size) == 0,
                "a port");
        here = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        require(connect(here, generic, size) == 0, "a connection");
        there = accept(listening, nullptr, nullptr);
        close(listening);
        const int on = noDelay;
        for (const int fd : {here, there})
            require(setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) == 0, "TCP_NODELAY");
    }

    int here = -1;
    int there = -1;
};

/// Reads from `fd` until its end, closes it, and returns how many bytes there were.
inline size_t drain(int fd) {
    std::vector<char> block(262144);
    size_t all = 0;
    for (ssize_t n = 1; n > 0; all += size_t(n > 0 ? n : 0))
        n = read(fd, block.data(), block.size());
    close(fd);
    return all;
}

/// A message of `size` bytes goes there and comes back. An `End` is made of a descriptor, which it
/// owns; its send() and receive() move one `End::Message` and return whether that worked.
template<class End>
void regRoundTrip(const std::string& peer) {
    for (const size_t size : {16, 1024, 65535})
        reg("roundtrip/" + peer + "/" + std::to_string(size), [size](State& s) {
            const Connection connection(true);
            std::thread server([fd = connection.there] {
                End end(fd);
                for (typename End::Message message; end.receive(message) && end.send(message);) {
                }
            });
            {
                End end(connection.here);
                const typename End::Message message = text(size).c_str();
                typename End::Message answer;
                require(end.send(message) && end.receive(answer) && answer == message, "the echo");
                for (auto _ : s)
                    keep(end.send(message) && end.receive(answer));
                require(answer == message, "the last echo");
            }
            server.join();
        })->UseRealTime();
}

/// 64 MiB in pieces of one size; the time ends when the peer has them all. An `End` writes them by
/// sendBytes(), which returns whether that worked.
template<class End>
void regBulk(const std::string& peer) {
    constexpr size_t all = size_t(64) << 20;
    for (const size_t size : {4096, 65536})
        reg("bulk/" + peer + "/" + std::to_string(size), [size](State& s) {
            const std::string piece = text(size);
            for (auto _ : s) {
                const Connection connection(false);
                size_t received = 0;
                std::thread reader([&] { received = drain(connection.there); });
                bool isSent = true;
                {
                    End end(connection.here);
                    for (size_t sent = 0; sent < all; sent += size)
                        isSent &= end.sendBytes(piece);
                }
                reader.join();
                require(isSent && received == all, "all bytes");
            }
            bytes(s, all);
        })->UseRealTime();
}

} // namespace bench

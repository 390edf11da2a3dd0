// SPDX-License-Identifier: MIT

/// @file
/// Both ends of a connection.

#pragma once

#include <sys/socket.h>

#include <array>
#include <csignal>
#include <memory>
#include <string>

#include "Base/Strings/zeStringIString.h"
#include "Base/TCP/zeTCPAddress.h"
#include "Base/TCP/zeTCPClientSocket.h"
#include "Base/TCP/zeTCPServer.h"
#include "Base/TCP/zeTCPServerSocket.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/Utility/zeUtilInterval.h"

/// As every program with sockets does.
inline const auto signalBefore = std::signal(SIGPIPE, SIG_IGN);

/// "code: message", or nothing for a success.
inline std::string text(const zeUtil::Error& error) {
    return error.code() == 0 ? "" : std::to_string(error.code()) + ": " + error.message();
}

/// Two connected sockets, which need no network. Bare bytes pass at the second.
struct Pair {
    explicit Pair(const std::string& bytes = "") : here(fds[0]), there(fds[1]) { send(bytes); }

    void send(const std::string& bytes) const { ::send(fds[1], bytes.data(), bytes.size(), 0); }
    /// What has arrived.
    std::string received() const {
        std::string bytes(100000, '\0');
        const ssize_t n = ::recv(fds[1], bytes.data(), bytes.size(), MSG_DONTWAIT);
        return bytes.substr(0, n < 0 ? 0 : static_cast<std::size_t>(n));
    }

    const std::array<int, 2> fds = [] {
        std::array<int, 2> made = {-1, -1};
        static_cast<void>(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, made.data()));
        return made;
    }();
    zeTCP::ServerSocket here, there;
};

/// A connection over the loopback interface, by IPv4. `error` says why it is not there.
struct Connection {
    Connection() {
        // The port that IPv6 got may be in use for IPv4.
        for (int tries = 0; tries < 20 && (tries == 0 || error.code() == 3); ++tries) {
            server = std::make_unique<zeTCP::Server>(-1, 5);
            server->setLoopbackOnly();
            error = zeTCP::hasIPv4() ? server->listen() : zeUtil::Error(2, "no IPv4");
        }
        if (error.code() != 0)
            return;
        client = std::make_unique<zeTCP::ClientSocket>(address());
        error = client->connect();
        if (client->descriptor() == -1)
            return;
        zeTCP::AcceptResult result = server->accept("10s");
        accepted.reset(result.socket);
        error = result.error;
    }
    /// Leaves no port in use for a minute.
    ~Connection() {
        if (client)
            breakOff(*client);
    }

    /// Closes `socket` so that its peer meets an error rather than the end.
    static void breakOff(zeTCP::Socket& socket) {
        const linger hard = {1, 0};
        ::setsockopt(socket.descriptor(), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
        socket.close(3);
    }

    zeTCP::Address address() const { return {zeTCP::Address::localhost, server->getPort()}; }
    bool isThere() const { return accepted != nullptr; }

    std::unique_ptr<zeTCP::Server> server;
    std::unique_ptr<zeTCP::ClientSocket> client;
    std::unique_ptr<zeTCP::ServerSocket> accepted;
    zeUtil::Error error;
};

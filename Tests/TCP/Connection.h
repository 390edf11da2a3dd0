// SPDX-License-Identifier: MIT

/// @file
/// Both ends of a connection.

#pragma once

#include <sys/socket.h>

#include <csignal>
#include <memory>
#include <string>

#include "Base/TCP/zeTCPAddress.h"
#include "Base/TCP/zeTCPClientSocket.h"
#include "Base/TCP/zeTCPServer.h"
#include "Base/TCP/zeTCPServerSocket.h"
#include "Base/Utility/zeUtilDescriptor.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/Utility/zeUtilInterval.h"

/// As every program with sockets does.
inline const auto signalBefore = std::signal(SIGPIPE, SIG_IGN);

/// "code: message", or nothing for a success.
inline std::string text(const zeUtil::Error& error) {
    return error.code() == 0 ? "" : std::to_string(error.code()) + ": " + error.message();
}

/// A Socket and, at the other end, a bare descriptor, which need no network.
struct Pair {
    Pair() : Pair(descriptors()) {}

    void send(const std::string& bytes) const {
        ::send(there.get(), bytes.data(), bytes.size(), 0);
    }
    /// What has arrived.
    std::string received() const {
        std::string bytes(100000, '\0');
        const ssize_t n = ::recv(there.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
        return bytes.substr(0, n < 0 ? 0 : static_cast<std::size_t>(n));
    }

    zeTCP::ServerSocket here;
    zeUtil::Descriptor there;

private:
    struct Ends {
        int fds[2] = {-1, -1};
    };
    explicit Pair(Ends ends) : here(ends.fds[0]), there(ends.fds[1]) {}
    static Ends descriptors() {
        Ends ends;
        static_cast<void>(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.fds));
        return ends;
    }
};

/// A connection over the loopback interface, by IPv4.
struct Connection {
    Connection() {
        server.setLoopbackOnly();
        error = zeTCP::hasIPv4() ? server.listen() : zeUtil::Error(2, "no IPv4");
        if (error.code() == 0)
            connect();
    }

    bool isThere() const { return accepted != nullptr; }

    zeTCP::Server server{-1, 5};
    std::unique_ptr<zeTCP::ClientSocket> client;
    std::unique_ptr<zeTCP::ServerSocket> accepted;
    zeUtil::Error error; ///< The first one that kept it from being there.

private:
    void connect() {
        const zeTCP::Address address(zeTCP::Address::localhost, server.getPort());
        client = std::make_unique<zeTCP::ClientSocket>(address);
        error = client->connect();
        if (client->descriptor() == -1)
            return;
        zeTCP::AcceptResult result = server.accept("10s");
        accepted.reset(result.socket);
        error = result.error;
    }
};

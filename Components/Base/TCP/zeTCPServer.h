// SPDX-License-Identifier: MIT

/// @file
/// A TCP server: zeTCP::Server listens on a port and hands out connections.
///
/// **IPv4 and IPv6 together.** listen() binds the port for IPv6 first and then for IPv4. A usual
/// Linux lets an IPv6 socket on all interfaces take IPv4 connections too, so that the second bind
/// finds the port in use: **listen() then returns code 3, and yet the server listens**, for both.
/// What a caller does about it:
/// - Call setLoopbackOnly(), or run with ZE_IPV4_ONLY: there the two do not collide, and an error
///   is an error.
/// - Otherwise ask isListening(), not the result. remoteAddress() of a connection is then
///   "0.0.0.0", and connectionPending() is always false: wait by accept() or zeTCP::WaitReadable.
///
/// **On an open network.** Nothing here is encrypted and nobody is authenticated. Listen on the
/// loopback interface unless the network is trusted.
///
/// Threads: a Server belongs to one thread at a time.
///
/// @code
/// #include <memory>
/// #include "Base/TCP/zeTCPAddress.h"
/// #include "Base/TCP/zeTCPClientSocket.h"
/// #include "Base/TCP/zeTCPServerSocket.h"
/// #include "Base/Utility/zeUtilInterval.h"
/// zeTCP::Server server(-1, 5); // on a port that the system chooses
/// server.setLoopbackOnly();
/// server.listen();
/// zeTCP::ClientSocket client(zeTCP::Address(zeTCP::Address::localhost, server.getPort()));
/// client.connect();
/// if (client.descriptor() != -1) {
///     const auto [accepted, error] = server.accept(zeUtil::Interval("10s"));
///     const std::unique_ptr<zeTCP::ServerSocket> connection(accepted);
///     assert(connection && connection->connected());
/// }
/// @endcode

#pragma once

#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeUtil {
class Interval;
}

namespace zeTCP {

class ServerImpl;
class ServerSocket;
class Socket;
class SocketImpl;

/// What Server::accept() found.
struct AcceptResult {
    ServerSocket* socket; ///< The caller deletes it. Null on an error, and when the time is over.
    zeUtil::Error error;  ///< Empty when the time is over.
};

/// Listens on one port. Neither copied nor moved: hold it by pointer.
class ZEBASE_API Server {
public:
    /// Makes no socket yet. `backlog` is how many connections may wait to be accepted, as for the
    /// system's `listen`. With `port` -1 the system chooses one, which getPort() tells after
    /// listen(): free for IPv6, and taken for IPv4 too. **Now and then it is in use there** (a
    /// connection that ended a minute ago is enough), and listen() returns code 3 though on the
    /// loopback interface: make another Server then.
    ///
    /// Port 0 lets the system choose too, but getPort() stays 0 where only IPv4 is used.
    Server(int port, int backlog);
    Server(const Server&) = delete;            ///< Hold it by pointer.
    Server& operator=(const Server&) = delete; ///< Hold it by pointer.
    /// Stops listening. Connections that were accepted live on; those that wait are reset.
    ~Server();

    /// The port that was given, or, after listen(), the one that is used. 0 after a listen() that
    /// failed with port -1: **it asks for no free port any more**; make a new Server.
    int getPort() const;

    /// The next listen() takes connections from this host only.
    void setLoopbackOnly();

    /// Closes what listens, and listens anew. For code 3 see the top: it need not be a failure.
    /// Code 1: failed. Code 2: no protocol can be used. Code 3: the port is in use. What one
    /// protocol achieved stays, though the other failed; an error of IPv6 is not reported where
    /// IPv4 succeeds.
    ///
    /// **Call it once.** accept() and connectionPending() go on to look at the descriptors of the
    /// sockets before: where these numbers are gone, they fail with "Bad file descriptor", and
    /// where something else has them, they answer for that. The port may stay in use for a minute
    /// after connections on it have ended.
    zeUtil::Error listen();

    /// Whether there is a socket that listens, whatever listen() returned.
    bool isListening() const;

    /// The Error of listen() for `rc`, the result of `bind`, and the current `errno`.
    static zeUtil::Error isBindError(int rc);

    /// **Waits without limit** for a connection, and returns whether there is one to accept. False
    /// at once without an IPv4 socket, which on a usual Linux is always so: see the top.
    bool connectionPending() const;

    /// Waits for a connection and accepts it; IPv6 first, if several wait. A zero `timeout` waits
    /// without limit. Calls listen() if there was none yet, and returns its error: on a usual Linux
    /// the first call thus gives code 3, and the next one works.
    ///
    /// Code 1: failed. The connection may still be waiting, as when the process has no descriptor
    /// left: free one before trying again. A connection that waited may have ended already, which
    /// its socket tells when used.
    [[nodiscard]] AcceptResult accept(const zeUtil::Interval& timeout);
    /// The same, storing the socket, or null.
    zeUtil::Error accept(Socket** socket, const zeUtil::Interval& timeout);

    /// Stops listening for IPv4, **and for nothing else**: connections by IPv6, and with it on a
    /// usual Linux all, come until the Server is destroyed. accept() on IPv4 alone fails from now
    /// on.
    void shutdown();

    /// @{
    /// The state of a listening socket, for WaitReadable. Null before listen() and, for IPv4, after
    /// shutdown().
    SocketImpl* getListeningSocketImplIPv4() const;
    SocketImpl* getListeningSocketImplIPv6() const;
    /// @}

private:
    ZEBASE_HIDDEN void listenIpv6And4(zeUtil::Error& e);

    ServerImpl* impl_;
    bool ownsImpl_;
};

} // namespace zeTCP

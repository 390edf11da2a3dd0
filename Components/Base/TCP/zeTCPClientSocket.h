// SPDX-License-Identifier: MIT

/// @file
/// The side of a TCP connection that connects: zeTCP::ClientSocket.
///
/// Threads: a ClientSocket belongs to one thread at a time, as any zeTCP::Socket.
///
/// @code
/// #include "Base/TCP/zeTCPAddress.h"
/// zeTCP::ClientSocket client{zeTCP::Address("127.0.0.1:1")};
/// const zeUtil::Error error = client.connect();
/// if (client.descriptor() == -1)
///     assert(error.code() != 0); // 3 where nobody listens
/// @endcode

#pragma once

#include "Base/TCP/zeTCPSocket.h"
#include "Base/zeBaseExport.h"

namespace zeTCP {

/// Connects to an Address.
class ZEBASE_API ClientSocket : public Socket {
public:
    /// Not connected. Keeps a copy of `address`, which is its remoteAddress().
    explicit ClientSocket(const Address& address);

    /// Connects to the first address of the host that answers. The port must be assigned. If the
    /// Address is "127.0.0.1", "::1" is tried as well; apart from that, a process without IPv4, or
    /// with ZE_IPV6_ONLY, connects to nothing. Blocks as long as the system tries.
    ///
    /// **The result may be an error though the socket is connected**: that of an address which was
    /// tried before the one that answered. Test `descriptor() != -1` for whether it is.
    ///
    /// Code 2: failed, was interrupted by a signal, the name was not found ("getaddrinfo failed:
    /// ...", with a text that need not fit) or no protocol can be used. Code 3: refused. Code 4:
    /// the network is unreachable. Of several addresses that fail, the last one's error counts. For
    /// each that failed, a line "Connection failed: ..." goes to standard output.
    ///
    /// After a failure it may be called again. The socket must never have had a descriptor: make a
    /// new ClientSocket to connect again after close().
    zeUtil::Error connect();

    /// The error of connect() for the current `errno`, which must not be 0.
    static zeUtil::Error getConnectError();
};

} // namespace zeTCP

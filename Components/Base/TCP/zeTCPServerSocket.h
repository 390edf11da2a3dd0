// SPDX-License-Identifier: MIT

/// @file
/// The sockets of a server: zeTCP::ServerSocket for a connection, zeTCP::ListeningSocket for the
/// port.
///
/// Usually zeTCP::Server makes both. A ServerSocket also gives any connected stream descriptor (one
/// that was inherited, one of a pair) the interface of a zeTCP::Socket.
///
/// Threads: each belongs to one thread at a time, as any zeTCP::Socket.
///
/// @code
/// zeTCP::ListeningSocket none(-1);
/// assert(none.descriptor() == -1 && !none.connected());
/// assert(none.localAddress().error.code() == 2);
/// @endcode

#pragma once

#include "Base/TCP/zeTCPSocket.h"
#include "Base/zeBaseExport.h"

namespace zeTCP {

/// A connection that was accepted.
class ZEBASE_API ServerSocket : public Socket {
public:
    /// Owns the connected descriptor `fd`, which should be close-on-exec.
    explicit ServerSocket(int fd);
};

/// A socket that listens. Reading and writing fail.
class ZEBASE_API ListeningSocket : public Socket {
public:
    /// Owns the descriptor `fd`; -1 for none.
    explicit ListeningSocket(int fd);
};

} // namespace zeTCP

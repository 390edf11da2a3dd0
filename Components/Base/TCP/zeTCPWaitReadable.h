// SPDX-License-Identifier: MIT

/// @file
/// Waiting for several sockets and servers at once: zeTCP::WaitReadable and zeTCP::waitReadable().
///
/// As zeTCPDescriptor.h says, "readable" means that a read or an accept would not block, and a zero
/// Interval means no limit. With no limit, waiting for nothing never ends. Sockets without a
/// descriptor are skipped. Descriptors of any size may be waited for.
///
/// Threads: a WaitReadable belongs to one thread at a time, and blocks none but that.
///
/// @code
/// #include <sys/socket.h>
/// #include "Base/TCP/zeTCPServerSocket.h"
/// #include "Base/Utility/zeUtilInterval.h"
/// int ends[2];
/// assert(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
/// zeTCP::ServerSocket here(ends[0]), there(ends[1]);
/// here.write("news");
/// zeTCP::WaitReadable ready;
/// for (const zeTCP::Socket* socket : {&here, &there})
///     ready.add(*socket);
/// ready.wait(zeUtil::Interval("10s")); // its result says only whether the time ran out
/// assert(ready.isReadable(there) && !ready.isReadable(here));
/// ready.reset(); // and add what to wait for next
/// @endcode

#pragma once

#include <vector>

#include "Base/Utility/zeUtilError.h"
#include "Base/Utility/zeUtilInterval.h"
#include "Base/zeBaseExport.h"

namespace zeTCP {

class Server;
class Socket;
class WaitReadableImpl;

/// A set of sockets and servers to wait for, which becomes the set of those that are readable.
class ZEBASE_API WaitReadable {
public:
    /// The empty set.
    WaitReadable();
    WaitReadable(const WaitReadable&) = delete;            ///< Make one for each wait.
    WaitReadable& operator=(const WaitReadable&) = delete; ///< Make one for each wait.
    /// Leaves the sockets alone.
    ~WaitReadable();

    /// @{
    /// Adds a socket, or what a server listens on. Remembers descriptors, not objects: a socket
    /// that is closed before wait() makes that fail.
    void add(const Socket& socket);
    void add(const Server& server);
    /// @}

    /// Empties the set.
    void reset();

    /// @{
    /// After wait(): whether the socket, or a socket of the server, was readable. Before: whether
    /// it was added. After a wait that failed they answer as before it.
    bool isReadable(const Socket& socket) const;
    bool isReadable(const Server& server) const;
    /// @}

    /// Waits until something in the set is readable, and keeps only what is. To wait again, reset()
    /// and add anew.
    ///
    /// **An empty Error means that the time ran out.** In all other cases, readable sockets and
    /// failures alike, the code is 1, with the text of whatever `errno` was left; look at
    /// isReadable().
    zeUtil::Error wait(zeUtil::Interval timeout);

private:
    WaitReadableImpl* impl_;
    bool ownsImpl_;
};

/// Waits until sockets of `in` are readable, and appends these to `out`, in the order of `in`.
/// `out` is not cleared. Nothing is appended when the time runs out. Code 1, "select() failed": as
/// when one was closed by its descriptor.
ZEBASE_API zeUtil::Error waitReadable(const std::vector<Socket*>& in, std::vector<Socket*>& out,
                                      zeUtil::Interval timeout);

} // namespace zeTCP

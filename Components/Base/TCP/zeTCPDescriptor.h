// SPDX-License-Identifier: MIT

/// @file
/// TCP on bare descriptors: making one, and waiting until some are readable.
///
/// "Readable" means that a read would not block: there are bytes, the peer has closed, or the
/// connection has failed; of a listening socket, that a connection waits to be accepted.
///
/// A zero Interval means **no limit**, never a poll. With no limit and no descriptor the calls wait
/// for ever. To poll, pass a microsecond: `Interval("1us")`.
///
/// Threads: any thread may call these, and blocks none but itself.
///
/// @code
/// #include <sys/socket.h>
/// #include <unistd.h>
/// int ends[2];
/// assert(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
/// assert(zeTCP::doSelect(ends[0], zeUtil::Interval("1ms")) == 0);
/// assert(::send(ends[1], "x", 1, 0) == 1);
/// assert(zeTCP::doSelect(ends[0], zeUtil::Interval()) == 1);
/// ::close(ends[0]);
/// ::close(ends[1]);
/// @endcode

#pragma once

#include <sys/select.h>

#include <vector>

#include "Base/Utility/zeUtilInterval.h"
#include "Base/zeBaseExport.h"

namespace zeTCP {

/// A new stream socket of the family `domain` (`AF_INET`, `AF_INET6`), close-on-exec; -1 with
/// errno. The caller closes it.
ZEBASE_API int makeSocket(int domain);

/// Does nothing and returns 0. What sockets do with unsent bytes on close is the system's default.
ZEBASE_API int setLinger(int fd);

/// @name Waiting
/// @{

/// The result is that of `select`: how many descriptors are readable, 0 when the time is over, -1
/// with errno. Signals do not end the wait, nor extend it.
///
/// `set` holds the readable descriptors afterwards, and is unchanged on -1. Descriptors in an
/// `fd_set` must lie below `FD_SETSIZE` (1024), **which nothing checks**: a higher one writes past
/// the end of the set, or ends a hardened program. The forms without a set take descriptors of any
/// size.
ZEBASE_API int doSelect(int nfds, fd_set* set, const zeUtil::Interval& timeout);

/// For one descriptor; a negative one gives -1 with `EBADF`.
ZEBASE_API int doSelect(int fd, const zeUtil::Interval& timeout);

/// Adds `fds` to `set`, which the caller has cleared. Negative descriptors are skipped.
ZEBASE_API int doSelect(const std::vector<int>& fds, const zeUtil::Interval& timeout, fd_set& set);

/// Whether any of `fds` is readable. Negative descriptors are skipped.
ZEBASE_API int doSelect(const std::vector<int>& fds, const zeUtil::Interval& timeout);

/// @}

} // namespace zeTCP

// SPDX-License-Identifier: MIT

/// @file
/// A blocking TCP stream: zeTCP::Socket.
///
/// A Socket is made as a zeTCP::ClientSocket, which connects, or comes from zeTCP::Server as a
/// zeTCP::ServerSocket. It owns its descriptor and closes it when destroyed. Both read() and
/// write() move all bytes that were asked for, or fail.
///
/// **Codes.** 1: the system failed, and the message is its text. 2: wrong use, or a failed
/// connection. 3: refused, or a text too long to send. 4: the connection is gone, or the network
/// unreachable. Errors are returned; with setThrowMode(true), those of read() and write() are
/// thrown as well, a zeUtil::Error by value. The status is not sticky.
///
/// **What the application decides.**
/// - SIGPIPE: writing to a peer that is gone raises it, and ends a process that has not done
///   `signal(SIGPIPE, SIG_IGN)`. Programs with sockets do that at their start; the write then
///   fails with code 1.
/// - setNoDelay(): a framed text goes out as two writes. Without `setNoDelay(true)` the second can
///   wait 40 ms for the acknowledgement of the first, in either direction. Call it for dialogues;
///   leave it off where bytes only flow one way.
/// - Time limits: no read or write has one. A peer that stops sending, or stops reading, blocks its
///   partner for ever. Wait first (zeTCPWaitReadable.h), or set `SO_RCVTIMEO` and `SO_SNDTIMEO` on
///   descriptor(): a call that runs out of time then fails with code 1.
///
/// **Framed texts.** `write(text)` sends the length as 16 bits, big-endian, and the bytes, without
/// a terminator. `read(text)` expects the same. Both sides agree whether the bytes are UTF-8: the
/// forms for IString take care of that.
///
/// Threads: a Socket belongs to one thread at a time, except that one thread may read while another
/// writes; nothing may overlap close().
///
/// @code
/// #include <sys/socket.h>
/// #include "Base/Strings/zeStringCString.h"
/// #include "Base/TCP/zeTCPServerSocket.h"
/// int ends[2];
/// assert(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
/// zeTCP::ServerSocket here(ends[0]), there(ends[1]);
/// assert(here.write("hello").code() == 0); // on the wire: 0 5 h e l l o
/// here.close(2);                           // no more writing; reading goes on
/// zeString::CString text;
/// assert(there.read(text).code() == 0 && text == "hello");
/// assert(there.read(text).code() == 4); // the peer has closed its side
/// @endcode

#pragma once

#include <cstdio>

#include "Base/OS/zeOSIOStream.h"
#include "Base/zeBaseExport.h"

namespace zeString {
class CString;
class IString;
} // namespace zeString
namespace zeUtil {
class Interval;
}

namespace zeTCP {

class Address;
class SocketImpl;

/// An address of a Socket.
struct AddressResult {
    Address* address;    ///< The socket's, valid as long as that; null on an error.
    zeUtil::Error error; ///< See the call.
};

/// The C stream of a Socket.
struct StreamResult {
    std::FILE* stream;   ///< The socket's: never `fclose` it. May be valid beside an error.
    zeUtil::Error error; ///< See Socket::getCStream().
};

/// One TCP connection. Neither copied nor moved: hold it by pointer.
class ZEBASE_API Socket : public zeOS::IOStream {
public:
    /// Has no descriptor. Calls initialize() of zeTCPAddress.h.
    Socket();
    Socket(const Socket&) = delete;            ///< Hold it by pointer.
    Socket& operator=(const Socket&) = delete; ///< Hold it by pointer.
    /// close(3), and frees the addresses.
    ~Socket() override;

    /// Reads exactly `count` bytes, as a 32-bit number. `done` receives how many were read, also on
    /// an error. Code 4, "connection closed": the peer closed first. A `count` of 0 is not a no-op:
    /// it blocks until there is something to read, and always ends in code 4.
    zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) override;
    /// Writes exactly `count` bytes, as a 32-bit number. `done` receives how many the system took,
    /// also on an error; whether they arrive is another matter. Code 1: failed, as after the peer
    /// has closed.
    zeUtil::Error write(const void* buffer, unsigned long count, unsigned long* done) override;

    /// @name Framed texts
    /// @{

    /// Through the virtual read() and write(), with their errors. The text is unchanged on an
    /// error.
    ///
    /// Reads a text, up to its first zero byte: the bytes behind that are dropped.
    zeUtil::Error read(zeString::CString& text);
    /// Writes all bytes of `text`, zero bytes too. Code 3, before anything is sent: longer than
    /// 65535 bytes.
    zeUtil::Error write(const zeString::CString& text);
    /// Reads a text in UTF-8.
    zeUtil::Error read(zeString::IString& text);
    /// Writes `text` in UTF-8. Code 3: as for a CString, in bytes.
    zeUtil::Error write(const zeString::IString& text);
    /// Writes the bytes of a C string as they are.
    zeUtil::Error write(const char* text);

    /// @}

    /// Whether this is an accepted connection. **False for every client**, connected or not, and
    /// still true after close(): see descriptor().
    bool connected() const;

    /// The descriptor, for options and calls that are not here; the Socket owns it. -1 before
    /// connecting and after both sides are closed.
    int descriptor() const;

    /// How long wait() waits; zero, the default, for ever. Nothing else uses it.
    zeUtil::Interval getTimeout() const;
    /// Sets what getTimeout() returns.
    void setTimeout(const zeUtil::Interval& timeout);

    /// Whether errors of read() and write() are thrown. False at first.
    bool getThrowMode() const;
    /// Sets what getThrowMode() returns.
    void setThrowMode(bool throwing);

    /// **Waits without limit** until there is something to read, or the peer has closed, and
    /// returns true. False if the wait fails, or there is no descriptor. To poll, use
    /// waitReadable() of zeTCPWaitReadable.h with a short limit.
    bool dataAvailable() const;

    /// Waits until there is something to read, the peer has closed, getTimeout() is over or a
    /// signal was caught: all of these are successes, and only a read tells them apart. Code 1:
    /// failed, as without a descriptor.
    zeUtil::Error wait();

    /// @{
    /// The address of this side, or of the other; cached. A client's remote address is the one that
    /// it was made with. IPv4 only: on an IPv6 socket the port is right, and the host "0.0.0.0".
    /// Code 1: failed. Local, code 2: there is no descriptor. Remote, code 4: never connected.
    AddressResult localAddress();
    AddressResult remoteAddress();
    /// @}

    /// A C stream over the descriptor, for reading and writing, which close() closes. Made by the
    /// first call; **each later one returns it together with an error** of code 2, as does a call
    /// without a descriptor, with null. Code 1: failed. Do not mix it with read() and write(),
    /// which know nothing of its buffers.
    StreamResult getCStream();
    /// The same, storing the stream only where there is no error: that is, once.
    zeUtil::Error getCStream(std::FILE*& stream);

    /// Whether small writes are sent at once (`TCP_NODELAY`), rather than gathered until the peer
    /// has acknowledged the ones before. Code 1: failed. Code 2: there is no descriptor.
    zeUtil::Error setNoDelay(bool on);

    /// Closes sides: 1 reading, 2 writing, 3 both. A side that is closed already is ignored, and
    /// what closes the last one closes the descriptor. Closing the writing side tells the peer that
    /// nothing more comes, while reading goes on.
    ///
    /// **The result is a verdict for `close(2)` alone**, as long as reading stays open: code 1, it
    /// failed. Where the reading side or both are closed, the result has code 1 *when all went
    /// well*, with the text of whatever `errno` was left (usually "Success"), and is mostly empty
    /// when the peer was gone. Ignore it there, as callers do.
    zeUtil::Error close(int how);

protected:
    /// The state that the kinds of sockets set up.
    SocketImpl& impl() const { return *impl_; }

private:
    friend class Server;
    ZEBASE_HIDDEN zeUtil::Error closeReading();
    ZEBASE_HIDDEN zeUtil::Error closeWriting();
    ZEBASE_HIDDEN zeUtil::Error closeBoth();

    SocketImpl* impl_; ///< Owned.
};

} // namespace zeTCP

// SPDX-License-Identifier: MIT

/// @file
/// The sink over a TCP connection: how packets go from one program to another.
/// ioBufferedStreamInput::openSocket() and ioBufferedStreamOutput::openSocket() make streams over
/// it. Documentation/network.md says how to use it well.
///
/// Threads: a link belongs to one thread at a time, together with its chain. One thread may read
/// from a socket through one chain while another writes to it through another.
///
/// @code
/// #include <sys/socket.h>
/// #include "Base/TCP/zeTCPServerSocket.h"
/// int ends[2];
/// assert(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0);
/// zeTCP::ServerSocket here(ends[0]);
/// zeTCP::ServerSocket there(ends[1]);
///
/// ioBufferTCP writer(false);
/// writer.open(&here);
/// writer.writeData("bottles", 7);
/// writer.flush();
/// writer.close(); // forgets the socket
/// here.close(2);  // no more bytes: a reader waits for a whole block, or for this
///
/// ioBufferTCP reader(true);
/// reader.open(&there);
/// char text[8];
/// assert(reader.readData(text, 7) == 7 && reader.good());
/// assert(reader.readData(text, 1) == 0 && reader.getStatus() == ioBuffer::bufferIOError);
/// @endcode

#pragma once

#include "Base/IO/ioBufferLink.h"

namespace zeTCP {
class Socket;
}

/// The sink over a zeTCP::Socket, with a block of 4096 bytes. The socket is not owned, and neither
/// connected nor closed; it must outlive its use.
///
/// **Reading blocks until 4096 bytes have come, or the peer has sent its last.** So the peer closes
/// its writing side behind what it sends, `close(2)`; a dialogue of packets over one connection
/// would wait for itself. What came behind the last byte that is wanted has been taken from the
/// socket.
///
/// The end of the connection is a failure (bufferIOError), never an end of file, since it may have
/// broken: what is read must say itself where it ends, as packet files do. A zeUtil::Error that a
/// socket in throw mode throws counts as one that it returns. Writing to a connection that the peer
/// has closed raises SIGPIPE, unless the program ignores it.
class ZEBASE_API ioBufferTCP : public ioBuffer {
public:
    /// A link without a socket: call open().
    explicit ioBufferTCP(bool reading);

    /// Leaves the socket as it is.
    ~ioBufferTCP() override;

    int getType() override;

    /// Forgets the socket, which stays open. Bytes in the block are not written: flush first.
    void close() override;

    /// Returns what the socket delivered, even if the connection ended after that. bufferIOError
    /// and 0 if it ended without a byte, or without a socket; -1 if a derived socket claims to have
    /// delivered more than it was asked for.
    int read(char* destination, int n) override;

    /// bufferIOError if the socket fails, or without a socket.
    void write(const char* source, int n) override;

    /// Reads from or writes to `socket`; bufferIOError if it is null.
    void open(zeTCP::Socket* socket);

private:
    zeTCP::Socket* socket_ = nullptr; // not owned
};

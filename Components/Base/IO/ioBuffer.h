// SPDX-License-Identifier: MIT

/// @file
/// Byte chains and buffered streams: how bytes get to a file and back. This header declares nothing
/// itself; it includes the headers of the family:
///
/// | Header | Class |
/// |---|---|
/// | ioBufferLink.h | ioBuffer, a link of a chain |
/// | ioBufferFD.h | ioBufferFD, the link over a file descriptor |
/// | ioBufferedStream.h | ioBufferedStream, the owner of a chain, and its status |
/// | ioBufferedStreamInput.h | ioBufferedStreamInput, a stream to read from |
/// | ioBufferedStreamOutput.h | ioBufferedStreamOutput, a stream to write to |
///
/// A chain is a singly linked list of ioBuffer links. The bottom link is a sink: a file descriptor,
/// another byte stream (ioBufferIOStream.h), a socket (ioBufferTCP.h). The links above it are
/// filters, which transform the bytes: down the chain on writing, up on reading. Each link has its
/// own block, and its virtual read() and write() are called with whole blocks only. An
/// ioBufferedStream owns a chain through its top link, each link owns the link below it, and a
/// filter can be pushed and popped in the middle of a file.
///
/// A failure sets the status of the link where it happens. It is promoted to the link above at
/// flush(), or wherever a filter promotes after a call, and from the top link to the stream after
/// each operation except tell(), popBufferChain() and opening a file for writing, whose failures
/// show with the next operation. Statuses are sticky: nothing clears a link's status, a stream's is
/// cleared only by resetStatus() and by the next open, and a link whose status is not good moves
/// no more bytes. Nothing here prints or throws, except that memory can run out (std::bad_alloc).
///
/// Deleting a chain or a stream neither flushes nor closes it: bytes still in a block are lost, and
/// descriptors stay open. Call close() first, and read the stream's status after it: only then is
/// it known that the bytes reached the system. Durability beyond that (fsync) is up to the caller.
///
/// Threads: a stream and its chain belong to one thread at a time.
///
/// @code
/// #include <unistd.h>
/// #include "Base/Strings/zeStringIString.h"
///
/// ioBufferedStreamOutput out;
/// out.openFile(L"stream-example.txt");
/// out.printf("%d bottles", 10);
/// out.close();
/// assert(out.getStatus() == streamOK);
///
/// ioBufferedStreamInput in;
/// in.openFile(L"stream-example.txt");
/// assert(in.readInt() == 10);
/// char rest[16];
/// assert(in.readData(rest, 16) == 7 && in.getStatus() == streamEOF);
/// in.close();
/// unlink("stream-example.txt");
/// @endcode

#pragma once

#include "Base/IO/ioBufferFD.h"
#include "Base/IO/ioBufferLink.h"
#include "Base/IO/ioBufferedStream.h"
#include "Base/IO/ioBufferedStreamInput.h"
#include "Base/IO/ioBufferedStreamOutput.h"

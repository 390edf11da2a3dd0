// SPDX-License-Identifier: MIT

/// @file
/// The sink over a file descriptor: the bottom link of nearly every chain.
///
/// Threads: a link belongs to one thread at a time, together with its chain.
///
/// @code
/// #include <unistd.h>
///
/// int ends[2];
/// assert(pipe(ends) == 0);
/// ioBufferFD writer(false);
/// writer.useFD(ends[1]); // owned from now on
/// writer.writeData("text", 4);
/// writer.flush();
/// writer.close();
/// assert(writer.good());
///
/// ioBufferFD reader(true);
/// reader.useFD(ends[0]);
/// char text[8];
/// assert(reader.readData(text, 8) == 4 && reader.getStatus() == ioBuffer::bufferEOF);
/// reader.close();
/// @endcode

#pragma once

#include "Base/IO/ioBufferLink.h"

namespace zeString {
class IString;
}

/// The sink over a file descriptor, with a block of 262144 bytes. Interrupted calls are retried,
/// and so is EAGAIN: on a non-blocking descriptor that is not ready, the call spins until it is.
class ZEBASE_API ioBufferFD : public ioBuffer {
public:
    /// A link without a descriptor: call open() or useFD().
    explicit ioBufferFD(bool reading);

    /// Leaves the descriptor open.
    ~ioBufferFD() override;

    /// `lseek` from the start; a negative position means the end of the file. The block is not
    /// touched.
    bool seek(long position) override;

    /// The descriptor's position. It differs from that of the next byte by what is in the block.
    long tell() override;

    int getType() override;

    /// Closes the descriptor; bufferIOError if the system reports a failure. Bytes in the block are
    /// not written: flush first.
    void close() override;

    /// bufferEOF and 0 at the end of the file; bufferIOError and -1 on failure or after close().
    int read(char* destination, int n) override;

    /// bufferDiskFull on ENOSPC, bufferIOError on any other failure or after close().
    void write(const char* source, int n) override;

    /// Opens `path` (converted to UTF-8) in the link's direction; bufferOpenError on failure. A
    /// writer creates the file with mode 0666 less the process's mask, and truncates it unless
    /// truncateOnOpen(false) was called. The descriptor is close-on-exec. One held before is
    /// forgotten, not closed.
    void open(const zeString::IString& path);

    /// Takes ownership of the descriptor: close() will close it, even standard input or output.
    /// bufferOpenError if it is negative.
    void useFD(int fd);

    /// Whether open() for writing truncates the file; true by default.
    void truncateOnOpen(bool truncate) { truncate_ = truncate; }

private:
    int fd_ = -1;
    bool owned_ = false;
    bool truncate_ = true;
};

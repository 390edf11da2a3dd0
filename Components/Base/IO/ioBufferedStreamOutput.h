// SPDX-License-Identifier: MIT

/// @file
/// The stream to write to: bytes and formatted text. See ioBuffer.h for an example.
///
/// Bytes reach the file when a block overflows, at flush() and at close(). A killed process loses
/// what is still in the blocks. A full disk ends in streamDiskFull, at the operation that writes
/// the block, which may be close(): check the status after it.
///
/// Threads: a stream belongs to one thread at a time.

#pragma once

#include "Base/IO/ioBufferedStream.h"

/// A stream to write to.
class ZEBASE_API ioBufferedStreamOutput : public ioBufferedStream {
public:
    /// A closed stream.
    ioBufferedStreamOutput() : ioBufferedStream(false) {}

    ~ioBufferedStreamOutput() override;

    /// Creates the file, or truncates it unless truncateOnOpen(false) was called. A failure shows
    /// in the status (streamOpenError) only after the first write or flush.
    void openFile(const zeString::IString& path) override;

    /// flush(), then closes the chain and deletes it.
    void close() override;

    /// Writes to `socket` as ioBufferTCP does. The socket is not owned, and neither connected nor
    /// closed: close() of this stream leaves the peer waiting for more, `socket->close(2)` tells it
    /// that this was all. streamIOError if it is null, and the stream is closed.
    void openSocket(zeTCP::Socket* socket) override;

    /// Writes to `stream` as ioBufferIOStream does. It is not owned, and neither opened nor closed.
    /// A null pointer shows with the first block, as streamIOError.
    void openIOStream(zeOS::IOStream* stream);

    /// Whether the next openFile() truncates the file; true by default.
    void truncateOnOpen(bool truncate) { truncate_ = truncate; }

    /// Writes to standard output, which close() then closes.
    void openStdout();

    /// Writes out everything held in the chain.
    void flush();

    /// Writes the byte of the call before to the system and holds this one, so it costs one system
    /// call a byte. Use writeData() unless the receiver needs each byte at once.
    void writeChar(char c);

    /// Writes `n` bytes; see ioBuffer::writeData().
    void writeData(const char* source, int n) {
        if (!top_)
            return;
        top_->writeData(source, n);
        promoteBufferStatus();
    }

    /// Writes a text of less than 2 GiB without its terminator.
    void writeString(const char* text);

    /// Writes a formatted text, silently cut at 1023 bytes.
    void printf(const char* format, ...);

private:
    bool truncate_ = true;
};

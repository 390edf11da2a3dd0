// SPDX-License-Identifier: MIT

/// @file
/// The stream to read from: bytes, decimal numbers and lines. See ioBuffer.h for an example.
///
/// Threads: a stream belongs to one thread at a time.

#pragma once

#include <string_view>

#include "Base/IO/ioBufferedStream.h"

class ioPackageFileEntry;

/// A stream to read from.
class ZEBASE_API ioBufferedStreamInput : public ioBufferedStream {
public:
    /// A closed stream.
    ioBufferedStreamInput() : ioBufferedStream(true) {}

    ~ioBufferedStreamInput() override;

    /// On failure streamOpenError, and the stream is closed.
    void openFile(const zeString::IString& path) override;

    /// Reads from `socket` as ioBufferTCP does, 4096 bytes at a time. The socket is not owned, and
    /// neither connected nor closed. streamIOError if it is null, and the stream is closed.
    void openSocket(zeTCP::Socket* socket) override;

    /// Reads from `stream` as ioBufferIOStream does. It is not owned, and neither opened nor
    /// closed. A null pointer shows with the first block, as streamIOError.
    void openIOStream(zeOS::IOStream* stream);

    /// Reads standard input, which close() then closes.
    void openStdin();

    /// Reads `size` bytes of a file from `offset` on, as if they were a file of their own. An empty
    /// slice, and one that the file does not hold whole, opens with streamEOF and nothing to read;
    /// any other failure closes the stream. The status is not reset first: one that is bad before
    /// makes the call fail.
    void openFileSlice(const zeString::IString& path, long offset, long size);

    /// Reads the bytes of an entry of a package as they are stored: push compress(true), then
    /// checksum(true), to read one whose getCompressed() is true. The entry is not needed any more
    /// afterwards. streamIOError if it is null, streamOpenError if it is in no package, and
    /// otherwise as openFileSlice().
    void openPackageFileEntry(const ioPackageFileEntry* entry);

    /// The next byte as an unsigned value. 0 if there is none (see the status), and also if the
    /// status is not streamOK when the next block is fetched.
    int readChar() {
        if ((!top_ || top_->position_ >= top_->count_) && !fetchBlock())
            return 0;
        return static_cast<unsigned char>(top_->block_[top_->position_++]);
    }

    /// Reads a decimal number: skips blanks, tabs and newlines, takes a minus sign and digits, 39
    /// characters at most, and consumes one byte more, the one that ended the number, which is
    /// lost. 0 without digits; saturates as strtol does.
    long readInt();

    /// Reads a line with its newline, at most `size` - 1 bytes of it, and terminates it. Ends early
    /// when the status goes bad; then a 0 stands for the missing byte. Stores an empty text if the
    /// status is bad already. Unless `buffer` is null, its first byte is always written, even with
    /// a `size` below 1 (kept for compatibility).
    void readLine(char* buffer, int size);

    /// Reads `n` bytes and returns their number, which is lower only at the end or on failure.
    int readData(char* destination, int n) {
        if (!top_)
            return 0;
        const int done = top_->readData(destination, n);
        promoteBufferStatus();
        return done;
    }

    /// The bytes that can be read without fetching another block: those that the next calls of
    /// readChar() return. Valid until the next operation. For callers that search many bytes at
    /// once.
    std::string_view buffered() const {
        if (!top_ || top_->position_ >= top_->count_)
            return {};
        return {top_->block_ + top_->position_,
                static_cast<std::size_t>(top_->count_ - top_->position_)};
    }

    /// Consumes `n` of the bytes that buffered() returned.
    void skip(int n) {
        if (n > 0)
            top_->position_ += n;
    }

private:
    bool fetchBlock();
};

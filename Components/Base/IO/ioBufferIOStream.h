// SPDX-License-Identifier: MIT

/// @file
/// The sink over any byte stream: a file of another transport, a stream in memory, one of the
/// program's own. ioBufferedStreamInput::openIOStream() and ioBufferedStreamOutput::openIOStream()
/// make streams over it.
///
/// Threads: a link belongs to one thread at a time, together with its chain and the stream below.
///
/// @code
/// #include "Base/OS/zeOSMemoryIOStream.h"
/// zeOS::MemoryIOStream memory(4096, nullptr);
/// memory.openForWrite();
/// ioBufferIOStream writer(false);
/// writer.open(&memory);
/// writer.writeData("bottles", 7);
/// writer.flush();
/// writer.close(); // forgets the stream
/// memory.close();
///
/// memory.openForRead();
/// ioBufferIOStream reader(true);
/// reader.open(&memory);
/// char text[8];
/// assert(reader.readData(text, 8) == 7 && reader.getStatus() == ioBuffer::bufferEOF);
/// @endcode

#pragma once

#include "Base/IO/ioBufferLink.h"

namespace zeOS {
class IOStream;
}

/// The sink over a zeOS::IOStream, with a block of 4096 bytes. The stream is not owned, and neither
/// opened nor closed; it must outlive its use. It is read a block at a time, so that bytes behind
/// the last one that is wanted may have been taken from it.
///
/// A zeUtil::Error that the stream throws counts as one that it returns. **A stream that returns
/// success without a byte is asked again, for ever**: at its end it must return an error. A local
/// zeOS::File does, but not where the disk fails, or of a directory: read files by ioBufferFD.
class ZEBASE_API ioBufferIOStream : public ioBuffer {
public:
    /// A link without a stream: call open().
    explicit ioBufferIOStream(bool reading);

    /// Leaves the stream as it is.
    ~ioBufferIOStream() override;

    int getType() override;

    /// Forgets the stream, which stays open. Bytes in the block are not written: flush first.
    void close() override;

    /// Returns what the stream delivered, even if it failed after that. bufferEOF and 0 if it
    /// failed without a byte, whatever the reason; bufferIOError and 0 without a stream, and -1 if
    /// it claims to have delivered more than it was asked for.
    int read(char* destination, int n) override;

    /// bufferIOError if the stream fails, whatever the reason, or without a stream.
    void write(const char* source, int n) override;

    /// Reads from or writes to `stream`. A null pointer shows with the first block.
    void open(zeOS::IOStream* stream);

private:
    zeOS::IOStream* stream_ = nullptr; // not owned
};

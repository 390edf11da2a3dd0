// SPDX-License-Identifier: MIT

/// @file
/// The owner of a byte chain, base of ioBufferedStreamInput and ioBufferedStreamOutput. See
/// ioBuffer.h for chains as a whole, with an example.
///
/// Threads: a stream belongs to one thread at a time; fileSize() may be called from any thread.

#pragma once

#include "Base/IO/ioBufferLink.h"
#include "Base/zeBaseExport.h"

namespace zeOS {
class IOStream;
}
namespace zeString {
class IString;
}
namespace zeTCP {
class Socket;
}

/// The status of a stream. From 3 on, the numbers differ from those of ioBuffer::bufferStatus.
enum ioStreamStatus : int {
    streamOK = 0,            ///< No failure and no end since the open or resetStatus().
    streamOpenError = 1,     ///< From ioBuffer::bufferOpenError.
    streamEOF = 2,           ///< From ioBuffer::bufferEOF.
    streamCompressEnd = 3,   ///< From ioBuffer::bufferCompressEnd.
    streamDiskFull = 4,      ///< From ioBuffer::bufferDiskFull.
    streamChecksumError = 5, ///< From ioBuffer::bufferChecksumError.
    streamIOError = 6        ///< From ioBuffer::bufferIOError.
};

/// The owner of a chain: opens it, pushes and pops filters, and turns the top link's status into a
/// stream status. A stream is closed (no chain) or open. On a closed stream, and so after a failed
/// open for reading, operations do nothing and set no status: check the status after an open.
///
/// Opening a stream that is open deletes the old chain without closing it. After close() the
/// stream can be opened again. Streams cannot be copied or moved.
class ZEBASE_API ioBufferedStream {
public:
    /// A closed stream, for reading or for writing.
    explicit ioBufferedStream(bool input) : input_(input) {}
    ioBufferedStream(const ioBufferedStream&) = delete;            ///< Pass a reference instead.
    ioBufferedStream& operator=(const ioBufferedStream&) = delete; ///< Pass a reference instead.

    /// Deletes the chain and does not close it.
    virtual ~ioBufferedStream();

    /// Opens a chain on a file.
    virtual void openFile(const zeString::IString& path) = 0;

    /// Closes the chain and deletes it.
    virtual void close();

    /// Opens a chain on a socket.
    virtual void openSocket(zeTCP::Socket* socket) = 0;

    /// The status, with what was promoted from the top link by the last operation.
    ioStreamStatus getStatus() const { return status_; }

    /// Overwrites the status, even one that is not streamOK.
    void setStatus(ioStreamStatus status) { status_ = status; }

    /// Sets streamOK. The top link keeps its status, which is promoted again by the next operation.
    void resetStatus() { status_ = streamOK; }

    /// Takes over a status of the top link that is not good. Every operation does this itself,
    /// except tell(), popBufferChain() and opening a file for writing.
    void promoteBufferStatus() {
        if (top_ && !top_->good())
            promoteFailure();
    }

    /// Pushes `link`: it becomes the top of the chain and owns the links below, and the stream owns
    /// it.
    void addBufferToChain(ioBuffer* link);

    /// Unchains the top link and deletes it; the link below is the new top. On output, what the
    /// link held has been written to the link below.
    void popBufferChain();

    /// Pushes the filter that compresses (ioBufferCompress), or pops it. The compressed section
    /// begins and ends where these calls are made, and the reader must make them at the same
    /// places. Popping clears streamCompressEnd, the status at the end of a compressed section.
    /// With `on` false the filter must be on top of the chain.
    void compress(bool on);

    /// Pushes the filter that guards bytes by a checksum (ioBufferChecksum), or pops it.
    void checksum(bool on);

    /// Pushes the filter that obscures bytes (ioBufferEncrypt), or pops it.
    void encrypt(bool on);

    /// Sets the progress hook of the link that is on top now; see
    /// ioBuffer::associateProgressFunction().
    void associateProgressFunction(void (*progress)(int));

    /// Flushes the chain and returns the top link's position, which is that of the file only where
    /// the top is a sink: filters return 0. On input the flush discards what was read ahead.
    long tell();

    /// Flushes the chain and moves to `position`: see the top link's seek(). A seek clears no
    /// status: after an end of file it succeeds, but nothing more is read.
    bool seek(long position);

    /// The size of a file in bytes; -1 if `path` is empty or the file cannot be queried.
    static long fileSize(const zeString::IString& path);

protected:
    /// Makes `sink` the only link of the chain, with status streamOK.
    void startChain(ioBuffer* sink);

    /// Promotes the sink's status after an open, and deletes the chain if it failed.
    void dropChainOnFailure();

    /// Exchanges status and chain with a stream of the same direction.
    void swapChain(ioBufferedStream& other) noexcept;

    ioStreamStatus status_ = streamOK; ///< Sticky.
    bool input_;                       ///< An ioBufferedStreamInput.
    ioBuffer* top_ = nullptr;          ///< Owned; null when nothing is open.

private:
    friend class ioPackageFile; // exchanges the chains of packages

    ZEBASE_HIDDEN void setFilter(ioBuffer* filter);
    void promoteFailure();
};

// SPDX-License-Identifier: MIT

/// @file
/// Byte chains and buffered streams: the road of every byte to and from a file.
///
/// A chain is a singly linked list of ioBuffer links. The bottom link is a sink (a file
/// descriptor); the links above it are filters, which transform the bytes on their way: down the
/// chain on writing, up on reading. Each link has a block of its own, and its virtual read() and
/// write() are called with whole blocks only. An ioBufferedStream owns a chain through its top
/// link, each link owns the link below it, and a filter can be pushed and popped in mid-file.
///
/// Failures end in the status of the link where they happen and rise by promotion: to the link
/// above at flush(), or wherever a filter promotes after a call, and from the top link to the
/// stream after its operations, but for tell(), popBufferChain() and opening for writing, whose
/// failures show with the next operation. Statuses are sticky. Nothing clears a link's status, a
/// stream's is cleared only by resetStatus() and by the next open, and a link whose status is not
/// good moves no more bytes. Nothing here prints or throws.
///
/// Deleting a chain or a stream neither flushes nor closes it: bytes still in a block are lost, and
/// descriptors stay open. Call close() first, and read the stream's status after it: only then is
/// it known that the bytes reached the system. Durability beyond that (fsync) is the caller's.
///
/// A chain and its stream belong to one thread at a time. They cannot be copied or moved.
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

#include <cstring>
#include <string_view>

#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeString {
class IString;
}
namespace zeTCP {
class Socket;
}

/// A link of a byte chain: an abstract block of memory with a read and a write operation of a block
/// at a time. Derived classes are the sinks and the filters.
///
/// A filter reaches the link below by readData(), writeData(), fillBuffer() and flush() of next_,
/// never by its read() and write(): those are called by the link itself alone.
class ZEBASE_API ioBuffer {
public:
    /// What has become of a link.
    enum bufferStatus : int {
        bufferOK = 0,
        bufferOpenError = 1,     ///< The sink could not be opened.
        bufferEOF = 2,           ///< The sink has no more bytes.
        bufferDiskFull = 3,      ///< The device has no room.
        bufferChecksumError = 4, ///< A checksum filter found a bad block.
        bufferCompressEnd = 5,   ///< Read past the end of a compressed section.
        bufferIOError = 6        ///< Any other failure, including use of a closed sink.
    };

    /// Allocates a block of `size` bytes, at least 1, for a link that reads or writes all its life.
    ioBuffer(bool reading, int size);
    ioBuffer(const ioBuffer&) = delete;
    ioBuffer& operator=(const ioBuffer&) = delete;

    /// Deletes the block and all links below. Neither flushes nor closes.
    virtual ~ioBuffer();

    /// Moves to `position`; true on success. A caller flushes first. The base cannot seek and
    /// returns false.
    virtual bool seek(long position);

    /// The position in what lies below the block; 0 where there is none, as in the base.
    virtual long tell();

    /// Runs before the link is taken off the chain: a writing filter emits everything that it
    /// holds and flushes the chain below. The base does nothing.
    virtual void unchainHook();

    /// The kind of link: 0 for a file descriptor, 1 to 6 for the library's other links.
    virtual int getType() = 0;

    /// Finishes the link's own work and closes the link below, down to the sink.
    virtual void close() = 0;

    /// Reads up to `n` bytes, which is the size of the block, and returns how many; -1 on failure.
    /// Returns 0 in good state only where more may follow: a sink raises bufferEOF at its end,
    /// or callers ask again for ever.
    virtual int read(char* destination, int n) = 0;

    /// Writes all `n` bytes, or sets the status.
    virtual void write(const char* source, int n) = 0;

    bufferStatus getStatus() const { return status_; }

    /// Overwrites the status, whatever it was.
    void setStatus(bufferStatus status) { status_ = status; }

    bool good() const { return status_ == bufferOK; }

    /// Sets the hook of this link alone; null for none. After each block it is given the bytes that
    /// have moved through the link, which wrap at 32 bits. A failed read counts as -1 byte.
    void associateProgressFunction(void (*progress)(int)) { progress_ = progress; }

    /// Puts this link on top of `next` and owns it from now on. A link that was below this one
    /// before is not deleted: it is the caller's, as after unchain().
    void chain(ioBuffer* next) { next_ = next; }

    /// Runs unchainHook(), then detaches the link below and returns it; the caller owns it.
    ioBuffer* unchain();

    /// Reads the next block. The one before is used up or lost.
    void fillBuffer();

    /// Writes out the block. On a reading link, discards it, which makes a flush before a seek
    /// right for both directions. On a link that is not good, does nothing.
    void flushBuffer();

    /// Reads `n` bytes and returns their number, which is lower only if the status has gone bad.
    /// No bytes for an `n` below 1. An end of data that falls on the last byte asked for is met by
    /// the next call.
    int readData(char* destination, int n) {
        if (status_ == bufferOK && n > 0 && n <= count_ - position_) {
            std::memcpy(destination, block_ + position_, static_cast<unsigned>(n));
            position_ += n;
            return n;
        }
        return readBlocks(destination, n);
    }

    /// Writes `n` bytes. They stay in the block until it overflows or is flushed: a block filled to
    /// its last byte is not yet written. Once the link is not good, bytes are dropped in silence.
    void writeData(const char* source, int n) {
        if (status_ == bufferOK && n > 0 && n <= size_ - position_) {
            std::memcpy(block_ + position_, source, static_cast<unsigned>(n));
            position_ += n;
        } else {
            writeBlocks(source, n);
        }
    }

    /// Flushes this link, then the links below, and takes over their failures.
    void flush();

    /// Takes over a failure of the link below. An end (bufferEOF, bufferCompressEnd) rises only
    /// with `includeEnd`: a filter that reads ahead passes false while it still has bytes to hand
    /// up. bufferOK never rises.
    void promoteNextBufferStatus(bool includeEnd);

protected:
    zeUtil::Error lastError_; ///< Of the last call into a stream or a socket, in links over those.
    char* block_;             ///< The link's own memory; owned.
    int size_;                ///< Of the block, in bytes.
    int position_ = 0;        ///< Next byte to read from or to write to in the block.
    int count_ = 0;           ///< Valid bytes in the block on reading; 0 on writing.
    int total_ = 0;           ///< As the progress hook sees it.
    bufferStatus status_ = bufferOK;  ///< Sticky.
    bool reading_;                    ///< An input link.
    ioBuffer* next_ = nullptr;        ///< The link below; owned.
    void (*progress_)(int) = nullptr; ///< Hook, or null.

private:
    friend class ioBufferedStreamInput;
    friend class ioBufferedStreamOutput;
    friend class ioBufferCompress;

    int readBlocks(char* destination, int n);
    void writeBlocks(const char* source, int n);
    bool movesBlocksDirectly() const;
    void readBlock(char* destination);
    void writeBlock(const char* source, int n);
    void addToTotal(int n);
};

/// The sink over a file descriptor, with a block of 262144 bytes. Interrupted calls are retried,
/// and so is EAGAIN: on a non-blocking descriptor that is not ready, the call spins until it is.
class ZEBASE_API ioBufferFD : public ioBuffer {
public:
    explicit ioBufferFD(bool reading);

    /// Leaves the descriptor open.
    ~ioBufferFD() override;

    /// `lseek` from the start; a negative position means the end of the file. The block is not
    /// touched.
    bool seek(long position) override;

    /// The descriptor's position, which differs from that of the next byte by what is in the block.
    long tell() override;

    int getType() override;

    /// Closes the descriptor; bufferIOError if the system says that it failed. Bytes in the block
    /// are not written: flush first.
    void close() override;

    /// bufferEOF and 0 at the end of the file; bufferIOError and -1 on failure or after close().
    int read(char* destination, int n) override;

    /// bufferDiskFull on ENOSPC, bufferIOError on any other failure or after close().
    void write(const char* source, int n) override;

    /// Opens `path` (passed on as UTF-8) in the link's direction; bufferOpenError on failure. A
    /// writer creates the file with mode 0666 less the process's mask, and empties it unless
    /// truncateOnOpen(false) was called. A descriptor held before is forgotten, not closed.
    void open(const zeString::IString& path);

    /// Takes the descriptor over, and close() will close it, be it standard input or output.
    /// bufferOpenError if it is negative.
    void useFD(int fd);

    /// Whether open() for writing empties the file; true at first.
    void truncateOnOpen(bool truncate) { truncate_ = truncate; }

private:
    int fd_ = -1;
    bool owned_ = false;
    bool truncate_ = true;
};

/// The status of a stream. The numbers from 3 on differ from those of ioBuffer::bufferStatus.
enum ioStreamStatus : int {
    streamOK = 0,
    streamOpenError = 1,     ///< From ioBuffer::bufferOpenError.
    streamEOF = 2,           ///< From ioBuffer::bufferEOF.
    streamCompressEnd = 3,   ///< From ioBuffer::bufferCompressEnd.
    streamDiskFull = 4,      ///< From ioBuffer::bufferDiskFull.
    streamChecksumError = 5, ///< From ioBuffer::bufferChecksumError.
    streamIOError = 6        ///< From ioBuffer::bufferIOError.
};

/// The owner of a chain: opens it, pushes and pops filters, and turns the top link's status into a
/// stream status. Closed (no chain) or open. On a closed stream, and so after a failed open for
/// reading, operations do nothing and report nothing: test the status after an open.
///
/// Opening a stream that is open deletes the old chain without closing it. After close() the
/// stream can open again.
class ZEBASE_API ioBufferedStream {
public:
    explicit ioBufferedStream(bool input) : input_(input) {}
    ioBufferedStream(const ioBufferedStream&) = delete;
    ioBufferedStream& operator=(const ioBufferedStream&) = delete;

    /// Deletes the chain and does not close it.
    virtual ~ioBufferedStream();

    /// Opens a chain on a file.
    virtual void openFile(const zeString::IString& path) = 0;

    /// Closes the chain and deletes it.
    virtual void close();

    /// Opens a chain on a socket.
    virtual void openSocket(zeTCP::Socket* socket) = 0;

    ioStreamStatus getStatus() const { return status_; }
    void setStatus(ioStreamStatus status) { status_ = status; }

    /// Sets streamOK. The top link keeps its status, which is promoted again by the next operation.
    void resetStatus() { status_ = streamOK; }

    /// Takes over a status of the top link that is not good. Operations do this themselves, but for
    /// tell(), popBufferChain() and opening for writing.
    void promoteBufferStatus() {
        if (top_ && !top_->good())
            promoteFailure();
    }

    /// Pushes a link: it goes on top of the chain, which it owns, and the stream owns it.
    void addBufferToChain(ioBuffer* link);

    /// Unchains the top link and deletes it; the link below is the new top. On output what the link
    /// held has gone down the chain by then.
    void popBufferChain();

    /// Pushes the filter that compresses (ioBufferCompress), or pops it. What bytes go through it
    /// begins and ends where these calls stand, on both sides. Popping clears streamCompressEnd, in
    /// which a compressed section ends. With `on` false the filter must be on top of the chain.
    void compress(bool on);

    /// Pushes the filter that guards bytes by a checksum (ioBufferChecksum), or pops it.
    void checksum(bool on);

    /// Pushes the filter that obscures bytes (ioBufferEncrypt), or pops it.
    void encrypt(bool on);

    /// Sets the progress hook of the link that is on top now; see
    /// ioBuffer::associateProgressFunction().
    void associateProgressFunction(void (*progress)(int));

    /// Flushes the chain and returns the top link's position, which is that of the file only where
    /// the top is a sink: filters answer 0. On input the flush discards what was read ahead.
    long tell();

    /// Flushes the chain and moves to `position`: see the top link's seek(). A seek clears no
    /// status: after an end of file it succeeds, but nothing more is read.
    bool seek(long position);

    /// The size of a file in bytes, or -1 if `path` is empty or names nothing that can be queried.
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
    void setFilter(ioBuffer* filter);
    void promoteFailure();
};

/// A stream to read from.
class ZEBASE_API ioBufferedStreamInput : public ioBufferedStream {
public:
    ioBufferedStreamInput() : ioBufferedStream(true) {}
    ~ioBufferedStreamInput() override;

    /// streamOpenError, and a closed stream, if the file cannot be opened.
    void openFile(const zeString::IString& path) override;

    /// Sockets are not supported yet: leaves the stream closed with streamIOError, as a null socket
    /// does.
    void openSocket(zeTCP::Socket* socket) override;

    /// Reads standard input, which close() then closes.
    void openStdin();

    /// The next byte as an unsigned value. 0 if there is none (the status tells), and whenever the
    /// status is not streamOK at the time the next block is fetched.
    int readChar() {
        if ((!top_ || top_->position_ >= top_->count_) && !fetchBlock())
            return 0;
        return static_cast<unsigned char>(top_->block_[top_->position_++]);
    }

    /// Reads a decimal number: skips blanks, tabs and newlines, takes a minus sign and digits, 39
    /// characters at most, and consumes one byte more: the one that ended the number, which is
    /// lost. 0 without digits; saturates as strtol does.
    long readInt();

    /// Reads a line with its newline, at most `size` - 1 bytes of it, and terminates it. Ends early
    /// when the status goes bad, in which case a 0 stands for the missing byte. A status that is
    /// bad already gives an empty text. With a buffer, the first byte is always written, even with
    /// a `size` below 1.
    void readLine(char* buffer, int size);

    /// Reads `n` bytes and returns their number, which is lower only at the end or on failure.
    int readData(char* destination, int n) {
        if (!top_)
            return 0;
        const int done = top_->readData(destination, n);
        promoteBufferStatus();
        return done;
    }

    /// The bytes that are at hand without another block: those of the next calls of readChar().
    /// Valid until the next operation. For callers that search many bytes at once.
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

/// A stream to write to. Bytes reach the file when a block overflows, at flush() and at close().
class ZEBASE_API ioBufferedStreamOutput : public ioBufferedStream {
public:
    ioBufferedStreamOutput() : ioBufferedStream(false) {}
    ~ioBufferedStreamOutput() override;

    /// Creates the file, or empties it unless truncateOnOpen(false) was called. A failure shows in
    /// the status (streamOpenError) only after the first write or flush.
    void openFile(const zeString::IString& path) override;

    /// flush(), then closes the chain and deletes it.
    void close() override;

    /// Sockets are not supported yet: leaves the stream closed with streamIOError, as a null socket
    /// does.
    void openSocket(zeTCP::Socket* socket) override;

    /// Whether the next openFile() empties the file; true at first.
    void truncateOnOpen(bool truncate) { truncate_ = truncate; }

    /// Writes to standard output, which close() then closes.
    void openStdout();

    /// Writes out everything held in the chain.
    void flush();

    /// Pushes out the byte of the call before and holds this one: one write to the system for each
    /// byte. For bytes that somebody waits for; bulk goes through writeData().
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

    /// Writes a formatted text, cut at 1023 bytes.
    void printf(const char* format, ...);

private:
    bool truncate_ = true;
};

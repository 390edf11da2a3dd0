// SPDX-License-Identifier: MIT

/// @file
/// ioBuffer, the link of a byte chain. See ioBuffer.h for chains as a whole.
///
/// Threads: a link belongs to one thread at a time, together with its chain.
///
/// @code
/// // A sink that counts what is written to it.
/// class CountingSink : public ioBuffer {
/// public:
///     CountingSink() : ioBuffer(false, 4096) {}
///     int getType() override { return 100; }
///     void close() override {}
///     int read(char*, int) override { return 0; }
///     void write(const char*, int n) override { count += n; }
///     int count = 0;
/// };
/// CountingSink sink;
/// sink.writeData("seven b", 7);
/// assert(sink.count == 0); // still in the block
/// sink.flush();
/// assert(sink.count == 7 && sink.good());
/// @endcode

#pragma once

#include <cstring>

#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

/// A link of a byte chain: an abstract block of memory with a read and a write operation for one
/// block at a time. Derived classes are the sinks and the filters. Links cannot be copied or moved.
///
/// A filter accesses the link below through readData(), writeData(), fillBuffer() and flush() of
/// next_, never through its read() and write(): only the link itself calls those.
class ZEBASE_API ioBuffer {
public:
    /// The status of a link.
    enum bufferStatus : int {
        bufferOK = 0,            ///< No failure and no end so far.
        bufferOpenError = 1,     ///< The sink could not be opened.
        bufferEOF = 2,           ///< The sink has no more bytes.
        bufferDiskFull = 3,      ///< No space left on the device.
        bufferChecksumError = 4, ///< A checksum filter found a bad block.
        bufferCompressEnd = 5,   ///< Read past the end of a compressed section.
        bufferIOError = 6        ///< Any other failure, including use of a closed sink.
    };

    /// Allocates a block of `size` bytes, at least 1. A link either reads or writes, all its life.
    ioBuffer(bool reading, int size);
    ioBuffer(const ioBuffer&) = delete;            ///< Push a new link instead.
    ioBuffer& operator=(const ioBuffer&) = delete; ///< Push a new link instead.

    /// Deletes the block and all links below. Neither flushes nor closes.
    virtual ~ioBuffer();

    /// Moves to `position`; true on success. The caller flushes first. The base cannot seek and
    /// returns false.
    virtual bool seek(long position);

    /// The position in what lies below the block; 0 where there is none, as in the base.
    virtual long tell();

    /// Called before the link is taken off the chain: a writing filter emits everything that it
    /// holds and flushes the chain below. The base does nothing.
    virtual void unchainHook();

    /// The kind of link: 0 for a file descriptor, 1 to 6 for the library's other links.
    virtual int getType() = 0;

    /// Finishes the link's own work, then closes the link below, down to the sink. A filter
    /// promotes the failure of the link below, so that a failing close of the file is not lost.
    virtual void close() = 0;

    /// Reads up to `n` bytes, which is the size of the block, and returns how many; -1 on failure.
    /// Returning 0 with a good status makes the caller try again: at its end, a sink must set
    /// bufferEOF.
    virtual int read(char* destination, int n) = 0;

    /// Writes all `n` bytes, or sets the status.
    virtual void write(const char* source, int n) = 0;

    /// The link's own status. Failures of links below show here once they are promoted.
    bufferStatus getStatus() const { return status_; }

    /// Overwrites the status, even one that is not good.
    void setStatus(bufferStatus status) { status_ = status; }

    /// Whether the status is bufferOK.
    bool good() const { return status_ == bufferOK; }

    /// Sets the hook of this link alone; null for none. After each block it is passed the number of
    /// bytes that have moved through the link, which wraps at 32 bits. A failed read counts as -1.
    void associateProgressFunction(void (*progress)(int)) { progress_ = progress; }

    /// Puts this link on top of `next`, which it owns from now on. A link that was below this one
    /// before is not deleted: the caller owns it, as after unchain().
    void chain(ioBuffer* next) { next_ = next; }

    /// Calls unchainHook(), then detaches the link below and returns it; the caller owns it.
    ioBuffer* unchain();

    /// Reads the next block, replacing the one before.
    void fillBuffer();

    /// Writes out the block. On a reading link, discards it, so that a flush before a seek is right
    /// in both directions. Does nothing on a link that is not good.
    void flushBuffer();

    /// Reads `n` bytes and returns their number, which is lower only if the status has gone bad.
    /// Returns 0 for an `n` below 1. Where the data ends with the last byte asked for, the status
    /// stays good until the next call.
    int readData(char* destination, int n) {
        if (status_ == bufferOK && n > 0 && n <= count_ - position_) {
            std::memcpy(destination, block_ + position_, static_cast<unsigned>(n));
            position_ += n;
            return n;
        }
        return readBlocks(destination, n);
    }

    /// Writes `n` bytes. They stay in the block until it overflows or is flushed: a block filled to
    /// its last byte is not yet written. Once the link is not good, bytes are dropped silently.
    void writeData(const char* source, int n) {
        if (status_ == bufferOK && n > 0 && n <= size_ - position_) {
            std::memcpy(block_ + position_, source, static_cast<unsigned>(n));
            position_ += n;
        } else {
            writeBlocks(source, n);
        }
    }

    /// Flushes this link, then the links below, and promotes their status.
    void flush();

    /// Takes over the status of the link below if that is not good. The two ends (bufferEOF,
    /// bufferCompressEnd) are taken over only with `includeEnd`: a filter that reads ahead passes
    /// false while it still has bytes to deliver.
    void promoteNextBufferStatus(bool includeEnd);

protected:
    zeUtil::Error lastError_; ///< Of the last call into a stream or a socket, in links over those.
    char* block_;             ///< The link's own memory; owned.
    int size_;                ///< Of the block, in bytes.
    int position_ = 0;        ///< Next byte to read from or to write to in the block.
    int count_ = 0;           ///< Valid bytes in the block on reading; 0 on writing.
    int total_ = 0;           ///< What the progress hook is passed.
    bufferStatus status_ = bufferOK;  ///< Sticky.
    bool reading_;                    ///< An input link.
    ioBuffer* next_ = nullptr;        ///< The link below; owned.
    void (*progress_)(int) = nullptr; ///< Hook, or null.

    /// Whether read() and write() may be passed the caller's memory instead of the block, a whole
    /// block at a time, which saves a copy. A sink sets it in its constructor if its write() leaves
    /// the source unchanged and its read() keeps no pointer. ioBufferFD does: a class derived from
    /// it that overrides one of the two in another way clears it. It is the last field, since the
    /// order of those above is fixed.
    bool movesBlocksDirectly_ = false;

private:
    friend class ioBufferedStreamInput;
    friend class ioBufferedStreamOutput;
    friend class ioBufferCompress;

    int readBlocks(char* destination, int n);
    void writeBlocks(const char* source, int n);
    ZEBASE_HIDDEN void readBlock(char* destination);
    ZEBASE_HIDDEN void writeBlock(const char* source, int n);
    ZEBASE_HIDDEN void addToTotal(int n);
};

// SPDX-License-Identifier: MIT

/// @file
/// The filter that guards bytes by a checksum, so that a reader can tell damage from an end.
///
/// Pushed on a stream by ioBufferedStream::checksum(true) and popped by checksum(false). Each block
/// becomes a frame with its size and a running 16-bit sum. The sum detects accidental damage, such
/// as any single flipped bit, but not two exchanged words, and it is no protection against an
/// attacker. A damaged frame ends in streamChecksumError, and its bytes are not delivered. A file
/// that stops at the end of a frame, or within one before its first byte, is an ordinary end
/// (streamEOF); so is one that stops anywhere within a frame larger than 4096 bytes, which this
/// library does not write.
///
/// Pushed before other filters, and so below them, it covers the bytes as they lie in the file, and
/// damage is found before another filter sees it. Pushed after them, it covers what they deliver.
///
/// Nothing in the file says where the filter begins or ends: reader and writer must agree on it.
/// The sums are in the byte order of the machine, so only a machine of the same order can read
/// them.
///
/// Threads: a link belongs to one thread at a time, together with its chain.
///
/// @code
/// #include <unistd.h>
/// #include "Base/Strings/zeStringIString.h"
///
/// ioBufferedStreamOutput out;
/// out.openFile(L"checksum-example");
/// out.checksum(true);
/// out.writeString("guarded");
/// out.checksum(false);
/// out.close();
/// assert(ioBufferedStream::fileSize(L"checksum-example") == 17);
///
/// out.truncateOnOpen(false);
/// out.openFile(L"checksum-example");
/// out.seek(16);
/// out.writeString("D");
/// out.close();
///
/// char text[7];
/// ioBufferedStreamInput in;
/// in.openFile(L"checksum-example");
/// in.checksum(true);
/// in.readData(text, 7);
/// assert(in.getStatus() == streamChecksumError);
/// in.close();
/// unlink("checksum-example");
/// @endcode

#pragma once

#include "Base/IO/ioBuffer.h"

/// The link that frames each block written through it with its size and a checksum, and verifies
/// what is read.
class ZEBASE_API ioBufferChecksum : public ioBuffer {
public:
    /// A link to push with ioBufferedStream::addBufferToChain(), as checksum(true) does.
    explicit ioBufferChecksum(bool reading);
    ~ioBufferChecksum() override;

    /// Writes out what the link holds and flushes the chain below. A reader does nothing.
    void unchainHook() override;

    int getType() override;

    /// Closes the link below and promotes its failure. Bytes in the block are not written: flush
    /// first.
    void close() override;

    /// Reads one frame, or what is left of one, at most `n` bytes. bufferChecksumError if the frame
    /// is damaged; one of at most `n` bytes is returned with that status nevertheless. The memory
    /// for a larger frame grows with the bytes that arrive, not with the size claimed.
    int read(char* destination, int n) override;

    /// Writes one frame.
    void write(const char* source, int n) override;

private:
    ZEBASE_HIDDEN unsigned short checksum16(const unsigned char* data, int n);
    ZEBASE_HIDDEN void writeBufferInt(int value);
    ZEBASE_HIDDEN int readBufferInt();
    ZEBASE_HIDDEN void writeBufferChecksum(unsigned short checksum);
    ZEBASE_HIDDEN unsigned short readBufferChecksum();
    ZEBASE_HIDDEN void growReadBuffer(int n);
    ZEBASE_HIDDEN void readLargeFrame(int size);

    unsigned short sum_ = 0;     ///< Over all frames so far.
    char* readBuffer_ = nullptr; ///< A frame larger than the reader's block; owned.
    int readCapacity_ = 0;
    int readCount_ = 0;
    int readPosition_ = 0;
};

// SPDX-License-Identifier: MIT

/// @file
/// The filter that guards bytes by a checksum, so that a reader can tell damage from an end.
///
/// Pushed on a stream by ioBufferedStream::checksum(true) and popped by checksum(false). Each block
/// is framed with its size and a running 16-bit sum. That tells accidents, such as any single
/// flipped bit, but not two words that changed places, and no attack. A frame that does not agree
/// ends in streamChecksumError, and its bytes are not delivered. A file that stops at the end of a
/// frame, or within one before its first byte, is an ordinary end (streamEOF), and so is one that
/// stops anywhere within a frame larger than 4096 bytes, which this library does not write.
///
/// Pushed before other filters, and so below them, it covers the bytes as they lie in the file, and
/// damage is found before another filter sees it. Pushed after them, it covers what they deliver.
///
/// Nothing in the file tells where the filter begins or ends: reader and writer must agree on it.
/// The sums are in the byte order of the machine, and only another of the same order can read them.
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

#include <memory>

#include "Base/IO/ioBuffer.h"

/// The link that frames each block written through it with its size and a checksum, and verifies
/// what is read.
class ZEBASE_API ioBufferChecksum : public ioBuffer {
public:
    explicit ioBufferChecksum(bool reading);
    ~ioBufferChecksum() override;

    /// Writes out what the link holds and flushes the chain below. A reader does nothing.
    void unchainHook() override;

    int getType() override;

    /// Closes the link below. Bytes in the block are not written: flush first.
    void close() override;

    /// Reads one frame, or what is left of one, at most `n` bytes. bufferChecksumError if the frame
    /// is damaged; one of at most `n` bytes is returned with that status nevertheless. The memory
    /// for a larger frame grows with the bytes that come, not with the size claimed.
    int read(char* destination, int n) override;

    /// Writes one frame.
    void write(const char* source, int n) override;

private:
    unsigned short checksum16(const unsigned char* data, int n);
    void writeBufferInt(int value);
    int readBufferInt();
    void writeBufferChecksum(unsigned short checksum);
    unsigned short readBufferChecksum();
    void growReadBuffer(int n);
    void readLargeFrame(int size);

    unsigned short sum_ = 0; ///< Over all frames so far.
    /// A frame larger than the reader's block.
    std::unique_ptr<char[]> readBuffer_;
    int readCapacity_ = 0;
    int readCount_ = 0;
    int readPosition_ = 0;
};

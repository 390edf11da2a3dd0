// SPDX-License-Identifier: MIT

/// @file
/// The filter that compresses, by LZW with codes of 9 to 16 bits, a whole file or a section of it.
///
/// Pushed on a stream by ioBufferedStream::compress(true) and popped by compress(false). The
/// compressed section marks its own end, so that other bytes can follow it in the same file.
///
/// A reader reads on until the status is streamCompressEnd, then pops the filter, which clears that
/// status. A reader that stops at the last byte that it wants may leave the end of the section
/// unread (always where the section holds a multiple of 4096 bytes), and what it reads next may
/// then begin with the rest of it. A packet file should therefore write an end-of-file packet
/// last, and its reader read one byte more.
///
/// Push it on a writer only if bytes follow: a section to which nothing was written has no magic,
/// and its reader ends in streamIOError. A section that is cut off or cannot be decoded ends in
/// streamIOError too. A damaged one may also deliver wrong bytes, since nothing here checks them:
/// push ioBufferChecksum as well. Memory is bounded whatever is read.
///
/// Threads: a link belongs to one thread at a time, together with its chain.
///
/// @code
/// #include <unistd.h>
/// #include "Base/Strings/zeStringIString.h"
///
/// ioBufferedStreamOutput out;
/// out.openFile(L"compress-example");
/// out.writeString("before ");
/// out.compress(true);
/// for (int i = 0; i < 1000; ++i)
///     out.writeString("again ");
/// out.compress(false);
/// out.writeString("after");
/// out.close();
/// assert(out.getStatus() == streamOK && ioBufferedStream::fileSize(L"compress-example") < 500);
///
/// char text[7000];
/// ioBufferedStreamInput in;
/// in.openFile(L"compress-example");
/// in.readData(text, 7);
/// in.compress(true);
/// assert(in.readData(text, 7000) == 6000 && in.getStatus() == streamCompressEnd);
/// in.compress(false);
/// assert(in.getStatus() == streamOK && in.readData(text, 5) == 5);
/// in.close();
/// unlink("compress-example");
/// @endcode

#pragma once

#include <cstdint>

#include "Base/IO/ioBuffer.h"

class ioCompressTableImpl;

/// The link that compresses what is written through it, or expands what is read. Its tables, 1.1
/// MiB in either direction, are allocated by the first write() or read(); nothing is allocated
/// after that.
class ZEBASE_API ioBufferCompress : public ioBuffer {
public:
    /// A link to push with ioBufferedStream::addBufferToChain(), as compress(true) does.
    explicit ioBufferCompress(bool reading);
    ~ioBufferCompress() override;

    /// Calls finished().
    void unchainHook() override;

    int getType() override;

    /// Calls finished(), then closes the link below and promotes its failure.
    void close() override;

    /// Expands up to `n` bytes, at least 1. At the end of the section returns 0 bytes and sets
    /// bufferCompressEnd; where that end coincides with the end of a block, one call before returns
    /// 0 bytes with a good status. bufferIOError where the magic is missing or the section has no
    /// end. Memory behind the bytes returned, up to `n`, may be overwritten.
    int read(char* destination, int n) override;

    /// Compresses `n` bytes, at least 1.
    void write(const char* source, int n) override;

    /// Ends the section on a writer and flushes the chain below; does nothing on a reader. Called
    /// by close() and by popping the filter, of which a link meets only one: each call writes an
    /// end.
    void finished();

private:
    struct ZEBASE_HIDDEN String; ///< What a code stands for.

    ZEBASE_HIDDEN void initCompress();
    ZEBASE_HIDDEN void compress();
    ZEBASE_HIDDEN void output(int code);
    ZEBASE_HIDDEN void putIntoGroup(int code);
    ZEBASE_HIDDEN void doneCompress();
    ZEBASE_HIDDEN void cl_block();
    ZEBASE_HIDDEN void writeCodeBuf(int n);

    ZEBASE_HIDDEN bool initUncompress();
    ZEBASE_HIDDEN void uncompress();
    ZEBASE_HIDDEN void expandUsualCodes();
    ZEBASE_HIDDEN int getcode();
    ZEBASE_HIDDEN std::uint32_t codeAt(int bitOffset) const;
    ZEBASE_HIDDEN int readCodeBuf(int n);
    ZEBASE_HIDDEN void addString();
    ZEBASE_HIDDEN bool push(int code);
    ZEBASE_HIDDEN void unstack();

    char* data_ = nullptr; ///< The caller's bytes in read() or write().
    int dataSize_ = 0;
    int dataPosition_ = 0;
    bool started_ = false; ///< The magic was handled and the tables exist.
    int codeBits_ = 9;     ///< Current width.
    int maxCode_ = 511;    ///< Largest code at that width.
    int maxMaxCode_ = 65536;
    int freeCode_ = 258;     ///< Next code to assign.
    int clearFlag_ = 0;      ///< A clear was done: the width goes back to 9 with the next group.
    int ratio_ = 0;          ///< Best compression ratio seen.
    int checkPoint_ = 10000; ///< Input count at which the ratio is next checked.
    int currentCode_ = 0;    ///< The string being matched, on writing.
    int lastCode_ = 0;       ///< Last code read; 257 after the end, negative after failure.
    int oldCode_ = 0;        ///< The code before, on reading.
    int finChar_ = 0;        ///< First byte of the last string, on reading.
    char* stackTop_ = nullptr;
    int bitOffset_ = 0; ///< Bit position in the group.
    int groupBits_ = 0; ///< Bits in the group at which a code can start, on reading.
    int inCount_ = 0;   ///< Bytes of input; wraps.
    int outCount_ = 0;  ///< Bytes of output, without the magic; wraps.
    ioCompressTableImpl* table_ = nullptr; ///< The strings; owned, writer only.
    String* stringTable_ = nullptr;        ///< The strings by code; owned, reader only.
    char* decodeStack_ = nullptr;          ///< Strings that do not fit; owned, reader only.
    /// The codes being filled or emptied: 16 bytes, and 4 that words at its end reach into. Bits
    /// that no code covers keep what they held before, and are written like that.
    unsigned char group_[20] = {};
    bool regular_ = true; ///< No code since the last clear was one that no writer makes.
};

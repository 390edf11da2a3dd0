// SPDX-License-Identifier: MIT

/// @file
/// The sink over a part of a file, read as if it were a whole file: how an entry of a package is
/// read in place. ioBufferedStreamInput::openFileSlice() makes a stream over it.
///
/// Threads: a link belongs to one thread at a time, together with its chain.
///
/// @code
/// #include <cstdio>
/// #include <fstream>
/// #include "Base/Strings/zeStringIString.h"
/// std::ofstream("slice-example.txt") << "one two three";
/// ioBufferFileSubset slice;
/// slice.open(L"slice-example.txt", 4, 3);
/// char text[8];
/// assert(slice.readData(text, 8) == 3 && text[0] == 't' && text[2] == 'o');
/// assert(slice.getStatus() == ioBuffer::bufferEOF);
/// slice.close();
/// std::remove("slice-example.txt");
/// @endcode

#pragma once

#include "Base/IO/ioBufferFD.h"
#include "Base/IO/ioBufferLink.h"

/// The sink over `size` bytes of a file from `offset` on, with a block of 4096 bytes. It only
/// reads. Positions are those in the slice.
class ZEBASE_API ioBufferFileSubset : public ioBuffer {
public:
    /// A link without a file: call open().
    ioBufferFileSubset();

    /// Leaves the file open.
    ~ioBufferFileSubset() override;

    /// Moves within the slice; true on success. The end of the slice is refused, as is what lies
    /// behind it: false, and the status is bufferEOF. So no position of an empty slice is accepted.
    /// The block is not touched.
    bool seek(long position) override;

    /// The file's position in the slice. It differs from that of the next byte by what is in the
    /// block.
    long tell() override;

    int getType() override;

    /// Closes the file. A failure is not reported.
    void close() override;

    /// bufferEOF and 0 at the end of the slice, or of a file that has become shorter than the
    /// slice; bufferIOError and -1 on failure.
    int read(char* destination, int n) override;

    /// Does nothing.
    void write(const char* source, int n) override;

    /// The number of bytes in the slice; 0 before open().
    long size() const { return sliceSize_; }

    /// Opens the slice at its start. bufferOpenError if the file cannot be opened. bufferEOF, with
    /// nothing to read, if the slice is empty, if offset or size is negative, or if the file does
    /// not hold the whole slice. bufferIOError if that cannot be told, or its start not be reached.
    /// A file held before is forgotten, not closed.
    void open(const zeString::IString& path, long offset, long size);

private:
    ioBufferFD file_;
    long offset_ = 0;
    long sliceSize_ = 0;
    long slicePosition_ = -1; ///< -1 means unknown.
};

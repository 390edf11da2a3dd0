// SPDX-License-Identifier: MIT

/// @file
/// The streams of the standard library over any byte stream: files, memory, sockets.
///
/// zeOS::StdInput is a `std::istream` and zeOS::StdOutput a `std::ostream` over a zeOS::IOStream,
/// for code that knows only those; zeOS::StdStreamBuf is what they read and write through, in both
/// directions, for a `std::iostream` of one's own. None owns the IOStream, which must outlive it.
/// Over a chain of buffers, Base/IO/ioStdStream.h gives the same.
///
/// **Errors.** The last error of the IOStream is kept: error().
/// - A failed write sets badbit. What was not taken stays in the buffer, and is written first after
///   a clear().
/// - Input ends (eofbit, and failbit where something was asked for) where a read gives an error and
///   no byte, or neither. Byte streams have no code for their end in common: pass the one of this
///   stream as `endCode`, and any other error sets badbit in place of eofbit. It is
///   File::ErrEndOfFile for a File, 1 for a MemoryIOStream, 4 for a socket. Through a
///   StdStreamBuf alone, such an error is thrown as `std::ios_base::failure`, as
///   `std::filebuf` does; a `std::istream` catches it.
///
/// **Blocks.** Input is read ahead in blocks; what was read ahead is lost with the adapter. A
/// socket waits until it can fill the whole block: in a dialogue, choose a block of 1 byte. Output
/// goes to the IOStream when a block is full, at flush(), and at the end, when an error can no
/// longer be seen. The last byte read can always be put back.
///
/// **Seeking** is not possible, as an IOStream has no positions: seekg() and seekp() fail. tellg()
/// and tellp() give the number of bytes that passed through the adapter.
///
/// Threads: an adapter and its byte stream belong to one thread at a time.
///
/// @code
/// #include <string>
/// #include "Base/OS/zeOSMemoryIOStream.h"
/// zeOS::MemoryIOStream memory(4096, nullptr);
/// memory.openForWrite();
/// zeOS::StdOutput out(memory);
/// out << "width " << 640 << std::endl;
/// assert(out && out.error().ok());
/// memory.openForRead();
/// zeOS::StdInput in(memory, 1);
/// std::string word;
/// int width = 0;
/// assert(in >> word >> width && word == "width" && width == 640);
/// @endcode

#pragma once

#include <cstddef>
#include <istream>
#include <ostream>
#include <streambuf>
#include <string>

#include "Base/OS/zeOSIOStream.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// The buffer of a standard stream over an IOStream, in both directions.
class ZEBASE_API StdStreamBuf : public std::streambuf {
public:
    /// As `endCode`: every error without bytes is the end.
    static constexpr int anyError = -1;

    /// `stream` is not owned. `endCode` is the code by which it reports its end. Blocks of
    /// `blockSize` bytes, from 1 to 2^30, are allocated on first use, one for each direction.
    explicit StdStreamBuf(IOStream& stream, int endCode = anyError, std::size_t blockSize = 4096);
    StdStreamBuf(const StdStreamBuf&) = delete;            ///< Make one when it is needed.
    StdStreamBuf& operator=(const StdStreamBuf&) = delete; ///< Make one when it is needed.
    /// Writes what is left; an error is lost.
    ~StdStreamBuf() override;

    /// The last error of the byte stream, its end included.
    const zeUtil::Error& error() const { return error_; }

protected:
    /// The next block.
    int_type underflow() override;
    /// Makes room, or writes one byte.
    int_type overflow(int_type c) override;
    /// Writes many bytes at once; fewer are counted where that failed.
    std::streamsize xsputn(const char* bytes, std::streamsize count) override;
    /// Flushes; -1 where that failed.
    int sync() override;
    /// See the top of the file.
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode which) override;

private:
    ZEBASE_HIDDEN bool writeOut();

    IOStream* stream_;
    int endCode_;
    std::size_t blockSize_;
    std::string input_; // the blocks; empty until they are used
    std::string output_;
    off_type read_ = 0;    // bytes that the blocks of input have held, the current one included
    off_type written_ = 0; // bytes that the byte stream took
    zeUtil::Error error_;
};

/// A `std::istream` over an IOStream.
class ZEBASE_API StdInput : public std::istream {
public:
    /// See StdStreamBuf.
    explicit StdInput(IOStream& stream, int endCode = StdStreamBuf::anyError,
                      std::size_t blockSize = 4096);
    ~StdInput() override;

    /// The last error of the byte stream, its end included.
    const zeUtil::Error& error() const { return buffer_.error(); }

private:
    StdStreamBuf buffer_;
};

/// A `std::ostream` over an IOStream. Flush it and look at its state before it goes: the destructor
/// writes what is left, but can report nothing.
class ZEBASE_API StdOutput : public std::ostream {
public:
    /// See StdStreamBuf.
    explicit StdOutput(IOStream& stream, std::size_t blockSize = 4096);
    ~StdOutput() override;

    /// The last error of the byte stream.
    const zeUtil::Error& error() const { return buffer_.error(); }

private:
    StdStreamBuf buffer_;
};

} // namespace zeOS

// SPDX-License-Identifier: MIT

/// @file
/// The streams of the standard library over a chain of buffers.
///
/// ioStdInput is a `std::istream` over an ioBufferedStreamInput and ioStdOutput a `std::ostream`
/// over an ioBufferedStreamOutput, for code that knows only those: other libraries' readers and
/// writers work on files, entries of packages and filtered sections. ioStdInputBuf and
/// ioStdOutputBuf are what they read and write through. None owns the stream, which must outlive it
/// and stay open.
///
/// **Nothing is held back.** Output goes into the chain at once. Input is taken from the chain's
/// own block, and what the code did not take is still there when the adapter goes, or at sync():
/// the next call of the stream gives the byte behind the last one taken. Between these two, the
/// stream must not be used in other ways. Bytes can be put back within the block only, so that
/// unget() right after a get() works, and after a peek() may fail. An input adapter sees the end of
/// a compressed section as its end (eofbit), so that a section in the midst of a file can be handed
/// to other code.
///
/// **Errors.** The status of the stream is the error: status(). A failed write or flush sets
/// badbit. streamEOF and streamCompressEnd set eofbit, and failbit where something was asked for.
/// Any other status sets badbit; through an ioStdInputBuf alone, it is thrown as
/// `std::ios_base::failure`, as `std::filebuf` does. A closed stream fails so, too.
///
/// **Positions** are those of ioBufferedStream::seek(). tellg(), seekg(), tellp() and seekp() work
/// where a file, or in reading a slice of a file, is on top of the chain; under a filter, in a pipe
/// and in other links they fail and change nothing. Other than the stream's own seek(), that of the
/// adapter leaves the end: after a clear(), reading goes on.
///
/// flush() and `std::endl` flush the whole chain, which under a filter ends a frame: write `'\n'`.
///
/// Threads: an adapter and its stream belong to one thread at a time.
///
/// @code
/// #include <string>
/// #include "Base/Strings/zeStringIString.h"
/// ioBufferedStreamOutput file;
/// file.openFile("ioStdStream-example");
/// file.compress(true);
/// {
///     ioStdOutput out(file);
///     out << "depth " << 1.5 << '\n';
///     assert(out && out.status() == streamOK);
/// }
/// file.compress(false);
/// file.writeString("plain");
/// file.close();
///
/// ioBufferedStreamInput again;
/// again.openFile("ioStdStream-example");
/// again.compress(true);
/// std::string line, more;
/// {
///     ioStdInput in(again);
///     assert(std::getline(in, line) && line == "depth 1.5");
///     assert(!std::getline(in, more) && in.eof() && !in.bad()); // the end of the section
/// }
/// again.compress(false);
/// assert(again.readChar() == 'p');
/// again.close();
/// @endcode

#pragma once

#include <istream>
#include <ostream>
#include <streambuf>

#include "Base/IO/ioBufferedStreamInput.h"
#include "Base/IO/ioBufferedStreamOutput.h"

/// The buffer of a standard stream that reads from a chain.
class ZEBASE_API ioStdInputBuf : public std::streambuf {
public:
    /// `stream` is not owned.
    explicit ioStdInputBuf(ioBufferedStreamInput& stream) : stream_(&stream) {}
    ioStdInputBuf(const ioStdInputBuf&) = delete;            ///< Make one when it is needed.
    ioStdInputBuf& operator=(const ioStdInputBuf&) = delete; ///< Make one when it is needed.
    /// Leaves the stream behind the last byte taken.
    ~ioStdInputBuf() override;

    /// That of the stream.
    ioStreamStatus status() const { return stream_->getStatus(); }

protected:
    /// The next block.
    int_type underflow() override;
    /// Leaves the stream behind the last byte taken.
    int sync() override;
    /// See the top of the file.
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode which) override;
    /// See the top of the file.
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

private:
    ZEBASE_HIDDEN void giveBack();
    ZEBASE_HIDDEN long position() const;
    ZEBASE_HIDDEN long end() const;
    ZEBASE_HIDDEN bool moveTo(long position);

    ioBufferedStreamInput* stream_;
};

/// The buffer of a standard stream that writes into a chain.
class ZEBASE_API ioStdOutputBuf : public std::streambuf {
public:
    /// `stream` is not owned.
    explicit ioStdOutputBuf(ioBufferedStreamOutput& stream) : stream_(&stream) {}
    ioStdOutputBuf(const ioStdOutputBuf&) = delete;            ///< Make one when it is needed.
    ioStdOutputBuf& operator=(const ioStdOutputBuf&) = delete; ///< Make one when it is needed.
    ~ioStdOutputBuf() override;

    /// That of the stream.
    ioStreamStatus status() const { return stream_->getStatus(); }

protected:
    /// Makes room, or writes one byte.
    int_type overflow(int_type c) override;
    /// Writes many bytes at once; fewer are counted where that failed.
    std::streamsize xsputn(const char* bytes, std::streamsize count) override;
    /// Flushes; -1 where that failed.
    int sync() override;
    /// See the top of the file.
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode which) override;
    /// See the top of the file.
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

private:
    ZEBASE_HIDDEN bool good() const;

    ioBufferedStreamOutput* stream_;
};

/// A `std::istream` over a chain.
class ZEBASE_API ioStdInput : public std::istream {
public:
    /// See ioStdInputBuf.
    explicit ioStdInput(ioBufferedStreamInput& stream);
    ~ioStdInput() override;

    /// That of the stream.
    ioStreamStatus status() const { return buffer_.status(); }

private:
    ioStdInputBuf buffer_;
};

/// A `std::ostream` over a chain. The bytes are in the chain when it goes; whether they reach the
/// file, the close() of the stream says.
class ZEBASE_API ioStdOutput : public std::ostream {
public:
    /// See ioStdOutputBuf.
    explicit ioStdOutput(ioBufferedStreamOutput& stream);
    ~ioStdOutput() override;

    /// That of the stream.
    ioStreamStatus status() const { return buffer_.status(); }

private:
    ioStdOutputBuf buffer_;
};

// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSStdStream.h"

#include <algorithm>
#include <cstring>
#include <ios>

#include "Base/OS/output/zeOSWriteAllImpl.h"

namespace zeOS {

namespace {

constexpr std::size_t maxBlockSize = 1 << 30; ///< an int holds places in a block

} // namespace

StdStreamBuf::StdStreamBuf(IOStream& stream, int endCode, std::size_t blockSize)
    : stream_(&stream),
      endCode_(endCode),
      blockSize_(std::clamp<std::size_t>(blockSize, 1, maxBlockSize)) {}

StdStreamBuf::~StdStreamBuf() {
    try {
        writeOut();
    } catch (...) { // of a byte stream that throws
    }
}

StdStreamBuf::int_type StdStreamBuf::underflow() {
    const bool anyTaken = eback() != gptr();
    const char last = anyTaken ? gptr()[-1] : '\0';
    input_.resize(1 + blockSize_); // the byte before the block can be put back
    char* const block = input_.data() + 1;
    unsigned long done = 0;
    zeUtil::Error result = stream_->read(block, blockSize_, &done);
    done = std::min<unsigned long>(done, blockSize_);
    block[-1] = last;
    setg(anyTaken ? block - 1 : block, block, block + done);
    read_ += static_cast<off_type>(done);
    const bool failed = !result.ok();
    if (failed)
        error_ = std::move(result);
    if (done > 0) // an error that came with bytes shows again at the next read
        return traits_type::to_int_type(*gptr());
    if (failed && endCode_ != anyError && error_.code() != endCode_)
        throw std::ios_base::failure(error_.message());
    return traits_type::eof();
}

StdStreamBuf::int_type StdStreamBuf::overflow(int_type c) {
    if (output_.empty()) {
        output_.resize(blockSize_);
        setp(output_.data(), output_.data() + blockSize_);
    } else if (!writeOut()) {
        return traits_type::eof();
    }
    if (!traits_type::eq_int_type(c, traits_type::eof()))
        sputc(traits_type::to_char_type(c));
    return traits_type::not_eof(c);
}

/// What fills a block goes past it, without a copy.
std::streamsize StdStreamBuf::xsputn(const char* bytes, std::streamsize count) {
    if (count < static_cast<std::streamsize>(blockSize_))
        return std::streambuf::xsputn(bytes, count);
    if (!writeOut())
        return 0;
    const std::size_t done = writeAll(*stream_, bytes, static_cast<std::size_t>(count), error_);
    written_ += static_cast<off_type>(done);
    return static_cast<std::streamsize>(done);
}

int StdStreamBuf::sync() {
    return writeOut() ? 0 : -1;
}

StdStreamBuf::pos_type StdStreamBuf::seekoff(off_type offset, std::ios_base::seekdir direction,
                                             std::ios_base::openmode which) {
    if (offset != 0 || direction != std::ios_base::cur)
        return pos_type(off_type(-1));
    return which & std::ios_base::in ? read_ - (egptr() - gptr()) : written_ + (pptr() - pbase());
}

/// Writes out the block; what the byte stream does not take stays at its start.
bool StdStreamBuf::writeOut() {
    const auto count = static_cast<std::size_t>(pptr() - pbase());
    if (count == 0)
        return true;
    const std::size_t done = writeAll(*stream_, pbase(), count, error_);
    std::memmove(pbase(), pbase() + done, count - done);
    setp(pbase(), epptr());
    pbump(static_cast<int>(count - done));
    written_ += static_cast<off_type>(done);
    return done == count;
}

StdInput::StdInput(IOStream& stream, int endCode, std::size_t blockSize)
    : std::istream(nullptr), buffer_(stream, endCode, blockSize) {
    rdbuf(&buffer_);
}

StdInput::~StdInput() = default;

StdOutput::StdOutput(IOStream& stream, std::size_t blockSize)
    : std::ostream(nullptr), buffer_(stream, StdStreamBuf::anyError, blockSize) {
    rdbuf(&buffer_);
}

StdOutput::~StdOutput() = default;

} // namespace zeOS

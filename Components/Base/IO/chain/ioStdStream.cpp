// SPDX-License-Identifier: MIT

#include "Base/IO/ioStdStream.h"

#include <algorithm>
#include <climits>
#include <ios>
#include <string>

#include "Base/IO/ioBufferFileSubset.h"

namespace {

using std::ios_base;

constexpr int typeOfFile = 0;
constexpr int typeOfSlice = 6;

const std::streambuf::pos_type failed(std::streambuf::off_type(-1));

/// `base` plus `offset`, or -1 if that is no position.
long moved(long base, std::streambuf::off_type offset) {
    const bool fits = base >= 0 && offset >= -base && offset <= LONG_MAX - base;
    return fits ? base + offset : -1;
}

} // namespace

ioStdInputBuf::~ioStdInputBuf() {
    giveBack();
}

/// The next block of the chain, in place.
ioStdInputBuf::int_type ioStdInputBuf::underflow() {
    giveBack();
    if (stream_->buffered().empty() && !stream_->fetchBlock()) {
        if (status() == streamEOF || status() == streamCompressEnd)
            return traits_type::eof();
        throw ios_base::failure("reading from a chain ended in status " +
                                std::to_string(int(status())));
    }
    const std::string_view block = stream_->buffered();
    char* const begin = const_cast<char*>(block.data()); // never written to: pbackfail() fails
    setg(begin, begin, begin + block.size());
    return traits_type::to_int_type(*begin);
}

int ioStdInputBuf::sync() {
    giveBack();
    return 0;
}

ioStdInputBuf::pos_type ioStdInputBuf::seekoff(off_type offset, ios_base::seekdir direction,
                                               ios_base::openmode which) {
    const long here = position();
    if (here < 0 || !(which & ios_base::in))
        return failed;
    if (offset == 0 && direction == ios_base::cur)
        return here;
    const long base = direction == ios_base::beg ? 0 : direction == ios_base::cur ? here : end();
    const long target = moved(base, offset);
    const bool inBlock =
        eback() && target >= here - (gptr() - eback()) && target <= here + (egptr() - gptr());
    if (inBlock && direction != ios_base::end) {
        setg(eback(), gptr() + (target - here), egptr());
        return target;
    }
    if (target >= 0 && moveTo(target))
        return target;
    moveTo(here);
    return failed;
}

ioStdInputBuf::pos_type ioStdInputBuf::seekpos(pos_type position, ios_base::openmode which) {
    return seekoff(position, ios_base::beg, which);
}

/// Tells the stream what was taken of its block, unless that is gone: the stream may be closed
/// first.
void ioStdInputBuf::giveBack() {
    if (stream_->buffered().data() == eback())
        stream_->skip(static_cast<int>(gptr() - eback()));
    setg(nullptr, nullptr, nullptr);
}

/// The position of the next byte to take, or -1 where the chain has none.
long ioStdInputBuf::position() const {
    ioBuffer* const top = stream_->top_;
    if (!top || (top->getType() != typeOfFile && top->getType() != typeOfSlice))
        return -1;
    const long behindBlock = top->tell();
    if (behindBlock < 0)
        return -1; // a pipe
    const long inBlock = static_cast<long>(stream_->buffered().size()) - (gptr() - eback());
    return behindBlock - inBlock;
}

/// The position behind the last byte, for a chain that has positions. Of a file it is moved there.
long ioStdInputBuf::end() const {
    ioBuffer* const top = stream_->top_;
    if (top->getType() == typeOfSlice)
        return static_cast<ioBufferFileSubset*>(top)->size();
    return top->seek(-1) ? top->tell() : -1;
}

bool ioStdInputBuf::moveTo(long position) {
    giveBack();
    ioBuffer* const top = stream_->top_;
    if (top->getStatus() == ioBuffer::bufferEOF) {
        top->setStatus(ioBuffer::bufferOK);
        stream_->resetStatus();
    }
    if (top->getType() != typeOfSlice || position < static_cast<ioBufferFileSubset*>(top)->size())
        return stream_->seek(position);
    // A slice refuses its end as a position: its last byte is taken instead.
    if (position > static_cast<ioBufferFileSubset*>(top)->size())
        return false;
    if (position > 0) {
        stream_->seek(position - 1);
        stream_->readChar();
    }
    return status() == streamOK;
}

ioStdOutputBuf::~ioStdOutputBuf() = default;

ioStdOutputBuf::int_type ioStdOutputBuf::overflow(int_type c) {
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        const char byte = traits_type::to_char_type(c);
        stream_->writeData(&byte, 1);
    }
    return good() ? traits_type::not_eof(c) : traits_type::eof();
}

/// How much of a failed write arrived is not known, so that it counts as nothing.
std::streamsize ioStdOutputBuf::xsputn(const char* bytes, std::streamsize count) {
    std::streamsize left = count;
    while (left > 0 && good()) {
        const int n = static_cast<int>(std::min<std::streamsize>(left, INT_MAX));
        stream_->writeData(bytes, n);
        bytes += n;
        left -= n;
    }
    return good() ? count : 0;
}

int ioStdOutputBuf::sync() {
    stream_->flush();
    return good() ? 0 : -1;
}

ioStdOutputBuf::pos_type ioStdOutputBuf::seekoff(off_type offset, ios_base::seekdir direction,
                                                 ios_base::openmode which) {
    if (!good() || !(which & ios_base::out) || stream_->top_->getType() != typeOfFile)
        return failed;
    const long here = stream_->tell(); // flushes
    stream_->promoteBufferStatus();
    if (here < 0 || (offset == 0 && direction == ios_base::cur))
        return here < 0 || !good() ? failed : pos_type(here);
    long base = direction == ios_base::cur ? here : 0;
    if (direction == ios_base::end)
        base = stream_->seek(-1) ? stream_->tell() : -1;
    const long target = moved(base, offset);
    if (target >= 0 && stream_->seek(target) && good())
        return target;
    stream_->seek(here);
    return failed;
}

ioStdOutputBuf::pos_type ioStdOutputBuf::seekpos(pos_type position, ios_base::openmode which) {
    return seekoff(position, ios_base::beg, which);
}

bool ioStdOutputBuf::good() const {
    return stream_->top_ && status() == streamOK;
}

ioStdInput::ioStdInput(ioBufferedStreamInput& stream) : std::istream(nullptr), buffer_(stream) {
    rdbuf(&buffer_);
}

ioStdInput::~ioStdInput() = default;

ioStdOutput::ioStdOutput(ioBufferedStreamOutput& stream) : std::ostream(nullptr), buffer_(stream) {
    rdbuf(&buffer_);
}

ioStdOutput::~ioStdOutput() = default;

// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferFileSubset.h"

#include <algorithm>
#include <climits>

#include "Base/IO/ioBufferedStream.h"
#include "Base/Strings/zeStringIString.h"

namespace {

constexpr int blockSize = 4096;

} // namespace

ioBufferFileSubset::ioBufferFileSubset() : ioBuffer(true, blockSize), file_(true) {}

ioBufferFileSubset::~ioBufferFileSubset() = default;

bool ioBufferFileSubset::seek(long position) {
    if (position >= sliceSize_) {
        slicePosition_ = -1;
        setStatus(bufferEOF);
        return false;
    }
    // A negative position would reach what lies before the slice, or the end of the file.
    const bool reached = position >= 0 && file_.seek(offset_ + position);
    slicePosition_ = reached ? position : -1;
    return reached;
}

long ioBufferFileSubset::tell() {
    return file_.tell() - offset_;
}

int ioBufferFileSubset::getType() {
    return 6;
}

void ioBufferFileSubset::close() {
    file_.close();
}

int ioBufferFileSubset::read(char* destination, int n) {
    if (!good())
        return -1;
    if (slicePosition_ < 0)
        slicePosition_ = tell();
    const long left = sliceSize_ - slicePosition_;
    if (slicePosition_ < 0 || std::min<long>(n, left) < 1) {
        setStatus(bufferEOF);
        return 0;
    }
    const int got = file_.read(destination, static_cast<int>(std::min<long>(n, left)));
    if (got < 1)
        setStatus(file_.getStatus());
    else
        slicePosition_ += got;
    return got;
}

void ioBufferFileSubset::write(const char*, int) {}

void ioBufferFileSubset::open(const zeString::IString& path, long offset, long size) {
    file_.open(path);
    // The numbers may come from a file: some are no slice of any file.
    const bool isSlice = offset >= 0 && size >= 0 && size <= LONG_MAX - offset;
    offset_ = isSlice ? offset : 0;
    sliceSize_ = isSlice ? size : 0;
    slicePosition_ = -1;
    setStatus(file_.getStatus());
    if (!good())
        return;
    const long fileSize = ioBufferedStream::fileSize(path);
    if (fileSize >= 0 && (!isSlice || offset + size > fileSize))
        setStatus(bufferEOF);
    else if (fileSize < 0 || (!seek(0) && good()))
        setStatus(bufferIOError);
}

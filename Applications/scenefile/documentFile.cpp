// SPDX-License-Identifier: MIT

#include "documentFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "failure.h"

namespace scenefile {

DocumentFile::DocumentFile(const std::string& path)
    : path_(path), descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (descriptor_ < 0)
        throw Failure(path_ + ": cannot be opened: " + systemMessage(errno));
    struct stat status = {};
    if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor_);
        throw Failure(path_ + ": cannot be read: not a regular file");
    }
    size_ = status.st_size;
}

DocumentFile::~DocumentFile() {
    close(descriptor_);
}

namespace {

/// What the hook of a stream reports to, which is a plain function.
thread_local Progress* s_progress = nullptr;

void reportBytes(int total) {
    s_progress->report(static_cast<unsigned int>(total));
}

} // namespace

/// The descriptor is the file's own, once more: whoever opens two streams reads the same file.
DocumentStream::DocumentStream(const DocumentFile& file, const char* what)
    : progress_(what, file.size()) {
    auto sink = std::make_unique<ioBufferFD>(true);
    sink->useFD(dup(file.descriptor()));
    sink->seek(0);
    addBufferToChain(sink.release());
    s_progress = &progress_;
    associateProgressFunction(reportBytes);
}

DocumentStream::~DocumentStream() {
    close();
}

} // namespace scenefile

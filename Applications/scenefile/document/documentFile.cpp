// SPDX-License-Identifier: MIT

#include "document/documentFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "Shared/failure.h"
#include "Shared/save.h"

namespace scenefile {

namespace {

/// A file that nobody else can reach, and that is gone when it is closed.
zeUtil::Descriptor namelessFile() {
    const char* folder = std::getenv("TMPDIR");
    std::string name = std::string(folder != nullptr ? folder : "/tmp") + "/scenefile.XXXXXX";
    zeUtil::Descriptor file(mkostemp(name.data(), O_CLOEXEC));
    if (file.isOpen())
        unlink(name.c_str());
    return file;
}

/// Not open if anything fails; errno says why.
zeUtil::Descriptor copyOfStandardInput() {
    zeUtil::Descriptor copy = namelessFile();
    char block[65536];
    for (ssize_t size = 1; copy.isOpen() && size != 0;) {
        size = zeUtil::retried([&] { return read(STDIN_FILENO, block, sizeof block); });
        if (size < 0 || !app::writeAll(copy.get(), {block, static_cast<std::size_t>(size)}))
            copy = zeUtil::Descriptor();
    }
    return copy;
}

zeUtil::Descriptor openDocument(const std::string& path) {
    if (path == app::standardStream)
        return copyOfStandardInput();
    return zeUtil::Descriptor(
        zeUtil::retried([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
}

} // namespace

DocumentFile::DocumentFile(const std::string& path)
    : name_(path == app::standardStream ? "standard input" : path),
      descriptor_(openDocument(path)) {
    if (!descriptor_.isOpen())
        throw app::Failure(name_ + ": cannot be opened: " + app::systemMessage(errno));
    struct stat status = {};
    if (fstat(descriptor_.get(), &status) != 0 || !S_ISREG(status.st_mode))
        throw app::Failure(name_ + ": cannot be read: not a regular file");
    size_ = status.st_size;
}

namespace {

/// The progress hook of a stream is a plain function: this is what it reports to.
thread_local app::Progress* s_progress = nullptr;

void reportBytes(int total) {
    s_progress->report(static_cast<unsigned int>(total));
}

} // namespace

/// The stream closes its descriptor: it gets one of its own.
DocumentStream::DocumentStream(const DocumentFile& file, const char* what)
    : progress_(what, file.size()) {
    auto sink = std::make_unique<ioBufferFD>(true);
    sink->useFD(app::duplicate(file.descriptor()).release());
    sink->seek(0);
    addBufferToChain(sink.release());
    s_progress = &progress_;
    associateProgressFunction(reportBytes);
}

DocumentStream::~DocumentStream() {
    close();
}

} // namespace scenefile

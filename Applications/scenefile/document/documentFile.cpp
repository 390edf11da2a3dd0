// SPDX-License-Identifier: MIT

#include "document/documentFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
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

std::string placeOf(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (!fs::exists(path, error))
        for (std::size_t colon = 0; (colon = path.find(':', colon)) != std::string::npos; ++colon) {
            const fs::file_status status = fs::status(path.substr(0, colon), error);
            if (fs::exists(status) && !fs::is_directory(status))
                return path.substr(0, colon);
        }
    return path;
}

DocumentFile::DocumentFile(const std::string& path)
    : name_(path == app::standardStream ? "standard input" : path) {
    const std::string place = placeOf(path);
    descriptor_ = openDocument(place);
    if (!descriptor_.isOpen())
        throw app::Failure(name_ + ": cannot be opened: " + app::systemMessage(errno));
    struct stat status = {};
    if (fstat(descriptor_.get(), &status) != 0 || !S_ISREG(status.st_mode))
        throw app::Failure(name_ + ": cannot be read: not a regular file");
    size_ = status.st_size;
    if (place.size() < path.size())
        openEntry(place, path.substr(place.size() + 1));
}

/// The package is opened through its descriptor, here and for each stream: what is checked is what
/// is read, even if the package is replaced meanwhile.
void DocumentFile::openEntry(const std::string& package, const std::string& name) {
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor_.get());
    if (package_.open(path.c_str()).code() != 0)
        throw app::Failure(package + ": is not a package, or its directory of entries is damaged");
    entry_ = package_.getEntry(zeString::IString(name.c_str(), zeString::EncodingUTF8));
    if (entry_ == nullptr)
        throw app::Failure(package + ": has no entry " + name);
    size_ = entry_->getSize();
}

namespace {

/// The progress hook of a stream is a plain function: this is what it reports to.
thread_local app::Progress* s_progress = nullptr;

void reportBytes(int total) {
    s_progress->report(static_cast<unsigned int>(total));
}

} // namespace

DocumentStream::DocumentStream(const DocumentFile& file, const char* what)
    : progress_(what, file.size()) {
    if (file.entry() != nullptr) {
        openPackageFileEntry(file.entry());
    } else { // the stream closes its descriptor: it gets one of its own
        auto sink = std::make_unique<ioBufferFD>(true);
        sink->useFD(app::duplicate(file.descriptor()).release());
        sink->seek(0);
        addBufferToChain(sink.release());
    }
    s_progress = &progress_;
    associateProgressFunction(reportBytes);
    if (file.isCompressed()) {
        compress(true);
        checksum(true);
    }
}

DocumentStream::~DocumentStream() {
    close();
}

} // namespace scenefile

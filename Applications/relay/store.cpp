// SPDX-License-Identifier: MIT

#include "relay/store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <vector>

#include "Base/IO/ioPacketFile.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/save.h"
#include "relay/protocol.h"

namespace relay {

namespace {

namespace fs = std::filesystem;
using zeUtil::Descriptor;
using zeUtil::retried;

/// A path to the open folder, whatever becomes of its name.
std::string placeOf(const Descriptor& folder) {
    return "/proc/self/fd/" + std::to_string(folder.get());
}

/// The names of the regular files in the folder, sorted.
std::vector<std::string> filesIn(const Descriptor& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(placeOf(folder), error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code isGone;
        if (fs::is_regular_file(entry->symlink_status(isGone)))
            names.push_back(entry->path().filename());
    }
    if (error)
        throw app::Failure("the folder cannot be read: " + error.message());
    std::sort(names.begin(), names.end());
    return names;
}

/// Under this name uploads are completed, one at a time. No document can have it.
constexpr const char* place = ".relay";

/// What a ProtectedWrite makes on the way to the place has the same first 5 bytes.
bool isUnfinished(std::string_view name) {
    return name == place ||
           (name.starts_with(".rela") && (name.ends_with(".0.tmp") || name.ends_with(".1.tmp")));
}

[[noreturn]] void failToKeep() {
    throw app::Failure("the document cannot be kept: " + app::systemMessage(errno));
}

} // namespace

/// A file of text may have the end of its last line.
bool isDocument(int descriptor) {
    ioBufferedStreamInput stream;
    auto source = std::make_unique<ioBufferFD>(true); // it closes its descriptor
    source->useFD(app::duplicate(descriptor).release());
    source->seek(0);
    stream.addBufferToChain(source.release());
    bool isWhole = ioPacketFileCheck(stream) == ioOK;
    if (isWhole && stream.readChar() == '\n')
        stream.readChar();
    isWhole = isWhole && stream.getStatus() == streamEOF;
    stream.close();
    return isWhole;
}

Store::Store(const std::string& folder)
    : folder_(retried([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); })) {
    if (!folder_.isOpen())
        throw app::Failure(folder + ": cannot be opened: " + app::systemMessage(errno));
    if (retried([&] { return flock(folder_.get(), LOCK_EX | LOCK_NB); }) != 0)
        throw app::Failure(app::message("relay.locked", "{1}: another server has it", {folder}));
    for (const std::string& name : filesIn(folder_))
        if (isUnfinished(name))
            unlinkat(folder_.get(), name.c_str(), 0);
}

OpenDocument Store::open(const std::string& name) const {
    OpenDocument document{Descriptor(retried([&] {
        return openat(folder_.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    }))};
    struct stat status = {};
    if (!document.file.isOpen() || fstat(document.file.get(), &status) != 0 ||
        !S_ISREG(status.st_mode))
        throw app::Failure("there is no such document");
    document.size = static_cast<std::uint64_t>(status.st_size);
    return document;
}

std::string Store::list() const {
    std::string lines;
    for (const std::string& name : filesIn(folder_)) {
        struct stat status = {};
        if (nameFault(name) == nullptr &&
            fstatat(folder_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
            lines += std::to_string(status.st_size) + " " + name + "\n";
    }
    return lines;
}

Upload::Upload(const Store& store, const std::string& name)
    : folder_(store.folder_.get()),
      name_(name),
      save_(app::libraryFilename(placeOf(store.folder_) + "/" + place)) {
    if (!save_.init())
        throw app::Failure("the document cannot be kept");
    const std::string path = save_.getTempFilename().path().asUTF8();
    file_ = Descriptor(retried([&] {
        return open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    }));
    if (!file_.isOpen())
        failToKeep();
}

void Upload::write(std::string_view bytes) {
    if (!app::writeAll(file_.get(), bytes))
        failToKeep();
}

/// A protected write of the document itself would move the old one aside for a moment: a server
/// killed then would come back without it. So the new one is completed in a place of its own, and
/// one rename, which replaces, does the rest.
void Upload::finish() {
    if (!isDocument(file_.get()))
        throw app::Failure("this is no document, or it is damaged or cut off");
    if (file_.close() != 0)
        failToKeep();
    if (!save_.finalize())
        throw app::Failure("the document cannot be kept");
    if (renameat(folder_, place, folder_, name_.c_str()) != 0) {
        const int reason = errno;
        unlinkat(folder_, place, 0);
        errno = reason;
        failToKeep();
    }
    retried([&] { return fsync(folder_); }); // late failures are no reason to go back
}

} // namespace relay

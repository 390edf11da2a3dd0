// SPDX-License-Identifier: MIT

#include "replaceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

#include "Base/OS/zeOSProtectedWrite.h"

#include "failure.h"
#include "fileName.h"
#include "interruption.h"

namespace scenefile {

namespace {

using zeOS::ProtectedWrite;

[[noreturn]] void failSystem() {
    throw Failure(systemMessage(errno));
}

/// The rights of the file that is replaced, or those that a new one usually gets.
mode_t finalRights(const std::string& place) {
    struct stat status = {};
    if (stat(place.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode))
            throw Failure("not a regular file");
        return status.st_mode & 07777;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

/// A new file, which nobody else may read until it has its final rights.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& name)
        : descriptor_(open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {
        if (descriptor_ < 0)
            failSystem();
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (descriptor_ >= 0)
            close(descriptor_);
    }

    int descriptor() const { return descriptor_; }

    /// Only when all of this went well is the content known to be on disk.
    void complete(mode_t rights) {
        if (fchmod(descriptor_, rights) != 0 || fsync(descriptor_) != 0)
            failSystem();
        if (close(std::exchange(descriptor_, -1)) != 0)
            failSystem();
    }

private:
    int descriptor_;
};

/// Why a save could not be begun, or ended.
const char* reason(int status) {
    switch (status) {
    case ProtectedWrite::StatusTempDirCreated:
        return "the temporary directory was missing; it is there now: try again";
    case ProtectedWrite::StatusTempNotDirectory:
        return "what should be the temporary directory is a file";
    case ProtectedWrite::StatusCannotClearTemp:
        return "there is no name for a temporary file";
    case ProtectedWrite::StatusTempMissing:
        return "the temporary file was taken away";
    case ProtectedWrite::StatusCannotBackup:
        return "the old file cannot be moved aside";
    default:
        return "the new file cannot be put in its place";
    }
}

/// Puts the new file in its place. If the environment asks for copies, these have the rights of any
/// new file: they are nobody else's until the file has its own again.
bool finish(ProtectedWrite& save, const std::string& place, mode_t rights) {
    const mode_t mask = umask(077);
    const bool isDone = save.finalize();
    umask(mask);
    chmod(place.c_str(), rights);
    return isDone;
}

void replacePlace(const std::string& place, const std::function<void(int)>& write) {
    const mode_t rights = finalRights(place);
    ProtectedWrite save(fileName(place));
    if (!save.init())
        throw Failure(save.getStatus() == ProtectedWrite::StatusNotWritable
                          ? systemMessage(EACCES)
                          : reason(save.getStatus()));
    // From here on every exception abandons the save: its destructor removes the temporary file.
    const std::string temporary = save.getTempFilename().path().asUTF8();
    TemporaryFile file(temporary);
    Interruption interruption(temporary);
    write(file.descriptor());
    file.complete(rights);
    interruption.holdBack();
    if (!finish(save, place, rights))
        throw Failure(reason(save.getStatus()));
}

} // namespace

void replaceFile(const std::string& target, const std::function<void(int)>& write) {
    try {
        // A link is followed, so that it is what it points at that is replaced.
        replacePlace(std::filesystem::weakly_canonical(target).string(), write);
    } catch (const std::filesystem::filesystem_error& error) {
        throw Failure(target + ": cannot be written: " + error.code().message());
    } catch (const Failure& failure) {
        throw Failure(target + ": cannot be written: " + failure.what());
    }
}

} // namespace scenefile

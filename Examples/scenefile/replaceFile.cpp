// SPDX-License-Identifier: MIT

#include "replaceFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "failure.h"

namespace scenefile {

namespace {

[[noreturn]] void failSystem() {
    throw Failure("cannot be written: " + systemMessage(errno));
}

/// The rights of the file that is replaced, or those that a new one usually gets.
mode_t finalRights(const std::string& place) {
    struct stat status = {};
    if (stat(place.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode))
            throw Failure("cannot be written: not a regular file");
        return status.st_mode & 07777;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

/// Removes the temporary file unless it was put in place.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& place)
        : path_(place + ".XXXXXX"), descriptor_(mkstemp(path_.data())) {
        if (descriptor_ < 0)
            failSystem();
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        close(descriptor_);
        if (!path_.empty())
            unlink(path_.c_str());
    }

    int descriptor() const { return descriptor_; }

    void moveTo(const std::string& place, mode_t rights) {
        if (fchmod(descriptor_, rights) != 0 || fsync(descriptor_) != 0 ||
            std::rename(path_.c_str(), place.c_str()) != 0)
            failSystem();
        path_.clear();
    }

private:
    std::string path_;
    int descriptor_;
};

} // namespace

void replaceFile(const std::string& target, const std::function<void(int)>& write) {
    try {
        // A link is followed, so that it is what it points at that is replaced.
        const std::string place = std::filesystem::weakly_canonical(target).string();
        const mode_t rights = finalRights(place);
        TemporaryFile file(place);
        write(file.descriptor());
        file.moveTo(place, rights);
    } catch (const std::filesystem::filesystem_error& error) {
        throw Failure(target + ": cannot be written: " + error.code().message());
    } catch (const Failure& failure) {
        throw Failure(target + ": " + failure.what());
    }
}

} // namespace scenefile

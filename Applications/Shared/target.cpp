// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <tuple>

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/save.h"

namespace app {

namespace {

namespace fs = std::filesystem;

std::optional<struct stat> look(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return status;
}

bool isSame(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// The path without links. What a link points at may be missing: it is made then.
std::string withoutLinks(const std::string& path, bool exists, std::error_code& error) {
    if (exists)
        return fs::canonical(path, error);
    const fs::path given(path);
    const fs::path folder = given.has_parent_path() ? given.parent_path() : ".";
    std::error_code isNoLink;
    const fs::path target = fs::read_symlink(given, isNoLink);
    if (!isNoLink)
        return withoutLinks(folder / target, false, error);
    return fs::canonical(folder, error) / given.filename();
}

} // namespace

Target::Target(const std::string& path)
    : name_(path), path_(path), isStandardOutput_(path == standardStream) {
    if (isStandardOutput_) {
        name_ = message("shared.standard_output", "standard output");
        return;
    }
    before_ = look(path);
    error_ = before_ || (errno == ENOENT && !path.empty()) ? 0 : errno;
    if (error_ == 0) {
        std::error_code error;
        path_ = withoutLinks(path, before_.has_value(), error);
        error_ = error.value();
    }
}

bool Target::isSameFile(const std::string& other) const {
    const std::optional<struct stat> found = before_ ? look(other) : std::nullopt;
    return found && isSame(*found, *before_);
}

bool Target::isSameFile(int other) const {
    struct stat found = {};
    return before_ && fstat(other, &found) == 0 && isSame(found, *before_);
}

/// A file that replaced it has another number, and a changed one another time.
bool Target::isAsItWas() const {
    const auto identity = [](const struct stat& file) {
        return std::tuple(file.st_dev, file.st_ino, file.st_size, file.st_mtim.tv_sec,
                          file.st_mtim.tv_nsec);
    };
    const std::optional<struct stat> now = before_ ? look(path_) : std::nullopt;
    return now && identity(*now) == identity(*before_);
}

bool Target::isUntouched() const {
    return before_ ? isAsItWas() : !look(path_);
}

std::string Target::path() const {
    if (error_ != 0)
        throw Failure(systemMessage(error_));
    return path_;
}

/// Those of the file that is replaced, or those that a new file usually gets.
mode_t Target::rights() const {
    if (before_ && !S_ISREG(before_->st_mode))
        throw Failure(message("shared.not_regular", "not a regular file"));
    if (before_)
        return before_->st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written =
            zeUtil::retried([&] { return write(descriptor, bytes.data(), bytes.size()); });
        if (written < 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

zeUtil::Descriptor duplicate(int descriptor) {
    zeUtil::Descriptor result(fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    if (!result.isOpen())
        throw Failure(systemMessage(errno));
    return result;
}

zeOS::Filename libraryFilename(const std::string& path) {
    bool ok = false;
    const zeString::IString text(path.c_str(), zeString::EncodingUTF8, &ok);
    if (!ok)
        throw Failure(message("shared.name_not_utf8", "its name is not UTF-8"));
    return zeOS::Filename(text);
}

} // namespace app

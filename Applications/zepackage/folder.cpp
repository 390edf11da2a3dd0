// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "Base/IO/ioPackageFile.h"

#include "Shared/failure.h"
#include "package.h"
#include "sources.h"

namespace zepackage {

namespace {

using zeUtil::Descriptor;

/// The names of the folders that lead to the file, and its own as the last of them. A package from
/// elsewhere can hold any name.
std::vector<std::string> stepsOf(const std::string& name) {
    const std::string clean = ioPackageFile::cleanupName(libraryText(name)).asUTF8();
    std::vector<std::string> steps;
    for (const auto& part : std::filesystem::path(clean)) {
        if (part == "..")
            throw app::Failure(name + ": left out: its name leads to another folder");
        if (!part.empty() && part != "." && part != "/")
            steps.push_back(part);
    }
    if (steps.empty())
        throw app::Failure(name + ": left out: its name is no name of a file");
    return steps;
}

[[noreturn]] void fail(const std::string& name) {
    throw app::Failure(name + ": cannot be made: " + app::systemMessage(errno));
}

} // namespace

Folder::Folder(const std::string& path)
    : root_(
          zeUtil::retried([&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); })) {
    if (!root_.isOpen())
        throw app::Failure(path + ": cannot be opened: " + app::systemMessage(errno));
}

/// Opens the folder `step`, which is made if it is missing.
Descriptor Folder::enter(int folder, const std::string& step, const std::string& name) {
    if (mkdirat(folder, step.c_str(), 0777) != 0 && errno != EEXIST)
        fail(name);
    Descriptor result(zeUtil::retried([&] {
        return openat(folder, step.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }));
    if (!result.isOpen() && (errno == ENOTDIR || errno == ELOOP))
        throw app::Failure(name + ": cannot be made: " + step +
                           " is a link or a file where a folder must be");
    if (!result.isOpen())
        fail(name);
    return result;
}

/// Entries of one folder follow one another: the folder of the last one is kept open.
void Folder::enterParent(const std::vector<std::string>& steps, const std::string& name) {
    if (steps == steps_)
        return;
    Descriptor folder;
    for (const std::string& step : steps)
        folder = enter(folder.isOpen() ? folder.get() : root_.get(), step, name);
    parent_ = std::move(folder);
    steps_ = steps;
}

Descriptor Folder::create(const std::string& name, bool replace) {
    std::vector<std::string> steps = stepsOf(name);
    file_ = steps.back();
    steps.pop_back();
    enterParent(steps, name);
    unfinished_ = replace ? ".zepackage-" + std::to_string(getpid()) : file_;
    if (replace && unlinkat(parent(), unfinished_.c_str(), 0) != 0 && errno != ENOENT)
        fail(name);
    // No signal between making the file and seeing to its deletion; and not the other way round: a
    // file that was there already must not be deleted.
    const app::HeldSignals held;
    Descriptor file(zeUtil::retried([&] {
        return openat(parent(), unfinished_.c_str(),
                      O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    }));
    if (!file.isOpen() && errno == EEXIST)
        throw app::Failure(name + ": exists already; --force replaces it");
    if (!file.isOpen())
        fail(name);
    interruption_.emplace("/proc/self/fd/" + std::to_string(parent()) + '/' + unfinished_);
    return file;
}

void Folder::finish(const std::string& name) {
    if (unfinished_ != file_ &&
        renameat(parent(), unfinished_.c_str(), parent(), file_.c_str()) != 0)
        fail(name);
    interruption_.reset();
}

void Folder::undo() {
    unlinkat(parent(), unfinished_.c_str(), 0);
    interruption_.reset();
}

} // namespace zepackage

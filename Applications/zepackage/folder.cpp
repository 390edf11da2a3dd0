// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "Base/IO/ioPackageFile.h"

#include "Shared/failure.h"
#include "package.h"
#include "sources.h"

namespace zepackage {

namespace {

using zeUtil::Descriptor;

/// The folders that lead to the file, and its own name as the last of them. A package from
/// elsewhere can hold any name.
std::vector<std::string> stepsOf(const std::string& name) {
    const std::string clean = ioPackageFile::cleanupName(libraryText(name)).asUTF8();
    std::vector<std::string> steps;
    for (std::size_t begin = 0, end = 0; begin <= clean.size(); begin = end + 1) {
        end = std::min(clean.find('/', begin), clean.size());
        const std::string step = clean.substr(begin, end - begin);
        if (step == "..")
            throw app::Failure(name + ": left out: its name leads to another folder");
        if (!step.empty() && step != ".")
            steps.push_back(step);
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
Descriptor Folder::enter(int folder, const std::string& step, const std::string& name) const {
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

Descriptor Folder::create(const std::string& name, bool replace) {
    std::vector<std::string> steps = stepsOf(name);
    file_ = steps.back();
    steps.pop_back();
    parent_ = Descriptor();
    for (const std::string& step : steps)
        parent_ = enter(parent_.isOpen() ? parent_.get() : root_.get(), step, name);
    const int parent = parent_.isOpen() ? parent_.get() : root_.get();
    if (replace && unlinkat(parent, file_.c_str(), 0) != 0 && errno != ENOENT)
        fail(name);
    Descriptor file(zeUtil::retried([&] {
        return openat(parent, file_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                      0666);
    }));
    if (!file.isOpen() && errno == EEXIST)
        throw app::Failure(name + ": exists already; --force replaces it");
    if (!file.isOpen())
        fail(name);
    return file;
}

void Folder::undo() {
    unlinkat(parent_.isOpen() ? parent_.get() : root_.get(), file_.c_str(), 0);
}

} // namespace zepackage

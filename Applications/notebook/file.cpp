// SPDX-License-Identifier: MIT

#include "notebook/file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "Base/Utility/zeUtilDescriptor.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/output.h"

namespace notebook {

namespace {

using app::Failure;
using app::message;

std::optional<Text> readText(const std::string& path, std::size_t limit) {
    const zeUtil::Descriptor file(zeUtil::retried(
        [&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
    if (!file.isOpen() && errno == ENOENT)
        return std::nullopt;
    struct stat status = {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0)
        throw Failure(message("notebook.not_opened", "{1}: cannot be opened: {2}",
                              {path, app::systemMessage(errno)}));
    if (!S_ISREG(status.st_mode))
        throw Failure(message("notebook.not_read", "{1}: cannot be read: {2}",
                              {path, message("shared.not_regular", "not a regular file")}));
    std::string bytes;
    auto size = static_cast<std::size_t>(status.st_size); // what is beyond the limit is not read
    for (ssize_t got = 1; got != 0 && size <= limit; size = bytes.size()) {
        char block[65536];
        got = zeUtil::retried([&] { return read(file.get(), block, sizeof block); });
        if (got < 0)
            throw Failure(message("notebook.not_read", "{1}: cannot be read: {2}",
                                  {path, app::systemMessage(errno)}));
        bytes.append(block, static_cast<std::size_t>(got));
    }
    if (size > limit)
        throw Failure(message("notebook.too_large",
                              "{1}: is larger than the {2} bytes that a text may have",
                              {path, std::to_string(limit)}));
    return Text(bytes);
}

void writeText(const Text& text, int descriptor) {
    constexpr std::size_t block = 65536;
    std::string bytes;
    const auto write = [&] {
        if (!app::writeAll(descriptor, bytes))
            throw Failure(app::systemMessage(errno));
        bytes.clear();
    };
    for (const std::string& line : text.lines()) {
        bytes.append(line).push_back('\n');
        if (bytes.size() > block && &line != &text.lines().back())
            write();
    }
    if (text.lacksLastLineEnd() && !bytes.empty())
        bytes.pop_back();
    write();
}

} // namespace

std::optional<Text> File::read(const std::string& name, std::size_t limit) {
    if (name == app::standardStream)
        throw Failure(message("notebook.no_stream", "standard input holds the commands"));
    app::libraryFilename(name); // or it could not be written
    const app::Step step("read", message("notebook.reading", "reading {1}", {name}));
    const app::Target target(name);
    std::optional<Text> text = readText(name, limit);
    name_ = name;
    target_ = target;
    return text;
}

void File::write(const Text& text, const std::string& name, bool isForced) {
    const bool isThis = name == name_ && target_;
    const app::Target target = isThis && !isForced ? *target_ : app::Target(name);
    if (!isThis && !isForced && target.exists())
        throw Failure(
            message("notebook.exists", "{1}: is there already: \"save!\" replaces it", {name}));
    const app::Step step("write", message("notebook.writing", "writing {1}", {target.name()}));
    app::saveFile(target, [&](int descriptor) { writeText(text, descriptor); });
    if (target.isStandardOutput())
        return;
    name_ = name;
    target_.emplace(name);
}

void File::refuse(const std::string& name) const {
    if (name == name_ || (target_ && target_->isSameFile(name)))
        throw Failure(message("notebook.own_file", "{1}: is the file of the text", {name}));
}

} // namespace notebook

// SPDX-License-Identifier: MIT

#include "notebook/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Base/Utility/zeUtilDescriptor.h"

#include "Shared/failure.h"
#include "Shared/interruption.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "Shared/terminal.h"

namespace notebook {

namespace {

using app::Failure;
using app::message;

void note(const std::string& text) {
    app::messages()(app::normal, "%s\n", app::visible(text).c_str());
}

std::string lineCount(const Text& text) {
    return std::to_string(text.lines().size());
}

[[noreturn]] void failToRead(const std::string& name, const std::string& reason) {
    throw Failure(message("notebook.not_read", "{1}: cannot be read: {2}", {name, reason}));
}

/// The content of a regular file; nothing if there is no file.
std::optional<std::string> readFile(const std::string& name) {
    const zeUtil::Descriptor file(zeUtil::retried(
        [&] { return open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
    if (!file.isOpen() && errno == ENOENT)
        return std::nullopt;
    struct stat status = {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0)
        failToRead(name, app::systemMessage(errno));
    if (!S_ISREG(status.st_mode))
        failToRead(name, message("shared.not_regular", "not a regular file"));
    std::string content;
    auto size = static_cast<std::size_t>(status.st_size); // what is too large is not read at all
    for (ssize_t got = 1; got != 0 && size <= Text::mostBytes; size = content.size()) {
        char block[65536];
        got = zeUtil::retried([&] { return read(file.get(), block, sizeof block); });
        if (got < 0)
            failToRead(name, app::systemMessage(errno));
        content.append(block, static_cast<std::size_t>(got));
    }
    if (size > Text::mostBytes)
        failToRead(name, app::systemMessage(EFBIG));
    return content;
}

template<class Call>
void saveUnbroken(const app::Target& target, const Call& call) {
    std::optional<app::HeldSignals> held;
    if (isatty(STDIN_FILENO) == 1)
        held.emplace();
    app::saveFile(target, call);
}

} // namespace

Text File::read(const std::string& name) {
    const app::Step step("read", message("notebook.reading", "reading {1}", {name}));
    const app::Target target(name);
    const std::optional<std::string> content = readFile(name);
    Text text(content.value_or(""));
    name_ = name;
    target_ = target;
    note(content ? message("notebook.opened", "{1}: {2} lines", {name, lineCount(text)})
                 : message("notebook.new", "{1}: a new file", {name}));
    for (const std::string& left : app::leftoverNotes(name))
        note(left);
    return text;
}

void File::write(const Text& text, const std::string& name) {
    const bool isThis = target_ && name == name_;
    const app::Target target = isThis ? *target_ : app::Target(name);
    if (!isThis && target.exists())
        throw Failure(message("notebook.exists", "{1}: is there already", {name}));
    const app::Step step("write", message("notebook.writing", "writing {1}", {target.name()}));
    save(target, text.content());
    if (target.isStandardOutput())
        return;
    name_ = name;
    target_.emplace(name);
    note(message("notebook.saved", "{1}: {2} lines written", {name, lineCount(text)}));
}

app::Target File::otherTarget(const std::string& name) const {
    if (name == name_ || (target_ && target_->isSameFile(name)))
        throw Failure(message("notebook.own_file", "{1}: is the file of the text", {name}));
    return app::Target(name);
}

void save(const app::Target& target, const std::string& bytes) {
    saveUnbroken(target, [&](int descriptor) {
        if (!app::writeAll(descriptor, bytes))
            throw Failure(app::systemMessage(errno));
    });
}

void save(const app::Target& target, const std::function<void(const std::string&)>& make) {
    saveUnbroken(target, make);
}

} // namespace notebook

// SPDX-License-Identifier: MIT

#include "notebook/text.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>

#include "Base/Utility/zeUtilDescriptor.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/save.h"

namespace notebook {

namespace {

std::ptrdiff_t offset(std::size_t index) {
    return static_cast<std::ptrdiff_t>(index);
}

/// Exchanges `count` lines at `first` with `others`. If memory is short, it throws before anything
/// has changed: what may throw comes first, and moving a string does not.
void exchangeLines(Lines& lines, std::size_t first, std::size_t count, Lines& others) {
    const std::size_t both = std::min(count, others.size());
    others.reserve(count);
    lines.insert(lines.begin() + offset(first + both),
                 std::make_move_iterator(others.begin() + offset(both)),
                 std::make_move_iterator(others.end()));
    const auto behind = lines.begin() + offset(first + others.size());
    others.resize(both);
    std::swap_ranges(others.begin(), others.end(), lines.begin() + offset(first));
    const auto end = behind + offset(count - both);
    others.insert(others.end(), std::make_move_iterator(behind), std::make_move_iterator(end));
    lines.erase(behind, end);
}

} // namespace

std::size_t sizeOf(const Lines& lines) {
    std::size_t size = lines.size();
    for (const std::string& line : lines)
        size += line.size();
    return size;
}

Text::Text(const std::string& bytes)
    : bytes_(bytes.size()), lacksLastLineEnd_(!bytes.empty() && bytes.back() != '\n') {
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t end = std::min(bytes.find('\n', at), bytes.size());
        lines_.push_back(bytes.substr(at, end - at));
        at = end + 1;
    }
    bytes_ += lacksLastLineEnd_;
}

bool Text::exchange(Patch& patch, std::size_t limit) {
    if (patch.at > lines_.size() || patch.count > lines_.size() - patch.at)
        return false;
    const auto first = lines_.begin() + offset(patch.at);
    std::size_t size = bytes_ + sizeOf(patch.lines) - patch.count;
    std::for_each(first, first + offset(patch.count),
                  [&](const std::string& line) { size -= line.size(); });
    if (size > bytes_ && size > limit)
        return false;
    const std::size_t count = patch.lines.size();
    try {
        exchangeLines(lines_, patch.at, patch.count, patch.lines);
    } catch (const std::bad_alloc&) {
        return false;
    }
    patch.count = count;
    bytes_ = size;
    std::swap(version_, patch.version);
    return true;
}

std::optional<Text> readText(const std::string& path, std::size_t limit) {
    using app::message;
    const zeUtil::Descriptor file(zeUtil::retried(
        [&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
    if (!file.isOpen() && errno == ENOENT)
        return std::nullopt;
    struct stat status = {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0)
        throw app::Failure(message("notebook.not_opened", "{1}: cannot be opened: {2}",
                                   {path, app::systemMessage(errno)}));
    if (!S_ISREG(status.st_mode))
        throw app::Failure(message("notebook.not_read", "{1}: cannot be read: {2}",
                                   {path, message("shared.not_regular", "not a regular file")}));
    std::string bytes;
    auto size = static_cast<std::size_t>(status.st_size); // what is beyond the limit is not read
    for (ssize_t got = 1; got != 0 && size <= limit; size = bytes.size()) {
        char block[65536];
        got = zeUtil::retried([&] { return read(file.get(), block, sizeof block); });
        if (got < 0)
            throw app::Failure(message("notebook.not_read", "{1}: cannot be read: {2}",
                                       {path, app::systemMessage(errno)}));
        bytes.append(block, static_cast<std::size_t>(got));
    }
    if (size > limit)
        throw app::Failure(message("notebook.too_large",
                                   "{1}: is larger than the {2} bytes that a text may have",
                                   {path, std::to_string(limit)}));
    return Text(bytes);
}

void writeText(const Text& text, int descriptor) {
    constexpr std::size_t block = 65536;
    std::string bytes;
    const auto write = [&] {
        if (!app::writeAll(descriptor, bytes))
            throw app::Failure(app::systemMessage(errno));
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

} // namespace notebook

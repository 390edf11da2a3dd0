// SPDX-License-Identifier: MIT

#include "notebook/text.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace notebook {

std::size_t sizeOf(const Lines& lines) {
    std::size_t size = lines.size();
    for (const std::string& line : lines)
        size += line.size();
    return size;
}

Text::Text(const std::string& content, std::size_t limit)
    : limit_(limit), lacksLastLineEnd_(!content.empty() && content.back() != '\n') {
    for (std::size_t at = 0; at < content.size();) {
        const std::size_t end = std::min(content.find('\n', at), content.size());
        lines_.push_back(content.substr(at, end - at));
        at = end + 1;
    }
    bytes_ = sizeOf(lines_);
}

std::string Text::content() const {
    std::string content;
    content.reserve(bytes_);
    for (const std::string& line : lines_)
        content.append(line).push_back('\n');
    if (lacksLastLineEnd_ && !content.empty())
        content.pop_back();
    return content;
}

/// What may throw comes first: moving strings into room that is there does not.
bool Text::exchange(Patch& patch) try {
    if (patch.at > lines_.size() || patch.count > lines_.size() - patch.at)
        return false;
    const std::size_t needed = lines_.size() + patch.lines.size();
    if (needed > lines_.capacity())
        lines_.reserve(std::max(needed, 2 * lines_.capacity()));
    Lines taken(patch.count);
    const auto first = lines_.begin() + static_cast<std::ptrdiff_t>(patch.at);
    const auto end = first + static_cast<std::ptrdiff_t>(patch.count);
    std::size_t bytes = bytes_ + sizeOf(patch.lines) - patch.count;
    std::for_each(first, end, [&](const std::string& line) { bytes -= line.size(); });
    if (bytes > limit_ && bytes > bytes_) // what is too large already may shrink
        return false;

    std::swap_ranges(first, end, taken.begin());
    lines_.insert(lines_.erase(first, end), std::make_move_iterator(patch.lines.begin()),
                  std::make_move_iterator(patch.lines.end()));
    patch.count = patch.lines.size();
    patch.lines = std::move(taken);
    bytes_ = bytes;
    ++changes_;
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace notebook

// SPDX-License-Identifier: MIT

#include "notebook/text.h"

#include <algorithm>
#include <iterator>
#include <new>

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

} // namespace notebook

// SPDX-License-Identifier: MIT

/// @file
/// The text: lines of bytes, which are changed by patches.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace notebook {

/// Bytes of any kind but newlines.
using Lines = std::vector<std::string>;

/// A change that is its own inverse: `lines` take the place of `count` lines from `at` on, which
/// move into the patch. It holds what the text does not.
struct Patch {
    std::size_t at = 0;
    std::size_t count = 0;
    Lines lines;
};

/// What the lines take in a file, each with its line end.
std::size_t sizeOf(const Lines& lines);

class Text {
public:
    /// What a text may grow to, in bytes.
    static constexpr std::size_t mostBytes = std::size_t{256} << 20;

    /// The lines of a file. A missing line end of the last line stays missing.
    explicit Text(const std::string& content = {}, std::size_t limit = mostBytes);
    /// The content of the file.
    std::string content() const;

    const Lines& lines() const { return lines_; }
    /// How often the text was changed.
    std::uint64_t changes() const { return changes_; }

    /// False, and nothing has changed, if the lines of the patch are not there, if the text would
    /// grow beyond its limit, or without memory.
    bool exchange(Patch& patch);

private:
    Lines lines_;
    std::size_t limit_;
    std::size_t bytes_;
    std::uint64_t changes_ = 0;
    bool lacksLastLineEnd_;
};

} // namespace notebook

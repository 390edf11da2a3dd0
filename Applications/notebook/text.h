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

/// A change that can be made and taken back: `lines` take the place of `count` lines from `at`, and
/// those move into the patch, so that it is its own inverse. It holds what the text does not.
struct Patch {
    std::size_t at = 0;
    std::size_t count = 0;
    Lines lines;
    std::uint64_t version = 0; ///< What the text is known as once this is applied.
};

/// What the lines take in a file, each with its line end.
std::size_t sizeOf(const Lines& lines);

class Text {
public:
    Text() = default;
    /// Lines as in a file: the last line end may be missing, and then stays so.
    explicit Text(const std::string& bytes);

    const Lines& lines() const { return lines_; }
    std::size_t bytes() const { return bytes_; }
    std::uint64_t version() const { return version_; }
    bool lacksLastLineEnd() const { return lacksLastLineEnd_; }

    /// False, and nothing has changed, if the lines of the patch are not there, if the text would
    /// grow beyond `limit` bytes, or without memory.
    bool exchange(Patch& patch, std::size_t limit);

private:
    Lines lines_;
    std::size_t bytes_ = 0;
    std::uint64_t version_ = 0;
    bool lacksLastLineEnd_ = false;
};

} // namespace notebook

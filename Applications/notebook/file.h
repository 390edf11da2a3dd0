// SPDX-License-Identifier: MIT

/// @file
/// The file that the text comes from and goes to.

#pragma once

#include <optional>
#include <string>

#include "Shared/save.h"
#include "notebook/text.h"

namespace notebook {

/// Remembers the file as it was when it was read or written, so that changes by others are seen.
/// A call that throws a Failure leaves it as it was.
class File {
public:
    /// Empty as long as there is none.
    const std::string& name() const { return name_; }

    /// Reads the regular file `name`, of up to `limit` bytes, which becomes this one. Nothing, if
    /// it is a new one.
    std::optional<Text> read(const std::string& name, std::size_t limit);

    /// Writes the text into the file `name`, which becomes this one, or to standard output. This
    /// file is replaced only if nobody has changed it, another one not at all, unless forced.
    void write(const Text& text, const std::string& name, bool isForced);

    /// Throws a Failure for this file: what is made of the text must not take its place.
    void refuse(const std::string& name) const;

private:
    std::string name_;
    std::optional<app::Target> target_;
};

} // namespace notebook

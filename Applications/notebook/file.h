// SPDX-License-Identifier: MIT

/// @file
/// The file that the text comes from and goes to.

#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Shared/save.h"
#include "notebook/text.h"

namespace notebook {

/// Remembers the file as it was when it was read or written, so that changes by others are seen.
/// A call that throws a Failure leaves the file and what is remembered as they were.
class File {
public:
    /// Empty as long as there is none.
    const std::string& name() const { return name_; }

    /// Reads the regular file `name`, which becomes this one; without such a file the text is
    /// empty.
    Text read(const std::string& name);

    /// Writes the text into this file, unless somebody else has changed it, or into a new file,
    /// which becomes this one, or to standard output.
    void write(const Text& text, const std::string& name);

    /// What is to be made of the text. Throws a Failure for this file: it must not be replaced.
    app::Target otherTarget(const std::string& name) const;

private:
    std::string name_;
    std::optional<app::Target> target_;
};

/// @{
/// The same as app::saveFile(). At a terminal, no signal breaks it off: it would cost the text.
void save(const app::Target& target, const std::string& bytes);
void save(const app::Target& target, const std::function<void(const std::string&)>& make);
/// @}

} // namespace notebook

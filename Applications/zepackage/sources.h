// SPDX-License-Identifier: MIT

/// @file
/// The files that a package is made of, and the folder that its entries become.

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Base/Utility/zeUtilDescriptor.h"

#include "Shared/interruption.h"
#include "command.h"

namespace zepackage {

/// A file that becomes an entry.
struct Source {
    std::string path;
    std::int64_t size = 0;
};

/// By the names of the entries.
using Sources = std::map<std::string, Source>;

/// The files that the arguments name, and those in folders that they name. What is neither, and is
/// in a folder, is left out with a message: packages hold files alone. Throws a Failure for what
/// does not exist, and for files whose names cannot be kept, or become one.
Sources findSources(const Arguments& arguments);

/// A folder that entries are extracted to. Nothing outside of it is written, whatever the names of
/// the entries are, and no link below it is followed, whoever puts it there: each step of a name is
/// taken from an open folder (`openat`, `O_NOFOLLOW`).
class Folder {
public:
    /// Throws a Failure if it cannot be opened.
    explicit Folder(const std::string& path);

    /// Makes the file of that name, and the folders above it. What is there already is refused, or
    /// stays until finish() if `replace` is true: the new file has a name of its own till then. A
    /// signal that ends the program deletes an unfinished file. Throws a Failure.
    zeUtil::Descriptor create(const std::string& name, bool replace);
    /// Puts the file that create(name, ...) made in its place, now that it is complete. Throws a
    /// Failure.
    void finish(const std::string& name);
    /// Deletes what the last create() made.
    void undo();

private:
    static zeUtil::Descriptor enter(int folder, const std::string& step, const std::string& name);
    void enterParent(const std::vector<std::string>& steps, const std::string& name);
    int parent() const { return parent_.isOpen() ? parent_.get() : root_.get(); }

    zeUtil::Descriptor root_;
    zeUtil::Descriptor parent_;      // of the last file; not open if that is the root
    std::vector<std::string> steps_; // that lead to it
    std::string file_;               // its name there
    std::string unfinished_;         // its name until finish()
    std::optional<app::Interruption> interruption_;
};

} // namespace zepackage

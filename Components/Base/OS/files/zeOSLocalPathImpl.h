// SPDX-License-Identifier: MIT

/// @file
/// Names of local files, and what the system says about them.

#pragma once

#include <sys/types.h>

#include <optional>
#include <vector>

#include "Base/Strings/zeStringIString.h"

namespace zeOS {

/// The local path that a name stands for: the name itself, or what follows "file:", without
/// separators at its end and with one before it.
class LocalPath {
public:
    /// `name` must outlive the object.
    explicit LocalPath(const zeString::IString& name);

    const zeString::IString& text() const { return withoutScheme_ ? *withoutScheme_ : name_; }
    const char* asUTF8() const { return text().asUTF8(); }

private:
    const zeString::IString& name_;
    std::optional<zeString::IString> withoutScheme_;
};

/// The file type bits (`S_IFREG`, …) of what a path leads to; 0 if there is nothing, or it cannot
/// be looked at.
mode_t localFileType(const zeString::IString& path);

/// Whether there is a directory of that name; no answer if it cannot be asked.
std::optional<bool> findLocalDirectory(zeString::IString path);

/// The entries of a directory in the order of the disk, "." and ".." among them; none if it cannot
/// be opened. A byte order mark at the beginning of a name is kept, unlike in readDir().
std::vector<zeString::IString> localEntries(const zeString::IString& directory);

/// The names of localEntries() as readDir() promises them: decoded as UTF-8, and so without a byte
/// order mark, and with `prefix` in front.
std::vector<zeString::IString> decodedLocalEntries(const zeString::IString& directory,
                                                   const zeString::IString& prefix);

} // namespace zeOS

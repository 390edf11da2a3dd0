// SPDX-License-Identifier: MIT

/// @file
/// Writing a file whole or not at all.

#pragma once

#include <sys/stat.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Base/OS/zeOSFilename.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace app {

/// The name of standard input and standard output among the files of a command.
inline constexpr const char* standardStream = "-";

/// A file that is to be written: what is at its path is looked at once, on construction. A link is
/// followed, so that it is what it points at that is replaced.
class Target {
public:
    /// Throws nothing for a file that cannot be written: saveFile() does.
    explicit Target(const std::string& path);

    /// "standard output" for standardStream.
    const std::string& name() const { return name_; }
    bool isStandardOutput() const { return isStandardOutput_; }

    /// Whether there is something.
    bool exists() const { return before_.has_value(); }

    /// @{
    /// Whether the path `other` leads to the same file, or the descriptor is open on it.
    bool isSameFile(const std::string& other) const;
    bool isSameFile(int other) const;
    /// @}

    /// Whether the file existed, and has not been touched since.
    bool isAsItWas() const;
    /// The same, or there still is none.
    bool isUntouched() const;

private:
    friend void saveFile(const Target& target, const std::function<void(int)>& write);
    friend void saveFile(const Target& target, const std::function<void(const std::string&)>& make);

    std::string path() const;
    mode_t rights() const;

    std::string name_;
    std::string path_; // without links
    int error_ = 0;    // why there is no path without links
    bool isStandardOutput_;
    std::optional<struct stat> before_;
};

/// Calls `write` with the descriptor of an empty temporary file and, once it returns, puts that
/// file in the target's place, by a zeOS::ProtectedWrite. If anything fails, the temporary file is
/// removed, the target stays as it was, and a Failure that names the target is thrown. A target
/// that exists keeps its rights, and must be a regular file that may be written. One that another
/// program has made or changed since the Target was constructed stays as it is, with a Failure.
///
/// A signal that ends the program leaves the target as it was or complete; SIGKILL leaves the
/// temporary file as well: see leftoverNotes(). Standard output is written directly.
void saveFile(const Target& target, const std::function<void(int)>& write);

/// The same for a file that is written by its name: `make` gets a name that is not taken, in the
/// folder of the target, and has closed what it made there when it returns. Standard output has no
/// name.
void saveFile(const Target& target, const std::function<void(const std::string&)>& make);

/// A note for each file beside `path`, or what it links to, whose name a save of it could have
/// chosen: what a killed save left, or what another save is writing just now. Files of saves of
/// other documents are told apart by their first letters only.
std::vector<std::string> leftoverNotes(const std::string& path);

/// Writes all of it. False, with an errno, if that is not possible.
bool writeAll(int descriptor, std::string_view bytes);

/// A second descriptor of the same open file; close-on-exec. Throws a Failure.
zeUtil::Descriptor duplicate(int descriptor);

/// A path of the command line as the library takes it. Throws a Failure for one that is not UTF-8,
/// since it could only lead to another file.
zeOS::Filename libraryFilename(const std::string& path);

} // namespace app

// SPDX-License-Identifier: MIT

/// @file
/// An ordered list of directories in which a file is found, as a shell finds a command in "PATH".
///
/// Nothing here reports an error: what cannot be looked at counts as not there. Whether a file is
/// there is the answer of a moment; open the file to know more.
///
/// **What the directories say is what you get.** A directory of the list that others may write in
/// lets them choose what you find, and a relative one depends on the current directory at each
/// search. Build the list for plug-ins and programs from places that only their owner can change.
///
/// Threads: a SearchPath belongs to one thread at a time, since getDirectories() const writes a
/// cache.
///
/// @code
/// zeOS::SearchPath path;
/// path.initialize("/nowhere:/usr:/");
/// assert(path.getDirectories() == L"/usr:/"); // only what exists
/// assert(path.findFile("bin") == L"/usr/bin");
/// assert(path.findFile("./bin").isEmpty()); // looked for in the current directory alone
/// path.actLikeShell(false);
/// assert(path.findFile("./bin") == L"/usr/./bin");
/// @endcode

#pragma once

#include <vector>

#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// A list of directories, searched from the first to the last. A directory that is added twice is
/// searched twice; one that vanishes later stays in the list. Directories are kept and compared as
/// the texts that were given, so that "/usr" and "/usr/" are two.
class ZEBASE_API SearchPath {
public:
    /// No directories, with the separator `?` until initialize() gives another.
    SearchPath();
    /// @{
    /// The same directories, separator and flags.
    SearchPath(const SearchPath& other);
    SearchPath& operator=(const SearchPath& other);
    /// @}
    ~SearchPath();

    /// No directories are added; the separator becomes `:`.
    void initialize();
    /// initialize() with the separator `:`.
    void initialize(const zeString::IString& path);
    /// Takes over the separator, and **adds** each part of `path` between separators that is an
    /// existing directory now. The others, empty parts among them, are dropped.
    void initialize(const zeString::IString& path, wchar_t separator);
    /// Whether initialize() was called since the object was made or reset() was.
    bool initialized() const { return isInitialized_; }
    /// Forgets the directories and sets both flags as in a new object. The separator stays.
    void reset();
    /// Forgets the directories and nothing else.
    void clear();

    /// Whether findFile() treats names with a directory part as a shell does, which it does at
    /// first.
    void actLikeShell(bool shell) { shell_ = shell; }
    /// @copydoc actLikeShell(bool)
    bool actLikeShell() const { return shell_; }

    /// Adds an existing directory at the end. False if `dir` is no directory.
    bool addDirectoryToPath(const zeString::IString& dir);
    /// The same at the front.
    bool insertDirectoryInPath(const zeString::IString& dir);
    /// Removes the first directory of that text. False if there is none.
    bool removeDirectoryFromPath(const zeString::IString& dir);
    /// Whether there is a directory of that text.
    bool hasDirectory(const zeString::IString& dir) const;

    /// Puts the path of the file, or of whatever has that name, into `result`, which may be the
    /// string `name`; it is empty if there is nothing of that name.
    ///
    /// An absolute `name` is its own result, and is searched nowhere. So is one with a directory
    /// part (`a/b`, `./a`) while actLikeShell() is set: it is looked for from the current directory
    /// alone. A directory part is what zeOS::Filename::dirname() leaves after normalising, so that
    /// `a/` and `a/../b` have none. Every other name goes through searchFor().
    void findFile(zeString::IString& result, const zeString::IString& name) const;
    /// The same by value.
    zeString::IString findFile(const zeString::IString& name) const;
    /// The directory part of what findFile() finds; empty if that is empty.
    zeString::IString findDirectory(const zeString::IString& name) const;
    /// Puts the first path of a directory of the list and `name` that exists into `result`. **A
    /// `result` that is not empty stays as it is**, and nothing is searched, so that several lists
    /// can be searched one after the other. If nothing is found, it stays empty.
    void searchFor(zeString::IString& result, const zeString::IString& name) const;

    /// The directories with the separator between them. The reference is valid until the list
    /// changes.
    const zeString::IString& getDirectories() const;

private:
    ZEBASE_HIDDEN void join() const;

    std::vector<zeString::IString> directories_;
    mutable zeString::IString joined_; ///< Empty until it is asked for.
    wchar_t separator_ = L'?';
    bool shell_ = true;
    bool isInitialized_ = false;
};

} // namespace zeOS

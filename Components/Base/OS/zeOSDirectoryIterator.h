// SPDX-License-Identifier: MIT

/// @file
/// A walk through a directory and all that lies below it.
///
/// The walk goes level by level: the root comes first, and all entries of a directory come before
/// any entry of its subdirectories. "." and ".." are left out, and so is a symbolic link that leads
/// nowhere. A directory that cannot be read looks empty. Nothing is reported. What an entry is was
/// asked when its directory was read; it may have changed or gone since.
///
/// **Links to directories are followed**, so that a directory can be met under several names, and
/// what a link leads to may lie outside of the tree. A link that leads back up is followed until
/// the system refuses the path (after 40 links or 4096 bytes). Two of them, each of which doubles
/// what lies below the other, would make a walk without an end: once the names found in local
/// directories that had been entered three times before come to 16 million characters, such
/// directories look empty. So every walk of local files ends, but may be long: call prune() on
/// directories that you do not mean to enter. Another transport has to see to that itself.
///
/// **A root of one character** is met again as an entry of itself: below "." everything comes
/// twice, as "./a" and as "././a", and below "/" even three times. This is kept for compatibility;
/// give the full path of the directory instead of ".".
///
/// Names are decoded as UTF-8. A name that is not valid UTF-8 decodes to a text with "?" in it, and
/// one that begins with a byte order mark loses that: such an entry is left out, unless its decoded
/// name exists too.
///
/// Threads: a DirectoryIterator belongs to one thread at a time.
///
/// @code
/// bool found = false;
/// for (zeOS::DirectoryIterator it("/dev"); it.valid(); it.next()) {
///     if (it.getName() == L"/dev/null")
///         found = it.onFile();
///     if (it.getName() != L"/dev")
///         it.prune(); // what lies in /dev, and nothing below that
/// }
/// assert(found);
/// @endcode

#pragma once

#include <list>
#include <map>
#include <utility>

#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

class File;

/// The state of a walk: the entries that are still to be visited, the current one first. A copy
/// goes on from the same place by itself. Each entry costs one `stat` when its directory is
/// visited, and memory until its turn comes, so that the list grows with the width of the tree, not
/// its depth. Each directory costs a `stat` more, and some 50 bytes until the end of the walk.
///
/// All operations but valid() require that valid() is true.
class ZEBASE_API DirectoryIterator {
public:
    /// Stands on `root` itself, without the separators (`/` and `\`) at its end; not valid if there
    /// is nothing of that name. A file is a walk of one entry.
    explicit DirectoryIterator(const zeString::IString& root);
    virtual ~DirectoryIterator();
    /// @{
    /// A walk of its own from the same place.
    DirectoryIterator(const DirectoryIterator&) = default;
    DirectoryIterator& operator=(const DirectoryIterator&) = default;
    /// @}

    /// Whether there is a current entry.
    bool valid() const { return !entries_.empty(); }
    /// The root as given and the names below it, down to the current entry. Valid until next().
    const zeString::IString& getName() const { return entries_.front().name; }
    /// Whether the current entry is anything but a directory, so that a device or a socket is a
    /// file.
    bool onFile() const { return !entries_.front().isDirectory; }
    /// The opposite of onFile().
    bool onDirectory() const { return entries_.front().isDirectory; }
    /// Makes next() pass the current directory by without entering it.
    void prune() { entries_.front().pruned = true; }
    /// Reads the current directory, unless it was pruned, and goes on to the next entry.
    void next();

private:
    struct iteratorEntry {
        /// Takes the name over, and asks what is there.
        explicit iteratorEntry(zeString::IString&& fullName);

        zeString::IString name; ///< The full path.
        bool exists = false;
        bool isDirectory = false;
        bool pruned = false;
    };

    ZEBASE_HIDDEN void visit(const zeString::IString& directory);
    ZEBASE_HIDDEN bool isEnteredTooOften(const File& file);

    std::list<iteratorEntry> entries_; ///< The first to be visited at the front.
    /// How often each local directory was entered, by device and inode.
    std::map<std::pair<unsigned long, unsigned long>, unsigned int> visits_;
    unsigned long repeatedText_ = 0; ///< Characters of the names found by visits too many.
};

} // namespace zeOS

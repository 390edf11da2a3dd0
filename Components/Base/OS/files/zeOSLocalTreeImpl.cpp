// SPDX-License-Identifier: MIT

#include "Base/OS/files/zeOSLocalTreeImpl.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/OS/files/zeOSFileFactoryImpl.h"
#include "Base/OS/files/zeOSLocalFileTransportImpl.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeOS {
namespace {

using zeString::IString;

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

/// Null, with errno, if `name` is no directory, or one that cannot be read.
Directory openDirectory(int parent, const char* name, int linkFlag) {
    const int flags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC | linkFlag;
    zeUtil::Descriptor fd(zeUtil::retried([&] { return ::openat(parent, name, flags); }));
    Directory directory(fd.isOpen() ? ::fdopendir(fd.get()) : nullptr);
    if (directory)
        fd.release(); // closed with the directory
    return directory;
}

struct Entry {
    std::string name;
    bool mayBeDirectory;
};

/// What the directory holds, with the first entry at the end.
std::vector<Entry> readEntries(const Directory& directory) {
    std::vector<Entry> entries;
    while (const dirent* entry = ::readdir(directory.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            entries.push_back(
                {std::string(name), entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN});
    }
    std::reverse(entries.begin(), entries.end());
    return entries;
}

/// A directory on the way from the top to where the deletion works.
struct Level {
    std::string name; ///< In the level above.
    Directory directory;
    dev_t device = 0; ///< Set, with `inode`, where `directory` is closed for the time being.
    ino_t inode = 0;
    std::vector<Entry> entries;  ///< Those that are left, the next one last.
    unsigned int pathLength = 0; ///< Of the path of the level above.
};

class TreeDeletion {
public:
    /// Deletes what `top` holds; `path` is its name with a separator at its end.
    void run(Directory top, const IString& path) {
        if (asksFactories_)
            path_ = path;
        enter(std::string(), std::move(top), path_.length());
        while (!levels_.empty())
            if (levels_.back().entries.empty())
                leave();
            else
                deleteNext();
    }

private:
    /// The most descriptors that are open at once. Directories further up are closed, and opened
    /// again through "..".
    static constexpr std::size_t heldOpen = 16;

    void enter(std::string name, Directory directory, unsigned int pathLength) {
        std::vector<Entry> entries = readEntries(directory);
        levels_.push_back(
            {std::move(name), std::move(directory), 0, 0, std::move(entries), pathLength});
        if (levels_.size() > heldOpen)
            closeForNow(levels_[levels_.size() - 1 - heldOpen]);
    }

    /// Deletes the next entry of the lowest level, or enters it.
    void deleteNext() {
        Level& level = levels_.back();
        const Entry entry = std::move(level.entries.back());
        level.entries.pop_back();
        const char* name = entry.name.c_str();
        const IString decoded = asksFactories_ ? IString(name, utf8) : IString();
        if (asksFactories_ && deleteForeign(plus(path_, decoded)))
            return;
        int flags = 0;
        if (entry.mayBeDirectory) {
            if (Directory child = openEntry(name)) {
                const unsigned int length = path_.length();
                if (asksFactories_)
                    path_.append(decoded).append(Filename::separator());
                enter(entry.name, std::move(child), length);
                return;
            }
            // A directory that cannot be read may still be empty.
            if (errno != ENOTDIR && errno != ELOOP)
                flags = AT_REMOVEDIR;
        }
        ::unlinkat(::dirfd(levels_.back().directory.get()), name, flags);
    }

    /// Opens a directory in the lowest level. If the process has no descriptor left, those of the
    /// levels above are closed first.
    Directory openEntry(const char* name) {
        const int here = ::dirfd(levels_.back().directory.get());
        Directory child = openDirectory(here, name, O_NOFOLLOW);
        if (child || (errno != EMFILE && errno != ENFILE))
            return child;
        const std::size_t lowest = levels_.size() - 1;
        for (std::size_t i = lowest - std::min(lowest, heldOpen); i < lowest; ++i)
            closeForNow(levels_[i]);
        return openDirectory(here, name, O_NOFOLLOW);
    }

    /// Goes one level up, and deletes the directory that was left.
    void leave() {
        const Level left = std::move(levels_.back());
        levels_.pop_back();
        path_.erase(left.pathLength);
        if (levels_.empty())
            return;
        Level& above = levels_.back();
        if (!above.directory && !openAgain(above, left.directory)) {
            levels_.clear(); // somebody moved it meanwhile: the way back is lost
            return;
        }
        ::unlinkat(::dirfd(above.directory.get()), left.name.c_str(), AT_REMOVEDIR);
    }

    static void closeForNow(Level& level) {
        struct stat status;
        if (!level.directory || ::fstat(::dirfd(level.directory.get()), &status) != 0)
            return; // in the second case it stays open
        level.device = status.st_dev;
        level.inode = status.st_ino;
        level.directory.reset();
    }

    /// Opens a directory through the one below it. False if that is no longer in the same place.
    static bool openAgain(Level& level, const Directory& below) {
        Directory directory = openDirectory(::dirfd(below.get()), "..", O_NOFOLLOW);
        struct stat status;
        if (!directory || ::fstat(::dirfd(directory.get()), &status) != 0 ||
            status.st_dev != level.device || status.st_ino != level.inode)
            return false;
        level.directory = std::move(directory);
        return true;
    }

    /// Whether the entry belongs to a registered factory: its own transport then deletes it.
    static bool deleteForeign(const IString& path) {
        File file(path);
        if (file.transportId() == LocalFileTransport::id)
            return false;
        file.deleteSelf(File::DeleteRecursive);
        return true;
    }

    static constexpr auto utf8 = zeString::EncodingUTF8;

    const bool asksFactories_ = !everyNameIsLocal();
    std::vector<Level> levels_;
    IString path_; ///< Of the lowest level, with a separator, where registered factories are asked.
};

IString withSeparator(IString path) {
    if (path.isEmpty() || path[path.last()] != Filename::separator())
        path.append(Filename::separator());
    return path;
}

} // namespace

void deleteLocalEntries(const IString& directory) {
    if (Directory top = openDirectory(AT_FDCWD, directory.asUTF8(), 0))
        TreeDeletion().run(std::move(top), withSeparator(directory));
}

void deleteLocalTree(const IString& path) {
    int flags = 0;
    if (Directory top = openDirectory(AT_FDCWD, path.asUTF8(), O_NOFOLLOW)) {
        TreeDeletion().run(std::move(top), withSeparator(path));
        flags = AT_REMOVEDIR;
    } else if (errno != ENOTDIR && errno != ELOOP) {
        flags = AT_REMOVEDIR;
    }
    ::unlinkat(AT_FDCWD, path.asUTF8(), flags);
}

} // namespace zeOS

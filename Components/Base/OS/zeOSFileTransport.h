// SPDX-License-Identifier: MIT

/// @file
/// The implementation behind a zeOS::File, for one kind of storage.
///
/// Applications use zeOS::File. To add a storage of your own (an archive, a server), derive from
/// FileTransport, and register a zeOS::FileTransportFactory that makes such objects for its names:
/// see zeOSFileFactory.h.
///
/// A transport is a name and, while open, a stream. The codes of errors are those of
/// zeOS::File::ErrorCode; zeOS::File::getError() makes them. The order of the virtual operations is
/// fixed: plug-ins are compiled against it.
///
/// **When other users may write in the directory.** Recursive deletion of local directories is
/// safe: below the directory that you name it uses descriptors and follows no link, so that whoever
/// exchanges a directory with a link while it works cannot make it delete anything outside of the
/// tree. It follows the path that you name, with links in it, so make sure that others cannot write
/// in the directories *above* the tree. Copying and moving are not safe: they go by paths, and
/// follow links that others may make while they work. Copy only trees, and only to places, that
/// nobody else may change.
///
/// Threads: a transport belongs to one thread at a time.
///
/// @code
/// #include "Base/OS/zeOSFile.h"
/// zeOS::File file("/dev/null");
/// const zeOS::FileTransport& transport = *file.getTransport();
/// assert(transport.transportId() == L"LocalFileTransport");
/// assert(transport.getFullName() == L"/dev/null" && transport.getNameBase() == L"null");
/// @endcode

#pragma once

#include <vector>

#include "Base/OS/zeOSIOStream.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

class FileStatus;

/// One file or directory of one kind of storage.
class ZEBASE_API FileTransport : public IOStream {
public:
    FileTransport(const FileTransport&) = delete; ///< Make another one of the same name.
    /// Make another one of the same name.
    FileTransport& operator=(const FileTransport&) = delete;
    /// Closes what is open.
    ~FileTransport() override;

    /// A read that reaches the end gives `File::ErrEndOfFile`, and its bytes still count. A read of
    /// no bytes that reports a success ends a copy.
    zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) override = 0;
    /// A write that does not take all bytes is a failure.
    zeUtil::Error write(const void* buffer, unsigned long count, unsigned long* done) override = 0;

    /// Opens the file; `mode` consists of the bits of zeOS::File::OpenMode.
    virtual zeUtil::Error open(int mode) = 0;
    /// Opens a new file under a fresh name, which becomes this transport's name. Not supported by
    /// default: code -1.
    virtual zeUtil::Error openTemp(int mode);
    /// Closes the open file.
    virtual zeUtil::Error close() = 0;
    /// Makes this one directory; `File::ErrFileExists` where there is something already.
    virtual zeUtil::Error makeDirectory() = 0;
    /// Makes a directory with a fresh name, which becomes this transport's name. Not supported by
    /// default: code -1.
    virtual zeUtil::Error makeTempDirectory();
    /// Makes this directory and those above it. Not supported by default: code -1.
    virtual zeUtil::Error makeDirectoryAll();
    /// Replaces `names` by the entries of this directory, each with this name before it if
    /// `fullNames` is true. "." and ".." may be among them.
    virtual zeUtil::Error readDir(std::vector<zeString::IString>& names, bool fullNames) = 0;

    /// Copies this file to `dest`, in blocks of 4096 bytes, or this directory with all that it
    /// holds. Both must be closed (`File::ErrIsOpen`), and their full names must differ
    /// (`File::ErrNoOverwrite`). Names are compared as texts: a file that is copied to itself by
    /// another name is emptied. A directory merges into one that exists; the result is that of
    /// recreateDirStructure(). One that is copied into itself nests until its path is too long.
    ///
    /// **A file's result is that of the last close, and nothing else.** A source that does not open
    /// leaves an empty `dest`, and a full disk a partial one; both are successes if close() cannot
    /// fail, as for a local file. Reported as `File::ErrIO` are a `dest` that does not open, and,
    /// with nothing opened, a local FIFO, socket or device as the source and a FIFO as `dest`. If
    /// you must know, compare the sizes, or use zeOS::fileCopy().
    virtual zeUtil::Error copyTo(FileTransport& dest);

    /// copyTo(), then deleteSelf() if that was a success. As copyTo() does not report a full disk,
    /// a file that is moved to one is lost. A directory that is not empty is copied, and then fails
    /// in deleteSelf(), so that both copies stay.
    virtual zeUtil::Error moveTo(FileTransport& dest);

    /// Deletes the file or the empty directory.
    virtual zeUtil::Error deleteSelf() = 0;
    /// Whether it is a directory.
    virtual bool isDirectory() const = 0;
    /// Whether it is open.
    virtual bool isOpen() const = 0;
    /// The whole name, by which a factory would make this transport again.
    virtual zeString::IString getFullName() const = 0;
    /// The part of the name up to the last separator and with it: the directory.
    virtual zeString::IString getNameTitle() const = 0;
    /// The part of the name after the last separator; empty if there is none.
    virtual zeString::IString getNameBase() const = 0;
    /// The separator between the components of names.
    virtual wchar_t getSeparator() const = 0;
    /// The kind of storage: the same text for all transports of one class.
    virtual zeString::IString transportId() const = 0;
    /// Fills `status`, which was reset. A file that does not exist is a success, and leaves it as
    /// it is.
    virtual zeUtil::Error query(FileStatus& status) const = 0;
    /// Sets owner and group. Not supported by default: "Unknown", and code -1.
    virtual zeUtil::Error queryOwnerGroup(FileStatus& status);

    /// Deletes this directory with all that it holds. The result is that of deleting the directory
    /// itself: an entry that cannot be deleted stays, and shows only in that the directory is not
    /// empty. Symbolic links in it are deleted and not followed; if the directory itself is given
    /// by a link, what the link points to is emptied, and both stay. A local tree may be deeper
    /// than any path can name, and needs neither more stack nor more descriptors for that.
    zeUtil::Error recursiveDeleteSelf();

    /// Copies what this directory holds into the directory `dest`, and goes on after failures; the
    /// result is the first failure. With `deleteSource` each entry that was copied is deleted,
    /// which fails for directories that are not empty. `File::ErrNotDirectory` unless both are
    /// directories. The copy of a local file whose name is not valid UTF-8 is empty and has "?" in
    /// its name, without an error. The stack that local trees need does not grow with their depth.
    zeUtil::Error recreateDirStructure(FileTransport& dest, bool deleteSource);

protected:
    /// For derived classes.
    FileTransport() = default;
};

} // namespace zeOS

// SPDX-License-Identifier: MIT

/// @file
/// What does the work behind a zeOS::File, for one kind of storage.
///
/// Applications use zeOS::File. Whoever brings a storage of their own (an archive, a server)
/// derives from FileTransport, and registers a zeOS::FileTransportFactory that makes such objects
/// for the names that it knows: see zeOSFileFactory.h.
///
/// A transport is a name and, while open, a stream. It belongs to one thread at a time. The codes
/// of errors are those of zeOS::File::ErrorCode; zeOS::File::getError() makes them. The order of
/// the virtual operations is fixed: plug-ins are compiled against it.
///
/// What copyTo(), moveTo() and recursive deletion promise about lost errors and about links holds
/// for every transport, and stands here.
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
    FileTransport(const FileTransport&) = delete; ///< make another one of the same name
    FileTransport& operator=(const FileTransport&) = delete;
    /// Closes what is open.
    ~FileTransport() override;

    /// A read that reaches the end gives `File::ErrEndOfFile`, and its bytes still count. A read of
    /// no bytes that calls itself a success ends a copy.
    zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) override = 0;
    zeUtil::Error write(const void* buffer, unsigned long count, unsigned long* done) override = 0;

    /// `mode` is made of the bits of zeOS::File::OpenMode.
    virtual zeUtil::Error open(int mode) = 0;
    /// Opens a new file of a name that nobody has, which becomes this transport's. By default
    /// nothing but an error of code -1.
    virtual zeUtil::Error openTemp(int mode);
    virtual zeUtil::Error close() = 0;
    /// Makes this one directory; `File::ErrFileExists` where there is something already.
    virtual zeUtil::Error makeDirectory() = 0;
    /// Makes a directory of a name that nobody has, which becomes this transport's. By default
    /// nothing but an error of code -1.
    virtual zeUtil::Error makeTempDirectory();
    /// Makes this directory and those above it. By default nothing but an error of code -1.
    virtual zeUtil::Error makeDirectoryAll();
    /// Replaces `names` by the entries of this directory, each with this name before it if
    /// `fullNames` is true. "." and ".." may be among them.
    virtual zeUtil::Error readDir(std::vector<zeString::IString>& names, bool fullNames) = 0;

    /// Copies this file to `dest`, in blocks of 4096 bytes, or this directory with all that it
    /// holds. Both must be closed (`File::ErrIsOpen`), and their full names differ
    /// (`File::ErrNoOverwrite`): as texts, so a file that is copied to itself by another name is
    /// emptied. A directory merges into one that is there; its result is that of
    /// recreateDirStructure(). One that is copied into itself nests until its path is too long.
    ///
    /// **A file's result is that of the last close, and nothing else.** A source that does not
    /// open leaves an empty `dest`, a full disk a cut one, and both are successes where close()
    /// cannot fail, as in a local file. Only a `dest` that does not open is reported, as
    /// `File::ErrIO`. Who must know compares the sizes, or uses zeOS::fileCopy().
    virtual zeUtil::Error copyTo(FileTransport& dest);

    /// copyTo(), then deleteSelf() if that was a success: with what copyTo() calls a success, so
    /// that a file moved to a full disk is lost. The source of a directory stays, and is the error,
    /// unless it was empty.
    virtual zeUtil::Error moveTo(FileTransport& dest);

    /// Deletes the file or the empty directory.
    virtual zeUtil::Error deleteSelf() = 0;
    virtual bool isDirectory() const = 0;
    virtual bool isOpen() const = 0;
    /// The whole name, by which a factory would make this transport again.
    virtual zeString::IString getFullName() const = 0;
    /// The part of the name up to the last separator and with it: the directory.
    virtual zeString::IString getNameTitle() const = 0;
    /// The part of the name after the last separator; empty if there is none.
    virtual zeString::IString getNameBase() const = 0;
    virtual wchar_t getSeparator() const = 0;
    /// The kind of storage: the same text for all transports of one class.
    virtual zeString::IString transportId() const = 0;
    /// Fills a status that is reset. A file that does not exist is a success that leaves it so.
    virtual zeUtil::Error query(FileStatus& status) const = 0;
    /// Fills in owner and group. By default "Unknown", and an error of code -1.
    virtual zeUtil::Error queryOwnerGroup(FileStatus& status);

    /// Deletes this directory with all that it holds. A child that cannot be deleted shows only in
    /// this directory's not being empty, and so does one whose name is not valid UTF-8, since it
    /// cannot be addressed. A symbolic link below is deleted and not followed; if this directory
    /// itself is given by a link, what the link points to is emptied, and both stay.
    zeUtil::Error recursiveDeleteSelf();

    /// Copies what this directory holds into the directory `dest`, and goes on after failures; the
    /// result is the first. With `deleteSource` each entry that was copied is deleted, which
    /// directories that are not empty resist. `File::ErrNotDirectory` unless both are directories.
    /// A local file whose name is not valid UTF-8 arrives as an empty one, with "?" in its name,
    /// and without an error.
    zeUtil::Error recreateDirStructure(FileTransport& dest, bool deleteSource);

protected:
    FileTransport() = default;
};

} // namespace zeOS

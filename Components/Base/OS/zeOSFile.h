// SPDX-License-Identifier: MIT

/// @file
/// The handle of a file or directory, wherever it is stored, and the errors of the file layer.
///
/// A File owns a zeOS::FileTransport, which the factory (zeOSFileFactory.h) chooses by the name;
/// a name that no registered factory claims is a local path. The path is used as it stands, without
/// the normalising of zeOS::Filename. A File is closed at first, and closes when destroyed.
///
/// Threads: a File belongs to one thread at a time.
///
/// **What survives.** write() copies bytes into a buffer of the process. They survive the death of
/// the process after close(), and a power cut once the system has written them back: nothing here
/// waits for the disk. close() always succeeds for a local file, so that a full disk can remain
/// unnoticed. Opening to write empties the file at once: an interrupted save has destroyed the old
/// content. Other processes see at once what is made, renamed or deleted; a power cut can undo it
/// until the system has written it back. Use zeOS::ProtectedWrite for documents.
///
/// Local descriptors are close-on-exec: child processes do not inherit open files.
///
/// Nothing throws. Calls check first whether the file is open, where that matters, and then forward
/// to the transport.
///
/// @code
/// using zeOS::File;
/// File file("zeOSFile-example.txt");
/// assert(file.open(File::ModeWrite | File::ModeBinary).code() == 0);
/// unsigned long done = 0;
/// assert(file.write("hello", 5, &done).code() == 0 && done == 5);
/// assert(file.close().code() == 0);
///
/// char text[8];
/// assert(file.open(File::ModeRead | File::ModeBinary).code() == 0);
/// assert(file.read(text, 8, &done).code() == File::ErrEndOfFile && done == 5);
/// assert(file.deleteSelf(File::DeleteNonRecursive).code() == File::ErrIsOpen);
/// file.close();
/// assert(file.deleteSelf(File::DeleteNonRecursive).code() == 0);
/// @endcode

#pragma once

#include <vector>

#include "Base/OS/zeOSIOStream.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

class Filename;
class FileStatus;
class FileTransport;

/// The handle of one file or directory.
///
/// All members but isValid() and getTransport() require that isValid() is true. It is false only if
/// null was passed to the constructor.
class ZEBASE_API File : public IOStream {
public:
    /// The bits of open(). A local file is opened in one of four ways:
    ///
    /// | Bits | Way |
    /// |---|---|
    /// | ModeAppend, alone or with others | read, and write at the end; made if missing |
    /// | ModeRead, also with ModeWrite | read only: together they do **not** give both |
    /// | ModeWrite | write; emptied, or made if missing |
    /// | none of the three | `ErrIO` |
    enum OpenMode : int {
        ModeText = 1,        ///< Text, if this is the value of the two lowest bits.
        ModeBinary = 2,      ///< Binary: any other value of these bits. No different on Linux.
        ModeRead = 4,        ///< For reading.
        ModeWrite = 8,       ///< For writing.
        ModeAppend = 16,     ///< For reading, and writing at the end.
        ModeCopyTarget = 32, ///< Set by copyTo() on its target; ignored by local files.
    };

    /// What deleteSelf() does with a directory.
    enum DeleteFlag : int {
        DeleteNonRecursive = 64, ///< Only an empty directory is deleted.
        DeleteRecursive = 128,   ///< What any value without DeleteNonRecursive means, also 0.
    };

    /// The codes of the file layer.
    enum ErrorCode : int {
        ErrNone = 0,           ///< Success.
        ErrNotImplemented = 1, ///< There is no transport for the name, or it lacks the operation.
        ErrFileExists = 2,     ///< Something of that name exists.
        ErrEndOfFile = 3,      ///< A read met the end.
        ErrIO = 4,             ///< Most failures of the system.
        ErrNoWrite = 5,        ///< No permission to write.
        ErrNoRead = 6,         ///< No permission to read.
        ErrNoOverwrite = 7,    ///< Source and destination have one name.
        ErrNotOpen = 8,        ///< The file must be open, and is closed.
        ErrIsOpen = 9,         ///< The file must be closed, and is open.
        ErrNotDirectory = 10,  ///< It must be a directory, and is none.
        ErrNotFile = 11,       ///< It must be a file, and is none.
        ErrPathTooLong = 12,   ///< makeDirectoryAll() met the first component.
        ErrDirectoryNotEmpty = 13, ///< The directory is not empty.
        ErrSyscall = 14,           ///< Unused by local files.
        ErrInvalidURL = 15,        ///< For transports: the name is malformed.
        ErrPermissionDenied = 16,  ///< For transports: access is denied.
        ErrAuthenticationFailed =
            17, ///< For transports: the login failed. zeOSFileHash.h: there is no key.
        ErrDoesNotExist = 18, ///< There is no such file.
        ErrNoParent = 19,     ///< For transports: a root has no parent.
    };

    /// The message of each ErrorCode.
    static const char* const ErrMsgs[20];

    /// The error with that code and its message; 0 gives a success. The code must be one from 0 to
    /// 19, which is not checked.
    static zeUtil::Error getError(int code);

    /// A closed File with the transport that zeOS::FileFactory gives for `name`.
    explicit File(const zeString::IString& name);
    /// Takes ownership; null makes a File that is not valid.
    explicit File(FileTransport* transport);
    File(const File&) = delete;            ///< Make another one of the same name.
    File& operator=(const File&) = delete; ///< Make another one of the same name.
    /// Closes the file.
    ~File() override;

    /// Whether there is a transport.
    bool isValid() const { return transport_ != nullptr; }

    /// Reads from the open file (else `ErrIO`). A read that met the end gives `ErrEndOfFile`, and
    /// `done` says how many bytes it read; one that ends exactly before it is a success, and the
    /// next gives `ErrEndOfFile` with 0 bytes. A local read that fails is a success with a short
    /// count, and so is every read of a directory, with 0 bytes: end loops there as well.
    zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) override;
    /// Writes to the open file (else `ErrIO`). A local write gives `ErrIO` if the buffer did not
    /// take all bytes; it is written to disk in later calls, the last of which is close().
    zeUtil::Error write(const void* buffer, unsigned long count, unsigned long* done) override;

    /// Opens a closed file (else `ErrIsOpen`) in the OpenMode bits of `mode`. Local failures:
    /// `ErrDoesNotExist` and `ErrFileExists` as the system says, `ErrIO` for the rest.
    zeUtil::Error open(int mode);
    /// Opens a new file under a fresh name, which becomes this File's name. A local one is made
    /// **in the current directory**, readable by its owner alone, and is named after this File's
    /// base name with the suffix doubled and six more characters: "scene.datdatXXXXXX". If the mode
    /// is not valid (`ErrIO`), an empty file with such a name may remain.
    zeUtil::Error openTemp(int mode);
    /// Closes the file; `ErrNotOpen` if it is not open. Never reports a failure of a local file,
    /// not even a full disk.
    zeUtil::Error close();

    /// Copies this closed file or directory (else `ErrIsOpen`) to `dest`, which must be valid: see
    /// FileTransport::copyTo() for the rules and for the errors that are not reported.
    zeUtil::Error copyTo(File& dest);
    /// Moves this closed file or directory (else `ErrIsOpen`) to `dest`, which must be valid. From
    /// local to local it first tries to rename, which replaces a file in one step: other processes
    /// find the old file or the new one. That holds also for a file that is moved onto itself, and
    /// for directories, unless `dest` is a file. A missing source is reported as `ErrFileExists`.
    /// Otherwise, for example to another volume, it is FileTransport::moveTo(), which loses a file
    /// that is moved to a full disk.
    zeUtil::Error moveTo(File& dest);

    /// Deletes the closed file (else `ErrIsOpen`), or the directory, with all that it holds unless
    /// `flags` contains DeleteNonRecursive: see FileTransport::recursiveDeleteSelf(). Local
    /// failures are `ErrIO`, also for a directory that is not empty.
    zeUtil::Error deleteSelf(int flags);

    /// Makes the directory. `ErrIsOpen` if this is open, `ErrFileExists` if something of that name
    /// exists, `ErrIO` for other local failures.
    zeUtil::Error makeDirectory();
    /// Makes a directory with a fresh name, which becomes this File's name. A local one lies next
    /// to this name, or in getTempDirectory() if it has no directory part; its name has ten letters
    /// from `rand`. After three names that are taken it fails with `ErrFileExists`, and keeps the
    /// last: in processes that do not call `srand`, these are always the same three.
    zeUtil::Error makeTempDirectory();
    /// Makes this directory and those above it that are missing. A success if it exists.
    ///
    /// It climbs two components at a time up to one that exists, and only the second of the two may
    /// be the first of the path. If that does not exist either, an odd number of components gives
    /// `ErrPathTooLong`, and nothing is made: kept for compatibility. So "a" and "/a" are never
    /// made, "x/y" always is, and "x/y/z" needs "x". A separator at the end makes the directory,
    /// and then gives `ErrFileExists`. A failure on the way down leaves what was made.
    zeUtil::Error makeDirectoryAll();

    /// Replaces `names` by the entries of this directory (else `ErrNotDirectory`), with the
    /// directory before each if `fullNames` is true. A local directory gives "." and ".." too, in
    /// the order of the disk, and nothing at all if it cannot be opened. Names are decoded as
    /// UTF-8: a name that is not valid UTF-8 has "?" in it, and one that begins with a byte order
    /// mark lacks that; neither can be opened by the decoded name.
    zeUtil::Error readDir(std::vector<zeString::IString>& names, bool fullNames);

    /// Resets `status` and fills it. A file that does not exist is a success with `exists` false.
    /// A local failure is code 4 with the system's message. Symbolic links are followed.
    /// `withOwner` asks for owner and group as well, whose result is then returned.
    zeUtil::Error query(FileStatus& status, bool withOwner) const;
    /// @{
    /// query() of a new File of that name, without owner and group.
    static zeUtil::Error query(const zeString::IString& name, FileStatus& status);
    static zeUtil::Error query(const Filename& name, FileStatus& status);
    /// @}

    /// Whether it is a directory. A local name is looked up until something of that name exists;
    /// the answer is then kept for the life of the File, whatever happens on disk. deleteSelf(),
    /// readDir(), copyTo() and moveTo() rely on it.
    bool isDirectory() const;
    /// Whether it is open.
    bool isOpen() const;
    /// The whole name: for a local file its path.
    zeString::IString getFullName() const;
    /// The name up to the last separator and with it, which is the directory part.
    zeString::IString getNameTitle() const;
    /// The name after the last separator; empty if there is none.
    zeString::IString getNameBase() const;
    /// The separator between the components of names; "/" for local files.
    wchar_t getSeparator() const;
    /// The kind of transport; "LocalFileTransport" for local files.
    zeString::IString transportId() const;

    /// @{
    /// The transport, which the File owns; null if it is not valid.
    FileTransport* getTransport() { return transport_; }
    const FileTransport* getTransport() const { return transport_; }
    /// @}

private:
    FileTransport* transport_; ///< Owned.
};

} // namespace zeOS

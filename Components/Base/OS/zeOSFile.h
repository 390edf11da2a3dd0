// SPDX-License-Identifier: MIT

/// @file
/// The handle of a file or directory, wherever it is stored, and the errors of the file layer.
///
/// A File owns a zeOS::FileTransport, which the factory (zeOSFileFactory.h) chooses by the name;
/// a name that nobody claims is a local path. The path is taken as it stands: zeOS::Filename
/// normalises. A File is closed at first, belongs to one thread at a time, and closes when
/// destroyed.
///
/// **What is on disk.** write() hands bytes to a buffer of the process. They survive a killed
/// process only after close(), a power cut only once the system has written them back in its own
/// time: nothing here waits for the disk. close() is always a success for a local file, so a full
/// disk can pass unnoticed there. Opening to write empties the file at once: an interrupted save
/// has destroyed the old content. What is made, moved by renaming or deleted is so at once for all
/// processes, and on disk, too, in the system's own time. Use zeOS::ProtectedWrite for documents.
///
/// Nothing throws. Every call first looks whether the file is open, where that matters, then hands
/// on to the transport.
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
/// All members but isValid() and getTransport() require that isValid() is true. It is, unless null
/// was passed in.
class ZEBASE_API File : public IOStream {
public:
    /// The bits of open(). A local file knows these four ways, whatever else is asked:
    ///
    /// | Bits | Way |
    /// |---|---|
    /// | ModeAppend, alone or with others | read, and write at the end; made if missing |
    /// | ModeRead, also with ModeWrite | read only: together they do **not** give both |
    /// | ModeWrite | write; emptied, or made if missing |
    /// | none of the three | `ErrIO` |
    enum OpenMode : int {
        ModeText = 1,   ///< exactly this value of the two lowest bits: not binary
        ModeBinary = 2, ///< this, both, or neither: binary, which is no different on Linux
        ModeRead = 4,
        ModeWrite = 8,
        ModeAppend = 16,
        ModeCopyTarget = 32, ///< copyTo() sets it on its target; local files ignore it
    };

    /// What deleteSelf() does with a directory. Only the first is tested: without it, all other
    /// values delete recursively, 0 included.
    enum DeleteFlag : int {
        DeleteNonRecursive = 64,
        DeleteRecursive = 128,
    };

    /// The codes of the file layer; ErrMsgs has their texts.
    enum ErrorCode : int {
        ErrNone = 0,
        ErrNotImplemented = 1,
        ErrFileExists = 2,
        ErrEndOfFile = 3,
        ErrIO = 4,
        ErrNoWrite = 5,
        ErrNoRead = 6,
        ErrNoOverwrite = 7,
        ErrNotOpen = 8,
        ErrIsOpen = 9,
        ErrNotDirectory = 10,
        ErrNotFile = 11,
        ErrPathTooLong = 12,
        ErrDirectoryNotEmpty = 13,
        ErrSyscall = 14,
        ErrInvalidURL = 15,
        ErrPermissionDenied = 16,
        ErrAuthenticationFailed = 17,
        ErrDoesNotExist = 18,
        ErrNoParent = 19,
    };

    /// The message of each ErrorCode.
    static const char* const ErrMsgs[20];

    /// The error of a code from 0 to 19, which is not checked, with its message; 0 gives a success.
    static zeUtil::Error getError(int code);

    /// A closed File with the transport that zeOS::FileFactory gives for `name`.
    explicit File(const zeString::IString& name);
    /// Takes ownership; null makes a File that is not valid.
    explicit File(FileTransport* transport);
    File(const File&) = delete; ///< make another one of the same name
    File& operator=(const File&) = delete;
    ~File() override;

    /// Whether there is a transport.
    bool isValid() const { return transport_ != nullptr; }

    /// Bytes from, or to, the open file; `ErrIO` if it is not open. A read that met the end gives
    /// `ErrEndOfFile`, and `done` says how many bytes it brought; one that ends exactly before it
    /// is a success, and the next gives `ErrEndOfFile` with 0 bytes. A local read that fails is a
    /// success with a short count, and each read of a directory, which opens for reading, one of 0
    /// bytes: a loop ends there, too. A local write is `ErrIO` if not all of it went into the
    /// buffer; what is left in the buffer goes to disk in later calls, the last in close().
    zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) override;
    zeUtil::Error write(const void* buffer, unsigned long count, unsigned long* done) override;

    /// Opens a closed file (else `ErrIsOpen`) in the OpenMode bits of `mode`. Local failures:
    /// `ErrDoesNotExist` and `ErrFileExists` as the system says, `ErrIO` for the rest.
    zeUtil::Error open(int mode);
    /// The same with a new file of a name that nobody has, which becomes this File's. A local one
    /// is made **in the current directory**, readable by its owner alone, and is named after this
    /// File's base name with the suffix doubled and six characters more: "scene.datdatXXXXXX". If
    /// no stream has such a mode (`ErrIO`), an empty file of a name that is not told may stay.
    zeUtil::Error openTemp(int mode);
    /// `ErrNotOpen` unless open. Never reports a failure of a local file, not even a full disk.
    zeUtil::Error close();

    /// Copies, or moves, this closed file or directory (else `ErrIsOpen`) to `dest`, which must be
    /// valid as well, under the rules, and with the lost errors, of FileTransport::copyTo() and
    /// moveTo(): moved to a full disk of another volume, a file is lost. From local to
    /// local, moveTo() first tries to rename, which replaces a file in one step: whoever looks
    /// finds the old file or the new one. It does so also onto itself, and reports a source that is
    /// missing as `ErrFileExists`. A directory is renamed, too, unless `dest` is a file.
    zeUtil::Error copyTo(File& dest);
    zeUtil::Error moveTo(File& dest);

    /// Deletes the closed file (else `ErrIsOpen`), or the directory, with all that it holds unless
    /// `flags` contains DeleteNonRecursive: see FileTransport::recursiveDeleteSelf(). Local
    /// failures are `ErrIO`, also for a directory that is not empty.
    zeUtil::Error deleteSelf(int flags);

    /// Makes the directory (`ErrFileExists` if there is something already), one of a new name,
    /// which becomes this File's, or this one and what is missing above it. `ErrIsOpen` if this is
    /// open, `ErrIO` for most local failures.
    ///
    /// makeTempDirectory() makes a local directory next to this name, or in getTempDirectory() if
    /// it names no directory, with a name of ten letters from `rand`, the last of which is kept
    /// also after a failure. Three attempts are made: in a process that does not call `srand`, what
    /// three others left there makes it fail with `ErrFileExists`.
    ///
    /// makeDirectoryAll() succeeds where the directory exists. It climbs two components at a time
    /// until it finds one that does, and only the second of the two may be the first of the path:
    /// if not even that exists, an odd number of components gives `ErrPathTooLong`, with nothing
    /// made. So "a" and "/a" are never made, "x/y" always is, and "x/y/z" needs "x". A separator at
    /// the end makes the directory, and then gives `ErrFileExists`. A failure on the way down
    /// leaves what was made.
    zeUtil::Error makeDirectory();
    zeUtil::Error makeTempDirectory();
    zeUtil::Error makeDirectoryAll();

    /// Replaces `names` by the entries of this directory (else `ErrNotDirectory`), with the
    /// directory before each if `fullNames` is true. A local directory gives "." and ".." too, in
    /// the order of the disk, and nothing at all where it cannot be opened. Names are decoded as
    /// UTF-8; one that is not valid comes with "?" in it and cannot be opened by that.
    zeUtil::Error readDir(std::vector<zeString::IString>& names, bool fullNames);

    /// Resets `status` and fills it. A file that does not exist is a success with `exists` false.
    /// A local failure is code 4 with the system's message. Symbolic links are followed.
    /// `withOwner` asks for owner and group as well, whose result is then returned.
    zeUtil::Error query(FileStatus& status, bool withOwner) const;
    /// The same for a name, without owner and group.
    static zeUtil::Error query(const zeString::IString& name, FileStatus& status);
    static zeUtil::Error query(const Filename& name, FileStatus& status);

    /// What the transport says of the same name. Whether a local name is a directory is looked up
    /// until there is something of that name, and the answer is then kept for the life of the File,
    /// whatever happens on disk; deleteSelf(), readDir(), copyTo() and moveTo() go by it.
    bool isDirectory() const;
    bool isOpen() const;
    zeString::IString getFullName() const;
    zeString::IString getNameTitle() const;
    zeString::IString getNameBase() const;
    wchar_t getSeparator() const;
    zeString::IString transportId() const;

    /// Still owned by the File; null if it is not valid.
    FileTransport* getTransport() { return transport_; }
    const FileTransport* getTransport() const { return transport_; }

private:
    FileTransport* transport_; ///< owned
};

} // namespace zeOS

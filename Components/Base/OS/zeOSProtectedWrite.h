// SPDX-License-Identifier: MIT

/// @file
/// A save that never costs the user the old file: the new contents go into a temporary file, and
/// only when that is complete does it take the place of the real one.
///
/// | Step | You | On disk afterwards |
/// |---|---|---|
/// | 1 | construct, init() | nothing new |
/// | 2 | write all to getTempFilename(), and close it | the old file, and the new one beside it |
/// | 3 | finalize() | the new file |
///
/// **Check every write and the close**, and call invalidate() if one failed: finalize() cannot know
/// whether the file at getTempFilename() is all that you meant to write. Without a good finalize()
/// the destructor abandons the save: it deletes the temporary file, and the old file was never
/// touched. So an exception or an early return in step 2 costs nothing.
///
/// **What survives.** The table in Documentation/architecture.md has each moment; in short:
/// - The process is killed while you write: the old file stands, with a partial `….0.tmp` beside
/// it.
/// - The process is killed in finalize(): the old file, the new one, or, between the two renames,
///   none under the main name, while both lie beside it complete: the old one as `….1.tmp`, the new
///   one as `….0.tmp`. To bring one back is the application's part, when it starts the next time.
///   Nothing sweeps these names.
/// - A power cut: the same, since finalize() waits for the disk before each step that relies on the
///   one before it. If the disk fails while it waits for the content of the temporary file, before
///   anything was changed, the save ends with StatusCannotBackup. Later failures of this kind are
///   ignored, since going back would be no safer. A file that cannot be synced at all (`fsync`
///   fails with `EINVAL`, `EROFS` or `ENOTSUP`), or not be opened for reading, is not waited for.
/// - A full disk: the old file. By copying, also where a network file system reports it only when a
///   copy is closed.
///
/// **Two strategies.** By default both files lie in the directory of the main file, and finalize()
/// is two renames, whatever the size. The copy strategy, for directories that take no new files,
/// puts them into getTempDirectory() and copies: the data is written twice more, and during a copy
/// the main file is missing or partial while its old contents lie in the temporary directory. **If
/// the temporary directory is in memory (tmpfs), a power cut in that time loses the document**, the
/// old and the new one; choose one on a disk with setTempDirectory(). (If the temporary directory
/// is also the main file's, as text, finalize() renames.) Choose the strategy with
/// useCopyStrategy(), or for the whole process with the environment's
/// `ZEPHI_PROTECTED_WRITE_USE_COPY`, set to any value, which is read once.
///
/// **What becomes of the main file.** The new one is a new file: it has the owner and the rights
/// that the caller gave it, and no other name of the old one (hard link) leads to it. A symbolic
/// link is replaced by a file, and what it pointed at stays; by copying, a link that points to
/// nothing stays, and its target is made. A directory is moved aside and stays under the name of
/// the backup. A FIFO, a socket or a device is refused. "file:" is removed from the name as by
/// zeOS::File; the file is always a local one.
///
/// A copy has the rights of any new file: the copy strategy loses those that the caller gave, and
/// shows the old contents to whoever may read new files in the temporary directory. Where that
/// matters, set the `umask` for the time of finalize(), and the rights after it.
///
/// **Two saves of one file at once.** By renaming, the file becomes one of the two, and both may
/// succeed. By copying, it becomes one of the two as well, never a mixture; a save that finds that
/// the other took the main name first fails with StatusNotWritable, and leaves the old file under
/// the name of its backup. That holds while both can write: if one fails in the swap, for example
/// on a full disk, it may remove the file of the other, or put back only a part of it, although the
/// other succeeded. Let applications lock what they edit.
///
/// **When other users may write in the directory** of the main file, they can replace or delete it
/// at any time, and nothing here prevents that. What holds: a copy into a name that the save has
/// cleared follows no link that somebody makes there meanwhile, so that finalize() writes to no
/// other file; only where the main name itself cannot be cleared, since the directory takes no
/// changes, is the file that it leads to written over. What does not hold: the name of the
/// temporary file is only proposed, so that others may take it before you open it. Open it with
/// `O_CREAT | O_EXCL | O_NOFOLLOW`, above all with a temporary directory that is open to everybody
/// (copy strategy).
///
/// Nothing throws.
///
/// Threads: one save belongs to one thread at a time; different saves may run at once.
///
/// @code
/// #include <fstream>
/// #include "Base/OS/zeOSFileOperations.h"
/// const zeOS::Filename document("zeOSProtectedWrite-example.txt", '/');
/// zeOS::ProtectedWrite save(document);
/// assert(save.init());
/// std::ofstream out(save.getTempFilename().path().asUTF8());
/// out << "new contents";
/// out.close();
/// if (!out)
///     save.invalidate();
/// assert(save.finalize());
/// assert(zeOS::doesFileExist(document));
/// zeOS::fileDelete(document);
/// @endcode

#pragma once

#include "Base/OS/zeOSFilename.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// One save of one file. getStatus() says what went wrong; a status that is set stays.
class ZEBASE_API ProtectedWrite {
public:
    /// What became of the save.
    enum Status : int {
        /// No failure.
        StatusOk = 0,
        /// The main file exists and is not writable, or is neither a file nor a directory; or the
        /// new file could not be put in its place, and the old one was put back. Only if that
        /// failed too, or another save took the name, does the old file stay under the name of the
        /// backup (`….1.tmp`).
        StatusNotWritable = 1,
        /// There was no temporary directory, and it was made: the next attempt will find it. Copy
        /// strategy only.
        StatusTempDirCreated = 2,
        /// The temporary directory is not a directory. Copy strategy only.
        StatusTempNotDirectory = 3,
        /// Something under the name of the temporary or the backup file could not be deleted; or,
        /// in the default strategy, no such name could be found (see zeOSTempFiles.h).
        StatusCannotClearTemp = 4,
        /// There is no file at getTempFilename().
        StatusTempMissing = 5,
        /// The main file could not be moved aside, or the disk failed to take the content of the
        /// temporary file. The main file was not touched.
        StatusCannotBackup = 6,
        /// invalidate() was called.
        StatusInvalidated = 7,
    };

    /// A save of the file `name`. Touches nothing on disk.
    ProtectedWrite(const Filename& name);
    /// One object for one save: a copy's destructor would delete what the other one is writing.
    ProtectedWrite(const ProtectedWrite&) = delete;
    /// One object for one save.
    ProtectedWrite& operator=(const ProtectedWrite&) = delete;
    /// Deletes the temporary file if it still exists. The backup is not touched.
    ~ProtectedWrite();

    /// Saves by copying: read "Two strategies" above first. To be called before init().
    void useCopyStrategy();

    /// Chooses the names, and makes sure that nothing has them. False, with a status of 1 to 4, if
    /// the save is not possible; whether the directory takes new files is not tested. A second call
    /// returns the result of the first.
    ///
    /// In the copy strategy a temporary directory that is missing and can be made **fails**, with
    /// StatusTempDirCreated; one that cannot be made is no failure yet.
    [[nodiscard]] bool init();

    /// The file to write: it does not exist yet, and must be closed before finalize(). Empty before
    /// init().
    const Filename& getTempFilename() const { return tempFilename_; }

    /// The file to protect, without "file:".
    const Filename& getMainFilename() const { return mainFilename_; }

    /// The Status of the save.
    int getStatus() const { return status_; }

    /// Abandons the save: finalize() will clean up and fail.
    void invalidate();

    /// Puts the temporary file in the place of the main file, and deletes what is no longer needed,
    /// in any case the temporary file. False, with a status, if the main file is not the new one; a
    /// status that init() set is kept. Before init() it does nothing and succeeds.
    ///
    /// A second finalize() finds no temporary file, and fails with StatusTempMissing.
    [[nodiscard]] bool finalize();

private:
    Filename mainFilename_;
    Filename tempFilename_;
    Filename backupFilename_;
    int status_ = StatusOk;
    bool initialized_ = false;
    bool valid_ = true;
    bool useCopy_ = false;

    ZEBASE_HIDDEN void checkTempDirectory();
    ZEBASE_HIDDEN void chooseNames(bool copy);
    ZEBASE_HIDDEN Status replaceMainFile();
    ZEBASE_HIDDEN Status replaceByRenaming();
    ZEBASE_HIDDEN Status replaceByCopying();
    ZEBASE_HIDDEN void copyBack(bool isTaken);
    ZEBASE_HIDDEN void keepBackup();
};

} // namespace zeOS

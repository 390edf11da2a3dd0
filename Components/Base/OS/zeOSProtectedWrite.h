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
/// **Look at every write and at the close**, and call invalidate() if one failed: finalize() cannot
/// know whether what lies at getTempFilename() is all that you meant to write. Without a good
/// finalize() the destructor abandons the save: the temporary file goes, and the old file was never
/// touched. So an exception or an early return in step 2 costs nothing.
///
/// **What survives.** The table of Documentation/architecture.md has each moment; in short:
/// - A killed process, while you write: the old file stands, with a part of a `….0.tmp` beside it.
/// - A killed process in finalize(): the old file, the new one, or, between the two renames, none
///   under the main name, while both lie beside it complete: the old one as `….1.tmp`, the new one
///   as `….0.tmp`. To bring one back is the application's part, when it starts the next time.
///   Nothing sweeps these names.
/// - A power cut: the same, since finalize() waits for the disk before each step that relies on the
///   one before it. That the disk failed in this wait is not reported; who wants to hear of it
///   calls `fsync` before closing the temporary file.
/// - A full disk: the old file. The new one never had the room to become complete.
///
/// **Two strategies.** By default both files lie in the directory of the main file, and finalize()
/// is two renames, whatever the size. The copy strategy, for directories that take no new files,
/// puts them into getTempDirectory() and copies: twice more work, and for the time of a copy the
/// main file is missing or partial while its old contents lie in the temporary directory. (Should
/// that be the main file's directory, by the text of its name, it is renames again.) Choose it with
/// useCopyStrategy(), or for the whole process with the environment's
/// `ZEPHI_PROTECTED_WRITE_USE_COPY`, set to anything, which is looked at once.
///
/// **What becomes of the main file.** The new one is a new file: it has the owner and the rights
/// that the caller gave it, and no other name of the old one (hard link) leads to it. A symbolic
/// link is replaced by a file, and what it pointed at stays. A directory is moved aside and stays
/// under the name of the backup. The name is that of a local file, without "file:".
///
/// A copy has the rights of any new file, so the copy strategy loses those that the caller gave,
/// and shows the old contents to whoever may read new files in the temporary directory. Where that
/// matters, set the `umask` for the time of finalize(), and the rights after it.
///
/// One save belongs to one thread. Different saves may run at once; two of the same file end in one
/// or the other. Nothing throws.
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
        StatusOk = 0,
        /// The main file exists and is not writable; or the new file could not be put in its place,
        /// and the old one was put back. Only if that failed too does the old file stay where it
        /// is then, under the name of the backup (`….1.tmp`).
        StatusNotWritable = 1,
        /// There was no temporary directory, and it was made: the next attempt will do. Copy
        /// strategy only.
        StatusTempDirCreated = 2,
        /// What should be the temporary directory is something else. Copy strategy only.
        StatusTempNotDirectory = 3,
        /// Something at the name of the temporary or the backup file could not be deleted; or there
        /// is no such name to be found (see zeOSTempFiles.h), in the default strategy.
        StatusCannotClearTemp = 4,
        /// There is no file at getTempFilename().
        StatusTempMissing = 5,
        /// The main file could not be moved aside. It was not touched.
        StatusCannotBackup = 6,
        /// invalidate() was called.
        StatusInvalidated = 7,
    };

    /// Touches nothing on disk.
    ProtectedWrite(const Filename& name);
    ProtectedWrite(const ProtectedWrite&) =
        delete; ///< one object for one save: a copy's destructor
                ///< would delete what the other is writing
    ProtectedWrite& operator=(const ProtectedWrite&) = delete;
    /// Deletes the temporary file if it is still there. The backup is not looked at.
    ~ProtectedWrite();

    /// Saves by copying. To be called before init().
    void useCopyStrategy();

    /// Chooses the names, and makes sure that nothing lies there. False, with a status of 1 to 4,
    /// if the save cannot be; whether the directory takes new files is not tested. A second call
    /// reports the outcome of the first.
    ///
    /// In the copy strategy a temporary directory that is missing and can be made **fails**, with
    /// StatusTempDirCreated; one that cannot be made is no failure yet.
    [[nodiscard]] bool init();

    /// The file to write: not there yet, and to be closed again before finalize(). Empty before
    /// init().
    const Filename& getTempFilename() const { return tempFilename_; }

    /// The file to protect.
    const Filename& getMainFilename() const { return mainFilename_; }

    /// A Status.
    int getStatus() const { return status_; }

    /// Abandons the save: finalize() will clean up and fail.
    void invalidate();

    /// Puts the temporary file in the place of the main file, and deletes what is no longer needed,
    /// in any case the temporary file. False, with a status, if the main file is not the new one; a
    /// status that init() set is kept. Before init() it does nothing, and that is a success.
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

    void checkTempDirectory();
    void chooseNames(bool copy);
    Status replaceMainFile();
    void putOldFileBack();
};

} // namespace zeOS

// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSProtectedWrite.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "Base/OS/files/zeOSFileCopyImpl.h"
#include "Base/OS/files/zeOSLocalPathImpl.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileOperations.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSTempDirectory.h"
#include "Base/OS/zeOSTempFiles.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeOS {
namespace {

/// Whether the environment selects the copy strategy; read at the first call.
bool protectedWriteDefaultToCopy() {
    static const bool defaultToCopy = std::getenv("ZEPHI_PROTECTED_WRITE_USE_COPY") != nullptr;
    return defaultToCopy;
}

/// Deletes the file if there is one; false if it could not.
bool clearFile(const Filename& file) {
    return !doesFileExist(file) || fileDelete(file).code() == 0;
}

/// Waits until the disk has the content of a file, or the names in a directory. False if the disk
/// failed; a path that cannot be opened, or not be synced at all, is no failure. Never waits for
/// whatever else may lie there: hence O_NONBLOCK.
bool waitForDisk(const zeString::IString& path) {
    const zeUtil::Descriptor file = openLocal(path, O_RDONLY | O_NONBLOCK);
    if (!file.isOpen() || zeUtil::retried([&] { return ::fsync(file.get()); }) == 0)
        return true;
    return errno == EINVAL || errno == EROFS || errno == ENOTSUP;
}

void waitForDirectoryOf(const Filename& file) {
    const zeString::IString& directory = file.dirname();
    waitForDisk(directory.isEmpty() ? zeString::IString(L".") : directory);
}

/// The file that is meant, without "file:".
Filename localName(const Filename& name) {
    const LocalPath local(name.path());
    return local.text() == name.path() ? name : Filename(local.text());
}

bool isDanglingLink(const Filename& file) {
    const char* path = file.path().asUTF8();
    struct stat status;
    return ::lstat(path, &status) == 0 && S_ISLNK(status.st_mode) && ::stat(path, &status) != 0 &&
           errno == ENOENT;
}

bool isRegularFile(const Filename& file) {
    struct stat status;
    return ::lstat(file.path().asUTF8(), &status) == 0 && S_ISREG(status.st_mode);
}

/// Deletes the file; true if nothing has its name any more.
bool freeName(const Filename& file) {
    return ::unlink(file.path().asUTF8()) == 0 || errno == ENOENT;
}

/// Copies a file to a name that is free, or else over what has that name and could not be deleted.
CopyResult copyTo(const Filename& to, bool isFree, const Filename& from) {
    return isFree ? copyToNewFile(from.path(), to.path()) : copyOverFile(from.path(), to.path());
}

/// Makes the file that a dangling link names. If there is one by now, it is not written over.
CopyResult copyThroughLink(const Filename& link, const Filename& from) {
    return fileCopy(from, link, false).code() == 0 ? CopyResult::Copied : CopyResult::Failed;
}

} // namespace

ProtectedWrite::ProtectedWrite(const Filename& name) : mainFilename_(localName(name)) {}

ProtectedWrite::~ProtectedWrite() {
    clearFile(tempFilename_);
}

void ProtectedWrite::useCopyStrategy() {
    useCopy_ = true;
}

bool ProtectedWrite::init() {
    if (initialized_)
        return status_ == StatusOk;
    initialized_ = true;
    const bool copy = useCopy_ || protectedWriteDefaultToCopy();

    FileStatus main;
    File::query(mainFilename_, main);
    // A FIFO, a socket or a device is no document, and opening one might wait for ever.
    const bool isDocument = main.isFile() || main.isDirectory();
    if (main.exists() && !(main.isWritable() && isDocument))
        status_ = StatusNotWritable;
    else if (copy)
        checkTempDirectory();
    if (status_ != StatusOk)
        return false;

    chooseNames(copy);
    if (!clearFile(tempFilename_))
        status_ = StatusCannotClearTemp;
    if (!clearFile(backupFilename_))
        status_ = StatusCannotClearTemp;
    return status_ == StatusOk;
}

void ProtectedWrite::checkTempDirectory() {
    const Filename directory = getTempDirectory();
    FileStatus status;
    File::query(directory, status);
    if (!status.exists()) {
        // The save that had to make the directory fails, and the next one passes: kept for
        // compatibility. Where it could not be made, the failure comes with the writing.
        if (directory.makeDir())
            status_ = StatusTempDirCreated;
    } else if (!status.isDirectory()) {
        status_ = StatusTempNotDirectory;
    }
}

void ProtectedWrite::chooseNames(bool copy) {
    const wchar_t* prefix = mainFilename_.basename().asWChar();
    tempFilename_ = createTmpFilename(L"0.tmp", prefix);
    backupFilename_ = createTmpFilename(L"1.tmp", prefix);
    if (copy)
        return;
    if (tempFilename_.path().isEmpty() || backupFilename_.path().isEmpty()) {
        // Without a base name the path would be that of the directory, which must not be cleared:
        // it may be a link, and links can be deleted like files.
        tempFilename_ = backupFilename_ = Filename();
        status_ = StatusCannotClearTemp;
        return;
    }
    // In the same directory, and so in the same file system, a rename is one step.
    const zeString::IString& directory = mainFilename_.dirname();
    tempFilename_ = Filename(directory, tempFilename_.basename());
    backupFilename_ = Filename(directory, backupFilename_.basename());
}

void ProtectedWrite::invalidate() {
    valid_ = false;
}

bool ProtectedWrite::finalize() {
    if (!initialized_)
        return true;
    if (status_ == StatusOk)
        status_ = replaceMainFile();
    clearFile(tempFilename_);
    clearFile(backupFilename_);
    return status_ == StatusOk;
}

// The order of the steps is the point: at every moment, also after a power cut, at least one
// complete file is on disk under one of the names.

ProtectedWrite::Status ProtectedWrite::replaceMainFile() {
    if (!valid_)
        return StatusInvalidated;
    if (!doesFileExist(tempFilename_))
        return StatusTempMissing;
    // The new contents come first: a file system may write names to disk long before contents, and
    // flushes the content of a renamed file by itself only if that replaces another one.
    if (!waitForDisk(tempFilename_.path()))
        return StatusCannotBackup;
    const bool copies = mainFilename_.dirname() != tempFilename_.dirname();
    return copies ? replaceByCopying() : replaceByRenaming();
}

ProtectedWrite::Status ProtectedWrite::replaceByRenaming() {
    const bool wasThere = doesFileExist(mainFilename_);
    if (wasThere && fileRename(mainFilename_, backupFilename_).code() != 0)
        return StatusCannotBackup;
    const bool isReplaced = fileRename(tempFilename_, mainFilename_).code() == 0;
    // Only what was moved aside is put back: otherwise the old file may still have its name, though
    // it could not be looked at.
    if (!isReplaced && wasThere) {
        fileDelete(mainFilename_);
        if (fileRename(backupFilename_, mainFilename_).code() != 0)
            keepBackup();
    }
    // Only now may the backup go: a power cut could still bring back the names of before.
    waitForDirectoryOf(mainFilename_);
    return isReplaced ? StatusOk : StatusNotWritable;
}

ProtectedWrite::Status ProtectedWrite::replaceByCopying() {
    const bool wasThere = doesFileExist(mainFilename_);
    bool isFree = true;
    if (wasThere) {
        if (copyToNewFile(mainFilename_.path(), backupFilename_.path()) != CopyResult::Copied)
            return StatusCannotBackup;
        // A copy is only in memory so far, and so may be the names in the temporary directory.
        waitForDisk(backupFilename_.path());
        waitForDirectoryOf(backupFilename_);
        isFree = freeName(mainFilename_);
    }
    const CopyResult copied = !wasThere && isDanglingLink(mainFilename_)
                                  ? copyThroughLink(mainFilename_, tempFilename_)
                                  : copyTo(mainFilename_, isFree, tempFilename_);
    if (copied != CopyResult::Copied && wasThere)
        copyBack(copied == CopyResult::NameTaken);
    // Only now may the other files go.
    waitForDisk(mainFilename_.path());
    waitForDirectoryOf(mainFilename_);
    return copied == CopyResult::Copied ? StatusOk : StatusNotWritable;
}

void ProtectedWrite::copyBack(bool isTaken) {
    // Another save was faster. Its file must not be deleted, nor may the backup, before that save
    // has come to its end.
    const bool isOthers = isTaken && isRegularFile(mainFilename_);
    if (isOthers ||
        copyTo(mainFilename_, freeName(mainFilename_), backupFilename_) != CopyResult::Copied)
        keepBackup();
}

/// The backup is the only old file that is left: its name is forgotten, so that nothing deletes it.
void ProtectedWrite::keepBackup() {
    backupFilename_ = Filename();
}

} // namespace zeOS

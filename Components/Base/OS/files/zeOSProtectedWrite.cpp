// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSProtectedWrite.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileOperations.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSTempDirectory.h"
#include "Base/OS/zeOSTempFiles.h"

namespace zeOS {
namespace {

/// What the environment wants, as it was when first asked.
bool protectedWriteDefaultToCopy() {
    static const bool defaultToCopy = std::getenv("ZEPHI_PROTECTED_WRITE_USE_COPY") != nullptr;
    return defaultToCopy;
}

/// Deletes the file if there is one; false if it could not.
bool clearFile(const Filename& file) {
    return !doesFileExist(file) || fileDelete(file).code() == 0;
}

/// Waits until the disk has the content of a file, or the names in a directory. A failure changes
/// nothing about what is to be done next, and is not looked at. Whatever else may lie there by now
/// must not make us wait: hence O_NONBLOCK.
void waitForDisk(const zeString::IString& path) {
    int fd;
    do
        fd = ::open(path.asUTF8(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    while (fd == -1 && errno == EINTR);
    if (fd == -1)
        return;
    int result;
    do
        result = ::fsync(fd);
    while (result == -1 && errno == EINTR);
    ::close(fd);
}

void waitForDirectoryOf(const Filename& file) {
    const zeString::IString& directory = file.dirname();
    waitForDisk(directory.isEmpty() ? zeString::IString(L".") : directory);
}

} // namespace

ProtectedWrite::ProtectedWrite(const Filename& name) : mainFilename_(name) {}

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
    if (main.exists() && !main.isWritable())
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
        // Callers know it so: the save that had to make the directory fails, the next one passes.
        // Where it could not be made, the failure comes with the writing.
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
        // What would be left is the name of the directory. Clearing that away must not even be
        // tried: it may be a link, which goes like any file.
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

/// The order is the point: at every moment, also after a power cut, at least one complete file is
/// on disk, under whatever name.
ProtectedWrite::Status ProtectedWrite::replaceMainFile() {
    if (!valid_)
        return StatusInvalidated;
    if (!doesFileExist(tempFilename_))
        return StatusTempMissing;
    const bool renamesCopy = mainFilename_.dirname() != tempFilename_.dirname();

    // The new contents come first. A file system may write names to disk long before contents, and
    // the file system's own care for a file that is renamed over another one does not help here:
    // the main name is free by then. A power cut would leave an empty file under it.
    waitForDisk(tempFilename_.path());

    if (doesFileExist(mainFilename_)) {
        if (fileRename(mainFilename_, backupFilename_).code() != 0)
            return StatusCannotBackup;
        // A copy is only in memory so far, and what it was made from is gone. The next step takes
        // the temporary file away when only memory has the copy of that.
        if (renamesCopy) {
            waitForDisk(backupFilename_.path());
            waitForDirectoryOf(backupFilename_);
        }
    }

    const bool isReplaced = fileRename(tempFilename_, mainFilename_).code() == 0;
    if (!isReplaced)
        putOldFileBack();

    // Until the disk has the main file, new or put back, one of the others is what a power cut
    // leaves: only now may they go.
    if (renamesCopy)
        waitForDisk(mainFilename_.path());
    waitForDirectoryOf(mainFilename_);
    return isReplaced ? StatusOk : StatusNotWritable;
}

void ProtectedWrite::putOldFileBack() {
    // A copy that broke off may have left a part of a file there.
    fileDelete(mainFilename_);
    // Where the way back is barred as well, the backup is the only old file there is: its name is
    // forgotten, so that nothing deletes it.
    if (fileRename(backupFilename_, mainFilename_).code() != 0)
        backupFilename_ = Filename();
}

} // namespace zeOS

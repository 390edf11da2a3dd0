// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFileTransport.h"

#include <sys/stat.h>

#include "Base/OS/files/zeOSLocalFileTransportImpl.h"
#include "Base/OS/files/zeOSLocalPathImpl.h"
#include "Base/OS/files/zeOSLocalTreeImpl.h"
#include "Base/OS/files/zeOSTreeCopyImpl.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"

namespace zeOS {
namespace {

zeUtil::Error notImplemented() {
    return zeUtil::Error(-1, "This function is not implemented.");
}

/// Copies between open transports. Failures are not returned, since only the closes that follow
/// decide the result; they end the copy.
void copyBlocks(FileTransport& source, FileTransport& dest) {
    char block[4096];
    unsigned long count = 0;
    bool written = true;
    zeUtil::Error status = source.read(block, sizeof block, &count);
    // A successful read of 0 bytes (a local read error) would repeat for ever.
    while (status.code() == File::ErrNone && count > 0 && written) {
        written = dest.write(block, count, nullptr).code() == File::ErrNone;
        count = 0;
        status = source.read(block, sizeof block, &count);
    }
    if (status.code() == File::ErrEndOfFile && written)
        dest.write(block, count, nullptr);
}

/// Whether opening one of the two might wait for another process, or for ever: a FIFO, a socket or
/// a device as the source, a FIFO as the target.
bool mightWait(const FileTransport& source, const FileTransport& dest) {
    const auto type = [](const FileTransport& transport) -> mode_t {
        const bool isLocal = transport.transportId() == LocalFileTransport::id;
        return isLocal ? localFileType(transport.getFullName()) : 0;
    };
    const mode_t from = type(source);
    return (from != 0 && from != S_IFREG && from != S_IFDIR) || type(dest) == S_IFIFO;
}

} // namespace

FileTransport::~FileTransport() = default;

zeUtil::Error FileTransport::openTemp(int) {
    return notImplemented();
}

zeUtil::Error FileTransport::makeTempDirectory() {
    return notImplemented();
}

zeUtil::Error FileTransport::makeDirectoryAll() {
    return notImplemented();
}

zeUtil::Error FileTransport::copyTo(FileTransport& dest) {
    if (zeUtil::Error refused = checkCopy(*this, dest); refused.code() != File::ErrNone)
        return refused;
    if (isDirectory()) {
        zeUtil::Error made = makeCopyTarget(dest);
        return made.code() == File::ErrNone ? recreateDirStructure(dest, false) : made;
    }
    if (mightWait(*this, dest))
        return File::getError(File::ErrIO);

    if (dest.open(File::ModeWrite | File::ModeCopyTarget).code() != File::ErrNone)
        return File::getError(File::ErrIO);
    // The result is that of the last close, whatever became of the source and the blocks: kept for
    // compatibility.
    if (open(File::ModeRead | File::ModeBinary).code() != File::ErrNone)
        return dest.close();
    copyBlocks(*this, dest);
    close();
    return dest.close();
}

zeUtil::Error FileTransport::moveTo(FileTransport& dest) {
    if (isOpen())
        return File::getError(File::ErrIsOpen);
    if (getFullName() == dest.getFullName())
        return File::getError(File::ErrNoOverwrite);
    zeUtil::Error copied = copyTo(dest);
    return copied.code() == File::ErrNone ? deleteSelf() : copied;
}

zeUtil::Error FileTransport::queryOwnerGroup(FileStatus& status) {
    status.setOwner("Unknown");
    status.setGroup("Unknown");
    return zeUtil::Error(-1, "This function still not supported.");
}

zeUtil::Error FileTransport::recursiveDeleteSelf() {
    if (transportId() == LocalFileTransport::id) {
        deleteLocalEntries(getFullName());
        return deleteSelf();
    }
    std::vector<zeString::IString> names;
    if (zeUtil::Error error = readDir(names, false); error.code() != File::ErrNone)
        return error;
    const zeString::IString directory = withSeparator(*this);
    for (const zeString::IString& entry : names) {
        if (isNoEntry(entry))
            continue;
        File child(plus(directory, entry));
        if (child.transportId() == LocalFileTransport::id)
            deleteLocalTree(child.getFullName());
        else
            child.deleteSelf(File::DeleteRecursive);
    }
    return deleteSelf();
}

zeUtil::Error FileTransport::recreateDirStructure(FileTransport& dest, bool deleteSource) {
    return copyEntries(*this, dest, deleteSource);
}

} // namespace zeOS

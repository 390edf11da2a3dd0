// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFileTransport.h"

#include "Base/OS/files/zeOSLocalFileTransportImpl.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"

namespace zeOS {
namespace {

zeUtil::Error notImplemented() {
    return zeUtil::Error(-1, "This function is not implemented.");
}

bool isSelfOrParent(const zeString::IString& entry) {
    return entry == L"." || entry == L"..";
}

/// What cannot be an entry to descend into. An empty name is that of a file which consists of a
/// byte order mark: joined to its directory it would name the directory again, without end.
bool isNoEntry(const zeString::IString& entry) {
    return entry.isEmpty() || isSelfOrParent(entry);
}

zeString::IString withSeparator(const FileTransport& directory) {
    zeString::IString name = directory.getFullName();
    const wchar_t separator = directory.getSeparator();
    if (name.isEmpty() || name[name.last()] != separator)
        name.append(separator);
    return name;
}

/// Copies between open files. What fails is not returned, since the closes that follow decide
/// alone; it only ends the copy. Never inlined: its block must not lie in the frame of copyTo(),
/// which stands on the stack once for each level of directories.
[[gnu::noinline]] void copyBlocks(FileTransport& source, FileTransport& dest) {
    char block[4096];
    unsigned long count = 0;
    bool written = true;
    zeUtil::Error status = source.read(block, sizeof block, &count);
    // A read of nothing that is a success (a local read error) would repeat for ever.
    while (status.code() == File::ErrNone && count > 0 && written) {
        written = dest.write(block, count, nullptr).code() == File::ErrNone;
        count = 0;
        status = source.read(block, sizeof block, &count);
    }
    if (status.code() == File::ErrEndOfFile && written)
        dest.write(block, count, nullptr);
}

void deleteChild(const zeString::IString& name) {
    File child(name);
    // Not followed: what a link points to lies outside the tree, and belongs to somebody else.
    if (child.transportId() == LocalFileTransport::id && mayBeLocalLink(child.getFullName()))
        unlinkLocal(child.getFullName());
    else
        child.deleteSelf(File::DeleteRecursive);
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
    if (isOpen() || dest.isOpen())
        return File::getError(File::ErrIsOpen);
    if (getFullName() == dest.getFullName())
        return File::getError(File::ErrNoOverwrite);
    if (isDirectory()) {
        zeUtil::Error made = dest.makeDirectory();
        if (made.code() != File::ErrNone && made.code() != File::ErrFileExists)
            return made;
        return recreateDirStructure(dest, false);
    }

    if (dest.open(File::ModeWrite | File::ModeCopyTarget).code() != File::ErrNone)
        return File::getError(File::ErrIO);
    // Callers rely on the result of the last close, and on nothing else: not on a source that
    // opens, nor on blocks that arrive.
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
    const zeString::IString directory = withSeparator(*this);
    std::vector<zeString::IString> names;
    if (zeUtil::Error error = readDir(names, false); error.code() != File::ErrNone)
        return error;
    for (const zeString::IString& entry : names)
        if (!isNoEntry(entry))
            deleteChild(plus(directory, entry));
    return deleteSelf();
}

zeUtil::Error FileTransport::recreateDirStructure(FileTransport& dest, bool deleteSource) {
    if (!isDirectory() || !dest.isDirectory())
        return File::getError(File::ErrNotDirectory);
    std::vector<zeString::IString> names;
    zeUtil::Error result = readDir(names, false);
    if (result.code() != File::ErrNone)
        return result;
    const zeString::IString from = withSeparator(*this);
    const zeString::IString to = withSeparator(dest);
    const auto keepFirst = [&result](const zeUtil::Error& error) {
        if (result.code() == File::ErrNone)
            result = error;
    };
    for (const zeString::IString& entry : names) {
        if (isNoEntry(entry))
            continue;
        zeString::IString target = plus(to, entry);
        if (getSeparator() != dest.getSeparator() && target[target.last()] == getSeparator())
            target[target.last()] = dest.getSeparator();
        File source(plus(from, entry));
        File copy(target);
        const zeUtil::Error copied = source.copyTo(copy);
        keepFirst(copied);
        if (deleteSource && copied.code() == File::ErrNone)
            keepFirst(source.deleteSelf(File::DeleteNonRecursive));
    }
    return result;
}

} // namespace zeOS

// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFile.h"

#include "Base/OS/zeOSFileFactory.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFileTransport.h"
#include "Base/OS/zeOSFilename.h"

namespace zeOS {

const char* const File::ErrMsgs[20] = {
    "",
    "Not Implemented",
    "File Exists",
    "End Of File",
    "An I/O problem has occurred",
    "No write permission",
    "No read permission",
    "No Overwrite permission",
    "File is not open",
    "File is open",
    "Resource is not a directory",
    "Resource is not a file",
    "The path is too long",
    "The directory is not empty",
    "ErrSyscall",
    "The URL is invalid",
    "Permission Denied",
    "Authentication Failed",
    "File does not exist",
    "Cannot become the parent of a root directory",
};

zeUtil::Error File::getError(int code) {
    // The message is the format itself: with "%s" the empty text of a success would become a
    // message.
    return zeUtil::Error(code, ErrMsgs[code]);
}

File::File(const zeString::IString& name)
    : transport_(FileFactory::getFileFactory()->getFileTransport(name)) {}

File::File(FileTransport* transport) : transport_(transport) {}

File::~File() {
    delete transport_;
}

zeUtil::Error File::read(void* buffer, unsigned long count, unsigned long* done) {
    return transport_->read(buffer, count, done);
}

zeUtil::Error File::write(const void* buffer, unsigned long count, unsigned long* done) {
    return transport_->write(buffer, count, done);
}

zeUtil::Error File::open(int mode) {
    return isOpen() ? getError(ErrIsOpen) : transport_->open(mode);
}

zeUtil::Error File::openTemp(int mode) {
    return isOpen() ? getError(ErrIsOpen) : transport_->openTemp(mode);
}

zeUtil::Error File::close() {
    return isOpen() ? transport_->close() : getError(ErrNotOpen);
}

zeUtil::Error File::copyTo(File& dest) {
    return isOpen() ? getError(ErrIsOpen) : transport_->copyTo(*dest.transport_);
}

zeUtil::Error File::moveTo(File& dest) {
    return isOpen() ? getError(ErrIsOpen) : transport_->moveTo(*dest.transport_);
}

zeUtil::Error File::deleteSelf(int flags) {
    if (isOpen())
        return getError(ErrIsOpen);
    if (isDirectory() && !(flags & DeleteNonRecursive))
        return transport_->recursiveDeleteSelf();
    return transport_->deleteSelf();
}

zeUtil::Error File::makeDirectory() {
    return isOpen() ? getError(ErrIsOpen) : transport_->makeDirectory();
}

zeUtil::Error File::makeTempDirectory() {
    return isOpen() ? getError(ErrIsOpen) : transport_->makeTempDirectory();
}

zeUtil::Error File::makeDirectoryAll() {
    return isOpen() ? getError(ErrIsOpen) : transport_->makeDirectoryAll();
}

zeUtil::Error File::readDir(std::vector<zeString::IString>& names, bool fullNames) {
    if (!isDirectory())
        return getError(ErrNotDirectory);
    names.clear();
    return transport_->readDir(names, fullNames);
}

zeUtil::Error File::query(FileStatus& status, bool withOwner) const {
    status.reset();
    zeUtil::Error error = transport_->query(status);
    if (error.code() == 0 && withOwner)
        return transport_->queryOwnerGroup(status);
    return error;
}

zeUtil::Error File::query(const zeString::IString& name, FileStatus& status) {
    const File file(name);
    return file.isValid() ? file.query(status, false) : getError(ErrNotImplemented);
}

zeUtil::Error File::query(const Filename& name, FileStatus& status) {
    return query(name.path(), status);
}

bool File::isDirectory() const {
    return transport_->isDirectory();
}

bool File::isOpen() const {
    return transport_->isOpen();
}

zeString::IString File::getFullName() const {
    return transport_->getFullName();
}

zeString::IString File::getNameTitle() const {
    return transport_->getNameTitle();
}

zeString::IString File::getNameBase() const {
    return transport_->getNameBase();
}

wchar_t File::getSeparator() const {
    return transport_->getSeparator();
}

zeString::IString File::transportId() const {
    return transport_->transportId();
}

} // namespace zeOS

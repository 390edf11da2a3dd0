// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSMemMapFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

#include "Base/OS/zeOSError.h"
#include "Base/Strings/zeStringCString.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeOS {

using zeUtil::retried;

MemMapFile::MemMapFile(unsigned long size, int mode)
    : size_(size), mode_(mode), reserved_(nullptr) {
    if (mode >= 2)
        throw zeUtil::Error(1, "Bad parameters to MemMapFile(): permissions");
    if (size == 0)
        throw zeUtil::Error(1, "Bad parameters to MemMapFile(): size");
    reserved_ = new char();
}

MemMapFile::MemMapFile(const char* name, unsigned long size, int mode) : MemMapFile(size, mode) {
    filename_.assign(name, zeString::EncodingMultibyte);
}

MemMapFile::MemMapFile(const zeString::CString& name, unsigned long size, int mode)
    : MemMapFile(size, mode) {
    filename_.assign(name, zeString::EncodingUTF8);
}

MemMapFile::MemMapFile(const zeString::IString& name, unsigned long size, int mode)
    : MemMapFile(size, mode) {
    filename_ = name;
}

MemMapFile::~MemMapFile() {
    if (mapped_)
        unmap();
    delete reserved_;
}

std::pair<void*, zeUtil::Error> MemMapFile::map() {
    const int flags = (mode_ == 1 ? O_RDWR | O_CREAT : O_RDONLY) | O_CLOEXEC;
    const zeUtil::Descriptor file(retried([&] { return ::open(filename_.asUTF8(), flags, 0666); }));
    if (!file.isOpen())
        return {nullptr, openError(errno)};
    zeUtil::Error error = mapOpenFile(file.get());
    return {error.code() == 0 ? mapped_ : nullptr, error};
}

zeUtil::Error MemMapFile::mapOpenFile(int descriptor) {
    if (mode_ == 1)
        if (zeUtil::Error error = provideSize(descriptor); error.code() != 0)
            return error;
    const int protection = mode_ == 1 ? PROT_READ | PROT_WRITE : PROT_READ;
    void* const pointer = ::mmap(nullptr, size_, protection, MAP_SHARED, descriptor, 0);
    if (!pointer) // never MAP_FAILED, which passes for a mapping: callers compare
        return systemError(L"mmap() failed for file %S: %S");
    mapped_ = pointer;
    return zeUtil::Error();
}

/// Compares the size with the position, not with the length of the file, so that an existing file
/// is written to as well.
zeUtil::Error MemMapFile::provideSize(int descriptor) const {
    const off_t position = ::lseek(descriptor, 0, SEEK_CUR);
    if (position == -1)
        return systemError(L"Cannot seek in file %S: %S");
    if (size_ <= static_cast<unsigned long>(position))
        return zeUtil::Error();
    if (::lseek(descriptor, static_cast<off_t>(size_ - 1), SEEK_SET) == -1)
        return zeUtil::Error(2, L"Cannot seek to %d in file %S: %S", static_cast<int>(size_ - 1),
                             filename_.asWChar(), getLastError().asWChar());
    if (retried([&] { return ::write(descriptor, "", 1); }) != 1)
        return systemError(L"Cannot write to file %S: %S");
    return zeUtil::Error();
}

zeUtil::Error MemMapFile::unmap() {
    if (!mapped_)
        return zeUtil::Error(4, "");
    zeUtil::Error error;
    if (::munmap(mapped_, size_) != 0)
        error = systemError(L"munmap() failed for file %S: %S");
    mapped_ = nullptr;
    return error;
}

zeUtil::Error MemMapFile::openError(int reason) const {
    const wchar_t* const format = reason != EACCES ? L"Cannot open file %S: %S"
                                  : mode_ == 1     ? L"Cannot read/write file %S: %S"
                                                   : L"Cannot read file: %S: %S";
    return zeUtil::Error(reason == EACCES ? 3 : 2, format, filename_.asWChar(),
                         errorText(reason).asWChar());
}

zeUtil::Error MemMapFile::systemError(const wchar_t* format) const {
    return zeUtil::Error(2, format, filename_.asWChar(), getLastError().asWChar());
}

} // namespace zeOS

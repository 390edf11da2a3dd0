// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSMemoryMappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeOS {
namespace {

using zeUtil::retried;

constexpr unsigned long stride = 4096;
constexpr unsigned long stretch = 1048576;

/// Gives an empty file its length by its last byte.
bool setLength(int descriptor, long size) {
    return size > 0 && ::lseek(descriptor, size - 1, SEEK_SET) != -1 &&
           retried([&] { return ::write(descriptor, "x", 1); }) == 1;
}

} // namespace

// FileMapping

FileMapping::FileMapping(long offsetInFile, unsigned long length, void* start)
    : offset(offsetInFile), size(length), pointer(start) {}

void FileMapping::unmap() {
    if (!pointer)
        return;
    ::munmap(pointer, size);
    *this = FileMapping();
}

void FileMapping::flush(unsigned long from, unsigned long to) {
    if (pointer)
        ::msync(static_cast<char*>(pointer) + from, to - from, MS_SYNC);
}

void FileMapping::load(unsigned long from, unsigned long to) {
    if (!pointer)
        return;
    char* const start = static_cast<char*>(pointer) + from;
    ::madvise(start, to - from, MADV_SEQUENTIAL);
    accessPagesSequentially(from, to);
    ::madvise(start, to - from, MADV_NORMAL);
}

void FileMapping::accessPagesSequentially(unsigned long from, unsigned long to) {
    if (!pointer || size == 0)
        return;
    // A range that ends with the mapping at a whole MiB would touch the byte behind it.
    const unsigned long last = std::min(to - to % stretch, size - 1);
    const volatile char* const bytes = static_cast<const char*>(pointer);
    for (unsigned long at = from - from % stretch; at <= last; at += stride)
        static_cast<void>(bytes[at]);
}

int FileMapping::getGranularity() {
    static const int granularity = ::getpagesize();
    return granularity;
}

// MemoryMappedFile

class MemoryMappedFile::MemoryMappedFileImpl : public ze::ImplBase {
public:
    zeString::IString filename;
    long size = 0;
    zeUtil::Descriptor descriptor;
};

MemoryMappedFile::MemoryMappedFile() : impl_(new MemoryMappedFileImpl) {}

MemoryMappedFile::~MemoryMappedFile() {
    if (owned_)
        delete impl_;
}

bool MemoryMappedFile::valid() const {
    return impl_->size > 0;
}

bool MemoryMappedFile::createFile(const zeString::IString& name, long size, bool unlinkNow) {
    impl_->filename = name;
    impl_->size = 0;
    impl_->descriptor.close();
    const char* const path = impl_->filename.asUTF8();
    impl_->descriptor = zeUtil::Descriptor(
        retried([&] { return ::open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600); }));
    const bool isReady = impl_->descriptor.isOpen() && (!unlinkNow || ::unlink(path) == 0) &&
                         setLength(impl_->descriptor.get(), size);
    if (isReady) {
        impl_->size = size;
    } else {
        impl_->filename = zeString::IString();
        impl_->descriptor.close();
    }
    return isReady;
}

const zeString::IString& MemoryMappedFile::getFilename() const {
    return impl_->filename;
}

long MemoryMappedFile::getSize() const {
    return impl_->size;
}

FileMapping MemoryMappedFile::map(long offset, unsigned long size) {
    void* const pointer =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, impl_->descriptor.get(), offset);
    return FileMapping(offset, size, pointer == MAP_FAILED ? nullptr : pointer);
}

} // namespace zeOS

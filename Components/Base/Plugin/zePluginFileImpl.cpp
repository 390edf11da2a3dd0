// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginFileImpl.h"

#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "Base/OS/zeOSFileStatus.h"
#include "Base/Utility/zeUtilDescriptor.h"

using zeUtil::retried;

namespace zePlugin {
namespace {

/// Reads `bytes` bytes; false if there are fewer.
bool readAt(const zeUtil::Descriptor& file, std::size_t offset, void* buffer, std::size_t bytes) {
    const ssize_t done =
        retried([&] { return ::pread(file.get(), buffer, bytes, static_cast<off_t>(offset)); });
    return done == static_cast<ssize_t>(bytes);
}

bool isLibrary(const Elf64_Ehdr& header) {
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
           header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_phentsize == sizeof(Elf64_Phdr);
}

/// Whether a file of `size` bytes has what is to be mapped of it. A segment without content takes a
/// page of the file only where it begins within one: linkers give it any place, also behind the
/// file's end.
bool holds(std::size_t size, const Elf64_Phdr& segment) {
    constexpr std::size_t page = 4096;
    if (segment.p_filesz == 0)
        return segment.p_vaddr % page == 0 || segment.p_offset / page * page < size;
    return segment.p_offset <= size && segment.p_filesz <= size - segment.p_offset;
}

/// Whether a library ends before what is to be mapped of it.
bool isCutOff(const char* path, std::size_t size) {
    const zeUtil::Descriptor file(retried([&] { return ::open(path, O_RDONLY | O_CLOEXEC); }));
    Elf64_Ehdr header;
    if (!readAt(file, 0, &header, sizeof header) || !isLibrary(header))
        return false;
    std::vector<Elf64_Phdr> segments(header.e_phnum);
    if (!readAt(file, header.e_phoff, segments.data(), segments.size() * sizeof segments[0]))
        return false; // the dynamic linker cannot read them either
    return std::any_of(segments.begin(), segments.end(), [size](const Elf64_Phdr& segment) {
        return segment.p_type == PT_LOAD && !holds(size, segment);
    });
}

} // namespace

bool canBeOpened(const char* path, const zeOS::FileStatus& status) {
    if (!std::strchr(path, '/'))
        return true; // it is looked for elsewhere: this is not the file
    if (!status.isFile())
        return status.isDirectory();
    return !isCutOff(path, static_cast<std::size_t>(status.size()));
}

} // namespace zePlugin

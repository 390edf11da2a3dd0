// SPDX-License-Identifier: MIT

// Replaces a file so that the user never loses the old one: the new content goes into a temporary
// file beside it, which takes its place only when all of it is on disk.
//
//     $ echo old > note.txt
//     $ echo new | protectedsave note.txt
//     note.txt: 4 bytes saved
//     $ cat note.txt
//     new
//     $ (ulimit -f 1; yes | head --bytes=100000 | protectedsave note.txt)
//     protectedsave: note.txt: File too large; the old file is unchanged
//     $ cat note.txt
//     new
//     $ protectedsave missing/note.txt < note.txt
//     protectedsave: missing/note.txt: No such file or directory; the old file is unchanged
//     $ ls
//     note.txt

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "Base/OS/zeOSProtectedWrite.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace {

/// Writes all of a block; false with errno if that fails.
bool writeAll(int descriptor, const char* block, ssize_t size) {
    while (size > 0) {
        const ssize_t written = zeUtil::retried(
            [&] { return write(descriptor, block, static_cast<std::size_t>(size)); });
        if (written < 0)
            return false;
        block += written;
        size -= written;
    }
    return true;
}

/// The number of bytes copied from standard input, or -1 with errno.
long copyInput(int descriptor) {
    long total = 0;
    for (;;) {
        char block[4096];
        const ssize_t size =
            zeUtil::retried([&] { return read(STDIN_FILENO, block, sizeof block); });
        if (size == 0)
            return total;
        if (size < 0 || !writeAll(descriptor, block, size))
            return -1;
        total += size;
    }
}

/// Writes a new file and waits until it is on disk. Every step can fail because the disk is full,
/// close() included: finalize() is called only if none did. The file gets the rights of any new
/// file; a program that keeps those of the old one sets them here, by fchmod().
long writeFile(const char* name) {
    zeUtil::Descriptor file(
        zeUtil::retried([&] { return open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666); }));
    if (!file.isOpen())
        return -1;
    const long total = copyInput(file.get());
    if (total < 0 || zeUtil::retried([&] { return fsync(file.get()); }) != 0 || file.close() != 0)
        return -1;
    return total;
}

int fail(const char* name, const char* reason) {
    std::fprintf(stderr, "protectedsave: %s: %s; the old file is unchanged\n", name, reason);
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2 || argv[1][0] == '-') {
        std::fputs("usage: protectedsave FILE < CONTENT\n", stderr);
        return 2;
    }
    std::signal(SIGXFSZ, SIG_IGN); // A file that grows too large is then a failing write.
    const char* name = argv[1];
    zeOS::ProtectedWrite save(zeString::IString(name, zeString::EncodingUTF8));
    if (!save.init())
        return fail(name, save.getStatus() == zeOS::ProtectedWrite::StatusNotWritable
                              ? "it cannot be written"
                              : "there is no place for a temporary file");

    // A return before finalize() abandons the save: the destructor deletes the temporary file.
    const long total = writeFile(save.getTempFilename().path().asUTF8());
    if (total < 0)
        return fail(name, std::strerror(errno));
    if (!save.finalize()) {
        std::fprintf(stderr, "protectedsave: %s: the new file cannot be put in place (status %d)\n",
                     name, save.getStatus());
        return 1;
    }
    std::printf("%s: %ld bytes saved\n", name, total);
    return 0;
}

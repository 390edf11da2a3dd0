// SPDX-License-Identifier: MIT

#include "Base/OS/files/zeOSFileCopyImpl.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace zeOS {

using zeUtil::Descriptor;
using zeUtil::retried;

namespace {

bool writeAll(const Descriptor& to, const char* block, size_t size) {
    while (size > 0) {
        const ssize_t done = retried([&] { return ::write(to.get(), block, size); });
        if (done <= 0)
            return false;
        block += done;
        size -= static_cast<size_t>(done);
    }
    return true;
}

/// Copies all of `input` to `output`, which is empty, and deletes it if that fails.
CopyResult fill(Descriptor output, const zeString::IString& name, const Descriptor& input) {
    const bool isWritten = copyContent(input, output);
    // A network file system may report only here that there was no room.
    if (output.close() == 0 && isWritten)
        return CopyResult::Copied;
    ::unlink(name.asUTF8());
    return CopyResult::Failed;
}

/// Opens a regular file. Anything else is refused: a FIFO without a writer would look empty.
Descriptor openSource(const zeString::IString& path) {
    Descriptor file = openLocal(path, O_RDONLY | O_NONBLOCK);
    struct stat status;
    if (file.isOpen() && (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)))
        file.close();
    return file;
}

bool areTwoFiles(const Descriptor& a, const Descriptor& b) {
    struct stat first;
    struct stat second;
    return ::fstat(a.get(), &first) == 0 && ::fstat(b.get(), &second) == 0 &&
           (first.st_dev != second.st_dev || first.st_ino != second.st_ino);
}

} // namespace

Descriptor openLocal(const zeString::IString& path, int flags) {
    const char* name = path.asUTF8();
    return Descriptor(retried([&] { return ::open(name, flags | O_CLOEXEC, 0666); }));
}

bool copyContent(const Descriptor& from, const Descriptor& to) {
    char block[4096];
    for (;;) {
        const ssize_t got = retried([&] { return ::read(from.get(), block, sizeof block); });
        if (got <= 0)
            return got == 0;
        if (!writeAll(to, block, static_cast<size_t>(got)))
            return false;
    }
}

CopyResult copyToNewFile(const zeString::IString& from, const zeString::IString& to) {
    const Descriptor input = openSource(from);
    if (!input.isOpen())
        return CopyResult::Failed;
    Descriptor output = openLocal(to, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
    if (!output.isOpen())
        return errno == EEXIST ? CopyResult::NameTaken : CopyResult::Failed;
    return fill(std::move(output), to, input);
}

CopyResult copyOverFile(const zeString::IString& from, const zeString::IString& to) {
    const Descriptor input = openSource(from);
    Descriptor output = openLocal(to, O_WRONLY | O_NONBLOCK);
    if (!areTwoFiles(input, output) || ::ftruncate(output.get(), 0) != 0)
        return CopyResult::Failed;
    return fill(std::move(output), to, input);
}

} // namespace zeOS

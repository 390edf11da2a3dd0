// SPDX-License-Identifier: MIT

#include "Base/OS/files/zeOSFileCopyImpl.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

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
    const Descriptor input = openLocal(from, O_RDONLY | O_NONBLOCK);
    if (!input.isOpen())
        return CopyResult::Failed;
    Descriptor output = openLocal(to, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
    if (!output.isOpen())
        return errno == EEXIST ? CopyResult::NameTaken : CopyResult::Failed;
    if (copyContent(input, output))
        return CopyResult::Copied;
    output.close();
    ::unlink(to.asUTF8());
    return CopyResult::Failed;
}

} // namespace zeOS

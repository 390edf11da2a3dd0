// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFileOperations.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>

#include "Base/OS/files/zeOSFileFactoryImpl.h"
#include "Base/OS/files/zeOSLocalFileTransportImpl.h"
#include "Base/OS/zeOSError.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"

namespace zeOS {
namespace {

bool existsLocally(const zeString::IString& path) {
    struct stat status;
    return ::stat(path.asUTF8(), &status) == 0;
}

/// A descriptor that closes itself.
class Descriptor {
public:
    Descriptor(const char* path, int flags) {
        do
            fd_ = ::open(path, flags | O_CLOEXEC, 0666);
        while (fd_ == -1 && errno == EINTR);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    bool isOpen() const { return fd_ != -1; }

    /// What a close finds out is not asked for.
    void close() {
        if (isOpen())
            ::close(fd_);
        fd_ = -1;
    }

    /// The number of bytes, 0 at the end, -1 for a failure.
    ssize_t read(void* block, size_t size) const {
        ssize_t got;
        do
            got = ::read(fd_, block, size);
        while (got == -1 && errno == EINTR);
        return got;
    }

    /// Whether all bytes were taken.
    bool write(const char* block, size_t size) const {
        while (size > 0) {
            const ssize_t done = ::write(fd_, block, size);
            if (done == -1 && errno == EINTR)
                continue;
            if (done <= 0)
                return false;
            block += done;
            size -= static_cast<size_t>(done);
        }
        return true;
    }

private:
    int fd_;
};

zeUtil::Error pathError(int code, const wchar_t* format, const zeString::IString& path) {
    return zeUtil::Error(code, format, path.asWChar());
}

/// Whether `dst`, of which `before` is known, may be written to.
zeUtil::Error checkTarget(const struct stat& source, const struct stat& before,
                          const zeString::IString& src, const zeString::IString& dst,
                          bool overwrite) {
    if (before.st_dev == source.st_dev && before.st_ino == source.st_ino)
        return pathError(5, L"Can't copy %S to itself.", src);
    if (S_ISDIR(before.st_mode)) {
        // Looked at twice: another process may just be replacing the directory by a file.
        struct stat again;
        if (::stat(dst.asUTF8(), &again) != 0)
            return zeUtil::Error();
        if (S_ISDIR(again.st_mode))
            return pathError(4, L"Qualified destination file %S is a directory.", dst);
    }
    if (!overwrite)
        return pathError(3, L"File %S exists, and 'overwrite' flag is not specified.", dst);
    return zeUtil::Error();
}

bool copyBlocks(const Descriptor& from, const Descriptor& to) {
    char block[4096];
    for (;;) {
        const ssize_t got = from.read(block, sizeof block);
        if (got <= 0)
            return got == 0;
        if (!to.write(block, static_cast<size_t>(got)))
            return false;
    }
}

/// The code and text for what `rename` returned. These are no values that it returns: every
/// failure is the last one, and callers know that text.
zeUtil::Error renameError(int result, const zeString::IString& path) {
    switch (result) {
    case 13:
        return zeUtil::Error(6, "A component of either path prefix deniessearch permission");
    case 22:
        return zeUtil::Error(6, "source is a parent directory of target, or an attempt is made to "
                                "rename the .  or ..  directory.");
    case 2:
        return pathError(6, L"File or path specified by %S name not found.", path);
    default:
        return zeUtil::Error(6, "Unkown system error.");
    }
}

} // namespace

bool doesFileExist(const Filename& name) {
    if (everyNameIsLocal()) {
        std::optional<zeString::IString> storage;
        return existsLocally(localPath(name.path(), storage));
    }
    FileStatus status;
    return File::query(name, status).code() == File::ErrNone && status.exists();
}

bool isFileWritable(const Filename& name) {
    if (everyNameIsLocal()) {
        std::optional<zeString::IString> storage;
        const zeString::IString& path = localPath(name.path(), storage);
        return existsLocally(path) && ::access(path.asUTF8(), W_OK) == 0;
    }
    FileStatus status;
    return File::query(name, status).code() == File::ErrNone && status.isWritable();
}

zeUtil::Error fileDelete(const Filename& name) {
    if (::unlink(name.path().asUTF8()) != 0)
        return zeUtil::Error(1, getLastError());
    return zeUtil::Error();
}

zeUtil::Error fileDelete(const char* name) {
    return fileDelete(Filename(zeString::IString(name)));
}

zeUtil::Error fileDelete(const wchar_t* name) {
    return fileDelete(Filename(zeString::IString(name)));
}

zeUtil::Error fileCopy(const Filename& src, const Filename& dst, bool overwrite) {
    const zeString::IString& from = src.path();
    const zeString::IString& to = dst.path();
    struct stat source;
    struct stat target;
    if (::stat(from.asUTF8(), &source) != 0)
        return zeUtil::Error(2, getLastError());
    if (::stat(to.asUTF8(), &target) == 0)
        if (zeUtil::Error error = checkTarget(source, target, from, to, overwrite);
            error.code() != 0)
            return error;

    Descriptor input(from.asUTF8(), O_RDONLY);
    if (!input.isOpen())
        return pathError(1, L"Can't open %S for reading", from);
    Descriptor output(to.asUTF8(), O_WRONLY | O_CREAT | O_TRUNC);
    if (!output.isOpen())
        return pathError(1, L"Can't create %S", to);
    if (copyBlocks(input, output))
        return zeUtil::Error();
    // A part of a file is worse than none. The text is the same for a write that failed.
    input.close();
    output.close();
    ::unlink(to.asUTF8());
    return pathError(1, L"Error reading file %S.", from);
}

zeUtil::Error fileCopy(const char* src, const char* dst, bool overwrite) {
    return fileCopy(Filename(zeString::IString(src)), Filename(zeString::IString(dst)), overwrite);
}

zeUtil::Error fileCopy(const wchar_t* src, const wchar_t* dst, bool overwrite) {
    return fileCopy(Filename(zeString::IString(src)), Filename(zeString::IString(dst)), overwrite);
}

zeUtil::Error fileMove(const Filename& src, const Filename& dst, bool overwrite) {
    zeUtil::Error copied = fileCopy(src, dst, overwrite);
    // Dropped: the file is where it should be, and callers count a source that stays as moved.
    if (copied.code() == 0)
        fileDelete(src);
    return copied;
}

zeUtil::Error fileMove(const char* src, const char* dst, bool overwrite) {
    return fileMove(Filename(zeString::IString(src)), Filename(zeString::IString(dst)), overwrite);
}

zeUtil::Error fileMove(const wchar_t* src, const wchar_t* dst, bool overwrite) {
    return fileMove(Filename(zeString::IString(src)), Filename(zeString::IString(dst)), overwrite);
}

zeUtil::Error fileRename(const Filename& src, const Filename& dst) {
    if (src.dirname() != dst.dirname())
        return fileMove(src, dst, true);
    const int result = std::rename(src.path().asUTF8(), dst.path().asUTF8());
    return result == 0 ? zeUtil::Error() : renameError(result, src.path());
}

zeUtil::Error fileRename(const char* src, const char* dst) {
    return fileRename(Filename(zeString::IString(src)), Filename(zeString::IString(dst)));
}

zeUtil::Error fileRename(const wchar_t* src, const wchar_t* dst) {
    return fileRename(Filename(zeString::IString(src)), Filename(zeString::IString(dst)));
}

} // namespace zeOS

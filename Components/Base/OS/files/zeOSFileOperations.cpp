// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFileOperations.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "Base/OS/files/zeOSFileCopyImpl.h"
#include "Base/OS/files/zeOSFileFactoryImpl.h"
#include "Base/OS/files/zeOSLocalPathImpl.h"
#include "Base/OS/zeOSError.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"

namespace zeOS {
namespace {

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
        // Checked twice: another process may be replacing the directory by a file.
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

/// The code and text for what `rename` returned. It returns none of these values, so that every
/// failure is the last one: kept for compatibility.
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
    if (everyNameIsLocal())
        return localFileType(LocalPath(name.path()).text()) != 0;
    FileStatus status;
    return File::query(name, status).code() == File::ErrNone && status.exists();
}

bool isFileWritable(const Filename& name) {
    if (everyNameIsLocal()) {
        const LocalPath path(name.path());
        return localFileType(path.text()) != 0 && ::access(path.asUTF8(), W_OK) == 0;
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

    zeUtil::Descriptor input = openLocal(from, O_RDONLY);
    if (!input.isOpen())
        return pathError(1, L"Can't open %S for reading", from);
    zeUtil::Descriptor output = openLocal(to, O_WRONLY | O_CREAT | O_TRUNC);
    if (!output.isOpen())
        return pathError(1, L"Can't create %S", to);
    if (copyContent(input, output))
        return zeUtil::Error();
    // No partial copy remains. The message is the same for a failed write.
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
    // Its result is dropped: a source that stays counts as moved, kept for compatibility.
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

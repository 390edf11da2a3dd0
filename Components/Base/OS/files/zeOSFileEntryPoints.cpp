// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFileEntryPoints.h"

#include <memory>

#include "Base/OS/zeOSFileFactory.h"
#include "Base/OS/zeOSFileStatus.h"

namespace {

std::unique_ptr<zeOS::File> makeFile(const wchar_t* path) {
    return std::unique_ptr<zeOS::File>(zeOS::FileFactory::getFileFactory()->getFile(path));
}

/// The status of a query that succeeded; an empty one for any other.
zeOS::FileStatus statusOf(const zeString::IString& path) {
    zeOS::FileStatus status;
    if (zeOS::File::query(path, status).code() != zeOS::File::ErrNone)
        status.reset();
    return status;
}

} // namespace

int zeOS_CopyFileTo(const char* from, const char* to) {
    return zeOS_CopyFileToW(zeString::IString(from).asWChar(), zeString::IString(to).asWChar());
}

int zeOS_CopyFileToW(const wchar_t* from, const wchar_t* to) {
    const std::unique_ptr<zeOS::File> source = makeFile(from);
    const std::unique_ptr<zeOS::File> target = makeFile(to);
    // 0 without a file, as for a success: kept for compatibility.
    if (!source || !target)
        return 0;
    return source->copyTo(*target).code() != zeOS::File::ErrNone;
}

int zeOS_ReadHeaderFromFile(const char* path, void* buffer, int count) {
    return zeOS_ReadHeaderFromFileW(zeString::IString(path).asWChar(), buffer, count);
}

int zeOS_ReadHeaderFromFileW(const wchar_t* path, void* buffer, int count) {
    if (!buffer || count < 0)
        return -1;
    if (count == 0)
        return 0;
    const std::unique_ptr<zeOS::File> file = makeFile(path);
    if (!file || file->open(zeOS::File::ModeRead).code() != zeOS::File::ErrNone)
        return -1;
    // The end of the file is an error here as well: the header is incomplete.
    unsigned long done = 0;
    const zeUtil::Error error = file->read(buffer, static_cast<unsigned long>(count), &done);
    return error.code() == zeOS::File::ErrNone ? static_cast<int>(done) : -1;
}

int zeOS_DoesFileExist(const char* path) {
    return zeOS_DoesFileExistW(zeString::IString(path).asWChar());
}

int zeOS_DoesFileExistW(const wchar_t* path) {
    return statusOf(path).exists();
}

int zeOS_IsFileWriteable(const char* path) {
    return zeOS_IsFileWriteableW(zeString::IString(path).asWChar());
}

int zeOS_IsFileWriteableW(const wchar_t* path) {
    return statusOf(path).isWritable();
}

int zeOS_DoesDirectoryExist(const char* path) {
    // The query's error and the type of the file are ignored: kept for compatibility.
    zeOS::FileStatus status;
    zeOS::File::query(zeString::IString(path), status);
    return status.exists();
}

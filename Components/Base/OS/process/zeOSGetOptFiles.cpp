// SPDX-License-Identifier: MIT

// The checks of files that a program may override.

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/OS/zeOSGetOpt.h"

namespace zeOS {

using zeString::IString;
using zeUtil::Error;

namespace {

/// What cannot be looked at does not exist.
FileStatus statusOf(const Filename& name) {
    FileStatus status;
    (void)File::query(name, status);
    return status;
}

/// By the wide name, which no locale can make fail.
Error failure(const wchar_t* format, const IString& name) {
    return Error(1, format, name.asWChar());
}

/// Whether a new file may be made in the directory of `file`, which does not exist.
Error checkParent(const IString& file) {
    const Filename name(file);
    const Filename parent(name.dirname().length() > 0 ? name.dirname() : IString(L"."));
    const FileStatus status = statusOf(parent);
    if (!status.exists())
        return failure(L"Directory for %S does not exist.", file);
    if (!status.isDirectory())
        return failure(L"%S is not a valid path.", file);
    if (status.isWritable())
        return Error();
    if (parent.path() == L".")
        return Error(1, "The current directory is not writable.");
    return failure(L"Directory is not writable: %S", parent.path());
}

} // namespace

Error GetOpt::validFileName(const IString& name) const {
    return name.length() == 0 ? Error(1, "file name is empty.") : Error();
}

Error GetOpt::validInputFile(const IString& name) const {
    if (Error error = validFileName(name); error.code() != 0)
        return error;
    const FileStatus status = statusOf(name);
    if (!status.exists())
        return failure(L"%S does not exist.", name);
    if (!status.isFile())
        return failure(L"%S exists but is not a file.", name);
    if (!status.isReadable())
        return failure(L"%S is not readable.", name);
    return Error();
}

Error GetOpt::validOutputFile(const IString& name) const {
    if (Error error = validFileName(name); error.code() != 0)
        return error;
    const FileStatus status = statusOf(name);
    if (!status.exists())
        return checkParent(name);
    if (!status.isFile())
        return failure(L"%S exists but is not a file.", name);
    if (!status.isWritable())
        return failure(L"%S is not writable.", name);
    return Error();
}

Error GetOpt::validInOutFile(const IString& name) const {
    Error error = validInputFile(name);
    return error.code() != 0 ? error : validOutputFile(name);
}

Error GetOpt::validDirectory(const IString& name) const {
    if (Error error = validFileName(name); error.code() != 0)
        return error;
    const FileStatus status = statusOf(name);
    if (!status.exists())
        return failure(L"%S does not exist.", name);
    if (!status.isDirectory())
        return failure(L"%S exists but is not a directory.", name);
    return Error();
}

} // namespace zeOS

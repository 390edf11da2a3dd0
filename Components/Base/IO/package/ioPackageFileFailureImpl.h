// SPDX-License-Identifier: MIT

#pragma once

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilError.h"

/// The code of each failure of a package.
enum ioPackageFailure : int {
    packageInternal = 1,
    packageCanNotCreate = 2,
    packageNotOpen = 3,
    packageNotWritable = 4,
    packageDirectoryFailed = 5,
    packageNoSource = 6,
    packageCanNotRead = 7,
    packageSizeInCompressing = 8,
    packageReadFailed = 9,
    packageWriteFailed = 10,
    packageNoName = 11,
    packageBadName = 12,
    packageUnknownName = 13,
    packageNameExists = 14,
    packageCanNotOpenForWrite = 15,
    packageSizeInCopying = 16,
    packageBad = 17
};

/// A failure whose message names a path or an entry: `format` has one "%S". In wide characters, so
/// that no name can make the message fail.
inline zeUtil::Error packageFailure(ioPackageFailure code, const wchar_t* format,
                                    const zeString::IString& subject) {
    return zeUtil::Error(code, format, subject.asWChar());
}

// SPDX-License-Identifier: MIT

/// @file
/// Copying the content of local files between descriptors.

#pragma once

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeOS {

/// Opens a file, with close-on-exec and, where it is made, mode 0666 less the process's mask.
zeUtil::Descriptor openLocal(const zeString::IString& path, int flags);

/// Copies all of `from` to `to` in blocks of 4096 bytes. False if reading or writing fails.
bool copyContent(const zeUtil::Descriptor& from, const zeUtil::Descriptor& to);

/// What became of a copy.
enum class CopyResult {
    Copied,
    Failed,    ///< There is no part of a copy, unless it could not be deleted.
    NameTaken, ///< There was something under the name of the copy already, which is as it was.
};

/// Copies a regular file into a new one: nothing that has the name already is written to, nor is a
/// symbolic link followed, even if somebody else makes it in this moment. Unlike fileCopy() it
/// waits for no FIFO, and reports what the system finds out only in closing the copy.
CopyResult copyToNewFile(const zeString::IString& from, const zeString::IString& to);

/// The same over another file that exists, following links.
CopyResult copyOverFile(const zeString::IString& from, const zeString::IString& to);

} // namespace zeOS

// SPDX-License-Identifier: MIT

/// @file
/// Copying what a directory holds, for transports of any kind, and the names of its entries.

#pragma once

#include "Base/OS/zeOSFileTransport.h"

namespace zeOS {

/// Whether a name that readDir() gave is none of an entry to copy or delete. An empty name, as
/// decoding may leave it, would name the directory again when joined to it, without end.
bool isNoEntry(const zeString::IString& entry);

/// The full name of a directory with a separator at its end, to be followed by that of an entry.
zeString::IString withSeparator(const FileTransport& directory);

/// Whether `source` may be copied to `dest`: an error if either is open, or both have one name.
zeUtil::Error checkCopy(const FileTransport& source, const FileTransport& dest);

/// Makes the directory that receives a copy. One that is there already will do.
zeUtil::Error makeCopyTarget(FileTransport& dest);

/// FileTransport::recreateDirStructure(). Local directories stand on a list and not on the stack,
/// which so does not grow with the depth of the tree; others copy themselves.
zeUtil::Error copyEntries(FileTransport& source, FileTransport& dest, bool deleteSource);

} // namespace zeOS

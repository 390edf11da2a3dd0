// SPDX-License-Identifier: MIT

/// @file
/// Where temporary files go.
///
/// There is one setting for the process, without a lock.
///
/// Threads: setTempDirectory() belongs to start-up; any thread may call getTempDirectory() after
/// it.
///
/// @code
/// #include "Base/OS/zeOSFilename.h"
/// zeOS::setTempDirectory(L"/var/tmp/");
/// assert(zeOS::getTempDirectory().path() == L"/var/tmp");
/// zeOS::setTempDirectory(L"");
/// @endcode

#pragma once

#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

class Filename;

/// Sets what getTempDirectory() returns from now on; an empty text clears the setting. Nothing is
/// created or checked.
ZEBASE_API void setTempDirectory(const zeString::IString& dir);

/// The directory that setTempDirectory() stored, else the environment's `TMPDIR`, decoded in the
/// locale's encoding, else "/tmp". A `TMPDIR` that is set but empty gives an empty name.
ZEBASE_API Filename getTempDirectory();

} // namespace zeOS

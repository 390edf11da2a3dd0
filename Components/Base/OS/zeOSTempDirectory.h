// SPDX-License-Identifier: MIT

/// @file
/// Where temporary files go.
///
/// One setting for the process, without a lock: setTempDirectory() belongs to start-up.
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

/// What getTempDirectory() gives from now on; an empty text takes the choice back. Nothing is
/// created or checked.
ZEBASE_API void setTempDirectory(const zeString::IString& dir);

/// What setTempDirectory() stored, else the environment's `TMPDIR`, decoded in the locale's
/// encoding, else "/tmp". A `TMPDIR` that is set but empty gives an empty name.
ZEBASE_API Filename getTempDirectory();

} // namespace zeOS

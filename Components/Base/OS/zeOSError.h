// SPDX-License-Identifier: MIT

/// @file
/// The system's own words for an error number, as they go into the messages of failing calls.
///
/// Any thread may call these; each sees its own `errno`. They leave `errno` as it was.
///
/// @code
/// #include <cerrno>
/// errno = ENOENT;
/// assert(zeOS::getLastError() == zeOS::errorText(ENOENT));
/// @endcode

#pragma once

#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// The text of `errno` as the last system call of this thread left it: see errorText().
ZEBASE_API zeString::IString getLastError();

/// What `strerror` says about `number`, in the language of the process; "unknown error" where it
/// says nothing.
ZEBASE_API zeString::IString errorText(int number);

} // namespace zeOS

// SPDX-License-Identifier: MIT

/// @file
/// The system's text for an error number, as it goes into the messages of failing calls.
///
/// Threads: any thread may call these; each sees its own `errno`, which they leave as it was.
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

/// errorText() of the `errno` that the last system call of this thread left.
ZEBASE_API zeString::IString getLastError();

/// The text of `strerror` for `number`, in the language of the process; "unknown error" where that
/// is empty.
ZEBASE_API zeString::IString errorText(int number);

} // namespace zeOS

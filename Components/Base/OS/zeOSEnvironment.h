// SPDX-License-Identifier: MIT

/// @file
/// Environment variables by type.
///
/// Names go to the system as UTF-8; values are decoded in the locale's encoding, so that "?" stands
/// for every byte above 0x7F in the "C" locale, which a program starts in.
///
/// Threads: any thread may call, while no thread changes the environment or the locale.
///
/// @code
/// #include <cstdlib>
/// setenv("ZE_EXAMPLE", " Yes ", 1);
/// bool isWanted = false;
/// assert(zeOS::GetEnv("ZE_EXAMPLE", isWanted, false) && isWanted);
/// int count = 0;
/// assert(!zeOS::GetEnv("ZE_NO_SUCH_VARIABLE", count, 4) && count == 4);
/// @endcode

#pragma once

#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// @{
/// Whether the variable is set, even to an empty value.
ZEBASE_API bool GetEnv(const zeString::IString& name);
ZEBASE_API bool GetEnvExists(const zeString::IString& name);
/// @}

/// Puts the value into `value`, and leaves that alone if the variable is not set. Returns whether
/// it is.
ZEBASE_API bool GetEnv(const zeString::IString& name, zeString::IString& value);

/// Puts the number at the start of the value into `value`, or `defaultValue` if the variable is not
/// set. Returns whether it is. What is read is not checked: `strtol` in base 10, its low 32 bits,
/// so that a value without a number gives 0, and one that is too large anything.
ZEBASE_API bool GetEnv(const zeString::IString& name, int& value, int defaultValue);

/// Puts into `value` whether the variable says yes, or `defaultValue` if it is not set. Returns
/// whether it is. "1", "true", "t", "yes" and "on" say yes, in upper or lower case and with white
/// space around them; every other value, the empty one too, is a no.
ZEBASE_API bool GetEnv(const zeString::IString& name, bool& value, bool defaultValue);

} // namespace zeOS

// SPDX-License-Identifier: MIT

/// @file
/// Whether this process is a unit test: one flag, false at load, for code that must behave
/// otherwise under test (no dialogs, no waiting for a person).
///
/// Threads: any thread may call.
///
/// @code
/// assert(!ze::isThisAUnitTest());
/// ze::setThisIsAUnitTest();
/// assert(ze::isThisAUnitTest());
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace ze {

/// Sets the flag, for the rest of the process.
ZEBASE_API void setThisIsAUnitTest();

/// Whether the flag is set.
ZEBASE_API bool isThisAUnitTest();

} // namespace ze

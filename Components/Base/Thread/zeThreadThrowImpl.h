// SPDX-License-Identifier: MIT

/// @file
/// How constructors and destructors report that the system failed.

#pragma once

#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeThread {

/// Throws. Out of a destructor, which lets no exception out, this ends the process: a condition or
/// a semaphore that is destroyed while it is in use is a fault of the program.
[[noreturn]] ZEBASE_HIDDEN void throwError(const zeUtil::Error& error);

} // namespace zeThread

// SPDX-License-Identifier: MIT

/// @file
/// Two placeholders, kept for compatibility. They do nothing: the atomics that work are
/// zeThread::atomicIncrement and zeThread::atomicDecrement.
///
/// Threads: any thread may call.
///
/// @code
/// int n = 1;
/// assert(ze::atomic_increment(&n) == 0 && n == 1);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace ze {

/// Does nothing, and returns 0.
ZEBASE_API int atomic_increment(int* value);

/// Does nothing, and returns 0.
ZEBASE_API int atomic_decrement(int* value);

} // namespace ze

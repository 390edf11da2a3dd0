// SPDX-License-Identifier: MIT

/// @file
/// Counting an integer that several threads share.
///
/// Each call takes one of 17 locks, which the address of the integer chooses; nothing else is
/// locked meanwhile. It costs what an uncontended lock and unlock cost, and what one thread wrote
/// before its call is seen by the threads that call later.
///
/// The locks are destroyed when the process exits, after the destructors of the program's own
/// static objects: threads that still run then must not count any more.
///
/// Threads: any thread may call at any time, until the process exits.
///
/// @code
/// int users = 0;
/// assert(zeThread::atomicIncrement(users) == 1);
/// assert(zeThread::atomicDecrement(users) == 0);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeThread {

/// Adds one, modulo 2^32, and returns the new value. While threads share the integer, it must be
/// changed by these two functions only.
ZEBASE_API int atomicIncrement(int& value);

/// Subtracts one, modulo 2^32, and returns the new value.
ZEBASE_API int atomicDecrement(int& value);

} // namespace zeThread

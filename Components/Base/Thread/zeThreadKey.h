// SPDX-License-Identifier: MIT

/// @file
/// Keys under which each thread keeps a pointer of its own.
///
/// A key is valid in all threads, and each has null under it until it sets something. Nothing is
/// destroyed when a thread ends: whoever sets a pointer frees what it points to.
///
/// Threads: any thread may call at any time.
///
/// @code
/// const unsigned int key = zeThread::createThreadKey();
/// int mine = 0;
/// zeThread::setThreadSpecificValue(key, &mine);
/// assert(zeThread::getThreadSpecificValue(key) == &mine);
/// zeThread::freeThreadKey(key);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeThread {

/// A new key. A process can have 1024; where none is left, what is returned is no key: each thread
/// has null under it, and setting something does nothing.
ZEBASE_API unsigned int createThreadKey();

/// Gives a key back. Pointers that threads have under it are forgotten.
ZEBASE_API void freeThreadKey(unsigned int key);

/// What the calling thread has under the key, or null.
ZEBASE_API void* getThreadSpecificValue(unsigned int key);

/// Sets what the calling thread has under the key.
ZEBASE_API void setThreadSpecificValue(unsigned int key, void* value);

} // namespace zeThread
